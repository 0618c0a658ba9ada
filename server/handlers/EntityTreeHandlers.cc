#include "server/handlers/EntityTreeHandlers.h"

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/EntityTreeStore.h"

namespace appmgr::server {
namespace {

CLmError DeleteAll(Store& store, const RecDelAppIdsReq& req, GenericResp&, Exchange&) {
  return EntityTreeStore(store).SetSubtreeDeleted(req.level, req.id, req.secondId, true);
}

CLmError UndeleteAll(Store& store, const RecDelAppIdsReq& req, GenericResp&, Exchange&) {
  return EntityTreeStore(store).SetSubtreeDeleted(req.level, req.id, req.secondId, false);
}

CLmError AppTypeDeleteAll(Store& store, const RecDelAppIdsReq1& req, GenericResp&, Exchange&) {
  return EntityTreeStore(store).SetSubtreeDeleted(req.level, req.id, req.secondId, true);
}

}  // namespace

void RegisterEntityTreeHandlers(Server& server, Store& store) {
  Register(server, store, msg::kDeleteAll, DeleteAll);
  Register(server, store, msg::kUndeleteAll, UndeleteAll);
  Register(server, store, msg::kAppTypeDeleteAll, AppTypeDeleteAll);
}

}  // namespace appmgr::server
