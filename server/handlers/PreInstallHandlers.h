// The XML handler of the pre-install lookup: a machine that is not yet registered asks for the
// web console's address with an App::GetDataInPreInstallModeReq and gets an
// App::GetDataInPreInstallModeResp whose field 1 is the configured address. The request's
// content is not read. An empty configured address answers with field 1 present and empty, the
// answer of a server that has no console, which clients treat as a failure.
#pragma once

#include <string>

#include "platform/base/CLmError.h"
#include "server/core/Server.h"

namespace appmgr::server {

// Succeeds when `url` can travel in the answer (UTF-8 text of characters XML can carry);
// otherwise kKpErrBadArgument saying why.
CLmError CheckWebConsoleUrl(const std::string& url);

// REQUIRES: CheckWebConsoleUrl(webConsoleUrl) succeeds; otherwise the answer's field 1 is empty.
void RegisterPreInstallHandlers(Server& server, std::string webConsoleUrl);

}  // namespace appmgr::server
