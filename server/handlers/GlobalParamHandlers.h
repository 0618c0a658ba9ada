// The request handlers of the global-parameter and application-property messages
// (protocol/messages/GlobalParam.def).
//
// Each message maps onto one GlobalParamStore operation; docs/server.md gives the meaning of
// each on the server. Meanings the records leave open:
// - a get answers the stored value, or the built-in default of a parameter or property number
//   that was never set;
// - both removals of a parameter (one request) remove its stored value; a built-in parameter
//   then reads as its default again;
// - application properties are addressed by id1, a client application type (an application of
//   a client), and id2, a property number;
// - a null text in a request (a name, a value) is an invalid argument, never a crash.
//
// Every failure is the response header's error code and text (HandlerSupport.h), with the
// response's other fields left zero.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every global-parameter and application-property message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterGlobalParamHandlers(Server& server, Store& store);

}  // namespace appmgr::server
