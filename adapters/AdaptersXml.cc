// XML message routing of AdaptersInterfaceNet: XML inside binary records and XML on the session.
// Not provided in this build.
#include "adapters/AdaptersInterfaceNet.h"
#include "interfaces/Exchange.h"

using appmgr::iface::NotImplemented;

int AdaptersInterfaceNet::handleXMLReq(unsigned long, unsigned long, std::string&,
                                       std::string& errorString, std::string, unsigned long) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::processXMLRequest(CNMessageBase&, CNMessageBase*&,
                                            std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::SendAlert(KPGui::AlertEvAlertExList&, std::string& errorString) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::syncSRMClientAdvisories(KPGui::SyncSRMClientAdvisories&,
                                                  std::string& errorString) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::syncSRMSourceAdvisories(KPGui::SyncSRMSourceAdvisories&,
                                                  std::string& errorString) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::controlAdvisories(KPGui::ControlSRMAdvisories&,
                                            std::string& errorString) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getSRMAdvisoryTypes(KPGui::AlertSRMAdvisoryTypeListReq&,
                                              KPGui::AlertSRMAdvisoryTypeListResp&,
                                              std::string& errorString) {
  return NotImplemented(errorString);
}
long AdaptersInterfaceNet::GetHTTPProxySettings(App::GetHTTPProxySettingsReq&,
                                                App::HTTPProxySettings&, std::string& errorString) {
  return NotImplemented(errorString);
}
