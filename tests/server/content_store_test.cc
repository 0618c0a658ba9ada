// ContentStore: one transaction per update, linear in the content, the same rules for both
// owners of a content list.
#include "server/store/ContentStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// Subclient 71 holds /data and /etc (type 1) and C: (type 2); instance 12 holds SALESDB.
constexpr std::string_view kTree = R"json({
  "format": 1,
  "appTypes": [{"id": 10, "name": "File System"}],
  "clients": [{"id": 3, "name": "db01", "hostName": "db01",
               "applications": [{"id": 301, "appType": 10}]}],
  "instances": [{"id": 12, "client": 3, "appType": 10, "name": "a",
                 "content": [{"entry": "SALESDB", "type": 4}]}],
  "backupSets": [{"id": 7, "instance": 12, "name": "s7",
                  "subclients": [{"id": 71, "name": "x", "content": [
                    {"entry": "/data", "type": 1}, {"entry": "/etc", "type": 1},
                    {"entry": "C:", "type": 2}]}]}]
})json";

using Entries = std::vector<ContentEntry>;

class ContentStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kTree));
  }
  Entries Read(EntityKind owner, uint64_t id) {
    Entries out;
    EXPECT_OK(ContentStore(t_.store()).Read(owner, id, &out));
    return out;
  }
  TempStore t_;
};

TEST_F(ContentStoreTest, UpdatesFollowTheDocumentedRules) {
  struct Case {
    const char* what;
    Entries add, remove;
    bool replace;
    Entries after;
  };
  const Entries start = {{"/data", 1}, {"/etc", 1}, {"C:", 2}};
  const Case cases[] = {
      {"nothing to do", {}, {}, false, start},
      {"an add appends in order",
       {{"/srv", 1}, {"/home", 1}}, {}, false,
       {{"/data", 1}, {"/etc", 1}, {"C:", 2}, {"/srv", 1}, {"/home", 1}}},
      {"an entry already there is not stored twice, nor one given twice",
       {{"/etc", 1}, {"/srv", 1}, {"/srv", 1}}, {}, false,
       {{"/data", 1}, {"/etc", 1}, {"C:", 2}, {"/srv", 1}}},
      {"the same text under another type is another entry",
       {{"/etc", 2}}, {}, false, {{"/data", 1}, {"/etc", 1}, {"C:", 2}, {"/etc", 2}}},
      {"a remove matches text and type; one not there is ignored",
       {}, {{"/etc", 1}, {"C:", 1}, {"/nowhere", 1}}, false, {{"/data", 1}, {"C:", 2}}},
      {"replace drops the types it adds, and only those",
       {{"/srv", 1}}, {}, true, {{"C:", 2}, {"/srv", 1}}},
      {"remove then add of one entry moves it to the end",
       {{"/data", 1}}, {{"/data", 1}}, false, {{"/etc", 1}, {"C:", 2}, {"/data", 1}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TempStore fresh;
    ASSERT_OK(fresh.Open());
    ASSERT_OK(fresh.Load(kTree));
    ContentStore cs(fresh.store());
    ASSERT_OK(cs.Update(EntityKind::kSubclient, 71, c.add, c.remove, c.replace));
    Entries sc, inst;
    ASSERT_OK(cs.Read(EntityKind::kSubclient, 71, &sc));
    EXPECT_EQ(sc, c.after);
    // The instance's list is another table and stays as it was.
    ASSERT_OK(cs.Read(EntityKind::kInstance, 12, &inst));
    EXPECT_EQ(inst, (Entries{{"SALESDB", 4}}));
  }
}

TEST_F(ContentStoreTest, AFailedUpdateLeavesTheContentAsItWas) {
  ContentStore cs(t_.store());
  const Entries start = {{"/data", 1}, {"/etc", 1}, {"C:", 2}};
  const Entries emptyInTheMiddle = {{"/a", 1}, {"", 1}, {"/b", 1}};
  CLmError e = cs.Update(EntityKind::kSubclient, 71, emptyInTheMiddle, Entries{{"/data", 1}}, true);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrInvalidArgument);
  EXPECT_NE(e.Text().find("entry 2 of 3 of the content to add to subclient 71 is empty"),
            std::string::npos)
      << e.Text();
  EXPECT_EQ(Read(EntityKind::kSubclient, 71), start);

  e = cs.Update(EntityKind::kInstance, 99, Entries{{"/a", 1}}, {}, false);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_NE(e.Text().find("instance 99 does not exist"), std::string::npos);
  Entries out = {{"untouched", 0}};
  EXPECT_EQ(cs.Read(EntityKind::kSubclient, 72, &out).GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(out, (Entries{{"untouched", 0}}));
  EXPECT_EQ(cs.Read(EntityKind::kBackupSet, 7, &out).GetErrorCode(), kStoreErrInvalidArgument);
}

TEST_F(ContentStoreTest, TenThousandEntriesInOneUpdate) {
  Entries many;
  for (int i = 0; i < 10000; ++i) many.push_back({"/data/dir" + std::to_string(i), 1});
  ContentStore cs(t_.store());
  ASSERT_OK(cs.Update(EntityKind::kInstance, 12, many, {}, true));
  Entries out = Read(EntityKind::kInstance, 12);
  ASSERT_EQ(out.size(), 10001u);
  EXPECT_EQ(out.front(), (ContentEntry{"SALESDB", 4}));
  EXPECT_EQ(out.back(), many.back());
  ASSERT_OK(cs.Update(EntityKind::kInstance, 12, {}, many, false));
  EXPECT_EQ(Read(EntityKind::kInstance, 12), (Entries{{"SALESDB", 4}}));
}

}  // namespace
}  // namespace appmgr::server
