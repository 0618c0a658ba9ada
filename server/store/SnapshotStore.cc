#include "server/store/SnapshotStore.h"

#include <cinttypes>
#include <set>

#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

CLmError NotFound(const char* kind, uint64_t id) {
  return CLmError::Format(kStoreErrNotFound, "%s %" PRIu64 " does not exist", kind, id);
}

CLmError RequireId(const char* kind, const char* field, uint64_t id) {
  if (id != 0) return CLmError();
  return CLmError::Format(kStoreErrInvalidArgument, "a %s needs a non-zero id (%s)", kind, field);
}

// The error of entry `i` of `n` in a list write.
CLmError InEntry(size_t i, size_t n, const CLmError& e) {
  return CLmError(e.GetErrorCode(),
                  "entry " + std::to_string(i + 1) + " of " + std::to_string(n) + ": " + e.Text());
}

constexpr const char* kSnapshot = "snapshot record";
constexpr const char* kDelegate = "mailbox delegate";

SnapshotRecord ReadSnapshot(const Statement& st) {
  SnapshotRecord r;
  r.f2 = st.U64(0);
  r.f1 = st.U64(1);
  r.f3 = st.Text(2);
  r.f4 = st.Text(3);
  r.f5 = st.Text(4);
  r.f6 = st.Text(5);
  r.f7 = st.U64(6);
  r.f8 = st.Text(7);
  r.f9 = st.Text(8);
  r.f10 = st.U64(9);
  r.f11 = st.U64(10);
  r.f12 = st.U64(11);
  r.f13 = st.Text(12);
  r.f14 = st.Text(13);
  r.f15 = st.U64(14);
  return r;
}

// Binds the record's fields to ?1..?15 in the column order above.
void BindSnapshot(Statement& st, const SnapshotRecord& r) {
  st.BindU64(1, r.f2).BindU64(2, r.f1).BindText(3, r.f3).BindText(4, r.f4).BindText(5, r.f5);
  st.BindText(6, r.f6).BindU64(7, r.f7).BindText(8, r.f8).BindText(9, r.f9).BindU64(10, r.f10);
  st.BindU64(11, r.f11).BindU64(12, r.f12).BindText(13, r.f13).BindText(14, r.f14);
  st.BindU64(15, r.f15);
}

// Insert or update in place: an existing record keeps F7 and F14.
CLmError UpsertSnapshot(Txn& txn, const SnapshotRecord& r) {
  if (CLmError e = RequireId(kSnapshot, "F2", r.f2)) return e;
  Statement st = txn.Prepare(
      "INSERT INTO snapshots (id, f1, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)"
      " ON CONFLICT (id) DO UPDATE SET f1 = excluded.f1, f3 = excluded.f3, f4 = excluded.f4,"
      " f5 = excluded.f5, f6 = excluded.f6, f8 = excluded.f8, f9 = excluded.f9,"
      " f10 = excluded.f10, f11 = excluded.f11, f12 = excluded.f12, f13 = excluded.f13,"
      " f15 = excluded.f15");
  BindSnapshot(st, r);
  return st.Run();
}

DelegateRecord ReadDelegate(const Statement& st) {
  return DelegateRecord{st.U64(1), st.Text(2), st.Text(3), st.Text(4),
                        st.Text(5), st.Text(6), st.U64(0)};
}

void BindDelegate(Statement& st, const DelegateRecord& r) {
  st.BindU64(1, r.g7).BindU64(2, r.g1).BindText(3, r.g2).BindText(4, r.g3).BindText(5, r.g4);
  st.BindText(6, r.g5).BindText(7, r.g6);
}

CLmError UpsertDelegate(Txn& txn, const DelegateRecord& r) {
  if (CLmError e = RequireId(kDelegate, "G7", r.g7)) return e;
  Statement st = txn.Prepare(
      "INSERT INTO mailbox_delegates (id, g1, g2, g3, g4, g5, g6)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)"
      " ON CONFLICT (id) DO UPDATE SET g1 = excluded.g1, g2 = excluded.g2, g3 = excluded.g3,"
      " g4 = excluded.g4, g5 = excluded.g5, g6 = excluded.g6");
  BindDelegate(st, r);
  return st.Run();
}

