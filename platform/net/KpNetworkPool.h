// KpNetworkPool: connected sessions to one service, lent to one borrower at a time.
//
// initNetworkPool(service, host, client, ioTimeout, attachTimeout, initialSessions,
// maxSessions, idleLimit) fixes what every session connects to and how:
//   ioTimeout        seconds a send or receive of a pooled session may wait when the caller
//                    passes -1 (the default I/O time-out of its sessions)
//   attachTimeout    seconds an attach may take; also the longest a borrower waits for a free
//                    session when all are lent out
//   initialSessions  sessions attached by initNetworkPool itself (0: every session is attached
//                    on first demand, so initialising never touches the network)
//   maxSessions      most sessions the pool holds, lent and idle together (0 means 1)
//   idleLimit        seconds an idle session may wait before it is closed instead of lent out
//                    (0: no limit)
// Every hand-out first checks the session it picks, without a system call: one that is broken,
// holds bytes nobody asked for, predates terminateAllSessions() or idled past the limit is
// closed. Only a session that has sat idle longer than the check threshold ([Network]
// nSessionCheckAfterIdleMs, default 1000 ms) has its socket asked whether the peer is still
// there (one system call), and is replaced by a fresh attach when the peer has closed (a server
// restart). A session in steady use is lent without that question: a request written into a
// connection that the server closed in the meantime is detected by the receive
// (CKpNetwork::RequestNeverReachedPeer) and sent again by the caller. Giving a session back costs
// no system call. A session given back broken is closed, never lent again. In a child process
// after fork() the pool forgets the parent's sessions without writing a byte on them.
//
// Thread-safety: every method may be called from any thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "platform/base/KpCriticalSection.h"
#include "platform/net/CKpNetwork.h"

class KpNetworkPool;
typedef void (*KpNetworkPoolDebugCallback)(KpNetworkPool* pool, const char* text);

class KpNetworkPool {
 public:
  KpNetworkPool();
  virtual ~KpNetworkPool();
  KpNetworkPool(const KpNetworkPool&) = delete;
  KpNetworkPool& operator=(const KpNetworkPool&) = delete;

  // Lines at or below this level go to the debug callback (0: none).
  void setDebuggingLevel(int level);
  void setDebugCallback(KpNetworkPoolDebugCallback callback);

  CLmError initNetworkPool(const char* service, std::string host, std::string client,
                           unsigned long ioTimeout, unsigned long attachTimeout,
                           unsigned long initialSessions, unsigned long maxSessions,
                           unsigned long idleLimit);

  // Lends a connected session; the borrower gives it back with releaseSessionObject.
  CLmError getSessionObject(CKpNetwork*& session);
  CLmError releaseSessionObject(CKpNetwork* session);

  // Closes every idle session; sessions out on loan are closed when they come back.
  void terminateAllSessions();
  // Closes idle sessions whose peer has gone (asking every one) or that idled past the limit.
  void checkConnections();


  struct Stats {
    unsigned long open = 0;       // sessions held, lent and idle
    unsigned long lent = 0;
    unsigned long attached = 0;   // attaches made, ever
    unsigned long replaced = 0;   // stale or broken sessions closed
    unsigned long waits = 0;      // borrowers that had to wait for a free session
  };
  Stats stats() const;

  // Around fork(): the pool's lock taken before it, given back after it (parent and child).
  void LockForFork() KP_ACQUIRE(mutex_) { mutex_.Lock(); }
  void UnlockAfterFork() KP_RELEASE(mutex_) { mutex_.Unlock(); }
  const std::string& host() const { return host_; }

 private:
  struct Entry {
    std::unique_ptr<CKpNetwork> session;
    bool lent = false;
    uint64_t generation = 0;  // terminateAllSessions() generation at attach
    // Read from the kernel's coarse monotonic clock: cheap enough for every lend and return.
    std::chrono::steady_clock::time_point idleSince;
  };

  void Debug(int level, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void ForgetInheritedLocked() KP_REQUIRES(mutex_);
  // Fit to be lent, as far as can be told without a system call.
  bool FreshLocked(const Entry& e) const KP_REQUIRES(mutex_);
  void CountLocked() KP_REQUIRES(mutex_);
  CLmError Attach(CKpNetwork& session);

  mutable KpCriticalSection mutex_;
  std::condition_variable cv_;
  std::vector<Entry> entries_ KP_GUARDED_BY(mutex_);
  unsigned long reserved_ KP_GUARDED_BY(mutex_) = 0;  // slots being attached outside the lock
  Stats stats_ KP_GUARDED_BY(mutex_);
  uint64_t generation_ KP_GUARDED_BY(mutex_) = 0;
  uint64_t forkGeneration_ KP_GUARDED_BY(mutex_) = 0;
  bool initialised_ = false;

  std::string service_, host_, client_;
  unsigned long ioTimeout_ = 600, attachTimeout_ = 120, maxSessions_ = 10, idleLimit_ = 0;
  std::chrono::milliseconds checkAfterIdle_{1000};
  int debugLevel_ = 0;
  KpNetworkPoolDebugCallback callback_ = nullptr;
};
