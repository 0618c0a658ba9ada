// The four property messages of an entity kind (get, set, remove by properties, remove by
// names), answered from PropertyStore. Every interface with properties sends the same records
// under its own ids; this registers one kind's four.
//
// Meanings: a get passes its table selector through; set and remove act on table 0. The flag of
// set means "replace all": 1 makes the list the entity's whole table 0, 0 adds and updates in
// place. The flag of both removes means "strict": 1 removes nothing and fails naming every
// absent property when any is absent; 0 ignores absent names. Remove-by-properties reads only
// the elements' names. A null name or value is kStoreErrInvalidArgument ("property 2 of 3 in the
// request has no name"); a missing entity kStoreErrNotFound ("client 42 does not exist").
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "appmgr/records/GenericRecords.h"
#include "protocol/Message.h"
#include "server/core/Server.h"
#include "server/store/EntityKind.h"
#include "server/store/PropertyStore.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct PropertyMessages {
  const wire::Op<GenericGetPropsReq, GenericGetPropsResp>& get;
  const wire::Op<GenericSetPropsReq, GenericResp>& set;
  const wire::Op<GenericRemovePropsReq1, GenericResp>& remove;
  const wire::Op<GenericRemovePropsReq2, GenericResp>& removeNames;
};

// The property elements of a request as store properties; `withValues` also requires each
// value (set reads them, remove by properties does not). A null name or value, or a null array
// with a count, is kStoreErrInvalidArgument naming the element. For handlers whose requests
// name their entity otherwise than by one id.
CLmError PropertiesOf(uint32_t count, const AppMgrProps* props, bool withValues,
                      std::vector<Property>* out);
// The name elements of a remove-by-names request, with the same checks.
CLmError NamesOf(uint32_t count, const AppStringList* names, std::vector<std::string>* out);

// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterPropertyHandlers(Server& server, Store& store, EntityKind kind,
                              const PropertyMessages& messages);

}  // namespace appmgr::server
