// Client file content transfer of AdaptersInterfaceNet. These operations have no error string:
// the status alone. Not provided in this build.
#include "adapters/AdaptersInterfaceNet.h"
#include "interfaces/Exchange.h"

using appmgr::iface::kNotImplemented;

int AdaptersInterfaceNet::setClientFileContent(unsigned long, const std::string&,
                                               const std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getClientFileContent(unsigned long, const std::string&,
                                               const std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::pushVSData(unsigned long, unsigned long, unsigned long, unsigned long,
                                     const std::string&, int, void*) {
  return kNotImplemented;
}
