// The request handlers on a real server core and store, loaded with the demo fixture, driven by a
// client session: every backup-set message succeeds and fails as docs/server.md says, the cache
// fill lists a job's prepared entries, and the pre-install lookup answers the configured address.
#include "server/handlers/BackupSetHandlers.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/net/XdrCodec.h"
#include "platform/xml/AppMessages.h"
#include "protocol/Messages.h"
#include "server/handlers/PreInstallHandlers.h"
#include "server/store/BackupSetStore.h"
#include "server/store/PreparedCacheStore.h"
#include "server/store/PropertyStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

constexpr const char* kConsole = "https://ch01.lab.example.net/webconsole";

class HandlersTest : public testing::Test {
 public:
  template <class Req, class Resp>
  Resp Call(const wire::Op<Req, Resp>& op, Req req) {
    return client_.Call(op, req);
  }
  template <class Req, class Resp>
  Outcome Try(const wire::Op<Req, Resp>& op, Req req) {
    return OutcomeOf(client_.Call(op, req));
  }

 protected:
  std::vector<Property> Props(uint64_t id, int64_t table = 0) {
    GenericGetPropsReq req;
    req.id = id;
    req.table = table;
    GenericGetPropsResp resp = Call(kBsGetProperties, req);
    EXPECT_EQ(resp.hdr.errorCode, 0) << resp.hdr.errorText;
    std::vector<Property> out;
    for (uint32_t i = 0; i < resp.count; ++i) {
      out.push_back(Property{resp.props[i].name, resp.props[i].type, resp.props[i].value});
    }
    return out;
  }

  int64_t Deleted(const char* table, uint64_t id) {
    std::string sql = std::string("SELECT contents_deleted FROM ") + table + " WHERE id = ?1";
    Store::Transaction txn(served_.store(), "test", Store::Transaction::kRead);
    Statement st = txn.Prepare(sql.c_str());
    st.BindU64(1, id);
    bool row = false;
    EXPECT_OK(st.Step(&row));
    return row ? st.Int(0) : -1;
  }

  ServedStore served_{kConsole};
  HandlerClient client_{served_.connect()};
};

// ---- Failures every message shares ----

struct FailureCase {
  const char* name;
  std::function<Outcome(HandlersTest&)> call;
  int code;
  const char* text;
};
void PrintTo(const FailureCase& c, std::ostream* os) {
  *os << c.name;
}

// A case sending `req` (texts and arrays it points at must be static) under `op`. By default, the
// answer to a request naming a backup set that does not exist.
template <class Req, class Resp>
FailureCase Case(const char* name, const wire::Op<Req, Resp>& op, Req req,
                 int code = kStoreErrNotFound, const char* text = "backup set 42 does not exist") {
  return FailureCase{name, [&op, req](HandlersTest& t) { return t.Try(op, req); }, code, text};
}

class HandlersFailure : public HandlersTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(HandlersFailure, PutsCodeAndTextInTheHeaderAndNothingElse) {
  const FailureCase& c = GetParam();
  Outcome o = c.call(*this);
  EXPECT_EQ(o.code, c.code);
  EXPECT_EQ(o.text, c.text);
  EXPECT_TRUE(o.restZero) << "a failed answer carries the header alone";
}

AppMgrProps gProp[1] = {{"n", 1, "v"}};
AppStringList gName[1] = {{"n"}};

