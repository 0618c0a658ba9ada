// KpNetworkPool: lending, limits, stale sessions after a server restart, termination and fork.
#include "platform/net/KpNetworkPool.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "protocol/Messages.h"
#include "tests/support/ScriptServer.h"
#include "tests/support/TestSettings.h"

namespace {

using namespace std::chrono_literals;
using appmgr::msg::kBsLookup;

constexpr const char* kService = "AppManager network access";

bool Exchange(CKpNetwork* s, uint64_t id, std::string* name = nullptr) {
  GenericLookupReq4 req;
  req.hdr.version = 2;
  req.id = id;
  GenericLookupResp4 resp;
  kpsDatabuf_v2 out, in;
  out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
  in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
  bool t = false;
  if (s->SendXDRMessage(kBsLookup.requestId, &out, 0, 5, t)) return false;
  unsigned long rid = kBsLookup.responseId;
  if (s->ReceiveXDRMessage(&rid, &in, nullptr, 0, 5, t)) return false;
  if (name && resp.name) *name = resp.name;
  s->FreeReceivedMessage(rid, &in);
  return true;
}

class PoolTest : public testing::Test {
 protected:
  PoolTest() {
    server_.On(kBsLookup, [](const GenericLookupReq4& req, GenericLookupResp4& resp,
                             appmgr::server::Exchange& x) {
      resp.name = x.Text("bs-" + std::to_string(req.id));
    });
  }
  void Init(KpNetworkPool& pool, unsigned long max = 10, unsigned long attach = 120,
            unsigned long idle = 0) {
    ASSERT_FALSE(pool.initNetworkPool(kService, server_.connectString(), "client01", 600, attach, 0,
                                      max, idle));
  }
  TestSettings settings_;
  ScriptServer server_;
};

TEST_F(PoolTest, InitialisingTouchesNoNetworkAndLendsWhatItAttaches) {
  KpNetworkPool pool;
  Init(pool);
  EXPECT_EQ(server_.core().ConnectionsAccepted(), 0u);
  CKpNetwork* s = nullptr;
  ASSERT_FALSE(pool.getSessionObject(s));
  ASSERT_NE(s, nullptr);
  EXPECT_TRUE(Exchange(s, 1));
  ASSERT_FALSE(pool.releaseSessionObject(s));
  CKpNetwork* again = nullptr;
  ASSERT_FALSE(pool.getSessionObject(again));
  EXPECT_EQ(again, s) << "an idle session is lent again";
  ASSERT_FALSE(pool.releaseSessionObject(again));
  EXPECT_EQ(pool.stats().attached, 1u);
  EXPECT_EQ(pool.stats().lent, 0u);
  EXPECT_TRUE(pool.releaseSessionObject(again)) << "only lent sessions come back";
}

// A session that rested longer than the check threshold is asked before it is lent, and one
// whose server restarted meanwhile is replaced. One in steady use is lent without the question:
// its request then goes into the closed connection, and the receive says no server read it.
TEST_F(PoolTest, AServerRestartIsNoticedBeforeLendingASessionThatRested) {
  for (auto checkAfter : {20ms, 60000ms}) {
    settings_.Write("[Network]\nnSessionCheckAfterIdleMs = " + std::to_string(checkAfter.count()) + "\n");
    KpNetworkPool pool;
    Init(pool);
    server_.ResetCounts();
    CKpNetwork* s = nullptr;
    ASSERT_FALSE(pool.getSessionObject(s));
    ASSERT_TRUE(Exchange(s, 1));
    pool.releaseSessionObject(s);

    server_.Restart();
    std::this_thread::sleep_for(50ms);  // let the close reach the client's socket

    ASSERT_FALSE(pool.getSessionObject(s));
    std::string name;
    bool checked = checkAfter < 50ms;
    EXPECT_EQ(Exchange(s, 2, &name), checked) << "the first call after a restart succeeds";
    EXPECT_EQ(name, checked ? "bs-2" : "");
    EXPECT_EQ(s->RequestNeverReachedPeer(), !checked);
    pool.releaseSessionObject(s);
    EXPECT_EQ(pool.stats().replaced, 1u);
    EXPECT_EQ(pool.stats().attached, checked ? 2u : 1u);
    EXPECT_EQ(server_.Count(kBsLookup.requestId), checked ? 2u : 1u) << "no request was read twice";
  }
}

TEST_F(PoolTest, ABrokenSessionIsNeverLentAgain) {
  KpNetworkPool pool;
  Init(pool);
  CKpNetwork* s = nullptr;
  ASSERT_FALSE(pool.getSessionObject(s));
  kpsStatus st;
  bool t;
  s->AbortConnection(st, 5, t);
  pool.releaseSessionObject(s);
  EXPECT_EQ(pool.stats().open, 0u);
  CKpNetwork* next = nullptr;
  ASSERT_FALSE(pool.getSessionObject(next));
  EXPECT_TRUE(Exchange(next, 3));
  pool.releaseSessionObject(next);
}

TEST_F(PoolTest, ABorrowerWaitsForAFreeSessionAndGivesUpAfterTheAttachTimeout) {
  KpNetworkPool pool;
  Init(pool, /*max=*/2, /*attach=*/1);
  CKpNetwork *a = nullptr, *b = nullptr, *c = nullptr;
  ASSERT_FALSE(pool.getSessionObject(a));
  ASSERT_FALSE(pool.getSessionObject(b));
  auto start = std::chrono::steady_clock::now();
  CLmError e = pool.getSessionObject(c);
  EXPECT_EQ(e.GetErrorCode(), kKpErrLimit) << e.AsString();
  EXPECT_GE(std::chrono::steady_clock::now() - start, 900ms);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms);

