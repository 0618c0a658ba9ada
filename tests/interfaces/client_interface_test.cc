// ClientInterfaceNet against the scriptable server: what each operation sends, what it copies
// out, what it leaves alone when a step fails, and the stubs that send nothing.
#include "interfaces/ClientInterfaceNet.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;
using ClientOp = appmgr::wire::Op<ClientInfoReq7, ClientInfoResp7>;

// What the server saw of a client record request, copied out of the request.
struct Seen {
  uint64_t integer1 = 0, integer9 = 0;
  int32_t integer5 = 0;
  int64_t integer5Whole = 0;
  std::string text1, text4, text8;
  uint32_t platformCount = 0;
  std::vector<uint64_t> values;
  std::vector<std::string> texts;  // "<null>" for a null text
};

class ClientTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }

  template <class Req, class Resp>
  void Fail(const appmgr::wire::Op<Req, Resp>& op, int32_t code, const char* text) {
    server_.On(op, [code, text](const Req&, Resp& resp, Exchange&) {
      resp.hdr.errorCode = code;
      resp.hdr.errorText = text;
    });
  }

  // Answers `op` with a record built by `fill`, after recording the request in seen_.
  void Script(const ClientOp& op, std::function<void(ClientInfoResp7&, Exchange&)> fill) {
    server_.On(op, [this, fill](const ClientInfoReq7& req, ClientInfoResp7& resp, Exchange& x) {
      seen_ = Seen{};
      seen_.integer1 = req.integer1;
      seen_.integer9 = req.integer9;
      seen_.integer5 = req.integer5;
      seen_.integer5Whole = req.integer5Whole;
      seen_.text1 = req.text1 ? req.text1 : "<null>";
      seen_.text4 = req.text4 ? req.text4 : "<null>";
      seen_.text8 = req.text8 ? req.text8 : "<null>";
      seen_.platformCount = req.platformCount;
      for (uint32_t i = 0; i < req.platformCount; ++i) {
        seen_.values.push_back(req.platforms[i].value);
        seen_.texts.push_back(req.platforms[i].text ? req.platforms[i].text : "<null>");
      }
      fill(resp, x);
    });
  }

  // Every text of a full answer set, so a test sees which ones were replaced.
  static void FullAnswer(ClientInfoResp7& r, Exchange& x) {
    r.integer1 = 3;
    r.integer2 = 4;
    r.integer9 = 9;
    r.integer12 = 12;
    r.text1 = x.Text("db01");
    r.text2 = x.Text("db01.example.net");
    r.text3 = x.Text("t3");
    r.text4 = x.Text("t4");
    r.text5 = x.Text("t5");
    r.text6 = x.Text("t6");
    r.text7 = x.Text("t7");
    r.text8 = x.Text("t8");
    r.platformCount = 3;
    r.platforms = x.Array<ClientPlatInfo>(3);
    const char* texts[] = {"p0", "p1", "p2"};
    for (uint64_t i = 0; i < 3; ++i) r.platforms[i] = {10 + i, x.Text(texts[i])};
  }

  static _AppClientInfo Caller() {
    _AppClientInfo info;
    info.clientId = 3;
    info.integer9 = 99;
    info.integer5 = 0x100000005;  // does not fit 32 bits
    info.clientName = "db01";
    info.text4 = "old4";
    info.text8 = "old8";
    info.hostName = info.text3 = info.text5 = info.text6 = info.text7 = "old";
    return info;
  }

  ScriptServer server_;
  ClientInterfaceNet client_;
  std::string err_;
  Seen seen_;
  ClientPlatformInfo platforms_[3] = {{1, "Linux"}, {2, "x"}, {3, "y"}};
};