// Runs `st` (an INSERT of a new record) and turns a clash of ids into a clear conflict.
CLmError InsertNew(Statement& st, const char* kind, uint64_t id) {
  CLmError e = st.Run();
  if (e && e.GetErrorCode() == kStoreErrConflict) {
    return CLmError::Format(kStoreErrConflict, "%s %" PRIu64 " exists already", kind, id);
  }
  return e;
}

// Runs `st` (an UPDATE or DELETE of one record) and reports a missing record.
CLmError ChangeOne(Statement& st, const char* kind, uint64_t id) {
  if (CLmError e = st.Run()) return e;
  return st.Changes() == 0 ? NotFound(kind, id) : CLmError();
}

}  // namespace

// ---- Snapshot records ----

CLmError SnapshotStore::Lookup(uint64_t id, SnapshotRecord* out) {
  Txn txn(store_, "snapshot record lookup", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT id, f1, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15"
      " FROM snapshots WHERE id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return NotFound(kSnapshot, id);
  *out = ReadSnapshot(st);
  return CLmError();
}

CLmError SnapshotStore::Create(const SnapshotRecord& record) {
  if (CLmError e = RequireId(kSnapshot, "F2", record.f2)) return e;
  Txn txn(store_, "snapshot record create", Txn::kWrite);
  Statement st = txn.Prepare(
      "INSERT INTO snapshots (id, f1, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)");
  BindSnapshot(st, record);
  if (CLmError e = InsertNew(st, kSnapshot, record.f2)) return e;
  return txn.Commit();
}

CLmError SnapshotStore::Update(const SnapshotRecord& record, bool withF3) {
  Txn txn(store_, "snapshot record update", Txn::kWrite);
  // ?3 is F3; without it the stored F3 stays (?16 = 0).
  Statement st = txn.Prepare(
      "UPDATE snapshots SET f1 = ?2, f3 = CASE WHEN ?16 THEN ?3 ELSE f3 END, f4 = ?4, f5 = ?5,"
      " f6 = ?6, f8 = ?8, f9 = ?9, f10 = ?10, f11 = ?11, f12 = ?12, f13 = ?13, f15 = ?15"
      " WHERE id = ?1");
  BindSnapshot(st, record);
  st.BindInt(16, withF3 ? 1 : 0);
  if (CLmError e = ChangeOne(st, kSnapshot, record.f2)) return e;
  return txn.Commit();
}

CLmError SnapshotStore::Remove(uint64_t id) {
  Txn txn(store_, "snapshot record remove", Txn::kWrite);
  Statement st = txn.Prepare("DELETE FROM snapshots WHERE id = ?1");
  st.BindU64(1, id);
  if (CLmError e = ChangeOne(st, kSnapshot, id)) return e;
  return txn.Commit();
}

CLmError SnapshotStore::Set(const SnapshotRecord& record) {
  Txn txn(store_, "snapshot record set", Txn::kWrite);
  if (CLmError e = UpsertSnapshot(txn, record)) return e;
  return txn.Commit();
}

CLmError SnapshotStore::List(std::vector<SnapshotRecord>* out) {
  Txn txn(store_, "snapshot record list", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT id, f1, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15"
      " FROM snapshots ORDER BY id");
  std::vector<SnapshotRecord> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(ReadSnapshot(st));
  }
  *out = std::move(found);
  return CLmError();
}

CLmError SnapshotStore::SetList(const std::vector<SnapshotRecord>& records) {
  Txn txn(store_, "snapshot record list set", Txn::kWrite);
  for (size_t i = 0; i < records.size(); ++i) {
    if (CLmError e = UpsertSnapshot(txn, records[i])) return InEntry(i, records.size(), e);
  }
  return txn.Commit();
}

// ---- Mailbox delegates ----

