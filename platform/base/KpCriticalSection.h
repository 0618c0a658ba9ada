// KpCriticalSection: the platform's mutex, and KpCriticalSectionLock, its scoped lock.
//
// Not recursive: a thread that locks a section it holds deadlocks (the debug build's
// std::mutex does not detect it). Clang's -Wthread-safety understands the annotations below;
// other compilers ignore them.
#pragma once

#include <mutex>

#if defined(__clang__)
#define KP_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define KP_THREAD_ANNOTATION(x)
#endif
#define KP_CAPABILITY(x) KP_THREAD_ANNOTATION(capability(x))
#define KP_SCOPED_CAPABILITY KP_THREAD_ANNOTATION(scoped_lockable)
#define KP_GUARDED_BY(x) KP_THREAD_ANNOTATION(guarded_by(x))
#define KP_PT_GUARDED_BY(x) KP_THREAD_ANNOTATION(pt_guarded_by(x))
#define KP_REQUIRES(...) KP_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define KP_ACQUIRE(...) KP_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define KP_RELEASE(...) KP_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define KP_EXCLUDES(...) KP_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

class KP_CAPABILITY("mutex") KpCriticalSection {
 public:
  KpCriticalSection() = default;
  KpCriticalSection(const KpCriticalSection&) = delete;
  KpCriticalSection& operator=(const KpCriticalSection&) = delete;

  void Lock() KP_ACQUIRE() { mutex_.lock(); }
  void Unlock() KP_RELEASE() { mutex_.unlock(); }
  bool TryLock() KP_THREAD_ANNOTATION(try_acquire_capability(true)) { return mutex_.try_lock(); }

  // For std::condition_variable waits on this section.
  std::mutex& native() { return mutex_; }

 private:
  std::mutex mutex_;
};

class KP_SCOPED_CAPABILITY KpCriticalSectionLock {
 public:
  explicit KpCriticalSectionLock(KpCriticalSection& cs) KP_ACQUIRE(cs) : cs_(cs) { cs_.Lock(); }
  explicit KpCriticalSectionLock(KpCriticalSection* cs) KP_ACQUIRE(cs) : cs_(*cs) { cs_.Lock(); }
  ~KpCriticalSectionLock() KP_RELEASE() { cs_.Unlock(); }
  KpCriticalSectionLock(const KpCriticalSectionLock&) = delete;
  KpCriticalSectionLock& operator=(const KpCriticalSectionLock&) = delete;

 private:
  KpCriticalSection& cs_;
};
