#include "server/store/Schema.h"

#include <sqlite3.h>

#include <string>

#include "platform/base/EvDebug.h"
#include "server/store/Statement.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

// Migration 1: the whole entity tree.
//
// Conventions: every table is STRICT, so a column holds only its declared type. Entity ids are
// given by whoever creates the entity (the fixture, a create request), never reused by SQLite's
// rowid choice, and positive. Unsigned 64-bit values are kept as their bit pattern in INTEGER.
// Ordered lists carry an explicit `position`. Rows owned by an entity go with it (ON DELETE
// CASCADE); references between entities that are not ownership block the delete (NO ACTION).
// Texts whose fields have a fixed room on the wire are checked in bytes, not characters.
//
// The entity kinds in the property triggers are EntityKind's numbers (EntityKind.h); both are
// stored data and never change.
constexpr const char* kMigration1 = R"sql(
CREATE TABLE domain (
  id      INTEGER PRIMARY KEY CHECK (id > 0),
  id2     INTEGER NOT NULL DEFAULT 0,
  id3     INTEGER NOT NULL DEFAULT 0,
  id4     INTEGER NOT NULL DEFAULT 0,
  text1   TEXT NOT NULL DEFAULT '',
  text2   TEXT NOT NULL DEFAULT '',
  text3   TEXT NOT NULL DEFAULT '',
  text4   TEXT NOT NULL DEFAULT '',
  text5   TEXT NOT NULL DEFAULT '',
  text6   TEXT NOT NULL DEFAULT '',
  number  INTEGER NOT NULL DEFAULT 0 CHECK (number BETWEEN -2147483648 AND 2147483647)
) STRICT;

CREATE TABLE clients (
  id            INTEGER PRIMARY KEY CHECK (id > 0),
  name          TEXT NOT NULL COLLATE NOCASE UNIQUE CHECK (name <> ''),
  host_name     TEXT NOT NULL,
  platform_type INTEGER NOT NULL DEFAULT 0,
  int3  INTEGER NOT NULL DEFAULT 0, int4  INTEGER NOT NULL DEFAULT 0,
  int5  INTEGER NOT NULL DEFAULT 0, int6  INTEGER NOT NULL DEFAULT 0,
  int7  INTEGER NOT NULL DEFAULT 0, int8  INTEGER NOT NULL DEFAULT 0,
  int9  INTEGER NOT NULL DEFAULT 0, int10 INTEGER NOT NULL DEFAULT 0,
  int11 INTEGER NOT NULL DEFAULT 0, int12 INTEGER NOT NULL DEFAULT 0,
  text3 TEXT NOT NULL DEFAULT '', text4 TEXT NOT NULL DEFAULT '',
  text5 TEXT NOT NULL DEFAULT '', text6 TEXT NOT NULL DEFAULT '',
  text7 TEXT NOT NULL DEFAULT '', text8 TEXT NOT NULL DEFAULT ''
) STRICT;

CREATE TABLE client_platforms (
  client_id INTEGER NOT NULL REFERENCES clients(id) ON DELETE CASCADE,
  slot      INTEGER NOT NULL CHECK (slot BETWEEN 0 AND 2),
  value     INTEGER NOT NULL DEFAULT 0,
  text      TEXT NOT NULL DEFAULT '',
  PRIMARY KEY (client_id, slot)
) STRICT, WITHOUT ROWID;

CREATE TABLE client_groups (
  id    INTEGER PRIMARY KEY CHECK (id > 0),
  name  TEXT NOT NULL COLLATE NOCASE UNIQUE CHECK (name <> ''),
  int2  INTEGER NOT NULL DEFAULT 0, int3 INTEGER NOT NULL DEFAULT 0,
  int4  INTEGER NOT NULL DEFAULT 0, int5 INTEGER NOT NULL DEFAULT 0,
  int6  INTEGER NOT NULL DEFAULT 0,
  text2 TEXT NOT NULL DEFAULT '', text3 TEXT NOT NULL DEFAULT ''
) STRICT;

CREATE TABLE client_group_members (
  group_id  INTEGER NOT NULL REFERENCES client_groups(id) ON DELETE CASCADE,
  client_id INTEGER NOT NULL REFERENCES clients(id) ON DELETE CASCADE,
  PRIMARY KEY (group_id, client_id)
) STRICT, WITHOUT ROWID;
CREATE INDEX client_group_members_by_client ON client_group_members(client_id);

CREATE TABLE app_types (
  id   INTEGER PRIMARY KEY CHECK (id > 0),
  name TEXT NOT NULL UNIQUE CHECK (name <> '')
) STRICT;

