// ClientSessionWrapper: where its session comes from, the one recovery of a failed send, and
// the texts its failures leave.
#include "session/ClientSessionWrapper.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/session/SessionFixture.h"

namespace {

using namespace std::chrono_literals;
using appmgr::msg::kBsLookup;

class WrapperTest : public SessionFixture {};

TEST_F(WrapperTest, LitePoolIsPreferredFullPoolIsTheFallBackPrivateSessionTheLastResort) {
  ScriptServer ch, lite;
  ScriptLookup(ch);
  ScriptLookup(lite);

  Settings(ControlhostAt(ch) + LiteAt(lite));
  EXPECT_EQ(Lookup(1).name, "bs-1");
  EXPECT_EQ(lite.Count(kBsLookup.requestId), 1u);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 0u);
  EXPECT_EQ(Lookup(2, /*skipLite=*/true).name, "bs-2");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 1u) << "skipping the lite pool goes to the Controlhost";

  // The lite host stops: its pool cannot lend, and the full pool serves.
  lite.Stop();
  EXPECT_EQ(Lookup(3).name, "bs-3");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);

  // No pool at all (no Controlhost client name): a private session to the Controlhost host.
  Reset();
  log_.Clear();
  Settings("[Controlhost]\nsHOSTNAME = " + ch.host() + "\n");
  EXPECT_EQ(Lookup(4).name, "bs-4");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 3u);
  EXPECT_EQ(log_.Count("[ClientSessionWrapper::connectToCH] Connnecting to [AppManager network access] "
                       "service on Controlhoster."),
            1u);
  EXPECT_EQ(Logged("ClientSessionWrapper::ClientSessionWrapper", 1,
                   "Could not get session from pool. Error:[Could not create session pool object]"),
            1u);
}

TEST_F(WrapperTest, ALiteHostAddedToTheSettingsIsUsedByTheNextCall) {
  ScriptServer ch, lite;
  ScriptLookup(ch);
  ScriptLookup(lite);
  Settings(ControlhostAt(ch));
  EXPECT_EQ(Lookup(1).name, "bs-1");
  EXPECT_EQ(Lookup(2).name, "bs-2");  // "no lite host" is remembered between these calls ...
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
  Settings(ControlhostAt(ch) + LiteAt(lite));  // ... and forgotten when the settings change
  EXPECT_EQ(Lookup(3).name, "bs-3");
  EXPECT_EQ(lite.Count(kBsLookup.requestId), 1u);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
}

TEST_F(WrapperTest, APooledSessionIsNotConnectedBySendAndIsReused) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Lookup(i).name, "bs-" + std::to_string(i));
  EXPECT_EQ(ch.core().ConnectionsAccepted(), 1u);
  EXPECT_EQ(log_.CountContaining("Connnecting"), 0u);
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool()->stats().lent, 0u);
}

TEST_F(WrapperTest, APrivateSessionConnectsOnSendAndIsClosedByTheDestructor) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings("[Controlhost]\nsHOSTNAME = " + ch.host() + "\n");
  {
    ClientSessionWrapper wrapper(0x1a000000, false);
    EXPECT_EQ(ch.core().ConnectionsAccepted(), 0u) << "the constructor does not connect";
    GenericLookupReq4 req;
    NetMessage header;  // holds the host name req.hdr points at
    header.initRequestHeader(req.hdr);
    std::string err;
    ASSERT_EQ(wrapper.send(kBsLookup.requestId, &req, sizeof req, err), 0) << err;
    EXPECT_EQ(ch.core().ConnectionsAccepted(), 1u);
  }
  for (int i = 0; i < 50 && ch.core().OpenConnections() > 0; ++i) std::this_thread::sleep_for(20ms);
  EXPECT_EQ(ch.core().OpenConnections(), 0u) << "the destructor disconnected";
}

TEST_F(WrapperTest, NoServerGivesTheConnectTextAndCode) {
  Settings("[Controlhost]\nsHOSTNAME = 127.0.0.1:1\n");
  Result r = Lookup(1);
  EXPECT_EQ(r.sendStatus, kKpErrRefused);
  EXPECT_EQ(r.error.rfind("[ClientSessionWrapper::connectToCH] Error connecting to svc [AppManager network access] "
                          "on CH. [connect to 127.0.0.1:1: Connection refused]", 0), 0u)
      << r.error;
  EXPECT_EQ(log_.CountContaining("Cannot connect to [AppManager network access], errorString[" + r.error +
                                 "], errorCode[1006]"),
            1u);
  EXPECT_EQ(log_.CountContaining("Exit(msgId="), 0u) << "no exit line after a failed connect";
}

TEST_F(WrapperTest, AServerRestartUnderABorrowedSessionIsOneReattachAndOneResend) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  ASSERT_EQ(Lookup(1).name, "bs-1");
  ClientSessionWrapper wrapper(0x1a000000, false);  // borrows the live session
  ch.Restart();                                      // ... which the restart closes
  std::this_thread::sleep_for(50ms);
  GenericLookupReq4 req;
  NetMessage msg;
  msg.initRequestHeader(req.hdr);
  req.id = 2;
  std::string err;
  ASSERT_EQ(wrapper.send(kBsLookup.requestId, &req, sizeof req, err), 0) << err;
  GenericLookupResp4 resp;
  ASSERT_EQ(wrapper.receive(kBsLookup.responseId, &resp, sizeof resp, err), 0) << err;
  EXPECT_STREQ(resp.name, "bs-2");
  EXPECT_EQ(log_.Count("Lost connnection to server. Re-attaching to controlhoster"), 1u);
  EXPECT_EQ(log_.Count("Re-send to server successful."), 1u);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u) << "the request reached the server once";
}

