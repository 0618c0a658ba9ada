// ClientSessionWrapper: where its session comes from, the one recovery of a failed send, and
// the texts, labels and levels its steps and failures leave in the log.
#include "session/ClientSessionWrapper.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/session/SessionFixture.h"
#include "tests/support/RawPeer.h"

namespace {

using namespace std::chrono_literals;
using appmgr::msg::kBsLookup;

constexpr const char* kSendLabel = "ClientSessionWrapper::send";

class WrapperTest : public SessionFixture {};

TEST_F(WrapperTest, LitePoolIsPreferredFullPoolIsTheFallBackPrivateSessionTheLastResort) {
  ScriptServer ch, lite;
  ScriptLookup(ch);
  ScriptLookup(lite);
  Settings(ControlhostAt(ch));
  EXPECT_EQ(Lookup(1).name, "bs-1");
  EXPECT_EQ(Lookup(2).name, "bs-2");  // "no lite host" is remembered between these calls ...
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);

  Settings(ControlhostAt(ch) + LiteAt(lite));  // ... and forgotten when the settings change
  EXPECT_EQ(Lookup(1).name, "bs-1");
  EXPECT_EQ(lite.Count(kBsLookup.requestId), 1u);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
  EXPECT_EQ(Lookup(2, /*skipLite=*/true).name, "bs-2");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 3u) << "skipping the lite pool goes to the Controlhost";
  EXPECT_EQ(Logged("ClientSessionWrapper::initSessionPool", 10,
                   "Skipping app manager lite session pool and getting CH app manager connection pool"),
            1u);

  // The lite host stops: its pool cannot lend, and the full pool serves.
  lite.Stop();
  EXPECT_EQ(Lookup(3).name, "bs-3");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 4u);

  // No pool at all (no Controlhost client name): a private session to the Controlhost host.
  Reset();
  log_.Clear();
  Settings("[Controlhost]\nsHOSTNAME = " + ch.host() + "\n");
  EXPECT_EQ(Lookup(4).name, "bs-4");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 5u);
  EXPECT_EQ(Logged("ClientSessionWrapper::connectToCH", 1,
                   "[ClientSessionWrapper::connectToCH] Connnecting to [AppManager network access] "
                   "service on Controlhoster."),
            1u);
  EXPECT_EQ(Logged("ClientSessionWrapper::ClientSessionWrapper", 1,
                   "Could not get session from pool. Error:[Could not create session pool object]"),
            1u);
}

TEST_F(WrapperTest, APooledSessionIsReusedAndEachStepIsTraced) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Lookup(i).name, "bs-" + std::to_string(i));
  EXPECT_EQ(ch.core().ConnectionsAccepted(), 1u);
  EXPECT_EQ(log_.CountContaining("Connnecting"), 0u) << "send does not connect a pooled session";
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool()->stats().lent, 0u);
  EXPECT_EQ(ClientSessionWrapper::m_nTotalMessageCalls.load(), 3u);
  EXPECT_EQ(Logged(kSendLabel, 4, "Entry(msgId=872415871(BS_LOOKUP_REQ))"), 3u);
  EXPECT_EQ(Logged(kSendLabel, 4, "Exit(msgId=872415871(BS_LOOKUP_REQ)), errorCode[0]"), 3u);
  EXPECT_EQ(Logged("ClientSessionWrapper::receive", 4, "Entry(msgId=872415872(BS_LOOKUP_RESP))"), 3u);
  EXPECT_EQ(Logged("ClientSessionWrapper::receive", 4, "Exit(msgId=872415872(BS_LOOKUP_RESP)), error(0)"), 3u);
}

TEST_F(WrapperTest, APrivateSessionConnectsOnSendAndTheDestructorSaysGoodbye) {
  std::atomic<int> goodbyes{0}, requests{0};
  RawPeer peer([&](appmgr::net::Socket& s) {
    appmgr::net::FrameConn conn(std::move(s));
    if (!RawPeer::AcceptHello(conn)) return;
    kpsHostProtocolHeader h;
    while (RawPeer::ReadFrame(conn, &h)) {
      auto kind = appmgr::net::KindOf(h);
      (kind == appmgr::net::FrameKind::kGoodbye ? goodbyes : requests)++;
    }
  });
  Settings("[Controlhost]\nsHOSTNAME = 127.0.0.1:" + std::to_string(peer.port()) + "\n");
  {
    ClientSessionWrapper wrapper(0x1a000000, false);
    EXPECT_EQ(peer.accepted(), 0) << "the constructor does not connect";
    GenericLookupReq4 req;
    NetMessage header;  // holds the host name req.hdr points at
    header.initRequestHeader(req.hdr);
    std::string err;
    ASSERT_EQ(wrapper.send(kBsLookup.requestId, &req, sizeof req, err), 0) << err;
    EXPECT_EQ(peer.accepted(), 1);
  }
  for (int i = 0; i < 100 && goodbyes + requests < 2; ++i) std::this_thread::sleep_for(10ms);
  EXPECT_EQ(requests.load(), 1);
  EXPECT_EQ(goodbyes.load(), 1) << "the private session was disconnected, not just dropped";
}

