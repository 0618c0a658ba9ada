#include "server/store/BackupSetStore.h"

#include <cinttypes>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

// Reads a one-column text list for the backup set, after checking that it exists (an empty list
// is a valid answer, a missing backup set is not).
CLmError TextList(Txn& txn, uint64_t id, const char* sql, std::vector<std::string>* out) {
  if (CLmError e = RequireEntity(txn, EntityKind::kBackupSet, id)) return e;
  Statement st = txn.Prepare(sql);
  st.BindU64(1, id);
  std::vector<std::string> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(st.Text(0));
  }
  *out = std::move(found);
  return CLmError();
}

// The client that owns the backup set, through its instance.
CLmError OwningClient(Txn& txn, uint64_t id, uint64_t* clientId) {
  Statement st = txn.Prepare(
      "SELECT cat.client_id FROM backup_sets b"
      " JOIN instances i ON i.id = b.instance_id"
      " JOIN client_app_types cat ON cat.id = i.client_app_type_id"
      " WHERE b.id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kBackupSet, id);
  *clientId = st.U64(0);
  return CLmError();
}

CLmError CheckText(const std::string& text, size_t max, const char* what) {
  if (text.empty()) return CLmError::Format(kStoreErrInvalidArgument, "the %s is empty", what);
  if (text.size() > max) {
    return CLmError::Format(kStoreErrInvalidArgument, "the %s is %zu bytes long; at most %zu fit",
                            what, text.size(), max);
  }
  return CLmError();
}

}  // namespace

CLmError BackupSetStore::Lookup(uint64_t id, BackupSetInfo* out) {
  Txn txn(store_, "backup set lookup", Txn::kRead);
  Statement st = txn.Prepare("SELECT name, value, description FROM backup_sets WHERE id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kBackupSet, id);
  *out = BackupSetInfo{st.Text(0), st.Int(1), st.Text(2)};
  return CLmError();
}

CLmError BackupSetStore::Update(uint64_t id, const std::string& name, int64_t value) {
  if (name.empty()) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "backup set %" PRIu64 " cannot take an empty name", id);
  }
  Txn txn(store_, "backup set update", Txn::kWrite);
  Statement st = txn.Prepare("UPDATE backup_sets SET name = ?2, value = ?3 WHERE id = ?1");
  st.BindU64(1, id).BindText(2, name).BindInt(3, value);
  if (CLmError e = st.Run()) {
    // The only key the update can break is the name's uniqueness within the instance.
    if (e.GetErrorCode() != kStoreErrConflict) return e;
    return CLmError::Format(kStoreErrConflict,
                            "backup set %" PRIu64
                            " cannot be renamed to '%s': another backup "
                            "set of the same instance has that name",
                            id, name.c_str());
  }
  if (st.Changes() == 0) return EntityNotFound(EntityKind::kBackupSet, id);
  return txn.Commit();
}

CLmError BackupSetStore::DefaultSubclientForStore(uint64_t backupSetId,
                                                  const std::string& storeName,
                                                  uint64_t* subclientId) {
  Txn txn(store_, "default subclient of a store", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT default_subclient_id FROM backup_set_stores WHERE backup_set_id = ?1 AND name = ?2");
  st.BindU64(1, backupSetId).BindText(2, storeName);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    if (CLmError e = RequireEntity(txn, EntityKind::kBackupSet, backupSetId)) return e;
    return CLmError::Format(kStoreErrNotFound, "backup set %" PRIu64 " has no store named '%s'",
                            backupSetId, storeName.c_str());
  }
  if (st.IsNull(0)) {
    return CLmError::Format(kStoreErrNotFound,
                            "store '%s' of backup set %" PRIu64 " has no default subclient",
                            storeName.c_str(), backupSetId);
  }
  *subclientId = st.U64(0);
  return CLmError();
}

CLmError BackupSetStore::StoreList(uint64_t id, std::vector<std::string>* names) {
  Txn txn(store_, "store list of a backup set", Txn::kRead);
  return TextList(txn, id,
                  "SELECT name FROM backup_set_stores WHERE backup_set_id = ?1 ORDER BY position",
                  names);
}

