#include "server/store/ContentStore.h"

#include <algorithm>
#include <cinttypes>
#include <string_view>
#include <unordered_set>

#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

// The statements of one owner's content table. Each text is fixed, so it is the statement
// cache's key.
struct ContentSql {
  const char* read;
  const char* remove;
  const char* insert;
};

constexpr ContentSql kSubclientSql{
    "SELECT position, entry, content_type FROM subclient_content WHERE subclient_id = ?1"
    " ORDER BY position",
    "DELETE FROM subclient_content WHERE subclient_id = ?1 AND position = ?2",
    "INSERT INTO subclient_content (subclient_id, position, entry, content_type)"
    " VALUES (?1, ?2, ?3, ?4)"};
constexpr ContentSql kInstanceSql{
    "SELECT position, entry, content_type FROM instance_content WHERE instance_id = ?1"
    " ORDER BY position",
    "DELETE FROM instance_content WHERE instance_id = ?1 AND position = ?2",
    "INSERT INTO instance_content (instance_id, position, entry, content_type)"
    " VALUES (?1, ?2, ?3, ?4)"};

const ContentSql* SqlFor(EntityKind owner) {
  switch (owner) {
    case EntityKind::kSubclient:
      return &kSubclientSql;
    case EntityKind::kInstance:
      return &kInstanceSql;
    default:
      return nullptr;
  }
}

CLmError NoContent(EntityKind owner) {
  return CLmError::Format(kStoreErrInvalidArgument, "a %s has no content list",
                          EntityKindName(owner));
}

struct Stored {
  int64_t position;
  ContentEntry content;
};

CLmError ReadStored(Txn& txn, const ContentSql& sql, EntityKind owner, uint64_t id,
                    std::vector<Stored>* out) {
  if (CLmError e = RequireEntity(txn, owner, id)) return e;
  Statement st = txn.Prepare(sql.read);
  st.BindU64(1, id);
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    out->push_back(Stored{st.Int(0), ContentEntry{st.Text(1), st.U64(2)}});
  }
  return CLmError();
}

struct EntryKey {
  std::string_view entry;
  uint64_t type;
  bool operator==(const EntryKey&) const = default;
};
struct EntryKeyHash {
  size_t operator()(const EntryKey& k) const {
    return std::hash<std::string_view>()(k.entry) ^ (std::hash<uint64_t>()(k.type) * 31);
  }
};

}  // namespace

CLmError ContentStore::Read(EntityKind owner, uint64_t id, std::vector<ContentEntry>* out) {
  const ContentSql* sql = SqlFor(owner);
  if (sql == nullptr) return NoContent(owner);
  Txn txn(store_, "content read", Txn::kRead);
  std::vector<Stored> stored;
  if (CLmError e = ReadStored(txn, *sql, owner, id, &stored)) return e;
  std::vector<ContentEntry> found;
  found.reserve(stored.size());
  for (Stored& s : stored) found.push_back(std::move(s.content));
  *out = std::move(found);
  return CLmError();
}

CLmError ContentStore::Update(EntityKind owner, uint64_t id, std::span<const ContentEntry> add,
                              std::span<const ContentEntry> remove, bool replace) {
  const ContentSql* sql = SqlFor(owner);
  if (sql == nullptr) return NoContent(owner);
  for (size_t i = 0; i < add.size(); ++i) {
    if (add[i].entry.empty()) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "entry %zu of %zu of the content to add to %s %" PRIu64
                              " is empty",
                              i + 1, add.size(), EntityKindName(owner), id);
    }
  }

  Txn txn(store_, "content update", Txn::kWrite);
  std::vector<Stored> stored;
  if (CLmError e = ReadStored(txn, *sql, owner, id, &stored)) return e;

  // What goes: the entries named for removal, and with `replace` every entry of a type added.
  std::unordered_set<EntryKey, EntryKeyHash> removed;
  for (const ContentEntry& r : remove) removed.insert(EntryKey{r.entry, r.type});
  std::unordered_set<uint64_t> replacedTypes;
  if (replace) {
    for (const ContentEntry& a : add) replacedTypes.insert(a.type);
  }

  std::unordered_set<EntryKey, EntryKeyHash> kept;
  int64_t next = 0;
  for (const Stored& s : stored) {
    next = std::max(next, s.position + 1);
    EntryKey key{s.content.entry, s.content.type};
    if (removed.contains(key) || replacedTypes.contains(s.content.type)) {
      Statement del = txn.Prepare(sql->remove);
      del.BindU64(1, id).BindInt(2, s.position);
      if (CLmError e = del.Run()) return e;
    } else {
      kept.insert(key);
    }
  }

  for (const ContentEntry& a : add) {
    if (!kept.insert(EntryKey{a.entry, a.type}).second) continue;
    Statement ins = txn.Prepare(sql->insert);
    ins.BindU64(1, id).BindInt(2, next++).BindText(3, a.entry).BindU64(4, a.type);
    if (CLmError e = ins.Run()) return e;
  }
  return txn.Commit();
}

}  // namespace appmgr::server
