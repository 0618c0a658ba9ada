#include "server/store/SubclientStore.h"

#include <cinttypes>
#include <set>
#include <string_view>
#include <unordered_set>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

SubclientInfo InfoOf(const Statement& st) {
  SubclientInfo info;
  info.id = st.U64(0);
  info.backupSetId = st.U64(1);
  info.name = st.Text(2);
  info.guid = st.Text(3);
  info.value = st.Int(4);
  info.attr2 = st.U64(5);
  info.attr3 = st.U64(6);
  info.attr4 = st.U64(7);
  info.text = st.Text(8);
  info.contentFlag = st.U64(9);
  return info;
}

// The subclient's backup set and the client that owns it.
struct Place {
  uint64_t backupSetId = 0;
  uint64_t clientId = 0;
};

CLmError PlaceOf(Txn& txn, uint64_t id, Place* out) {
  Statement st = txn.Prepare(
      "SELECT s.backup_set_id, cat.client_id FROM subclients s"
      " JOIN backup_sets b ON b.id = s.backup_set_id"
      " JOIN instances i ON i.id = b.instance_id"
      " JOIN client_app_types cat ON cat.id = i.client_app_type_id WHERE s.id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kSubclient, id);
  *out = Place{st.U64(0), st.U64(1)};
  return CLmError();
}

// Succeeds when `pairId` is a replication pair of the subclient's backup set; *state is its
// state.
CLmError RequirePair(Txn& txn, uint64_t id, uint64_t pairId, uint64_t* state) {
  Place place;
  if (CLmError e = PlaceOf(txn, id, &place)) return e;
  Statement st =
      txn.Prepare("SELECT state FROM replication_pairs WHERE id = ?1 AND backup_set_id = ?2");
  st.BindU64(1, pairId).BindU64(2, place.backupSetId);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    return CLmError::Format(kStoreErrNotFound,
                            "replication pair %" PRIu64 " is not a pair of backup set %" PRIu64
                            ", the backup set of subclient %" PRIu64,
                            pairId, place.backupSetId, id);
  }
  *state = st.U64(0);
  return CLmError();
}

// ---- Overlap of content paths ----

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

// A path without its trailing separators: "/var/log/" is "/var/log", "C:\" is "C:", "/" is "".
std::string_view Trimmed(std::string_view path) {
  while (!path.empty() && IsSeparator(path.back())) path.remove_suffix(1);
  return path;
}

// The comparison key of a trimmed path: both separators read as '/'.
void KeyOf(std::string_view path, std::string* key) {
  key->assign(path);
  for (char& c : *key) {
    if (c == '\\') c = '/';
  }
}

// Calls `f` with every proper ancestor of a trimmed path: the part before each separator,
// itself trimmed. "/var/log" has "/var" and "" (the root); "C:\Users\x" has "C:\Users" and
// "C:"; a text without separators has none.
template <class F>
void ForEachAncestor(std::string_view path, F f) {
  for (size_t i = 0; i < path.size(); ++i) {
    if (IsSeparator(path[i]) && (i + 1 == path.size() || !IsSeparator(path[i + 1]))) {
      f(Trimmed(path.substr(0, i)));
    }
  }
}

}  // namespace

CLmError SubclientStore::Lookup(uint64_t id, SubclientInfo* out) {
  Txn txn(store_, "subclient lookup", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT id, backup_set_id, name, coalesce(guid, ''), value, attr2, attr3, attr4, text,"
      " content_flag FROM subclients WHERE id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kSubclient, id);
  *out = InfoOf(st);
  return CLmError();
}

CLmError SubclientStore::LookupByGuid(const std::string& guid, SubclientInfo* out) {
  Txn txn(store_, "subclient lookup by GUID", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT id, backup_set_id, name, coalesce(guid, ''), value, attr2, attr3, attr4, text,"
      " content_flag FROM subclients WHERE guid = ?1");
  st.BindText(1, guid);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return CLmError::Format(kStoreErrNotFound, "no subclient has GUID '%s'", guid.c_str());
  *out = InfoOf(st);
  return CLmError();
}

CLmError SubclientStore::Update(uint64_t id, const std::string& name, int64_t value) {
  if (name.empty()) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "subclient %" PRIu64 " cannot take an empty name", id);
  }
  Txn txn(store_, "subclient update", Txn::kWrite);
  Statement st = txn.Prepare("UPDATE subclients SET name = ?2, value = ?3 WHERE id = ?1");
  st.BindU64(1, id).BindText(2, name).BindInt(3, value);
  if (CLmError e = st.Run()) {
    // The only key the update can break is the name's uniqueness within the backup set.
    if (e.GetErrorCode() != kStoreErrConflict) return e;
    return CLmError::Format(kStoreErrConflict,
                            "subclient %" PRIu64
                            " cannot be renamed to '%s': another subclient of the same backup "
                            "set has that name",
                            id, name.c_str());
  }
  if (st.Changes() == 0) return EntityNotFound(EntityKind::kSubclient, id);
  return txn.Commit();
}

