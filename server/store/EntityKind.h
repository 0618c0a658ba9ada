// EntityKind: the kinds of entity that carry properties, and checks that an entity exists.
//
// The numbers are stored in the database (the property table's entity_kind, and the triggers of
// the schema that drop an entity's properties with it): never change or reuse one.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

enum class EntityKind : int {
  kDomain = 1,
  kClient = 2,
  kClientGroup = 3,
  kClientAppType = 4,  // an application type on one client (client_app_types.id)
  kInstance = 5,
  kBackupSet = 6,
  kSubclient = 7,
};

// The kind's name in messages: "backup set", "client application type", ...
const char* EntityKindName(EntityKind kind);

// The kind a number or a fixture name ("backupSet") stands for; nullopt for anything else.
std::optional<EntityKind> EntityKindFromNumber(int64_t number);
std::optional<EntityKind> EntityKindFromFixtureName(std::string_view name);

// kStoreErrNotFound with "<kind> <id> does not exist".
CLmError EntityNotFound(EntityKind kind, uint64_t id);

// Succeeds when the entity exists; otherwise EntityNotFound, or the transaction's error.
CLmError RequireEntity(Store::Transaction& txn, EntityKind kind, uint64_t id);

}  // namespace appmgr::server
