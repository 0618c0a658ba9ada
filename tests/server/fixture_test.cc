// Fixtures: the shipped demo loads, and a bad entry anywhere loads nothing and is named.
#include "server/store/Fixture.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "server/store/BackupSetStore.h"
#include "server/store/PropertyStore.h"
#include "server/store/SnapshotStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

int64_t CountRows(Store& store) {
  Store::Transaction txn(store, "test", Store::Transaction::kRead);
  Statement st = txn.Prepare(
      "SELECT (SELECT count(*) FROM app_types) + (SELECT count(*) FROM clients)"
      " + (SELECT count(*) FROM client_app_types) + (SELECT count(*) FROM instances)"
      " + (SELECT count(*) FROM backup_sets) + (SELECT count(*) FROM subclients)"
      " + (SELECT count(*) FROM replication_pairs) + (SELECT count(*) FROM properties)"
      " + (SELECT count(*) FROM server_cache_entries)");
  bool row = false;
  EXPECT_OK(st.Step(&row));
  return st.Int(0);
}

TEST(DemoFixture, LoadsAndDescribesTheInstallation) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.store().LoadFixture(APPMGR_SOURCE_DIR "/server/fixtures/demo.json"));
  BackupSetStore sets(t.store());
  std::vector<std::string> stores;
  ASSERT_OK(sets.StoreList(102, &stores));
  EXPECT_EQ(stores, (std::vector<std::string>{"primary", "archive"}));
  uint64_t client = 0;
  ASSERT_OK(sets.ClientIdForBackupSet(105, &client));
  EXPECT_EQ(client, 3u);
  PairConflict conflict;
  ASSERT_OK(sets.CheckPairConflict(105, "D:\\Data", "/replica/new", &conflict));
  EXPECT_TRUE(conflict.conflict);
  EXPECT_EQ(conflict.existing.destinationClientId, 4u);
  std::vector<FlrSystemState> state;
  ASSERT_OK(sets.FlrSystemStateInfo(105, "db01", &state));
  EXPECT_EQ(state.size(), 2u);
  std::vector<Property> props;
  ASSERT_OK(PropertyStore(t.store()).Get(EntityKind::kBackupSet, 102, 0, &props));
  EXPECT_EQ(props.size(), 2u);
}

struct BadEntry {
  const char* name;
  const char* patch;  // a JSON Patch applied to the small fixture
  int code;
  const char* text;  // the error text after "test: "
};
void PrintTo(const BadEntry& c, std::ostream* os) {
  *os << c.name;
}

class FixtureWithABadEntry : public testing::TestWithParam<BadEntry> {};

