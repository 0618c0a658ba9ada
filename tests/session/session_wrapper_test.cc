// SessionWrapper: one connection of its own, attached by the caller.
#include "session/SessionWrapper.h"

#include <gtest/gtest.h>

#include "tests/session/SessionFixture.h"

namespace {

using appmgr::msg::kBsLookup;

class SessionWrapperTest : public SessionFixture {};

TEST_F(SessionWrapperTest, AttachesToTheCallersHostAndExchanges) {
  ScriptServer server;
  ScriptLookup(server);
  Settings("[Controlhost]\nsCLIENTNAME = chc\n");
  SessionWrapper sw("sw", 77);
  EXPECT_EQ(sw.headerWord(), 77u);
  std::string err;
  ASSERT_EQ(sw.connectToCH(server.host(), "AppManager network access", err), 0) << err;
  sw.session().setJobId(5);
  GenericLookupReq4 req;
  NetMessage header;  // holds the host name req.hdr points at
  header.initRequestHeader(req.hdr);
  req.id = 3;
  ASSERT_EQ(sw.send(kBsLookup.requestId, &req, sizeof req, err), 0) << err;
  GenericLookupResp4 resp;
  ASSERT_EQ(sw.receive(kBsLookup.responseId, &resp, sizeof resp, err), 0) << err;
  EXPECT_STREQ(resp.name, "bs-3");
  EXPECT_EQ(sw.headerWord(), 5u) << "the third header word of the answer";
}

TEST_F(SessionWrapperTest, FailuresAreLabelledWithTheName) {
  Settings("");
  SessionWrapper sw("myprog", 0);
  std::string err;
  int code = sw.connectToCH("127.0.0.1:1", "AppManager network access", err);
  EXPECT_EQ(code, kKpErrRefused);
  EXPECT_EQ(err, "[myprog] Error attaching to svc [AppManager network access] on CH [127.0.0.1:1]. "
                 "[connect to 127.0.0.1:1: Connection refused]");
  EXPECT_EQ(log_.Count(err), 1u);
  EXPECT_FALSE(log_.Records().back().error) << "a debug line, not an error line";

  GenericLookupReq4 req;
  EXPECT_NE(sw.send(kBsLookup.requestId, &req, sizeof req, err), 0);
  EXPECT_EQ(err, "[myprog] Error sending message. [the session is not connected]");
  GenericLookupResp4 resp;
  EXPECT_NE(sw.receive(kBsLookup.responseId, &resp, sizeof resp, err), 0);
  EXPECT_EQ(err, "[myprog] Error receiving message. the session is not connected]");
}

TEST_F(SessionWrapperTest, AFailedReceiveIsReleasedUnderTheLastGoodIdByTheDestructor) {
  ScriptServer server;
  ScriptLookup(server);
  Settings("");
  uint64_t before = CKpNetwork::FreeReceivedCalls();
  {
    SessionWrapper never("never", 0);
  }
  EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), before) << "nothing received, nothing freed";

  {
    SessionWrapper sw("sw", 0);
    std::string err;
    ASSERT_EQ(sw.connectToCH(server.host(), "AppManager network access", err), 0);
    GenericLookupReq4 req;
    NetMessage header;  // holds the host name req.hdr points at
    header.initRequestHeader(req.hdr);
    GenericLookupResp4 resp;
    ASSERT_EQ(sw.send(kBsLookup.requestId, &req, sizeof req, err), 0);
    ASSERT_EQ(sw.receive(kBsLookup.responseId, &resp, sizeof resp, err), 0);
    server.DropBeforeAnswer(kBsLookup.requestId);
    ASSERT_EQ(sw.send(kBsLookup.requestId, &req, sizeof req, err), 0);
    before = CKpNetwork::FreeReceivedCalls();
    EXPECT_NE(sw.receive(kBsLookup.responseId, &resp, sizeof resp, err), 0);
    EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), before + 1) << "the good answer was freed first";
  }
  EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), before + 2) << "the destructor freed after the failure";
  EXPECT_EQ(CKpNetwork::LastFreedMessageId(), kBsLookup.responseId);
}

TEST_F(SessionWrapperTest, SendRepeatsItselfOnALostConnection) {
  ScriptServer server;
  ScriptLookup(server);
  Settings("");
  SessionWrapper sw("sw", 0);
  std::string err;
  ASSERT_EQ(sw.connectToCH(server.host(), "AppManager network access", err), 0);
  server.Restart();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  GenericLookupReq4 req;
  NetMessage header;  // holds the host name req.hdr points at
  header.initRequestHeader(req.hdr);
  req.id = 8;
  ASSERT_EQ(sw.send(kBsLookup.requestId, &req, sizeof req, err), 0) << err;
  GenericLookupResp4 resp;
  ASSERT_EQ(sw.receive(kBsLookup.responseId, &resp, sizeof resp, err), 0) << err;
  EXPECT_STREQ(resp.name, "bs-8");
}

}  // namespace
