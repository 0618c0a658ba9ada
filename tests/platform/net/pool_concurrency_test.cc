// Many threads borrowing from one pool at once: no more sessions than allowed, every session
// returned, every exchange answered with its own reply.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/net/KpNetworkPool.h"
#include "protocol/Messages.h"
#include "tests/support/ScriptServer.h"
#include "tests/support/TestSettings.h"

namespace {

using appmgr::msg::kBsLookup;

TEST(PoolConcurrency, EightThreadsShareFourSessions) {
  TestSettings settings("", 1);
  ScriptServer server;
  server.On(kBsLookup, [](const GenericLookupReq4& req, GenericLookupResp4& resp,
                          appmgr::server::Exchange&) { resp.value = int64_t(req.id) * 3; });
  KpNetworkPool pool;
  ASSERT_FALSE(pool.initNetworkPool("AppManager network access", server.connectString(), "c", 600,
                                    30, 0, 4, 0));
  constexpr int kThreads = 8, kExchanges = 300;
  std::atomic<int> failures{0};
  std::atomic<unsigned long> mostLent{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kExchanges; ++i) {
        CKpNetwork* s = nullptr;
        if (pool.getSessionObject(s)) {
          ++failures;
          continue;
        }
        unsigned long lent = pool.stats().lent;
        unsigned long seen = mostLent.load();
        while (lent > seen && !mostLent.compare_exchange_weak(seen, lent)) {}
        GenericLookupReq4 req;
        req.hdr.version = 2;
        req.id = uint64_t(t) * 100000 + i;
        GenericLookupResp4 resp;
        kpsDatabuf_v2 out, in;
        out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
        in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
        bool to = false;
        unsigned long id = kBsLookup.responseId;
        if (s->SendXDRMessage(kBsLookup.requestId, &out, 0, 10, to) ||
            s->ReceiveXDRMessage(&id, &in, nullptr, 0, 10, to) || resp.value != int64_t(req.id) * 3) {
          ++failures;
        }
        s->FreeReceivedMessage(id, &in);
        pool.releaseSessionObject(s);
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
  EXPECT_LE(mostLent.load(), 4u);
  EXPECT_LE(pool.stats().attached, 4u);
  EXPECT_EQ(pool.stats().lent, 0u);
  EXPECT_EQ(server.Count(kBsLookup.requestId), uint64_t(kThreads * kExchanges));
}

}  // namespace