TEST_F(ClientTest, RecordOperationsSendTheWholeRecordAndPlatformTextsOnlyOnModify) {
  struct Case {
    const char* name;
    const ClientOp& op;
    int (ClientInterfaceNet::*call)(_AppClientInfo&, ClientPlatformInfo*, std::string&, void*);
    std::vector<std::string> texts;
  } cases[] = {
      {"lookup", msg::kClientLookup, &ClientInterfaceNet::lookup, {"<null>", "<null>", "<null>"}},
      {"create", msg::kClientCreate, &ClientInterfaceNet::create, {"<null>", "<null>", "<null>"}},
      {"modify", msg::kClientModify, &ClientInterfaceNet::modify, {"Linux", "x", "y"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Script(c.op, FullAnswer);
    _AppClientInfo info = Caller();
    ASSERT_EQ((client_.*c.call)(info, platforms_, err_, nullptr), 0) << err_;
    EXPECT_EQ(seen_.integer1, 3u);
    EXPECT_EQ(seen_.integer9, 99u);
    EXPECT_EQ(seen_.text1, "db01");
    EXPECT_EQ(seen_.text4, "old4");
    EXPECT_EQ(seen_.text8, "old8");
    EXPECT_EQ(seen_.integer5, 5) << "integer 5 cut to 32 bits";
    EXPECT_EQ(seen_.integer5Whole, 0x100000005) << "and whole";
    EXPECT_EQ(seen_.platformCount, 3u);
    EXPECT_EQ(seen_.values, (std::vector<uint64_t>{1, 2, 3}));
    EXPECT_EQ(seen_.texts, c.texts);
    EXPECT_EQ(server_.Count(c.op.requestId), 1u);
    // The server's record comes back, platforms included.
    EXPECT_EQ(info.integer9, 9u);
    EXPECT_EQ(info.integer12, 12u);
    EXPECT_EQ(info.hostName, "db01.example.net");
    EXPECT_EQ(platforms_[2].value, 12u);
    EXPECT_EQ(platforms_[2].text, "p2");
    platforms_[0] = {1, "Linux"};
    platforms_[1] = {2, "x"};
    platforms_[2] = {3, "y"};
  }
}

TEST_F(ClientTest, TheLookupIsAnsweredUnderItsIrregularId) {
  // The script server answers under the catalogue's response id; a client listening for
  // 0x3400025a would reject the frame and fail.
  EXPECT_EQ(msg::kClientLookup.requestId, 0x34000259u);
  EXPECT_EQ(msg::kClientLookup.responseId, 0x34000260u);
  Script(msg::kClientLookup, FullAnswer);
  _AppClientInfo info = Caller();
  ASSERT_EQ(client_.lookup(info, platforms_, err_, nullptr), 0) << err_;
  EXPECT_EQ(info.clientId, 3u);

  // An answer sent under the plus-one id is not taken for the look-up's.
  server_.Raw(msg::kClientLookup, {}, 0x3400025a, sizeof(ClientInfoResp7));
  info.integer12 = 77;
  EXPECT_NE(client_.lookup(info, platforms_, err_, nullptr), 0);
  EXPECT_EQ(info.integer12, 77u) << "nothing copied out";
}

TEST_F(ClientTest, NullTextsFollowEachOperationsCopyRule) {
  // Only texts 1 and 4 are sent; every other text is answered.
  auto sparse = [](ClientInfoResp7& r, Exchange& x) {
    FullAnswer(r, x);
    r.text1 = nullptr;
    r.text4 = nullptr;
    r.text8 = nullptr;
  };
  struct Case {
    const char* name;
    const ClientOp& op;
    int (ClientInterfaceNet::*call)(_AppClientInfo&, ClientPlatformInfo*, std::string&, void*);
    std::string text4;  // what a null text 4 leaves
  } cases[] = {
      {"lookup", msg::kClientLookup, &ClientInterfaceNet::lookup, "old4"},
      {"create", msg::kClientCreate, &ClientInterfaceNet::create, ""},
      {"modify", msg::kClientModify, &ClientInterfaceNet::modify, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Script(c.op, sparse);
    _AppClientInfo info = Caller();
    ASSERT_EQ((client_.*c.call)(info, platforms_, err_, nullptr), 0) << err_;
    EXPECT_EQ(info.clientName, "") << "a null text 1 empties it";
    EXPECT_EQ(info.text4, c.text4);
    EXPECT_EQ(info.text5, "t5");
    EXPECT_EQ(info.text8, "") << "a null text 8 empties it";
  }
}

TEST_F(ClientTest, Integer5ComesBackFromItsSignedThirtyTwoBitField) {
  Script(msg::kClientLookup, [](ClientInfoResp7& r, Exchange& x) {
    FullAnswer(r, x);
    r.integer5 = -1;                  // all ones
    r.integer5Whole = 0x7777777777;  // never read from an answer
  });
  _AppClientInfo info = Caller();
  ASSERT_EQ(client_.lookup(info, platforms_, err_, nullptr), 0) << err_;
  EXPECT_EQ(info.integer5, -1);
}

TEST_F(ClientTest, PlatformsTakeValuesAlwaysAndTextsOnlyWhenSent) {
  uint32_t count = 0;
  Script(msg::kClientLookup, [&count](ClientInfoResp7& r, Exchange& x) {
    r.platformCount = count;
    r.platforms = x.Array<ClientPlatInfo>(count);
    for (uint32_t i = 0; i < count; ++i) r.platforms[i] = {100 + i, i == 1 ? nullptr : x.Text("new")};
  });
  _AppClientInfo info;
  count = 2;
  ASSERT_EQ(client_.lookup(info, platforms_, err_, nullptr), 0) << err_;
  EXPECT_EQ(platforms_[0].value, 100u);
  EXPECT_EQ(platforms_[0].text, "new");
  EXPECT_EQ(platforms_[1].value, 101u) << "a null text still updates the value";
  EXPECT_EQ(platforms_[1].text, "x") << "and keeps the caller's text";
  EXPECT_EQ(platforms_[2].value, 3u) << "a platform the server did not send is left";
  EXPECT_EQ(platforms_[2].text, "y");

  // More platforms than the caller's three are not written past its array.
  ClientPlatformInfo guarded[4] = {{}, {}, {}, {55, "guard"}};
  count = 5;
  ASSERT_EQ(client_.lookup(info, guarded, err_, nullptr), 0) << err_;
  EXPECT_EQ(guarded[2].value, 102u);
  EXPECT_EQ(guarded[3].value, 55u);
  EXPECT_EQ(guarded[3].text, "guard");
}

TEST_F(ClientTest, AFailedRecordOperationLeavesTheRecordAndLogsUnderItsLabel) {
  struct Case {
    const char* label;
    const ClientOp& op;
    int (ClientInterfaceNet::*call)(_AppClientInfo&, ClientPlatformInfo*, std::string&, void*);
  } cases[] = {
      {"ClientInterfaceNet::lookup", msg::kClientLookup, &ClientInterfaceNet::lookup},
      {"ClientInterfaceNet::create", msg::kClientCreate, &ClientInterfaceNet::create},
      {"ClientInterfaceNet::modify", msg::kClientModify, &ClientInterfaceNet::modify},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    log_.Clear();
    Fail(c.op, 2, "a client named 'db01' already exists");
    _AppClientInfo info = Caller();
    EXPECT_EQ((client_.*c.call)(info, platforms_, err_, nullptr), 2);
    EXPECT_EQ(err_, "a client named 'db01' already exists");
    EXPECT_EQ(info.integer9, 99u);
    EXPECT_EQ(info.text4, "old4");
    EXPECT_EQ(platforms_[0].text, "Linux");
    size_t lines = 0;
    for (const EvLogRecord& r : log_.Records()) {
      if (r.label == c.label) {
        ++lines;
        EXPECT_TRUE(r.error);
        EXPECT_EQ(r.level, 0);
        EXPECT_EQ(r.text, "a client named 'db01' already exists");
      }
    }
    EXPECT_EQ(lines, 1u);
  }
}

TEST_F(ClientTest, ListQueriesAppendToTheCallersLists) {
  server_.On(msg::kClientVolumeGuidPairs, [](const GetPairListForDestinationVolumeGUIDReq& req,
                                             GetPairListForDestinationVolumeGUIDResp& resp, Exchange& x) {
    resp.count = 2;
    resp.pairIds = x.Array<uint64_t>(2);
    resp.pairIds[0] = std::string(req.volumeGuid) == "{g}" ? 1 : 0;
    resp.pairIds[1] = static_cast<uint64_t>(req.option);
  });
  server_.On(msg::kClientReplicationSets, [](const GetFRSetsWithDestinationClientReq& req,
                                             GetFRSetsWithDestinationClientResp& resp, Exchange& x) {
    resp.count1 = 1;
    resp.ids1 = x.Array<uint64_t>(1);
    resp.ids1[0] = req.clientId;
    resp.count3 = 2;
    resp.ids3 = x.Array<uint64_t>(2);
    resp.ids3[0] = 30;
    resp.ids3[1] = 31;
  });
  server_.On(msg::kClientsWithProperty, [](const GetClientInfoReq& req, GetClientInfoResp& resp, Exchange& x) {
    resp.count = 2;
    resp.clients = x.Array<GetClientInfoElement>(2);
    resp.clients[0] = {3, x.Text(req.propertyName), x.Text(req.propertyValue), x.Text("t3")};
    resp.clients[1] = {4, nullptr, nullptr, nullptr};
  });
  server_.On(msg::kClientAsmInstances, [](const GetASMIntancesReq& req, GetASMIntancesResp& resp, Exchange& x) {
    resp.count = 1;
    resp.instanceIds = x.Array<uint64_t>(1);
    resp.instanceIds[0] = req.id1 * 100 + req.id2;
  });

  std::string guid = "{g}";
  std::list<unsigned long> pairs{9};
  ASSERT_EQ(client_.getFLRpairListForDestinationVolumeGUID(guid, pairs, err_, 7, nullptr), 0) << err_;
  EXPECT_EQ(pairs, (std::list<unsigned long>{9, 1, 7}));

  std::list<unsigned long> l1{1}, l2{2}, l3;
  ASSERT_EQ(client_.GetFRsetsWithDestClientId(4, l1, l2, l3, err_, nullptr), 0) << err_;
  EXPECT_EQ(l1, (std::list<unsigned long>{1, 4}));
  EXPECT_EQ(l2, (std::list<unsigned long>{2})) << "a count of 0 leaves its list";
  EXPECT_EQ(l3, (std::list<unsigned long>{30, 31}));

  std::list<_AppClientInfo> clients(1);
  ASSERT_EQ(client_.getClientInfoWithProperty(clients, "sRole", "db", err_, nullptr), 0) << err_;
  ASSERT_EQ(clients.size(), 3u);
  const _AppClientInfo& first = *std::next(clients.begin());
  EXPECT_EQ(first.clientId, 3u);
  EXPECT_EQ(first.clientName, "sRole");
  EXPECT_EQ(first.hostName, "db");
  EXPECT_EQ(first.text3, "t3");
  EXPECT_EQ(first.integer9, 0u);
  EXPECT_EQ(clients.back().clientId, 4u);
  EXPECT_EQ(clients.back().clientName, "") << "a null text reads as empty";

  std::list<unsigned long> asm_{5};
  ASSERT_EQ(client_.GetASMInstanceList(3, 20, asm_, err_, nullptr), 0) << err_;
  EXPECT_EQ(asm_, (std::list<unsigned long>{5, 320}));

  // A failed query leaves every list as it was.
  Fail(msg::kClientReplicationSets, 1, "client 42 does not exist");
  EXPECT_EQ(client_.GetFRsetsWithDestClientId(42, l1, l2, l3, err_, nullptr), 1);
  EXPECT_EQ(err_, "client 42 does not exist");
  EXPECT_EQ(l1.size() + l2.size() + l3.size(), 5u);
}

TEST_F(ClientTest, FsNodeDataSendsItsFieldsAndTakesOnlyAServersText) {
  HandleFSNodeActivityReq seen;
  std::string data;
  server_.On(msg::kClientFsNodeActivity, [&](const HandleFSNodeActivityReq& req, HandleFSNodeActivityResp&,
                                             Exchange&) {
    seen = req;
    data = req.data;
  });
  ASSERT_EQ(client_.setClientFSNodeData(4000000000u, "node-a", -3, true, err_, nullptr), 0) << err_;
  EXPECT_EQ(seen.clientId, 4000000000u);
  EXPECT_EQ(data, "node-a");
  EXPECT_EQ(seen.value, -3);
  EXPECT_EQ(seen.flag, 1u);

  err_ = "before";
  Fail(msg::kClientFsNodeActivity, 3, nullptr);
  EXPECT_EQ(client_.setClientFSNodeData(4, "x", 0, false, err_, nullptr), 3);
  EXPECT_EQ(err_, "before") << "no server text: errorString is left";
  Fail(msg::kClientFsNodeActivity, 1, "client 4 does not exist");
  EXPECT_EQ(client_.setClientFSNodeData(4, "x", 0, false, err_, nullptr), 1);
  EXPECT_EQ(err_, "client 4 does not exist");
}

TEST_F(ClientTest, PropertyOperationsUseTheClientMessages) {
  server_.Answer(msg::kClientGetProperties);
  server_.Answer(msg::kClientRemoveProperties);
  server_.Answer(msg::kClientRemovePropertyNames);
  Fail(msg::kClientSetProperties, 1, "client 8 does not exist");
  ApplProperty p("sRole", 2, "db");
  EXPECT_EQ(client_.getProperties(8, 0, err_, nullptr, nullptr), 0);
  EXPECT_EQ(client_.removeProperties(8, {&p}, false, err_, nullptr, nullptr), 0);
  EXPECT_EQ(client_.removeProperties(8, std::list<std::string>{"sRole"}, true, err_, nullptr, nullptr), 0);
  EXPECT_EQ(client_.setProperties(8, {&p}, false, err_, nullptr, nullptr), 1);
  for (uint32_t id : {0x34000047u, 0x34000049u, 0x3400004bu, 0x3400004du}) {
    EXPECT_EQ(server_.Count(id), 1u) << std::hex << id;
  }
  EXPECT_EQ(log_.Records().back().label, "ClientInterfaceNet::setProperties");
  EXPECT_EQ(log_.Records().back().text, "client 8 does not exist");
}

TEST_F(ClientTest, OperationsNotProvidedSendNothing) {
  unsigned long type = 7;
  std::string value = "kept";
  struct {
    const char* name;
    std::function<int(std::string&)> call;
  } stubs[] = {
      {"getSRMAgentlessDaxType", [&](std::string& e) { return client_.getSRMAgentlessDaxType(1, type, e, nullptr); }},
      {"setClientPostInstallProperties",
       [&](std::string& e) { return client_.setClientPostInstallProperties(1, 2, "t", e, nullptr); }},
      {"getClientOwnerAssignmentValue",
       [&](std::string& e) { return client_.getClientOwnerAssignmentValue(1, value, e, nullptr); }},
  };
  for (auto& s : stubs) {
    std::string e;
    EXPECT_EQ(s.call(e), 0xa0010) << s.name;
    EXPECT_EQ(e, "Api not implemented.") << s.name;
  }
  EXPECT_EQ(type, 7u);
  EXPECT_EQ(value, "kept");
  EXPECT_EQ(server_.core().ConnectionsAccepted(), 0u);
}

}  // namespace