CLmError DelegateStore::Lookup(uint64_t id, DelegateRecord* out) {
  Txn txn(store_, "mailbox delegate lookup", Txn::kRead);
  Statement st =
      txn.Prepare("SELECT id, g1, g2, g3, g4, g5, g6 FROM mailbox_delegates WHERE id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return NotFound(kDelegate, id);
  *out = ReadDelegate(st);
  return CLmError();
}

CLmError DelegateStore::Create(const DelegateRecord& record) {
  if (CLmError e = RequireId(kDelegate, "G7", record.g7)) return e;
  Txn txn(store_, "mailbox delegate create", Txn::kWrite);
  Statement st = txn.Prepare(
      "INSERT INTO mailbox_delegates (id, g1, g2, g3, g4, g5, g6)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  BindDelegate(st, record);
  if (CLmError e = InsertNew(st, kDelegate, record.g7)) return e;
  return txn.Commit();
}

CLmError DelegateStore::Update(const DelegateRecord& record) {
  Txn txn(store_, "mailbox delegate update", Txn::kWrite);
  Statement st = txn.Prepare(
      "UPDATE mailbox_delegates SET g1 = ?2, g2 = ?3, g3 = ?4, g4 = ?5, g5 = ?6, g6 = ?7"
      " WHERE id = ?1");
  BindDelegate(st, record);
  if (CLmError e = ChangeOne(st, kDelegate, record.g7)) return e;
  return txn.Commit();
}

CLmError DelegateStore::Remove(uint64_t id) {
  Txn txn(store_, "mailbox delegate remove", Txn::kWrite);
  Statement st = txn.Prepare("DELETE FROM mailbox_delegates WHERE id = ?1");
  st.BindU64(1, id);
  if (CLmError e = ChangeOne(st, kDelegate, id)) return e;
  return txn.Commit();
}

CLmError DelegateStore::Set(const DelegateRecord& record) {
  Txn txn(store_, "mailbox delegate set", Txn::kWrite);
  if (CLmError e = UpsertDelegate(txn, record)) return e;
  return txn.Commit();
}

CLmError DelegateStore::List(uint64_t selector, std::vector<DelegateRecord>* out) {
  Txn txn(store_, "mailbox delegate list", Txn::kRead);
  // Two statements rather than "?1 = 0 OR g1 = ?1", so the selected list reads the g1 index.
  Statement st =
      selector == 0
          ? txn.Prepare("SELECT id, g1, g2, g3, g4, g5, g6 FROM mailbox_delegates ORDER BY id")
          : txn.Prepare(
                "SELECT id, g1, g2, g3, g4, g5, g6 FROM mailbox_delegates WHERE g1 = ?1"
                " ORDER BY id");
  if (selector != 0) st.BindU64(1, selector);
  std::vector<DelegateRecord> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(ReadDelegate(st));
  }
  *out = std::move(found);
  return CLmError();
}

CLmError DelegateStore::SetList(const std::vector<DelegateRecord>& records) {
  Txn txn(store_, "mailbox delegate list set", Txn::kWrite);
  for (size_t i = 0; i < records.size(); ++i) {
    if (CLmError e = UpsertDelegate(txn, records[i])) return InEntry(i, records.size(), e);
  }
  return txn.Commit();
}

CLmError DelegateStore::RemoveList(const std::vector<uint64_t>& ids) {
  Txn txn(store_, "mailbox delegate list remove", Txn::kWrite);
  std::set<uint64_t> unique(ids.begin(), ids.end());
  std::vector<uint64_t> missing;
  for (uint64_t id : unique) {
    Statement st = txn.Prepare("DELETE FROM mailbox_delegates WHERE id = ?1");
    st.BindU64(1, id);
    if (CLmError e = st.Run()) return e;
    if (st.Changes() == 0) missing.push_back(id);
  }
  if (!missing.empty()) {
    // Nothing is removed: the transaction rolls back.
    std::string listed;
    for (uint64_t id : missing) listed += (listed.empty() ? "" : ", ") + std::to_string(id);
    return CLmError(kStoreErrNotFound,
                    (missing.size() == 1 ? "mailbox delegate " + listed + " does not exist"
                                         : "mailbox delegates " + listed + " do not exist") +
                        "; none was removed");
  }
  return txn.Commit();
}

}  // namespace appmgr::server
