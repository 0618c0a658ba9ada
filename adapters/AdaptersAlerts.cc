// Alerts of AdaptersInterfaceNet: the binary alert record. Not provided in this build.
#include "adapters/AdaptersInterfaceNet.h"
#include "interfaces/Exchange.h"

using appmgr::iface::NotImplemented;

int AdaptersInterfaceNet::SendAlert(EvAlertEx&, std::string& errorString) {
  return NotImplemented(errorString);
}