TEST_F(WrapperTest, AFailedReattachOverwritesTheConnectText) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  ASSERT_EQ(Lookup(1).name, "bs-1");
  ClientSessionWrapper wrapper(0x1a000000, false);
  ch.Stop();
  std::this_thread::sleep_for(50ms);
  GenericLookupReq4 req;
  NetMessage header;  // holds the host name req.hdr points at
  header.initRequestHeader(req.hdr);
  std::string err;
  EXPECT_EQ(wrapper.send(kBsLookup.requestId, &req, sizeof req, err), kKpErrRefused);
  EXPECT_EQ(err.rfind("[ClientSessionWrapper::send] Re-attach failed. Connection error [connect to 127.0.0.1:", 0), 0u)
      << err;
}

TEST_F(WrapperTest, AFailedReceiveReportsAndTheDestructorFreesNothing) {
  ScriptServer ch;
  ScriptLookup(ch);
  ch.DropBeforeAnswer(kBsLookup.requestId);
  Settings(ControlhostAt(ch));
  uint64_t freedBefore = CKpNetwork::FreeReceivedCalls();
  Result r = Lookup(1);
  EXPECT_EQ(r.sendStatus, 0);
  EXPECT_EQ(r.receiveStatus, kKpErrDisconnected);
  EXPECT_EQ(r.error.rfind("[ClientSessionWrapper::receive] Error receiving message. [waiting for BS_LOOKUP_RESP: ", 0),
            0u)
      << r.error;
  EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), freedBefore);
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool()->stats().open, 0u)
      << "the broken session was not put back";
}

TEST_F(WrapperTest, ServerCodesReachTheHeaderCheck) {
  ScriptServer ch;
  Settings(ControlhostAt(ch));
  struct {
    uint64_t version;
    int32_t code;
    const char* text;
    int verify;
    const char* logged;
  } cases[] = {
      {3, 0, nullptr, -1, "Msg version mismatch [3-2]."},
      {2, 100, "informational", 100, nullptr},
      {2, 42, "backup set 42 does not exist", 42, "Error Code [42] returned - [backup set 42 does not exist]."},
  };
  for (const auto& c : cases) {
    ch.On(kBsLookup, [&c](const GenericLookupReq4&, GenericLookupResp4& resp, appmgr::server::Exchange&) {
      resp.hdr.version = c.version;
      resp.hdr.errorCode = c.code;
      resp.hdr.errorText = c.text;
    });
    log_.Clear();
    Result r = Lookup(42);
    EXPECT_EQ(r.verify, c.verify);
    EXPECT_EQ(log_.CountContaining("Error Code") + log_.CountContaining("mismatch"), c.logged ? 1u : 0u);
    if (c.logged) {
      EXPECT_EQ(log_.Count(c.logged), 1u);
    }
  }
}

TEST_F(WrapperTest, TracesEntryAndExitWithTheMessageName) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  Lookup(1);
  EXPECT_EQ(log_.Count("Entry(msgId=872415871(BS_LOOKUP_REQ))"), 1u);
  EXPECT_EQ(log_.Count("Exit(msgId=872415871(BS_LOOKUP_REQ)), errorCode[0]"), 1u);
  EXPECT_EQ(log_.Count("Entry(msgId=872415872(BS_LOOKUP_RESP))"), 1u);
  EXPECT_EQ(log_.Count("Exit(msgId=872415872(BS_LOOKUP_RESP)), error(0)"), 1u);
  EXPECT_EQ(ClientSessionWrapper::m_nTotalMessageCalls.load(), 1u);

  // At level 3 none of these lines is written.
  log_.Clear();
  EvLog::SetLevel(3);
  Lookup(2);
  EXPECT_EQ(log_.CountContaining("msgId="), 0u);
}

TEST_F(WrapperTest, ErrorMsgFillsTheStringWhenGivenOneAndAlwaysLogs) {
  ScriptServer ch;
  Settings(ControlhostAt(ch));
  ClientSessionWrapper wrapper(0x1a000000, false);
  std::string err;
  wrapper.errorMsg(&err, "[%s] code %d", "x", 5);
  wrapper.errorMsg(nullptr, "no string %d", 6);
  EXPECT_EQ(err, "[x] code 5");
  EXPECT_EQ(log_.Count("[x] code 5"), 1u);
  EXPECT_EQ(log_.Count("no string 6"), 1u);
  EXPECT_NE(wrapper.getKpSessionObj(), nullptr);
}

TEST_F(WrapperTest, AServerRestartBetweenCallsCostsNoFailureAndNoDuplicate) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  for (int round = 0; round < 3; ++round) {
    ASSERT_EQ(Lookup(round).name, "bs-" + std::to_string(round));
    ch.Restart();
    std::this_thread::sleep_for(30ms);
  }
  ASSERT_EQ(Lookup(9).name, "bs-9");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 4u) << "every request was sent exactly once";
}

}  // namespace
