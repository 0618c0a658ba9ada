// The request handlers of the client-group messages (protocol/messages/ClientGroup.def).
//
// Each message maps onto one ClientGroupStore operation; docs/server.md gives the meaning of
// each on the server. Meanings the records leave open:
// - int1 is the group's id, text1 its name, text2 its description; int2 to int6 and text3 are
//   kept as given;
// - a lookup finds the group by its name (text1), regardless of case; the request's other
//   fields are not read;
// - a create takes everything but the id, which the server gives; the answer, of either, is
//   the whole group as stored;
// - a null text in a request is an invalid argument, never a crash.
//
// Every failure is the response header's error code and text (HandlerSupport.h), with the
// response's other fields left zero.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every client-group message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterClientGroupHandlers(Server& server, Store& store);

}  // namespace appmgr::server