CLmError BackupSetStore::WildcardExpressions(uint64_t id, std::vector<std::string>* expressions) {
  Txn txn(store_, "wildcard expressions of a backup set", Txn::kRead);
  return TextList(txn, id,
                  "SELECT expression FROM backup_set_wildcards WHERE backup_set_id = ?1"
                  " ORDER BY position",
                  expressions);
}

CLmError BackupSetStore::ClientIdForBackupSet(uint64_t id, uint64_t* clientId) {
  Txn txn(store_, "client of a backup set", Txn::kRead);
  return OwningClient(txn, id, clientId);
}

CLmError BackupSetStore::CheckPairConflict(uint64_t id, const std::string& source,
                                           const std::string& destination, PairConflict* out) {
  if (CLmError e = CheckText(source, DataPair::kSourceMax, "source of the new pair")) return e;
  if (CLmError e =
          CheckText(destination, DataPair::kDestinationMax, "destination of the new pair")) {
    return e;
  }
  Txn txn(store_, "pair conflict check", Txn::kRead);
  PairConflict result;
  result.proposed.backupSetId = id;
  result.proposed.source = source;
  result.proposed.destination = destination;
  if (CLmError e = OwningClient(txn, id, &result.proposed.sourceClientId)) return e;
  Statement st = txn.Prepare(
      "SELECT id, destination_client_id, source, source_guid, destination_guid, destination, state"
      " FROM replication_pairs"
      " WHERE backup_set_id = ?1 AND (source = ?2 OR destination = ?3)"
      " ORDER BY id LIMIT 1");
  st.BindU64(1, id).BindText(2, source).BindText(3, destination);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (row) {
    result.conflict = true;
    result.existing = DataPair{st.U64(0),  id,         result.proposed.sourceClientId,
                               st.U64(1),  st.Text(2), st.Text(3),
                               st.Text(4), st.Text(5), st.U64(6)};
  }
  *out = std::move(result);
  return CLmError();
}

CLmError BackupSetStore::DataInterfacePair(uint64_t id, uint64_t pairId, uint64_t selector,
                                           InterfacePair* out) {
  Txn txn(store_, "data interface pair", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT first_interface, second_interface FROM fr_interface_pairs"
      " WHERE backup_set_id = ?1 AND pair_id = ?2 AND selector = ?3");
  st.BindU64(1, id).BindU64(2, pairId).BindU64(3, selector);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    if (CLmError e = RequireEntity(txn, EntityKind::kBackupSet, id)) return e;
    return CLmError::Format(kStoreErrNotFound,
                            "backup set %" PRIu64 " has no interface pair for pair %" PRIu64
                            " under selector %" PRIu64,
                            id, pairId, selector);
  }
  *out = InterfacePair{st.Text(0), st.Text(1)};
  return CLmError();
}

CLmError BackupSetStore::FlrSystemStateInfo(uint64_t id, const std::string& name,
                                            std::vector<FlrSystemState>* out) {
  Txn txn(store_, "system state information", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kBackupSet, id)) return e;
  // One row per pair, or one row with NULL pair columns for a record without pairs.
  Statement st = txn.Prepare(
      "SELECT s.row_id, s.info_id, s.value, s.text1, s.text2, p.pair_id, p.pair_name"
      " FROM flr_system_states s"
      " LEFT JOIN flr_system_state_pairs p ON p.state_row_id = s.row_id"
      " WHERE s.backup_set_id = ?1 AND s.name = ?2"
      " ORDER BY s.row_id, p.position");
  st.BindU64(1, id).BindText(2, name);
  std::vector<FlrSystemState> found;
  int64_t lastRow = 0;  // row ids start at 1
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    if (found.empty() || st.Int(0) != lastRow) {
      lastRow = st.Int(0);
      found.push_back(FlrSystemState{st.U64(1), {}, st.U64(2), st.Text(3), st.Text(4)});
    }
    if (!st.IsNull(5)) found.back().pairs.push_back(FlrPair{st.U64(5), st.Text(6)});
  }
  *out = std::move(found);
  return CLmError();
}

}  // namespace appmgr::server
