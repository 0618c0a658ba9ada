// Log monitoring on appmgrd: the parameter look-up, the log-monitoring passthrough and the XML
// messages it carries, onto LogMonitorStore. docs/server.md ("Alerts and XML requests") says
// what each means.
#pragma once

#include "server/core/Server.h"
#include "server/handlers/XmlRouter.h"
#include "server/store/Store.h"

namespace appmgr::server {

// GET_LOG_MONITORING_PARAM and HANDLE_LOG_MONITOR_XML.
// REQUIRES: `store` outlives every request the server answers.
void RegisterLogMonitorHandlers(Server& server, Store& store);

// App::LogMonitoringParamsReq and App::SetLogMonitoringParams, also reachable through the other
// XML carriers.
void AddLogMonitorRoutes(XmlRouter& router);

}  // namespace appmgr::server
