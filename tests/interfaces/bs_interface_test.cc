// BSInterfaceNet against the scriptable server: what each operation sends, what it copies out,
// and what it leaves alone when a step fails.
#include "interfaces/BSInterfaceNet.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

class BSTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  // Every listed request is answered with a server error.
  template <class Req, class Resp>
  void Fail(const appmgr::wire::Op<Req, Resp>& op, int32_t code, const char* text) {
    server_.On(op, [code, text](const Req&, Resp& resp, Exchange&) {
      resp.hdr.errorCode = code;
      resp.hdr.errorText = text;
    });
  }
  ScriptServer server_;
  BSInterfaceNet bs_;
  std::string err_;
};

TEST_F(BSTest, LookupCopiesOutAndTreatsNullTextsByItsOwnRules) {
  server_.On(msg::kBsLookup, [](const GenericLookupReq4& req, GenericLookupResp4& resp, Exchange& x) {
    resp.value = -7;
    resp.name = req.id == 1 ? x.Text("bs-one") : nullptr;
    resp.text = req.id == 1 ? x.Text("second") : nullptr;
  });
  std::string name = "before", text = "before";
  long value = 0;
  unsigned long o1 = 9, o2 = 9, o3 = 9, o4 = 9;
  ASSERT_EQ(bs_.lookup(1, name, value, o1, o2, o3, text, o4, err_, nullptr), 0);
  EXPECT_EQ(name, "bs-one");
  EXPECT_EQ(text, "second");
  EXPECT_EQ(value, -7);
  EXPECT_EQ(o1 + o2 + o3, 0u);
  EXPECT_EQ(o4, 9u) << "out4 is never touched";

  ASSERT_EQ(bs_.lookup(2, name, value, o1, o2, o3, text, o4, err_, nullptr), 0);
  EXPECT_EQ(name, "bs-one") << "a null name leaves the caller's name";
  EXPECT_EQ(text, "") << "a null second text empties it";
}

TEST_F(BSTest, AServerErrorReturnsItsCodeAndTextAndLeavesOutputs) {
  Fail(msg::kBsLookup, 1, "backup set 42 does not exist");
  std::string name = "keep", text = "keep";
  long value = 5;
  unsigned long o1 = 9, o2 = 9, o3 = 9, o4 = 9;
  EXPECT_EQ(bs_.lookup(42, name, value, o1, o2, o3, text, o4, err_, nullptr), 1);
  EXPECT_EQ(err_, "backup set 42 does not exist");
  EXPECT_EQ(name, "keep");
  EXPECT_EQ(text, "keep");
  EXPECT_EQ(value, 5);
  EXPECT_EQ(o1, 9u);

  Fail(msg::kBsClientId, 3, nullptr);
  unsigned long client = 77;
  EXPECT_EQ(bs_.getClientIdForBackupSet(1, client, err_, nullptr), 3);
  EXPECT_EQ(err_, "") << "a null header text is an empty error string";
  EXPECT_EQ(client, 77u);
}

TEST_F(BSTest, UpdateSendsIdValueAndNameOnly) {
  GenericUpdateReq2 seen;
  std::string seenName;
  server_.On(msg::kBsUpdate, [&](const GenericUpdateReq2& req, GenericResp&, Exchange&) {
    seen = req;
    seenName = req.name;
  });
  long value = 1234;
  ASSERT_EQ(bs_.update(8, "renamed", value, true, 1, 2, 3, "unsent", err_, nullptr), 0);
  EXPECT_EQ(seen.id, 8u);
  EXPECT_EQ(seen.value, 1234);
  EXPECT_EQ(seenName, "renamed");
  EXPECT_EQ(seen.hdr.version, 2u);
}

TEST_F(BSTest, DeleteAndUndeleteAlwaysSendTheBackupSetLevel) {
  std::vector<std::pair<uint64_t, uint32_t>> seen;
  auto record = [&](const RecDelAppIdsReq& req, GenericResp&, Exchange&) { seen.push_back({req.secondId, req.level}); };
  server_.On(msg::kDeleteAll, record);
  server_.On(msg::kUndeleteAll, record);
  EXPECT_EQ(bs_.deleteAll(3, err_, nullptr), 0);
  EXPECT_EQ(bs_.undeleteAll(3, err_, nullptr), 0);
  EXPECT_EQ(seen, (std::vector<std::pair<uint64_t, uint32_t>>{{0, 4}, {0, 4}}));
  EXPECT_EQ(server_.Count(msg::kDeleteAll.requestId), 1u);
  EXPECT_EQ(server_.Count(msg::kUndeleteAll.requestId), 1u);
}

