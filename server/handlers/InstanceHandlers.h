// The request handlers of the instance messages (protocol/messages/Instance.def).
//
// Meanings the records leave open (docs/server.md, "Instances and application types"):
// - lookup answers the instance's id, name, value, attributes 2 to 4 and text as stored;
// - update renames the instance and sets its value;
// - the property messages act on entity kind "instance": a get passes its table selector
//   through, set and remove act on table 0, set's flag is "replace all", the removes' flag is
//   "strict" (PropertyHandlers.h);
// - the availability-group message is a set (flag "replace all") on the instance's property
//   table kAvailabilityGroupPropertyTable, apart from its own properties;
// - the content read-out answers the whole content list in order (its value is accepted and not
//   used); the content update follows ContentStore's rules, its first flag being "replace";
// - delete-all and undelete-all are the entity tree's (EntityTreeHandlers.h).
// A null text in a request is an invalid argument, never a crash.
#pragma once

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterInstanceHandlers(Server& server, Store& store);

}  // namespace appmgr::server