-- An application type installed on a client. The surrogate id lets the generic property table
-- key it by one number; requests address it by (client, application type).
CREATE TABLE client_app_types (
  id               INTEGER PRIMARY KEY CHECK (id > 0),
  client_id        INTEGER NOT NULL REFERENCES clients(id) ON DELETE CASCADE,
  app_type_id      INTEGER NOT NULL REFERENCES app_types(id),
  value            INTEGER NOT NULL DEFAULT 0,
  contents_deleted INTEGER NOT NULL DEFAULT 0 CHECK (contents_deleted IN (0, 1)),
  UNIQUE (client_id, app_type_id)
) STRICT;
CREATE INDEX client_app_types_by_app_type ON client_app_types(app_type_id);

CREATE TABLE instances (
  id                 INTEGER PRIMARY KEY CHECK (id > 0),
  client_app_type_id INTEGER NOT NULL REFERENCES client_app_types(id) ON DELETE CASCADE,
  name               TEXT NOT NULL CHECK (name <> ''),
  value              INTEGER NOT NULL DEFAULT 0,
  attr2              INTEGER NOT NULL DEFAULT 0,
  attr3              INTEGER NOT NULL DEFAULT 0,
  attr4              INTEGER NOT NULL DEFAULT 0,
  text               TEXT NOT NULL DEFAULT '',
  contents_deleted   INTEGER NOT NULL DEFAULT 0 CHECK (contents_deleted IN (0, 1)),
  UNIQUE (client_app_type_id, name)
) STRICT;

CREATE TABLE instance_content (
  instance_id  INTEGER NOT NULL REFERENCES instances(id) ON DELETE CASCADE,
  position     INTEGER NOT NULL CHECK (position >= 0),
  entry        TEXT NOT NULL,
  content_type INTEGER NOT NULL,
  PRIMARY KEY (instance_id, position)
) STRICT, WITHOUT ROWID;

CREATE TABLE backup_sets (
  id               INTEGER PRIMARY KEY CHECK (id > 0),
  instance_id      INTEGER NOT NULL REFERENCES instances(id) ON DELETE CASCADE,
  name             TEXT NOT NULL CHECK (name <> ''),
  value            INTEGER NOT NULL DEFAULT 0,
  description      TEXT NOT NULL DEFAULT '',
  contents_deleted INTEGER NOT NULL DEFAULT 0 CHECK (contents_deleted IN (0, 1)),
  UNIQUE (instance_id, name)
) STRICT;

CREATE TABLE subclients (
  id               INTEGER PRIMARY KEY CHECK (id > 0),
  backup_set_id    INTEGER NOT NULL REFERENCES backup_sets(id) ON DELETE CASCADE,
  name             TEXT NOT NULL CHECK (name <> ''),
  guid             TEXT UNIQUE CHECK (guid IS NULL OR guid <> ''),
  value            INTEGER NOT NULL DEFAULT 0,
  attr2            INTEGER NOT NULL DEFAULT 0,
  attr3            INTEGER NOT NULL DEFAULT 0,
  attr4            INTEGER NOT NULL DEFAULT 0,
  text             TEXT NOT NULL DEFAULT '',
  content_flag     INTEGER NOT NULL DEFAULT 0,
  contents_deleted INTEGER NOT NULL DEFAULT 0 CHECK (contents_deleted IN (0, 1)),
  UNIQUE (backup_set_id, name),
  -- The parent key of the stores' default subclient: it must be a subclient of the same set.
  UNIQUE (backup_set_id, id)
) STRICT;

CREATE TABLE subclient_content (
  subclient_id INTEGER NOT NULL REFERENCES subclients(id) ON DELETE CASCADE,
  position     INTEGER NOT NULL CHECK (position >= 0),
  entry        TEXT NOT NULL,
  content_type INTEGER NOT NULL,
  PRIMARY KEY (subclient_id, position)
) STRICT, WITHOUT ROWID;

-- kind 1: store associations, kind 2: directory associations.
CREATE TABLE subclient_associations (
  subclient_id INTEGER NOT NULL REFERENCES subclients(id) ON DELETE CASCADE,
  kind         INTEGER NOT NULL CHECK (kind IN (1, 2)),
  position     INTEGER NOT NULL CHECK (position >= 0),
  name         TEXT NOT NULL CHECK (name <> ''),
  PRIMARY KEY (subclient_id, kind, position)
) STRICT, WITHOUT ROWID;

