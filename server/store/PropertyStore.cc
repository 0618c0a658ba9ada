#include "server/store/PropertyStore.h"

#include <algorithm>
#include <cinttypes>

#include "server/store/StoreErrors.h"

namespace appmgr::server {

CLmError PropertyStore::Get(EntityKind kind, uint64_t id, int64_t table,
                            std::vector<Property>* out) {
  Store::Transaction txn(store_, "reading properties", Store::Transaction::kRead);
  if (CLmError e = RequireEntity(txn, kind, id)) return e;
  Statement st = txn.Prepare(
      "SELECT name, type, value FROM properties"
      " WHERE entity_kind = ?1 AND entity_id = ?2 AND table_selector = ?3 ORDER BY rowid");
  st.BindInt(1, static_cast<int>(kind)).BindU64(2, id).BindInt(3, table);
  std::vector<Property> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(Property{st.Text(0), st.U64(1), st.Text(2)});
  }
  *out = std::move(found);
  return CLmError();
}

CLmError PropertyStore::Set(EntityKind kind, uint64_t id, const std::vector<Property>& properties,
                            bool replaceAll, int64_t table) {
  for (const Property& p : properties) {
    if (p.name.empty()) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "a property of %s %" PRIu64 " has an empty name",
                              EntityKindName(kind), id);
    }
  }
  Store::Transaction txn(store_, "setting properties", Store::Transaction::kWrite);
  if (CLmError e = RequireEntity(txn, kind, id)) return e;
  if (replaceAll) {
    Statement clear = txn.Prepare(
        "DELETE FROM properties"
        " WHERE entity_kind = ?1 AND entity_id = ?2 AND table_selector = ?3");
    clear.BindInt(1, static_cast<int>(kind)).BindU64(2, id).BindInt(3, table);
    if (CLmError e = clear.Run()) return e;
  }
  // An update in place keeps the row, and with it the property's place in the order.
  for (const Property& p : properties) {
    Statement st = txn.Prepare(
        "INSERT INTO properties (entity_kind, entity_id, table_selector, name, type, value)"
        " VALUES (?1, ?2, ?3, ?4, ?5, ?6)"
        " ON CONFLICT (entity_kind, entity_id, table_selector, name)"
        " DO UPDATE SET type = excluded.type, value = excluded.value");
    st.BindInt(1, static_cast<int>(kind)).BindU64(2, id).BindInt(3, table);
    st.BindText(4, p.name).BindU64(5, p.type).BindText(6, p.value);
    if (CLmError e = st.Run()) return e;
  }
  return txn.Commit();
}

CLmError PropertyStore::Remove(EntityKind kind, uint64_t id, const std::vector<std::string>& names,
                               bool strict, int64_t table) {
  Store::Transaction txn(store_, "removing properties", Store::Transaction::kWrite);
  if (CLmError e = RequireEntity(txn, kind, id)) return e;
  std::vector<const std::string*> missing;
  for (size_t i = 0; i < names.size(); ++i) {
    Statement st = txn.Prepare(
        "DELETE FROM properties"
        " WHERE entity_kind = ?1 AND entity_id = ?2 AND table_selector = ?3 AND name = ?4");
    st.BindInt(1, static_cast<int>(kind)).BindU64(2, id).BindInt(3, table).BindText(4, names[i]);
    if (CLmError e = st.Run()) return e;
    // A name given twice is absent the second time only because the first removed it.
    if (strict && st.Changes() == 0 &&
        std::find(names.begin(), names.begin() + static_cast<ptrdiff_t>(i), names[i]) ==
            names.begin() + static_cast<ptrdiff_t>(i)) {
      missing.push_back(&names[i]);
    }
  }
  if (!missing.empty()) {
    std::string list;
    for (const std::string* name : missing) list += (list.empty() ? "'" : ", '") + *name + "'";
    // Returning without Commit rolls back: a strict remove changes all or nothing.
    return CLmError::Format(kStoreErrNotFound, "%s %" PRIu64 " has no %s %s", EntityKindName(kind),
                            id, missing.size() == 1 ? "property" : "properties", list.c_str());
  }
  return txn.Commit();
}

}  // namespace appmgr::server
