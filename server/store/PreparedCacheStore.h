// PreparedCacheStore: request/response pairs the server prepared for a job.
//
// A client process of a job may ask for them all at once and answer those requests from its own
// cache afterwards. Each entry is an encoded request under its message id and the encoded
// response under the response id that answers it; the store keeps them as bytes and does not
// look inside.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct PreparedCacheEntry {
  uint32_t requestId = 0;
  uint32_t responseId = 0;
  std::vector<uint8_t> request;
  std::vector<uint8_t> response;

  bool operator==(const PreparedCacheEntry&) const = default;
};

class PreparedCacheStore {
 public:
  explicit PreparedCacheStore(Store& store) : store_(store) {}

  // The job's entries in their stored order. A job with none (jobs are not entities of the
  // store, so any number is a valid job) gives an empty list.
  CLmError Entries(uint64_t jobId, std::vector<PreparedCacheEntry>* out);

  // Appends entries to the job's list, in one transaction.
  CLmError Append(uint64_t jobId, const std::vector<PreparedCacheEntry>& entries);

 private:
  Store& store_;
};

}  // namespace appmgr::server
