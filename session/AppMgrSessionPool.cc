#include "session/AppMgrSessionPool.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include <pthread.h>

#include "platform/base/EvDebug.h"
#include "platform/base/KpSettings.h"
#include "platform/net/MangleHostName.h"
#include "session/MessageCache.h"

std::atomic<KpNetworkPool*> AppMgrSessionPoolSingleton::singleInstance{nullptr};
std::atomic<KpNetworkPool*> AppMgrSessionPoolSingleton::appMgrSvcLiteInstance{nullptr};
KpCriticalSection AppMgrSessionPoolSingleton::poolCriticalSection;

namespace {

// fork() copies whatever locks other threads hold at that moment; a child that then needs one
// waits forever. Every lock a call can hold is therefore taken before the fork (by the forking
// thread, in the order the library nests them: the cache's creation lock, the pools' lock, the
// cache, each pool, the log, the settings) and given back after it, in the parent and in the
// child. The child's pools then drop the sessions it inherited, unused, on their next lend.
void LockEverythingForFork() {
  CMessageCacheSingleton::LockForFork();
  AppMgrSessionPoolSingleton::poolCriticalSection.Lock();
  if (KpNetworkPool* pool = AppMgrSessionPoolSingleton::singleInstance.load()) pool->LockForFork();
  if (KpNetworkPool* pool = AppMgrSessionPoolSingleton::appMgrSvcLiteInstance.load()) {
    pool->LockForFork();
  }
  EvLog::LockForFork();
  KpSettings::Instance().LockForFork();
}

void UnlockEverything(bool child) {
  // A read-write lock records its writer's thread id, which the child's one thread does not
  // have: the child cannot unlock the log's and the settings' locks, so it makes them anew.
  if (child) {
    KpSettings::Instance().ResetAfterForkInChild();
    EvLog::ResetAfterForkInChild();
  } else {
    KpSettings::Instance().UnlockAfterFork();
    EvLog::UnlockAfterFork();
  }
  if (KpNetworkPool* pool = AppMgrSessionPoolSingleton::appMgrSvcLiteInstance.load()) {
    pool->UnlockAfterFork();
  }
  if (KpNetworkPool* pool = AppMgrSessionPoolSingleton::singleInstance.load())
    pool->UnlockAfterFork();
  AppMgrSessionPoolSingleton::poolCriticalSection.Unlock();
  CMessageCacheSingleton::UnlockAfterFork();
}

void UnlockInParent() {
  UnlockEverything(false);
}
void UnlockInChild() {
  UnlockEverything(true);
}

// Registered once, when the library is loaded (and unregistered by the C library when it is
// unloaded).
const bool kForkHandlersRegistered =
    pthread_atfork(LockEverythingForFork, UnlockInParent, UnlockInChild) == 0;

}  // namespace

KpFeatureCache g_FeatureCache(KPPI_Focus::getFocus());

namespace {

// Whether the feature switch turns the lite pool off, asked of g_FeatureCache once per settings
// generation: every wrapper asks, and the answer changes only with the settings.
bool LitePoolDisabled() {
  static std::atomic<uint64_t> answer{UINT64_MAX};  // generation * 2 + the answer, in one word
  const uint64_t generation = KpSettings::Instance().Generation();
  uint64_t a = answer.load(std::memory_order_relaxed);
  if (a >> 1 != generation) {
    a = generation << 1 | (g_FeatureCache.IsFeatureEnabled("AppMgrSvcLiteDisable") ? 1 : 0);
    answer.store(a, std::memory_order_relaxed);
  }
  return (a & 1) != 0;
}

// Pools dropped without being destroyed (see the header). Guarded by poolCriticalSection.
std::vector<KpNetworkPool*>& Abandoned() {
  static auto* pools = new std::vector<KpNetworkPool*>();
  return *pools;
}

}  // namespace

int getPlatformType() {
  KPPI_EventManager platform;
  platform.setFocus(KPPI_Focus::getFocus());
  unsigned long bits = platform.getPlatformType();
  if (bits & 1) return 1;  // a machine with both bits counts as the Controlhost
  if (bits & 2) return 2;
  return 4;
}

void getClientName(char* buffer, unsigned int size) {
  KPPlatformInfo info;
  info.setFocus(KPPI_Focus::getFocus());
  if (info.getKPPlatformType() & 1) {
    info.getControlhosterClientName(buffer, size);
  } else {
    std::string machine = info.getPhysicalMachine();
    std::strncpy(buffer, machine.c_str(), size);
  }
}

