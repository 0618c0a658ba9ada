// ClientStore: clients as rows of the store, the remove rule, and the five client queries.
#include "server/store/ClientStore.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "server/store/PropertyStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// Added to the small fixture: a third client with an application type of its own, ASM
// instances on two clients, client properties and a group.
constexpr std::string_view kClientsFixture = R"json({
  "format": 1,
  "appTypes": [{"id": 20, "name": "SQL Database"}],
  "clients": [
    {"id": 5, "name": "web01", "hostName": "web01.example.net", "text3": "Web", "int5": 4294967294,
     "platforms": [{"value": 1, "text": "Linux"}], "applications": [{"id": 501, "appType": 20}]}
  ],
  "clientGroups": [{"id": 1, "name": "all", "members": [3, 4, 5]}],
  "instances": [{"id": 51, "client": 5, "appType": 20, "name": "+ASM"},
                {"id": 52, "client": 5, "appType": 20, "name": "ORCL"}],
  "properties": [{"kind": "client", "id": 5, "name": "sRole", "value": "web"},
                 {"kind": "client", "id": 3, "name": "sRole", "value": "db"},
                 {"kind": "client", "id": 4, "name": "sRole", "value": "web"},
                 {"kind": "client", "id": 4, "table": 1, "name": "sRole", "value": "db"}],
  "asmInstances": [12, 51]
})json";

// What a create request of a client named `name` carries.
ClientFields Named(const std::string& name) {
  ClientFields f;
  f.name = name;
  f.hostName = name + ".example.net";
  f.platformCount = 3;
  return f;
}

class ClientStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kSmallFixture));
    ASSERT_OK(t_.Load(kClientsFixture));
  }

  ClientStore clients() { return ClientStore(t_.store()); }

  int64_t Count(const char* sql) {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kRead);
    Statement st = txn.Prepare(sql);
    bool row = false;
    EXPECT_OK(st.Step(&row));
    return row ? st.Int(0) : -1;
  }

  TempStore t_;
};

TEST_F(ClientStoreTest, CreateStoresTheRecordAndLookupsFindIt) {
  ClientFields f = Named("app01");
  f.platformType = 4;
  f.integers[2] = static_cast<uint64_t>(-7);  // integer 5
  f.integers[9] = 12;
  f.texts[0] = "text 3";
  f.texts[5] = "text 8";  // texts 4 to 7 absent: stored empty
  f.platformCount = 2;
  f.platformValues = {1, 2, 9};
  f.platformTexts[0] = "Linux x86-64";  // slot 1 absent, slot 2 not carried
  ClientRecord made;
  ASSERT_OK(clients().Create(f, &made));
  EXPECT_EQ(made.id, 6u) << "one above the highest id";
  EXPECT_EQ(made.texts[1], "");
  EXPECT_EQ(made.platforms[0], (ClientPlatform{1, "Linux x86-64"}));
  EXPECT_EQ(made.platforms[1], (ClientPlatform{2, ""}));
  EXPECT_EQ(made.platforms[2], (ClientPlatform{0, ""}));

  ClientRecord byId, byName;
  ASSERT_OK(clients().Lookup(6, &byId));
  EXPECT_EQ(byId, made);
  ASSERT_OK(clients().LookupByName("APP01", &byName));
  EXPECT_EQ(byName, made) << "names are compared without regard to case";
  EXPECT_EQ(static_cast<int64_t>(byId.integers[2]), -7);

  ASSERT_OK(t_.Reopen());
  ASSERT_OK(clients().Lookup(6, &byId));
  EXPECT_EQ(byId, made) << "a created client survives a reopen";
}

TEST_F(ClientStoreTest, AssignedIdsAreNeverHandedOutTwice) {
  ClientRecord a, b, c;
  ASSERT_OK(clients().Create(Named("a"), &a));
  ASSERT_OK(clients().Remove(a.id));
  ASSERT_OK(clients().Create(Named("b"), &b));
  EXPECT_EQ(b.id, a.id + 1) << "the removed client's id is not reused";
  ClientFields given = Named("c");
  given.id = 100;
  ASSERT_OK(clients().Create(given, &c));
  EXPECT_EQ(c.id, 100u);
  ASSERT_OK(clients().Create(Named("d"), &c));
  EXPECT_EQ(c.id, 101u) << "a given id is stepped over";
}

struct RefusedCase {
  const char* name;
  std::function<ClientFields()> fields;
  int code;
  const char* text;
};
void PrintTo(const RefusedCase& c, std::ostream* os) {
  *os << c.name;
}