-- A store of a backup set. Deleting a subclient that is still some store's default fails at the
-- end of the statement (NO ACTION), unless the same statement removes the store too, as
-- deleting the whole backup set does.
CREATE TABLE backup_set_stores (
  backup_set_id        INTEGER NOT NULL REFERENCES backup_sets(id) ON DELETE CASCADE,
  position             INTEGER NOT NULL CHECK (position >= 0),
  name                 TEXT NOT NULL CHECK (name <> ''),
  default_subclient_id INTEGER,
  PRIMARY KEY (backup_set_id, position),
  UNIQUE (backup_set_id, name),
  FOREIGN KEY (backup_set_id, default_subclient_id) REFERENCES subclients(backup_set_id, id)
) STRICT, WITHOUT ROWID;
CREATE INDEX backup_set_stores_by_subclient
  ON backup_set_stores(backup_set_id, default_subclient_id);

CREATE TABLE backup_set_wildcards (
  backup_set_id INTEGER NOT NULL REFERENCES backup_sets(id) ON DELETE CASCADE,
  position      INTEGER NOT NULL CHECK (position >= 0),
  expression    TEXT NOT NULL CHECK (expression <> ''),
  PRIMARY KEY (backup_set_id, position)
) STRICT, WITHOUT ROWID;

-- A replication (data) pair of a backup set: its source on the backup set's own client, its
-- destination on another. Within one backup set no two pairs share a source or a destination;
-- the texts fit the 255, 128, 128 and 1024 byte fields in which pairs travel.
CREATE TABLE replication_pairs (
  id                    INTEGER PRIMARY KEY CHECK (id > 0),
  backup_set_id         INTEGER NOT NULL REFERENCES backup_sets(id) ON DELETE CASCADE,
  destination_client_id INTEGER NOT NULL REFERENCES clients(id),
  source           TEXT NOT NULL CHECK (source <> '' AND length(CAST(source AS BLOB)) <= 254),
  source_guid      TEXT NOT NULL DEFAULT '' CHECK (length(CAST(source_guid AS BLOB)) <= 127),
  destination_guid TEXT NOT NULL DEFAULT ''
                   CHECK (length(CAST(destination_guid AS BLOB)) <= 127),
  destination      TEXT NOT NULL
                   CHECK (destination <> '' AND length(CAST(destination AS BLOB)) <= 1023),
  state            INTEGER NOT NULL DEFAULT 0,
  UNIQUE (backup_set_id, source),
  UNIQUE (backup_set_id, destination),
  UNIQUE (backup_set_id, id)
) STRICT;
CREATE INDEX replication_pairs_by_destination_client
  ON replication_pairs(destination_client_id);
CREATE INDEX replication_pairs_by_destination_guid ON replication_pairs(destination_guid);

-- The network interfaces (first, second) that carry a replication pair's data, per selector.
CREATE TABLE fr_interface_pairs (
  backup_set_id INTEGER NOT NULL,
  pair_id       INTEGER NOT NULL,
  selector      INTEGER NOT NULL,
  first_interface  TEXT NOT NULL,
  second_interface TEXT NOT NULL,
  PRIMARY KEY (backup_set_id, pair_id, selector),
  FOREIGN KEY (backup_set_id, pair_id) REFERENCES replication_pairs(backup_set_id, id)
    ON DELETE CASCADE
) STRICT, WITHOUT ROWID;

CREATE TABLE flr_system_states (
  row_id        INTEGER PRIMARY KEY,
  backup_set_id INTEGER NOT NULL REFERENCES backup_sets(id) ON DELETE CASCADE,
  name          TEXT NOT NULL,
  info_id       INTEGER NOT NULL,
  value         INTEGER NOT NULL DEFAULT 0,
  text1         TEXT NOT NULL DEFAULT '',
  text2         TEXT NOT NULL DEFAULT '',
  UNIQUE (backup_set_id, name, info_id)
) STRICT;

CREATE TABLE flr_system_state_pairs (
  state_row_id INTEGER NOT NULL REFERENCES flr_system_states(row_id) ON DELETE CASCADE,
  position     INTEGER NOT NULL CHECK (position >= 0),
  pair_id      INTEGER NOT NULL,
  pair_name    TEXT NOT NULL,
  PRIMARY KEY (state_row_id, position)
) STRICT, WITHOUT ROWID;

CREATE TABLE app_ids (
  id                    INTEGER PRIMARY KEY CHECK (id > 0),
  number0 INTEGER NOT NULL DEFAULT 0, number1 INTEGER NOT NULL DEFAULT 0,
  number2 INTEGER NOT NULL DEFAULT 0, number3 INTEGER NOT NULL DEFAULT 0,
  number4 INTEGER NOT NULL DEFAULT 0, number5 INTEGER NOT NULL DEFAULT 0,
  number6 INTEGER NOT NULL DEFAULT 0, number7 INTEGER NOT NULL DEFAULT 0,
  number8 INTEGER NOT NULL DEFAULT 0,
  text0 TEXT NOT NULL DEFAULT '', text1 TEXT NOT NULL DEFAULT '', text2 TEXT NOT NULL DEFAULT '',
  option_value          INTEGER NOT NULL DEFAULT 0 CHECK (option_value BETWEEN 0 AND 4294967295),
  archive_group_id      INTEGER NOT NULL DEFAULT 0,
  incr_archive_group_id INTEGER NOT NULL DEFAULT 0
) STRICT;

