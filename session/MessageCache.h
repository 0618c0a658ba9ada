// The client-side message cache: answers to repeated look-ups, kept for the process.
//
// Key: the request in its encoded form with the sender's process and thread id blanked, so the
// same look-up from any thread (or process, for entries the server prepared) finds the same
// entry. Value: the encoded response. Requests that change server state are critical: their
// answer empties the cache. A short list of requests is never cached. In service processes
// entries expire after ClientSessionWrapper::m_gnServiceCacheExpirationTime minutes; elsewhere
// they live until the process ends or the cache is emptied.
//
// Entries are shared (std::shared_ptr): the map and a wrapper may hold the same one.
//
// Thread-safety: the map and the counters are guarded by *m_gpCriticalSection. Instance() makes
// the singleton under a creation lock and is lock-free once it exists.
#pragma once

#include <atomic>
#include <map>
#include <memory>

#include "platform/base/KpCriticalSection.h"

// One encoded message and when it was stored.
class CMessageData {
 public:
  // Copies `length` bytes (none, and a null m_pData, when length is 0). `time` is seconds since
  // the epoch, 0 when not stamped.
  CMessageData(unsigned long msgId, const void* data, unsigned long length, long time);
  CMessageData(const CMessageData& other);
  CMessageData& operator=(const CMessageData& other);
  ~CMessageData() = default;

  unsigned long m_nMsgId;
  unsigned long m_nlength;
  long m_tTime;
  std::unique_ptr<unsigned char[]> m_pData;
};

// The order of keys: by id, then length, then bytes. The time stamp is not part of the key.
struct CCompareMessageData {
  bool operator()(const std::shared_ptr<CMessageData>& a, const std::shared_ptr<CMessageData>& b) const;
};

class CMessageCacheSingleton {
 public:
  using Map = std::map<std::shared_ptr<CMessageData>, std::shared_ptr<CMessageData>, CCompareMessageData>;

  // The one instance, made on first use (reading "nDisableAppMessageCache" and "nLaptopAgent").
  static CMessageCacheSingleton* Instance();
  // Around fork(): the cache's locks taken before it, given back after it (parent and child).
  static void LockForFork();
  static void UnlockAfterFork();

  void CheckMessageType(unsigned long msgId, bool& isCritical, bool& isNoCache);
  // Inserts the pair unless the key is there already; true when inserted.
  bool InsertMessage(std::shared_ptr<CMessageData>& request, std::shared_ptr<CMessageData>& response);
  // True when a live entry exists for the key; its response goes to responseOut. In a service
  // process an expired entry is erased instead, and the answer is false.
  bool CheckMessage(std::shared_ptr<CMessageData>& request, std::shared_ptr<CMessageData>& responseOut);
  void ClearMessageCache();
  unsigned long GetMessageCacheSize();     // bytes accounted: both lengths + 64 per entry
  unsigned long GetMessageNumberInCache();  // entries, as of the last insertion or clearing

  static Map m_gMessageCacheMap;
  static unsigned long m_nMessageCacheSize;
  static unsigned long m_nMessagesInCache;
  // Written once by Instance() (before the instance is published), read by any thread.
  static std::atomic<unsigned long> m_nDisableMessageCacheRegistry;  // "nDisableAppMessageCache"
  static std::atomic<unsigned long> m_nIsLaptop;                     // "nLaptopAgent"
  static std::atomic<CMessageCacheSingleton*> m_pInstance;
  static std::atomic<KpCriticalSection*> m_gpCriticalSection;
  static const unsigned long m_nAppMgrMaxMessageNumber;
  static const unsigned long m_nSCHMaxMessageNumber;

  // Tests: the time source (seconds since the epoch) and a way to start again from nothing
  // (the next Instance() reads the settings anew).
  static void SetClockForTesting(long (*now)());
  static long Now();
  static void ResetForTesting();

 private:
  CMessageCacheSingleton() = default;
};

// Whether this process may use the cache at all; always true in this build.
bool IsCacheAllowedForThisProcess();