void getAppMgrHostandClientNames(const EvEvent& /*event*/, unsigned long platformType,
                                 std::string& serverName, std::string& clientName) {
  std::unique_ptr<KPPI_ControlhostRecord> record;
  if (platformType & 1) {
    record = std::make_unique<KPPI_Controlhoster>();
  } else if (platformType & 2) {
    record = std::make_unique<KPPI_Storenode>();
  } else {
    record = std::make_unique<KPPI_Fleetmember>();
  }
  record->setFocus(KPPI_Focus::getFocus());
  const char* host = record->getControlhosterHostName();
  serverName = host ? host : "";

  char buffer[256] = {};
  KPPlatformInfo info;
  info.setFocus(KPPI_Focus::getFocus());
  clientName = info.findControlhosterClientName(buffer, sizeof buffer) ? buffer : "";
}

void getConnectionClientNames(char (&clientName)[257], char (&controlhostClientName)[257]) {
  KPPlatformInfo info;
  info.setFocus(KPPI_Focus::getFocus());
  std::memset(clientName, 0, sizeof clientName);
  std::memset(controlhostClientName, 0, sizeof controlhostClientName);
  if (info.getKPPlatformType() & 1) {
    info.getControlhosterClientName(clientName, 256);
  } else {
    std::strncpy(clientName, info.getPhysicalMachine().c_str(), 255);
  }
  info.findControlhosterClientName(controlhostClientName, 256);
}

void getAppMgrLiteHostNameAndClientName(const EvEvent& /*event*/, std::string& hostName,
                                        std::string& clientName) {
  KPPlatformInfo info;
  info.setFocus(KPPI_Focus::getFocus());
  info.getString("Controlhost", "sAPPMGRHOSTNAME", &hostName);
  info.getString("Controlhost", "sAPPMGRCLIENTNAME", &clientName);
}

void DebugSessionPoolMessages(KpNetworkPool* /*pool*/, const char* text) {
  EvEvent event("KpNetworkPool");
  event.Debug(5, "%s", text);
}

CLmError initializeSessionPoolInstance(KpNetworkPool* pool, const std::string& serverName,
                                       const std::string& serverClientName,
                                       const std::string& localClientName,
                                       const std::string& serviceName) {
  pool->setDebuggingLevel(5);
  pool->setDebugCallback(DebugSessionPoolMessages);
  std::string host = MangleHostName(serverName, serverClientName, 8400, 8402);
  // 120 is the attach time-out every connect of the library uses.
  return pool->initNetworkPool(serviceName.c_str(), host, localClientName, 600, 120, 0, 10, 0);
}

KpNetworkPool* AppMgrSessionPoolSingleton::getSessionPoolInstance(const std::string& serviceName) {
  EvEvent event("AppMgrSessionPoolSingleton::getSessionPoolInstance");
  event.Debug(4, "Entry (svcName=%s)", serviceName.c_str());
  // Every call of the library asks; once the pool exists the answer needs no lock (a pool is
  // published only once it is initialised, and never destroyed after that).
  if (KpNetworkPool* pool = singleInstance.load(std::memory_order_acquire)) {
    event.Debug(4, "Exit (svcName=%s)", serviceName.c_str());
    return pool;
  }
  KpCriticalSectionLock lock(poolCriticalSection);
  if (KpNetworkPool* pool = singleInstance.load(std::memory_order_relaxed)) {
    event.Debug(4, "Exit (svcName=%s)", serviceName.c_str());
    return pool;
  }
  auto* pool = new KpNetworkPool();
  char localClientName[256] = {};
  getClientName(localClientName, sizeof localClientName);
  localClientName[sizeof localClientName - 1] = '\0';
  int platformType = getPlatformType();
  std::string serverName, clientName;
  getAppMgrHostandClientNames(event, static_cast<unsigned long>(platformType), serverName,
                              clientName);
  event.Debug(1, "serverName [%s], clientName [%s].", serverName.c_str(), clientName.c_str());
  if (serverName.empty() || clientName.empty()) {
    event.Error("Client or server name is empty. Cant create session instance");
    Abandoned().push_back(pool);  // dropped, not destroyed
    return nullptr;
  }
  CLmError error =
      initializeSessionPoolInstance(pool, serverName, clientName, localClientName, serviceName);
  if (error.IsError()) {
    event.Error(
        "Failed to initialize Session Pool to AppManager(platformType[%d], serverName(%s). "
        "Error:[%s]",
        platformType, serverName.c_str(), error.AsString().c_str());
    delete pool;
    pool = nullptr;
  }
  singleInstance.store(pool, std::memory_order_release);
  event.Debug(4, "Exit (svcName=%s)", serviceName.c_str());
  return pool;
}

