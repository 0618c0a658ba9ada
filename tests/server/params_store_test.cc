// GlobalParamStore, ClientGroupStore and DomainStore on the small fixture, and what the
// fixture loader holds them to.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "server/store/ClientGroupStore.h"
#include "server/store/DomainStore.h"
#include "server/store/GlobalParamStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// Two more clients and groups beside the small fixture: client 3 is in both groups.
constexpr std::string_view kGroupsFixture = R"json({
  "format": 1,
  "clients": [{"id": 5, "name": "web01", "hostName": "web01.example.net"}],
  "clientGroups": [
    {"id": 1, "name": "Production", "text2": "nightly", "members": [3, 4]},
    {"id": 4, "name": "Web", "int2": 9, "members": [3, 5]}
  ]
})json";

#define EXPECT_ERROR(expr, code, text)             \
  do {                                             \
    CLmError expect_error_ = (expr);               \
    EXPECT_EQ(expect_error_.GetErrorCode(), code); \
    EXPECT_EQ(expect_error_.Text(), text);         \
  } while (0)

class ParamsStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kSmallFixture));
  }
  std::string Param(const std::string& name) {
    std::string value = "<unread>";
    EXPECT_OK(params().Get(name, &value));
    return value;
  }
  GlobalParamStore params() { return GlobalParamStore(t_.store()); }
  ClientGroupStore groups() { return ClientGroupStore(t_.store()); }
  DomainStore domains() { return DomainStore(t_.store()); }

  TempStore t_;
};

// ---- Global parameters ----

TEST_F(ParamsStoreTest, AFreshInstallationReadsEveryBuiltInAtItsDefault) {
  ASSERT_FALSE(BuiltInGlobalParams().empty());
  for (const ValueDefinition& d : BuiltInGlobalParams()) {
    EXPECT_EQ(Param(d.name), d.defaultValue) << d.name;
    // Every default passes its own type's check unchanged.
    std::string canonical = d.defaultValue;
    EXPECT_OK(CheckGlobalParam(d.name, &canonical));
    EXPECT_EQ(canonical, d.defaultValue) << d.name;
  }
  std::string value = "kept";
  EXPECT_ERROR(params().Get("sNeverSet", &value), kStoreErrNotFound,
               "global parameter 'sNeverSet' is not set");
  EXPECT_EQ(value, "kept");
  // Names are compared exactly.
  EXPECT_ERROR(params().Get("nmaxconcurrentjobs", &value), kStoreErrNotFound,
               "global parameter 'nmaxconcurrentjobs' is not set");
}

struct TypedCase {
  const char* name;
  const char* value;
  const char* stored;  // null: refused
};

TEST_F(ParamsStoreTest, BuiltInsTakeValuesOfTheirTypeInCanonicalForm) {
  const TypedCase cases[] = {
      {"nMaxConcurrentJobs", "10000", "10000"},
      {"nMaxConcurrentJobs", "007", "7"},
      {"nMaxConcurrentJobs", "1", "1"},
      {"nMaxConcurrentJobs", "0", nullptr},
      {"nMaxConcurrentJobs", "10001", nullptr},
      {"nMaxConcurrentJobs", "-5", nullptr},
      {"nMaxConcurrentJobs", " 5", nullptr},
      {"nMaxConcurrentJobs", "5x", nullptr},
      {"nMaxConcurrentJobs", "", nullptr},
      {"nMaxConcurrentJobs", "-", nullptr},
      {"nAuditRetentionDays", "99999999999999999999", nullptr},
      {"bAllowClientRegistration", "Yes", "1"},
      {"bAllowClientRegistration", "off", "0"},
      {"bAllowClientRegistration", "TRUE", "1"},
      {"bAllowClientRegistration", "2", nullptr},
      {"sTimeZone", "", ""},
      {"sTimeZone", " Europe/Paris ", " Europe/Paris "},
      {"sAnythingElse", "007", "007"},  // not built in: text, kept as given
  };
  for (const TypedCase& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " = '" + c.value + "'");
    std::string previous;
    const bool wasSet = !params().Get(c.name, &previous);
    CLmError e = params().Set(c.name, c.value);
    if (c.stored == nullptr) {
      EXPECT_EQ(e.GetErrorCode(), kStoreErrInvalidArgument) << e.Text();
      if (wasSet) {
        EXPECT_EQ(Param(c.name), previous) << "a refused value changes nothing";
      }
    } else {
      EXPECT_OK(e);
      EXPECT_EQ(Param(c.name), c.stored);
    }
  }
  EXPECT_ERROR(params().Set("nMaxConcurrentJobs", "many"), kStoreErrInvalidArgument,
               "global parameter 'nMaxConcurrentJobs' takes a whole number from 1 to 10000, not "
               "'many'");
  EXPECT_ERROR(params().Set("bAllowClientRegistration", "maybe"), kStoreErrInvalidArgument,
               "global parameter 'bAllowClientRegistration' takes 0 or 1 (or yes/no, true/false, "
               "on/off), not 'maybe'");
}

