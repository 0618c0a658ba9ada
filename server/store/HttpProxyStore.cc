#include "server/store/HttpProxyStore.h"

#include <cerrno>
#include <cstdlib>
#include <map>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

int64_t Number(const std::string& text) {
  if (text.empty()) return 0;
  char* end = nullptr;
  errno = 0;
  long long v = std::strtoll(text.c_str(), &end, 10);
  return (errno != 0 || *end != '\0') ? 0 : v;
}

}  // namespace

CLmError HttpProxyStore::Get(const std::string& client, bool required, HttpProxy* out) {
  Store::Transaction txn(store_, "HTTP proxy settings", Store::Transaction::kRead);
  // The client's own properties override the global parameters of the same name: both are read
  // into one map, the client's second.
  int64_t clientId = 0;
  if (!client.empty()) {
    Statement find = txn.Prepare("SELECT id FROM clients WHERE name = ?1");
    find.BindText(1, client);
    bool row = false;
    if (CLmError e = find.Step(&row)) return e;
    if (row) {
      clientId = find.Int(0);
    } else if (required) {
      return CLmError::Format(kStoreErrNotFound, "client '%s' does not exist", client.c_str());
    }
  }
  Statement st = txn.Prepare(
      "SELECT 0 AS layer, name, value FROM global_params WHERE name GLOB '[ns]HTTPProxy*'"
      " UNION ALL"
      " SELECT 1, name, value FROM properties WHERE entity_kind = ?1 AND entity_id = ?2"
      " AND table_selector = 0 AND name GLOB '[ns]HTTPProxy*' ORDER BY layer");
  st.BindInt(1, static_cast<int64_t>(EntityKind::kClient)).BindInt(2, clientId);
  std::map<std::string, std::string> values;
  for (bool row = true;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    values[st.Text(1)] = st.Text(2);
  }
  HttpProxy p;
  p.enabled = Number(values["nHTTPProxyEnabled"]) == 1;
  p.host = values["sHTTPProxyHost"];
  p.port = Number(values["nHTTPProxyPort"]);
  p.user = values["sHTTPProxyUser"];
  p.password = values["sHTTPProxyPassword"];
  const std::string& list = values["sHTTPProxyExclusions"];
  for (size_t start = 0; start <= list.size();) {
    size_t end = list.find(';', start);
    if (end == std::string::npos) end = list.size();
    if (end > start) p.exclusions.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  *out = std::move(p);
  return CLmError();
}

}  // namespace appmgr::server