CLmError SubclientStore::ContentFlag(uint64_t id, uint64_t* flag) {
  Txn txn(store_, "subclient content flag", Txn::kRead);
  Statement st = txn.Prepare("SELECT content_flag FROM subclients WHERE id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kSubclient, id);
  *flag = st.U64(0);
  return CLmError();
}

CLmError SubclientStore::SetAssociations(uint64_t id, AssociationKind kind,
                                         const std::vector<std::string>& names) {
  const char* what = kind == AssociationKind::kStore ? "store" : "directory";
  for (size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "%s association %zu of %zu for subclient %" PRIu64 " is empty",
                              what, i + 1, names.size(), id);
    }
  }
  Txn txn(store_, "subclient associations update", Txn::kWrite);
  Place place;
  if (CLmError e = PlaceOf(txn, id, &place)) return e;
  Statement del =
      txn.Prepare("DELETE FROM subclient_associations WHERE subclient_id = ?1 AND kind = ?2");
  del.BindU64(1, id).BindInt(2, static_cast<int>(kind));
  if (CLmError e = del.Run()) return e;

  std::unordered_set<std::string_view> seen;
  int64_t position = 0;
  for (const std::string& name : names) {
    if (!seen.insert(name).second) continue;
    if (kind == AssociationKind::kStore) {
      Statement st = txn.Prepare(
          "SELECT 1 FROM backup_set_stores WHERE backup_set_id = ?1 AND name = ?2");
      st.BindU64(1, place.backupSetId).BindText(2, name);
      bool row = false;
      if (CLmError e = st.Step(&row)) return e;
      if (!row) {
        return CLmError::Format(kStoreErrNotFound, "backup set %" PRIu64 " has no store named '%s'",
                                place.backupSetId, name.c_str());
      }
    }
    Statement ins = txn.Prepare(
        "INSERT INTO subclient_associations (subclient_id, kind, position, name)"
        " VALUES (?1, ?2, ?3, ?4)");
    ins.BindU64(1, id).BindInt(2, static_cast<int>(kind)).BindInt(3, position++).BindText(4, name);
    if (CLmError e = ins.Run()) return e;
  }
  return txn.Commit();
}

CLmError SubclientStore::Associations(uint64_t id, AssociationKind kind,
                                      std::vector<std::string>* names) {
  Txn txn(store_, "subclient associations", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kSubclient, id)) return e;
  Statement st = txn.Prepare(
      "SELECT name FROM subclient_associations WHERE subclient_id = ?1 AND kind = ?2"
      " ORDER BY position");
  st.BindU64(1, id).BindInt(2, static_cast<int>(kind));
  std::vector<std::string> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(st.Text(0));
  }
  *names = std::move(found);
  return CLmError();
}

