#include "server/store/AppTypeStore.h"

#include <cinttypes>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

CLmError RequireAppType(Txn& txn, uint64_t appTypeId) {
  Statement st = txn.Prepare("SELECT 1 FROM app_types WHERE id = ?1");
  st.BindU64(1, appTypeId);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (row) return CLmError();
  return CLmError::Format(kStoreErrNotFound, "application type %" PRIu64 " does not exist",
                          appTypeId);
}

}  // namespace

CLmError ResolveClientAppType(Txn& txn, uint64_t clientId, uint64_t appTypeId, uint64_t* id) {
  Statement find =
      txn.Prepare("SELECT id FROM client_app_types WHERE client_id = ?1 AND app_type_id = ?2");
  find.BindU64(1, clientId).BindU64(2, appTypeId);
  bool row = false;
  if (CLmError e = find.Step(&row)) return e;
  if (row) {
    *id = find.U64(0);
    return CLmError();
  }
  // Name what is missing: the client, or the type on it.
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  return CLmError::Format(kStoreErrNotFound, "client %" PRIu64 " has no application type %" PRIu64,
                          clientId, appTypeId);
}

CLmError AppTypeStore::Lookup(uint64_t clientId, uint64_t appTypeId, AppTypeInfo* out) {
  Txn txn(store_, "application type lookup", Txn::kRead);
  uint64_t id = 0;
  if (CLmError e = ResolveClientAppType(txn, clientId, appTypeId, &id)) return e;
  Statement st = txn.Prepare(
      "SELECT t.name, c.value FROM client_app_types c JOIN app_types t ON t.id = c.app_type_id"
      " WHERE c.id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return CLmError::Format(kKpErrInternal, "client application type %" PRIu64 " vanished", id);
  *out = AppTypeInfo{st.Text(0), st.U64(1)};
  return CLmError();
}

CLmError AppTypeStore::Create(uint64_t clientId, uint64_t appTypeId) {
  Txn txn(store_, "application type create", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  if (CLmError e = RequireAppType(txn, appTypeId)) return e;
  uint64_t existing = 0;
  if (!ResolveClientAppType(txn, clientId, appTypeId, &existing)) {
    return CLmError::Format(kStoreErrConflict,
                            "client %" PRIu64 " already has application type %" PRIu64, clientId,
                            appTypeId);
  }
  // The surrogate id only keys the pair's properties, which go with the pair: a fresh one above
  // every id in use is enough.
  Statement insert = txn.Prepare(
      "INSERT INTO client_app_types (id, client_id, app_type_id)"
      " VALUES ((SELECT coalesce(max(id), 0) + 1 FROM client_app_types), ?1, ?2)");
  insert.BindU64(1, clientId).BindU64(2, appTypeId);
  if (CLmError e = insert.Run()) return e;
  return txn.Commit();
}

CLmError AppTypeStore::Update(uint64_t clientId, uint64_t appTypeId, uint64_t value) {
  Txn txn(store_, "application type update", Txn::kWrite);
  uint64_t id = 0;
  if (CLmError e = ResolveClientAppType(txn, clientId, appTypeId, &id)) return e;
  Statement st = txn.Prepare("UPDATE client_app_types SET value = ?2 WHERE id = ?1");
  st.BindU64(1, id).BindU64(2, value);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

CLmError AppTypeStore::Remove(uint64_t clientId, uint64_t appTypeId) {
  Txn txn(store_, "application type remove", Txn::kWrite);
  uint64_t id = 0;
  if (CLmError e = ResolveClientAppType(txn, clientId, appTypeId, &id)) return e;
  Statement live = txn.Prepare(
      "SELECT count(*) FROM instances WHERE client_app_type_id = ?1 AND contents_deleted = 0");
  live.BindU64(1, id);
  bool row = false;
  if (CLmError e = live.Step(&row)) return e;
  if (const int64_t count = row ? live.Int(0) : 0; count > 0) {
    return CLmError::Format(kStoreErrConflict,
                            "application type %" PRIu64 " cannot be removed from client %" PRIu64
                            ": %" PRId64 " of its instances %s not marked deleted; mark them "
                            "with a delete-all first",
                            appTypeId, clientId, count, count == 1 ? "is" : "are");
  }
  // Instances, backup sets, subclients and what they own go by ON DELETE CASCADE, their
  // properties by the schema's triggers.
  Statement del = txn.Prepare("DELETE FROM client_app_types WHERE id = ?1");
  del.BindU64(1, id);
  if (CLmError e = del.Run()) return e;
  return txn.Commit();
}

CLmError AppTypeStore::SurrogateId(uint64_t clientId, uint64_t appTypeId, uint64_t* id) {
  Txn txn(store_, "application type on a client", Txn::kRead);
  return ResolveClientAppType(txn, clientId, appTypeId, id);
}

CLmError AppTypeStore::SetVolumeProperty(const VolumeProperty& r) {
  Txn txn(store_, "volume property", Txn::kWrite);
  uint64_t id = 0;
  if (CLmError e = ResolveClientAppType(txn, r.clientId, r.appTypeId, &id)) return e;
  Statement st = txn.Prepare(
      "INSERT INTO dc_volume_properties (client_app_type_id, volume_id, value1, text, value2,"
      " value3, value4, signed_value, value5) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)"
      " ON CONFLICT (client_app_type_id, volume_id) DO UPDATE SET value1 = excluded.value1,"
      " text = excluded.text, value2 = excluded.value2, value3 = excluded.value3,"
      " value4 = excluded.value4, signed_value = excluded.signed_value,"
      " value5 = excluded.value5");
  st.BindU64(1, id).BindU64(2, r.volumeId).BindU64(3, r.value1).BindText(4, r.text);
  st.BindU64(5, r.value2).BindU64(6, r.value3).BindU64(7, r.value4).BindInt(8, r.signedValue);
  st.BindU64(9, r.value5);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

CLmError AppTypeStore::GetVolumeProperty(uint64_t clientId, uint64_t appTypeId, uint64_t volumeId,
                                         VolumeProperty* out) {
  Txn txn(store_, "volume property", Txn::kRead);
  uint64_t id = 0;
  if (CLmError e = ResolveClientAppType(txn, clientId, appTypeId, &id)) return e;
  Statement st = txn.Prepare(
      "SELECT value1, text, value2, value3, value4, signed_value, value5"
      " FROM dc_volume_properties WHERE client_app_type_id = ?1 AND volume_id = ?2");
  st.BindU64(1, id).BindU64(2, volumeId);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    return CLmError::Format(kStoreErrNotFound,
                            "application type %" PRIu64 " of client %" PRIu64
                            " has no record of volume %" PRIu64,
                            appTypeId, clientId, volumeId);
  }
  *out = VolumeProperty{clientId,   appTypeId,  volumeId,  st.U64(0), st.Text(1),
                        st.U64(2),  st.U64(3),  st.U64(4), st.Int(5), st.U64(6)};
  return CLmError();
}

}  // namespace appmgr::server