TEST_P(FixtureWithABadEntry, LoadsNothingAndNamesTheEntry) {
  const BadEntry& c = GetParam();
  std::string patch = c.patch;
  // A text one byte longer than its field, written out here rather than in the table.
  size_t at = patch.find("<255 bytes>");
  if (at != std::string::npos) patch.replace(at, 11, std::string(255, 's'));
  nlohmann::json fixture = nlohmann::json::parse(kSmallFixture);
  fixture = fixture.patch(nlohmann::json::parse(patch));
  TempStore t;
  ASSERT_OK(t.Open());
  CLmError e = t.Load(fixture.dump());
  EXPECT_EQ(e.GetErrorCode(), c.code) << e.Text();
  EXPECT_EQ(e.Text().rfind(std::string("test: ") + c.text, 0), 0u) << e.Text();
  EXPECT_EQ(CountRows(t.store()), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FixtureWithABadEntry,
    testing::Values(
        BadEntry{"unknown_member",
                 R"([{"op": "add", "path": "/clients/-",
                      "value": {"id": 5, "name": "x", "hostname": "h"}}])",
                 kStoreErrInvalidArgument, "clients[2]: unknown member 'hostname'"},
        BadEntry{"missing_id",
                 R"([{"op": "add", "path": "/appTypes/-", "value": {"name": "Mailbox"}}])",
                 kStoreErrInvalidArgument, "appTypes[1]: 'id' is missing"},
        BadEntry{"number_as_text",
                 R"([{"op": "replace", "path": "/backupSets/0/value", "value": "7"}])",
                 kStoreErrInvalidArgument, "backupSets[0]: 'value' must be a whole number"},
        BadEntry{"negative_id", R"([{"op": "replace", "path": "/clients/1/id", "value": -4}])",
                 kStoreErrInvalidArgument, "clients[1]: 'id' must be a whole number"},
        BadEntry{"duplicate_id",
                 R"([{"op": "add", "path": "/clients/-",
                      "value": {"id": 3, "name": "dup", "hostName": "h"}}])",
                 kStoreErrConflict, "clients[2]: inserting: UNIQUE constraint failed: clients.id"},
        BadEntry{"missing_instance",
                 R"([{"op": "add", "path": "/backupSets/-",
                      "value": {"id": 9, "instance": 99, "name": "x"}}])",
                 kStoreErrNotFound, "backupSets[2]: instance 99 does not exist"},
        BadEntry{"application_type_not_on_the_client",
                 R"([{"op": "add", "path": "/instances/-",
                      "value": {"id": 13, "client": 4, "appType": 10, "name": "default"}}])",
                 kStoreErrNotFound, "instances[1]: client 4 has no application type 10"},
        BadEntry{"default_subclient_of_another_backup_set",
                 R"([{"op": "add", "path": "/backupSets/1/stores",
                      "value": [{"name": "p", "defaultSubclient": 71}]}])",
                 kStoreErrNotFound,
                 "backupSets[1].stores[0]: subclient 71 is not a subclient of backup set 8"},
        BadEntry{"interface_pair_of_another_backup_sets_pair",
                 R"([{"op": "add", "path": "/backupSets/0/interfacePairs/-",
                      "value": {"pair": 3, "first": "a", "second": "b"}}])",
                 kStoreErrNotFound,
                 "backupSets[0].interfacePairs[2]: pair 3 is not a replication pair of backup "
                 "set 7"},
        BadEntry{"pair_source_too_long",
                 R"([{"op": "add", "path": "/backupSets/1/replicationPairs/-",
                      "value": {"id": 9, "destinationClient": 4, "destination": "/d",
                                "source": "<255 bytes>"}}])",
                 kStoreErrInvalidArgument,
                 "backupSets[1].replicationPairs[1]: inserting: CHECK constraint failed"},
        BadEntry{"second_pair_with_the_same_source",
                 R"([{"op": "add", "path": "/backupSets/0/replicationPairs/-",
                      "value": {"id": 9, "destinationClient": 4, "source": "D:\\Data",
                                "destination": "/other"}}])",
                 kStoreErrConflict,
                 "backupSets[0].replicationPairs[2]: inserting: UNIQUE constraint failed: "
                 "replication_pairs.backup_set_id, replication_pairs.source"},
        BadEntry{"too_many_platforms",
                 R"([{"op": "add", "path": "/clients/0/platforms",
                      "value": [{}, {}, {}, {"value": 1}]}])",
                 kStoreErrInvalidArgument, "clients[0].platforms[3]: a client has at most 3"},
        BadEntry{"list_that_is_not_a_list",
                 R"([{"op": "replace", "path": "/backupSets/0/wildcards", "value": "*.tmp"}])",
                 kStoreErrInvalidArgument, "backupSets[0].wildcards: must be a list"},
        BadEntry{"property_of_a_missing_entity",
                 R"([{"op": "add", "path": "/properties",
                      "value": [{"kind": "backupSet", "id": 99, "name": "n"}]}])",
                 kStoreErrNotFound, "properties[0]: backup set 99 does not exist"},
        BadEntry{"property_of_an_unknown_kind",
                 R"([{"op": "add", "path": "/properties",
                      "value": [{"kind": "backupset", "id": 7, "name": "n"}]}])",
                 kStoreErrInvalidArgument, "properties[0]: kind 'backupset' is none of"},
        BadEntry{"bad_hex",
                 R"([{"op": "add", "path": "/preparedCache",
                      "value": [{"jobId": 1, "requestId": "0x34000061",
                                 "responseId": "0x34000062", "request": "0g",
                                 "response": ""}]}])",
                 kStoreErrInvalidArgument, "preparedCache[0]: 'request' must be hex digits"},
        BadEntry{"message_id_above_32_bits",
                 R"([{"op": "add", "path": "/preparedCache",
                      "value": [{"jobId": 1, "requestId": "0x134000061",
                                 "responseId": 1, "request": "", "response": ""}]}])",
                 kStoreErrInvalidArgument, "preparedCache[0]: 'requestId' must be a 32-bit"},
        BadEntry{"format_missing", R"([{"op": "remove", "path": "/format"}])",
                 kStoreErrInvalidArgument, "format: missing"},
        BadEntry{"format_unknown", R"([{"op": "replace", "path": "/format", "value": 2}])",
                 kStoreErrInvalidArgument, "format: 2 is not a format"},
        BadEntry{"unknown_top_level_member",
                 R"([{"op": "add", "path": "/backupsets", "value": []}])", kStoreErrInvalidArgument,
                 "top level: unknown member 'backupsets'"}),
    [](const testing::TestParamInfo<BadEntry>& i) { return std::string(i.param.name); });

// The members the entity lists read.
INSTANTIATE_TEST_SUITE_P(
    ListCases, FixtureWithABadEntry,
    testing::Values(
        BadEntry{"cloud_client_missing",
                 R"([{"op": "add", "path": "/clouds",
                      "value": [{"id": 1, "name": "c", "clients": [{"client": 99}]}]}])",
                 kStoreErrNotFound, "clouds[0].clients[0]: client 99 does not exist"},
        BadEntry{"cloud_access_node_missing",
                 R"([{"op": "add", "path": "/clouds",
                      "value": [{"id": 1, "name": "c",
                                 "clients": [{"client": 3, "accessNode": 98}]}]}])",
                 kStoreErrNotFound, "clouds[0].clients[0]: client 98 does not exist"},
        BadEntry{"provider_name_in_another_case",
                 R"([{"op": "add", "path": "/providers",
                      "value": [{"id": 1, "name": "Disk"}, {"id": 2, "name": "disk"}]}])",
                 kStoreErrConflict,
                 "providers[1]: inserting: UNIQUE constraint failed: providers.name"},
        BadEntry{"domain_client_missing",
                 R"([{"op": "add", "path": "/domainClients",
                      "value": [{"domain": "LAB", "client": 5}]}])",
                 kStoreErrNotFound, "domainClients[0]: client 5 does not exist"},
        BadEntry{"app_id_option_above_32_bits",
                 R"([{"op": "add", "path": "/appIds",
                      "value": [{"id": 1, "option": 4294967296}]}])",
                 kStoreErrInvalidArgument, "appIds[0]: 'option' must fit in 32 unsigned bits"}),
    [](const testing::TestParamInfo<BadEntry>& i) { return std::string(i.param.name); });

