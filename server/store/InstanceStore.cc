#include "server/store/InstanceStore.h"

#include <cinttypes>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {

using Txn = Store::Transaction;

CLmError InstanceStore::Lookup(uint64_t id, InstanceInfo* out) {
  Txn txn(store_, "instance lookup", Txn::kRead);
  Statement st =
      txn.Prepare("SELECT name, value, attr2, attr3, attr4, text FROM instances WHERE id = ?1");
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kInstance, id);
  *out = InstanceInfo{st.Text(0), st.Int(1), st.U64(2), st.U64(3), st.U64(4), st.Text(5)};
  return CLmError();
}

CLmError InstanceStore::Update(uint64_t id, const std::string& name, int64_t value) {
  if (name.empty()) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "instance %" PRIu64 " cannot take an empty name", id);
  }
  Txn txn(store_, "instance update", Txn::kWrite);
  Statement st = txn.Prepare("UPDATE instances SET name = ?2, value = ?3 WHERE id = ?1");
  st.BindU64(1, id).BindText(2, name).BindInt(3, value);
  if (CLmError e = st.Run()) {
    // The only key an update can break is the name's uniqueness under its application type.
    if (e.GetErrorCode() != kStoreErrConflict) return e;
    return CLmError::Format(kStoreErrConflict,
                            "instance %" PRIu64
                            " cannot be renamed to '%s': another instance of the same "
                            "application type on the same client has that name",
                            id, name.c_str());
  }
  if (st.Changes() == 0) return EntityNotFound(EntityKind::kInstance, id);
  return txn.Commit();
}

}  // namespace appmgr::server