CREATE TABLE global_params (
  name  TEXT PRIMARY KEY CHECK (name <> ''),
  value TEXT NOT NULL
) STRICT, WITHOUT ROWID;

CREATE TABLE app_properties (
  id1   INTEGER NOT NULL,
  id2   INTEGER NOT NULL,
  value TEXT NOT NULL,
  PRIMARY KEY (id1, id2)
) STRICT, WITHOUT ROWID;

-- Properties of any entity. The rowid keeps the order in which names were first set, which is
-- the order in which they are read back.
CREATE TABLE properties (
  entity_kind    INTEGER NOT NULL,
  entity_id      INTEGER NOT NULL,
  table_selector INTEGER NOT NULL DEFAULT 0,
  name           TEXT NOT NULL CHECK (name <> ''),
  type           INTEGER NOT NULL DEFAULT 0,
  value          TEXT NOT NULL DEFAULT '',
  UNIQUE (entity_kind, entity_id, table_selector, name)
) STRICT;

-- Properties have no foreign key (one table serves every kind), so each entity table drops its
-- own. Cascaded deletes fire these too.
CREATE TRIGGER domain_drops_properties AFTER DELETE ON domain BEGIN
  DELETE FROM properties WHERE entity_kind = 1 AND entity_id = OLD.id; END;
CREATE TRIGGER clients_drop_properties AFTER DELETE ON clients BEGIN
  DELETE FROM properties WHERE entity_kind = 2 AND entity_id = OLD.id; END;
CREATE TRIGGER client_groups_drop_properties AFTER DELETE ON client_groups BEGIN
  DELETE FROM properties WHERE entity_kind = 3 AND entity_id = OLD.id; END;
CREATE TRIGGER client_app_types_drop_properties AFTER DELETE ON client_app_types BEGIN
  DELETE FROM properties WHERE entity_kind = 4 AND entity_id = OLD.id; END;
CREATE TRIGGER instances_drop_properties AFTER DELETE ON instances BEGIN
  DELETE FROM properties WHERE entity_kind = 5 AND entity_id = OLD.id; END;
CREATE TRIGGER backup_sets_drop_properties AFTER DELETE ON backup_sets BEGIN
  DELETE FROM properties WHERE entity_kind = 6 AND entity_id = OLD.id; END;
CREATE TRIGGER subclients_drop_properties AFTER DELETE ON subclients BEGIN
  DELETE FROM properties WHERE entity_kind = 7 AND entity_id = OLD.id; END;

-- Snapshot records: F2 is the id; the other fourteen fields are kept positionally.
CREATE TABLE snapshots (
  id  INTEGER PRIMARY KEY CHECK (id > 0),
  f1  INTEGER NOT NULL DEFAULT 0,
  f3  TEXT NOT NULL DEFAULT '', f4 TEXT NOT NULL DEFAULT '',
  f5  TEXT NOT NULL DEFAULT '', f6 TEXT NOT NULL DEFAULT '',
  f7  INTEGER NOT NULL DEFAULT 0,
  f8  TEXT NOT NULL DEFAULT '', f9 TEXT NOT NULL DEFAULT '',
  f10 INTEGER NOT NULL DEFAULT 0, f11 INTEGER NOT NULL DEFAULT 0, f12 INTEGER NOT NULL DEFAULT 0,
  f13 TEXT NOT NULL DEFAULT '', f14 TEXT NOT NULL DEFAULT '',
  f15 INTEGER NOT NULL DEFAULT 0
) STRICT;

-- Mailbox delegates: G7 is the id, G1 the number lists are selected by.
CREATE TABLE mailbox_delegates (
  id INTEGER PRIMARY KEY CHECK (id > 0),
  g1 INTEGER NOT NULL DEFAULT 0,
  g2 TEXT NOT NULL DEFAULT '', g3 TEXT NOT NULL DEFAULT '', g4 TEXT NOT NULL DEFAULT '',
  g5 TEXT NOT NULL DEFAULT '', g6 TEXT NOT NULL DEFAULT ''
) STRICT;
CREATE INDEX mailbox_delegates_by_g1 ON mailbox_delegates(g1);

