#include "server/handlers/CacheHandlers.h"

#include <string>
#include <vector>

#include "platform/xml/AppMessages.h"
#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/PreparedCacheStore.h"

namespace appmgr::server {
namespace {

std::string Bytes(const std::vector<uint8_t>& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

CLmError EnableServerCache(Store& store, const EnableServerCacheReq& req,
                           EnableServerCacheResp& resp, Exchange& x) {
  std::vector<PreparedCacheEntry> entries;
  if (CLmError e = PreparedCacheStore(store).Entries(req.jobId, &entries)) return e;
  App::EnableAppServerCacheResp message;
  for (size_t i = 0; i < entries.size(); ++i) {
    App::ServerMessageCacheEntity entity;
    entity.requestId = entries[i].requestId;
    entity.responseId = entries[i].responseId;
    entity.request = Bytes(entries[i].request);
    entity.response = Bytes(entries[i].response);
    if (int rc = message.AddCacheEntity(entity)) {
      return CLmError::Format(kKpErrLimit,
                              "job %llu: prepared entry %zu of %zu does not fit in the cache "
                              "message (%d)",
                              static_cast<unsigned long long>(req.jobId), i + 1, entries.size(),
                              rc);
    }
  }
  std::string xml;
  if (int rc = message.serialize(xml)) {
    return CLmError::Format(
        kKpErrLimit, "job %llu: the %zu prepared entries do not fit in one cache message (%d)",
        static_cast<unsigned long long>(req.jobId), entries.size(), rc);
  }
  resp.xmlText = x.Text(xml);
  return CLmError();
}

}  // namespace

void RegisterCacheHandlers(Server& server, Store& store) {
  Register(server, store, msg::kEnableServerCache, EnableServerCache);
}

}  // namespace appmgr::server
