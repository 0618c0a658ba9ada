// The store's schema as numbered migrations, and the code that applies them.
//
// The schema version of a database file is its PRAGMA user_version: 0 for a new file, N after
// migration N. Migrations are applied in order, all pending ones in one transaction, so a file
// is always at one version of the list and never half way through a migration. A file whose
// version is above the last migration this code knows was written by a newer server and is
// refused, untouched.
//
// Migrations are append-only: once released, a migration's SQL never changes; a change to the
// schema is a new migration at the end of the list.
#pragma once

#include <span>
#include <string>

#include "platform/base/CLmError.h"

struct sqlite3;

namespace appmgr::server {

struct Migration {
  int version;       // 1, 2, ... in list order
  const char* name;  // what it does, for the log and for errors
  const char* sql;   // one or more statements; runs inside the migration transaction
};

// The server's migrations, oldest first.
std::span<const Migration> ServerMigrations();

// Brings `db` to the last version of `migrations` (which must number 1, 2, ... without gaps).
// `label` names the file in errors and log lines. Refuses, with kKpErrNotSupported, a file whose
// version is above the last migration. *version receives the file's version afterwards.
// REQUIRES: `db` is open, with foreign keys switched on, and in no transaction.
CLmError Migrate(sqlite3* db, std::span<const Migration> migrations, const std::string& label,
                 int* version);

}  // namespace appmgr::server