KpNetworkPool* AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance() {
  if (LitePoolDisabled()) return nullptr;
  EvEvent event("AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance");
  event.Debug(4, "Entry (svcName=%s)", kAppMgrServiceName);
  // Where there is no lite host, the answer stays "none" until the settings change; remembering
  // it spares every later wrapper the platform reads. Like an existing pool, it is answered
  // without the lock.
  static std::atomic<uint64_t> noLiteHostGeneration{UINT64_MAX};
  KpSettings& settings = KpSettings::Instance();
  if (KpNetworkPool* pool = appMgrSvcLiteInstance.load(std::memory_order_acquire)) {
    event.Debug(4, "Exit (svcName=%s)", kAppMgrServiceName);
    return pool;
  }
  if (noLiteHostGeneration.load(std::memory_order_acquire) == settings.Generation()) return nullptr;
  KpCriticalSectionLock lock(poolCriticalSection);
  if (KpNetworkPool* pool = appMgrSvcLiteInstance.load(std::memory_order_relaxed)) {
    event.Debug(4, "Exit (svcName=%s)", kAppMgrServiceName);
    return pool;
  }
  const uint64_t before = settings.Generation();
  if (noLiteHostGeneration.load(std::memory_order_relaxed) == before) return nullptr;
  int platformType = getPlatformType();
  std::string hostName, clientName;
  // The Controlhost never uses the lite pool.
  if (platformType != 1) getAppMgrLiteHostNameAndClientName(event, hostName, clientName);
  if (platformType == 1 || hostName.empty() || clientName.empty()) {
    if (settings.Generation() == before)
      noLiteHostGeneration.store(before, std::memory_order_release);
    return nullptr;
  }

  auto* pool = new KpNetworkPool();
  char localClientName[256] = {};
  getClientName(localClientName, sizeof localClientName);
  localClientName[sizeof localClientName - 1] = '\0';
  event.Debug(1, "serverName [%s], clientName [%s].", hostName.c_str(), clientName.c_str());
  CLmError error = initializeSessionPoolInstance(pool, hostName, clientName, localClientName,
                                                 kAppMgrServiceName);
  if (error.IsError()) {
    event.Error(
        "Failed to initialize Session Pool to AppManager(platformType[%d], serverName(%s). "
        "Error:[%s]",
        platformType, hostName.c_str(), error.AsString().c_str());
    delete pool;
    pool = nullptr;
  }
  appMgrSvcLiteInstance.store(pool, std::memory_order_release);
  event.Debug(4, "Exit (svcName=%s)", kAppMgrServiceName);
  return pool;
}

void AppMgrSessionPoolSingleton::terminateAllSessions() {
  KpCriticalSectionLock lock(poolCriticalSection);
  if (KpNetworkPool* pool = singleInstance.load()) pool->terminateAllSessions();
}

void AppMgrSessionPoolSingleton::checkConnections() {
  KpCriticalSectionLock lock(poolCriticalSection);
  if (KpNetworkPool* pool = singleInstance.load()) pool->checkConnections();
}

void AppMgrSessionPoolSingleton::cleanUpSessionPool() {
  KpCriticalSectionLock lock(poolCriticalSection);
  if (KpNetworkPool* pool = singleInstance.load()) {
    pool->terminateAllSessions();
    Abandoned().push_back(pool);  // borrowers still give their sessions back to it
    singleInstance.store(nullptr);
  }
}

void AppMgrSessionPoolSingleton::resetForTesting() {
  KpCriticalSectionLock lock(poolCriticalSection);
  if (singleInstance) Abandoned().push_back(singleInstance);
  if (appMgrSvcLiteInstance) Abandoned().push_back(appMgrSvcLiteInstance);
  singleInstance = nullptr;
  appMgrSvcLiteInstance = nullptr;
}

KpNetworkPool* AppMgrSessionPoolSingleton::currentFullPool() {
  KpCriticalSectionLock lock(poolCriticalSection);
  return singleInstance;
}

KpNetworkPool* AppMgrSessionPoolSingleton::currentLitePool() {
  KpCriticalSectionLock lock(poolCriticalSection);
  return appMgrSvcLiteInstance;
}
