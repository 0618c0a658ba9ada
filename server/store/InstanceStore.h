// InstanceStore: the operations of the instance requests that are not content, properties or
// the delete-all pair (ContentStore, PropertyStore and EntityTreeStore keep those).
//
// Each operation is one transaction and names the instance by id. A missing instance is
// kStoreErrNotFound, "instance 42 does not exist". Outputs are written only on success.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct InstanceInfo {
  std::string name;
  int64_t value = 0;
  uint64_t attr2 = 0;
  uint64_t attr3 = 0;
  uint64_t attr4 = 0;
  std::string text;

  bool operator==(const InstanceInfo&) const = default;
};

// The property table that holds an instance's availability-group properties: apart from its
// own (table 0), so that setting one never replaces the other.
inline constexpr int64_t kAvailabilityGroupPropertyTable = 2;

class InstanceStore {
 public:
  explicit InstanceStore(Store& store) : store_(store) {}

  CLmError Lookup(uint64_t id, InstanceInfo* out);

  // Renames the instance and sets its value. An empty name is kStoreErrInvalidArgument; a name
  // that another instance of the same application type on the same client has is
  // kStoreErrConflict.
  CLmError Update(uint64_t id, const std::string& name, int64_t value);

 private:
  Store& store_;
};

}  // namespace appmgr::server
