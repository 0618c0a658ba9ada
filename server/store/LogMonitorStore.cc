#include "server/store/LogMonitorStore.h"

#include <cinttypes>

#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

CLmError NotSet(uint64_t entityId, uint32_t type, const std::string& name) {
  return CLmError::Format(kStoreErrNotFound,
                          "log-monitoring parameter '%s' of type %" PRIu32
                          " is not set for %" PRIu64,
                          name.c_str(), type, entityId);
}

CLmError Insert(Txn& txn, uint64_t entityId, const std::vector<LogParam>& params) {
  for (const LogParam& p : params) {
    if (p.name.empty()) {
      return CLmError(kStoreErrInvalidArgument, "a log-monitoring parameter has no name");
    }
    Statement st = txn.Prepare(
        "INSERT INTO log_monitoring_params (entity_id, type, name, value) VALUES (?1, ?2, ?3, ?4)"
        " ON CONFLICT (entity_id, type, name) DO UPDATE SET value = excluded.value");
    st.BindU64(1, entityId).BindInt(2, p.type).BindText(3, p.name).BindText(4, p.value);
    if (CLmError e = st.Run()) return e;
  }
  return CLmError();
}

}  // namespace

CLmError LogMonitorStore::Get(uint64_t entityId, uint32_t type, const std::string& name,
                              std::string* value) {
  Txn txn(store_, "log-monitoring parameter", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT value FROM log_monitoring_params WHERE entity_id = ?1 AND type = ?2 AND name = ?3");
  st.BindU64(1, entityId).BindInt(2, type).BindText(3, name);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return NotSet(entityId, type, name);
  *value = st.Text(0);
  return CLmError();
}

CLmError LogMonitorStore::List(uint64_t entityId, uint32_t type, bool allTypes,
                               std::vector<LogParam>* out) {
  Txn txn(store_, "log-monitoring parameters", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT type, name, value FROM log_monitoring_params"
      " WHERE entity_id = ?1 AND (?3 OR type = ?2) ORDER BY type, name");
  st.BindU64(1, entityId).BindInt(2, type).BindInt(3, allTypes ? 1 : 0);
  std::vector<LogParam> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(LogParam{static_cast<uint32_t>(st.Int(0)), st.Text(1), st.Text(2)});
  }
  *out = std::move(found);
  return CLmError();
}

CLmError LogMonitorStore::Set(uint64_t entityId, const std::vector<LogParam>& params) {
  Txn txn(store_, "setting log-monitoring parameters", Txn::kWrite);
  if (CLmError e = Insert(txn, entityId, params)) return e;
  return txn.Commit();
}

CLmError LogMonitorStore::Remove(uint64_t entityId, const std::vector<LogParam>& params) {
  Txn txn(store_, "removing log-monitoring parameters", Txn::kWrite);
  for (const LogParam& p : params) {
    Statement st = txn.Prepare(
        "DELETE FROM log_monitoring_params WHERE entity_id = ?1 AND type = ?2 AND name = ?3");
    st.BindU64(1, entityId).BindInt(2, p.type).BindText(3, p.name);
    if (CLmError e = st.Run()) return e;
    if (st.Changes() == 0) return NotSet(entityId, p.type, p.name);
  }
  return txn.Commit();
}

CLmError LogMonitorStore::Replace(uint64_t entityId, const std::vector<LogParam>& params) {
  Txn txn(store_, "replacing log-monitoring parameters", Txn::kWrite);
  Statement drop = txn.Prepare("DELETE FROM log_monitoring_params WHERE entity_id = ?1");
  drop.BindU64(1, entityId);
  if (CLmError e = drop.Run()) return e;
  if (CLmError e = Insert(txn, entityId, params)) return e;
  return txn.Commit();
}

}  // namespace appmgr::server
