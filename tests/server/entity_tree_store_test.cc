// EntityTreeStore: delete-all and undelete-all at each level of the tree reach the entity the
// level names and everything under it, and nothing beside it.
#include "server/store/EntityTreeStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "appmgr/records/GenericRecords.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// Two clients, each with the application type 10; client 3 also has 20. Client 3's type 10
// holds instance 12 (backup sets 7 and 8) and instance 13 (backup set 9); its type 20 holds
// instance 14 (backup set 10). Client 4's type 10 holds instance 15 (backup set 11).
constexpr std::string_view kTree = R"json({
  "format": 1,
  "appTypes": [{"id": 10, "name": "File System"}, {"id": 20, "name": "Database"}],
  "clients": [
    {"id": 3, "name": "db01", "hostName": "db01",
     "applications": [{"id": 301, "appType": 10}, {"id": 302, "appType": 20}]},
    {"id": 4, "name": "fs02", "hostName": "fs02", "applications": [{"id": 401, "appType": 10}]}
  ],
  "instances": [
    {"id": 12, "client": 3, "appType": 10, "name": "a"},
    {"id": 13, "client": 3, "appType": 10, "name": "b"},
    {"id": 14, "client": 3, "appType": 20, "name": "c"},
    {"id": 15, "client": 4, "appType": 10, "name": "d"}
  ],
  "backupSets": [
    {"id": 7, "instance": 12, "name": "s7", "subclients": [{"id": 71, "name": "x"}, {"id": 72, "name": "y"}]},
    {"id": 8, "instance": 12, "name": "s8", "subclients": [{"id": 81, "name": "x"}]},
    {"id": 9, "instance": 13, "name": "s9", "subclients": [{"id": 91, "name": "x"}]},
    {"id": 10, "instance": 14, "name": "s10", "subclients": [{"id": 101, "name": "x"}]},
    {"id": 11, "instance": 15, "name": "s11", "subclients": [{"id": 111, "name": "x"}]}
  ]
})json";

class EntityTreeStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kTree));
  }

  // The rows of `table` whose contents_deleted is set, by id.
  std::vector<int64_t> Deleted(const char* table) {
    std::string sql = std::string("SELECT id FROM ") + table + " WHERE contents_deleted = 1 ORDER BY id";
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kRead);
    Statement st = txn.Prepare(sql.c_str());
    std::vector<int64_t> ids;
    for (bool row = true;;) {
      EXPECT_OK(st.Step(&row));
      if (!row) break;
      ids.push_back(st.Int(0));
    }
    return ids;
  }
  using Ids = std::vector<int64_t>;

  EntityTreeStore tree() { return EntityTreeStore(t_.store()); }
  TempStore t_;
};

TEST_F(EntityTreeStoreTest, EachLevelMarksItsEntityAndEverythingUnderIt) {
  struct Case {
    const char* name;
    uint32_t level;
    uint64_t id, secondId;
    Ids appTypes, instances, sets, subclients;
  } cases[] = {
      {"backup set", kEntityLevelBackupSet, 7, 0, {}, {}, {7}, {71, 72}},
      {"instance", kEntityLevelInstance, 12, 0, {}, {12}, {7, 8}, {71, 72, 81}},
      {"application type", kEntityLevelAppType, 3, 10, {301}, {12, 13}, {7, 8, 9}, {71, 72, 81, 91}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_OK(tree().SetSubtreeDeleted(c.level, c.id, c.secondId, true));
    ASSERT_OK(tree().SetSubtreeDeleted(c.level, c.id, c.secondId, true));  // again: no error
    EXPECT_EQ(Deleted("client_app_types"), c.appTypes);
    EXPECT_EQ(Deleted("instances"), c.instances);
    EXPECT_EQ(Deleted("backup_sets"), c.sets);
    EXPECT_EQ(Deleted("subclients"), c.subclients);
    ASSERT_OK(tree().SetSubtreeDeleted(c.level, c.id, c.secondId, false));
    EXPECT_EQ(Deleted("client_app_types"), Ids{});
    EXPECT_EQ(Deleted("instances"), Ids{});
    EXPECT_EQ(Deleted("backup_sets"), Ids{});
    EXPECT_EQ(Deleted("subclients"), Ids{});
  }
}

TEST_F(EntityTreeStoreTest, AMissingEntityOrAMalformedRequestChangesNothing) {
  struct Case {
    uint32_t level;
    uint64_t id, secondId;
    int code;
    const char* text;
  } cases[] = {
      {kEntityLevelBackupSet, 99, 0, kStoreErrNotFound, "backup set 99 does not exist"},
      {kEntityLevelInstance, 99, 0, kStoreErrNotFound, "instance 99 does not exist"},
      {kEntityLevelAppType, 99, 10, kStoreErrNotFound, "client 99 does not exist"},
      {kEntityLevelAppType, 4, 20, kStoreErrNotFound, "client 4 has no application type 20"},
      {kEntityLevelInstance, 12, 5, kStoreErrInvalidArgument,
       "a level-3 request names its entity by one id; the second id must be 0, not 5"},
      {7, 12, 0, kStoreErrInvalidArgument,
       "entity level 7 is unknown (2 application type, 3 instance, 4 backup set)"},
  };
  for (const Case& c : cases) {
    CLmError e = tree().SetSubtreeDeleted(c.level, c.id, c.secondId, true);
    EXPECT_EQ(e.GetErrorCode(), c.code) << c.text;
    EXPECT_EQ(e.Text(), c.text);
  }
  EXPECT_EQ(Deleted("instances"), Ids{});
  EXPECT_EQ(Deleted("subclients"), Ids{});
}

}  // namespace
}  // namespace appmgr::server