struct Collect : PropCallBack {
  std::vector<std::string> seen;
  void addProperty(const std::string& name, unsigned long type, const std::string& value, long reserved) override {
    seen.push_back(name + "/" + std::to_string(type) + "/" + value + "/" + std::to_string(reserved));
  }
};

TEST_F(BSTest, PropertiesReachTheCallbackInOrder) {
  server_.On(msg::kBsGetProperties, [](const GenericGetPropsReq& req, GenericGetPropsResp& resp, Exchange& x) {
    resp.count = 3;
    resp.props = x.Array<AppMgrProps>(3);
    resp.props[0] = {x.Text("b"), 2, x.Text("table " + std::to_string(req.table))};
    resp.props[1] = {x.Text("a"), 1, nullptr};  // a null value reads as empty
    resp.props[2] = {nullptr, 3, x.Text("v")};
  });
  Collect cb;
  ASSERT_EQ(bs_.getProperties(5, -3, err_, &cb, nullptr), 0);
  EXPECT_EQ(cb.seen, (std::vector<std::string>{"b/2/table -3/0", "a/1//0", "/3/v/0"}));
}

TEST_F(BSTest, SettersSendTheListInOrderAndTheFlagAsZeroOrOne) {
  std::vector<std::string> seen;
  server_.On(msg::kBsSetProperties, [&](const GenericSetPropsReq& req, GenericResp&, Exchange&) {
    seen.push_back("count=" + std::to_string(req.count) + " flag=" + std::to_string(req.flag) +
                   (req.props ? "" : " null"));
    for (uint32_t i = 0; i < req.count; ++i) {
      seen.push_back(std::string(req.props[i].name) + "=" + req.props[i].value + ":" +
                     std::to_string(req.props[i].type));
    }
  });
  ApplProperty p1("retention", 1, "30"), p2("encrypt", 2, "yes");
  std::list<const ApplProperty*> props{&p1, &p2};
  ASSERT_EQ(bs_.setProperties(4, props, true, err_, nullptr, nullptr), 0);
  ASSERT_EQ(bs_.setProperties(4, {}, false, err_, nullptr, nullptr), 0);
  EXPECT_EQ(seen, (std::vector<std::string>{"count=2 flag=1", "retention=30:1", "encrypt=yes:2",
                                            "count=0 flag=0 null"}));
}

