#include "platform/net/KpNetworkPool.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>

#include "platform/base/KpSettings.h"

#include "platform/base/KpSettings.h"

using Clock = std::chrono::steady_clock;

namespace {

// When a session went idle, and how long it has been: read on every lend and every return, so
// from the kernel's coarse monotonic clock (a few milliseconds of resolution, for limits of a
// second or so; a sixth of the cost of the precise clock). Compared only with itself.
Clock::time_point IdleNow() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &ts);
  return Clock::time_point(std::chrono::seconds(ts.tv_sec) + std::chrono::nanoseconds(ts.tv_nsec));
}

}  // namespace

KpNetworkPool::KpNetworkPool() { forkGeneration_ = KpForkGeneration(); }

KpNetworkPool::~KpNetworkPool() {
  KpCriticalSectionLock lock(mutex_);
  ForgetInheritedLocked();
  for (Entry& e : entries_) {
    bool timedOut = false;
    if (!e.lent) e.session->Disconnect(5, timedOut);
  }
  entries_.clear();
}

void KpNetworkPool::setDebuggingLevel(int level) { debugLevel_ = level; }
void KpNetworkPool::setDebugCallback(KpNetworkPoolDebugCallback callback) { callback_ = callback; }

void KpNetworkPool::Debug(int level, const char* format, ...) {
  if (callback_ == nullptr || level > debugLevel_) return;
  char buf[1024];
  va_list ap;
  va_start(ap, format);
  vsnprintf(buf, sizeof buf, format, ap);
  va_end(ap);
  callback_(this, buf);
}

CLmError KpNetworkPool::initNetworkPool(const char* service, std::string host, std::string client,
                                        unsigned long ioTimeout, unsigned long attachTimeout,
                                        unsigned long initialSessions, unsigned long maxSessions,
                                        unsigned long idleLimit) {
  if (service == nullptr || *service == '\0' || host.empty()) {
    return CLmError(kKpErrBadArgument, "initNetworkPool: service and host are required");
  }
  service_ = service;
  host_ = std::move(host);
  client_ = std::move(client);
  ioTimeout_ = ioTimeout ? ioTimeout : 600;
  attachTimeout_ = attachTimeout ? attachTimeout : 120;
  // The settings may only shorten what the caller asked for: [Network] nIoTimeoutSeconds bounds
  // the I/O of pooled sessions as it does that of private ones, nAttachTimeoutSeconds every
  // attach and the wait for a free session.
  unsigned long cap = 0;
  if (KpSettings::Instance().GetNumber("Network", "nIoTimeoutSeconds", &cap) && cap > 0) {
    ioTimeout_ = std::min(ioTimeout_, cap);
  }
  if (KpSettings::Instance().GetNumber("Network", "nAttachTimeoutSeconds", &cap) && cap > 0) {
    attachTimeout_ = std::min(attachTimeout_, cap);
  }
  maxSessions_ = std::max<unsigned long>(maxSessions, 1);
  idleLimit_ = idleLimit;
  unsigned long checkMs = 1000;
  KpSettings::Instance().GetNumber("Network", "nSessionCheckAfterIdleMs", &checkMs);
  checkAfterIdle_ = std::chrono::milliseconds(checkMs);
  initialised_ = true;
  Debug(3, "pool for [%s] at [%s] as [%s]: io %lus, attach %lus, at most %lu sessions",
        service_.c_str(), host_.c_str(), client_.c_str(), ioTimeout_, attachTimeout_, maxSessions_);
  unsigned long ahead = std::min(initialSessions, maxSessions_);
  for (unsigned long i = 0; i < ahead; ++i) {
    auto session = std::make_unique<CKpNetwork>();
    if (CLmError e = Attach(*session)) return e;
    KpCriticalSectionLock lock(mutex_);
    entries_.push_back({std::move(session), false, generation_, IdleNow()});
    CountLocked();
  }
  return {};
}

CLmError KpNetworkPool::Attach(CKpNetwork& session) {
  session.SetDefaultTimeout(static_cast<int>(ioTimeout_));
  bool timedOut = false;
  CLmError e = session.Attach_RemoteService(host_, service_, client_,
                                            static_cast<int>(attachTimeout_), timedOut);
  {
    KpCriticalSectionLock lock(mutex_);
    if (!e) ++stats_.attached;
  }
  if (e) {
    Debug(1, "attach to [%s] at [%s] failed: %s", service_.c_str(), host_.c_str(), e.AsString().c_str());
  } else {
    Debug(5, "attached a session to [%s] at [%s]", service_.c_str(), host_.c_str());
  }
  return e;
}

void KpNetworkPool::ForgetInheritedLocked() {
  if (forkGeneration_ == KpForkGeneration()) return;
  // A child process: the parent still owns these connections. Closing our descriptors is all
  // we may do; CKpNetwork itself refuses to write on them.
  forkGeneration_ = KpForkGeneration();
  entries_.clear();  // destroying a session only closes its descriptor
  reserved_ = 0;
  CountLocked();
}

bool KpNetworkPool::FreshLocked(const Entry& e) const {
  if (e.generation != generation_) return false;
  if (idleLimit_ && IdleNow() - e.idleSince > std::chrono::seconds(idleLimit_)) return false;
  return e.session->IsAttached();
}

