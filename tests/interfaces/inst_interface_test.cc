// InstInterfaceNet against the scriptable server: what each operation sends, what it copies out,
// and what it leaves alone when a step fails.
#include "interfaces/InstInterfaceNet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "appmgr/AppMgrDefs.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

class InstTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  template <class Req, class Resp>
  void Fail(const appmgr::wire::Op<Req, Resp>& op, int32_t code, const char* text) {
    server_.On(op, [code, text](const Req&, Resp& resp, Exchange&) {
      resp.hdr.errorCode = code;
      resp.hdr.errorText = text;
    });
  }
  bool Logged(const std::string& label, const std::string& text) const {
    for (const EvLogRecord& r : log_.Records()) {
      if (r.error && r.label == label && r.text == text) return true;
    }
    return false;
  }
  ScriptServer server_;
  InstInterfaceNet inst_;
  std::string err_;
};

struct Content : ContentCallBack {
  std::vector<std::string> seen;
  int flags = 0;
  void addContent(unsigned long type, const std::string& text) override {
    seen.push_back(std::to_string(type) + ":" + text);
  }
  void setFlag(bool) override { ++flags; }
};

TEST_F(InstTest, LookupCopiesEveryFieldAndKeepsTheCallersTextsWhenTheServerSendsNone) {
  server_.On(msg::kInstLookup, [](const GenericLookupReq3& req, GenericLookupResp3& resp, Exchange& x) {
    resp.id = 999;  // not copied anywhere
    resp.value = -4;
    resp.attr2 = 2;
    resp.attr3 = 3;
    resp.attr4 = 4;
    resp.name = req.id == 1 ? x.Text("SALESDB") : nullptr;
    resp.text = req.id == 1 ? x.Text("port 4100") : nullptr;
  });
  std::string name = "before", text = "before";
  long value = 0;
  unsigned long a2 = 0, a3 = 0, a4 = 0;
  ASSERT_EQ(inst_.lookup(1, name, value, a2, a3, a4, text, err_, nullptr), 0) << err_;
  EXPECT_EQ(name, "SALESDB");
  EXPECT_EQ(text, "port 4100");
  EXPECT_EQ(value, -4);
  EXPECT_EQ(a2 * 100 + a3 * 10 + a4, 234u);

  name = "kept";
  text = "kept too";
  ASSERT_EQ(inst_.lookup(2, name, value, a2, a3, a4, text, err_, nullptr), 0);
  EXPECT_EQ(name, "kept") << "an absent name is not a clear";
  EXPECT_EQ(text, "kept too");

  Fail(msg::kInstLookup, 1, "instance 42 does not exist");
  value = 5;
  EXPECT_EQ(inst_.lookup(42, name, value, a2, a3, a4, text, err_, nullptr), 1);
  EXPECT_EQ(err_, "instance 42 does not exist");
  EXPECT_EQ(name, "kept");
  EXPECT_EQ(value, 5);
}

TEST_F(InstTest, UpdateSendsIdValueAndNameOnly) {
  GenericUpdateReq2 seen;
  std::string seenName;
  server_.On(msg::kInstUpdate, [&](const GenericUpdateReq2& req, GenericResp&, Exchange&) {
    seen = req;
    seenName = req.name;
  });
  long value = -12;
  ASSERT_EQ(inst_.update(13, "renamed", value, true, 5, 6, err_, nullptr), 0) << err_;
  EXPECT_EQ(seen.id, 13u);
  EXPECT_EQ(seen.value, -12);
  EXPECT_EQ(seenName, "renamed");
  EXPECT_EQ(value, -12);
}

TEST_F(InstTest, DeleteAndUndeleteSendLevelThreeAndNoSecondIdUnderTheirOwnIds) {
  std::vector<std::string> seen;
  auto record = [&](const RecDelAppIdsReq& req, GenericResp&, Exchange&) {
    seen.push_back(std::to_string(req.id) + "/" + std::to_string(req.secondId) + "/" + std::to_string(req.level));
  };
  server_.On(msg::kDeleteAll, record);
  server_.On(msg::kUndeleteAll, record);
  EXPECT_EQ(inst_.deleteAll(13, err_, nullptr), 0);
  EXPECT_EQ(inst_.undeleteAll(77, err_, nullptr), 0);
  EXPECT_EQ(seen, (std::vector<std::string>{"13/0/3", "77/0/3"}));
  EXPECT_EQ(server_.Count(msg::kDeleteAll.requestId), 1u);
  EXPECT_EQ(server_.Count(msg::kUndeleteAll.requestId), 1u);
}