-- Alerts as received: the fields the server acts on as columns, the whole record as JSON.
-- AUTOINCREMENT: an alert id is never handed out twice, even after alerts are pruned.
CREATE TABLE alerts (
  id             INTEGER PRIMARY KEY AUTOINCREMENT,
  received_at    INTEGER NOT NULL,
  alert_type     INTEGER NOT NULL,
  alert_criteria INTEGER NOT NULL DEFAULT 0,
  alert_status   INTEGER NOT NULL DEFAULT 0,
  client_id      INTEGER NOT NULL DEFAULT 0,
  backup_set_id  INTEGER NOT NULL DEFAULT 0,
  job_id         INTEGER NOT NULL DEFAULT 0,
  details        TEXT NOT NULL DEFAULT '{}' CHECK (json_valid(details))
) STRICT;

-- Request/response pairs prepared for a job, handed to a client process of that job so that it
-- can answer those requests from its own cache. Bytes are the encoded records.
CREATE TABLE server_cache_entries (
  job_id      INTEGER NOT NULL,
  position    INTEGER NOT NULL CHECK (position >= 0),
  request_id  INTEGER NOT NULL CHECK (request_id BETWEEN 0 AND 4294967295),
  response_id INTEGER NOT NULL CHECK (response_id BETWEEN 0 AND 4294967295),
  request     BLOB NOT NULL,
  response    BLOB NOT NULL,
  PRIMARY KEY (job_id, position)
) STRICT, WITHOUT ROWID;
)sql";

// Migration 2: what the entity lists read beyond the entity tree (providers, clouds and their
// clients, the client lists of domains), and the indexes that let every list filter find its
// rows without a scan.
constexpr const char* kMigrationEntityLists = R"sql(
CREATE TABLE providers (
  id            INTEGER PRIMARY KEY CHECK (id > 0),
  name          TEXT NOT NULL COLLATE NOCASE UNIQUE CHECK (name <> ''),
  description   TEXT NOT NULL DEFAULT '',
  provider_type INTEGER NOT NULL DEFAULT 0,
  enabled       INTEGER NOT NULL DEFAULT 1 CHECK (enabled IN (0, 1)),
  value         INTEGER NOT NULL DEFAULT 0
) STRICT;
CREATE INDEX providers_by_type ON providers(provider_type);

CREATE TABLE clouds (
  id         INTEGER PRIMARY KEY CHECK (id > 0),
  name       TEXT NOT NULL COLLATE NOCASE UNIQUE CHECK (name <> ''),
  cloud_type INTEGER NOT NULL DEFAULT 0
) STRICT;
CREATE INDEX clouds_by_type ON clouds(cloud_type);

-- A client served by a cloud, and the client that gives it access (null: none). The access
-- node is a reference, not ownership: it blocks deleting that client.
CREATE TABLE cloud_clients (
  cloud_id       INTEGER NOT NULL REFERENCES clouds(id) ON DELETE CASCADE,
  client_id      INTEGER NOT NULL REFERENCES clients(id) ON DELETE CASCADE,
  access_node_id INTEGER REFERENCES clients(id),
  PRIMARY KEY (cloud_id, client_id)
) STRICT, WITHOUT ROWID;
CREATE INDEX cloud_clients_by_client ON cloud_clients(client_id);
CREATE INDEX cloud_clients_by_access_node ON cloud_clients(access_node_id);

-- A client listed in a (directory) domain by name, with three values kept for it.
CREATE TABLE exdm_domain_clients (
  domain    TEXT NOT NULL COLLATE NOCASE CHECK (domain <> ''),
  client_id INTEGER NOT NULL REFERENCES clients(id) ON DELETE CASCADE,
  value1    INTEGER NOT NULL DEFAULT 0,
  value2    INTEGER NOT NULL DEFAULT 0,
  value3    INTEGER NOT NULL DEFAULT 0,
  PRIMARY KEY (domain, client_id)
) STRICT, WITHOUT ROWID;
CREATE INDEX exdm_domain_clients_by_client ON exdm_domain_clients(client_id);

CREATE INDEX app_ids_by_archive_group ON app_ids(archive_group_id, incr_archive_group_id);
CREATE INDEX app_ids_by_incr_archive_group ON app_ids(incr_archive_group_id);
)sql";

// Migration 3: what clients and application ids need beyond the entity tree.
//
// Ids the server assigns come from id_counters, one row per table: the next id is one above the
// larger of the counter and the highest id in use, so an id is never handed out twice, even
// after its entity was removed. ASM instances are instances marked as such. A client's latest
// file-system node report replaces the one before it. An application id stands for one object:
// no two share numbers 3 to 8 and texts 0 to 2 (app_ids.id is its number 0).
constexpr const char* kMigrationClients = R"sql(
CREATE TABLE id_counters (
  entity  TEXT PRIMARY KEY,
  last_id INTEGER NOT NULL CHECK (last_id >= 0)
) STRICT, WITHOUT ROWID;

