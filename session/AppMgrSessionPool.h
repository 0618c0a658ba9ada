// The process-wide session pools and the discovery of the App Manager host.
//
// Two pools, both made on first use: the full pool, connected to the App Manager on the
// Controlhost that the platform record names; and the lite pool, connected to a lite App
// Manager whose host and client name are configured for this client ([Controlhost]
// sAPPMGRHOSTNAME and sAPPMGRCLIENTNAME). Wrappers prefer the lite pool. The lite pool is never
// made on the Controlhost itself, nor when the feature switch AppMgrSvcLiteDisable is on.
//
// A pool that cannot be made leaves its pointer null and the next request tries again. A full
// pool whose names are missing, and a full pool that CleanClientSessionPool forgets, are dropped
// without being destroyed: wrappers that borrowed from it give their sessions back to it. They
// stay reachable (on a list never freed) so leak checkers see them as kept on purpose.
//
// Thread-safety: every function may be called from any thread; making a pool and the pool
// operations serialise on poolCriticalSection. The getters answer without the lock once their
// pool exists (and the lite getter once it knows there is no lite host for the current
// settings); the lite pool's feature check comes first.
#pragma once

#include <atomic>
#include <string>

#include "platform/base/CLmError.h"
#include "platform/base/EvDebug.h"
#include "platform/base/KpCriticalSection.h"
#include "platform/info/KPPlatformInfo.h"
#include "platform/net/KpNetworkPool.h"

// The service every pool and every connection asks for.
inline constexpr const char* kAppMgrServiceName = "AppManager network access";

class AppMgrSessionPoolSingleton {
 public:
  AppMgrSessionPoolSingleton() = default;

  // The full pool, made on first call; null when it cannot be made.
  static KpNetworkPool* getSessionPoolInstance(const std::string& serviceName);
  // The lite pool, made on first call; null when disabled, not configured, on the Controlhost
  // machine, or when it cannot be made.
  static KpNetworkPool* getAppMgrLiteSessionPoolInstance();
  // Close every session of the full pool (the pool stays), or ask it to check them.
  static void terminateAllSessions();
  static void checkConnections();
  // Closes the full pool's sessions and forgets the pool: the next call makes a new one.
  static void cleanUpSessionPool();

  // Forgets both pools (tests: each case starts with none).
  static void resetForTesting();
  // The pools as they are now, without making them (statistics).
  static KpNetworkPool* currentFullPool();
  static KpNetworkPool* currentLitePool();

  // Written under poolCriticalSection, and only with a pool that is initialised; read without
  // it by the getters once a pool exists.
  static std::atomic<KpNetworkPool*> singleInstance;
  static std::atomic<KpNetworkPool*> appMgrSvcLiteInstance;
  static KpCriticalSection poolCriticalSection;
};

// Feature switches of this process, answered for the platform focus.
extern KpFeatureCache g_FeatureCache;

// 1 on the Controlhost, 2 on a Storenode, 4 on any other client (bit 1 wins over bit 2).
int getPlatformType();
// This machine's client name, at most `size` characters (a name that fills the buffer is not
// terminated by this copy; callers pass 256-character buffers and terminate them).
void getClientName(char* buffer, unsigned int size);
// The Controlhost's host and client name as this machine's platform record knows them; empty
// when unknown.
void getAppMgrHostandClientNames(const EvEvent& event, unsigned long platformType,
                                 std::string& serverName, std::string& clientName);
// The names a connection to the Controlhost is made with: this machine's client name (the
// Controlhost's own client name on the Controlhost, else the first 255 characters of the
// physical machine name) and the Controlhost's client name from the platform record (empty when
// unknown). Both buffers hold 257 characters and come back terminated.
void getConnectionClientNames(char (&clientName)[257], char (&controlhostClientName)[257]);
// The configured lite App Manager host and client name; empty when not configured.
void getAppMgrLiteHostNameAndClientName(const EvEvent& event, std::string& hostName,
                                        std::string& clientName);
// Sets the pool's debug level and callback and initialises it to serverName with the fixed
// parameters: I/O time-out 600 s, attach time-out 120 s, no sessions ahead, at most 10, no idle
// limit.
CLmError initializeSessionPoolInstance(KpNetworkPool* pool, const std::string& serverName,
                                       const std::string& serverClientName,
                                       const std::string& localClientName,
                                       const std::string& serviceName);
// The pools' debug callback: logs the text.
void DebugSessionPoolMessages(KpNetworkPool* pool, const char* text);