TEST_F(InstTest, InitContentHandsOverEntriesUpToTheMaximumTypeAndNeverTheFlag) {
  int64_t valueSeen = 0;
  server_.On(msg::kInstInitContent, [&](const GenericInitContentReq& req, GenericInitContentResp& resp, Exchange& x) {
    valueSeen = req.value;
    if (req.id != 1) return;  // an empty content list
    const int64_t types[] = {1, KP_CONTENT_MAX_INDEX, KP_CONTENT_MAX_INDEX + 1, -1, 0};
    resp.count = 5;
    resp.content = x.Array<AppMgrContent>(5);
    for (int i = 0; i < 5; ++i) resp.content[i] = {x.Text("e" + std::to_string(i)), types[i]};
    resp.content[4].text = nullptr;
  });
  Content cb;
  ASSERT_EQ(inst_.initContent(1, -9, err_, &cb, nullptr), 0) << err_;
  EXPECT_EQ(valueSeen, -9);
  // 65 is above the bound, and -1 read as unsigned is far above it.
  EXPECT_EQ(cb.seen, (std::vector<std::string>{"1:e0", "64:e1", "0:"}));
  EXPECT_EQ(cb.flags, 0) << "the instance form has no content flag";

  Content empty;
  ASSERT_EQ(inst_.initContent(2, 0, err_, &empty, nullptr), 0);
  EXPECT_TRUE(empty.seen.empty());
  EXPECT_EQ(empty.flags, 0);

  Fail(msg::kInstInitContent, 1, "instance 3 does not exist");
  EXPECT_EQ(inst_.initContent(3, 0, err_, &empty, nullptr), 1);
  EXPECT_EQ(err_, "instance 3 does not exist");
  EXPECT_TRUE(empty.seen.empty());
}

TEST_F(InstTest, UpdateContentSendsBothListsWholeWithTheOneTypeAndTheFlagsInOrder) {
  std::vector<std::string> seen;
  server_.On(msg::kInstUpdateContent, [&](const GenericUpdateContentReq& req, GenericResp&, Exchange&) {
    std::string line = std::to_string(req.id) + " " + std::to_string(req.count1) + "/" + std::to_string(req.count2) +
                       " flags " + std::to_string(req.flag1) + std::to_string(req.flag2) + std::to_string(req.flag3);
    if (req.content1 == nullptr) line += " add:null";
    if (req.content2 == nullptr) line += " remove:null";
    seen.push_back(line);
    for (uint32_t i = 0; i < req.count1 && i < 3; ++i) {
      seen.push_back(std::string("+") + req.content1[i].text + ":" + std::to_string(req.content1[i].type));
    }
    for (uint32_t i = 0; i < req.count2; ++i) {
      seen.push_back(std::string("-") + req.content2[i].text + ":" + std::to_string(req.content2[i].type));
    }
  });
  std::string a = "/data", b = "/logs", c = "/old";
  ASSERT_EQ(inst_.updateContent(13, 7, {&a, &b}, {&c}, true, false, true, err_, nullptr, nullptr), 0) << err_;
  ASSERT_EQ(inst_.updateContent(13, -2, {}, {}, false, true, false, err_, nullptr, nullptr), 0) << err_;
  EXPECT_EQ(seen, (std::vector<std::string>{"13 2/1 flags 101", "+/data:7", "+/logs:7", "-/old:7",
                                            "13 0/0 flags 010 add:null remove:null"}));

  // Ten thousand entries travel in one request.
  std::vector<std::string> many(10000);
  std::list<std::string*> manyPointers;
  for (size_t i = 0; i < many.size(); ++i) {
    many[i] = "/p" + std::to_string(i);
    manyPointers.push_back(&many[i]);
  }
  seen.clear();
  ASSERT_EQ(inst_.updateContent(13, 1, manyPointers, {}, false, false, false, err_, nullptr, nullptr), 0);
  EXPECT_EQ(server_.Count(msg::kInstUpdateContent.requestId), 3u);
  EXPECT_EQ(seen.front(), "13 10000/0 flags 000 remove:null");
}

