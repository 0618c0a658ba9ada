#include "server/store/EntityTreeStore.h"

#include <cinttypes>

#include "appmgr/records/GenericRecords.h"
#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

// Runs `sql` (?1 the id, ?2 the flag) and reports whether it changed a row.
CLmError Mark(Txn& txn, const char* sql, uint64_t id, int flag, bool* changed) {
  Statement st = txn.Prepare(sql);
  st.BindU64(1, id).BindInt(2, flag);
  if (CLmError e = st.Run()) return e;
  *changed = st.Changes() > 0;
  return CLmError();
}

CLmError BackupSet(Txn& txn, uint64_t id, int flag) {
  bool changed = false;
  if (CLmError e = Mark(txn, "UPDATE backup_sets SET contents_deleted = ?2 WHERE id = ?1", id, flag,
                        &changed)) {
    return e;
  }
  if (!changed) return EntityNotFound(EntityKind::kBackupSet, id);
  return Mark(txn, "UPDATE subclients SET contents_deleted = ?2 WHERE backup_set_id = ?1", id, flag,
              &changed);
}

CLmError Instance(Txn& txn, uint64_t id, int flag) {
  bool changed = false;
  if (CLmError e = Mark(txn, "UPDATE instances SET contents_deleted = ?2 WHERE id = ?1", id, flag,
                        &changed)) {
    return e;
  }
  if (!changed) return EntityNotFound(EntityKind::kInstance, id);
  if (CLmError e = Mark(txn, "UPDATE backup_sets SET contents_deleted = ?2 WHERE instance_id = ?1",
                        id, flag, &changed)) {
    return e;
  }
  return Mark(txn,
              "UPDATE subclients SET contents_deleted = ?2 WHERE backup_set_id IN "
              "(SELECT id FROM backup_sets WHERE instance_id = ?1)",
              id, flag, &changed);
}

CLmError AppType(Txn& txn, uint64_t clientId, uint64_t appTypeId, int flag) {
  Statement find =
      txn.Prepare("SELECT id FROM client_app_types WHERE client_id = ?1 AND app_type_id = ?2");
  find.BindU64(1, clientId).BindU64(2, appTypeId);
  bool row = false;
  if (CLmError e = find.Step(&row)) return e;
  if (!row) {
    if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
    return CLmError::Format(kStoreErrNotFound,
                            "client %" PRIu64 " has no application type %" PRIu64, clientId,
                            appTypeId);
  }
  const uint64_t id = find.U64(0);
  bool changed = false;
  if (CLmError e = Mark(txn, "UPDATE client_app_types SET contents_deleted = ?2 WHERE id = ?1", id,
                        flag, &changed)) {
    return e;
  }
  if (CLmError e = Mark(txn,
                        "UPDATE instances SET contents_deleted = ?2 WHERE client_app_type_id = ?1",
                        id, flag, &changed)) {
    return e;
  }
  if (CLmError e = Mark(txn,
                        "UPDATE backup_sets SET contents_deleted = ?2 WHERE instance_id IN "
                        "(SELECT id FROM instances WHERE client_app_type_id = ?1)",
                        id, flag, &changed)) {
    return e;
  }
  return Mark(txn,
              "UPDATE subclients SET contents_deleted = ?2 WHERE backup_set_id IN "
              "(SELECT b.id FROM backup_sets b JOIN instances i ON i.id = b.instance_id"
              " WHERE i.client_app_type_id = ?1)",
              id, flag, &changed);
}

}  // namespace

CLmError EntityTreeStore::SetSubtreeDeleted(uint32_t level, uint64_t id, uint64_t secondId,
                                            bool deleted) {
  if (level != kEntityLevelAppType && level != kEntityLevelInstance &&
      level != kEntityLevelBackupSet) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "entity level %" PRIu32
                            " is unknown (2 application type, 3 instance, 4 backup set)",
                            level);
  }
  if (level != kEntityLevelAppType && secondId != 0) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "a level-%" PRIu32 " request names its entity by one id; the second "
                            "id must be 0, not %" PRIu64,
                            level, secondId);
  }
  Txn txn(store_, deleted ? "delete-all" : "undelete-all", Txn::kWrite);
  const int flag = deleted ? 1 : 0;
  CLmError e;
  switch (level) {
    case kEntityLevelAppType:
      e = AppType(txn, id, secondId, flag);
      break;
    case kEntityLevelInstance:
      e = Instance(txn, id, flag);
      break;
    default:
      e = BackupSet(txn, id, flag);
      break;
  }
  if (e) return e;
  return txn.Commit();
}

}  // namespace appmgr::server
