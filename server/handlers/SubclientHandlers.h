// The request handlers of the subclient messages (protocol/messages/Subclient.def).
//
// Each message maps onto one SubclientStore, ContentStore or PropertyStore operation;
// docs/server.md ("Subclients") gives the meaning of each on the server. Meanings the records
// leave open:
// - a look-up answers the subclient's id, name, value, the three attributes and its text, and
//   the backup set in the field neither look-up reads;
// - the content read-out answers the stored content flag and the content list in its order;
//   the request's `long` is not used;
// - a content update removes, then adds, in one transaction; its first flag means "replace
//   every stored entry of the types added", the other two are not used. A null or empty entry
//   text is refused and nothing is stored;
// - both association messages replace the subclient's whole list of that kind;
// - pair data: `first` is the subclient, `second` the replication pair, the third number the
//   selector; the read answers the pair's state and the stored text; the set's flag means
//   "replace what is stored";
// - the backup-set content question reads numbers 3 to 7 of the application id as client,
//   application type, instance, backup set and subclient, the number after it as a content
//   type (0: all) and the flag as "count subclients whose contents are marked deleted".
// Every failure is the response header's error code and text, with the other fields zero.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every subclient message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterSubclientHandlers(Server& server, Store& store);

}  // namespace appmgr::server
