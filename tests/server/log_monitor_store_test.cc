// LogMonitorStore: values by (entity, type, name), and the all-or-nothing rules of its changes.
#include "server/store/LogMonitorStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

class LogMonitorStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(
        store().Set(7, {{1, "nInterval", "60"}, {1, "sPattern", "ERROR*"}, {2, "nKeep", "5"}}));
    ASSERT_OK(store().Set(8, {{1, "nInterval", "30"}}));
  }
  // "type/name=value" of the entity's parameters.
  std::vector<std::string> List(uint64_t entity, uint32_t type = 0, bool all = true) {
    std::vector<LogParam> out;
    EXPECT_OK(store().List(entity, type, all, &out));
    std::vector<std::string> rows;
    for (const LogParam& p : out) {
      rows.push_back(std::to_string(p.type) + "/" + p.name + "=" + p.value);
    }
    return rows;
  }
  LogMonitorStore store() { return LogMonitorStore(t_.store()); }
  TempStore t_;
};

TEST_F(LogMonitorStoreTest, ValuesAreKeptPerEntityTypeAndName) {
  std::string value;
  ASSERT_OK(store().Get(7, 1, "nInterval", &value));
  EXPECT_EQ(value, "60");
  ASSERT_OK(store().Get(8, 1, "nInterval", &value));
  EXPECT_EQ(value, "30");
  CLmError e = store().Get(7, 2, "nInterval", &value);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "log-monitoring parameter 'nInterval' of type 2 is not set for 7");
  EXPECT_EQ(value, "30") << "a failed read leaves the output";
  EXPECT_EQ(store().Get(7, 1, "ninterval", &value).GetErrorCode(), kStoreErrNotFound)
      << "names are compared exactly";

  EXPECT_EQ(List(7),
            (std::vector<std::string>{"1/nInterval=60", "1/sPattern=ERROR*", "2/nKeep=5"}));
  EXPECT_EQ(List(7, 2, false), (std::vector<std::string>{"2/nKeep=5"}));
  EXPECT_TRUE(List(9).empty()) << "any entity id may be asked for";

  ASSERT_OK(store().Set(7, {{4294967295u, "nMax", ""}, {1, "nInterval", "90"}}));
  EXPECT_EQ(List(7), (std::vector<std::string>{"1/nInterval=90", "1/sPattern=ERROR*", "2/nKeep=5",
                                               "4294967295/nMax="}));
}

TEST_F(LogMonitorStoreTest, ChangesAreAllOrNothing) {
  CLmError unnamed = store().Set(7, {{1, "nInterval", "1"}, {1, "", "x"}});
  EXPECT_EQ(unnamed.GetErrorCode(), kStoreErrInvalidArgument);
  CLmError missing = store().Remove(7, {{1, "sPattern", ""}, {3, "sPattern", ""}});
  EXPECT_EQ(missing.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(missing.Text(), "log-monitoring parameter 'sPattern' of type 3 is not set for 7");
  EXPECT_EQ(List(7),
            (std::vector<std::string>{"1/nInterval=60", "1/sPattern=ERROR*", "2/nKeep=5"}));

  ASSERT_OK(store().Remove(7, {{1, "sPattern", "the value is not read"}}));
  EXPECT_EQ(List(7), (std::vector<std::string>{"1/nInterval=60", "2/nKeep=5"}));

  ASSERT_OK(store().Replace(7, {{3, "sOnly", "1"}}));
  EXPECT_EQ(List(7), (std::vector<std::string>{"3/sOnly=1"}));
  EXPECT_EQ(store().Replace(7, {{3, "", "1"}}).GetErrorCode(), kStoreErrInvalidArgument);
  EXPECT_EQ(List(7), (std::vector<std::string>{"3/sOnly=1"}));
  ASSERT_OK(store().Replace(7, {}));
  EXPECT_TRUE(List(7).empty());
  EXPECT_EQ(List(8), (std::vector<std::string>{"1/nInterval=30"})) << "other entities stay";
}

}  // namespace
}  // namespace appmgr::server
