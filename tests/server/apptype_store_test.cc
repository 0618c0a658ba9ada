// AppTypeStore and InstanceStore: the relations between client, application type, instance,
// backup set and subclient hold whatever the requests do.
#include "server/store/AppTypeStore.h"

#include <gtest/gtest.h>

#include <string>

#include "server/store/EntityTreeStore.h"
#include "server/store/InstanceStore.h"
#include "server/store/PropertyStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// Client 3 has types 10 (instance 12 with backup set 7 and subclient 71) and 20 (no instance);
// client 4 has none. Type 30 is catalogued but on no client.
constexpr std::string_view kTree = R"json({
  "format": 1,
  "appTypes": [{"id": 10, "name": "File System"}, {"id": 20, "name": "SQL Database"},
               {"id": 30, "name": "Mailbox"}],
  "clients": [{"id": 3, "name": "db01", "hostName": "db01",
               "applications": [{"id": 301, "appType": 10, "value": 9}, {"id": 302, "appType": 20}]},
              {"id": 4, "name": "fs02", "hostName": "fs02"}],
  "instances": [{"id": 12, "client": 3, "appType": 10, "name": "default", "value": -1,
                 "attr2": 2, "text": "t", "content": [{"entry": "C:", "type": 1}]},
                {"id": 13, "client": 3, "appType": 10, "name": "second"}],
  "backupSets": [{"id": 7, "instance": 12, "name": "s7",
                  "subclients": [{"id": 71, "name": "x", "content": [{"entry": "/d", "type": 1}]}],
                  "stores": [{"name": "primary", "defaultSubclient": 71}]}],
  "properties": [{"kind": "clientAppType", "id": 301, "name": "p", "value": "v"},
                 {"kind": "subclient", "id": 71, "name": "q", "value": "w"}]
})json";

class AppTypeStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kTree));
  }
  int64_t Count(const char* sql) {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kRead);
    Statement st = txn.Prepare(sql);
    bool row = false;
    EXPECT_OK(st.Step(&row));
    return st.Int(0);
  }
  TempStore t_;
  AppTypeStore types() { return AppTypeStore(t_.store()); }
};

TEST_F(AppTypeStoreTest, MissingClientsTypesAndPairsAreNamed) {
  AppTypeInfo info;
  struct Case {
    CLmError error;
    int code;
    const char* text;
  } cases[] = {
      {types().Lookup(9, 10, &info), kStoreErrNotFound, "client 9 does not exist"},
      {types().Lookup(4, 10, &info), kStoreErrNotFound, "client 4 has no application type 10"},
      {types().Update(3, 30, 1), kStoreErrNotFound, "client 3 has no application type 30"},
      {types().Remove(4, 20), kStoreErrNotFound, "client 4 has no application type 20"},
      {types().Create(9, 10), kStoreErrNotFound, "client 9 does not exist"},
      {types().Create(4, 99), kStoreErrNotFound, "application type 99 does not exist"},
      {types().Create(3, 10), kStoreErrConflict, "client 3 already has application type 10"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.error.GetErrorCode(), c.code);
    EXPECT_NE(c.error.Text().find(c.text), std::string::npos) << c.error.Text();
  }
}

TEST_F(AppTypeStoreTest, CreateLookupUpdateAndPropertiesOfANewPair) {
  ASSERT_OK(types().Create(4, 30));
  AppTypeInfo info;
  ASSERT_OK(types().Lookup(4, 30, &info));
  EXPECT_EQ(info.name, "Mailbox");
  EXPECT_EQ(info.value, 0u);
  ASSERT_OK(types().Update(4, 30, 77));
  ASSERT_OK(types().Lookup(4, 30, &info));
  EXPECT_EQ(info.value, 77u);

  uint64_t id = 0, other = 0;
  ASSERT_OK(types().SurrogateId(4, 30, &id));
  ASSERT_OK(types().SurrogateId(3, 10, &other));
  EXPECT_GT(id, 302u) << "a fresh surrogate id, never one in use";
  ASSERT_OK(PropertyStore(t_.store()).Set(EntityKind::kClientAppType, id, {{"n", 1, "v"}}, false));
}

