// Alerts on appmgrd: the binary alert record, and the XML alert list, alert listing and
// acknowledgement, onto AlertStore. docs/server.md ("Alerts and XML requests") says what each
// means.
#pragma once

#include "server/core/Server.h"
#include "server/handlers/XmlRouter.h"
#include "server/store/Store.h"

namespace appmgr::server {

// The binary alert record (SEND_ALERT_EX).
// REQUIRES: `store` outlives every request the server answers.
void RegisterAlertHandlers(Server& server, Store& store);

// The XML messages of alerts: KPGui::AlertEvAlertExList, AlertListReq, AlertAckReq.
void AddAlertRoutes(XmlRouter& router);

}  // namespace appmgr::server