CREATE TABLE asm_instances (
  instance_id INTEGER PRIMARY KEY REFERENCES instances(id) ON DELETE CASCADE
) STRICT;

CREATE TABLE client_fs_node_activity (
  client_id   INTEGER PRIMARY KEY REFERENCES clients(id) ON DELETE CASCADE,
  data        TEXT NOT NULL,
  value       INTEGER NOT NULL CHECK (value BETWEEN -2147483648 AND 2147483647),
  flag        INTEGER NOT NULL CHECK (flag IN (0, 1)),
  reported_at INTEGER NOT NULL
) STRICT;

CREATE UNIQUE INDEX app_ids_by_object
  ON app_ids(number3, number4, number5, number6, number7, number8, text0, text1, text2);

-- Volume GUIDs are compared without regard to case.
CREATE INDEX replication_pairs_by_destination_guid_nocase
  ON replication_pairs(destination_guid COLLATE NOCASE);

-- Entities that carry a property value, found without reading every property.
CREATE INDEX properties_by_value ON properties(entity_kind, table_selector, name, value);
)sql";

// Migration 4 (global parameters and application properties): an application property belongs
// to a client application type (app_properties.id1), and goes with it, as entity properties go
// with their entity.
constexpr const char* kMigrationParams = R"sql(
CREATE TRIGGER client_app_types_drop_app_properties AFTER DELETE ON client_app_types BEGIN
  DELETE FROM app_properties WHERE id1 = OLD.id; END;
)sql";

// Migration 5 (subclients): the per-subclient settings beyond the entity tree, and the file-type
// extension table the subclient interface reads.
//
// A subclient's backup host is the client that backs it up, when that is not its own client;
// none stored means its own. Replication pair data is a text per (subclient, replication pair of
// its backup set, selector). A reference copy names another subclient, never the subclient
// itself; both ends go with their subclient. File types are compared without regard to case.
constexpr const char* kMigrationSubclients = R"sql(
CREATE TABLE subclient_backup_hosts (
  subclient_id INTEGER PRIMARY KEY REFERENCES subclients(id) ON DELETE CASCADE,
  client_id    INTEGER NOT NULL REFERENCES clients(id)
) STRICT;
CREATE INDEX subclient_backup_hosts_by_client ON subclient_backup_hosts(client_id);

CREATE TABLE subclient_pair_data (
  subclient_id INTEGER NOT NULL REFERENCES subclients(id) ON DELETE CASCADE,
  pair_id      INTEGER NOT NULL REFERENCES replication_pairs(id) ON DELETE CASCADE,
  selector     INTEGER NOT NULL,
  text         TEXT NOT NULL,
  PRIMARY KEY (subclient_id, pair_id, selector)
) STRICT, WITHOUT ROWID;
CREATE INDEX subclient_pair_data_by_pair ON subclient_pair_data(pair_id);

CREATE TABLE subclient_reference_copies (
  subclient_id INTEGER NOT NULL REFERENCES subclients(id) ON DELETE CASCADE,
  position     INTEGER NOT NULL CHECK (position >= 0),
  copy_id      INTEGER NOT NULL REFERENCES subclients(id) ON DELETE CASCADE,
  PRIMARY KEY (subclient_id, position),
  UNIQUE (subclient_id, copy_id),
  CHECK (copy_id <> subclient_id)
) STRICT, WITHOUT ROWID;
CREATE INDEX subclient_reference_copies_by_copy ON subclient_reference_copies(copy_id);

CREATE TABLE file_type_extensions (
  file_type  TEXT PRIMARY KEY COLLATE NOCASE CHECK (file_type <> ''),
  extensions TEXT NOT NULL
) STRICT, WITHOUT ROWID;
)sql";

// Migration 6 (instances and application types): the volume-property records an application
// type on a client keeps, one per volume, going with the application type.
constexpr const char* kMigrationInstances = R"sql(
CREATE TABLE dc_volume_properties (
  client_app_type_id INTEGER NOT NULL REFERENCES client_app_types(id) ON DELETE CASCADE,
  volume_id          INTEGER NOT NULL,
  value1             INTEGER NOT NULL DEFAULT 0,
  text               TEXT NOT NULL DEFAULT '',
  value2             INTEGER NOT NULL DEFAULT 0,
  value3             INTEGER NOT NULL DEFAULT 0,
  value4             INTEGER NOT NULL DEFAULT 0,
  signed_value       INTEGER NOT NULL DEFAULT 0,
  value5             INTEGER NOT NULL DEFAULT 0,
  PRIMARY KEY (client_app_type_id, volume_id)
) STRICT, WITHOUT ROWID;
)sql";

