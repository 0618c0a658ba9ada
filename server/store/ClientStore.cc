#include "server/store/ClientStore.h"

#include <cinttypes>

#include "server/store/EntityKind.h"
#include "server/store/IdCounter.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

constexpr const char* kSelectClient =
    "SELECT id, platform_type, int3, int4, int5, int6, int7, int8, int9, int10, int11, int12,"
    " name, host_name, text3, text4, text5, text6, text7, text8 FROM clients";

// Reads one client row of kSelectClient, then its platforms. *found false when there is none.
CLmError ReadClient(Txn& txn, Statement& st, ClientRecord* out, bool* found) {
  if (CLmError e = st.Step(found)) return e;
  if (!*found) return CLmError();
  ClientRecord c;
  c.id = st.U64(0);
  c.platformType = st.U64(1);
  for (size_t i = 0; i < c.integers.size(); ++i) c.integers[i] = st.U64(static_cast<int>(2 + i));
  c.name = st.Text(12);
  c.hostName = st.Text(13);
  for (size_t i = 0; i < c.texts.size(); ++i) c.texts[i] = st.Text(static_cast<int>(14 + i));
  Statement p = txn.Prepare("SELECT slot, value, text FROM client_platforms WHERE client_id = ?1");
  p.BindU64(1, c.id);
  for (bool row = true;;) {
    if (CLmError e = p.Step(&row)) return e;
    if (!row) break;
    int64_t slot = p.Int(0);
    if (slot >= 0 && slot < static_cast<int64_t>(ClientRecord::kPlatforms)) {
      c.platforms[static_cast<size_t>(slot)] = ClientPlatform{p.U64(1), p.Text(2)};
    }
  }
  *out = std::move(c);
  return CLmError();
}

CLmError ReadById(Txn& txn, uint64_t id, ClientRecord* out) {
  static const std::string sql = std::string(kSelectClient) + " WHERE id = ?1";
  Statement st = txn.Prepare(sql.c_str());
  st.BindU64(1, id);
  bool found = false;
  if (CLmError e = ReadClient(txn, st, out, &found)) return e;
  return found ? CLmError() : EntityNotFound(EntityKind::kClient, id);
}

// The id of the client named `name` (without regard to case), other than `except`; 0 if none.
CLmError ClientNamed(Txn& txn, const std::string& name, uint64_t except, uint64_t* id) {
  Statement st = txn.Prepare("SELECT id FROM clients WHERE name = ?1 AND id <> ?2");
  st.BindText(1, name).BindU64(2, except);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  *id = row ? st.U64(0) : 0;
  return CLmError();
}

CLmError CheckName(Txn& txn, const std::string& name, uint64_t except) {
  if (name.empty()) return CLmError(kStoreErrInvalidArgument, "a client's name cannot be empty");
  uint64_t other = 0;
  if (CLmError e = ClientNamed(txn, name, except, &other)) return e;
  if (other != 0) {
    return CLmError::Format(kStoreErrConflict, "a client named '%s' already exists (client %" PRIu64 ")",
                            name.c_str(), other);
  }
  return CLmError();
}

CLmError CheckPlatformCount(const ClientFields& f) {
  if (f.platformCount <= ClientRecord::kPlatforms) return CLmError();
  return CLmError::Format(kStoreErrInvalidArgument, "a client has at most %zu platforms, not %zu",
                          ClientRecord::kPlatforms, f.platformCount);
}

// Writes the three platform slots of `id` as `c` holds them.
CLmError WritePlatforms(Txn& txn, uint64_t id, const ClientRecord& c) {
  for (size_t slot = 0; slot < ClientRecord::kPlatforms; ++slot) {
    Statement st = txn.Prepare(
        "INSERT INTO client_platforms (client_id, slot, value, text) VALUES (?1, ?2, ?3, ?4)"
        " ON CONFLICT (client_id, slot) DO UPDATE SET value = excluded.value, text = excluded.text");
    st.BindU64(1, id).BindInt(2, static_cast<int64_t>(slot));
    st.BindU64(3, c.platforms[slot].value).BindText(4, c.platforms[slot].text);
    if (CLmError e = st.Run()) return e;
  }
  return CLmError();
}

