// Every request handler of appmgrd, registered in one call: the program and the tests that run
// a whole server use this, so a family of handlers added here is served everywhere at once.
#pragma once

#include <string>

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// What handlers need beyond the store.
struct HandlerConfig {
  // The web console address the pre-install look-up answers with.
  std::string webConsoleUrl;
  // Snapshot records, mailbox delegates, file transfer: the folder the file-transfer facility
  // writes (empty: files are not received).
  std::string tempDirectory;
};

// Registers the handler of every message the server answers.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterAllHandlers(Server& server, Store& store, const HandlerConfig& config);

}  // namespace appmgr::server