CLmError SubclientStore::Overlapping(uint64_t id, std::vector<uint64_t>* ids) {
  Txn txn(store_, "overlapping subclients", Txn::kRead);
  Place place;
  if (CLmError e = PlaceOf(txn, id, &place)) return e;

  // This subclient's paths, and every ancestor of them: another subclient's path overlaps when
  // it is one of the first (equal), one of the second (it contains one of ours), or has an
  // ancestor among the first (one of ours contains it).
  std::unordered_set<std::string> mine;
  std::unordered_set<std::string> mineAncestors;
  Statement own = txn.Prepare("SELECT entry FROM subclient_content WHERE subclient_id = ?1");
  own.BindU64(1, id);
  for (bool row = true;;) {
    if (CLmError e = own.Step(&row)) return e;
    if (!row) break;
    std::string_view path = Trimmed(own.TextView(0));
    std::string key;
    KeyOf(path, &key);
    mine.insert(key);
    ForEachAncestor(path, [&](std::string_view a) {
      KeyOf(a, &key);
      mineAncestors.insert(key);
    });
  }

  std::set<uint64_t> found;
  if (!mine.empty()) {
    Statement others = txn.Prepare(
        "SELECT c.subclient_id, c.entry FROM subclient_content c"
        " JOIN subclients s ON s.id = c.subclient_id"
        " JOIN backup_sets b ON b.id = s.backup_set_id"
        " JOIN instances i ON i.id = b.instance_id"
        " JOIN client_app_types cat ON cat.id = i.client_app_type_id"
        " WHERE cat.client_id = ?1 AND c.subclient_id <> ?2");
    others.BindU64(1, place.clientId).BindU64(2, id);
    std::string key;  // reused: one allocation for the walk, not one per row
    for (bool row = true;;) {
      if (CLmError e = others.Step(&row)) return e;
      if (!row) break;
      uint64_t other = others.U64(0);
      if (found.contains(other)) continue;
      std::string_view path = Trimmed(others.TextView(1));
      KeyOf(path, &key);
      bool overlaps = mine.contains(key) || mineAncestors.contains(key);
      if (!overlaps) {
        ForEachAncestor(path, [&](std::string_view a) {
          if (overlaps) return;
          KeyOf(a, &key);
          overlaps = mine.contains(key);
        });
      }
      if (overlaps) found.insert(other);
    }
  }
  *ids = std::vector<uint64_t>(found.begin(), found.end());
  return CLmError();
}

CLmError SubclientStore::BackupHost(uint64_t id, uint64_t* clientId) {
  Txn txn(store_, "subclient backup host", Txn::kRead);
  Place place;
  if (CLmError e = PlaceOf(txn, id, &place)) return e;
  Statement st = txn.Prepare("SELECT client_id FROM subclient_backup_hosts WHERE subclient_id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  *clientId = row ? st.U64(0) : place.clientId;
  return CLmError();
}

CLmError SubclientStore::GetPairData(uint64_t id, uint64_t pairId, uint64_t selector,
                                     uint64_t* state, std::string* text) {
  Txn txn(store_, "replication pair data", Txn::kRead);
  uint64_t pairState = 0;
  if (CLmError e = RequirePair(txn, id, pairId, &pairState)) return e;
  Statement st = txn.Prepare(
      "SELECT text FROM subclient_pair_data"
      " WHERE subclient_id = ?1 AND pair_id = ?2 AND selector = ?3");
  st.BindU64(1, id).BindU64(2, pairId).BindU64(3, selector);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    return CLmError::Format(kStoreErrNotFound,
                            "subclient %" PRIu64 " keeps no data for replication pair %" PRIu64
                            " under selector %" PRIu64,
                            id, pairId, selector);
  }
  *text = st.Text(0);
  *state = pairState;
  return CLmError();
}

CLmError SubclientStore::SetPairData(uint64_t id, uint64_t pairId, uint64_t selector,
                                     const std::string& text, bool replace) {
  Txn txn(store_, "replication pair data update", Txn::kWrite);
  uint64_t state = 0;
  if (CLmError e = RequirePair(txn, id, pairId, &state)) return e;
  Statement st = txn.Prepare(
      replace ? "INSERT INTO subclient_pair_data (subclient_id, pair_id, selector, text)"
                " VALUES (?1, ?2, ?3, ?4)"
                " ON CONFLICT (subclient_id, pair_id, selector) DO UPDATE SET text = excluded.text"
              : "INSERT INTO subclient_pair_data (subclient_id, pair_id, selector, text)"
                " VALUES (?1, ?2, ?3, ?4)");
  st.BindU64(1, id).BindU64(2, pairId).BindU64(3, selector).BindText(4, text);
  if (CLmError e = st.Run()) {
    if (e.GetErrorCode() != kStoreErrConflict) return e;
    return CLmError::Format(kStoreErrConflict,
                            "subclient %" PRIu64 " already keeps data for replication pair %" PRIu64
                            " under selector %" PRIu64 " (set the flag to replace it)",
                            id, pairId, selector);
  }
  return txn.Commit();
}

