// GlobalParamInterfaceNet against the scriptable server: what each operation sends, what it
// copies out, and what it leaves alone when a step fails.
#include "interfaces/GlobalParamInterfaceNet.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/net/XdrCodec.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

class GlobalParamTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  template <class Req, class Resp>
  void Fail(const appmgr::wire::Op<Req, Resp>& op, int32_t code, const char* text) {
    server_.On(op, [code, text](const Req&, Resp& resp, Exchange&) {
      resp.hdr.errorCode = code;
      resp.hdr.errorText = text;
    });
  }
  // Lines logged as errors under `label`.
  std::vector<std::string> Errors(const std::string& label) {
    std::vector<std::string> texts;
    for (const EvLogRecord& r : log_.Records()) {
      if (r.label == label && r.error && r.level == 0) texts.push_back(r.text);
    }
    return texts;
  }
  ScriptServer server_;
  GlobalParamInterfaceNet params_;
  std::string err_;
};

TEST_F(GlobalParamTest, GetsCopyANonNullValueAndKeepTheCallersOnNull) {
  std::vector<std::string> names;
  server_.On(msg::kGlobalParamGet,
             [&](const GetGlobalParamReq& req, GetGlobalParamResp& resp, Exchange& x) {
               names.push_back(req.name);
               resp.value = std::string(req.name) == "sSet" ? x.Text("v1") : nullptr;
             });
  std::vector<std::pair<uint64_t, uint64_t>> ids;
  server_.On(msg::kAppPropertyGet,
             [&](const GetAppPropertyReq& req, GetAppPropertyResp& resp, Exchange& x) {
               ids.push_back({req.id1, req.id2});
               resp.value = req.id2 == 1 ? x.Text("4") : nullptr;
             });

  std::string value = "before";
  ASSERT_EQ(params_.getProperty("sSet", value, err_, 77, nullptr), 0) << err_;
  EXPECT_EQ(value, "v1");
  value = "pre-filled";
  ASSERT_EQ(params_.getProperty("sNull", value, err_, 77, nullptr), 0) << err_;
  EXPECT_EQ(value, "pre-filled") << "a null value leaves the caller's value";
  EXPECT_EQ(names, (std::vector<std::string>{"sSet", "sNull"}));

  ASSERT_EQ(params_.getAppProperty(302, 1, value, err_, nullptr), 0) << err_;
  EXPECT_EQ(value, "4");
  ASSERT_EQ(params_.getAppProperty(302, 9, value, err_, nullptr), 0) << err_;
  EXPECT_EQ(value, "4");
  EXPECT_EQ(ids, (std::vector<std::pair<uint64_t, uint64_t>>{{302, 1}, {302, 9}}));
}

TEST_F(GlobalParamTest, SetSendsNameAndValueWhateverThePropertysTypeOrTheFlag) {
  std::vector<std::string> seen;
  server_.On(msg::kGlobalParamSet, [&](const SetGlobalParamReq& req, GenericResp&, Exchange&) {
    seen.push_back(std::string(req.name) + "=" + req.value);
  });
  ApplProperty untyped("sTimeZone", 0, "UTC"), typed("sTimeZone", 7, "UTC");
  ASSERT_EQ(params_.setProperty(untyped, err_, false, nullptr), 0) << err_;
  ASSERT_EQ(params_.setProperty(typed, err_, true, nullptr), 0) << err_;
  EXPECT_EQ(seen, (std::vector<std::string>{"sTimeZone=UTC", "sTimeZone=UTC"}));

  std::string seenValue;
  server_.On(msg::kAppPropertySet, [&](const SetAppPropertyReq& req, GenericResp&, Exchange&) {
    seenValue = std::to_string(req.id1) + "/" + std::to_string(req.id2) + "=" + req.value;
  });
  ASSERT_EQ(params_.setAppProperty(302, 4, "", err_, nullptr), 0) << err_;
  EXPECT_EQ(seenValue, "302/4=");
}

TEST_F(GlobalParamTest, BothRemovalsSendByteIdenticalRequests) {
  std::vector<std::vector<uint8_t>> payloads;
  server_.On(msg::kGlobalParamRemove, [&](const DelGlobalParamReq& req, GenericResp&, Exchange&) {
    std::vector<uint8_t> bytes;
    EXPECT_FALSE(appmgr::wire::EncodeRecord(req, bytes));
    payloads.push_back(std::move(bytes));
  });
  ApplProperty property("nMaxConcurrentJobs", 1, "ignored value");
  ASSERT_EQ(params_.removeProperty(property, err_, nullptr), 0) << err_;
  ASSERT_EQ(params_.removeProperty(std::string("nMaxConcurrentJobs"), err_, nullptr), 0) << err_;
  ASSERT_EQ(payloads.size(), 2u);
  EXPECT_EQ(payloads[0], payloads[1]);
}

TEST_F(GlobalParamTest, AServerErrorLeavesTheValueAndTheThrowingStyleLogsIt) {
  Fail(msg::kGlobalParamGet, 1, "global parameter 'sX' is not set");
  std::string value = "kept";
  EXPECT_EQ(params_.getProperty("sX", value, err_, 0, nullptr), 1);
  EXPECT_EQ(err_, "global parameter 'sX' is not set");
  EXPECT_EQ(value, "kept");
  Fail(msg::kAppPropertyGet, 1, "client application type 9 does not exist");
  EXPECT_EQ(params_.getAppProperty(9, 1, value, err_, nullptr), 1);
  EXPECT_EQ(err_, "client application type 9 does not exist");
  EXPECT_EQ(value, "kept");
  Fail(msg::kAppPropertySet, 3, "bad value");
  EXPECT_EQ(params_.setAppProperty(302, 1, "x", err_, nullptr), 3);
  EXPECT_EQ(err_, "bad value");
  EXPECT_TRUE(Errors("GlobalParamInterfaceNet::getProperty").empty())
      << "the plain style logs no handler line";

  Fail(msg::kGlobalParamSet, 3, "takes a whole number");
  EXPECT_EQ(params_.setProperty(ApplProperty("nA", 0, "x"), err_, false, nullptr), 3);
  EXPECT_EQ(err_, "takes a whole number");
  EXPECT_EQ(Errors("GlobalParamInterfaceNet::setProperty"),
            (std::vector<std::string>{"takes a whole number"}));

  Fail(msg::kGlobalParamRemove, 1, "not set");
  EXPECT_EQ(params_.removeProperty(std::string("sY"), err_, nullptr), 1);
  EXPECT_EQ(params_.removeProperty(ApplProperty("sY", 0, ""), err_, nullptr), 1);
  EXPECT_EQ(Errors("GlobalParamInterfaceNet::removeProperty"),
            (std::vector<std::string>{"not set", "not set"}));

  // A transport failure in the throwing style: the receive's status and text.
  server_.DropBeforeAnswer(msg::kGlobalParamRemove.requestId);
  EXPECT_EQ(params_.removeProperty(std::string("sY"), err_, nullptr), kKpErrDisconnected);
  EXPECT_EQ(err_.rfind("[ClientSessionWrapper::receive] Error receiving message.", 0), 0u) << err_;
}

}  // namespace
