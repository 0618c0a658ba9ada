// PropertyStore: the named properties of any entity, on the store.
//
// An entity's properties are (name, 64-bit type, text value) triples, kept in tables numbered
// by a 64-bit selector. Names are unique within one (entity, table) and read back in the order
// in which each name was first set. Requests that set or remove properties carry no selector:
// they act on table 0, the table a read with selector 0 returns; the `table` arguments below
// default to it and let other callers (fixtures, future handlers) reach other tables.
//
// Every operation first checks that the entity exists: properties of a missing entity fail with
// kStoreErrNotFound ("backup set 42 does not exist"), never read as an empty list.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store; each
// operation is one transaction.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/EntityKind.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct Property {
  std::string name;
  uint64_t type = 0;
  std::string value;

  bool operator==(const Property&) const = default;
};

class PropertyStore {
 public:
  explicit PropertyStore(Store& store) : store_(store) {}

  // *out becomes the properties of one table of the entity, in order (empty when it has none).
  CLmError Get(EntityKind kind, uint64_t id, int64_t table, std::vector<Property>* out);

  // replaceAll: the table's properties become exactly `properties`, in their order.
  // Otherwise each one is inserted, or updates the type and value of the property of that name
  // in place. When a name occurs twice, the later one wins. An empty name fails the whole call
  // with kStoreErrInvalidArgument and changes nothing.
  CLmError Set(EntityKind kind, uint64_t id, const std::vector<Property>& properties,
               bool replaceAll, int64_t table = 0);

  // Removes the named properties. strict: when any name is absent, fails with
  // kStoreErrNotFound naming every absent one, and removes nothing. Not strict: absent names are
  // ignored.
  CLmError Remove(EntityKind kind, uint64_t id, const std::vector<std::string>& names, bool strict,
                  int64_t table = 0);

 private:
  Store& store_;
};

}  // namespace appmgr::server
