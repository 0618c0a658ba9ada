// EntityTreeStore: operations on an entity and everything under it, the entity named by its
// level in the tree (EntityLevel in appmgr/records/GenericRecords.h):
//
//   level 2  an application type on a client: (client id, application type id)
//   level 3  an instance: (instance id, 0)
//   level 4  a backup set: (backup set id, 0)
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

class EntityTreeStore {
 public:
  explicit EntityTreeStore(Store& store) : store_(store) {}

  // Sets or clears the contents-deleted flag of the named entity and of every entity below it
  // (application type -> instances -> backup sets -> subclients), in one transaction. Repeating
  // it is not an error. A missing entity is kStoreErrNotFound naming it; an unknown level, or a
  // second id where the level takes none, is kStoreErrInvalidArgument.
  CLmError SetSubtreeDeleted(uint32_t level, uint64_t id, uint64_t secondId, bool deleted);

 private:
  Store& store_;
};

}  // namespace appmgr::server
