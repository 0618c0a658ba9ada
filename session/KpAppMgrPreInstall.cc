#include "session/KpAppMgrPreInstall.h"

#include <memory>

#include "platform/base/EvDebug.h"
#include "platform/info/KPPlatformInfo.h"
#include "platform/net/MangleHostName.h"
#include "platform/xml/AppMessages.h"
#include "session/AppMgrSessionPool.h"

namespace {
constexpr unsigned long kGetDataInPreInstallModeRespTag = 0x1ea717d0;
}

bool KpAppMgrPreInstall::ConnectToAppMgrSvc(CKpNetwork& session, std::string hostName,
                                            std::string clientName, std::string hostClientName) {
  EvEvent event("ConnectToAppMgrSvc");
  if (hostName.empty()) {
    event.Error("CH hostname not provided. Cannot proceed further");
    return false;
  }
  event.Debug(1, "Client [%s] is trying to fetch webconsole URL from CH [%s] in preinstall mode",
              clientName.c_str(), hostName.c_str());
  std::string connect =
      MangleHostName(hostName, hostClientName.empty() ? hostName : hostClientName, 8400, 8402);
  event.Debug(1, "Mangled CH host name: [%s]", connect.c_str());
  session.SetAuthenticationMethod(1);
  session.SetIgnoreAntiChatterFlag();
  bool timedOut = false;
  CLmError error = session.Attach_RemoteService(connect, kAppMgrServiceName, clientName, 120, timedOut);
  if (error.IsError()) {
    event.Error("Unable to attach client to AppMgrSvc in server. ErrorString [%s]",
                error.AsString().c_str());
    return false;
  }
  event.Debug(1, "Client is successfully attached to AppMgrSvc in server");
  return true;
}

bool KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(std::string hostName, std::string& url,
                                                          std::string hostClientName) {
  EvEvent event("GetWebConsoleUrlInPreInstallMode");
  CKpNetwork session;
  std::string clientName = KPPlatformInfo().getPhysicalMachine();
  if (!ConnectToAppMgrSvc(session, hostName, clientName, hostClientName)) {
    event.Error("Unable to attach client to AppMgrSvc in server");
    return false;
  }
  App::GetDataInPreInstallModeReq request;
  bool timedOut = false;
  CLmError error = session.SendXMLMessage(request, 0, 120, timedOut);
  if (error.IsError()) {
    event.Error("Client is unable to send App::GetDataInPreInstallModeReq request to server. ErrorString [%s]",
                error.AsString().c_str());
    return false;
  }
  event.Debug(1, "Client successfully sent App::GetDataInPreInstallModeReq XML to server");

  CNMessageBase* received = nullptr;
  error = session.ReceiveXMLMessage(nullptr, received, nullptr, 0, 120, timedOut);
  std::unique_ptr<CNMessageBase> answer(received);
  if (error.IsError()) {
    event.Error("Client failed to receive App::GetDataInPreInstallModeResp XML from server. ErrorString [%s]",
                error.AsString().c_str());
    return false;
  }
  if (!answer) {
    event.Error("Pointer to App::GetDataInPreInstallModeResp XML is NULL");
    return false;
  }
  event.Debug(1, "Client successfully received App::GetDataInPreInstallModeResp XML from server");
  session.Disconnect(5, timedOut);

  if (EvLog::Level() > 4) {
    std::string text;
    answer->serialize(text, false);
    event.Debug(5, "XML response for fetching WebconsoleURL in preinstall mode [%s]", text.c_str());
  }
  if (answer->getTagId() != kGetDataInPreInstallModeRespTag) {
    event.Error("Invalid tag in App::GetDataInPreInstallModeResp XML");
    return false;
  }
  if (answer->HasField(1) && !answer->GetString(1).empty()) {
    url = answer->GetString(1);
    event.Debug(1, "Successfully fetched webconsole URL [%s] in preinstall mode", url.c_str());
    return true;
  }
  event.Error("WebConsole URL is not populated in App::GetDataInPreInstallModeResp XML");
  return false;
}