TEST_F(WrapperTest, NoServerGivesTheConnectTextAndCode) {
  Settings("[Controlhost]\nsHOSTNAME = 127.0.0.1:1\n");
  Result r = Lookup(1);
  EXPECT_EQ(r.sendStatus, kKpErrRefused);
  EXPECT_EQ(r.error, "[ClientSessionWrapper::connectToCH] Error connecting to svc [AppManager network access] "
                     "on CH. [connect to 127.0.0.1:1: Connection refused]");
  EXPECT_EQ(Logged("ClientSessionWrapper::connectToCH", kError, r.error), 1u);
  EXPECT_EQ(Logged(kSendLabel, kError,
                   "Cannot connect to [AppManager network access], errorString[" + r.error + "], errorCode[1006]"),
            1u);
  EXPECT_EQ(log_.CountContaining("Exit(msgId="), 0u) << "no exit line after a failed connect";
}

// A session lent out before the server restarted: its request goes into the closed connection,
// the receive finds that no server read it, and the one recovery re-attaches the same session
// object and sends again. With the server gone for good, the re-attach fails and says so.
TEST_F(WrapperTest, ALostBorrowedSessionIsReattachedOnceAndResentOnce) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  ASSERT_EQ(Lookup(1).name, "bs-1");
  {
    ClientSessionWrapper wrapper(0x1a000000, false);  // borrows the live session
    ch.Restart();                                      // ... which the restart closes
    std::this_thread::sleep_for(50ms);
    Result r = LookupOn(wrapper, 2);
    ASSERT_EQ(r.sendStatus + r.receiveStatus, 0) << r.error;
    EXPECT_EQ(r.name, "bs-2");
  }
  EXPECT_EQ(Logged(kSendLabel, 4, "Lost connnection to server. Re-attaching to controlhoster"), 1u);
  EXPECT_EQ(Logged(kSendLabel, 4, " Re-attach succeeded. re-sending request to server."), 1u);
  EXPECT_EQ(Logged(kSendLabel, 4, "Re-send to server successful."), 1u);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u) << "the request reached the server once";

  ClientSessionWrapper wrapper(0x1a000000, false);
  ch.Stop();
  std::this_thread::sleep_for(50ms);
  Result r = LookupOn(wrapper, 3);
  EXPECT_EQ(r.receiveStatus, kKpErrRefused);
  EXPECT_EQ(r.error.rfind("[ClientSessionWrapper::send] Re-attach failed. Connection error [connect to 127.0.0.1:", 0), 0u)
      << r.error;
  EXPECT_EQ(Logged(kSendLabel, kError, r.error), 1u);
}

// A server that accepts every hello and then reads nothing: the request (far larger than the
// socket buffers) times out, and so does the one re-send on the re-attached connection.
TEST_F(WrapperTest, AResendThatFailsTooReportsTheSendError) {
  std::atomic<bool> done{false};
  RawPeer peer([&](appmgr::net::Socket& s) {
    appmgr::net::FrameConn conn(std::move(s));
    if (!RawPeer::AcceptHello(conn)) return;
    for (int i = 0; i < 1000 && !done; ++i) std::this_thread::sleep_for(10ms);
  });
  Settings("[Controlhost]\nsHOSTNAME = 127.0.0.1:" + std::to_string(peer.port()) +
           "\n[Network]\nnIoTimeoutSeconds = 1\n");
  std::string huge(8u << 20, 'h');
  ClientSessionWrapper wrapper(0x1a000000, false);  // private: its time-out is the setting's
  GenericLookupReq4 req;
  req.hdr.version = 2;
  req.hdr.hostName = huge.c_str();
  std::string err;
  EXPECT_EQ(wrapper.send(kBsLookup.requestId, &req, sizeof req, err), kKpErrTimeout);
  done = true;
  EXPECT_EQ(err, "Error [BS_LOOKUP_REQ: binary: send timed out] re-sending request to server.");
  EXPECT_EQ(Logged(kSendLabel, kError, err), 1u);
  EXPECT_EQ(Logged(kSendLabel, 4, "Lost connnection to server. Re-attaching to controlhoster"), 1u);
  EXPECT_EQ(peer.accepted(), 2) << "one re-attach, never more";
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
  EXPECT_EQ(Logged("ClientSessionWrapper::receive", kError, r.error), 1u);
  EXPECT_EQ(Logged("ClientSessionWrapper::receive", 1, r.error), 1u);
  EXPECT_EQ(CKpNetwork::FreeReceivedCalls(), freedBefore);
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool()->stats().open, 0u)
      << "the broken session was not put back";
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 1u) << "a request the server read is never sent again";
}

}  // namespace