// The fields of a request laid over a client record: numbers always, texts when present.
void Apply(const ClientFields& f, ClientRecord& c) {
  c.platformType = f.platformType;
  c.integers = f.integers;
  if (f.name) c.name = *f.name;
  if (f.hostName) c.hostName = *f.hostName;
  for (size_t i = 0; i < c.texts.size(); ++i) {
    if (f.texts[i]) c.texts[i] = *f.texts[i];
  }
  for (size_t i = 0; i < f.platformCount && i < ClientRecord::kPlatforms; ++i) {
    c.platforms[i].value = f.platformValues[i];
    if (f.platformTexts[i]) c.platforms[i].text = *f.platformTexts[i];
  }
}

// Stores the client row of `c` (an insert, or an update of the row with its id).
CLmError WriteClient(Txn& txn, const ClientRecord& c, bool insert) {
  Statement st = txn.Prepare(
      insert ? "INSERT INTO clients (id, platform_type, int3, int4, int5, int6, int7, int8, int9,"
               " int10, int11, int12, name, host_name, text3, text4, text5, text6, text7, text8)"
               " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16,"
               " ?17, ?18, ?19, ?20)"
             : "UPDATE clients SET platform_type = ?2, int3 = ?3, int4 = ?4, int5 = ?5, int6 = ?6,"
               " int7 = ?7, int8 = ?8, int9 = ?9, int10 = ?10, int11 = ?11, int12 = ?12,"
               " name = ?13, host_name = ?14, text3 = ?15, text4 = ?16, text5 = ?17, text6 = ?18,"
               " text7 = ?19, text8 = ?20 WHERE id = ?1");
  st.BindU64(1, c.id).BindU64(2, c.platformType);
  for (size_t i = 0; i < c.integers.size(); ++i) st.BindU64(static_cast<int>(3 + i), c.integers[i]);
  st.BindText(13, c.name).BindText(14, c.hostName);
  for (size_t i = 0; i < c.texts.size(); ++i) st.BindText(static_cast<int>(15 + i), c.texts[i]);
  return st.Run();
}

CLmError Count(Txn& txn, const char* sql, uint64_t id, int64_t* n) {
  Statement st = txn.Prepare(sql);
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  *n = row ? st.Int(0) : 0;
  return CLmError();
}

CLmError IdList(Statement& st, std::vector<uint64_t>* out) {
  std::vector<uint64_t> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(st.U64(0));
  }
  *out = std::move(found);
  return CLmError();
}

}  // namespace

CLmError ClientStore::Lookup(uint64_t id, ClientRecord* out) {
  Txn txn(store_, "client lookup", Txn::kRead);
  return ReadById(txn, id, out);
}

CLmError ClientStore::LookupByName(const std::string& name, ClientRecord* out) {
  Txn txn(store_, "client lookup by name", Txn::kRead);
  static const std::string sql = std::string(kSelectClient) + " WHERE name = ?1";
  Statement st = txn.Prepare(sql.c_str());
  st.BindText(1, name);
  bool found = false;
  if (CLmError e = ReadClient(txn, st, out, &found)) return e;
  if (!found) return CLmError::Format(kStoreErrNotFound, "no client is named '%s'", name.c_str());
  return CLmError();
}

