// The request handlers of the client messages (protocol/messages/Client.def).
//
// Each message maps onto one ClientStore or PropertyStore operation; docs/server.md gives the
// meaning of each. Meanings the records leave open:
// - a client record's integer 1 is the client's id, integer 2 its platform type, text 1 its
//   name and text 2 its host name; the other numbers and texts are kept as sent. Integer 5 is
//   taken whole (the 64-bit field), and must agree with its 32-bit field, or the request is
//   refused rather than one of the two being dropped; answers carry both;
// - look-up names the client by its id, or by its name when the id is 0;
// - create takes a zero id as "choose one"; a null text (other than the name) is stored empty,
//   and the platform texts, which a create never carries, are stored empty;
// - modify changes every number, every text that is not null and the platforms carried (values
//   always, texts when not null);
// - remove refuses a client that still has application types or receives replication;
// - the properties are those of entity kind "client" (PropertyHandlers.h);
// - the volume-pair query's option 0 lists every pair, a positive option only pairs in that
//   state; the replication-set query answers the backup sets, their source clients (parallel to
//   them) and the pairs; the ASM query's id1 is the client and id2 an application type or 0;
// - the file-system node report replaces the client's previous one.
// A null text a request needs (a name to look up, a GUID, a property, the node data) is
// kStoreErrInvalidArgument, never a crash.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every client message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterClientHandlers(Server& server, Store& store);

}  // namespace appmgr::server