// Every backup-set message, naming a backup set that does not exist.
INSTANTIATE_TEST_SUITE_P(
    UnknownBackupSet, HandlersFailure,
    testing::Values(
        Case("Lookup", kBsLookup, GenericLookupReq4{.hdr = {}, .id = 42}),
        Case("Update", kBsUpdate, GenericUpdateReq2{.hdr = {}, .id = 42, .name = "x"}),
        Case("DeleteAll", kDeleteAll, RecDelAppIdsReq{.hdr = {}, .id = 42, .level = 4}),
        Case("UndeleteAll", kUndeleteAll, RecDelAppIdsReq{.hdr = {}, .id = 42, .level = 4}),
        Case("GetProperties", kBsGetProperties, GenericGetPropsReq{.hdr = {}, .id = 42}),
        Case("SetProperties", kBsSetProperties,
             GenericSetPropsReq{.hdr = {}, .id = 42, .count = 1, .props = gProp}),
        Case("RemoveProperties", kBsRemoveProperties,
             GenericRemovePropsReq1{.hdr = {}, .id = 42, .count = 1, .props = gProp}),
        Case("RemovePropertyNames", kBsRemovePropertyNames,
             GenericRemovePropsReq2{.hdr = {}, .id = 42, .count = 1, .names = gName}),
        Case("DefaultSubclientForStore", kBsDefaultSubclientForStore,
             GetDefaultSCForStoreReq{.hdr = {}, .id = 42, .storeName = "primary"}),
        Case("StoreList", kBsStoreList, GetStoreListReq{.hdr = {}, .id = 42}),
        Case("WildcardList", kBsWildcardList, GetStoreListReq{.hdr = {}, .id = 42}),
        Case("PairConflict", kBsPairConflict,
             CheckPairConflictReq{.hdr = {}, .id = 42, .text1 = "D:\\N", .text2 = "/N"}),
        Case("FrInterfacePair", kBsFrInterfacePair, getFRdataInterfacePairReq{.hdr = {}, .id = 42}),
        Case("ClientId", kBsClientId, GetClientIdFromBackupSetReq{.hdr = {}, .id = 42}),
        Case("FlrSystemState", kBsFlrSystemState,
             APPFLRSystemStateInfoReq{.hdr = {}, .id = 42, .name = "db01"})),
    [](const auto& info) { return std::string(info.param.name); });

const std::string kLongSource(DataPair::kSourceMax + 1, 's');
AppMgrProps gNoName[2] = {{"a", 1, "v"}, {nullptr, 1, "v"}};
AppMgrProps gNoValue[1] = {{"a", 1, nullptr}};
AppStringList gNullName[2] = {{"nRetentionDays"}, {nullptr}};
constexpr int kInvalid = kStoreErrInvalidArgument;

// Requests the server refuses: null texts, reserved fields with other values, and what the store
// refuses.
INSTANTIATE_TEST_SUITE_P(
    Refused, HandlersFailure,
    testing::Values(
        Case("UpdateWithoutName", kBsUpdate, GenericUpdateReq2{.hdr = {}, .id = 102}, kInvalid,
             "the request carries no new name"),
        Case("UpdateToEmptyName", kBsUpdate, GenericUpdateReq2{.hdr = {}, .id = 102, .name = ""},
             kInvalid, "backup set 102 cannot take an empty name"),
        Case("DeleteAllOfABackupSetWithASecondId", kDeleteAll,
             RecDelAppIdsReq{.hdr = {}, .id = 102, .secondId = 1, .level = 4}, kInvalid,
             "a level-4 request names its entity by one id; the second id must be 0, not 1"),
        Case("UndeleteAllOfAnUnknownLevel", kUndeleteAll, RecDelAppIdsReq{.hdr = {}, .id = 102},
             kInvalid, "entity level 0 is unknown (2 application type, 3 instance, 4 backup set)"),
        Case("SetPropertyWithoutName", kBsSetProperties,
             GenericSetPropsReq{.hdr = {}, .id = 102, .count = 2, .props = gNoName}, kInvalid,
             "property 2 of 2 in the request has no name"),
        Case("SetPropertyWithoutValue", kBsSetProperties,
             GenericSetPropsReq{.hdr = {}, .id = 102, .count = 1, .props = gNoValue}, kInvalid,
             "property 1 of 1 in the request has no value"),
        Case("RemovePropertyWithoutName", kBsRemoveProperties,
             GenericRemovePropsReq1{.hdr = {}, .id = 102, .count = 1, .props = gNoName + 1},
             kInvalid, "property 1 of 1 in the request has no name"),
        Case("RemoveNullName", kBsRemovePropertyNames,
             GenericRemovePropsReq2{.hdr = {}, .id = 102, .count = 2, .names = gNullName}, kInvalid,
             "name 2 of 2 in the request is missing"),
        Case("DefaultSubclientWithoutStoreName", kBsDefaultSubclientForStore,
             GetDefaultSCForStoreReq{.hdr = {}, .id = 102}, kInvalid,
             "the request carries no store name"),
        Case("PairConflictWithoutSource", kBsPairConflict,
             CheckPairConflictReq{.hdr = {}, .id = 105, .text2 = "/x"}, kInvalid,
             "the request carries no source of the new pair"),
        Case("PairConflictWithoutDestination", kBsPairConflict,
             CheckPairConflictReq{.hdr = {}, .id = 105, .text1 = "D:"}, kInvalid,
             "the request carries no destination of the new pair"),
        Case("PairConflictSourceOneByteTooLong", kBsPairConflict,
             CheckPairConflictReq{
                 .hdr = {}, .id = 105, .text1 = kLongSource.c_str(), .text2 = "/x"},
             kInvalid, "the source of the new pair is 255 bytes long; at most 254 fit"),
        Case("SystemStateWithoutName", kBsFlrSystemState,
             APPFLRSystemStateInfoReq{.hdr = {}, .id = 105}, kInvalid,
             "the request carries no name"),
        Case("UpdateToASiblingsName", kBsUpdate,
             GenericUpdateReq2{.hdr = {}, .id = 102, .name = "replication"}, kStoreErrConflict,
             "backup set 102 cannot be renamed to 'replication': another "
             "backup set of the same instance has that name"),
        Case("DefaultSubclientOfStoreWithoutOne", kBsDefaultSubclientForStore,
             GetDefaultSCForStoreReq{.hdr = {}, .id = 105, .storeName = "standby"},
             kStoreErrNotFound, "store 'standby' of backup set 105 has no default subclient"),
        Case("DefaultSubclientOfUnknownStore", kBsDefaultSubclientForStore,
             GetDefaultSCForStoreReq{.hdr = {}, .id = 102, .storeName = ""}, kStoreErrNotFound,
             "backup set 102 has no store named ''"),
        Case("InterfacePairUnderUnknownSelector", kBsFrInterfacePair,
             getFRdataInterfacePairReq{.hdr = {}, .id = 105, .pairId = 2, .selector = 1},
             kStoreErrNotFound,
             "backup set 105 has no interface pair for pair 2 under selector 1")),
    [](const auto& info) { return std::string(info.param.name); });

