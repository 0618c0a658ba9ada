// The client and application-id handlers on a real server core and store holding the demo
// fixture, driven by a client session: what each message answers, and what it refuses.
#include "server/handlers/ClientHandlers.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/store/ClientStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

class ClientHandlersTest : public testing::Test {
 public:
  template <class Req, class Resp>
  Outcome Try(const wire::Op<Req, Resp>& op, Req req) {
    return OutcomeOf(client_.Call(op, req));
  }

 protected:
  template <class Req, class Resp>
  Resp Call(const wire::Op<Req, Resp>& op, Req req) {
    Resp resp = client_.Call(op, req);
    EXPECT_EQ(resp.hdr.errorCode, 0) << op.requestName << ": "
                                     << (resp.hdr.errorText ? resp.hdr.errorText : "");
    return resp;
  }

  static std::vector<uint64_t> Ids(const uint64_t* ids, uint32_t count) {
    return std::vector<uint64_t>(ids, ids + count);
  }

  ServedStore served_;
  HandlerClient client_{served_.connect()};
};

// A client record request as the library sends it: every text set, three platforms.
ClientPlatInfo gPlatforms[3] = {{1, nullptr}, {0, nullptr}, {0, nullptr}};
ClientPlatInfo gNamedPlatforms[3] = {{2, "Windows x64"}, {0, ""}, {5, "spare"}};

ClientInfoReq7 Record(uint64_t id, const char* name, ClientPlatInfo* platforms = gPlatforms) {
  ClientInfoReq7 r;
  r.integer1 = id;
  r.text1 = name;
  r.text2 = "host.example.net";
  r.text3 = r.text4 = r.text5 = r.text6 = r.text7 = r.text8 = "";
  r.platformCount = 3;
  r.platforms = platforms;
  return r;
}

TEST_F(ClientHandlersTest, ACreatedClientIsLookedUpModifiedAndRemoved) {
  ClientInfoReq7 create = Record(0, "web01");
  create.integer5 = -2;
  create.integer5Whole = -2;
  create.integer9 = 9;
  create.text4 = "rack 4";
  ClientInfoResp7 made = Call(kClientCreate, create);
  const uint64_t id = made.integer1;
  EXPECT_EQ(id, 5u) << "one above the demo's highest client";
  EXPECT_EQ(made.integer5, -2);
  EXPECT_EQ(made.integer5Whole, -2);
  ASSERT_EQ(made.platformCount, 3u);
  EXPECT_EQ(made.platforms[0].value, 1u);
  EXPECT_STREQ(made.platforms[0].text, "") << "a create's null platform texts are stored empty";

  ClientInfoResp7 byName = Call(kClientLookup, Record(0, "WEB01"));
  EXPECT_EQ(byName.integer1, id) << "id 0 looks the client up by its name";
  EXPECT_STREQ(byName.text4, "rack 4");
  EXPECT_EQ(byName.integer9, 9u);

  ClientInfoReq7 modify = Record(id, "web01", gNamedPlatforms);
  modify.text2 = nullptr;  // left as it is
  modify.integer9 = 10;
  ClientInfoResp7 changed = Call(kClientModify, modify);
  EXPECT_STREQ(changed.text2, "host.example.net");
  EXPECT_EQ(changed.integer9, 10u);
  EXPECT_STREQ(changed.platforms[2].text, "spare");
  EXPECT_EQ(Call(kClientLookup, Record(id, "")).platforms[0].value, 2u);

  Call(kClientRemove, RemoveClientReq{.hdr = {}, .clientId = id});
  Outcome gone = Try(kClientLookup, Record(id, ""));
  EXPECT_EQ(gone.code, kStoreErrNotFound);
  EXPECT_EQ(gone.text, "client 5 does not exist");
}

