// The request handlers of the backup-set messages (protocol/messages/BackupSet.def).
//
// Each message maps onto one BackupSetStore or PropertyStore operation; docs/server.md gives
// the meaning of each on the server. Meanings the records leave open:
// - lookup answers the backup set's name, its 64-bit value, and its description as the second
//   text;
// - the property messages act on the properties of entity kind "backup set"; a get passes its
//   table selector through, set and remove act on table 0;
// - the flag of set-properties means "replace all": 1 makes the list the backup set's whole
//   property table, 0 adds and updates in place;
// - the flag of both remove-properties messages means "strict": 1 fails (removing nothing) when
//   any named property is absent, 0 ignores absent names. Remove-by-properties uses only the
//   names of its elements;
// - delete-all and undelete-all are the entity tree's (EntityTreeHandlers.h);
// - the pair-conflict check takes text1 as the source and text2 as the destination of the new
//   pair; pair1 is the existing pair it conflicts with (all zero when none does) and pair2 the
//   proposed pair. In each: id1 pair id, id2 backup set, id3 source client, id4 destination
//   client, text1 source, text2 source GUID, text3 destination GUID, text4 destination, value
//   the pair's state. Texts are NUL-terminated copies, cut to fit their arrays.
// - a null text in a request (a name, a store name, a property name or value, a pair text) is an
//   invalid argument, never a crash.
//
// Every failure is the response header's error code and text (HandlerSupport.h), with the
// response's other fields left zero.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every backup-set message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterBackupSetHandlers(Server& server, Store& store);

}  // namespace appmgr::server
