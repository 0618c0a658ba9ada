// Alerts, XML routing, log monitoring and the agent XML passthrough on appmgrd: every carrier of
// an XML request, and the routes behind them. docs/server.md ("Alerts and XML requests") says
// what each message means.
#pragma once

#include "server/core/Server.h"
#include "server/handlers/XmlRouter.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Every XML message appmgrd serves, by tag, built once.
const XmlRouter& AppMgrXmlRouter();

// Registers the binary alert, the XML carriers (HANDLE_XML, the five SendKpAlertXML requests,
// the agent XML passthrough, and XML frames whose tag has no handler of its own), and the
// log-monitoring requests.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterAlertAndXmlHandlers(Server& server, Store& store);

}  // namespace appmgr::server
