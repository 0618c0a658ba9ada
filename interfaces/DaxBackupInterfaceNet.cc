#include "interfaces/DaxBackupInterfaceNet.h"

#include "appmgr/records/LogMonitorRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

int DaxBackupInterfaceNet::handleXMLRequest(unsigned long id1, unsigned long id2,
                                            std::string& xml) {
  EvEvent log("DaxBackupInterfaceNet::handleXMLRequest");
  std::string dropped;  // no error string: failures are reported by the status alone
  Exchange x(msg::kHandleDaxXml);
  x.request().id1 = id1;
  x.request().id2 = id2;
  x.request().xml = xml.c_str();
  if (int status = x.Send(dropped)) {
    log.Error("Send request failed with an error [%ld]", static_cast<long>(status));
    return status;
  }
  if (int status = x.Receive(dropped)) {
    log.Error("Receive request failed with an error [%ld]", static_cast<long>(status));
    return status;
  }
  // The server's status for the request is the header's code; the header is not otherwise
  // checked (no version check), and its answer is handed back whatever the status.
  int status = static_cast<int>(static_cast<int64_t>(x.response().hdr.errorCode));
  xml = Text(x.response().xml);
  return status;
}
