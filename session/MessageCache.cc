#include "session/MessageCache.h"

#include <cstring>
#include <ctime>
#include <new>

#include "platform/base/EvDebug.h"
#include "platform/info/KPPlatformInfo.h"
#include "platform/net/KpXdr.h"
#include "protocol/CacheClasses.h"
#include "session/ClientSessionWrapper.h"

CMessageCacheSingleton::Map CMessageCacheSingleton::m_gMessageCacheMap;
unsigned long CMessageCacheSingleton::m_nMessageCacheSize = 0;
unsigned long CMessageCacheSingleton::m_nMessagesInCache = 0;
std::atomic<unsigned long> CMessageCacheSingleton::m_nDisableMessageCacheRegistry{0};
std::atomic<unsigned long> CMessageCacheSingleton::m_nIsLaptop{0};
std::atomic<CMessageCacheSingleton*> CMessageCacheSingleton::m_pInstance{nullptr};
std::atomic<KpCriticalSection*> CMessageCacheSingleton::m_gpCriticalSection{nullptr};
const unsigned long CMessageCacheSingleton::m_nAppMgrMaxMessageNumber =
    appmgr::wire::kAppMgrMaxMessageNumber;
const unsigned long CMessageCacheSingleton::m_nSCHMaxMessageNumber =
    appmgr::wire::kSchedulerMaxMessageNumber;

namespace {

// Guards the creation of the instance and of m_gpCriticalSection.
KpCriticalSection g_creationLock;

long SystemNow() {
  return static_cast<long>(std::time(nullptr));
}
std::atomic<long (*)()> g_clock{SystemNow};

}  // namespace

bool IsCacheAllowedForThisProcess() {
  return true;
}

CMessageData::CMessageData(unsigned long msgId, const void* data, unsigned long length, long time)
    : m_nMsgId(msgId), m_nlength(length), m_tTime(time) {
  if (length > 0) {
    m_pData.reset(new unsigned char[length]);
    std::memcpy(m_pData.get(), data, length);
  }
}

CMessageData::CMessageData(const CMessageData& other)
    : CMessageData(other.m_nMsgId, other.m_pData.get(), other.m_nlength, other.m_tTime) {}

CMessageData& CMessageData::operator=(const CMessageData& other) {
  if (this != &other) {
    CMessageData copy(other);
    m_nMsgId = copy.m_nMsgId;
    m_nlength = copy.m_nlength;
    m_tTime = copy.m_tTime;
    m_pData = std::move(copy.m_pData);
  }
  return *this;
}

bool CCompareMessageData::operator()(const std::shared_ptr<CMessageData>& a,
                                     const std::shared_ptr<CMessageData>& b) const {
  // Ids and lengths first: most comparisons never touch the bytes.
  if (a->m_nMsgId != b->m_nMsgId) return a->m_nMsgId < b->m_nMsgId;
  if (a->m_nlength != b->m_nlength) return a->m_nlength < b->m_nlength;
  if (a->m_nlength == 0) return false;
  return std::memcmp(a->m_pData.get(), b->m_pData.get(), a->m_nlength) < 0;
}

void CMessageCacheSingleton::LockForFork() {
  g_creationLock.Lock();
  if (KpCriticalSection* cs = m_gpCriticalSection.load(std::memory_order_acquire)) cs->Lock();
}

void CMessageCacheSingleton::UnlockAfterFork() {
  // The section cannot have been made in between: the creation lock was held.
  if (KpCriticalSection* cs = m_gpCriticalSection.load(std::memory_order_acquire)) cs->Unlock();
  g_creationLock.Unlock();
}

void CMessageCacheSingleton::SetClockForTesting(long (*now)()) {
  g_clock = now ? now : SystemNow;
}

long CMessageCacheSingleton::Now() {
  return g_clock.load()();
}

CMessageCacheSingleton* CMessageCacheSingleton::Instance() {
  CMessageCacheSingleton* instance = m_pInstance.load(std::memory_order_acquire);
  if (instance && m_gpCriticalSection.load(std::memory_order_acquire)) return instance;

  EvEvent event("CMessageCacheSingleton::Instance");
  KpCriticalSectionLock lock(g_creationLock);
  if (!m_gpCriticalSection.load(std::memory_order_acquire)) {
    auto* cs = new (std::nothrow) KpCriticalSection();
    if (cs == nullptr) {
      event.Error("Warning allocation of CMessageCacheSingleton::m_gpCriticalSection failed.");
    } else {
      m_gpCriticalSection.store(cs, std::memory_order_release);
    }
  }
  if (m_gpCriticalSection.load(std::memory_order_acquire) &&
      !m_pInstance.load(std::memory_order_acquire)) {
    auto* created = new (std::nothrow) CMessageCacheSingleton();
    if (created == nullptr) {
      event.Error("Warning allocation of CMessageCacheSingleton failed.");
    } else {
      KPPlatformInfo info(KPPI_Focus::getFocus());
      unsigned long disable = 0, laptop = 0;
      info.getNumber("EventManager", "nDisableAppMessageCache", &disable);
      if (disable == 0 && !IsCacheAllowedForThisProcess()) disable = 1;
      info.getNumber("FileSystemAgent", "nLaptopAgent", &laptop);
      m_nDisableMessageCacheRegistry = disable;
      m_nIsLaptop = laptop;
      m_pInstance.store(created, std::memory_order_release);
    }
  }
  instance = m_pInstance.load(std::memory_order_acquire);
  if (instance && m_gpCriticalSection.load(std::memory_order_acquire)) {
    event.Debug(4, "CMessageCacheSingleton Initialized.");
  }
  return instance;
}