// ---- Each message's success ----

template <class Req>
Req WithId(uint64_t id) {
  Req r;
  r.id = id;
  return r;
}

TEST_F(HandlersTest, LookupAnswersNameValueAndDescription) {
  GenericLookupResp4 r = Call(kBsLookup, WithId<GenericLookupReq4>(102));
  EXPECT_EQ(r.hdr.version, 2u);
  EXPECT_EQ(r.hdr.errorCode, 0);
  EXPECT_EQ(r.hdr.errorText, nullptr);
  EXPECT_STREQ(r.name, "defaultBackupSet");
  EXPECT_EQ(r.value, 7);
  EXPECT_STREQ(r.text, "Database server file system");
}

TEST_F(HandlersTest, UpdateRenamesAndSetsTheValue) {
  GenericUpdateReq2 u = WithId<GenericUpdateReq2>(102);
  u.name = "files";
  u.value = -3;
  Outcome o = Try(kBsUpdate, u);
  EXPECT_EQ(o.code, 0) << o.text;
  GenericLookupResp4 r = Call(kBsLookup, WithId<GenericLookupReq4>(102));
  EXPECT_STREQ(r.name, "files");
  EXPECT_EQ(r.value, -3);
  EXPECT_STREQ(r.text, "Database server file system");
}