TEST_F(ParamsStoreTest, NamesAndValuesAreBounded) {
  EXPECT_ERROR(params().Set("", "x"), kStoreErrInvalidArgument,
               "a global parameter's name cannot be empty");
  EXPECT_OK(params().Set(std::string(kMaxParamNameBytes, 'n'), "x"));
  EXPECT_ERROR(params().Set(std::string(kMaxParamNameBytes + 1, 'n'), "x"),
               kStoreErrInvalidArgument,
               "a global parameter's name is at most 255 bytes long, not 256");
  EXPECT_ERROR(params().Set("s\nInjected", "x"), kStoreErrInvalidArgument,
               "the global parameter name 's?Injected' holds a control character");
  EXPECT_OK(params().Set("sBig", std::string(kMaxValueBytes, 'v')));
  EXPECT_ERROR(params().Set("sBig", std::string(kMaxValueBytes + 1, 'v')), kStoreErrInvalidArgument,
               "the value of global parameter 'sBig' is 65537 bytes long; at most 65536 fit");
  EXPECT_EQ(Param("sBig").size(), kMaxValueBytes);
}

TEST_F(ParamsStoreTest, RemovingABuiltInReturnsItToItsDefault) {
  ASSERT_OK(params().Set("nAuditRetentionDays", "30"));
  EXPECT_EQ(Param("nAuditRetentionDays"), "30");
  ASSERT_OK(params().Remove("nAuditRetentionDays"));
  EXPECT_EQ(Param("nAuditRetentionDays"), "365");
  EXPECT_OK(params().Remove("nAuditRetentionDays"));  // already at its default

  ASSERT_OK(params().Set("sOwn", "mine"));
  ASSERT_OK(params().Remove("sOwn"));
  std::string value;
  EXPECT_EQ(params().Get("sOwn", &value).GetErrorCode(), kStoreErrNotFound);
  EXPECT_ERROR(params().Remove("sOwn"), kStoreErrNotFound, "global parameter 'sOwn' is not set");
  EXPECT_EQ(params().Remove("").GetErrorCode(), kStoreErrInvalidArgument);
}

TEST_F(ParamsStoreTest, ValuesSurviveAReopen) {
  ASSERT_OK(params().Set("nMaxConcurrentJobs", "12"));
  ASSERT_OK(params().SetApp(301, 2, "no"));
  ASSERT_OK(t_.Reopen());
  EXPECT_EQ(Param("nMaxConcurrentJobs"), "12");
  std::string value;
  ASSERT_OK(params().GetApp(301, 2, &value));
  EXPECT_EQ(value, "0");
}

// ---- Application properties ----

TEST_F(ParamsStoreTest, ApplicationPropertiesBelongToAnApplicationOfAClient) {
  std::string value = "kept";
  for (const AppPropertyDefinition& d : BuiltInAppProperties()) {
    ASSERT_OK(params().GetApp(301, d.number, &value));
    EXPECT_EQ(value, d.value.defaultValue) << d.value.name;
  }
  value = "kept";
  EXPECT_ERROR(params().GetApp(301, 99, &value), kStoreErrNotFound,
               "client application type 301 has no application property 99");
  EXPECT_ERROR(params().GetApp(999, 1, &value), kStoreErrNotFound,
               "client application type 999 does not exist");
  EXPECT_ERROR(params().SetApp(999, 1, "2"), kStoreErrNotFound,
               "client application type 999 does not exist");
  EXPECT_EQ(value, "kept");

  ASSERT_OK(params().SetApp(301, 99, "free text"));
  ASSERT_OK(params().GetApp(301, 99, &value));
  EXPECT_EQ(value, "free text");
  ASSERT_OK(params().SetApp(301, 1, "08"));
  ASSERT_OK(params().GetApp(301, 1, &value));
  EXPECT_EQ(value, "8");
  EXPECT_ERROR(params().SetApp(301, 1, "65"), kStoreErrInvalidArgument,
               "application property 1 (data streams) takes a whole number from 1 to 64, not '65'");
  ASSERT_OK(params().GetApp(301, 1, &value));
  EXPECT_EQ(value, "8");
}

