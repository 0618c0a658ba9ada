// AppIdInterfaceNet against the scriptable server, and the text form of an application id.
#include "interfaces/AppIdInterfaceNet.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

constexpr const char* kGetLabel = "AppIdInterfaceNet::getApplicationId";

AppIdInfo Sample() {
  AppIdInfo info;
  for (unsigned long i = 0; i < 9; ++i) info.number[i] = 10 + i;
  info.text[0] = "C:";
  info.text[1] = "";
  info.text[2] = "vol";
  info.option = 4;
  return info;
}

TEST(AppIdTextForm, ListsNumberThreeFirstAndLeavesOutNumbersOneAndTwoAndTheOption) {
  AppIdInfo info = Sample();
  std::string text = "replaced";
  info.dump(text);
  EXPECT_EQ(text, "13|10|14|15|16|17|18|C:||vol");

  AppIdInfo other = info;
  other.number[1] = 999;
  other.number[2] = 998;
  other.option = 0;
  std::string second;
  other.dump(second);
  EXPECT_EQ(second, text);

  other.number[8] = 0;
  other.dump(second);
  EXPECT_NE(second, text);
}

class AppIdTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }

  // The lines written under the get operation's label, as "D<level> <text>".
  std::vector<std::string> Trace() const {
    std::vector<std::string> lines;
    for (const EvLogRecord& r : log_.Records()) {
      if (r.label == kGetLabel) lines.push_back("D" + std::to_string(r.level) + " " + r.text);
    }
    return lines;
  }

  // Answers a get or create with numbers 100.. and the texts given (null where null).
  template <class Op>
  void AnswerWith(const Op& op, const char* t0, const char* t1, const char* t2) {
    server_.On(op, [=, this](const AppIdInfoReq& req, AppIdInfoResp& resp, Exchange& x) {
      seen_ = req;
      seenTexts_ = {req.text0, req.text1, req.text2};
      uint64_t* numbers[] = {&resp.number0, &resp.number1, &resp.number2, &resp.number3, &resp.number4,
                             &resp.number5, &resp.number6, &resp.number7, &resp.number8};
      for (int i = 0; i < 9; ++i) *numbers[i] = 100 + i;
      resp.text0 = t0 ? x.Text(t0) : nullptr;
      resp.text1 = t1 ? x.Text(t1) : nullptr;
      resp.text2 = t2 ? x.Text(t2) : nullptr;
    });
  }

  ScriptServer server_;
  AppIdInterfaceNet appIds_;
  std::string err_;
  AppIdInfoReq seen_;
  std::vector<std::string> seenTexts_;
};

TEST_F(AppIdTest, CreateSendsTheWholeIdAndTakesTheServersBack) {
  AnswerWith(msg::kAppIdCreate, "a", "b", "c");
  AppIdInfo info = Sample();
  ASSERT_EQ(appIds_.createApplicationId(info, err_, nullptr, nullptr), 0) << err_;
  EXPECT_EQ(seen_.number0, 10u);
  EXPECT_EQ(seen_.number3, 13u);
  EXPECT_EQ(seen_.number8, 18u);
  EXPECT_EQ(seen_.option, 4u);
  EXPECT_EQ(seenTexts_, (std::vector<std::string>{"C:", "", "vol"}));
  EXPECT_EQ(info.number[0], 100u);
  EXPECT_EQ(info.number[8], 108u);
  EXPECT_EQ(info.text[2], "c");
  EXPECT_EQ(info.option, 4u) << "the option is not answered";
  EXPECT_TRUE(Trace().empty()) << "only the get traces";
}

TEST_F(AppIdTest, GetKeepsATextTheServerLeavesOutAndTracesEntryAndExit) {
  AnswerWith(msg::kAppIdGet, "a", nullptr, "c");
  AppIdInfo info = Sample();
  info.text[1] = "mine";
  ASSERT_EQ(appIds_.getApplicationId(info, err_, nullptr), 0) << err_;
  EXPECT_EQ(info.number[3], 103u);
  EXPECT_EQ(info.text[0], "a");
  EXPECT_EQ(info.text[1], "mine");
  EXPECT_EQ(info.text[2], "c");
  EXPECT_EQ(Trace(), (std::vector<std::string>{"D8 Entry:  appId[13|10|14|15|16|17|18|C:|mine|vol]",
                                               "D2 Exit: [0], appId[103|100|104|105|106|107|108|a|mine|c]"}));
}

