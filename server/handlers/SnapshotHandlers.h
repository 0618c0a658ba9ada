// The request handlers of the snapshot-information and mailbox-delegate messages
// (protocol/messages/SnapInfo.def, MailBoxDelegate.def).
//
// Each message maps onto one SnapshotStore or DelegateStore operation; docs/server.md gives the
// meaning of each on the server. Meanings the records leave open:
// - a snapshot record is named by F2 (slot 1), a delegate by G7 (slot 6); lookup and remove
//   read nothing else of the request;
// - create makes a new record (an id in use is a conflict), update changes one that exists,
//   set and the list writes create or update; the list writes are all or nothing;
// - F3 is written only by set and the snapshot list write: create stores it empty and update
//   keeps it, since the library does not carry it there. F7 and F14 are stored by a create and
//   never changed afterwards;
// - a delegate list is selected by G1 (0: every delegate); a delegate list removal fails,
//   removing nothing, when any named delegate is missing;
// - a null text where a request carries one is an invalid argument, never a crash; texts that
//   do not travel (F3 of create and update, F14 always) may be null.
//
// Every failure is the response header's error code and text (HandlerSupport.h), with the
// response's other fields left zero.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every snapshot-information and mailbox-delegate message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterSnapshotHandlers(Server& server, Store& store);

}  // namespace appmgr::server