class ClientCreateRefused : public ClientStoreTest, public testing::WithParamInterface<RefusedCase> {};

TEST_P(ClientCreateRefused, WithAClearErrorAndNothingStored) {
  const int64_t before = Count("SELECT count(*) FROM clients");
  ClientRecord out;
  out.id = 77;
  CLmError e = clients().Create(GetParam().fields(), &out);
  EXPECT_EQ(e.GetErrorCode(), GetParam().code);
  EXPECT_EQ(e.Text(), GetParam().text);
  EXPECT_EQ(out.id, 77u) << "no output on failure";
  EXPECT_EQ(Count("SELECT count(*) FROM clients"), before);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ClientCreateRefused,
    testing::Values(
        RefusedCase{"DuplicateName", [] { return Named("DB01"); }, kStoreErrConflict,
                    "a client named 'DB01' already exists (client 3)"},
        RefusedCase{"EmptyName", [] { return Named(""); }, kStoreErrInvalidArgument,
                    "a client's name cannot be empty"},
        RefusedCase{"NoName",
                    [] {
                      ClientFields f = Named("x");
                      f.name.reset();
                      return f;
                    },
                    kStoreErrInvalidArgument, "a new client needs a name"},
        RefusedCase{"IdInUse",
                    [] {
                      ClientFields f = Named("x");
                      f.id = 4;
                      return f;
                    },
                    kStoreErrConflict, "client 4 already exists"},
        RefusedCase{"FourPlatforms",
                    [] {
                      ClientFields f = Named("x");
                      f.platformCount = 4;
                      return f;
                    },
                    kStoreErrInvalidArgument, "a client has at most 3 platforms, not 4"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ClientStoreTest, ModifyChangesOnlyWhatTheRequestCarries) {
  ClientFields f;
  f.id = 5;
  f.platformType = 2;
  f.integers[0] = 33;
  f.hostName = "web01.new.example.net";  // the name and texts absent: left as they are
  f.texts[1] = "";                       // present and empty: emptied
  f.platformCount = 1;
  f.platformValues[0] = 8;  // slot 0's text absent: kept
  ClientRecord out;
  ASSERT_OK(clients().Modify(f, &out));
  ClientRecord stored;
  ASSERT_OK(clients().Lookup(5, &stored));
  EXPECT_EQ(stored, out);
  EXPECT_EQ(stored.name, "web01");
  EXPECT_EQ(stored.hostName, "web01.new.example.net");
  EXPECT_EQ(stored.texts[0], "Web");
  EXPECT_EQ(stored.integers[0], 33u);
  EXPECT_EQ(stored.integers[2], 0u) << "numbers are always carried";
  EXPECT_EQ(stored.platforms[0], (ClientPlatform{8, "Linux"}));
  std::vector<Property> props;
  ASSERT_OK(PropertyStore(t_.store()).Get(EntityKind::kClient, 5, 0, &props));
  EXPECT_EQ(props.size(), 1u) << "properties are not the record's";

  f.name = "Fs02";
  CLmError e = clients().Modify(f, &out);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict);
  EXPECT_EQ(e.Text(), "a client named 'Fs02' already exists (client 4)");
  f.name = "WEB01";
  ASSERT_OK(clients().Modify(f, &out));  // a client may change the case of its own name
  f.name = "";
  EXPECT_EQ(clients().Modify(f, &out).GetErrorCode(), kStoreErrInvalidArgument);
  f.id = 42;
  f.name = "x";
  EXPECT_EQ(clients().Modify(f, &out).Text(), "client 42 does not exist");
}

TEST_F(ClientStoreTest, RemoveRefusesAClientThatStillOwnsEntities) {
  CLmError e = clients().Remove(3);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict);
  EXPECT_EQ(e.Text(),
            "client 3 cannot be removed: it still has 1 application type (with their instances, "
            "backup sets and subclients); remove those first");
  e = clients().Remove(4);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict);
  EXPECT_EQ(e.Text(), "client 4 cannot be removed: it is the destination of 3 replication pairs; remove "
                      "those first");
  EXPECT_EQ(clients().Remove(42).Text(), "client 42 does not exist");

  // A client that owns nothing goes with its platforms, properties, memberships and report.
  ClientRecord made;
  ASSERT_OK(clients().Create(Named("spare"), &made));
  ASSERT_OK(PropertyStore(t_.store()).Set(EntityKind::kClient, made.id, {{"sRole", 2, "spare"}}, false));
  ASSERT_OK(clients().SetFsNodeReport(made.id, "n1", 1, true));
  ASSERT_OK(clients().Remove(made.id));
  EXPECT_EQ(clients().Lookup(made.id, &made).GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(Count("SELECT count(*) FROM client_platforms WHERE client_id = 6"), 0);
  EXPECT_EQ(Count("SELECT count(*) FROM properties WHERE entity_kind = 2 AND entity_id = 6"), 0);
  EXPECT_EQ(Count("SELECT count(*) FROM client_fs_node_activity"), 0);
  EXPECT_EQ(Count("SELECT count(*) FROM clients"), 3);
}