// Each level reaches the entity it names: backup set 102, instance 13 (backup set 103), and the
// application type 10 of client 3 (instance 12: backup sets 102 and 105). The application type
// is deleted through its own request, answered under the delete-all's response id.
TEST_F(HandlersTest, DeleteAllActsOnTheEntityItsLevelNames) {
  RecDelAppIdsReq set = WithId<RecDelAppIdsReq>(102), instance = WithId<RecDelAppIdsReq>(13);
  set.level = kEntityLevelBackupSet;
  instance.level = kEntityLevelInstance;
  RecDelAppIdsReq1 appType = WithId<RecDelAppIdsReq1>(3);
  appType.secondId = 10;
  appType.level = kEntityLevelAppType;
  appType.option = 5;
  for (int round = 0; round < 2; ++round) {  // repeating either is not an error
    EXPECT_EQ(Try(kDeleteAll, set).code, 0);
    EXPECT_EQ(Deleted("backup_sets", 102), 1);
    EXPECT_EQ(Deleted("subclients", 1021), 1);
    EXPECT_EQ(Deleted("subclients", 1022), 1);
    EXPECT_EQ(Deleted("backup_sets", 105), 0) << "another backup set of the instance";
  }
  EXPECT_EQ(Try(kUndeleteAll, set).code, 0);
  EXPECT_EQ(Deleted("backup_sets", 102), 0);
  EXPECT_EQ(Deleted("subclients", 1022), 0);

  EXPECT_EQ(Try(kDeleteAll, instance).code, 0);
  EXPECT_EQ(Deleted("instances", 13), 1);
  EXPECT_EQ(Deleted("backup_sets", 103), 1);
  EXPECT_EQ(Deleted("subclients", 1032), 1);
  EXPECT_EQ(Deleted("backup_sets", 102), 0) << "an instance beside it";

  EXPECT_EQ(Try(kAppTypeDeleteAll, appType).code, 0);
  EXPECT_EQ(Deleted("instances", 12), 1);
  EXPECT_EQ(Deleted("backup_sets", 105), 1);
  EXPECT_EQ(Deleted("subclients", 1051), 1);
  RecDelAppIdsReq undelete = WithId<RecDelAppIdsReq>(3);
  undelete.secondId = 10;
  undelete.level = kEntityLevelAppType;
  EXPECT_EQ(Try(kUndeleteAll, undelete).code, 0);
  EXPECT_EQ(Deleted("backup_sets", 105), 0);
  EXPECT_EQ(Deleted("instances", 13), 1) << "application type 20 was not named";
}

TEST_F(HandlersTest, GetPropertiesReadsTheSelectedTableInOrder) {
  EXPECT_EQ(Props(102),
            (std::vector<Property>{{"nRetentionDays", 1, "30"}, {"sScanMode", 2, "journal"}}));
  EXPECT_TRUE(Props(102, 1).empty());
  EXPECT_TRUE(Props(101).empty());
  GenericGetPropsResp none = Call(kBsGetProperties, WithId<GenericGetPropsReq>(101));
  EXPECT_EQ(none.count, 0u);
  EXPECT_EQ(none.props, nullptr);
}

TEST_F(HandlersTest, SetPropertiesUpdatesInPlaceOrReplacesAll) {
  AppMgrProps add[2] = {{"sScanMode", 2, "full"}, {"nNew", 1, "5"}};
  GenericSetPropsReq r = WithId<GenericSetPropsReq>(102);
  r.count = 2;
  r.props = add;
  ASSERT_EQ(Try(kBsSetProperties, r).code, 0);
  EXPECT_EQ(Props(102),
            (std::vector<Property>{
                {"nRetentionDays", 1, "30"}, {"sScanMode", 2, "full"}, {"nNew", 1, "5"}}));

  AppMgrProps only[1] = {{"nOnly", 7, ""}};
  r.count = 1;
  r.props = only;
  r.flag = 1;
  ASSERT_EQ(Try(kBsSetProperties, r).code, 0);
  EXPECT_EQ(Props(102), (std::vector<Property>{{"nOnly", 7, ""}}));

  r.count = 0;  // replacing with nothing clears the table
  r.props = nullptr;
  ASSERT_EQ(Try(kBsSetProperties, r).code, 0);
  EXPECT_TRUE(Props(102).empty());
}

// Both remove messages: by property elements and by names.
struct RemoveCase {
  const char* name;
  std::function<Outcome(HandlersTest&, const std::vector<const char*>&, bool strict)> remove;
};
void PrintTo(const RemoveCase& c, std::ostream* os) {
  *os << c.name;
}

class HandlersRemove : public HandlersTest, public testing::WithParamInterface<RemoveCase> {};

TEST_P(HandlersRemove, StrictRemovesNothingWhenANameIsAbsentLenientIgnoresIt) {
  Outcome strict = GetParam().remove(*this, {"nRetentionDays", "nMissing", "nGone"}, true);
  EXPECT_EQ(strict.code, kStoreErrNotFound);
  EXPECT_NE(strict.text.find("'nMissing', 'nGone'"), std::string::npos) << strict.text;
  EXPECT_EQ(Props(102).size(), 2u);

  Outcome lenient = GetParam().remove(*this, {"nRetentionDays", "nMissing"}, false);
  EXPECT_EQ(lenient.code, 0) << lenient.text;
  EXPECT_EQ(Props(102), (std::vector<Property>{{"sScanMode", 2, "journal"}}));

  EXPECT_EQ(GetParam().remove(*this, {"sScanMode"}, true).code, 0);
  EXPECT_TRUE(Props(102).empty());
  EXPECT_EQ(GetParam().remove(*this, {}, true).code, 0) << "an empty list removes nothing";
}

