#include "server/store/IdCounter.h"

#include <cstdint>

#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

struct TableInfo {
  const char* entity;  // the counter's key
  const char* last;    // one parameter, the key; one row: the highest id handed out or in use
};

// The SQL is fixed per table: a table name cannot be a parameter, and is never spliced in.
TableInfo InfoOf(IdTable table) {
  switch (table) {
    case IdTable::kClients:
      return {"clients",
              "SELECT max(coalesce((SELECT last_id FROM id_counters WHERE entity = ?1), 0),"
              " coalesce((SELECT max(id) FROM clients), 0))"};
    case IdTable::kAppIds:
      return {"app_ids",
              "SELECT max(coalesce((SELECT last_id FROM id_counters WHERE entity = ?1), 0),"
              " coalesce((SELECT max(id) FROM app_ids), 0))"};
  }
  return {"", ""};
}

}  // namespace

CLmError NextId(Store::Transaction& txn, IdTable table, uint64_t* id) {
  const TableInfo info = InfoOf(table);
  Statement next = txn.Prepare(info.last);
  next.BindText(1, info.entity);
  bool row = false;
  if (CLmError e = next.Step(&row)) return e;
  const int64_t last = row ? next.Int(0) : 0;
  if (last < 0 || last == INT64_MAX) {
    // Ids are positive signed 64-bit values in the schema; past the largest there is none.
    return CLmError::Format(kStoreErrConflict, "no %s id is left to assign", info.entity);
  }
  const int64_t value = last + 1;
  Statement advance = txn.Prepare(
      "INSERT INTO id_counters (entity, last_id) VALUES (?1, ?2)"
      " ON CONFLICT (entity) DO UPDATE SET last_id = excluded.last_id");
  advance.BindText(1, info.entity).BindInt(2, value);
  if (CLmError e = advance.Run()) return e;
  *id = static_cast<uint64_t>(value);
  return CLmError();
}

}  // namespace appmgr::server
