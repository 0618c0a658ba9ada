// AppTypeInterfaceNet against the scriptable server: the order of the two ids in each request,
// the delete-all's response id, the property requests and the operations answered locally.
#include "interfaces/AppTypeInterfaceNet.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

class AppTypeTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  template <class Req, class Resp>
  void Fail(const appmgr::wire::Op<Req, Resp>& op, int32_t code, const char* text) {
    server_.On(op, [code, text](const Req&, Resp& resp, Exchange&) {
      resp.hdr.errorCode = code;
      resp.hdr.errorText = text;
    });
  }
  ScriptServer server_;
  AppTypeInterfaceNet at_;
  std::string err_;
};

TEST_F(AppTypeTest, LookupAndUpdateNameTheTypeFirstCreateAndRemoveTheClientFirst) {
  std::vector<std::string> seen;
  auto pair = [&](const char* what) {
    return [&seen, what](const GenericDaxReq& req, GenericResp&, Exchange&) {
      seen.push_back(std::string(what) + " " + std::to_string(req.id1) + "," + std::to_string(req.id2));
    };
  };
  server_.On(msg::kAppTypeRemove, pair("remove"));
  server_.On(msg::kAppTypeCreate, pair("create"));
  server_.On(msg::kAppTypeLookup, [&](const GenericDaxReq& req, GenericLookupResp2& resp, Exchange& x) {
    seen.push_back("lookup " + std::to_string(req.id1) + "," + std::to_string(req.id2));
    resp.value = 6;
    resp.name = x.Text("SQL Database");
  });
  server_.On(msg::kAppTypeUpdate, [&](const ApptypeUpdateReq& req, GenericResp&, Exchange&) {
    seen.push_back("update " + std::to_string(req.id1) + "," + std::to_string(req.id2) + "=" +
                   std::to_string(req.value));
  });
  std::string name;
  long value = 0;
  unsigned long out1 = 91, out2 = 92;
  ASSERT_EQ(at_.lookup(7, 33, name, value, out1, out2, err_, nullptr), 0) << err_;
  ASSERT_EQ(at_.remove(7, 33, err_, nullptr), 0);
  ASSERT_EQ(at_.create(7, 33, 100, 200, err_, nullptr), 0);
  long newValue = -3;
  ASSERT_EQ(at_.update(7, 33, newValue, true, 1, 2, err_, nullptr), 0);
  EXPECT_EQ(seen, (std::vector<std::string>{"lookup 33,7", "remove 7,33", "create 7,33", "update 33,7=-3"}));
  EXPECT_EQ(name, "SQL Database");
  EXPECT_EQ(value, 6);
  EXPECT_EQ(out1, 91u) << "not written";
  EXPECT_EQ(out2, 92u);
  EXPECT_EQ(newValue, -3);

  Fail(msg::kAppTypeLookup, 1, "client 7 has no application type 33");
  value = 11;
  EXPECT_EQ(at_.lookup(7, 33, name, value, out1, out2, err_, nullptr), 1);
  EXPECT_EQ(err_, "client 7 has no application type 33");
  EXPECT_EQ(name, "SQL Database");
  EXPECT_EQ(value, 11);
}

TEST_F(AppTypeTest, DeleteAllSendsLevelTwoAndTheOptionAndIsAnsweredUnderTheInstanceResponseId) {
  EXPECT_EQ(msg::kAppTypeDeleteAll.requestId, 0x34000307u);
  EXPECT_EQ(msg::kAppTypeDeleteAll.responseId, 0x34000084u);
  RecDelAppIdsReq1 del;
  RecDelAppIdsReq undel;
  server_.On(msg::kAppTypeDeleteAll, [&](const RecDelAppIdsReq1& req, GenericResp&, Exchange&) { del = req; });
  server_.On(msg::kUndeleteAll, [&](const RecDelAppIdsReq& req, GenericResp&, Exchange&) { undel = req; });
  ASSERT_EQ(at_.deleteAll(7, 33, err_, nullptr, 5), 0) << err_;
  EXPECT_EQ(del.id, 7u);
  EXPECT_EQ(del.secondId, 33u);
  EXPECT_EQ(del.level, 2u);
  EXPECT_EQ(del.option, 5u);
  ASSERT_EQ(at_.undeleteAll(7, 33, err_, nullptr), 0) << err_;
  EXPECT_EQ(undel.id, 7u);
  EXPECT_EQ(undel.secondId, 33u);
  EXPECT_EQ(undel.level, 2u);
  EXPECT_EQ(server_.Count(msg::kDeleteAll.requestId), 0u) << "not the instance's request";
}