CLmError ClientStore::Create(const ClientFields& fields, ClientRecord* out) {
  if (!fields.name) return CLmError(kStoreErrInvalidArgument, "a new client needs a name");
  if (CLmError e = CheckPlatformCount(fields)) return e;
  Txn txn(store_, "client create", Txn::kWrite);
  if (CLmError e = CheckName(txn, *fields.name, 0)) return e;
  ClientRecord c;
  if (fields.id != 0) {
    int64_t taken = 0;
    if (CLmError e = Count(txn, "SELECT count(*) FROM clients WHERE id = ?1", fields.id, &taken)) {
      return e;
    }
    if (taken != 0) {
      return CLmError::Format(kStoreErrConflict, "client %" PRIu64 " already exists", fields.id);
    }
    c.id = fields.id;
  } else if (CLmError e = NextId(txn, IdTable::kClients, &c.id)) {
    return e;
  }
  Apply(fields, c);
  if (CLmError e = WriteClient(txn, c, true)) return e;
  if (CLmError e = WritePlatforms(txn, c.id, c)) return e;
  if (CLmError e = txn.Commit()) return e;
  *out = std::move(c);
  return CLmError();
}

CLmError ClientStore::Modify(const ClientFields& fields, ClientRecord* out) {
  if (CLmError e = CheckPlatformCount(fields)) return e;
  Txn txn(store_, "client modify", Txn::kWrite);
  ClientRecord c;
  if (CLmError e = ReadById(txn, fields.id, &c)) return e;
  if (fields.name) {
    if (CLmError e = CheckName(txn, *fields.name, c.id)) return e;
  }
  Apply(fields, c);
  if (CLmError e = WriteClient(txn, c, false)) return e;
  if (CLmError e = WritePlatforms(txn, c.id, c)) return e;
  if (CLmError e = txn.Commit()) return e;
  *out = std::move(c);
  return CLmError();
}

CLmError ClientStore::Remove(uint64_t id) {
  Txn txn(store_, "client remove", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, id)) return e;
  int64_t appTypes = 0, pairs = 0;
  if (CLmError e = Count(txn, "SELECT count(*) FROM client_app_types WHERE client_id = ?1", id,
                         &appTypes)) {
    return e;
  }
  if (appTypes != 0) {
    return CLmError::Format(kStoreErrConflict,
                            "client %" PRIu64 " cannot be removed: it still has %" PRId64
                            " application type%s (with their instances, backup sets and "
                            "subclients); remove those first",
                            id, appTypes, appTypes == 1 ? "" : "s");
  }
  if (CLmError e = Count(txn, "SELECT count(*) FROM replication_pairs WHERE destination_client_id = ?1",
                         id, &pairs)) {
    return e;
  }
  if (pairs != 0) {
    return CLmError::Format(kStoreErrConflict,
                            "client %" PRIu64 " cannot be removed: it is the destination of %" PRId64
                            " replication pair%s; remove those first",
                            id, pairs, pairs == 1 ? "" : "s");
  }
  // Platforms, group memberships and the node report go with the row (ON DELETE CASCADE), the
  // properties by the schema's trigger.
  Statement st = txn.Prepare("DELETE FROM clients WHERE id = ?1");
  st.BindU64(1, id);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

CLmError ClientStore::PairsForDestinationVolume(const std::string& volumeGuid, int64_t option,
                                                std::vector<uint64_t>* pairIds) {
  if (volumeGuid.empty()) return CLmError(kStoreErrInvalidArgument, "the volume GUID is empty");
  if (option < 0) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "option %" PRId64 " is neither 0 (every pair) nor a pair state", option);
  }
  Txn txn(store_, "pairs of a destination volume", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT id FROM replication_pairs WHERE destination_guid = ?1 COLLATE NOCASE"
      " AND (?2 = 0 OR state = ?2) ORDER BY id");
  st.BindText(1, volumeGuid).BindInt(2, option);
  return IdList(st, pairIds);
}