// Snapshot records and mailbox delegates.
INSTANTIATE_TEST_SUITE_P(
    SnapshotCases, FixtureWithABadEntry,
    testing::Values(
        BadEntry{"snapshot_id_zero",
                 R"([{"op": "add", "path": "/snapshots", "value": [{"id": 0}]}])",
                 kStoreErrInvalidArgument, "snapshots[0]: 'id' must not be 0"},
        BadEntry{"snapshot_text_as_number",
                 R"([{"op": "add", "path": "/snapshots", "value": [{"id": 1, "f4": 4}]}])",
                 kStoreErrInvalidArgument, "snapshots[0]: 'f4' must be a string"},
        BadEntry{"snapshot_twice",
                 R"([{"op": "add", "path": "/snapshots", "value": [{"id": 1}, {"id": 1}]}])",
                 kStoreErrConflict, "snapshots[1]: inserting: UNIQUE constraint failed"},
        BadEntry{"delegate_without_id",
                 R"([{"op": "add", "path": "/mailboxDelegates", "value": [{"g1": 4}]}])",
                 kStoreErrInvalidArgument, "mailboxDelegates[0]: 'id' is missing"},
        BadEntry{"delegate_unknown_member",
                 R"([{"op": "add", "path": "/mailboxDelegates", "value": [{"id": 1, "g7": 1}]}])",
                 kStoreErrInvalidArgument, "mailboxDelegates[0]: unknown member 'g7'"}),
    [](const testing::TestParamInfo<BadEntry>& i) { return std::string(i.param.name); });

TEST(DemoFixture, HoldsSnapshotRecordsAndMailboxDelegates) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.store().LoadFixture(APPMGR_SOURCE_DIR "/server/fixtures/demo.json"));
  std::vector<SnapshotRecord> snapshots;
  ASSERT_OK(SnapshotStore(t.store()).List(&snapshots));
  ASSERT_EQ(snapshots.size(), 2u);
  EXPECT_EQ(snapshots[0].f2, 501u);
  EXPECT_EQ(snapshots[0].f4, "D:\\");
  EXPECT_EQ(snapshots[0].f14, "created by the demo");
  std::vector<DelegateRecord> delegates;
  ASSERT_OK(DelegateStore(t.store()).List(4, &delegates));
  EXPECT_EQ(delegates.size(), 2u);
}

TEST(Fixture, AFailureKeepsWhatWasThereBefore) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.Load(kSmallFixture));
  int64_t before = CountRows(t.store());
  CLmError e = t.Load(R"({"format": 1,
      "clients": [{"id": 9, "name": "new", "hostName": "new.example.net"}],
      "backupSets": [{"id": 90, "instance": 12, "name": "defaultBackupSet"}]})");
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict) << e.Text();
  EXPECT_EQ(CountRows(t.store()), before);
}

TEST(Fixture, TextThatIsNotJsonAndFilesThatAreMissing) {
  TempStore t;
  ASSERT_OK(t.Open());
  CLmError e = t.Load(R"({"format": 1,)");
  EXPECT_EQ(e.GetErrorCode(), kStoreErrInvalidArgument);
  EXPECT_EQ(e.Text().rfind("test: not valid JSON", 0), 0u) << e.Text();
  e = t.store().LoadFixture(t.dir() + "/missing.json");
  EXPECT_EQ(e.GetErrorCode(), kKpErrNotFound);
  EXPECT_NE(e.Text().find("missing.json"), std::string::npos) << e.Text();
}

TEST(Fixture, DefaultsFillWhatAnEntryLeavesOut) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.Load(R"({"format": 1,
      "appTypes": [{"id": 10, "name": "File System"}],
      "clients": [{"id": 3, "name": "c", "hostName": "h",
                   "applications": [{"id": 30, "appType": 10}]}],
      "instances": [{"id": 1, "client": 3, "appType": 10, "name": "i"}],
      "backupSets": [{"id": 2, "instance": 1, "name": "b",
                      "subclients": [{"id": 20, "name": "s1"}, {"id": 21, "name": "s2"}]}]})"));
  BackupSetInfo info;
  ASSERT_OK(BackupSetStore(t.store()).Lookup(2, &info));
  EXPECT_EQ(info.value, 0);
  EXPECT_EQ(info.description, "");
  // Two subclients without a guid: absent guids are NULL, which the unique key allows twice.
}

}  // namespace
}  // namespace appmgr::server