TEST_F(BSTest, RemoveByNamesUsesTheNameListRecord) {
  std::vector<std::string> names;
  uint32_t flag = 9;
  server_.On(msg::kBsRemovePropertyNames, [&](const GenericRemovePropsReq2& req, GenericResp&, Exchange&) {
    for (uint32_t i = 0; i < req.count; ++i) names.push_back(req.names[i].text);
    flag = req.flag;
  });
  ASSERT_EQ(bs_.removeProperties(4, std::list<std::string>{"x", "y"}, false, err_, nullptr, nullptr), 0);
  EXPECT_EQ(names, (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(flag, 0u);
  server_.Answer(msg::kBsRemoveProperties);
  ApplProperty p("x", 1, "");
  EXPECT_EQ(bs_.removeProperties(4, std::list<const ApplProperty*>{&p}, true, err_, nullptr, nullptr), 0);
  EXPECT_EQ(server_.Count(msg::kBsRemoveProperties.requestId), 1u);
}

TEST_F(BSTest, ThrowingStyleLogsTheTextUnderItsLabelAndReturnsTheCode) {
  Fail(msg::kBsSetProperties, 2, "property name is empty");
  ApplProperty p("", 1, "v");
  EXPECT_EQ(bs_.setProperties(4, {&p}, false, err_, nullptr, nullptr), 2);
  EXPECT_EQ(err_, "property name is empty");
  bool logged = false;
  for (const EvLogRecord& r : log_.Records()) {
    logged |= r.error && r.label == "BSInterfaceNet::setProperties" && r.text == "property name is empty";
  }
  EXPECT_TRUE(logged);

  // A transport failure in the throwing style: its status and the receive's text.
  server_.DropBeforeAnswer(msg::kBsRemovePropertyNames.requestId);
  server_.Answer(msg::kBsRemovePropertyNames);
  int status = bs_.removeProperties(4, std::list<std::string>{"a"}, false, err_, nullptr, nullptr);
  EXPECT_EQ(status, kKpErrDisconnected);
  EXPECT_EQ(err_.rfind("[ClientSessionWrapper::receive] Error receiving message.", 0), 0u) << err_;
}

TEST_F(BSTest, StringListsAppendToTheCallersList) {
  server_.On(msg::kBsStoreList, [](const GetStoreListReq& req, GenericStringListResp& resp, Exchange& x) {
    if (req.id == 0) return;
    resp.count = 3;
    resp.texts = x.Array<const char*>(3);
    resp.texts[0] = x.Text("s1");
    resp.texts[1] = x.Text("s2");
    resp.texts[2] = nullptr;
  });
  server_.On(msg::kBsWildcardList, [](const GetStoreListReq&, GenericStringListResp& resp, Exchange& x) {
    resp.count = 1;
    resp.texts = x.Array<const char*>(1);
    resp.texts[0] = x.Text("*.tmp");
  });
  std::list<std::string> stores{"a", "b"};
  ASSERT_EQ(bs_.getStoreList(1, stores, err_, nullptr), 0);
  EXPECT_EQ(stores, (std::list<std::string>{"a", "b", "s1", "s2", ""}));
  ASSERT_EQ(bs_.getStoreList(0, stores, err_, nullptr), 0);
  EXPECT_EQ(stores.size(), 5u) << "a count of 0 leaves the list";
  std::list<std::string> wild{"x"};
  ASSERT_EQ(bs_.getWildcardExpressionList(1, wild, err_, nullptr), 0);
  EXPECT_EQ(wild, (std::list<std::string>{"x", "*.tmp"}));
}

TEST_F(BSTest, SystemStateReplacesTheCallersList) {
  server_.On(msg::kBsFlrSystemState, [](const APPFLRSystemStateInfoReq& req, APPFLRSystemStateInfoResp& resp,
                                        Exchange& x) {
    if (std::string(req.name) == "none") return;
    resp.count = 2;
    resp.infos = x.Array<APPFLRSystemStateInfo>(2);
    resp.infos[0].id = 1;
    resp.infos[0].value = 10;
    resp.infos[0].text1 = x.Text("t1");
    resp.infos[0].pairCount = 2;
    resp.infos[0].pairs = x.Array<APPFLRSystemStatePair>(2);
    resp.infos[0].pairs[0] = {5, x.Text("p5")};
    resp.infos[0].pairs[1] = {6, nullptr};
    resp.infos[1].id = 2;
  });
  std::list<FLRSystemStateInfo> out(3);
  ASSERT_EQ(bs_.getFLRSystemStateInfo(1, "state", out, nullptr), 0);
  ASSERT_EQ(out.size(), 2u);
  const FLRSystemStateInfo& first = out.front();
  EXPECT_EQ(first.id, 1u);
  EXPECT_EQ(first.value, 10u);
  EXPECT_EQ(first.text1, "t1");
  EXPECT_EQ(first.text2, "");
  ASSERT_EQ(first.pairs.size(), 2u);
  EXPECT_EQ(first.pairs.front().name, "p5");
  EXPECT_EQ(first.pairs.back().id, 6u);
  EXPECT_TRUE(out.back().pairs.empty());
  ASSERT_EQ(bs_.getFLRSystemStateInfo(1, "none", out, nullptr), 0);
  EXPECT_TRUE(out.empty()) << "a count of 0 empties the list";

  Fail(msg::kBsFlrSystemState, 1, "no such backup set");
  out.resize(1);
  EXPECT_EQ(bs_.getFLRSystemStateInfo(1, "state", out, nullptr), 1);
  EXPECT_EQ(out.size(), 1u) << "kept on failure";
}

TEST_F(BSTest, PairConflictCopiesBothPairsAndCutsWhatTheServerLeftUnterminated) {
  server_.On(msg::kBsPairConflict, [](const CheckPairConflictReq& req, CheckPairConflictResp& resp, Exchange&) {
    resp.conflict = 1;
    resp.pair1.id1 = 11;
    resp.pair1.value = 99;
    std::snprintf(resp.pair1.text1, sizeof resp.pair1.text1, "%s", req.text1);
    std::snprintf(resp.pair1.text4, sizeof resp.pair1.text4, "%s", req.text2);
    std::memset(resp.pair2.text2, 'x', sizeof resp.pair2.text2);  // no terminator at all
  });
  bool conflict = false;
  DataPairConflict p1, p2;
  std::memset(p1.text1, 'Q', sizeof p1.text1);
  ASSERT_EQ(bs_.doesNewPairConflict(3, conflict, "src", "dst", p1, p2, nullptr), 0);
  EXPECT_TRUE(conflict);
  EXPECT_EQ(p1.id1, 11u);
  EXPECT_EQ(p1.value, 99u);
  EXPECT_STREQ(p1.text1, "src");
  EXPECT_EQ(p1.text1[4], 'Q') << "bytes after the copied terminator are left";
  EXPECT_STREQ(p1.text4, "dst");
  EXPECT_EQ(strlen(p2.text2), sizeof p2.text2 - 1);

  Fail(msg::kBsPairConflict, 4, "store unavailable");
  conflict = false;
  p1.id1 = 1;
  EXPECT_EQ(bs_.doesNewPairConflict(3, conflict, "src", "dst", p1, p2, nullptr), 4);
  EXPECT_FALSE(conflict);
  EXPECT_EQ(p1.id1, 1u);
}

TEST_F(BSTest, InterfacePairReadsTheSelectorAndDefaultSubclientTheStore) {
  uint64_t selectorSeen = 0;
  server_.On(msg::kBsFrInterfacePair, [&](const getFRdataInterfacePairReq& req, getFRdataInterfacePairResp& resp,
                                          Exchange& x) {
    selectorSeen = req.selector;
    resp.first = x.Text("eth0");
    resp.second = nullptr;
  });
  server_.On(msg::kBsDefaultSubclientForStore, [](const GetDefaultSCForStoreReq& req, GetDefaultSCForStoreResp& resp,
                                                  Exchange&) { resp.subclientId = std::string(req.storeName) == "s1" ? 71 : 0; });
  unsigned long selector = 5, subclient = 0;
  std::string first, second = "x";
  ASSERT_EQ(bs_.getFRdataInterfacePair(1, 2, selector, first, second, err_, nullptr), 0);
  EXPECT_EQ(selectorSeen, 5u);
  EXPECT_EQ(selector, 5u);
  EXPECT_EQ(first, "eth0");
  EXPECT_EQ(second, "");
  ASSERT_EQ(bs_.getDefaultSubclientForStore(subclient, 1, "s1", err_, nullptr), 0);
  EXPECT_EQ(subclient, 71u);
}

TEST_F(BSTest, OperationsNotProvidedSendNothing) {
  unsigned long id = 0;
  std::string name;
  std::list<DataPairConflict> pairs;
  int utc = 17;
  struct {
    const char* name;
    std::function<int(std::string&)> call;
  } stubs[] = {
      {"create", [&](std::string& e) { return bs_.create("n", id, 1, 2, 3, "", e, nullptr); }},
      {"remove", [&](std::string& e) { return bs_.remove(1, e, nullptr); }},
      {"setSubclientPolicyId", [&](std::string& e) { return bs_.setSubclientPolicyId(1, 2, e, nullptr); }},
      {"reassociateSubclientPolicy", [&](std::string& e) { return bs_.reassociateSubclientPolicy(1, e, nullptr); }},
      {"UpdateAssocBackupset", [&](std::string& e) { return bs_.UpdateAssocBackupset(1, e, nullptr); }},
      {"cloneSubclientPolicy", [&](std::string& e) { return bs_.cloneSubclientPolicy(1, e, id, name, nullptr); }},
      {"getFLRconflictGUIDS", [&](std::string& e) { return bs_.getFLRconflictGUIDS(1, 2, L"a", L"b", pairs, e, nullptr); }},
  };
  for (auto& s : stubs) {
    std::string e;
    EXPECT_EQ(s.call(e), 0xa0010) << s.name;
    EXPECT_EQ(e, "Api not implemented.") << s.name;
  }
  EXPECT_EQ(bs_.getLastSetXferUTC(1, utc, nullptr), 0xa0010);
  EXPECT_EQ(utc, 17);
  EXPECT_EQ(server_.core().ConnectionsAccepted(), 0u);
}

}  // namespace

namespace {

// A request that cannot be encoded is the caller's error: it fails once, at once, with a text
// that says why, and no second connection is made for it.
TEST_F(BSTest, ARequestAboveTheFrameLimitFailsOnceWithoutReattaching) {
  server_.Answer(msg::kBsUpdate);
  long value = 1;
  ASSERT_EQ(bs_.update(7, "warm-up", value, false, 0, 0, 0, "", err_, nullptr), 0) << err_;
  const uint64_t connections = server_.core().ConnectionsAccepted();

  const std::string huge(17u << 20, 'n');
  int status = bs_.update(7, huge, value, false, 0, 0, 0, "", err_, nullptr);
  EXPECT_EQ(status, kKpErrLimit);
  EXPECT_NE(err_.find("above the frame limit"), std::string::npos) << err_;
  EXPECT_EQ(server_.Count(msg::kBsUpdate.requestId), 1u) << "only the warm-up reached the server";
  EXPECT_EQ(server_.core().ConnectionsAccepted(), connections) << "no re-attach";
  EXPECT_EQ(err_.rfind("[ClientSessionWrapper::send] Request not sent. [BS_UPDATE_REQ encodes to ", 0), 0u)
      << err_;
  EXPECT_EQ(log_.CountContaining("re-sending request to server"), 0u);
  EXPECT_EQ(log_.CountContaining("Re-attaching"), 0u);

  ASSERT_EQ(bs_.update(7, "after", value, false, 0, 0, 0, "", err_, nullptr), 0)
      << "the pooled session is still good: " << err_;
  EXPECT_EQ(server_.core().ConnectionsAccepted(), connections);
}

}  // namespace