  std::thread giver([&] {
    std::this_thread::sleep_for(200ms);
    pool.releaseSessionObject(a);
  });
  ASSERT_FALSE(pool.getSessionObject(c));
  EXPECT_EQ(c, a);
  giver.join();
  pool.releaseSessionObject(b);
  pool.releaseSessionObject(c);
  EXPECT_LE(pool.stats().open, 2u);
  EXPECT_GE(pool.stats().waits, 2u);
}

TEST_F(PoolTest, TimeoutSettingsShortenThePoolsWaitsButNeverLengthenThem) {
  // A tool that must answer within a few seconds can only reach the pools through the
  // settings: the pool's own I/O (600 s) and attach (120 s) time-outs are fixed by its caller.
  server_.Delay(kBsLookup.requestId, 3000ms);
  settings_.Write("[Network]\nnIoTimeoutSeconds = 1\nnAttachTimeoutSeconds = 1\n");
  KpNetworkPool pool;
  Init(pool, /*max=*/1);
  CKpNetwork* s = nullptr;
  ASSERT_FALSE(pool.getSessionObject(s));
  GenericLookupReq4 req;
  req.hdr.version = 2;
  GenericLookupResp4 resp;
  kpsDatabuf_v2 out, in;
  out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
  in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
  bool timedOut = false;
  ASSERT_FALSE(s->SendXDRMessage(kBsLookup.requestId, &out, 0, -1, timedOut));
  unsigned long rid = kBsLookup.responseId;
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(s->ReceiveXDRMessage(&rid, &in, nullptr, 0, -1, timedOut).GetErrorCode(),
            kKpErrTimeout);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms) << "the pool's 600 s were kept";
  // The one session is lent out: a second borrower waits the shortened attach time-out.
  CKpNetwork* other = nullptr;
  start = std::chrono::steady_clock::now();
  EXPECT_EQ(pool.getSessionObject(other).GetErrorCode(), kKpErrLimit);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms) << "the pool's 120 s were kept";
  pool.releaseSessionObject(s);

  // A longer setting does not lengthen what the caller asked for.
  settings_.Write("[Network]\nnAttachTimeoutSeconds = 100\n");
  KpNetworkPool capped;
  Init(capped, /*max=*/1, /*attach=*/1);
  ASSERT_FALSE(capped.getSessionObject(s));
  start = std::chrono::steady_clock::now();
  EXPECT_EQ(capped.getSessionObject(other).GetErrorCode(), kKpErrLimit);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms);
  capped.releaseSessionObject(s);
}

