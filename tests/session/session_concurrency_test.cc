// Many threads, each making its own wrappers, against one server: the pool they share and the
// message cache they share.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <thread>
#include <vector>

#include "platform/base/KpSettings.h"
#include "tests/session/SessionFixture.h"

namespace {

using appmgr::msg::kBsLookup;
using appmgr::msg::kBsUpdate;

class WrapperConcurrency : public SessionFixture {};

TEST_F(WrapperConcurrency, EightThreadsShareThePoolAndCountEveryCall) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch) + "[EventManager]\nnDebugLevel = 1\n");
  constexpr int kThreads = 8, kExchanges = 2000;
  std::atomic<int> failures{0};
  std::latch start(kThreads);  // the first calls all at once: they race to make the pool
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      start.arrive_and_wait();
      for (int i = 0; i < kExchanges; ++i) {
        uint64_t id = uint64_t(t) * 100000 + uint64_t(i);
        Result r = Lookup(id);
        failures += r.sendStatus || r.receiveStatus || r.verify || r.name != "bs-" + std::to_string(id);
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
  std::string made = "serverName [" + ch.host() + "], clientName [ch01].";
  EXPECT_EQ(Logged("AppMgrSessionPoolSingleton::getSessionPoolInstance", 1, made), 1u) << "one pool";
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool()->stats().lent, 0u) << "all returned";
  EXPECT_EQ(ch.Count(kBsLookup.requestId), uint64_t(kThreads) * kExchanges);
  EXPECT_EQ(ClientSessionWrapper::m_nTotalMessageCalls.load(), uint64_t(kThreads) * kExchanges);
}

class CacheConcurrency : public SessionFixture {
 protected:
  CacheConcurrency() { useCache_ = true; }
};

// In a laptop service every wrapper settles the process's caching as it is made. Threads making
// wrappers must never let another thread's critical answer skip the clearing: the look-up after
// each update reaches the server. Such a moment would be short, so the settings are re-read all
// along (a wrapper reading them waits) and a watcher samples the switch: never "off".
TEST_F(CacheConcurrency, WrappersMadeElsewhereNeverLetAnUpdateLeaveAStaleAnswer) {
  ScriptServer ch;
  std::atomic<uint64_t> servedOne{0};
  ch.On(kBsLookup, [&](const GenericLookupReq4& req, GenericLookupResp4& resp, appmgr::server::Exchange& x) {
    if (req.id == 1) ++servedOne;
    resp.name = x.Text("bs-" + std::to_string(req.id));
  });
  ch.Answer(kBsUpdate);
  KPPI_Focus::setServiceProcess(true);
  Settings(ControlhostAt(ch) + "[FileSystemAgent]\nnLaptopAgent = 1\n[EventManager]\nnDebugLevel = 1\n");
  std::atomic<bool> stop{false};
  std::atomic<int> failures{0};
  std::atomic<uint64_t> seenOff{0};
  std::vector<std::thread> makers;
  makers.emplace_back([&] {
    while (!stop) seenOff += ClientSessionWrapper::m_gbUseCacheMap.load() ? 0 : 1;
  });
  makers.emplace_back([&] {
    while (!stop) KpSettings::Instance().Reload();
  });
  for (int t = 0; t < 2; ++t) {
    makers.emplace_back([&] {
      auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
      for (int i = 0; !stop && std::chrono::steady_clock::now() < deadline; ++i) {
        if (i % 16 == 0) {
          failures += Lookup(2).name == "bs-2" ? 0 : 1;
        } else {
          ClientSessionWrapper w(0x1a000000, false);
        }
      }
    });
  }
  int stale = 0;
  for (int round = 0; round < 3000; ++round) {
    failures += Lookup(1).name == "bs-1" ? 0 : 1;
    failures += Update(1) == 0 ? 0 : 1;
    uint64_t before = servedOne;
    failures += Lookup(1).name == "bs-1" ? 0 : 1;
    stale += servedOne == before ? 1 : 0;
  }
  stop = true;
  for (auto& m : makers) m.join();
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(stale, 0) << "look-ups answered from an entry an update should have cleared";
  EXPECT_EQ(seenOff.load(), 0u) << "another thread saw the cache switched off for a moment";
  EXPECT_GT(ClientSessionWrapper::m_nSkippedMessageCalls.load(), 0u) << "the cache did serve answers";
}

}  // namespace