void CMessageCacheSingleton::CheckMessageType(unsigned long msgId, bool& isCritical,
                                              bool& isNoCache) {
  static constexpr const char* kLabel = "CMessageCacheSingleton::CheckMessageType";
  unsigned long subsystem = msgId & appmgr::wire::kSubsystemMask;
  unsigned long bound = 0;
  if (subsystem == appmgr::wire::kAppMgrSubsystem) {
    bound = m_nAppMgrMaxMessageNumber;
  } else if (subsystem == appmgr::wire::kSchedulerSubsystem) {
    bound = m_nSCHMaxMessageNumber;
  } else if (EvLog::On(4)) {
    EvEventWrapper::DebugLvl(kLabel, 4, "Message ID [%d(%s)] from unknown subsystem [%d].",
                             static_cast<int>(msgId), KPS_PRIM_STRING(msgId),
                             static_cast<int>(subsystem));
  }
  if (msgId <= bound) {
    isCritical = appmgr::wire::IsResetCacheMessage(static_cast<uint32_t>(msgId));
    isNoCache = isCritical || appmgr::wire::IsNoCacheMessage(static_cast<uint32_t>(msgId));
    return;
  }
  // A message this build does not know is treated as critical: its answer empties the cache,
  // so a newer server message can never be served stale.
  isCritical = true;
  isNoCache = true;
  if (EvLog::On(4)) {
    EvEventWrapper::DebugLvl(kLabel, 4,
                             "ATTENTION! Message ID [%d(%s)] must be added to "
                             "\\trunkqx\\Source\\Controlhoster\\AppMgr\\Net\\CCSession. "
                             "CMessageCacheSingleton::m_nAppMgrMaxMessageNumber or  "
                             "m_nSCHMaxMessageNumber must be updated!",
                             static_cast<int>(msgId), KPS_PRIM_STRING(msgId));
  }
}

bool CMessageCacheSingleton::InsertMessage(std::shared_ptr<CMessageData>& request,
                                           std::shared_ptr<CMessageData>& response) {
  KpCriticalSectionLock lock(m_gpCriticalSection.load(std::memory_order_acquire));
  bool inserted = m_gMessageCacheMap.emplace(request, response).second;
  if (inserted) {
    // A fixed 64 bytes per entry stands for the map's own bookkeeping.
    m_nMessageCacheSize += request->m_nlength + response->m_nlength + 64;
    m_nMessagesInCache = m_gMessageCacheMap.size();
  }
  return inserted;
}

bool CMessageCacheSingleton::CheckMessage(std::shared_ptr<CMessageData>& request,
                                          std::shared_ptr<CMessageData>& responseOut) {
  KpCriticalSectionLock lock(m_gpCriticalSection.load(std::memory_order_acquire));
  auto it = m_gMessageCacheMap.find(request);
  if (it == m_gMessageCacheMap.end()) return false;
  responseOut = it->second;
  if (KPPI_Focus::AmIAService()) {
    unsigned long minutes = ClientSessionWrapper::m_gnServiceCacheExpirationTime.load();
    long storedAt = it->first->m_tTime;
    long now = Now();
    if (now - storedAt > static_cast<long>(minutes * 60)) {
      if (EvLog::On(4)) {
        char when[81] = {};
        time_t t = static_cast<time_t>(storedAt);
        struct tm local {};
        localtime_r(&t, &local);
        strftime(when, sizeof when - 1, "%m/%d %X", &local);
        EvEventWrapper::DebugLvl(
            "CMessageCacheSingleton::CheckMessage", 4,
            "Clearing message (msgId=%d(%s) populated at %s) in cache because of "
            "expiration time is [%d] minutes",
            static_cast<int>(it->first->m_nMsgId), KPS_PRIM_STRING(it->first->m_nMsgId), when,
            static_cast<int>(minutes));
      }
      // The counters are corrected only by ClearMessageCache.
      m_gMessageCacheMap.erase(it);
      return false;
    }
  }
  return true;
}

void CMessageCacheSingleton::ClearMessageCache() {
  static constexpr const char* kLabel = "CMessageCacheSingleton::ClearMessageCache";
  KpCriticalSection* cs = m_gpCriticalSection.load(std::memory_order_acquire);
  if (EvLog::On(4)) {
    unsigned long count, size;
    {
      KpCriticalSectionLock lock(cs);
      count = m_nMessagesInCache;
      size = m_nMessageCacheSize;
    }
    EvEventWrapper::DebugLvl(kLabel, 4, "Messages in the cache [%d], total cache size [%d]Kb.",
                             static_cast<int>(count), static_cast<int>(size / 1024));
  }
  {
    KpCriticalSectionLock lock(cs);
    m_gMessageCacheMap.clear();
    m_nMessageCacheSize = 0;
    m_nMessagesInCache = 0;
  }
  EvEventWrapper::DebugLvl(kLabel, 8, "Message cache cleaned.");
}

unsigned long CMessageCacheSingleton::GetMessageCacheSize() {
  KpCriticalSectionLock lock(m_gpCriticalSection.load(std::memory_order_acquire));
  return m_nMessageCacheSize;
}

unsigned long CMessageCacheSingleton::GetMessageNumberInCache() {
  KpCriticalSectionLock lock(m_gpCriticalSection.load(std::memory_order_acquire));
  return m_nMessagesInCache;
}

void CMessageCacheSingleton::ResetForTesting() {
  KpCriticalSectionLock creation(g_creationLock);
  KpCriticalSection* cs = m_gpCriticalSection.load();
  if (cs) {
    KpCriticalSectionLock lock(cs);
    m_gMessageCacheMap.clear();
    m_nMessageCacheSize = m_nMessagesInCache = 0;
  }
  delete m_pInstance.exchange(nullptr);
  m_nDisableMessageCacheRegistry = m_nIsLaptop = 0;
  g_clock = SystemNow;
}