// The throwing-style operations: each logs its failure under its own label and returns the code.
TEST_F(InstTest, ChangesThatFailLogTheTextUnderTheirLabel) {
  Fail(msg::kInstUpdateContent, 3, "entry 1 of the content to add to instance 13 is empty");
  Fail(msg::kInstSetProperties, 1, "instance 9 does not exist");
  Fail(msg::kInstRemoveProperties, 1, "rp failed");
  Fail(msg::kInstRemovePropertyNames, 1, "rpn failed");
  Fail(msg::kInstSetAgProperties, 2, "ag failed");
  std::string empty;
  ApplProperty p("n", 1, "v");
  struct Case {
    const char* label;
    const char* text;
    std::function<int()> call;
  } cases[] = {
      {"InstInterfaceNet::updateContent", "entry 1 of the content to add to instance 13 is empty",
       [&] { return inst_.updateContent(13, 1, {&empty}, {}, false, false, false, err_, nullptr, nullptr); }},
      {"InstInterfaceNet::setProperties", "instance 9 does not exist",
       [&] { return inst_.setProperties(9, {&p}, false, err_, nullptr, nullptr); }},
      {"InstInterfaceNet::removeProperties", "rp failed",
       [&] { return inst_.removeProperties(9, std::list<const ApplProperty*>{&p}, false, err_, nullptr, nullptr); }},
      {"InstInterfaceNet::removeProperties", "rpn failed",
       [&] { return inst_.removeProperties(9, std::list<std::string>{"n"}, false, err_, nullptr, nullptr); }},
      {"InstInterfaceNet::setMSSQLAGProperties", "ag failed",
       [&] { return inst_.setMSSQLAGProperties(9, {&p}, true, err_, nullptr, nullptr); }},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_NE(c.call(), 0);
    EXPECT_EQ(err_, c.text);
    EXPECT_TRUE(Logged(c.label, c.text));
  }
}

struct Collect : PropCallBack {
  std::vector<std::string> seen;
  void addProperty(const std::string& name, unsigned long type, const std::string& value, long reserved) override {
    seen.push_back(name + "/" + std::to_string(type) + "/" + value + "/" + std::to_string(reserved));
  }
};

TEST_F(InstTest, PropertiesTravelUnderTheInstanceIdsAndAvailabilityGroupsUnderTheirOwn) {
  server_.On(msg::kInstGetProperties, [](const GenericGetPropsReq& req, GenericGetPropsResp& resp, Exchange& x) {
    resp.count = 1;
    resp.props = x.Array<AppMgrProps>(1);
    resp.props[0] = {x.Text("table"), req.id, x.Text(std::to_string(req.table))};
  });
  std::vector<std::string> sets;
  auto record = [&](const GenericSetPropsReq& req, GenericResp&, Exchange&) {
    std::string line = std::to_string(req.id) + " flag " + std::to_string(req.flag);
    for (uint32_t i = 0; i < req.count; ++i) line += std::string(" ") + req.props[i].name + "=" + req.props[i].value;
    sets.push_back(line);
  };
  server_.On(msg::kInstSetProperties, record);
  server_.On(msg::kInstSetAgProperties, record);
  Collect cb;
  ASSERT_EQ(inst_.getProperties(13, 1, err_, &cb, nullptr), 0) << err_;
  EXPECT_EQ(cb.seen, (std::vector<std::string>{"table/13/1/0"}));
  ApplProperty p("sListener", 2, "AG1");
  ASSERT_EQ(inst_.setProperties(13, {&p}, false, err_, nullptr, nullptr), 0);
  ASSERT_EQ(inst_.setMSSQLAGProperties(13, {&p}, true, err_, nullptr, nullptr), 0);
  EXPECT_EQ(sets, (std::vector<std::string>{"13 flag 0 sListener=AG1", "13 flag 1 sListener=AG1"}));
  EXPECT_EQ(server_.Count(msg::kInstSetProperties.requestId), 1u);
  EXPECT_EQ(server_.Count(msg::kInstSetAgProperties.requestId), 1u);
}

}  // namespace