CLmError SubclientStore::FileTypeExtensions(const std::string& fileType, std::string* extensions) {
  Txn txn(store_, "file type extensions", Txn::kRead);
  Statement st = txn.Prepare("SELECT extensions FROM file_type_extensions WHERE file_type = ?1");
  st.BindText(1, fileType);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    return CLmError::Format(kStoreErrNotFound, "no extensions are known for file type '%s'",
                            fileType.c_str());
  }
  *extensions = st.Text(0);
  return CLmError();
}

CLmError SubclientStore::FsBackupSetContent(const BackupSetContentQuery& q, BackupSetContent* out) {
  Txn txn(store_, "backup set content", Txn::kRead);
  Statement bs = txn.Prepare(
      "SELECT b.name, i.id, cat.client_id, cat.app_type_id FROM backup_sets b"
      " JOIN instances i ON i.id = b.instance_id"
      " JOIN client_app_types cat ON cat.id = i.client_app_type_id WHERE b.id = ?1");
  bs.BindU64(1, q.backupSetId);
  bool row = false;
  if (CLmError e = bs.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kBackupSet, q.backupSetId);
  BackupSetContent result;
  result.backupSetName = bs.Text(0);
  const struct {
    uint64_t asked;
    uint64_t actual;
    const char* what;
  } checks[] = {{q.instanceId, bs.U64(1), "instance"},
                {q.clientId, bs.U64(2), "client"},
                {q.appTypeId, bs.U64(3), "application type"}};
  for (const auto& c : checks) {
    if (c.asked != 0 && c.asked != c.actual) {
      return CLmError::Format(kStoreErrNotFound,
                              "backup set %" PRIu64 " is not under %s %" PRIu64
                              " (it is under %s %" PRIu64 ")",
                              q.backupSetId, c.what, c.asked, c.what, c.actual);
    }
  }

  Statement subs = txn.Prepare(
      "SELECT id, contents_deleted FROM subclients WHERE backup_set_id = ?1 ORDER BY id");
  subs.BindU64(1, q.backupSetId);
  bool subclientSeen = false;
  for (;;) {
    if (CLmError e = subs.Step(&row)) return e;
    if (!row) break;
    uint64_t id = subs.U64(0);
    if (q.subclientId != 0 && id != q.subclientId) continue;
    subclientSeen = true;
    if (subs.Int(1) != 0 && !q.withDeleted) continue;
    result.subclientIds.push_back(id);
  }
  if (q.subclientId != 0 && !subclientSeen) {
    return CLmError::Format(kStoreErrNotFound,
                            "subclient %" PRIu64 " is not a subclient of backup set %" PRIu64,
                            q.subclientId, q.backupSetId);
  }
  for (uint64_t id : result.subclientIds) {
    Statement content = txn.Prepare(
        "SELECT entry, content_type FROM subclient_content WHERE subclient_id = ?1"
        " ORDER BY position");
    content.BindU64(1, id);
    for (;;) {
      if (CLmError e = content.Step(&row)) return e;
      if (!row) break;
      if (q.contentType != 0 && content.U64(1) != q.contentType) continue;
      if (!result.entries.empty()) result.entries += '\n';
      result.entries += content.TextView(0);
    }
  }
  *out = std::move(result);
  return CLmError();
}

CLmError SubclientStore::ReferenceCopies(uint64_t id, std::vector<uint64_t>* ids) {
  Txn txn(store_, "reference-copy subclients", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kSubclient, id)) return e;
  Statement st = txn.Prepare(
      "SELECT copy_id FROM subclient_reference_copies WHERE subclient_id = ?1 ORDER BY position");
  st.BindU64(1, id);
  std::vector<uint64_t> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(st.U64(0));
  }
  *ids = std::move(found);
  return CLmError();
}

}  // namespace appmgr::server