TEST_F(ParamsStoreTest, ApplicationPropertiesGoWithTheirApplication) {
  ASSERT_OK(params().SetApp(301, 99, "x"));
  {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kWrite);
    ASSERT_OK(
        txn.Exec("DELETE FROM client_app_types WHERE id = 301;"
                 "INSERT INTO client_app_types (id, client_id, app_type_id) VALUES (301, 4, 10)"));
    ASSERT_OK(txn.Commit());
  }
  std::string value;
  EXPECT_EQ(params().GetApp(301, 99, &value).GetErrorCode(), kStoreErrNotFound)
      << "a new application under the old id starts without the old one's properties";
}

// ---- Client groups ----

ClientGroup Named(const char* name) {
  ClientGroup g;
  g.name = name;
  return g;
}

class ClientGroupStoreTest : public ParamsStoreTest {
 protected:
  void SetUp() override {
    ParamsStoreTest::SetUp();
    ASSERT_OK(t_.Load(kGroupsFixture));
  }
};

TEST_F(ClientGroupStoreTest, CreateGivesTheNextIdAndLookupFindsTheGroupInAnyCase) {
  ClientGroup wanted{77, "Databases", "SQL servers", "dba team", 2, 3, 4, 5, 6};
  ClientGroup created;
  ASSERT_OK(groups().Create(wanted, &created));
  ClientGroup expected = wanted;
  expected.id = 5;  // one above the highest in use (4), whatever the request said
  EXPECT_EQ(created, expected);

  ClientGroup found;
  ASSERT_OK(groups().Lookup("dATABASES", &found));
  EXPECT_EQ(found, expected);
  ASSERT_OK(groups().Lookup("web", &found));
  EXPECT_EQ(found.id, 4u);
  EXPECT_EQ(found.int2, 9u);
}

TEST_F(ClientGroupStoreTest, NamesAreRequiredAndUniqueRegardlessOfCase) {
  ClientGroup created{};
  EXPECT_ERROR(groups().Create(Named("PRODUCTION"), &created), kStoreErrConflict,
               "client group 'PRODUCTION' already exists (id 1, 'Production')");
  EXPECT_ERROR(groups().Create(Named(""), &created), kStoreErrInvalidArgument,
               "a client group's name cannot be empty");
  EXPECT_EQ(created.id, 0u);
  ClientGroup found;
  EXPECT_ERROR(groups().Lookup("Nobody", &found), kStoreErrNotFound,
               "no client group is named 'Nobody'");
  EXPECT_EQ(groups().Lookup("", &found).GetErrorCode(), kStoreErrInvalidArgument);
}

TEST_F(ClientGroupStoreTest, AClientMayBelongToSeveralGroups) {
  std::vector<uint64_t> ids;
  ASSERT_OK(groups().GroupsOfClient(3, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{1, 4}));
  ASSERT_OK(groups().Members(4, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{3, 5}));

  ASSERT_OK(groups().AddMember(4, 4));
  ASSERT_OK(groups().AddMember(4, 4));  // being a member already is not an error
  ASSERT_OK(groups().Members(4, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{3, 4, 5}));
  ASSERT_OK(groups().RemoveMember(4, 3));
  ASSERT_OK(groups().GroupsOfClient(3, &ids));
  EXPECT_EQ(ids, (std::vector<uint64_t>{1}));

  EXPECT_ERROR(groups().RemoveMember(4, 3), kStoreErrNotFound,
               "client 3 is not a member of client group 4");
  EXPECT_ERROR(groups().AddMember(9, 3), kStoreErrNotFound, "client group 9 does not exist");
  EXPECT_ERROR(groups().AddMember(4, 9), kStoreErrNotFound, "client 9 does not exist");
  EXPECT_ERROR(groups().Members(9, &ids), kStoreErrNotFound, "client group 9 does not exist");
  EXPECT_ERROR(groups().GroupsOfClient(9, &ids), kStoreErrNotFound, "client 9 does not exist");
}

// ---- The domain ----

const Domain kDomain{0, 2, 3, 4, "lab", "ch01.example.net", "the lab", "1.0", "five", "six", -7};

TEST_F(ParamsStoreTest, WithoutADomainEveryOperationButCreateIsNotFound) {
  Domain d;
  EXPECT_ERROR(domains().Lookup(0, &d), kStoreErrNotFound, "this installation has no domain");
  EXPECT_ERROR(domains().Modify(kDomain, &d), kStoreErrNotFound, "this installation has no domain");
  EXPECT_ERROR(domains().Remove(1), kStoreErrNotFound, "this installation has no domain");
}

