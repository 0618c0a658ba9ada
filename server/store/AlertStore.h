// AlertStore: the alerts the App Manager has received, listed and acknowledged.
//
// An alert is stored as it arrived: the binary alert record or one entry of an XML alert list,
// with the time the server received it, the fields the server lists and filters by as columns,
// and everything the sender gave as a JSON object (`details`). The store hands out alert ids
// (ascending, never reused). Alerts are kept until the database is cleaned by other means.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct StoredAlert {
  static constexpr int kSourceRecord = 1;  // the binary alert record
  static constexpr int kSourceXml = 2;     // an entry of an XML alert list
  static constexpr int64_t kSeverityNone = 0;
  static constexpr int64_t kSeverityInfo = 1;
  static constexpr int64_t kSeverityWarning = 2;
  static constexpr int64_t kSeverityError = 3;
  static constexpr int64_t kSeverityCritical = 4;

  uint64_t id = 0;  // given by Add
  int source = kSourceRecord;
  int64_t receivedAt = 0;  // seconds since 1970-01-01 UTC
  int64_t raisedAt = 0;    // as the sender gave it; 0: it gave none
  int64_t alertType = 0;
  int64_t alertCriteria = 0;
  int64_t alertStatus = 0;
  int64_t severity = kSeverityNone;
  int64_t clientId = 0;
  std::string clientName;
  uint64_t backupSetId = 0;
  uint64_t jobId = 0;
  std::string text;
  std::string details = "{}";  // a JSON object
  int64_t acknowledgedAt = 0;  // 0: not acknowledged
  std::string acknowledgedBy;

  bool operator==(const StoredAlert&) const = default;
};

struct AlertFilter {
  int64_t clientId = 0;  // 0: every client
  bool unacknowledgedOnly = false;
  uint64_t limit = 0;  // the most recent so many; 0: all
};

class AlertStore {
 public:
  explicit AlertStore(Store& store) : store_(store) {}

  // Stores the alerts, all in one transaction, and sets each one's id and client name. All or
  // nothing: a client id other than 0 must name a client (kStoreErrNotFound "client 42 does not
  // exist"), the severity must be one of kSeverity*, and `details` must be a JSON object
  // (kStoreErrInvalidArgument); with several alerts the text names which ("alert 2 of 3: ...").
  // An alert with a client and no client name takes the client's name.
  CLmError Add(std::vector<StoredAlert>& alerts);

  // The alerts the filter selects, oldest first. A client filter that names no client and no
  // stored alert is kStoreErrNotFound.
  CLmError List(const AlertFilter& filter, std::vector<StoredAlert>* out);

  // Marks the alerts acknowledged at `when` by `by`. All or nothing: an id that names no alert is
  // kStoreErrNotFound ("alert 42 does not exist") and nothing changes; an empty list is
  // kStoreErrInvalidArgument. An alert acknowledged before keeps its first acknowledgement.
  CLmError Acknowledge(const std::vector<uint64_t>& ids, const std::string& by, int64_t when);

 private:
  Store& store_;
};

}  // namespace appmgr::server