struct Collect : PropCallBack {
  std::vector<std::string> seen;
  void addProperty(const std::string& name, unsigned long type, const std::string& value, long) override {
    seen.push_back(name + "/" + std::to_string(type) + "/" + value);
  }
};

TEST_F(AppTypeTest, PropertyRequestsCarryThePairTheListAndTheFlag) {
  server_.On(msg::kAppTypeGetProperties, [](const GetAppTypePropsReq& req, GenericGetPropsResp& resp, Exchange& x) {
    resp.count = 1;
    resp.props = x.Array<AppMgrProps>(1);
    resp.props[0] = {x.Text(std::to_string(req.clientId) + "," + std::to_string(req.appTypeId)), 4,
                     x.Text(std::to_string(req.table))};
  });
  std::vector<std::string> seen;
  server_.On(msg::kAppTypeSetProperties, [&](const SetAppTypePropsReq& req, GenericResp&, Exchange&) {
    std::string line = "set " + std::to_string(req.clientId) + "," + std::to_string(req.appTypeId) + " count " +
                       std::to_string(req.count) + " flag " + std::to_string(req.flag);
    if (req.props == nullptr) line += " null";
    for (uint32_t i = 0; i < req.count; ++i) line += std::string(" ") + req.props[i].name + "=" + req.props[i].value;
    seen.push_back(line);
  });
  server_.On(msg::kAppTypeRemoveProperties, [&](const RemoveAppTypePropsReq1& req, GenericResp&, Exchange&) {
    seen.push_back("remove " + std::to_string(req.count) + " " + req.props[0].name);
  });
  server_.On(msg::kAppTypeRemovePropertyNames, [&](const RemoveAppTypePropsReq2& req, GenericResp&, Exchange&) {
    seen.push_back("names " + std::to_string(req.appTypeId) + " " + req.names[0].text + " " + req.names[1].text);
  });
  Collect cb;
  ASSERT_EQ(at_.getProperties(7, 33, -2, err_, &cb, nullptr), 0) << err_;
  EXPECT_EQ(cb.seen, (std::vector<std::string>{"7,33/4/-2"}));
  ApplProperty p1("a", 1, "x"), p2("b", 2, "y");
  ASSERT_EQ(at_.setProperties(7, 33, {&p1, &p2}, true, err_, nullptr, nullptr), 0);
  ASSERT_EQ(at_.setProperties(7, 33, {}, false, err_, nullptr, nullptr), 0);
  ASSERT_EQ(at_.removeProperties(7, 33, std::list<const ApplProperty*>{&p2}, false, err_, nullptr, nullptr), 0);
  ASSERT_EQ(at_.removeProperties(7, 33, std::list<std::string>{"a", "b"}, true, err_, nullptr, nullptr), 0);
  EXPECT_EQ(seen, (std::vector<std::string>{"set 7,33 count 2 flag 1 a=x b=y", "set 7,33 count 0 flag 0 null",
                                            "remove 1 b", "names 33 a b"}));

  Fail(msg::kAppTypeSetProperties, 1, "client 7 has no application type 33");
  EXPECT_EQ(at_.setProperties(7, 33, {&p1}, false, err_, nullptr, nullptr), 1);
  bool logged = false;
  for (const EvLogRecord& r : log_.Records()) {
    logged |= r.error && r.label == "AppTypeInterfaceNet::setProperties" &&
              r.text == "client 7 has no application type 33";
  }
  EXPECT_TRUE(logged);
}

