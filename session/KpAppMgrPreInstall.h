// KpAppMgrPreInstall: the web console address, asked of the Controlhost before this machine
// is installed (so before it has a platform record and a pool).
#pragma once

#include <string>

#include "platform/net/CKpNetwork.h"

class KpAppMgrPreInstall {
 public:
  // Attaches `session` to the App Manager on `hostName` as `clientName`; an empty
  // `hostClientName` is replaced by the host name. True on success.
  static bool ConnectToAppMgrSvc(CKpNetwork& session, std::string hostName, std::string clientName,
                                 std::string hostClientName);
  // Fills `url` with the web console address the Controlhost reports; true on success. `url` is
  // changed only on success.
  static bool GetWebConsoleUrlInPreInstallMode(std::string hostName, std::string& url,
                                               std::string hostClientName);
};
