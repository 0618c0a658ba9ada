#include "server/store/AdvisoryStore.h"

#include <cinttypes>
#include <set>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

CLmError Unique(const std::vector<Advisory>& advisories) {
  std::set<int64_t> seen;
  for (const Advisory& a : advisories) {
    if (!seen.insert(a.id).second) {
      return CLmError::Format(kStoreErrInvalidArgument, "advisory %" PRId64 " is listed twice",
                              a.id);
    }
  }
  return CLmError();
}

template <class Read>
CLmError Rows(Statement& st, Read read) {
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) return CLmError();
    read(st);
  }
}

}  // namespace

CLmError AdvisoryStore::SyncClient(uint64_t clientId, const std::vector<Advisory>& advisories) {
  if (CLmError e = Unique(advisories)) return e;
  Txn txn(store_, "client advisory sync", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  // Drop what the new set does not keep (its ids as a JSON array), then insert or refresh.
  std::string kept = "[";
  for (const Advisory& a : advisories) {
    if (kept.size() > 1) kept += ',';
    kept += std::to_string(a.id);
  }
  kept += ']';
  Statement drop = txn.Prepare(
      "DELETE FROM client_advisories WHERE client_id = ?1"
      " AND advisory_id NOT IN (SELECT value FROM json_each(?2))");
  drop.BindU64(1, clientId).BindText(2, kept);
  if (CLmError e = drop.Run()) return e;
  for (const Advisory& a : advisories) {
    Statement st = txn.Prepare(
        "INSERT INTO client_advisories (client_id, advisory_id, type, title) VALUES (?1, ?2, ?3, "
        "?4)"
        " ON CONFLICT (client_id, advisory_id) DO UPDATE SET type = excluded.type,"
        " title = excluded.title");
    st.BindU64(1, clientId).BindInt(2, a.id).BindInt(3, a.type).BindText(4, a.title);
    if (CLmError e = st.Run()) return e;
  }
  return txn.Commit();
}

CLmError AdvisoryStore::SyncSource(const std::string& source,
                                   const std::vector<Advisory>& advisories) {
  if (source.empty()) return CLmError(kStoreErrInvalidArgument, "the source has no name");
  if (CLmError e = Unique(advisories)) return e;
  Txn txn(store_, "source advisory sync", Txn::kWrite);
  Statement drop = txn.Prepare("DELETE FROM source_advisories WHERE source = ?1");
  drop.BindText(1, source);
  if (CLmError e = drop.Run()) return e;
  int64_t position = 0;
  for (const Advisory& a : advisories) {
    Statement owner = txn.Prepare("SELECT source FROM source_advisories WHERE advisory_id = ?1");
    owner.BindInt(1, a.id);
    bool row = false;
    if (CLmError e = owner.Step(&row)) return e;
    if (row) {
      return CLmError::Format(kStoreErrConflict,
                              "advisory %" PRId64 " is published by source '%s', not '%s'", a.id,
                              owner.Text(0).c_str(), source.c_str());
    }
    Statement st = txn.Prepare(
        "INSERT INTO source_advisories (advisory_id, source, position, type, title)"
        " VALUES (?1, ?2, ?3, ?4, ?5)");
    st.BindInt(1, a.id).BindText(2, source).BindInt(3, position++).BindInt(4, a.type);
    st.BindText(5, a.title);
    if (CLmError e = st.Run()) return e;
  }
  return txn.Commit();
}

CLmError AdvisoryStore::Control(int64_t action, const std::vector<AdvisoryTarget>& targets) {
  if (action < static_cast<int64_t>(AdvisoryAction::kEnable) ||
      action > static_cast<int64_t>(AdvisoryAction::kRemove)) {
    return CLmError::Format(
        kStoreErrInvalidArgument,
        "action %" PRId64 " is not one of 1 enable, 2 disable, 3 acknowledge, 4 remove", action);
  }
  if (targets.empty()) return CLmError(kStoreErrInvalidArgument, "the control names no advisory");
  const bool remove = action == static_cast<int64_t>(AdvisoryAction::kRemove);
  // Each action's state is its own number (1 enabled, 2 disabled, 3 acknowledged).
  Txn txn(store_, "advisory control", Txn::kWrite);
  for (const AdvisoryTarget& t : targets) {
    Statement st = txn.Prepare(
        remove
            ? "DELETE FROM client_advisories WHERE advisory_id = ?1 AND (?2 = 0 OR client_id = ?2)"
            : "UPDATE client_advisories SET state = ?3"
              " WHERE advisory_id = ?1 AND (?2 = 0 OR client_id = ?2)");
    st.BindInt(1, t.advisoryId).BindU64(2, t.clientId);
    if (!remove) st.BindInt(3, action);
    if (CLmError e = st.Run()) return e;
    if (st.Changes() > 0) continue;
    if (t.clientId == 0) {
      return CLmError::Format(kStoreErrNotFound, "advisory %" PRId64 " applies to no client",
                              t.advisoryId);
    }
    if (CLmError e = RequireEntity(txn, EntityKind::kClient, t.clientId)) return e;
    return CLmError::Format(kStoreErrNotFound,
                            "advisory %" PRId64 " does not apply to client %" PRIu64, t.advisoryId,
                            t.clientId);
  }
  return txn.Commit();
}

CLmError AdvisoryStore::Types(uint64_t clientId, std::vector<AdvisoryType>* out) {
  Txn txn(store_, "advisory types", Txn::kRead);
  if (clientId != 0) {
    if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  }
  Statement st = txn.Prepare(
      "SELECT id, name, description FROM advisory_types WHERE ?1 = 0 OR id IN"
      " (SELECT type FROM client_advisories WHERE client_id = ?1) ORDER BY id");
  st.BindU64(1, clientId);
  std::vector<AdvisoryType> found;
  if (CLmError e = Rows(st, [&](const Statement& r) {
        found.push_back(AdvisoryType{r.Int(0), r.Text(1), r.Text(2)});
      })) {
    return e;
  }
  *out = std::move(found);
  return CLmError();
}

CLmError AdvisoryStore::ForClients(uint64_t clientId, std::vector<StoredAdvisory>* out) {
  Txn txn(store_, "client advisory list", Txn::kRead);
  if (clientId != 0) {
    if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  }
  Statement st = txn.Prepare(
      "SELECT advisory_id, type, title, client_id, state FROM client_advisories"
      " WHERE ?1 = 0 OR client_id = ?1 ORDER BY client_id, advisory_id");
  st.BindU64(1, clientId);
  std::vector<StoredAdvisory> found;
  if (CLmError e = Rows(st, [&](const Statement& r) {
        found.push_back(StoredAdvisory{r.Int(0), r.Int(1), r.Text(2), r.U64(3),
                                       static_cast<int>(r.Int(4)), ""});
      })) {
    return e;
  }
  *out = std::move(found);
  return CLmError();
}

CLmError AdvisoryStore::ForSource(const std::string& source, std::vector<StoredAdvisory>* out) {
  Txn txn(store_, "source advisory list", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT advisory_id, type, title FROM source_advisories WHERE source = ?1 ORDER BY position");
  st.BindText(1, source);
  std::vector<StoredAdvisory> found;
  if (CLmError e = Rows(st, [&](const Statement& r) {
        found.push_back(StoredAdvisory{r.Int(0), r.Int(1), r.Text(2), 0, 0, source});
      })) {
    return e;
  }
  *out = std::move(found);
  return CLmError();
}

}  // namespace appmgr::server
