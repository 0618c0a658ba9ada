// AppIdStore: application ids found by id or by the object they stand for, and their archive
// groups.
#include "server/store/AppIdStore.h"

#include <gtest/gtest.h>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

constexpr std::string_view kAppIdsFixture = R"json({
  "format": 1,
  "appIds": [{"id": 7, "number3": 3, "number4": 10, "number5": 12, "number6": 102,
              "text0": "C:", "option": 2, "archiveGroup": 70, "incrArchiveGroup": 71}]
})json";

AppIdRecord Object(uint64_t number3, const std::string& text0) {
  AppIdRecord r;
  r.numbers = {0, 11, 22, number3, 10, 12, 102, 0, 0};
  r.texts = {text0, "", ""};
  r.option = 5;
  return r;
}

class AppIdStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kAppIdsFixture));
  }
  AppIdStore ids() { return AppIdStore(t_.store()); }
  TempStore t_;
};

TEST_F(AppIdStoreTest, CreateAssignsAnIdThatGetFindsByIdAndByObject) {
  AppIdRecord made;
  ASSERT_OK(ids().Create(Object(4, "D:"), &made));
  EXPECT_EQ(made.numbers[0], 8u);
  EXPECT_EQ(made.numbers[1], 11u) << "numbers 1 and 2 are kept as given";
  EXPECT_EQ(made.option, 5u);

  AppIdRecord byId, byObject, key;
  key.numbers[0] = 8;
  ASSERT_OK(ids().Get(key, &byId));
  EXPECT_EQ(byId, made);
  ASSERT_OK(ids().Get(Object(4, "D:"), &byObject));
  EXPECT_EQ(byObject, made);

  AppIdRecord fixture;
  ASSERT_OK(ids().Get(Object(3, "C:"), &fixture));
  EXPECT_EQ(fixture.numbers[0], 7u);
  EXPECT_EQ(fixture.archiveGroup, 70u);

  ASSERT_OK(ids().Remove(key));
  ASSERT_OK(ids().Create(Object(5, "E:"), &made));
  EXPECT_EQ(made.numbers[0], 9u) << "a removed id is not handed out again";
  ASSERT_OK(t_.Reopen());
  ASSERT_OK(ids().Get(Object(5, "E:"), &byObject));
  EXPECT_EQ(byObject, made);
}

TEST_F(AppIdStoreTest, MissingAndDuplicateIdsAreClearErrors) {
  AppIdRecord out, key;
  key.numbers[0] = 42;
  CLmError e = ids().Get(key, &out);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "application id 42 does not exist");
  e = ids().Remove(Object(9, "C:"));
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "no application id stands for (9, 10, 12, 102, 0, 0, 'C:', '', '')");

  e = ids().Create(Object(3, "C:"), &out);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict);
  EXPECT_EQ(e.Text(), "application id 7 already stands for (3, 10, 12, 102, 0, 0, 'C:', '', '')");
  AppIdRecord given = Object(4, "C:");
  given.numbers[0] = 7;
  e = ids().Create(given, &out);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict);
  EXPECT_EQ(e.Text(), "application id 7 already exists");
  given.numbers[0] = 50;
  ASSERT_OK(ids().Create(given, &out));
  EXPECT_EQ(out.numbers[0], 50u);
}

TEST_F(AppIdStoreTest, ArchiveGroupsAreStoredAndReadBack) {
  uint64_t incr = 0;
  ASSERT_OK(ids().IncrArchiveGroup(7, &incr));
  EXPECT_EQ(incr, 71u);
  ASSERT_OK(ids().UpdateArchiveGroups(7, 80, 81));
  ASSERT_OK(ids().IncrArchiveGroup(7, &incr));
  EXPECT_EQ(incr, 81u);
  AppIdRecord key, out;
  key.numbers[0] = 7;
  ASSERT_OK(ids().Get(key, &out));
  EXPECT_EQ(out.archiveGroup, 80u);
  EXPECT_EQ(ids().UpdateArchiveGroups(42, 1, 2).Text(), "application id 42 does not exist");
  EXPECT_EQ(ids().IncrArchiveGroup(42, &incr).GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(incr, 81u);
}

}  // namespace
}  // namespace appmgr::server