TEST_F(ParamsStoreTest, TheDomainIsOneRecordCreatedOnce) {
  Domain created, found;
  ASSERT_OK(domains().Create(kDomain, &created));
  Domain expected = kDomain;
  expected.id = 1;
  EXPECT_EQ(created, expected);
  ASSERT_OK(domains().Lookup(0, &found));
  EXPECT_EQ(found, expected);
  ASSERT_OK(domains().Lookup(1, &found));
  EXPECT_ERROR(domains().Lookup(2, &found), kStoreErrNotFound,
               "domain 2 does not exist (this installation's domain is 1)");

  Domain second = kDomain;
  second.id = 2;
  second.name = "other";
  EXPECT_ERROR(domains().Create(second, &created), kStoreErrConflict,
               "this installation already has a domain (1, 'lab'); modify or remove it instead");

  Domain nameless = kDomain;
  nameless.name.clear();
  EXPECT_EQ(domains().Create(nameless, &created).GetErrorCode(), kStoreErrInvalidArgument);
}

TEST_F(ParamsStoreTest, ModifyReplacesAllButTheIdAndTheNumber) {
  Domain created, stored, found;
  ASSERT_OK(domains().Create(kDomain, &created));
  Domain change{0, 20, 30, 40, "renamed", "ch02", "", "2.0", "", "", 99};
  ASSERT_OK(domains().Modify(change, &stored));
  Domain expected = change;
  expected.id = 1;
  expected.number = -7;  // fixed at creation
  EXPECT_EQ(stored, expected);
  ASSERT_OK(domains().Lookup(0, &found));
  EXPECT_EQ(found, expected);

  change.id = 5;
  EXPECT_ERROR(domains().Modify(change, &stored), kStoreErrNotFound,
               "domain 5 does not exist (this installation's domain is 1)");
  change.id = 1;
  change.name.clear();
  EXPECT_ERROR(domains().Modify(change, &stored), kStoreErrInvalidArgument,
               "a domain's name cannot be empty");
  ASSERT_OK(domains().Lookup(0, &found));
  EXPECT_EQ(found, expected);
}

TEST_F(ParamsStoreTest, RemoveNamesTheDomainByIdAndMakesRoomForANewOne) {
  Domain created, found;
  Domain withId = kDomain;
  withId.id = 42;
  ASSERT_OK(domains().Create(withId, &created));
  EXPECT_EQ(created.id, 42u);
  EXPECT_ERROR(domains().Remove(0), kStoreErrInvalidArgument,
               "a domain is removed by its id, not by id 0");
  EXPECT_EQ(domains().Remove(1).GetErrorCode(), kStoreErrNotFound);
  ASSERT_OK(domains().Remove(42));
  EXPECT_EQ(domains().Lookup(0, &found).GetErrorCode(), kStoreErrNotFound);
  ASSERT_OK(domains().Create(kDomain, &created));
  EXPECT_EQ(created.id, 1u);

  Domain huge = kDomain;
  huge.id = uint64_t{1} << 63;
  ASSERT_OK(domains().Remove(1));
  EXPECT_EQ(domains().Create(huge, &created).GetErrorCode(), kStoreErrInvalidArgument);
}

// ---- Fixtures ----

TEST(ParamsFixture, HoldsValuesToTheirTypesAndOneDomain) {
  struct Case {
    const char* fixture;
    int code;
    const char* text;
  } cases[] = {
      {R"({"format": 1, "globalParams": [{"name": "nMaxConcurrentJobs", "value": "lots"}]})",
       kStoreErrInvalidArgument,
       "test: globalParams[0]: global parameter 'nMaxConcurrentJobs' takes a whole number from 1 "
       "to 10000, not 'lots'"},
      {R"({"format": 1, "appProperties": [{"id1": 301, "id2": 1, "value": "1"}]})",
       kStoreErrNotFound, "test: appProperties[0]: client application type 301 does not exist"},
      {R"({"format": 1, "domain": {"id": 1, "text1": "a"}})", kStoreErrConflict,
       "test: domain: the installation has a domain already (7)"},
  };
  for (const Case& c : cases) {
    TempStore t;
    ASSERT_OK(t.Open());
    ASSERT_OK(t.Load(R"({"format": 1, "domain": {"id": 7, "text1": "first"}})"));
    CLmError e = t.Load(c.fixture);
    EXPECT_EQ(e.GetErrorCode(), c.code) << e.Text();
    EXPECT_EQ(e.Text(), c.text);
  }
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.Load(R"({"format": 1, "globalParams": [{"name": "bAllowClientRegistration",
                                                      "value": "no"}]})"));
  std::string value;
  ASSERT_OK(GlobalParamStore(t.store()).Get("bAllowClientRegistration", &value));
  EXPECT_EQ(value, "0") << "stored in canonical form";
}

}  // namespace
}  // namespace appmgr::server
