#include "server/store/FileContentStore.h"

#include <cinttypes>
#include <ctime>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

#define APPMGR_SELECT_REGISTRATION                                                         \
  "SELECT id, client_id, file_name, path, stored_path, size, text, registered_at"           \
  " FROM file_registrations"

FileRegistration ReadRegistration(const Statement& st) {
  FileRegistration r;
  r.id = st.U64(0);
  r.clientId = st.U64(1);
  r.fileName = st.Text(2);
  r.path = st.Text(3);
  r.storedPath = st.Text(4);
  r.size = st.U64(5);
  r.text = st.Text(6);
  r.registeredAt = st.Int(7);
  return r;
}

int64_t Now() { return static_cast<int64_t>(std::time(nullptr)); }

}  // namespace

std::string_view LastPathComponent(std::string_view path) {
  size_t cut = path.find_last_of("/\\");
  return cut == std::string_view::npos ? path : path.substr(cut + 1);
}

CLmError FileContentStore::Register(const FileRegistration& r, uint64_t* id) {
  if (r.fileName.empty()) {
    return CLmError(kStoreErrInvalidArgument, "a registered file needs a file name");
  }
  Txn txn(store_, "file registration", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, r.clientId)) return e;
  // Replaced, not updated: a new registration gets a new id, so a reader that saw the old one
  // can tell.
  Statement old = txn.Prepare(
      "DELETE FROM file_registrations WHERE client_id = ?1 AND file_name = ?2");
  old.BindU64(1, r.clientId).BindText(2, r.fileName);
  if (CLmError e = old.Run()) return e;
  Statement st = txn.Prepare(
      "INSERT INTO file_registrations"
      " (client_id, file_name, path, stored_path, size, text, registered_at)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7) RETURNING id");
  st.BindU64(1, r.clientId).BindText(2, r.fileName).BindText(3, r.path);
  st.BindText(4, r.storedPath).BindU64(5, r.size).BindText(6, r.text);
  st.BindInt(7, r.registeredAt != 0 ? r.registeredAt : Now());
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  uint64_t given = row ? st.U64(0) : 0;
  if (CLmError e = st.Run()) return e;  // finish the statement: RETURNING writes as it goes
  if (CLmError e = txn.Commit()) return e;
  *id = given;
  return CLmError();
}

CLmError FileContentStore::Registrations(uint64_t clientId, std::vector<FileRegistration>* out) {
  Txn txn(store_, "file registration list", Txn::kRead);
  if (clientId != 0) {
    if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  }
  Statement st =
      clientId == 0
          ? txn.Prepare(APPMGR_SELECT_REGISTRATION " ORDER BY client_id, file_name")
          : txn.Prepare(APPMGR_SELECT_REGISTRATION " WHERE client_id = ?1 ORDER BY file_name");
  if (clientId != 0) st.BindU64(1, clientId);
  std::vector<FileRegistration> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    found.push_back(ReadRegistration(st));
  }
  *out = std::move(found);
  return CLmError();
}

CLmError FileContentStore::FindRegistration(uint64_t clientId, std::string_view pathOrName,
                                            FileRegistration* out) {
  Txn txn(store_, "file registration lookup", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  // The exact path first, then the name it ends in.
  Statement st = txn.Prepare(APPMGR_SELECT_REGISTRATION
                             " WHERE client_id = ?1 AND (path = ?2 OR file_name = ?3)"
                             " ORDER BY path = ?2 DESC LIMIT 1");
  st.BindU64(1, clientId).BindText(2, pathOrName).BindText(3, LastPathComponent(pathOrName));
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) {
    return CLmError(kStoreErrNotFound, "client " + std::to_string(clientId) +
                                           " has no registered file " + std::string(pathOrName));
  }
  *out = ReadRegistration(st);
  return CLmError();
}

CLmError FileContentStore::AddVsData(const VsDataRecord& r, uint64_t* id) {
  Txn txn(store_, "pushed values", Txn::kWrite);
  Statement st = txn.Prepare(
      "INSERT INTO vs_data (received_at, value1, value2, value3, value4, text, number)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7) RETURNING id");
  st.BindInt(1, r.receivedAt != 0 ? r.receivedAt : Now());
  st.BindU64(2, r.value1).BindU64(3, r.value2).BindU64(4, r.value3).BindU64(5, r.value4);
  st.BindText(6, r.text).BindInt(7, r.number);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  uint64_t given = row ? st.U64(0) : 0;
  if (CLmError e = st.Run()) return e;
  Statement prune = txn.Prepare("DELETE FROM vs_data WHERE id <= ?1");
  prune.BindInt(1, static_cast<int64_t>(given) - kMaxVsData);
  if (CLmError e = prune.Run()) return e;
  if (CLmError e = txn.Commit()) return e;
  *id = given;
  return CLmError();
}

CLmError FileContentStore::VsData(std::vector<VsDataRecord>* out) {
  Txn txn(store_, "pushed values list", Txn::kRead);
  Statement st = txn.Prepare(
      "SELECT id, value1, value2, value3, value4, text, number, received_at FROM vs_data"
      " ORDER BY id");
  std::vector<VsDataRecord> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    VsDataRecord r;
    r.id = st.U64(0);
    r.value1 = st.U64(1);
    r.value2 = st.U64(2);
    r.value3 = st.U64(3);
    r.value4 = st.U64(4);
    r.text = st.Text(5);
    r.number = static_cast<int32_t>(st.Int(6));
    r.receivedAt = st.Int(7);
    found.push_back(std::move(r));
  }
  *out = std::move(found);
  return CLmError();
}

}  // namespace appmgr::server
