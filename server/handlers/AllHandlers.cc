#include "server/handlers/AllHandlers.h"

#include "server/handlers/AppIdHandlers.h"
#include "server/handlers/AppTypeHandlers.h"
#include "server/handlers/BackupSetHandlers.h"
#include "server/handlers/CacheHandlers.h"
#include "server/handlers/ClientHandlers.h"
#include "server/handlers/EntityTreeHandlers.h"
#include "server/handlers/FileContentHandlers.h"
#include "server/handlers/ListHandlers.h"
#include "server/handlers/ClientGroupHandlers.h"
#include "server/handlers/DomainHandlers.h"
#include "server/handlers/GlobalParamHandlers.h"
#include "server/handlers/InstanceHandlers.h"
#include "server/handlers/PreInstallHandlers.h"
#include "server/handlers/SubclientHandlers.h"
#include "server/handlers/XmlHandlers.h"
#include "server/handlers/SnapshotHandlers.h"

namespace appmgr::server {

// One line per family of messages; each family keeps its own block, so families added side by
// side do not touch each other's lines.
void RegisterAllHandlers(Server& server, Store& store, const HandlerConfig& config) {
  RegisterCacheHandlers(server, store);
  RegisterPreInstallHandlers(server, config.webConsoleUrl);

  RegisterEntityTreeHandlers(server, store);

  RegisterBackupSetHandlers(server, store);

  // clients and application ids
  RegisterClientHandlers(server, store);
  RegisterAppIdHandlers(server, store);

  // global parameters, application properties, client groups, the domain
  RegisterGlobalParamHandlers(server, store);
  RegisterClientGroupHandlers(server, store);
  RegisterDomainHandlers(server, store);

  // entity lists (the adapters interface)
  RegisterListHandlers(server, store);

  // subclients
  RegisterSubclientHandlers(server, store);

  // instances and application types
  RegisterInstanceHandlers(server, store);
  RegisterAppTypeHandlers(server, store);

  // alerts, XML routing, log monitoring, certificates
  RegisterAlertAndXmlHandlers(server, store);

  // snapshot records, mailbox delegates, file transfer
  RegisterSnapshotHandlers(server, store);
  RegisterFileContentHandlers(server, store, config.tempDirectory);
}

}  // namespace appmgr::server