TEST_F(ClientHandlersTest, QueriesAnswerFromTheDemoData) {
  auto pairs = Call(kClientVolumeGuidPairs,
                    GetPairListForDestinationVolumeGUIDReq{
                        .hdr = {}, .volumeGuid = "{B2C3D4E5-F6A7-4B8C-9D0E-1F2A3B4C5D02}", .option = 0});
  EXPECT_EQ(Ids(pairs.pairIds, pairs.count), (std::vector<uint64_t>{2}));

  auto sets = Call(kClientReplicationSets, GetFRSetsWithDestinationClientReq{.hdr = {}, .clientId = 4});
  EXPECT_EQ(Ids(sets.ids1, sets.count1), (std::vector<uint64_t>{105}));
  EXPECT_EQ(Ids(sets.ids2, sets.count2), (std::vector<uint64_t>{3}));
  EXPECT_EQ(Ids(sets.ids3, sets.count3), (std::vector<uint64_t>{1, 2}));

  auto with = Call(kClientsWithProperty,
                   GetClientInfoReq{.hdr = {}, .propertyName = "sNetworkThrottle", .propertyValue = "0"});
  ASSERT_EQ(with.count, 2u);
  EXPECT_EQ(with.clients[0].integer1, 3u);
  EXPECT_STREQ(with.clients[0].text1, "db01");
  EXPECT_STREQ(with.clients[1].text2, "fs02.lab.example.net");

  auto asmIds = Call(kClientAsmInstances, GetASMIntancesReq{.hdr = {}, .id1 = 3, .id2 = 20});
  EXPECT_EQ(Ids(asmIds.instanceIds, asmIds.count), (std::vector<uint64_t>{15}));

  Call(kClientFsNodeActivity,
       HandleFSNodeActivityReq{.hdr = {}, .clientId = 4, .data = "nodes=3", .flag = 1, .value = 7});
  FsNodeReport report;
  ASSERT_OK(ClientStore(served_.store()).FsNodeReportOf(4, &report));
  EXPECT_EQ(report.data, "nodes=3");
  EXPECT_EQ(report.value, 7);
  EXPECT_TRUE(report.flag);
}

TEST_F(ClientHandlersTest, ApplicationIdsAreCreatedFoundAndTheirArchiveGroupsKept) {
  AppIdInfoReq req;
  req.number3 = 4;
  req.number4 = 10;
  req.text0 = "/srv";
  req.text1 = req.text2 = "";
  req.option = 3;
  AppIdInfoResp made = Call(kAppIdCreate, req);
  EXPECT_EQ(made.number0, 3u) << "one above the demo's highest id";
  EXPECT_STREQ(made.text0, "/srv");

  AppIdInfoResp found = Call(kAppIdGet, req);  // number 0 still 0: by the object
  EXPECT_EQ(found.number0, 3u);
  Call(kAppIdUpdateArchiveGroups, AppIdUpdSPReq{.hdr = {}, .first = 3, .second = 30, .third = 31});
  EXPECT_EQ(Call(kAppIdIncrArchiveGroup, GetIncrAgInfoReq{.hdr = {}, .id = 3}).archiveGroupId, 31u);
  EXPECT_EQ(Call(kAppIdIncrArchiveGroup, GetIncrAgInfoReq{.hdr = {}, .id = 2}).archiveGroupId, 3u);

  req.number0 = 3;
  Call(kAppIdRemove, req);
  Outcome gone = Try(kAppIdGet, req);
  EXPECT_EQ(gone.code, kStoreErrNotFound);
  EXPECT_EQ(gone.text, "application id 3 does not exist");
}

// ---- What the handlers refuse ----

struct RefusalCase {
  const char* name;
  std::function<Outcome(ClientHandlersTest&)> call;
  int code;
  const char* text;
};
void PrintTo(const RefusalCase& c, std::ostream* os) {
  *os << c.name;
}

// A case sending `req` (texts and arrays it points at must be static) under `op`.
template <class Req, class Resp>
RefusalCase Case(const char* name, const wire::Op<Req, Resp>& op, Req req, int code, const char* text) {
  return RefusalCase{name, [&op, req](ClientHandlersTest& t) { return t.Try(op, req); }, code, text};
}

class ClientHandlersRefuse : public ClientHandlersTest, public testing::WithParamInterface<RefusalCase> {};

TEST_P(ClientHandlersRefuse, WithCodeAndTextInTheHeaderAndNothingElse) {
  const RefusalCase& c = GetParam();
  Outcome o = c.call(*this);
  EXPECT_EQ(o.code, c.code);
  EXPECT_EQ(o.text, c.text);
  EXPECT_TRUE(o.restZero) << "a failed answer carries the header alone";
}

constexpr int kMissing = kStoreErrNotFound;
constexpr int kInvalid = kStoreErrInvalidArgument;
constexpr int kConflict = kStoreErrConflict;
AppMgrProps gProp[1] = {{"n", 1, "v"}};
AppStringList gName[1] = {{"n"}};

ClientInfoReq7 Mismatched() {
  ClientInfoReq7 r = Record(0, "x");
  r.integer5 = 1;
  r.integer5Whole = 0x100000002;
  return r;
}