CLmError KpNetworkPool::getSessionObject(CKpNetwork*& session) {
  session = nullptr;
  if (!initialised_) return CLmError(kKpErrBadArgument, "the pool was not initialised");
  std::unique_lock<std::mutex> lock(mutex_.native());
  ForgetInheritedLocked();
  Clock::time_point deadline{};  // set when a borrower first has to wait
  bool waited = false;
  for (;;) {
    // The most recently returned idle session first: it is the likeliest to be alive.
    Entry* best = nullptr;
    for (size_t i = 0; i < entries_.size();) {
      Entry& e = entries_[i];
      if (e.lent) {
        ++i;
        continue;
      }
      if (!FreshLocked(e)) {
        Debug(4, "closing a stale session to [%s]", host_.c_str());
        bool timedOut = false;
        e.session->Disconnect(1, timedOut);
        entries_.erase(entries_.begin() + static_cast<long>(i));
        ++stats_.replaced;
        continue;
      }
      if (best == nullptr || e.idleSince > best->idleSince) best = &e;
      ++i;
    }
    // Only the session about to be lent is asked, and only after a long enough rest: a peer
    // that closed while it sat idle (a server restart) is found here, not by the caller.
    if (best && IdleNow() - best->idleSince > checkAfterIdle_ && !best->session->IsUsable()) {
      Debug(4, "closing a session to [%s] whose peer has gone", host_.c_str());
      bool timedOut = false;
      best->session->Disconnect(1, timedOut);
      entries_.erase(entries_.begin() + (best - entries_.data()));
      ++stats_.replaced;
      continue;
    }
    if (best) {
      best->lent = true;
      session = best->session.get();
      CountLocked();
      return {};
    }
    if (entries_.size() + reserved_ < maxSessions_) break;
    if (!waited) {
      ++stats_.waits;
      waited = true;
      deadline = Clock::now() + std::chrono::seconds(attachTimeout_);
    }
    if (cv_.wait_until(lock, deadline) == std::cv_status::timeout) {
      return CLmError::Format(kKpErrLimit, "all %lu sessions to %s are in use", maxSessions_,
                              host_.c_str());
    }
  }
  // Room for one more: attach it outside the lock so other borrowers are not held up.
  ++reserved_;
  uint64_t generation = generation_;
  lock.unlock();

  auto fresh = std::make_unique<CKpNetwork>();
  CLmError e = Attach(*fresh);

  lock.lock();
  --reserved_;
  if (e) {
    cv_.notify_one();
    return e;
  }
  session = fresh.get();
  entries_.push_back({std::move(fresh), true, generation, IdleNow()});
  CountLocked();
  return {};
}

CLmError KpNetworkPool::releaseSessionObject(CKpNetwork* session) {
  if (session == nullptr) return CLmError(kKpErrBadArgument, "releaseSessionObject: null session");
  KpCriticalSectionLock lock(mutex_);
  ForgetInheritedLocked();
  auto it = std::find_if(entries_.begin(), entries_.end(),
                         [&](const Entry& e) { return e.session.get() == session; });
  if (it == entries_.end() || !it->lent) {
    return CLmError(kKpErrBadArgument, "releaseSessionObject: the session is not lent from this pool");
  }
  it->lent = false;
  it->idleSince = IdleNow();
  // A session that failed, or one lent before terminateAllSessions(), is not lent again.
  if (session->IsBroken() || !session->IsConnected() || it->generation != generation_) {
    bool timedOut = false;
    session->Disconnect(1, timedOut);
    entries_.erase(it);
    ++stats_.replaced;
  }
  CountLocked();
  cv_.notify_one();
  return {};
}

void KpNetworkPool::terminateAllSessions() {
  KpCriticalSectionLock lock(mutex_);
  ForgetInheritedLocked();
  ++generation_;
  for (auto it = entries_.begin(); it != entries_.end();) {
    if (it->lent) {
      ++it;
      continue;
    }
    bool timedOut = false;
    it->session->Disconnect(5, timedOut);
    it = entries_.erase(it);
  }
  CountLocked();
  Debug(3, "terminated the idle sessions to [%s]", host_.c_str());
  cv_.notify_all();
}

void KpNetworkPool::checkConnections() {
  KpCriticalSectionLock lock(mutex_);
  ForgetInheritedLocked();
  for (auto it = entries_.begin(); it != entries_.end();) {
    if (!it->lent && (!FreshLocked(*it) || !it->session->IsUsable())) {
      bool timedOut = false;
      it->session->Disconnect(1, timedOut);
      it = entries_.erase(it);
      ++stats_.replaced;
    } else {
      ++it;
    }
  }
  CountLocked();
  cv_.notify_all();
}

void KpNetworkPool::CountLocked() {
  stats_.open = entries_.size();
  stats_.lent = static_cast<unsigned long>(
      std::count_if(entries_.begin(), entries_.end(), [](const Entry& e) { return e.lent; }));
}

KpNetworkPool::Stats KpNetworkPool::stats() const {
  KpCriticalSectionLock lock(mutex_);
  return stats_;
}
