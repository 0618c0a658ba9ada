// Four threads mixing look-ups and critical requests: no thread is ever answered from an entry
// stored before the last critical answer it saw.
//
// Every look-up answer carries a serial number unique to the server's response. An observer,
// called under the cache's lock, records each insertion with the number of clears before it.
// A thread notes that number after each of its critical answers; any later answer it gets that
// sits in the cache must have been stored after that clear.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/net/XdrCodec.h"
#include "session/MessageCache.h"
#include "tests/session/SessionFixture.h"

namespace {

using appmgr::msg::kBsLookup;
using appmgr::msg::kBsUpdate;

class CacheConcurrency : public SessionFixture {
 protected:
  CacheConcurrency() { useCache_ = true; }
};

TEST_F(CacheConcurrency, NoThreadSeesAnAnswerStoredBeforeItsLastCriticalAnswer) {
  ScriptServer ch;
  std::atomic<int64_t> serial{0};
  ch.On(kBsLookup, [&serial](const GenericLookupReq4& req, GenericLookupResp4& resp, appmgr::server::Exchange& x) {
    resp.value = ++serial;
    resp.name = x.Text("bs-" + std::to_string(req.id));
  });
  ch.Answer(kBsUpdate);
  Settings(ControlhostAt(ch) + "[EventManager]\nnDebugLevel = 1\n");

  std::mutex mutex;
  uint64_t clears = 0;                      // guarded by mutex
  std::map<int64_t, uint64_t> storedAfter;  // serial -> clears before its insertion
  CMessageCacheSingleton::SetObserverForTesting(
      [&](CMessageCacheSingleton::Event event, const CMessageData*, const CMessageData* response) {
        std::lock_guard lock(mutex);
        if (event == CMessageCacheSingleton::Event::kCleared) {
          ++clears;
          return;
        }
        GenericLookupResp4 r;
        appmgr::wire::Arena arena;
        if (response->m_nMsgId == kBsLookup.responseId &&
            !appmgr::wire::DecodeRecord(response->m_pData.get(), response->m_nlength, r, arena)) {
          storedAfter[r.value] = clears;
        }
      });

  constexpr int kThreads = 4, kRounds = 400;
  std::atomic<int> violations{0}, failures{0};
  std::atomic<uint64_t> hitsSeen{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      uint64_t lastClearSeen = 0;
      for (int i = 0; i < kRounds; ++i) {
        if ((i + t) % 5 == 0) {
          GenericUpdateReq2 req;
          GenericResp resp;
          NetMessage msg;
          std::string err;
          ClientSessionWrapper w(0x1a000000, false);
          msg.initRequestHeader(req.hdr);
          req.id = uint64_t(i % 3);
          if (w.send(kBsUpdate.requestId, &req, sizeof req, err) ||
              w.receive(kBsUpdate.responseId, &resp, sizeof resp, err)) {
            ++failures;
          }
          std::lock_guard lock(mutex);
          lastClearSeen = clears;  // the clear this answer made is counted by now
          continue;
        }
        Result r = Lookup(uint64_t(i % 3));
        if (r.sendStatus || r.receiveStatus || r.verify) {
          ++failures;
          continue;
        }
        std::lock_guard lock(mutex);
        auto it = storedAfter.find(r.resp.value);
        if (it != storedAfter.end()) {
          ++hitsSeen;
          if (it->second < lastClearSeen) ++violations;
        }
      }
    });
  }
  for (auto& th : threads) th.join();
  CMessageCacheSingleton::SetObserverForTesting(nullptr);
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(violations.load(), 0);
  EXPECT_GT(ClientSessionWrapper::m_nSkippedMessageCalls.load(), 0u) << "the cache did serve answers";
  EXPECT_GT(hitsSeen.load(), 0u);
}

// In a service on a laptop every wrapper settles the process's caching as it is made. Threads
// that only make wrappers must never let the critical answer of another thread skip the
// clearing: the look-up after each update reaches the server.
TEST_F(CacheConcurrency, WrappersMadeElsewhereNeverLetAnUpdateLeaveAStaleAnswer) {
  ScriptServer ch;
  ScriptLookup(ch);
  ch.Answer(kBsUpdate);
  KPPI_Focus::setServiceProcess(true);
  Settings(ControlhostAt(ch) + "[FileSystemAgent]\nnLaptopAgent = 1\n[EventManager]\nnDebugLevel = 1\n");
  std::atomic<bool> stop{false};
  std::vector<std::thread> makers;
  for (int t = 0; t < 2; ++t) {
    makers.emplace_back([&] {
      auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
      while (!stop && std::chrono::steady_clock::now() < deadline) ClientSessionWrapper w(0x1a000000, false);
    });
  }
  int stale = 0, failures = 0;
  for (int round = 0; round < 3000; ++round) {
    failures += Lookup(1).name == "bs-1" ? 0 : 1;
    {
      GenericUpdateReq2 req;
      GenericResp resp;
      NetMessage msg;
      std::string err;
      ClientSessionWrapper w(0x1a000000, false);
      msg.initRequestHeader(req.hdr);
      if (w.send(kBsUpdate.requestId, &req, sizeof req, err) ||
          w.receive(kBsUpdate.responseId, &resp, sizeof resp, err)) {
        ++failures;
      }
    }
    uint64_t before = ch.Count(kBsLookup.requestId);
    failures += Lookup(1).name == "bs-1" ? 0 : 1;
    stale += ch.Count(kBsLookup.requestId) == before ? 1 : 0;
  }
  stop = true;
  for (auto& m : makers) m.join();
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(stale, 0) << "look-ups answered from an entry an update should have cleared";
}

}  // namespace