AppIdInfoReq AppId(uint64_t id, const char* text1 = "") {
  AppIdInfoReq r;
  r.number0 = id;
  r.number3 = 9;
  r.text0 = "";
  r.text1 = text1;
  r.text2 = "";
  return r;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ClientHandlersRefuse,
    testing::Values(
        Case("LookupMissing", kClientLookup, Record(42, ""), kMissing, "client 42 does not exist"),
        Case("LookupUnknownName", kClientLookup, Record(0, "nobody"), kMissing, "no client is named 'nobody'"),
        Case("LookupNamesNoClient", kClientLookup, Record(0, nullptr), kInvalid,
             "the request names no client: give its id (integer 1) or its name (text 1)"),
        Case("ModifyMissing", kClientModify, Record(42, "x"), kMissing, "client 42 does not exist"),
        Case("CreateDuplicate", kClientCreate, Record(0, "FS02"), kConflict,
             "a client named 'FS02' already exists (client 4)"),
        Case("CreateWithoutName", kClientCreate, Record(0, nullptr), kInvalid, "a new client needs a name"),
        Case("Integer5Disagrees", kClientCreate, Mismatched(), kInvalid,
             "integer 5 is sent as 1 in its 32-bit field but as 4294967298 whole; the 32-bit field "
             "must be the whole value cut to 32 bits"),
        Case("RemoveMissing", kClientRemove, RemoveClientReq{.hdr = {}, .clientId = 42}, kMissing,
             "client 42 does not exist"),
        Case("RemoveOwner", kClientRemove, RemoveClientReq{.hdr = {}, .clientId = 2}, kConflict,
             "client 2 cannot be removed: it still has 1 application type (with their instances, "
             "backup sets and subclients); remove those first"),
        Case("GetPropertiesMissing", kClientGetProperties, GenericGetPropsReq{.hdr = {}, .id = 42}, kMissing,
             "client 42 does not exist"),
        Case("SetPropertiesMissing", kClientSetProperties,
             GenericSetPropsReq{.hdr = {}, .id = 42, .count = 1, .props = gProp}, kMissing,
             "client 42 does not exist"),
        Case("RemovePropertiesMissing", kClientRemoveProperties,
             GenericRemovePropsReq1{.hdr = {}, .id = 42, .count = 1, .props = gProp}, kMissing,
             "client 42 does not exist"),
        Case("RemovePropertyNamesMissing", kClientRemovePropertyNames,
             GenericRemovePropsReq2{.hdr = {}, .id = 42, .count = 1, .names = gName}, kMissing,
             "client 42 does not exist"),
        Case("VolumeGuidNull", kClientVolumeGuidPairs, GetPairListForDestinationVolumeGUIDReq{}, kInvalid,
             "the request carries no volume GUID"),
        Case("ReplicationSetsMissing", kClientReplicationSets,
             GetFRSetsWithDestinationClientReq{.hdr = {}, .clientId = 42}, kMissing, "client 42 does not exist"),
        Case("WithPropertyNullValue", kClientsWithProperty,
             GetClientInfoReq{.hdr = {}, .propertyName = "sSite", .propertyValue = nullptr}, kInvalid,
             "the request carries no property value"),
        Case("AsmMissing", kClientAsmInstances, GetASMIntancesReq{.hdr = {}, .id1 = 42, .id2 = 0}, kMissing,
             "client 42 does not exist"),
        Case("FsNodeNullData", kClientFsNodeActivity, HandleFSNodeActivityReq{.hdr = {}, .clientId = 4},
             kInvalid, "the request carries no node data"),
        Case("FsNodeMissing", kClientFsNodeActivity,
             HandleFSNodeActivityReq{.hdr = {}, .clientId = 42, .data = "x"}, kMissing, "client 42 does not exist"),
        Case("AppIdMissing", kAppIdGet, AppId(42), kMissing, "application id 42 does not exist"),
        Case("AppIdNoObject", kAppIdRemove, AppId(0), kMissing,
             "no application id stands for (9, 0, 0, 0, 0, 0, '', '', '')"),
        Case("AppIdNullText", kAppIdCreate, AppId(0, nullptr), kInvalid, "the request carries no text 1"),
        Case("AppIdTaken", kAppIdCreate, AppId(2), kConflict, "application id 2 already exists"),
        Case("ArchiveGroupsMissing", kAppIdUpdateArchiveGroups,
             AppIdUpdSPReq{.hdr = {}, .first = 42, .second = 1, .third = 2}, kMissing,
             "application id 42 does not exist"),
        Case("IncrArchiveGroupMissing", kAppIdIncrArchiveGroup, GetIncrAgInfoReq{.hdr = {}, .id = 42}, kMissing,
             "application id 42 does not exist")),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace appmgr::server
