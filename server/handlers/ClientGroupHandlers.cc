#include "server/handlers/ClientGroupHandlers.h"

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/ClientGroupStore.h"

namespace appmgr::server {
namespace {

void GroupInto(const ClientGroup& g, ClientGroupInfoResp& resp, Exchange& x) {
  resp.int1 = g.id;
  resp.int2 = g.int2;
  resp.int3 = g.int3;
  resp.int4 = g.int4;
  resp.int5 = g.int5;
  resp.int6 = g.int6;
  resp.text1 = x.Text(g.name);
  resp.text2 = x.Text(g.description);
  resp.text3 = x.Text(g.text3);
}

CLmError Lookup(Store& store, const ClientGroupInfoReq& req, ClientGroupInfoResp& resp,
                Exchange& x) {
  if (CLmError e = RequireText(req.text1, "group name")) return e;
  ClientGroup group;
  if (CLmError e = ClientGroupStore(store).Lookup(req.text1, &group)) return e;
  GroupInto(group, resp, x);
  return CLmError();
}

CLmError Create(Store& store, const ClientGroupInfoReq& req, ClientGroupInfoResp& resp,
                Exchange& x) {
  if (CLmError e = RequireText(req.text1, "group name")) return e;
  if (CLmError e = RequireText(req.text2, "group description")) return e;
  if (CLmError e = RequireText(req.text3, "third group text")) return e;
  ClientGroup wanted{0,        req.text1, req.text2, req.text3, req.int2,
                     req.int3, req.int4,  req.int5,  req.int6};
  ClientGroup created;
  if (CLmError e = ClientGroupStore(store).Create(wanted, &created)) return e;
  GroupInto(created, resp, x);
  return CLmError();
}

}  // namespace

void RegisterClientGroupHandlers(Server& server, Store& store) {
  Register(server, store, msg::kClientGroupLookup, Lookup);
  Register(server, store, msg::kClientGroupCreate, Create);
}

}  // namespace appmgr::server
