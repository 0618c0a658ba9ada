// The library's exported functions. Everything else of libappmgrnet.so is hidden (see
// exports.map).
#include <memory>
#include <string>

#include "adapters/AdaptersInterfaceNet.h"
#include "appmgr/AppMgrDefs.h"
#include "appmgr/AppMgrNet.h"
#include "interfaces/AppIdInterfaceNet.h"
#include "appmgr/AppMgrVersion.h"
#include "interfaces/AppTypeInterfaceNet.h"
#include "interfaces/BSInterfaceNet.h"
#include "interfaces/ClientInterfaceNet.h"
#include "interfaces/ClientGroupInterfaceNet.h"
#include "interfaces/Exchange.h"
#include "interfaces/GlobalParamInterfaceNet.h"
#include "interfaces/InstInterfaceNet.h"
#include "interfaces/OrbitInterfaceNet.h"
#include "interfaces/SCInterfaceNet.h"
#include "interfaces/CACertificateInterfaceNet.h"
#include "interfaces/CertificateInterfaceNet.h"
#include "interfaces/DaxBackupInterfaceNet.h"
#include "interfaces/LogMonitorInterfaceNet.h"
#include "interfaces/MailBoxDelegateInterfaceNet.h"
#include "interfaces/SnapInfoInterfaceNet.h"
#include "platform/net/CKpNetwork.h"
#include "session/AppMgrSessionPool.h"
#include "session/ClientSessionWrapper.h"
#include "session/KpAppMgrPreInstall.h"
#include "session/MessageCache.h"

namespace {

// Copies a pool's counters; false when there is no pool.
bool PoolStats(KpNetworkPool* pool, uint32_t* exists, uint64_t* open, uint64_t* lent, uint64_t* attached,
               uint64_t* replaced) {
  if (pool == nullptr) return false;
  KpNetworkPool::Stats s = pool->stats();
  *exists = 1;
  *open = s.open;
  *lent = s.lent;
  *attached = s.attached;
  *replaced = s.replaced;
  return true;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* getLibraryInterface(int code) {
  // Each object is returned as a pointer to its interface class, which the caller casts back.
  switch (code) {
    case APPMGR_INTERFACE_ADAPTERS:
      return static_cast<AdaptersInterface*>(new AdaptersInterfaceNet());

    case APPMGR_INTERFACE_APP_ID:
      return static_cast<AppIdInterface*>(new AppIdInterfaceNet());
    case APPMGR_INTERFACE_CLIENT:
      return static_cast<ClientInterface*>(new ClientInterfaceNet());
    case APPMGR_INTERFACE_BACKUP_SET:
      return static_cast<BSInterface*>(new BSInterfaceNet());
    case APPMGR_INTERFACE_SUBCLIENT:
      return static_cast<SCInterface*>(new SCInterfaceNet());

    case APPMGR_INTERFACE_ORBIT:
      return static_cast<OrbitInterface*>(new OrbitInterfaceNet());
    case APPMGR_INTERFACE_GLOBAL_PARAM:
      return static_cast<GlobalParamInterface*>(new GlobalParamInterfaceNet());
    case APPMGR_INTERFACE_CLIENT_GROUP:
      return static_cast<ClientGroupInterface*>(new ClientGroupInterfaceNet());

    case APPMGR_INTERFACE_APP_TYPE:
      return static_cast<AppTypeInterface*>(new AppTypeInterfaceNet());
    case APPMGR_INTERFACE_INSTANCE:
      return static_cast<InstInterface*>(new InstInterfaceNet());

    case APPMGR_INTERFACE_LOG_MONITOR:
      return static_cast<LogMonitorInterface*>(new LogMonitorInterfaceNet());
    case APPMGR_INTERFACE_DAX_BACKUP:
      return static_cast<DaxBackupInterface*>(new DaxBackupInterfaceNet());
    case APPMGR_INTERFACE_CA_CERTIFICATE:
      return static_cast<CACertificateInterface*>(new CACertificateInterfaceNet());
    case APPMGR_INTERFACE_CERTIFICATE:
      return static_cast<CertificateInterface*>(new CertificateInterfaceNet());

    case APPMGR_INTERFACE_SNAP_INFO:
      return static_cast<SnapInterface*>(new SnapInfoInterfaceNet());

    case APPMGR_INTERFACE_MAILBOX_DELEGATE:
      return static_cast<MailBoxDelegateInterface*>(new MailBoxDelegateInterfaceNet());

    default:
      // Unknown codes, and classes this build does not offer yet, are null.
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
  PoolStats(AppMgrSessionPoolSingleton::currentFullPool(), &out->fullPoolExists, &out->fullPoolOpen,
            &out->fullPoolLent, &out->fullPoolAttached, &out->fullPoolReplaced);
  PoolStats(AppMgrSessionPoolSingleton::currentLitePool(), &out->litePoolExists, &out->litePoolOpen,
            &out->litePoolLent, &out->litePoolAttached, &out->litePoolReplaced);
  return 0;
}

__attribute__((visibility("default"))) const char* GetClientLibraryVersion() {
  return APPMGRNET_VERSION;
}

__attribute__((visibility("default"))) void SetFileTransferProgressCallback(
    void (*callback)(void*, const char*, unsigned long long, unsigned long long), void* context) {
  CKpNetwork::SetPutProgressObserver(callback, context);
}

}  // extern "C"
