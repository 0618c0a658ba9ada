// The request handlers of the entity list messages (protocol/messages/Lists.def).
//
// Each message maps onto one ListStore list; docs/server.md gives every selector's meaning.
// The answer's arrays are sized once, from the store's count, in the exchange's memory, and
// each row goes straight into them: a long list costs the answer and nothing more. Members come
// in ascending id. A filter naming an entity that does not exist is kStoreErrNotFound; a null
// domain name, or a value selector this server does not know, is kStoreErrInvalidArgument.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every entity list message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterListHandlers(Server& server, Store& store);

}  // namespace appmgr::server
