#include "server/handlers/PreInstallHandlers.h"

#include <memory>
#include <utility>

#include "platform/base/EvDebug.h"
#include "platform/xml/AppMessages.h"

namespace appmgr::server {

CLmError CheckWebConsoleUrl(const std::string& url) {
  App::GetDataInPreInstallModeResp probe;
  if (int rc = probe.SetWebConsoleUrl(url)) {
    return CLmError::Format(
        kKpErrBadArgument, "the web console address is not text an XML message can carry (%d)", rc);
  }
  return CLmError();
}

void RegisterPreInstallHandlers(Server& server, std::string webConsoleUrl) {
  server.HandleXml(
      App::GetDataInPreInstallModeReq::kTagId,
      [url = std::move(webConsoleUrl)](const CNMessageBase&, const ConnectionInfo& connection)
          -> std::unique_ptr<CNMessageBase> {
        auto answer = std::make_unique<App::GetDataInPreInstallModeResp>();
        answer->SetWebConsoleUrl(url);
        EvEventWrapper::DebugLvl(
            "PreInstallHandlers", 2, "connection %llu [%s] asked for the web console address: [%s]",
            static_cast<unsigned long long>(connection.id), connection.client.c_str(), url.c_str());
        return answer;
      });
}

}  // namespace appmgr::server