TEST_F(AppTypeTest, VolumePropertySendsTheTenValuesInFieldOrderAndWritesNothingBack) {
  UpdateDCVolPropReq seen;
  std::string seenText;
  server_.On(msg::kAppTypeDcVolProp, [&](const UpdateDCVolPropReq& req, GenericResp&, Exchange&) {
    seen = req;
    seenText = req.text;
    seen.text = nullptr;
  });
  unsigned long v1 = 11, v2 = 12, v3 = 13, v4 = 14, v5 = 15;
  long sv = -16;
  std::string text = "{volume-guid}";
  ASSERT_EQ(at_.opDCvolProp(1, 2, 3, v1, text, v2, v3, v4, sv, v5, err_, nullptr), 0) << err_;
  EXPECT_EQ((std::vector<uint64_t>{seen.volumeId, seen.value1, seen.clientId, seen.appTypeId, seen.value2,
                                   seen.value3, seen.value4, static_cast<uint64_t>(seen.signedValue), seen.value5}),
            (std::vector<uint64_t>{3, 11, 1, 2, 12, 13, 14, static_cast<uint64_t>(-16), 15}));
  EXPECT_EQ(seenText, "{volume-guid}");
  EXPECT_EQ((std::vector<unsigned long>{v1, v2, v3, v4, v5}), (std::vector<unsigned long>{11, 12, 13, 14, 15}));
  EXPECT_EQ(sv, -16);
  EXPECT_EQ(text, "{volume-guid}");
}

TEST_F(AppTypeTest, LocalOperationsSendNothingAndAnswerAsDeclared) {
  std::list<std::string> strings{"kept"};
  std::list<DCVolAndMountPathData> volumes;
  std::list<DataPairConflict> conflicts;
  std::string guid = "g";
  unsigned long out = 5;
  bool flag = true;

  std::string err = "untouched";
  log_.Clear();
  EXPECT_EQ(at_.SetSearchString(1, 2, 3, strings, err, nullptr), 0);
  EXPECT_EQ(at_.GetSearchString(1, 2, 3, strings, err, nullptr), 0);
  EXPECT_EQ(strings, (std::list<std::string>{"kept"}));
  EXPECT_EQ(at_.isSRMproxyAgent(1, out, err, nullptr), -1);
  EXPECT_EQ(err, "untouched");
  EXPECT_EQ(log_.Records().size(), 0u) << "the four above log nothing";

  struct {
    const char* name;
    std::function<int(std::string&)> call;
  } refused[] = {
      {"getVolAndMountPathData", [&](std::string& e) { return at_.getVolAndMountPathData(1, 2, volumes, e, nullptr); }},
      {"checkForDuplLogGUID", [&](std::string& e) { return at_.checkForDuplLogGUID(1, 2, guid, conflicts, e, nullptr); }},
      {"getCurrentSRMActionSubClient",
       [&](std::string& e) { return at_.getCurrentSRMActionSubClient(1, 2, out, e, nullptr); }},
      {"getFSAppTypeNumber", [&](std::string& e) { return at_.getFSAppTypeNumber(1, out, e, nullptr); }},
      {"isIndexingAppType", [&](std::string& e) { return at_.isIndexingAppType(1, flag, e, nullptr); }},
  };
  for (auto& r : refused) {
    SCOPED_TRACE(r.name);
    log_.Clear();
    std::string e;
    EXPECT_EQ(r.call(e), -1);
    EXPECT_EQ(e, "Feature Not Supported");
    std::vector<EvLogRecord> lines = log_.Records();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].error);
    EXPECT_EQ(lines[0].label, std::string("AppTypeInterfaceNet::") + r.name);
    EXPECT_EQ(lines[0].text, "Feature Not Supported");
  }
  EXPECT_EQ(out, 5u);
  EXPECT_TRUE(flag);
  EXPECT_TRUE(volumes.empty());
  EXPECT_EQ(server_.core().ConnectionsAccepted(), 0u);
}

}  // namespace
