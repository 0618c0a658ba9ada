// A stand-in for libappmgrnet.so that exports every function but GetClientLibraryStatistics:
// appmgrctl must refuse it at load, naming the missing function, before it calls anything.
#include <string>

extern "C" {
__attribute__((visibility("default"))) void* getLibraryInterface(int) {
  return nullptr;
}
__attribute__((visibility("default"))) void EnableClientMessageCache(int) {}
__attribute__((visibility("default"))) int EnableServerSideMessageCache(unsigned long) {
  return 0;
}
__attribute__((visibility("default"))) int GetDataInPreInstallMode(const std::string&, std::string&,
                                                                   const std::string&) {
  return 0;
}
__attribute__((visibility("default"))) void CleanClientSessionPool() {}
__attribute__((visibility("default"))) void TerminateClientSessions() {}
}
