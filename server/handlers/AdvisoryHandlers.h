// Security advisories on appmgrd: the XML messages that sync, control and list them and their
// types, onto AdvisoryStore. docs/server.md ("Alerts and XML requests") says what each means.
#pragma once

#include "server/handlers/XmlRouter.h"

namespace appmgr::server {

// KPGui::SyncSRMClientAdvisories, SyncSRMSourceAdvisories, ControlSRMAdvisories,
// AlertSRMAdvisoryTypeListReq and SRMAdvisoryListReq.
void AddAdvisoryRoutes(XmlRouter& router);

}  // namespace appmgr::server
