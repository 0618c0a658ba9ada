// SessionWrapper: one connection of its own, attached by the caller.
#include "session/SessionWrapper.h"

#include <gtest/gtest.h>

#include "tests/session/SessionFixture.h"

namespace {

using appmgr::msg::kBsLookup;

class SessionWrapperTest : public SessionFixture {
 protected:
  // A lookup of `id` on `sw`; the send's and the receive's status.
  static std::pair<int, int> Exchange(SessionWrapper& sw, uint64_t id, GenericLookupResp4& resp,
                                      std::string& err) {
    GenericLookupReq4 req;
    NetMessage header;  // holds the host name req.hdr points at
    header.initRequestHeader(req.hdr);
    req.id = id;
    int sent = sw.send(kBsLookup.requestId, &req, sizeof req, err);
    return {sent, sent ? 0 : sw.receive(kBsLookup.responseId, &resp, sizeof resp, err)};
  }
};

TEST_F(SessionWrapperTest, AttachesToTheCallersHostAndExchanges) {
  ScriptServer server;
  ScriptLookup(server);
  Settings("[Controlhost]\nsCLIENTNAME = chc\n");
  SessionWrapper sw("sw", 77);
  EXPECT_EQ(sw.headerWord(), 77u);
  std::string err;
  ASSERT_EQ(sw.connectToCH(server.host(), "AppManager network access", err), 0) << err;
  sw.session().setJobId(5);
  GenericLookupResp4 resp;
  ASSERT_EQ(Exchange(sw, 3, resp, err), std::make_pair(0, 0)) << err;
  EXPECT_STREQ(resp.name, "bs-3");
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

  GenericLookupResp4 resp;
  Exchange(sw, 1, resp, err);
  EXPECT_EQ(err, "[myprog] Error sending message. [the session is not connected]");
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
    GenericLookupResp4 resp;
    ASSERT_EQ(Exchange(sw, 1, resp, err), std::make_pair(0, 0));
    server.DropBeforeAnswer(kBsLookup.requestId);
    before = CKpNetwork::FreeReceivedCalls();
    EXPECT_NE(Exchange(sw, 2, resp, err).second, 0);
    EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), before + 1) << "the good answer was freed first";
  }
  EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), before + 2) << "the destructor freed after the failure";
  EXPECT_EQ(CKpNetwork::LastFreedMessageId(), kBsLookup.responseId);
}

}  // namespace