CLmError ClientStore::ReplicationTo(uint64_t clientId, ReplicationToClient* out) {
  Txn txn(store_, "replication to a client", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  ReplicationToClient r;
  Statement sets = txn.Prepare(
      "SELECT DISTINCT p.backup_set_id, cat.client_id FROM replication_pairs p"
      " JOIN backup_sets b ON b.id = p.backup_set_id"
      " JOIN instances i ON i.id = b.instance_id"
      " JOIN client_app_types cat ON cat.id = i.client_app_type_id"
      " WHERE p.destination_client_id = ?1 ORDER BY p.backup_set_id");
  sets.BindU64(1, clientId);
  for (bool row = true;;) {
    if (CLmError e = sets.Step(&row)) return e;
    if (!row) break;
    r.backupSets.push_back(sets.U64(0));
    r.sourceClients.push_back(sets.U64(1));
  }
  Statement pairs = txn.Prepare(
      "SELECT id FROM replication_pairs WHERE destination_client_id = ?1"
      " ORDER BY backup_set_id, id");
  pairs.BindU64(1, clientId);
  if (CLmError e = IdList(pairs, &r.pairs)) return e;
  *out = std::move(r);
  return CLmError();
}

CLmError ClientStore::WithProperty(const std::string& name, const std::string& value,
                                   std::vector<ClientSummary>* out) {
  if (name.empty()) return CLmError(kStoreErrInvalidArgument, "the property name is empty");
  Txn txn(store_, "clients with a property", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT c.id, c.name, c.host_name, c.text3 FROM properties p"
      " JOIN clients c ON c.id = p.entity_id"
      " WHERE p.entity_kind = ?1 AND p.table_selector = 0 AND p.name = ?2 AND p.value = ?3"
      " ORDER BY c.id");
  st.BindInt(1, static_cast<int>(EntityKind::kClient)).BindText(2, name).BindText(3, value);
  std::vector<ClientSummary> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(ClientSummary{st.U64(0), st.Text(1), st.Text(2), st.Text(3)});
  }
  *out = std::move(found);
  return CLmError();
}

CLmError ClientStore::AsmInstances(uint64_t clientId, uint64_t appTypeId,
                                   std::vector<uint64_t>* instanceIds) {
  Txn txn(store_, "ASM instances of a client", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  Statement st = txn.Prepare(
      "SELECT a.instance_id FROM asm_instances a"
      " JOIN instances i ON i.id = a.instance_id"
      " JOIN client_app_types cat ON cat.id = i.client_app_type_id"
      " WHERE cat.client_id = ?1 AND (?2 = 0 OR cat.app_type_id = ?2) ORDER BY a.instance_id");
  st.BindU64(1, clientId).BindU64(2, appTypeId);
  return IdList(st, instanceIds);
}

CLmError ClientStore::SetFsNodeReport(uint64_t clientId, const std::string& data, int32_t value,
                                      bool flag) {
  Txn txn(store_, "file-system node report", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  Statement st = txn.Prepare(
      "INSERT INTO client_fs_node_activity (client_id, data, value, flag, reported_at)"
      " VALUES (?1, ?2, ?3, ?4, CAST(strftime('%s', 'now') AS INTEGER))"
      " ON CONFLICT (client_id) DO UPDATE SET data = excluded.data, value = excluded.value,"
      " flag = excluded.flag, reported_at = excluded.reported_at");
  st.BindU64(1, clientId).BindText(2, data).BindInt(3, value).BindInt(4, flag ? 1 : 0);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

CLmError ClientStore::FsNodeReportOf(uint64_t clientId, FsNodeReport* out) {
  Txn txn(store_, "file-system node report", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  Statement st = txn.Prepare(
      "SELECT data, value, flag, reported_at FROM client_fs_node_activity WHERE client_id = ?1");
  st.BindU64(1, clientId);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    return CLmError::Format(kStoreErrNotFound,
                            "client %" PRIu64 " has reported no file-system node activity", clientId);
  }
  *out = FsNodeReport{st.Text(0), static_cast<int32_t>(st.Int(1)), st.Int(2) != 0, st.Int(3)};
  return CLmError();
}

}  // namespace appmgr::server