INSTANTIATE_TEST_SUITE_P(
    BothMessages, HandlersRemove,
    testing::Values(
        RemoveCase{"ByProperties",
                   [](HandlersTest& t, const std::vector<const char*>& names, bool strict) {
                     std::vector<AppMgrProps> p(names.size());
                     for (size_t i = 0; i < names.size(); ++i) p[i].name = names[i];
                     GenericRemovePropsReq1 r = WithId<GenericRemovePropsReq1>(102);
                     r.count = static_cast<uint32_t>(p.size());
                     r.props = p.empty() ? nullptr : p.data();
                     r.flag = strict;
                     return t.Try(kBsRemoveProperties, r);
                   }},
        RemoveCase{"ByNames",
                   [](HandlersTest& t, const std::vector<const char*>& names, bool strict) {
                     std::vector<AppStringList> n(names.size());
                     for (size_t i = 0; i < names.size(); ++i) n[i].text = names[i];
                     GenericRemovePropsReq2 r = WithId<GenericRemovePropsReq2>(102);
                     r.count = static_cast<uint32_t>(n.size());
                     r.names = n.empty() ? nullptr : n.data();
                     r.flag = strict;
                     return t.Try(kBsRemovePropertyNames, r);
                   }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(HandlersTest, DefaultSubclientForStoreAnswersTheStoresDefault) {
  GetDefaultSCForStoreReq r = WithId<GetDefaultSCForStoreReq>(102);
  r.storeName = "archive";
  GetDefaultSCForStoreResp resp = Call(kBsDefaultSubclientForStore, r);
  EXPECT_EQ(resp.hdr.errorCode, 0);
  EXPECT_EQ(resp.subclientId, 1022u);
}

std::vector<std::string> Texts(const GenericStringListResp& r) {
  EXPECT_EQ(r.hdr.errorCode, 0) << (r.hdr.errorText ? r.hdr.errorText : "");
  return std::vector<std::string>(r.texts, r.texts + r.count);
}

TEST_F(HandlersTest, StoreAndWildcardListsAnswerInOrderAndMayBeEmpty) {
  EXPECT_EQ(Texts(Call(kBsStoreList, WithId<GetStoreListReq>(102))),
            (std::vector<std::string>{"primary", "archive"}));
  EXPECT_EQ(Texts(Call(kBsWildcardList, WithId<GetStoreListReq>(102))),
            (std::vector<std::string>{"*.tmp", "~$*", "pagefile.sys"}));
  GenericStringListResp none = Call(kBsWildcardList, WithId<GetStoreListReq>(103));
  EXPECT_EQ(none.hdr.errorCode, 0);
  EXPECT_EQ(none.count, 0u);
  EXPECT_EQ(none.texts, nullptr);
}

TEST_F(HandlersTest, ClientIdAnswersTheOwningClient) {
  EXPECT_EQ(Call(kBsClientId, WithId<GetClientIdFromBackupSetReq>(105)).clientId, 3u);
  EXPECT_EQ(Call(kBsClientId, WithId<GetClientIdFromBackupSetReq>(101)).clientId, 2u);
}

TEST_F(HandlersTest, FrInterfacePairAnswersTheSelectedPair) {
  getFRdataInterfacePairReq r = WithId<getFRdataInterfacePairReq>(105);
  r.pairId = 1;
  r.selector = 1;
  getFRdataInterfacePairResp resp = Call(kBsFrInterfacePair, r);
  EXPECT_EQ(resp.hdr.errorCode, 0);
  EXPECT_STREQ(resp.first, "192.168.50.13");
  EXPECT_STREQ(resp.second, "192.168.50.14");
}

// A character array holds `text` followed by zero bytes to its end.
void ExpectArray(const char* array, size_t size, const std::string& text) {
  ASSERT_LT(text.size(), size);
  EXPECT_EQ(std::string(array, text.size()), text);
  for (size_t i = text.size(); i < size; ++i) {
    ASSERT_EQ(array[i], '\0') << "byte " << i << " after \"" << text << "\"";
  }
}
#define EXPECT_ARRAY(array, text) ExpectArray(array, sizeof(array), text)

TEST_F(HandlersTest, PairConflictAnswersTheExistingPairThenTheProposedOne) {
  CheckPairConflictReq r = WithId<CheckPairConflictReq>(105);
  r.text1 = "D:\\Data";
  r.text2 = "/replica/new";
  CheckPairConflictResp resp = Call(kBsPairConflict, r);
  ASSERT_EQ(resp.hdr.errorCode, 0) << resp.hdr.errorText;
  EXPECT_EQ(resp.conflict, 1u);
  const DataPairConflict_1& existing = resp.pair1;
  EXPECT_EQ(existing.id1, 1u);
  EXPECT_EQ(existing.id2, 105u);
  EXPECT_EQ(existing.id3, 3u);
  EXPECT_EQ(existing.id4, 4u);
  EXPECT_ARRAY(existing.text1, "D:\\Data");
  EXPECT_ARRAY(existing.text2, "{6a1f0c2e-93b4-4d2a-a1e5-0f9c8b7a6d01}");
  EXPECT_ARRAY(existing.text3, "{b2c3d4e5-f6a7-4b8c-9d0e-1f2a3b4c5d01}");
  EXPECT_ARRAY(existing.text4, "/replica/db01/Data");
  EXPECT_EQ(existing.value, 1u);
  const DataPairConflict_1& proposed = resp.pair2;
  EXPECT_EQ(proposed.id1, 0u);
  EXPECT_EQ(proposed.id2, 105u);
  EXPECT_EQ(proposed.id3, 3u);
  EXPECT_EQ(proposed.id4, 0u);
  EXPECT_ARRAY(proposed.text1, "D:\\Data");
  EXPECT_ARRAY(proposed.text2, "");
  EXPECT_ARRAY(proposed.text4, "/replica/new");
  EXPECT_EQ(proposed.value, 0u);
}

TEST_F(HandlersTest, PairConflictWithoutConflictLeavesTheFirstPairZeroAndFillsFullArrays) {
  // The longest source and destination the arrays hold, terminator included.
  std::string source(DataPair::kSourceMax, 'S');
  std::string destination(DataPair::kDestinationMax, 'D');
  CheckPairConflictReq r = WithId<CheckPairConflictReq>(105);
  r.text1 = source.c_str();
  r.text2 = destination.c_str();
  CheckPairConflictResp resp = Call(kBsPairConflict, r);
  ASSERT_EQ(resp.hdr.errorCode, 0) << resp.hdr.errorText;
  EXPECT_EQ(resp.conflict, 0u);
  DataPairConflict_1 zero;
  std::memset(static_cast<void*>(&zero), 0, sizeof zero);
  EXPECT_EQ(std::memcmp(&resp.pair1, &zero, sizeof zero), 0);
  EXPECT_ARRAY(resp.pair2.text1, source);
  EXPECT_ARRAY(resp.pair2.text4, destination);
}

TEST_F(HandlersTest, FlrSystemStateAnswersRecordsWithTheirPairs) {
  APPFLRSystemStateInfoReq r = WithId<APPFLRSystemStateInfoReq>(105);
  r.name = "db01";
  APPFLRSystemStateInfoResp resp = Call(kBsFlrSystemState, r);
  ASSERT_EQ(resp.hdr.errorCode, 0) << resp.hdr.errorText;
  ASSERT_EQ(resp.count, 2u);
  const APPFLRSystemStateInfo& a = resp.infos[0];
  EXPECT_EQ(a.id, 1u);
  EXPECT_EQ(a.value, 2u);
  EXPECT_STREQ(a.text1, "Registry");
  EXPECT_STREQ(a.text2, "HKLM\\SYSTEM");
  ASSERT_EQ(a.pairCount, 2u);
  EXPECT_EQ(a.pairs[0].id, 1u);
  EXPECT_STREQ(a.pairs[0].name, "SYSTEM");
  EXPECT_EQ(a.pairs[1].id, 2u);
  EXPECT_STREQ(a.pairs[1].name, "SOFTWARE");
  const APPFLRSystemStateInfo& b = resp.infos[1];
  EXPECT_EQ(b.id, 2u);
  EXPECT_STREQ(b.text1, "Boot files");
  ASSERT_EQ(b.pairCount, 1u);
  EXPECT_STREQ(b.pairs[0].name, "BCD");

  r.name = "nobody";
  APPFLRSystemStateInfoResp none = Call(kBsFlrSystemState, r);
  EXPECT_EQ(none.hdr.errorCode, 0);
  EXPECT_EQ(none.count, 0u);
  EXPECT_EQ(none.infos, nullptr);
}

// ---- The cache fill ----

std::vector<App::ServerMessageCacheEntity> CacheEntities(const EnableServerCacheResp& resp) {
  EXPECT_EQ(resp.hdr.errorCode, 0) << (resp.hdr.errorText ? resp.hdr.errorText : "");
  EXPECT_NE(resp.xmlText, nullptr);
  if (resp.xmlText == nullptr) return {};
  App::EnableAppServerCacheResp message;
  EXPECT_EQ(message.unserialize(resp.xmlText), 0) << message.GetReadError();
  return message.GetCacheEntities();
}

TEST_F(HandlersTest, CacheFillListsTheJobsPreparedEntriesInOrder) {
  std::vector<PreparedCacheEntry> entries = {
      {kBsStoreList.requestId, kBsStoreList.responseId, {0, 1, 2, 0xff}, {0xde, 0xad, 0, 0}},
      {kBsLookup.requestId, kBsLookup.responseId, {7}, {}},
  };
  ASSERT_OK(PreparedCacheStore(served_.store()).Append(77, entries));
  EnableServerCacheReq r;
  r.jobId = 77;
  std::vector<App::ServerMessageCacheEntity> got = CacheEntities(Call(kEnableServerCache, r));
  ASSERT_EQ(got.size(), 2u);
  for (size_t i = 0; i < got.size(); ++i) {
    EXPECT_EQ(got[i].requestId, entries[i].requestId);
    EXPECT_EQ(got[i].responseId, entries[i].responseId);
    EXPECT_EQ(got[i].request, std::string(entries[i].request.begin(), entries[i].request.end()));
    EXPECT_EQ(got[i].response, std::string(entries[i].response.begin(), entries[i].response.end()));
  }

  r.jobId = 78;  // no entries: a valid message without entities
  EXPECT_TRUE(CacheEntities(Call(kEnableServerCache, r)).empty());
}

// The demo's prepared answers are what the server answers live, byte for byte.
TEST_F(HandlersTest, DemoJobsPreparedAnswersMatchTheLiveOnes) {
  EnableServerCacheReq r;
  r.jobId = 500;
  std::vector<App::ServerMessageCacheEntity> got = CacheEntities(Call(kEnableServerCache, r));
  ASSERT_EQ(got.size(), 2u);

  ASSERT_EQ(got[0].requestId, kBsLookup.requestId);
  GenericLookupReq4 lookup;
  wire::Arena arena;
  ASSERT_OK(wire::DecodeRecord(reinterpret_cast<const uint8_t*>(got[0].request.data()),
                               got[0].request.size(), lookup, arena));
  std::vector<uint8_t> live;
  ASSERT_OK(wire::EncodeRecord(Call(kBsLookup, lookup), live));
  EXPECT_EQ(got[0].response, std::string(live.begin(), live.end()));

  ASSERT_EQ(got[1].requestId, kBsStoreList.requestId);
  GetStoreListReq list;
  ASSERT_OK(wire::DecodeRecord(reinterpret_cast<const uint8_t*>(got[1].request.data()),
                               got[1].request.size(), list, arena));
  live.clear();
  ASSERT_OK(wire::EncodeRecord(Call(kBsStoreList, list), live));
  EXPECT_EQ(got[1].response, std::string(live.begin(), live.end()));
}

// ---- The pre-install lookup ----

TEST(PreInstallHandler, AnswersTheConfiguredAddressOrAnEmptyField) {
  for (const std::string& url : {std::string(kConsole), std::string()}) {
    ServedStore served(url);
    HandlerClient client(served.connect());
    App::GetDataInPreInstallModeReq request;
    unsigned long tag = 0;
    std::unique_ptr<CNMessageBase> answer = client.CallXml(request, &tag);
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(tag, App::GetDataInPreInstallModeResp::kTagId);
    EXPECT_EQ(answer->getTagId(), App::GetDataInPreInstallModeResp::kTagId);
    EXPECT_TRUE(answer->HasField(App::GetDataInPreInstallModeResp::kFieldWebConsoleUrl));
    EXPECT_EQ(answer->GetString(App::GetDataInPreInstallModeResp::kFieldWebConsoleUrl), url);
  }
}

}  // namespace
}  // namespace appmgr::server
