#include "server/handlers/GlobalParamHandlers.h"

#include <string>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/GlobalParamStore.h"

namespace appmgr::server {
namespace {

CLmError Get(Store& store, const GetGlobalParamReq& req, GetGlobalParamResp& resp, Exchange& x) {
  if (CLmError e = RequireText(req.name, "parameter name")) return e;
  std::string value;
  if (CLmError e = GlobalParamStore(store).Get(req.name, &value)) return e;
  resp.value = x.Text(value);
  return CLmError();
}

CLmError Set(Store& store, const SetGlobalParamReq& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.name, "parameter name")) return e;
  if (CLmError e = RequireText(req.value, "parameter value")) return e;
  return GlobalParamStore(store).Set(req.name, req.value);
}

CLmError Remove(Store& store, const DelGlobalParamReq& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.name, "parameter name")) return e;
  return GlobalParamStore(store).Remove(req.name);
}

CLmError AppGet(Store& store, const GetAppPropertyReq& req, GetAppPropertyResp& resp, Exchange& x) {
  std::string value;
  if (CLmError e = GlobalParamStore(store).GetApp(req.id1, req.id2, &value)) return e;
  resp.value = x.Text(value);
  return CLmError();
}

CLmError AppSet(Store& store, const SetAppPropertyReq& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.value, "property value")) return e;
  return GlobalParamStore(store).SetApp(req.id1, req.id2, req.value);
}

}  // namespace

void RegisterGlobalParamHandlers(Server& server, Store& store) {
  Register(server, store, msg::kGlobalParamGet, Get);
  Register(server, store, msg::kGlobalParamSet, Set);
  Register(server, store, msg::kGlobalParamRemove, Remove);
  Register(server, store, msg::kAppPropertyGet, AppGet);
  Register(server, store, msg::kAppPropertySet, AppSet);
}

}  // namespace appmgr::server