TEST_F(PoolTest, TerminateClosesIdleSessionsAndLentOnesWhenTheyReturn) {
  KpNetworkPool pool;
  Init(pool);
  CKpNetwork *a = nullptr, *b = nullptr;
  ASSERT_FALSE(pool.getSessionObject(a));
  ASSERT_FALSE(pool.getSessionObject(b));
  pool.releaseSessionObject(a);
  pool.terminateAllSessions();
  EXPECT_EQ(pool.stats().open, 1u);
  EXPECT_TRUE(Exchange(b, 1)) << "a lent session stays usable until it comes back";
  pool.releaseSessionObject(b);
  EXPECT_EQ(pool.stats().open, 0u);
  CKpNetwork* c = nullptr;
  ASSERT_FALSE(pool.getSessionObject(c));
  EXPECT_TRUE(Exchange(c, 2));
  pool.releaseSessionObject(c);
}

TEST_F(PoolTest, CheckConnectionsDropsSessionsWhosePeerWentAway) {
  ScriptServer::Options o;
  o.idleTimeoutSeconds = 1;
  ScriptServer impatient(o);
  KpNetworkPool pool;
  ASSERT_FALSE(pool.initNetworkPool(kService, impatient.connectString(), "c", 600, 120, 2, 10, 0));
  EXPECT_EQ(pool.stats().open, 2u);
  std::this_thread::sleep_for(1600ms);  // the server closes idle connections
  pool.checkConnections();
  EXPECT_EQ(pool.stats().open, 0u);
  EXPECT_EQ(pool.stats().replaced, 2u);
}

TEST_F(PoolTest, IdleLimitRetiresOldSessions) {
  KpNetworkPool pool;
  Init(pool, 10, 120, /*idle=*/1);
  CKpNetwork* s = nullptr;
  ASSERT_FALSE(pool.getSessionObject(s));
  pool.releaseSessionObject(s);
  std::this_thread::sleep_for(1300ms);
  ASSERT_FALSE(pool.getSessionObject(s));
  pool.releaseSessionObject(s);
  EXPECT_EQ(pool.stats().attached, 2u);
}

TEST_F(PoolTest, AChildAfterForkAttachesItsOwnSessions) {
  KpNetworkPool pool;
  Init(pool);
  CKpNetwork* s = nullptr;
  ASSERT_FALSE(pool.getSessionObject(s));
  ASSERT_TRUE(Exchange(s, 1));
  pool.releaseSessionObject(s);
  pid_t child = fork();
  if (child == 0) {
    CKpNetwork* mine = nullptr;
    unsigned long attachedBefore = pool.stats().attached;
    bool ok = !pool.getSessionObject(mine) && pool.stats().attached == attachedBefore + 1 &&
              Exchange(mine, 2);
    if (mine) pool.releaseSessionObject(mine);
    _exit(ok ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  ASSERT_FALSE(pool.getSessionObject(s));
  EXPECT_TRUE(Exchange(s, 3)) << "the parent's session is untouched by the child";
  pool.releaseSessionObject(s);
  EXPECT_EQ(server_.Count(kBsLookup.requestId), 3u);
}

std::vector<std::string> g_debugLines;
void Collect(KpNetworkPool*, const char* text) { g_debugLines.push_back(text); }

TEST_F(PoolTest, DebugLinesGoToTheCallbackUpToItsLevel) {
  g_debugLines.clear();
  KpNetworkPool pool;
  pool.setDebuggingLevel(5);
  pool.setDebugCallback(Collect);
  Init(pool);
  CKpNetwork* s = nullptr;
  ASSERT_FALSE(pool.getSessionObject(s));
  pool.releaseSessionObject(s);
  ASSERT_GE(g_debugLines.size(), 2u);
  EXPECT_NE(g_debugLines.back().find("attached a session to [AppManager network access]"), std::string::npos);
  g_debugLines.clear();
  pool.setDebuggingLevel(0);
  pool.terminateAllSessions();
  EXPECT_TRUE(g_debugLines.empty());
}

TEST_F(PoolTest, RefusesUseBeforeInitialisation) {
  KpNetworkPool pool;
  CKpNetwork* s = nullptr;
  EXPECT_EQ(pool.getSessionObject(s).GetErrorCode(), kKpErrBadArgument);
  EXPECT_EQ(pool.initNetworkPool("", "h", "c", 600, 120, 0, 10, 0).GetErrorCode(), kKpErrBadArgument);
}

}  // namespace