// Migration 7: what alerts, advisories and log monitoring keep beyond the entity tree. An alert
// gains the columns it is listed and acknowledged by; advisories are kept per source (the feed
// that published them) and per client (those that apply to it, each with its state); log-
// monitoring parameters are values by (entity, type, name).
constexpr const char* kMigrationAlertsAndMonitoring = R"sql(
-- source: 1 the binary alert record, 2 an entry of an XML alert list. raised_at is the time the
-- sender gave (0: none); acknowledged_at is NULL until the alert is acknowledged.
ALTER TABLE alerts ADD COLUMN source INTEGER NOT NULL DEFAULT 1 CHECK (source IN (1, 2));
ALTER TABLE alerts ADD COLUMN severity INTEGER NOT NULL DEFAULT 0;
ALTER TABLE alerts ADD COLUMN client_name TEXT NOT NULL DEFAULT '';
ALTER TABLE alerts ADD COLUMN text TEXT NOT NULL DEFAULT '';
ALTER TABLE alerts ADD COLUMN raised_at INTEGER NOT NULL DEFAULT 0;
ALTER TABLE alerts ADD COLUMN acknowledged_at INTEGER;
ALTER TABLE alerts ADD COLUMN acknowledged_by TEXT NOT NULL DEFAULT '';
CREATE INDEX alerts_by_client ON alerts(client_id);
CREATE INDEX alerts_unacknowledged ON alerts(id) WHERE acknowledged_at IS NULL;

CREATE TABLE advisory_types (
  id          INTEGER PRIMARY KEY,
  name        TEXT NOT NULL UNIQUE CHECK (name <> ''),
  description TEXT NOT NULL DEFAULT ''
) STRICT;

-- An advisory as its source published it. An advisory id belongs to one source at a time.
CREATE TABLE source_advisories (
  advisory_id INTEGER PRIMARY KEY,
  source      TEXT NOT NULL CHECK (source <> ''),
  position    INTEGER NOT NULL CHECK (position >= 0),
  type        INTEGER NOT NULL,
  title       TEXT NOT NULL,
  UNIQUE (source, position)
) STRICT;

-- An advisory that applies to a client. state: 1 enabled, 2 disabled, 3 acknowledged.
CREATE TABLE client_advisories (
  client_id   INTEGER NOT NULL REFERENCES clients(id) ON DELETE CASCADE,
  advisory_id INTEGER NOT NULL,
  type        INTEGER NOT NULL,
  title       TEXT NOT NULL,
  state       INTEGER NOT NULL DEFAULT 1 CHECK (state IN (1, 2, 3)),
  PRIMARY KEY (client_id, advisory_id)
) STRICT, WITHOUT ROWID;
CREATE INDEX client_advisories_by_advisory ON client_advisories(advisory_id);

CREATE TABLE log_monitoring_params (
  entity_id INTEGER NOT NULL,
  type      INTEGER NOT NULL CHECK (type BETWEEN 0 AND 4294967295),
  name      TEXT NOT NULL CHECK (name <> ''),
  value     TEXT NOT NULL,
  PRIMARY KEY (entity_id, type, name)
) STRICT, WITHOUT ROWID;
)sql";

// Migration 8 (client file content): the files clients put into Temp/ and registered, and the
// values pushed by clients (pushVSData), newest kept.
constexpr const char* kMigrationFileContent = R"sql(
-- One row per (client, file name): registering the same name again replaces the row.
CREATE TABLE file_registrations (
  id            INTEGER PRIMARY KEY AUTOINCREMENT,
  client_id     INTEGER NOT NULL REFERENCES clients(id) ON DELETE CASCADE,
  file_name     TEXT NOT NULL CHECK (file_name <> ''),
  path          TEXT NOT NULL,
  stored_path   TEXT NOT NULL,
  size          INTEGER NOT NULL DEFAULT 0 CHECK (size >= 0),
  text          TEXT NOT NULL DEFAULT '',
  registered_at INTEGER NOT NULL,
  UNIQUE (client_id, file_name)
) STRICT;
CREATE INDEX file_registrations_by_name ON file_registrations(file_name);

CREATE TABLE vs_data (
  id          INTEGER PRIMARY KEY AUTOINCREMENT,
  received_at INTEGER NOT NULL,
  value1      INTEGER NOT NULL DEFAULT 0,
  value2      INTEGER NOT NULL DEFAULT 0,
  value3      INTEGER NOT NULL DEFAULT 0,
  value4      INTEGER NOT NULL DEFAULT 0,
  text        TEXT NOT NULL DEFAULT '',
  number      INTEGER NOT NULL DEFAULT 0
) STRICT;
)sql";

