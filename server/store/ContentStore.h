// ContentStore: the content lists of subclients and instances (paths, database names, ...).
//
// An entity's content is an ordered list of (entry, content type). Reads return it in the order
// the entries were added. An update is one write transaction: it removes, then adds, and either
// all of it is stored or none of it.
//
// Update rules, the same for both owners:
//  - `replace` first removes every entry of the content types that the entries to add carry;
//  - an entry to remove that is not there is ignored (removing is idempotent);
//  - an entry to add that is already there, with the same type, is not stored twice;
//  - an empty entry text is refused (kStoreErrInvalidArgument), naming its place in the list;
//  - a missing owner is kStoreErrNotFound ("subclient 42 does not exist").
// The work is linear in the entity's content plus the request: the current content is read
// once into a hash set, never searched per entry.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/EntityKind.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct ContentEntry {
  std::string entry;
  uint64_t type = 0;

  bool operator==(const ContentEntry&) const = default;
};

class ContentStore {
 public:
  explicit ContentStore(Store& store) : store_(store) {}

  // `owner` is EntityKind::kSubclient or EntityKind::kInstance; any other kind is
  // kStoreErrInvalidArgument.
  CLmError Read(EntityKind owner, uint64_t id, std::vector<ContentEntry>* out);
  CLmError Update(EntityKind owner, uint64_t id, std::span<const ContentEntry> add,
                  std::span<const ContentEntry> remove, bool replace);

 private:
  Store& store_;
};

}  // namespace appmgr::server
