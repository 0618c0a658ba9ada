// The request handlers of the application-id messages (protocol/messages/AppId.def).
//
// Each message maps onto one AppIdStore operation; docs/server.md gives the meaning of each.
// Meanings the records leave open:
// - number 0 is the application id; numbers 3 to 8 and texts 0 to 2 name the object it stands
//   for; numbers 1 and 2 and the option are kept as sent;
// - get and remove name the id by number 0, or by the object when number 0 is 0; create takes a
//   zero number 0 as "choose one";
// - the archive-group update's three values are the id, its archive group and its incremental
//   archive group; the incremental read answers the latter (0 when never set).
// A null text in a request is kStoreErrInvalidArgument: an id is found by exact texts, and a
// missing one cannot be guessed.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every application-id message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterAppIdHandlers(Server& server, Store& store);

}  // namespace appmgr::server
