// The request handlers of the application-type messages (protocol/messages/AppType.def).
//
// Every request names an application type on a client by (client id, application type id);
// create and remove send the client first, lookup and update the application type first, and
// the handlers read each in its own order. Meanings (docs/server.md, "Instances and
// application types"):
// - create puts a catalogued application type on a client; remove takes it off with everything
//   under it, refused while an instance under it is not marked deleted (AppTypeStore.h);
// - lookup answers the catalogue's name of the type and the value kept for it on the client;
//   update sets that value;
// - the property messages act on entity kind "client application type" with the same meanings
//   as every property message (PropertyHandlers.h);
// - the volume-property message stores one record per volume (AppTypeStore::SetVolumeProperty);
// - delete-all and undelete-all are the entity tree's (EntityTreeHandlers.h).
// A missing client, type or pair is code 1 naming it; a null text is code 3.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterAppTypeHandlers(Server& server, Store& store);

}  // namespace appmgr::server
