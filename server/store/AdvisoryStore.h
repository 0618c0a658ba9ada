// AdvisoryStore: security advisories, as their sources publish them and as they apply to
// clients, and the advisory types the installation knows.
//
// A source (a feed) publishes a set of advisories; syncing a source replaces its whole set, and
// an advisory id belongs to one source at a time. The advisories that apply to a client are a
// set of their own, replaced whole by a client sync; each carries a state (enabled, disabled,
// acknowledged) that control requests change. A re-sync keeps the state of every advisory that
// stays, so an acknowledgement outlives the next scan of the client. Advisory types come from
// the fixture; an advisory may name a type the store does not know.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct Advisory {
  int64_t id = 0;
  int64_t type = 0;
  std::string title;
};

struct StoredAdvisory {
  static constexpr int kEnabled = 1;
  static constexpr int kDisabled = 2;
  static constexpr int kAcknowledged = 3;

  int64_t id = 0;
  int64_t type = 0;
  std::string title;
  uint64_t clientId = 0;  // 0 for an advisory of a source
  int state = 0;          // 0 for an advisory of a source
  std::string source;     // empty for an advisory of a client

  bool operator==(const StoredAdvisory&) const = default;
};

struct AdvisoryType {
  int64_t id = 0;
  std::string name;
  std::string description;

  bool operator==(const AdvisoryType&) const = default;
};

// The actions of Control.
enum class AdvisoryAction : int64_t { kEnable = 1, kDisable = 2, kAcknowledge = 3, kRemove = 4 };

struct AdvisoryTarget {
  int64_t advisoryId = 0;
  uint64_t clientId = 0;  // 0: every client the advisory applies to
};

class AdvisoryStore {
 public:
  explicit AdvisoryStore(Store& store) : store_(store) {}

  // The advisories that apply to the client become exactly `advisories`: new ones enabled,
  // those that stay keep their state and take the new type and title, the others go. The client
  // must exist; an advisory listed twice is kStoreErrInvalidArgument.
  CLmError SyncClient(uint64_t clientId, const std::vector<Advisory>& advisories);

  // The source's advisories become exactly `advisories`, in order. An empty source name, or an
  // advisory listed twice, is kStoreErrInvalidArgument; an advisory another source publishes is
  // kStoreErrConflict.
  CLmError SyncSource(const std::string& source, const std::vector<Advisory>& advisories);

  // Applies the action to every target, all or nothing. A target with client 0 reaches every
  // client the advisory applies to. A target that reaches nothing is kStoreErrNotFound; no
  // targets, or an action outside AdvisoryAction, is kStoreErrInvalidArgument.
  CLmError Control(int64_t action, const std::vector<AdvisoryTarget>& targets);

  // The advisory types that apply to the client (the known types of its advisories), or every
  // known type for client 0; by id.
  CLmError Types(uint64_t clientId, std::vector<AdvisoryType>* out);

  // The advisories that apply to the client (every client for 0), by client and advisory id.
  CLmError ForClients(uint64_t clientId, std::vector<StoredAdvisory>* out);
  // The advisories the source publishes, in its order (none for a source that never synced).
  CLmError ForSource(const std::string& source, std::vector<StoredAdvisory>* out);

 private:
  Store& store_;
};

}  // namespace appmgr::server