TEST_F(AppIdTest, AFailedGetTracesTheFailingStepAndAlwaysTheExit) {
  struct Case {
    const char* name;
    std::function<void(ScriptServer&)> arrange;
    const char* middle;  // the step's line, or null for a server error
  } cases[] = {
      {"cannot send", [](ScriptServer& s) { s.Stop(); }, "Session Send Error"},
      {"no answer",
       [](ScriptServer& s) {
         s.Restart();
         s.Answer(msg::kAppIdGet);
         s.DropBeforeAnswer(msg::kAppIdGet.requestId);
       },
       "Session Recv Error"},
      {"server error",
       [](ScriptServer& s) {
         s.Restart();
         s.DropBeforeAnswer(msg::kAppIdGet.requestId, 0);
         s.On(msg::kAppIdGet, [](const AppIdInfoReq&, AppIdInfoResp& resp, Exchange&) {
           resp.hdr.errorCode = 1;
           resp.hdr.errorText = "no application id matches";
         });
       },
       nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    AppMgrSessionPoolSingleton::resetForTesting();
    c.arrange(server_);
    log_.Clear();
    AppIdInfo info = Sample();
    int status = appIds_.getApplicationId(info, err_, nullptr);
    ASSERT_NE(status, 0);
    EXPECT_EQ(info.number[0], 10u) << "the id keeps its values";
    std::vector<std::string> trace = Trace();
    ASSERT_EQ(trace.size(), c.middle ? 3u : 2u);
    EXPECT_EQ(trace.front(), "D8 Entry:  appId[13|10|14|15|16|17|18|C:||vol]");
    if (c.middle) {
      EXPECT_EQ(trace[1], "D2 " + std::string(c.middle) + "[" + std::to_string(status) +
                              "], appId[13|10|14|15|16|17|18|C:||vol]");
    } else {
      EXPECT_EQ(err_, "no application id matches");
    }
    EXPECT_EQ(trace.back(), "D2 Exit: [" + std::to_string(status) + "], appId[13|10|14|15|16|17|18|C:||vol]");
  }
}

TEST_F(AppIdTest, RemoveAndArchiveGroupsSendTheirArgumentsInOrder) {
  std::vector<uint64_t> seen;
  server_.On(msg::kAppIdRemove, [&](const AppIdInfoReq& req, GenericResp&, Exchange&) {
    seen.push_back(req.number0);
    seen.push_back(req.option);
  });
  server_.On(msg::kAppIdUpdateArchiveGroups, [&](const AppIdUpdSPReq& req, GenericResp&, Exchange&) {
    seen.insert(seen.end(), {req.first, req.second, req.third});
  });
  server_.On(msg::kAppIdIncrArchiveGroup, [&](const GetIncrAgInfoReq& req, GetIncrAgInfoRes& resp, Exchange&) {
    resp.archiveGroupId = req.id + 1000;
  });
  AppIdInfo info = Sample();
  ASSERT_EQ(appIds_.removeApplicationId(info, err_, nullptr), 0) << err_;
  EXPECT_EQ(info.number[0], 10u);
  ASSERT_EQ(appIds_.updateArchiveGroups(7, 8, 9, err_, nullptr, nullptr), 0) << err_;
  EXPECT_EQ(seen, (std::vector<uint64_t>{10, 4, 7, 8, 9}));
  unsigned long group = 0;
  ASSERT_EQ(appIds_.getIncrArchiveGroup(group, 7, err_, nullptr), 0) << err_;
  EXPECT_EQ(group, 1007u);

  server_.On(msg::kAppIdIncrArchiveGroup, [](const GetIncrAgInfoReq&, GetIncrAgInfoRes& resp, Exchange&) {
    resp.hdr.errorCode = 1;
    resp.hdr.errorText = "application id 7 does not exist";
    resp.archiveGroupId = 5;
  });
  EXPECT_EQ(appIds_.getIncrArchiveGroup(group, 7, err_, nullptr), 1);
  EXPECT_EQ(err_, "application id 7 does not exist");
  EXPECT_EQ(group, 1007u);
}

}  // namespace
