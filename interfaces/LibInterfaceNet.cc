// The library's exported functions. Everything else of libappmgrnet.so is hidden (see
// exports.map).
#include <memory>
#include <string>

#include "appmgr/AppMgrNet.h"
#include "interfaces/BSInterfaceNet.h"
#include "interfaces/Exchange.h"
#include "session/AppMgrSessionPool.h"
#include "session/ClientSessionWrapper.h"
#include "session/KpAppMgrPreInstall.h"
#include "session/MessageCache.h"

// Shared with the callers' headers; no operation here reads them.
const char* vmFatalError = "**FatalError**";

extern "C" {

__attribute__((visibility("default"))) void* getLibraryInterface(int code) {
  switch (code) {
    case APPMGR_INTERFACE_BACKUP_SET:
      return static_cast<BSInterface*>(new BSInterfaceNet());
    default:
      // The other interface classes are not part of this build yet; unknown codes are null too.
      return nullptr;
  }
}

__attribute__((visibility("default"))) void EnableClientMessageCache(int enable) {
  ClientSessionWrapper::enableMessageCache(static_cast<unsigned char>(enable) != 0);
}

__attribute__((visibility("default"))) int EnableServerSideMessageCache(unsigned long jobId) {
  ClientSessionWrapper wrapper(appmgr::iface::kAppMgrServiceCode, false);
  return wrapper.enableServerMessageCache(jobId) ? 1 : 0;
}

__attribute__((visibility("default"))) int GetDataInPreInstallMode(const std::string& host, std::string& url,
                                                                   const std::string& hostClientName) {
  std::string hostCopy = host;
  std::string clientCopy = hostClientName;
  KpAppMgrPreInstall lookup;
  (void)lookup;
  return KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(hostCopy, url, clientCopy) ? 1 : 0;
}

__attribute__((visibility("default"))) void CleanClientSessionPool() {
  AppMgrSessionPoolSingleton::cleanUpSessionPool();
}

__attribute__((visibility("default"))) void TerminateClientSessions() {}

__attribute__((visibility("default"))) int GetClientLibraryStatistics(AppMgrNetStatistics* out) {
  if (out == nullptr) return 1;
  *out = AppMgrNetStatistics{};
  out->totalMessageCalls = ClientSessionWrapper::m_nTotalMessageCalls.load();
  out->skippedMessageCalls = ClientSessionWrapper::m_nSkippedMessageCalls.load();
  out->maxSendMessageSize = ClientSessionWrapper::m_nMaxSendMessageSize.load();
  out->cacheInUse = ClientSessionWrapper::m_gbUseCacheMap.load() ? 1 : 0;
  if (CMessageCacheSingleton* cache = CMessageCacheSingleton::Instance()) {
    out->messagesInCache = cache->GetMessageNumberInCache();
    out->cacheBytes = cache->GetMessageCacheSize();
  }
  if (KpNetworkPool* pool = AppMgrSessionPoolSingleton::currentFullPool()) {
    KpNetworkPool::Stats s = pool->stats();
    out->fullPoolExists = 1;
    out->fullPoolOpen = s.open;
    out->fullPoolLent = s.lent;
    out->fullPoolAttached = s.attached;
    out->fullPoolReplaced = s.replaced;
  }
  if (KpNetworkPool* pool = AppMgrSessionPoolSingleton::currentLitePool()) {
    KpNetworkPool::Stats s = pool->stats();
    out->litePoolExists = 1;
    out->litePoolOpen = s.open;
    out->litePoolLent = s.lent;
    out->litePoolAttached = s.attached;
    out->litePoolReplaced = s.replaced;
  }
  return 0;
}

}  // extern "C"