TEST_F(AppTypeStoreTest, RemoveWaitsForADeleteAllThenTakesTheWholeSubtree) {
  CLmError refused = types().Remove(3, 10);
  EXPECT_EQ(refused.GetErrorCode(), kStoreErrConflict);
  EXPECT_NE(refused.Text().find("2 of its instances are not marked deleted"), std::string::npos)
      << refused.Text();
  EXPECT_EQ(Count("SELECT count(*) FROM instances"), 2);

  // A pair without instances goes at once.
  ASSERT_OK(types().Remove(3, 20));

  ASSERT_OK(EntityTreeStore(t_.store()).SetSubtreeDeleted(2, 3, 10, true));
  ASSERT_OK(types().Remove(3, 10));
  // Nothing that hung below it is left, in any table.
  for (const char* sql : {"SELECT count(*) FROM client_app_types", "SELECT count(*) FROM instances",
                          "SELECT count(*) FROM instance_content", "SELECT count(*) FROM backup_sets",
                          "SELECT count(*) FROM backup_set_stores", "SELECT count(*) FROM subclients",
                          "SELECT count(*) FROM subclient_content", "SELECT count(*) FROM properties"}) {
    EXPECT_EQ(Count(sql), 0) << sql;
  }
  EXPECT_EQ(Count("SELECT count(*) FROM clients"), 2) << "the client stays";
}

TEST_F(AppTypeStoreTest, VolumePropertiesAreOnePerVolumeAndGoWithTheirPair) {
  VolumeProperty r{3, 20, 5, 1, "{guid}", 2, 3, 4, -5, 6};
  ASSERT_OK(types().SetVolumeProperty(r));
  r.text = "{other}";
  r.signedValue = 8;
  ASSERT_OK(types().SetVolumeProperty(r));
  VolumeProperty read;
  ASSERT_OK(types().GetVolumeProperty(3, 20, 5, &read));
  EXPECT_EQ(read, r) << "the second write replaced the first";
  EXPECT_EQ(types().GetVolumeProperty(3, 20, 6, &read).GetErrorCode(), kStoreErrNotFound);
  VolumeProperty elsewhere = r;
  elsewhere.clientId = 4;
  EXPECT_EQ(types().SetVolumeProperty(elsewhere).GetErrorCode(), kStoreErrNotFound);

  ASSERT_OK(types().Remove(3, 20));
  EXPECT_EQ(Count("SELECT count(*) FROM dc_volume_properties"), 0);
}

TEST_F(AppTypeStoreTest, InstanceLookupAndUpdateKeepNamesUniqueUnderTheirType) {
  InstanceStore instances(t_.store());
  InstanceInfo info;
  ASSERT_OK(instances.Lookup(12, &info));
  EXPECT_EQ(info, (InstanceInfo{"default", -1, 2, 0, 0, "t"}));

  ASSERT_OK(instances.Update(12, "renamed", 5));
  ASSERT_OK(instances.Lookup(12, &info));
  EXPECT_EQ(info.name, "renamed");
  EXPECT_EQ(info.value, 5);

  CLmError clash = instances.Update(12, "second", 5);
  EXPECT_EQ(clash.GetErrorCode(), kStoreErrConflict);
  EXPECT_NE(clash.Text().find("cannot be renamed to 'second'"), std::string::npos) << clash.Text();
  EXPECT_EQ(instances.Update(12, "", 5).GetErrorCode(), kStoreErrInvalidArgument);
  CLmError missing = instances.Update(99, "x", 0);
  EXPECT_EQ(missing.GetErrorCode(), kStoreErrNotFound);
  EXPECT_NE(missing.Text().find("instance 99 does not exist"), std::string::npos);
  EXPECT_EQ(instances.Lookup(99, &info).GetErrorCode(), kStoreErrNotFound);
}

}  // namespace
}  // namespace appmgr::server
