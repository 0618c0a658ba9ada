// Many threads, each making its own wrappers, against one server through the process pool.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/session/SessionFixture.h"

namespace {

class WrapperConcurrency : public SessionFixture {};

TEST_F(WrapperConcurrency, EightThreadsShareThePoolWithinItsLimit) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch) + "[EventManager]\nnDebugLevel = 1\n");
  constexpr int kThreads = 8, kExchanges = 2000;
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kExchanges; ++i) {
        uint64_t id = uint64_t(t) * 100000 + uint64_t(i);
        Result r = Lookup(id);
        if (r.sendStatus || r.receiveStatus || r.verify || r.name != "bs-" + std::to_string(id)) {
          ++failures;
        }
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
  KpNetworkPool* pool = AppMgrSessionPoolSingleton::currentFullPool();
  ASSERT_NE(pool, nullptr);
  EXPECT_LE(pool->stats().attached, 10u) << "no more sessions than the pool allows";
  EXPECT_EQ(pool->stats().lent, 0u) << "every session was returned";
  EXPECT_EQ(ch.Count(appmgr::msg::kBsLookup.requestId), uint64_t(kThreads) * kExchanges);
  EXPECT_EQ(ClientSessionWrapper::m_nTotalMessageCalls.load(), uint64_t(kThreads) * kExchanges);
}

}  // namespace
