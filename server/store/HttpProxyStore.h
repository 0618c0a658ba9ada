// HttpProxyStore: the HTTP proxy a client is to use, read from the configuration.
//
// The installation's proxy is six global parameters; a client may override any of them with a
// property of the same name (entity kind client, table 0):
//   nHTTPProxyEnabled     1 uses the proxy, anything else does not
//   sHTTPProxyHost        host name or address
//   nHTTPProxyPort        TCP port
//   sHTTPProxyUser        user name (empty: no authentication)
//   sHTTPProxyPassword    password
//   sHTTPProxyExclusions  host patterns that bypass the proxy, separated by ';'
// A parameter that is not set reads as 0 or empty; a number that does not parse as decimal
// reads as 0, so a mistyped value switches the proxy off rather than pointing it anywhere.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct HttpProxy {
  bool enabled = false;
  std::string host;
  int64_t port = 0;
  std::string user;
  std::string password;
  std::vector<std::string> exclusions;

  bool operator==(const HttpProxy&) const = default;
};

class HttpProxyStore {
 public:
  explicit HttpProxyStore(Store& store) : store_(store) {}

  // The proxy of the client named `client` (compared without case), or the installation's for
  // an empty name. A name that no client has is kStoreErrNotFound ("client 'x' does not exist");
  // `required` false reads it as the installation's instead (for a caller that only names
  // itself, which need not be a client).
  CLmError Get(const std::string& client, bool required, HttpProxy* out);

 private:
  Store& store_;
};

}  // namespace appmgr::server
