// A program from outside the project, built only against an installed appmgrnet (through its
// CMake package or through pkg-config): it links the library, takes the backup-set object from
// the factory and looks up one backup set on the App Manager the settings name.
//
//   consumer [ID]      prints "headers V, library V" and "backup set ID: NAME (VALUE)"
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "appmgr/AppMgrNet.h"
#include "appmgr/BSInterface.h"

int main(int argc, char** argv) {
  const unsigned long id = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 102;
  std::printf("headers %s, library %s\n", APPMGRNET_VERSION, GetClientLibraryVersion());
  std::unique_ptr<BSInterface> bs(
      static_cast<BSInterface*>(getLibraryInterface(APPMGR_INTERFACE_BACKUP_SET)));
  if (!bs) {
    std::fprintf(stderr, "consumer: no backup-set interface\n");
    return 2;
  }
  std::string name, text, error;
  long value = 0;
  unsigned long out1 = 0, out2 = 0, out3 = 0, out4 = 0;
  int status = bs->lookup(id, name, value, out1, out2, out3, text, out4, error, nullptr);
  if (status != 0) {
    std::fprintf(stderr, "consumer: lookup of %lu: error %d: %s\n", id, status, error.c_str());
    return 1;
  }
  std::printf("backup set %lu: %s (%ld)\n", id, name.c_str(), value);
  return 0;
}
