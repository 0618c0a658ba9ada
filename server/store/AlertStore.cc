#include "server/store/AlertStore.h"

#include <algorithm>
#include <cinttypes>
#include <string>

#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

constexpr const char* kColumns =
    "id, source, received_at, raised_at, alert_type, alert_criteria, alert_status, severity,"
    " client_id, client_name, backup_set_id, job_id, text, details,"
    " coalesce(acknowledged_at, 0), acknowledged_by";

// "alert 2 of 3: " when several alerts are stored at once; nothing for a single one.
std::string Which(size_t i, size_t count) {
  if (count < 2) return std::string();
  return "alert " + std::to_string(i + 1) + " of " + std::to_string(count) + ": ";
}

StoredAlert Read(const Statement& st) {
  StoredAlert a;
  a.id = st.U64(0);
  a.source = static_cast<int>(st.Int(1));
  a.receivedAt = st.Int(2);
  a.raisedAt = st.Int(3);
  a.alertType = st.Int(4);
  a.alertCriteria = st.Int(5);
  a.alertStatus = st.Int(6);
  a.severity = st.Int(7);
  a.clientId = st.Int(8);
  a.clientName = st.Text(9);
  a.backupSetId = st.U64(10);
  a.jobId = st.U64(11);
  a.text = st.Text(12);
  a.details = st.Text(13);
  a.acknowledgedAt = st.Int(14);
  a.acknowledgedBy = st.Text(15);
  return a;
}

}  // namespace

CLmError AlertStore::Add(std::vector<StoredAlert>& alerts) {
  Txn txn(store_, "storing alerts", Txn::kWrite);
  std::vector<uint64_t> ids;
  ids.reserve(alerts.size());
  std::vector<std::string> names;
  names.reserve(alerts.size());
  for (size_t i = 0; i < alerts.size(); ++i) {
    const StoredAlert& a = alerts[i];
    if (a.severity < 0 || a.severity > StoredAlert::kSeverityCritical) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "%sseverity %" PRId64
                              " is not one of 0 none, 1 info, 2 warning, 3 error, 4 critical",
                              Which(i, alerts.size()).c_str(), a.severity);
    }
    // A client the App Manager does not know is refused, so that no alert is filed under a
    // client that does not exist; an alert without a name takes its client's.
    std::string clientName = a.clientName;
    if (a.clientId != 0) {
      Statement client = txn.Prepare("SELECT name FROM clients WHERE id = ?1");
      client.BindInt(1, a.clientId);
      bool found = false;
      if (CLmError e = client.Step(&found)) return e;
      if (!found) {
        return CLmError::Format(kStoreErrNotFound, "%sclient %" PRId64 " does not exist",
                                Which(i, alerts.size()).c_str(), a.clientId);
      }
      if (clientName.empty()) clientName = client.Text(0);
    }
    Statement st = txn.Prepare(
        "INSERT INTO alerts (source, received_at, raised_at, alert_type, alert_criteria,"
        " alert_status, severity, client_id, client_name, backup_set_id, job_id, text, details)"
        " SELECT ?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13"
        " WHERE CASE WHEN json_valid(?13) THEN json_type(?13) = 'object' ELSE 0 END");
    st.BindInt(1, a.source).BindInt(2, a.receivedAt).BindInt(3, a.raisedAt);
    st.BindInt(4, a.alertType).BindInt(5, a.alertCriteria).BindInt(6, a.alertStatus);
    st.BindInt(7, a.severity).BindInt(8, a.clientId).BindText(9, clientName);
    st.BindU64(10, a.backupSetId).BindU64(11, a.jobId).BindText(12, a.text);
    st.BindText(13, a.details);
    if (CLmError e = st.Run()) return e;
    if (st.Changes() == 0) {
      return CLmError::Format(kStoreErrInvalidArgument, "%sthe details are not a JSON object",
                              Which(i, alerts.size()).c_str());
    }
    Statement last = txn.Prepare("SELECT last_insert_rowid()");
    bool row = false;
    if (CLmError e = last.Step(&row)) return e;
    ids.push_back(last.U64(0));
    names.push_back(std::move(clientName));
  }
  if (CLmError e = txn.Commit()) return e;
  for (size_t i = 0; i < alerts.size(); ++i) {
    alerts[i].id = ids[i];
    alerts[i].clientName = std::move(names[i]);
  }
  return CLmError();
}

CLmError AlertStore::List(const AlertFilter& filter, std::vector<StoredAlert>* out) {
  Txn txn(store_, "alert list", Txn::kRead);
  // The most recent `limit` by id, then handed out oldest first. -1 is SQLite's "no limit".
  const std::string sql = std::string("SELECT ") + kColumns +
                          " FROM alerts WHERE (?1 = 0 OR client_id = ?1)"
                          " AND (?2 = 0 OR acknowledged_at IS NULL)"
                          " ORDER BY id DESC LIMIT ?3";
  Statement st = txn.Prepare(sql.c_str());
  st.BindInt(1, filter.clientId).BindInt(2, filter.unacknowledgedOnly ? 1 : 0);
  st.BindInt(
      3, filter.limit == 0 || filter.limit > INT64_MAX ? -1 : static_cast<int64_t>(filter.limit));
  std::vector<StoredAlert> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(Read(st));
  }
  std::reverse(found.begin(), found.end());
  // An empty answer for a client nobody knows would hide a mistyped id; a client that was
  // removed still lists the alerts it left.
  if (found.empty() && filter.clientId != 0) {
    Statement client = txn.Prepare("SELECT 1 FROM clients WHERE id = ?1");
    client.BindInt(1, filter.clientId);
    bool exists = false;
    if (CLmError e = client.Step(&exists)) return e;
    if (!exists) {
      return CLmError::Format(kStoreErrNotFound, "client %" PRId64 " does not exist",
                              filter.clientId);
    }
  }
  *out = std::move(found);
  return CLmError();
}

CLmError AlertStore::Acknowledge(const std::vector<uint64_t>& ids, const std::string& by,
                                 int64_t when) {
  if (ids.empty()) {
    return CLmError(kStoreErrInvalidArgument, "the acknowledgement names no alert");
  }
  Txn txn(store_, "acknowledging alerts", Txn::kWrite);
  for (uint64_t id : ids) {
    Statement st = txn.Prepare(
        "UPDATE alerts SET acknowledged_at = ?2, acknowledged_by = ?3"
        " WHERE id = ?1 AND acknowledged_at IS NULL");
    st.BindU64(1, id).BindInt(2, when).BindText(3, by);
    if (CLmError e = st.Run()) return e;
    if (st.Changes() > 0) continue;
    Statement exists = txn.Prepare("SELECT 1 FROM alerts WHERE id = ?1");
    exists.BindU64(1, id);
    bool row = false;
    if (CLmError e = exists.Step(&row)) return e;
    if (!row) return CLmError::Format(kStoreErrNotFound, "alert %" PRIu64 " does not exist", id);
  }
  return txn.Commit();
}

}  // namespace appmgr::server
