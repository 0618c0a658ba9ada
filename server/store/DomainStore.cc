#include "server/store/DomainStore.h"

#include <cinttypes>
#include <limits>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

// The domain, if there is one: *found false otherwise.
CLmError ReadDomain(Txn& txn, Domain* out, bool* found) {
  Statement st = txn.Prepare(
      "SELECT id, id2, id3, id4, text1, text2, text3, text4, text5, text6, number FROM domain"
      " ORDER BY id LIMIT 1");
  if (CLmError e = st.Step(found)) return e;
  if (*found) {
    *out = Domain{st.U64(0),
                  st.U64(1),
                  st.U64(2),
                  st.U64(3),
                  st.Text(4),
                  st.Text(5),
                  st.Text(6),
                  st.Text(7),
                  st.Text(8),
                  st.Text(9),
                  static_cast<int32_t>(st.Int(10))};
  }
  return CLmError();
}

// The domain named by `id`: 0 or its own id.
CLmError FindDomain(Txn& txn, uint64_t id, Domain* out) {
  bool found = false;
  if (CLmError e = ReadDomain(txn, out, &found)) return e;
  if (!found) return CLmError(kStoreErrNotFound, "this installation has no domain");
  if (id != 0 && id != out->id) {
    return CLmError::Format(kStoreErrNotFound,
                            "domain %" PRIu64
                            " does not exist (this installation's domain is %" PRIu64 ")",
                            id, out->id);
  }
  return CLmError();
}

CLmError CheckName(const Domain& domain) {
  if (domain.name.empty())
    return CLmError(kStoreErrInvalidArgument, "a domain's name cannot be empty");
  return CLmError();
}

}  // namespace

CLmError DomainStore::Lookup(uint64_t id, Domain* out) {
  Txn txn(store_, "domain lookup", Txn::kRead);
  Domain found;
  if (CLmError e = FindDomain(txn, id, &found)) return e;
  *out = std::move(found);
  return CLmError();
}

CLmError DomainStore::Create(const Domain& domain, Domain* created) {
  if (CLmError e = CheckName(domain)) return e;
  if (domain.id > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "domain id %" PRIu64 " is above the highest the store keeps (%" PRId64
                            ")",
                            domain.id, std::numeric_limits<int64_t>::max());
  }
  Txn txn(store_, "domain creation", Txn::kWrite);
  Domain existing;
  bool found = false;
  if (CLmError e = ReadDomain(txn, &existing, &found)) return e;
  if (found) {
    return CLmError::Format(kStoreErrConflict,
                            "this installation already has a domain (%" PRIu64
                            ", '%s'); modify or remove it instead",
                            existing.id, existing.name.c_str());
  }
  Domain stored = domain;
  if (stored.id == 0) stored.id = 1;
  Statement st = txn.Prepare(
      "INSERT INTO domain (id, id2, id3, id4, text1, text2, text3, text4, text5, text6, number)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)");
  st.BindU64(1, stored.id).BindU64(2, stored.controlhostClientId).BindU64(3, stored.id3);
  st.BindU64(4, stored.id4).BindText(5, stored.name).BindText(6, stored.controlhostHost);
  st.BindText(7, stored.description).BindText(8, stored.version).BindText(9, stored.text5);
  st.BindText(10, stored.text6).BindInt(11, stored.number);
  if (CLmError e = st.Run()) return e;
  if (CLmError e = txn.Commit()) return e;
  *created = std::move(stored);
  return CLmError();
}

CLmError DomainStore::Modify(const Domain& domain, Domain* stored) {
  if (CLmError e = CheckName(domain)) return e;
  Txn txn(store_, "domain change", Txn::kWrite);
  Domain current;
  if (CLmError e = FindDomain(txn, domain.id, &current)) return e;
  Domain changed = domain;
  changed.id = current.id;
  changed.number = current.number;  // fixed at creation
  Statement st = txn.Prepare(
      "UPDATE domain SET id2 = ?2, id3 = ?3, id4 = ?4, text1 = ?5, text2 = ?6, text3 = ?7,"
      " text4 = ?8, text5 = ?9, text6 = ?10 WHERE id = ?1");
  st.BindU64(1, changed.id).BindU64(2, changed.controlhostClientId).BindU64(3, changed.id3);
  st.BindU64(4, changed.id4).BindText(5, changed.name).BindText(6, changed.controlhostHost);
  st.BindText(7, changed.description).BindText(8, changed.version).BindText(9, changed.text5);
  st.BindText(10, changed.text6);
  if (CLmError e = st.Run()) return e;
  if (CLmError e = txn.Commit()) return e;
  *stored = std::move(changed);
  return CLmError();
}

CLmError DomainStore::Remove(uint64_t id) {
  if (id == 0) {
    return CLmError(kStoreErrInvalidArgument, "a domain is removed by its id, not by id 0");
  }
  Txn txn(store_, "domain removal", Txn::kWrite);
  Domain current;
  if (CLmError e = FindDomain(txn, id, &current)) return e;
  // The schema's trigger drops the domain's properties with it.
  Statement st = txn.Prepare("DELETE FROM domain WHERE id = ?1");
  st.BindU64(1, id);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

}  // namespace appmgr::server
