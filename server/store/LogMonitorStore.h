// LogMonitorStore: log-monitoring parameters, text values kept by (entity, type, name).
//
// The entity is whatever the monitoring configuration names (a client, a policy): the store
// takes its id as given and does not check it against other tables. Types run from 0 to
// 2^32-1; names are not empty and compared exactly.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct LogParam {
  uint32_t type = 0;
  std::string name;
  std::string value;

  bool operator==(const LogParam&) const = default;
};

class LogMonitorStore {
 public:
  explicit LogMonitorStore(Store& store) : store_(store) {}

  // The value of one parameter; kStoreErrNotFound when it is not set.
  CLmError Get(uint64_t entityId, uint32_t type, const std::string& name, std::string* value);
  // The entity's parameters of `type`, or of every type when `allTypes`; by type and name.
  CLmError List(uint64_t entityId, uint32_t type, bool allTypes, std::vector<LogParam>* out);
  // Sets each parameter (inserted, or its value replaced), all or nothing. An empty name is
  // kStoreErrInvalidArgument.
  CLmError Set(uint64_t entityId, const std::vector<LogParam>& params);
  // Removes each parameter (by type and name), all or nothing: one that is not set is
  // kStoreErrNotFound and nothing is removed.
  CLmError Remove(uint64_t entityId, const std::vector<LogParam>& params);
  // The entity's parameters become exactly `params` (an empty list removes them all).
  CLmError Replace(uint64_t entityId, const std::vector<LogParam>& params);

 private:
  Store& store_;
};

}  // namespace appmgr::server
