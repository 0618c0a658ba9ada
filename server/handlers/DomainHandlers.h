// The request handlers of the domain messages (protocol/messages/Domain.def).
//
// Each message maps onto one DomainStore operation; docs/server.md gives the meaning of each on
// the server. Meanings the records leave open:
// - id1 is the domain's id, id2 the Controlhost's client id, text1 the domain's name, text2
//   the Controlhost's host name, text3 a description, text4 a version; id3, id4, text5 and
//   text6 are kept as given; the number is fixed when the domain is created;
// - an installation has one domain: id1 0 names it in a lookup and a modify; a create while it
//   exists is refused; a remove must name its id;
// - a lookup reads only id1; lookup, create and modify answer the whole record as stored;
// - a null text in a create or modify is an invalid argument, never a crash.
//
// Every failure is the response header's error code and text (HandlerSupport.h), with the
// response's other fields left zero.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers a handler on `server` for every domain message.
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterDomainHandlers(Server& server, Store& store);

}  // namespace appmgr::server
