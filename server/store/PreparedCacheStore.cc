#include "server/store/PreparedCacheStore.h"

namespace appmgr::server {

CLmError PreparedCacheStore::Entries(uint64_t jobId, std::vector<PreparedCacheEntry>* out) {
  Store::Transaction txn(store_, "prepared cache entries", Store::Transaction::kRead);
  Statement st = txn.Prepare(
      "SELECT request_id, response_id, request, response FROM server_cache_entries"
      " WHERE job_id = ?1 ORDER BY position");
  st.BindU64(1, jobId);
  std::vector<PreparedCacheEntry> found;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    // The schema keeps both ids within 32 bits.
    found.push_back(PreparedCacheEntry{static_cast<uint32_t>(st.Int(0)),
                                       static_cast<uint32_t>(st.Int(1)), st.Blob(2), st.Blob(3)});
  }
  *out = std::move(found);
  return CLmError();
}

CLmError PreparedCacheStore::Append(uint64_t jobId,
                                    const std::vector<PreparedCacheEntry>& entries) {
  Store::Transaction txn(store_, "adding prepared cache entries", Store::Transaction::kWrite);
  Statement next = txn.Prepare(
      "SELECT coalesce(max(position) + 1, 0) FROM server_cache_entries WHERE job_id = ?1");
  next.BindU64(1, jobId);
  bool row = false;
  if (CLmError e = next.Step(&row)) return e;
  int64_t position = next.Int(0);
  for (const PreparedCacheEntry& entry : entries) {
    Statement st = txn.Prepare(
        "INSERT INTO server_cache_entries"
        " (job_id, position, request_id, response_id, request, response)"
        " VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    st.BindU64(1, jobId).BindInt(2, position++).BindInt(3, entry.requestId);
    st.BindInt(4, entry.responseId).BindBlob(5, entry.request).BindBlob(6, entry.response);
    if (CLmError e = st.Run()) return e;
  }
  return txn.Commit();
}

}  // namespace appmgr::server
