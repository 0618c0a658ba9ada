#include "server/store/AppIdStore.h"

#include <cinttypes>

#include "server/store/IdCounter.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

constexpr const char* kColumns =
    "SELECT id, number1, number2, number3, number4, number5, number6, number7, number8, text0,"
    " text1, text2, option_value, archive_group_id, incr_archive_group_id FROM app_ids";

CLmError NotFound(uint64_t id) {
  return CLmError::Format(kStoreErrNotFound, "application id %" PRIu64 " does not exist", id);
}

// Reads the id `key` names into *out.
CLmError Find(Txn& txn, const AppIdRecord& key, AppIdRecord* out) {
  static const std::string byId = std::string(kColumns) + " WHERE id = ?1";
  static const std::string byObject =
      std::string(kColumns) +
      " WHERE number3 = ?1 AND number4 = ?2 AND number5 = ?3 AND number6 = ?4 AND number7 = ?5"
      " AND number8 = ?6 AND text0 = ?7 AND text1 = ?8 AND text2 = ?9";
  const bool named = key.numbers[0] != 0;
  Statement st = txn.Prepare(named ? byId.c_str() : byObject.c_str());
  if (named) {
    st.BindU64(1, key.numbers[0]);
  } else {
    for (int i = 0; i < 6; ++i) st.BindU64(1 + i, key.numbers[static_cast<size_t>(3 + i)]);
    for (int i = 0; i < 3; ++i) st.BindText(7 + i, key.texts[static_cast<size_t>(i)]);
  }
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    if (named) return NotFound(key.numbers[0]);
    return CLmError(kStoreErrNotFound, "no application id stands for " + AppIdObjectText(key));
  }
  AppIdRecord r;
  for (int i = 0; i < 9; ++i) r.numbers[static_cast<size_t>(i)] = st.U64(i);
  for (int i = 0; i < 3; ++i) r.texts[static_cast<size_t>(i)] = st.Text(9 + i);
  r.option = static_cast<uint32_t>(st.Int(12));
  r.archiveGroup = st.U64(13);
  r.incrArchiveGroup = st.U64(14);
  *out = std::move(r);
  return CLmError();
}

}  // namespace

std::string AppIdObjectText(const AppIdRecord& r) {
  std::string text = "(";
  for (size_t i = 3; i < 9; ++i) text += std::to_string(r.numbers[i]) + ", ";
  for (size_t i = 0; i < 3; ++i) text += "'" + r.texts[i] + (i < 2 ? "', " : "')");
  return text;
}

CLmError AppIdStore::Get(const AppIdRecord& key, AppIdRecord* out) {
  Txn txn(store_, "application id lookup", Txn::kRead);
  return Find(txn, key, out);
}

CLmError AppIdStore::Create(const AppIdRecord& fields, AppIdRecord* out) {
  Txn txn(store_, "application id create", Txn::kWrite);
  AppIdRecord existing;
  AppIdRecord object = fields;
  object.numbers[0] = 0;  // look the object up, whatever id the request names
  CLmError e = Find(txn, object, &existing);
  if (!e) {
    return CLmError::Format(kStoreErrConflict,
                            "application id %" PRIu64 " already stands for %s", existing.numbers[0],
                            AppIdObjectText(fields).c_str());
  }
  if (e.GetErrorCode() != kStoreErrNotFound) return e;
  AppIdRecord r = fields;
  r.archiveGroup = r.incrArchiveGroup = 0;
  if (r.numbers[0] != 0) {
    AppIdRecord byId;
    byId.numbers[0] = r.numbers[0];
    CLmError taken = Find(txn, byId, &existing);
    if (!taken) {
      return CLmError::Format(kStoreErrConflict, "application id %" PRIu64 " already exists",
                              r.numbers[0]);
    }
    if (taken.GetErrorCode() != kStoreErrNotFound) return taken;
  } else if (CLmError next = NextId(txn, IdTable::kAppIds, &r.numbers[0])) {
    return next;
  }
  Statement st = txn.Prepare(
      "INSERT INTO app_ids (id, number0, number1, number2, number3, number4, number5, number6,"
      " number7, number8, text0, text1, text2, option_value)"
      " VALUES (?1, ?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13)");
  for (int i = 0; i < 9; ++i) st.BindU64(1 + i, r.numbers[static_cast<size_t>(i)]);
  for (int i = 0; i < 3; ++i) st.BindText(10 + i, r.texts[static_cast<size_t>(i)]);
  st.BindInt(13, r.option);
  if (CLmError run = st.Run()) return run;
  if (CLmError commit = txn.Commit()) return commit;
  *out = std::move(r);
  return CLmError();
}

CLmError AppIdStore::Remove(const AppIdRecord& key) {
  Txn txn(store_, "application id remove", Txn::kWrite);
  AppIdRecord found;
  if (CLmError e = Find(txn, key, &found)) return e;
  Statement st = txn.Prepare("DELETE FROM app_ids WHERE id = ?1");
  st.BindU64(1, found.numbers[0]);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

CLmError AppIdStore::UpdateArchiveGroups(uint64_t id, uint64_t archiveGroup,
                                         uint64_t incrArchiveGroup) {
  Txn txn(store_, "archive groups of an application id", Txn::kWrite);
  Statement st = txn.Prepare(
      "UPDATE app_ids SET archive_group_id = ?2, incr_archive_group_id = ?3 WHERE id = ?1");
  st.BindU64(1, id).BindU64(2, archiveGroup).BindU64(3, incrArchiveGroup);
  if (CLmError e = st.Run()) return e;
  if (st.Changes() == 0) return NotFound(id);
  return txn.Commit();
}

CLmError AppIdStore::IncrArchiveGroup(uint64_t id, uint64_t* archiveGroup) {
  Txn txn(store_, "incremental archive group", Txn::kRead);
  Statement st = txn.Prepare("SELECT incr_archive_group_id FROM app_ids WHERE id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return NotFound(id);
  *archiveGroup = st.U64(0);
  return CLmError();
}

}  // namespace appmgr::server