TEST_F(ClientStoreTest, PairsForADestinationVolume) {
  std::vector<uint64_t> ids{99};
  ASSERT_OK(clients().PairsForDestinationVolume("{D1}", 0, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{1})) << "GUIDs compare without regard to case";
  ASSERT_OK(clients().PairsForDestinationVolume("{d1}", 1, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{1})) << "option 1: pairs in state 1";
  ASSERT_OK(clients().PairsForDestinationVolume("{d1}", 2, &ids));
  EXPECT_TRUE(ids.empty());
  ASSERT_OK(clients().PairsForDestinationVolume("{unknown}", 0, &ids));
  EXPECT_TRUE(ids.empty()) << "no pair is an empty list, not an error";
  EXPECT_EQ(clients().PairsForDestinationVolume("", 0, &ids).GetErrorCode(), kStoreErrInvalidArgument);
  EXPECT_EQ(clients().PairsForDestinationVolume("{d1}", -1, &ids).GetErrorCode(), kStoreErrInvalidArgument);
}

TEST_F(ClientStoreTest, ReplicationToADestinationClient) {
  ReplicationToClient r;
  ASSERT_OK(clients().ReplicationTo(4, &r));
  EXPECT_EQ(r.backupSets, (std::vector<uint64_t>{7, 8}));
  EXPECT_EQ(r.sourceClients, (std::vector<uint64_t>{3, 3}));
  EXPECT_EQ(r.pairs, (std::vector<uint64_t>{1, 2, 3}));
  ASSERT_OK(clients().ReplicationTo(3, &r));
  EXPECT_TRUE(r.backupSets.empty() && r.sourceClients.empty() && r.pairs.empty());
  EXPECT_EQ(clients().ReplicationTo(42, &r).Text(), "client 42 does not exist");
}

TEST_F(ClientStoreTest, ClientsWithAPropertyValue) {
  std::vector<ClientSummary> found;
  ASSERT_OK(clients().WithProperty("sRole", "web", &found));
  EXPECT_EQ(found, (std::vector<ClientSummary>{{4, "fs02", "fs02.example.net", ""},
                                               {5, "web01", "web01.example.net", "Web"}}));
  ASSERT_OK(clients().WithProperty("sRole", "db", &found));
  EXPECT_EQ(found.size(), 1u) << "only table 0 counts";
  ASSERT_OK(clients().WithProperty("sRole", "WEB", &found));
  EXPECT_TRUE(found.empty()) << "values compare exactly";
  EXPECT_EQ(clients().WithProperty("", "web", &found).GetErrorCode(), kStoreErrInvalidArgument);
}

TEST_F(ClientStoreTest, AsmInstancesOfAClient) {
  std::vector<uint64_t> ids;
  ASSERT_OK(clients().AsmInstances(3, 0, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{12}));
  ASSERT_OK(clients().AsmInstances(5, 20, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{51}));
  ASSERT_OK(clients().AsmInstances(5, 10, &ids));
  EXPECT_TRUE(ids.empty());
  EXPECT_EQ(clients().AsmInstances(42, 0, &ids).Text(), "client 42 does not exist");
}

TEST_F(ClientStoreTest, AFsNodeReportReplacesTheOneBefore) {
  FsNodeReport report;
  EXPECT_EQ(clients().FsNodeReportOf(5, &report).GetErrorCode(), kStoreErrNotFound);
  ASSERT_OK(clients().SetFsNodeReport(5, "first", 1, false));
  ASSERT_OK(clients().SetFsNodeReport(5, "second", -2, true));
  ASSERT_OK(clients().FsNodeReportOf(5, &report));
  EXPECT_EQ(report.data, "second");
  EXPECT_EQ(report.value, -2);
  EXPECT_TRUE(report.flag);
  EXPECT_GT(report.reportedAt, 1700000000);
  EXPECT_EQ(clients().SetFsNodeReport(42, "x", 0, false).Text(), "client 42 does not exist");
}

}  // namespace
}  // namespace appmgr::server
