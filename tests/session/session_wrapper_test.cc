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
  Result r = LookupOn(sw, 3);
  ASSERT_EQ(r.sendStatus + r.receiveStatus, 0) << r.error;
  EXPECT_EQ(r.name, "bs-3");
  EXPECT_EQ(sw.headerWord(), 5u) << "the third header word of the answer";
}

TEST_F(SessionWrapperTest, FailuresAreLabelledWithTheNameAndLoggedAsDebugLines) {
  Settings("");
  SessionWrapper sw("myprog", 0);
  std::string err;
  // A bare host is reached on the protocol's ports: 8400, then 8402 when that refuses.
  EXPECT_EQ(sw.connectToCH("127.0.0.77", "AppManager network access", err), kKpErrRefused);
  EXPECT_EQ(err, "[myprog] Error attaching to svc [AppManager network access] on CH [127.0.0.77]. "
                 "[connect to 127.0.0.77:8402: Connection refused]");
  EXPECT_EQ(Logged("SessionWrapper", 1, err), 1u);

  EXPECT_EQ(LookupOn(sw, 1).error, "[myprog] Error sending message. [the session is not connected]");
  GenericLookupResp4 resp;
  EXPECT_NE(sw.receive(kBsLookup.responseId, &resp, sizeof resp, err), 0);
  EXPECT_EQ(err, "[myprog] Error receiving message. the session is not connected]");
  EXPECT_EQ(log_.Records().size(), 3u);
  EXPECT_EQ(Logged("SessionWrapper", 1, err), 1u);
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
    ASSERT_EQ(LookupOn(sw, 1).name, "bs-1");
    server.DropBeforeAnswer(kBsLookup.requestId);
    before = CKpNetwork::FreeReceivedCalls();
    EXPECT_NE(LookupOn(sw, 2).receiveStatus, 0);
    EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), before + 1) << "the good answer was freed first";
  }
  EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), before + 2) << "the destructor freed after the failure";
  EXPECT_EQ(CKpNetwork::LastFreedMessageId(), kBsLookup.responseId);
}

}  // namespace
