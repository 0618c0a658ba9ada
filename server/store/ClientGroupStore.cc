#include "server/store/ClientGroupStore.h"

#include <cinttypes>
#include <limits>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

// Reads a row of "id, name, text2, text3, int2, int3, int4, int5, int6".
ClientGroup GroupAt(const Statement& st) {
  return ClientGroup{st.U64(0), st.Text(1), st.Text(2), st.Text(3), st.U64(4),
                     st.U64(5), st.U64(6),  st.U64(7),  st.U64(8)};
}

// The group named `name` (regardless of case) in *out; *found false when there is none.
CLmError FindByName(Txn& txn, const std::string& name, ClientGroup* out, bool* found) {
  // The name column collates without case, so the comparison does too.
  Statement st = txn.Prepare(
      "SELECT id, name, text2, text3, int2, int3, int4, int5, int6 FROM client_groups"
      " WHERE name = ?1");
  st.BindText(1, name);
  if (CLmError e = st.Step(found)) return e;
  if (*found) *out = GroupAt(st);
  return CLmError();
}

CLmError IdList(Txn& txn, const char* sql, uint64_t id, std::vector<uint64_t>* out) {
  Statement st = txn.Prepare(sql);
  st.BindU64(1, id);
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

CLmError ClientGroupStore::Lookup(const std::string& name, ClientGroup* out) {
  if (name.empty()) {
    return CLmError(kStoreErrInvalidArgument,
                    "a client group is looked up by its name, which is empty");
  }
  Txn txn(store_, "client group lookup", Txn::kRead);
  bool found = false;
  ClientGroup group;
  if (CLmError e = FindByName(txn, name, &group, &found)) return e;
  if (!found)
    return CLmError::Format(kStoreErrNotFound, "no client group is named '%s'", name.c_str());
  *out = std::move(group);
  return CLmError();
}

CLmError ClientGroupStore::Create(const ClientGroup& group, ClientGroup* created) {
  if (group.name.empty()) {
    return CLmError(kStoreErrInvalidArgument, "a client group's name cannot be empty");
  }
  Txn txn(store_, "client group creation", Txn::kWrite);
  bool found = false;
  ClientGroup existing;
  if (CLmError e = FindByName(txn, group.name, &existing, &found)) return e;
  if (found) {
    return CLmError::Format(kStoreErrConflict,
                            "client group '%s' already exists (id %" PRIu64 ", '%s')",
                            group.name.c_str(), existing.id, existing.name.c_str());
  }
  Statement next = txn.Prepare("SELECT coalesce(max(id), 0) FROM client_groups");
  bool row = false;
  if (CLmError e = next.Step(&row)) return e;
  const int64_t highest = row ? next.Int(0) : 0;
  if (highest == std::numeric_limits<int64_t>::max()) {
    return CLmError(kStoreErrConflict, "no client group id is left above the highest in use");
  }
  ClientGroup stored = group;
  stored.id = static_cast<uint64_t>(highest) + 1;
  Statement st = txn.Prepare(
      "INSERT INTO client_groups (id, name, text2, text3, int2, int3, int4, int5, int6)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
  st.BindU64(1, stored.id).BindText(2, stored.name).BindText(3, stored.description);
  st.BindText(4, stored.text3).BindU64(5, stored.int2).BindU64(6, stored.int3);
  st.BindU64(7, stored.int4).BindU64(8, stored.int5).BindU64(9, stored.int6);
  if (CLmError e = st.Run()) return e;
  if (CLmError e = txn.Commit()) return e;
  *created = std::move(stored);
  return CLmError();
}

CLmError ClientGroupStore::AddMember(uint64_t groupId, uint64_t clientId) {
  Txn txn(store_, "client group membership", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClientGroup, groupId)) return e;
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  Statement st = txn.Prepare(
      "INSERT INTO client_group_members (group_id, client_id) VALUES (?1, ?2)"
      " ON CONFLICT DO NOTHING");
  st.BindU64(1, groupId).BindU64(2, clientId);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

CLmError ClientGroupStore::RemoveMember(uint64_t groupId, uint64_t clientId) {
  Txn txn(store_, "client group membership", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClientGroup, groupId)) return e;
  Statement st =
      txn.Prepare("DELETE FROM client_group_members WHERE group_id = ?1 AND client_id = ?2");
  st.BindU64(1, groupId).BindU64(2, clientId);
  if (CLmError e = st.Run()) return e;
  if (st.Changes() == 0) {
    return CLmError::Format(kStoreErrNotFound,
                            "client %" PRIu64 " is not a member of client group %" PRIu64, clientId,
                            groupId);
  }
  return txn.Commit();
}

CLmError ClientGroupStore::Members(uint64_t groupId, std::vector<uint64_t>* clientIds) {
  Txn txn(store_, "client group members", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kClientGroup, groupId)) return e;
  return IdList(txn,
                "SELECT client_id FROM client_group_members WHERE group_id = ?1 ORDER BY client_id",
                groupId, clientIds);
}

CLmError ClientGroupStore::GroupsOfClient(uint64_t clientId, std::vector<uint64_t>* groupIds) {
  Txn txn(store_, "client groups of a client", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kClient, clientId)) return e;
  return IdList(txn,
                "SELECT group_id FROM client_group_members WHERE client_id = ?1 ORDER BY group_id",
                clientId, groupIds);
}

}  // namespace appmgr::server
