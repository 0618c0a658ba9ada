// The request handlers of the messages that act on an entity and everything under it
// (protocol/messages/EntityTree.def): delete-all and undelete-all.
//
// The request names its entity by level: 4 a backup set (id; second id 0), 3 an instance (id;
// second id 0), 2 an application type on a client (id the client, second id the application
// type). Delete-all sets the contents-deleted flag of that entity and of everything under it,
// undelete-all clears it, in one transaction (EntityTreeStore). The application-type
// delete-all (0x34000307) is the same operation; its option field is accepted and not used.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every message of the entity tree.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterEntityTreeHandlers(Server& server, Store& store);

}  // namespace appmgr::server
