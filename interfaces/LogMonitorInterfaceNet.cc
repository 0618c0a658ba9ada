#include "interfaces/LogMonitorInterfaceNet.h"

#include "appmgr/records/LogMonitorRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

int LogMonitorInterfaceNet::logMonitoringOperation(unsigned long id1, unsigned long id2,
                                                   std::string& xml) {
  std::string dropped;  // no error string: failures are reported by the status alone
  Exchange x(msg::kHandleLogMonitorXml);
  x.request().reserved = 0;
  x.request().id1 = id1;
  x.request().id2 = id2;
  x.request().extra = "";
  x.request().xml = xml.c_str();
  // The header is not verified: the server's outcome is inside the answer.
  if (int status = x.SendReceive(dropped)) return status;
  xml = Text(x.response().xml);
  return 0;
}

int LogMonitorInterfaceNet::getProperties(unsigned long id, unsigned int type,
                                          const std::string& name, std::string& value,
                                          std::string& /*errorString*/, void*) {
  // This operation logs under the domain lookup's label, as it always has.
  static constexpr const char* kLabel = "OrbitInterfaceNet::lookup";
  std::string local;  // every failure text stays here; the caller's errorString is not written
  Exchange x(msg::kGetLogMonitoringParam);
  x.request().name = name.c_str();
  x.request().type = type;
  x.request().id = id;
  if (int status = x.Run(local)) {
    EvEventWrapper::DebugLvl(kLabel, 4,
                             "log-monitoring parameter [%s] of type [%u] for [%lu]: [%d] %s",
                             name.c_str(), type, id, status, local.c_str());
    return status;
  }
  if (x.response().value != nullptr) value = x.response().value;
  return 0;
}
