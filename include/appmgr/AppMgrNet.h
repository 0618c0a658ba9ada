// The exported functions of libappmgrnet.so, found by name with dlsym.
//
//   void* lib = dlopen(APPMGRNET_SONAME, RTLD_NOW);   // "libappmgrnet.so.1"
//   auto get = reinterpret_cast<AppMgrGetLibraryInterfaceFn>(dlsym(lib, "getLibraryInterface"));
//   BSInterface* bs = static_cast<BSInterface*>(get(APPMGR_INTERFACE_BACKUP_SET));
//   ...
//   delete bs;
//
// All may be called from any thread.
#pragma once

#include <cstdint>
#include <string>

#include "appmgr/AppMgrVersion.h"

// Interface type codes of getLibraryInterface.
enum AppMgrInterfaceCode : int {
  APPMGR_INTERFACE_ADAPTERS = 1,
  APPMGR_INTERFACE_APP_ID = 2,
  APPMGR_INTERFACE_ORBIT = 3,
  APPMGR_INTERFACE_CLIENT = 4,
  APPMGR_INTERFACE_APP_TYPE = 5,
  APPMGR_INTERFACE_INSTANCE = 6,
  APPMGR_INTERFACE_BACKUP_SET = 7,
  APPMGR_INTERFACE_SUBCLIENT = 8,
  APPMGR_INTERFACE_GLOBAL_PARAM = 9,
  APPMGR_INTERFACE_CLIENT_GROUP = 10,
  APPMGR_INTERFACE_SNAP_INFO = 11,
  APPMGR_INTERFACE_MAILBOX_DELEGATE = 12,
  APPMGR_INTERFACE_LOG_MONITOR = 13,
  APPMGR_INTERFACE_DAX_BACKUP = 14,
  APPMGR_INTERFACE_CA_CERTIFICATE = 15,
  APPMGR_INTERFACE_CERTIFICATE = 16,
};

// Process-wide counters of the session layer, for tools.
struct AppMgrNetStatistics {
  uint64_t totalMessageCalls;     // sends made by the process
  uint64_t skippedMessageCalls;   // sends answered from the client-side cache
  uint64_t maxSendMessageSize;    // largest request stored in the cache, bytes
  uint64_t messagesInCache;
  uint64_t cacheBytes;
  uint32_t cacheInUse;            // 1 when the cache serves this process
  uint32_t fullPoolExists;
  uint64_t fullPoolOpen, fullPoolLent, fullPoolAttached, fullPoolReplaced;
  uint32_t litePoolExists;
  uint64_t litePoolOpen, litePoolLent, litePoolAttached, litePoolReplaced;
};

extern "C" {
// A new interface object of the class `code` names, or null for an unknown code (or one whose
// class this build does not offer). The caller deletes it through its interface class.
void* getLibraryInterface(int code);
// Switches the client-side message cache on (non-zero low byte) or off for the process.
void EnableClientMessageCache(int enable);
// Fills the client-side cache with the answers the server prepared for `jobId`; 1 on success,
// 0 on failure (the reason is in the log).
int EnableServerSideMessageCache(unsigned long jobId);
// Asks the Controlhost `host` for the web console address before this machine is installed;
// 1 with `url` set on success, 0 with `url` untouched on failure.
int GetDataInPreInstallMode(const std::string& host, std::string& url,
                            const std::string& hostClientName);
// Closes the sessions of the full pool and forgets it; the next call builds a new one.
void CleanClientSessionPool();
// Kept for callers that expect it; does nothing.
void TerminateClientSessions();
// Fills `out` with the session layer's counters; 0 on success, 1 when `out` is null.
int GetClientLibraryStatistics(AppMgrNetStatistics* out);
// The version of the loaded library, "MAJOR.MINOR.PATCH"; a static text.
const char* GetClientLibraryVersion();
// Tools: `callback` is told of the progress of every file put of the process
// (setClientFileContent), on the thread that puts the file: once before the first byte (sent 0),
// then after each chunk of at most 1 MiB, `sent` of `total` bytes of the plain file name
// `fileName` having gone. `context` is passed back. A null callback stops the reports. The
// callback must not call the library.
void SetFileTransferProgressCallback(void (*callback)(void* context, const char* fileName,
                                                      unsigned long long sent,
                                                      unsigned long long total),
                                     void* context);
}

typedef void* (*AppMgrGetLibraryInterfaceFn)(int);
typedef void (*AppMgrEnableClientMessageCacheFn)(int);
typedef int (*AppMgrEnableServerSideMessageCacheFn)(unsigned long);
typedef int (*AppMgrGetDataInPreInstallModeFn)(const std::string&, std::string&, const std::string&);
typedef void (*AppMgrVoidFn)();
typedef int (*AppMgrGetClientLibraryStatisticsFn)(AppMgrNetStatistics*);
typedef const char* (*AppMgrGetClientLibraryVersionFn)();
typedef void (*AppMgrFileProgressFn)(void* context, const char* fileName, unsigned long long sent,
                                     unsigned long long total);
typedef void (*AppMgrSetFileTransferProgressCallbackFn)(AppMgrFileProgressFn callback, void* context);
