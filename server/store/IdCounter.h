// Ids the server assigns to entities it creates.
//
// An assigned id is one above the larger of the table's counter (id_counters) and its highest
// id in use, and the counter is advanced to it: an id is never handed out twice, even after its
// entity was removed, and ids that a fixture or a request gave explicitly are stepped over.
#pragma once

#include <cstdint>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

// The tables whose ids the server assigns.
enum class IdTable { kClients, kAppIds };

// The next id of `table`; the counter is advanced within `txn`, so a rolled-back transaction
// hands the id out again. REQUIRES: `txn` is a write transaction.
CLmError NextId(Store::Transaction& txn, IdTable table, uint64_t* id);

}  // namespace appmgr::server