constexpr Migration kMigrations[] = {
    {1, "entity tree", kMigration1},
    {2, "entity lists", kMigrationEntityLists},
    {3, "clients and application ids", kMigrationClients},
    {4, "global parameters and application properties", kMigrationParams},
    {5, "subclients", kMigrationSubclients},
    {6, "instances and application types", kMigrationInstances},
    {7, "alerts, advisories and log monitoring", kMigrationAlertsAndMonitoring},
    {8, "client file content", kMigrationFileContent},
};

constexpr const char* kLabel = "Store::Migrate";

CLmError Exec(sqlite3* db, const char* sql, const std::string& operation) {
  int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
  return rc == SQLITE_OK ? CLmError() : SqliteError(db, rc, operation);
}

CLmError ReadUserVersion(sqlite3* db, const std::string& label, int* version) {
  sqlite3_stmt* stmt = nullptr;
  int rc = sqlite3_prepare_v2(db, "PRAGMA user_version", -1, &stmt, nullptr);
  if (rc == SQLITE_OK) rc = sqlite3_step(stmt);
  CLmError e;
  if (rc == SQLITE_ROW) {
    *version = sqlite3_column_int(stmt, 0);
  } else {
    e = SqliteError(db, rc, label + ": reading the schema version");
  }
  sqlite3_finalize(stmt);
  return e;
}

// The first row that breaks a foreign key, as text; empty when there is none.
std::string ForeignKeyViolation(sqlite3* db) {
  sqlite3_stmt* stmt = nullptr;
  std::string found;
  if (sqlite3_prepare_v2(db, "PRAGMA foreign_key_check", -1, &stmt, nullptr) == SQLITE_OK &&
      sqlite3_step(stmt) == SQLITE_ROW) {
    const char* table = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    const char* parent = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 2));
    found = std::string("row ") + std::to_string(sqlite3_column_int64(stmt, 1)) + " of " +
            (table ? table : "?") + " refers to a missing row of " + (parent ? parent : "?");
  }
  sqlite3_finalize(stmt);
  return found;
}

CLmError CheckNumbering(std::span<const Migration> migrations) {
  for (size_t i = 0; i < migrations.size(); ++i) {
    if (migrations[i].version != static_cast<int>(i) + 1) {
      return CLmError::Format(kKpErrInternal, "migration '%s' is numbered %d at place %zu",
                              migrations[i].name, migrations[i].version, i + 1);
    }
  }
  return CLmError();
}

}  // namespace

std::span<const Migration> ServerMigrations() {
  return kMigrations;
}

CLmError Migrate(sqlite3* db, std::span<const Migration> migrations, const std::string& label,
                 int* version) {
  if (CLmError e = CheckNumbering(migrations)) return e;
  const int latest = static_cast<int>(migrations.size());

  // IMMEDIATE takes the write lock before the version is read, so two servers opening one new
  // file cannot both decide to create the schema.
  if (CLmError e = Exec(db, "BEGIN IMMEDIATE", label + ": starting the migration")) return e;
  int current = 0;
  CLmError e = ReadUserVersion(db, label, &current);
  if (!e && (current < 0 || current > latest)) {
    e = CLmError::Format(kKpErrNotSupported,
                         "%s: the database is at schema version %d, but this server knows "
                         "versions up to %d; it was written by a newer server (use that server, "
                         "or another file)",
                         label.c_str(), current, latest);
  }
  for (int v = current + 1; !e && v <= latest; ++v) {
    const Migration& m = migrations[static_cast<size_t>(v - 1)];
    e = Exec(db, m.sql, label + ": migration " + std::to_string(v) + " (" + m.name + ")");
  }
  if (!e && current < latest) {
    std::string violation = ForeignKeyViolation(db);
    if (!violation.empty()) {
      e = CLmError(kKpErrInternal, label + ": after migrating, " + violation);
    } else {
      std::string sql = "PRAGMA user_version = " + std::to_string(latest);
      e = Exec(db, sql.c_str(), label + ": recording the schema version");
    }
  }
  if (!e) e = Exec(db, "COMMIT", label + ": committing the migration");
  if (e) {
    // A failed COMMIT leaves the transaction open; an error inside may already have ended it.
    if (!sqlite3_get_autocommit(db)) sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    EvEventWrapper::Error(kLabel, "%s", e.Text().c_str());
    return e;
  }
  if (current < latest) {
    EvEventWrapper::DebugLvl(kLabel, 1, "%s: schema migrated from version %d to %d", label.c_str(),
                             current, latest);
  }
  *version = latest;
  return CLmError();
}

}  // namespace appmgr::server
