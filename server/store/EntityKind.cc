#include "server/store/EntityKind.h"

#include <cinttypes>

#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

struct KindInfo {
  EntityKind kind;
  const char* name;
  const char* fixtureName;
  const char* existsSql;  // one parameter, the id; a row when the entity exists
};

constexpr KindInfo kKinds[] = {
    {EntityKind::kDomain, "domain", "domain", "SELECT 1 FROM domain WHERE id = ?1"},
    {EntityKind::kClient, "client", "client", "SELECT 1 FROM clients WHERE id = ?1"},
    {EntityKind::kClientGroup, "client group", "clientGroup",
     "SELECT 1 FROM client_groups WHERE id = ?1"},
    {EntityKind::kClientAppType, "client application type", "clientAppType",
     "SELECT 1 FROM client_app_types WHERE id = ?1"},
    {EntityKind::kInstance, "instance", "instance", "SELECT 1 FROM instances WHERE id = ?1"},
    {EntityKind::kBackupSet, "backup set", "backupSet", "SELECT 1 FROM backup_sets WHERE id = ?1"},
    {EntityKind::kSubclient, "subclient", "subclient", "SELECT 1 FROM subclients WHERE id = ?1"},
};

const KindInfo* Find(EntityKind kind) {
  for (const KindInfo& k : kKinds) {
    if (k.kind == kind) return &k;
  }
  return nullptr;
}

}  // namespace

const char* EntityKindName(EntityKind kind) {
  const KindInfo* k = Find(kind);
  return k ? k->name : "entity";
}

std::optional<EntityKind> EntityKindFromNumber(int64_t number) {
  for (const KindInfo& k : kKinds) {
    if (static_cast<int64_t>(k.kind) == number) return k.kind;
  }
  return std::nullopt;
}

std::optional<EntityKind> EntityKindFromFixtureName(std::string_view name) {
  for (const KindInfo& k : kKinds) {
    if (name == k.fixtureName) return k.kind;
  }
  return std::nullopt;
}

CLmError EntityNotFound(EntityKind kind, uint64_t id) {
  return CLmError::Format(kStoreErrNotFound, "%s %" PRIu64 " does not exist", EntityKindName(kind),
                          id);
}

CLmError RequireEntity(Store::Transaction& txn, EntityKind kind, uint64_t id) {
  const KindInfo* k = Find(kind);
  if (k == nullptr) {
    return CLmError::Format(kStoreErrInvalidArgument, "entity kind %d is unknown",
                            static_cast<int>(kind));
  }
  Statement st = txn.Prepare(k->existsSql);
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  return row ? CLmError() : EntityNotFound(kind, id);
}

}  // namespace appmgr::server
