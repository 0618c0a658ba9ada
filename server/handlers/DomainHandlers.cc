#include "server/handlers/DomainHandlers.h"

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/DomainStore.h"

namespace appmgr::server {
namespace {

void DomainInto(const Domain& d, OrbitInfoResp1& resp, Exchange& x) {
  resp.id1 = d.id;
  resp.id2 = d.controlhostClientId;
  resp.id3 = d.id3;
  resp.id4 = d.id4;
  resp.text1 = x.Text(d.name);
  resp.text2 = x.Text(d.controlhostHost);
  resp.text3 = x.Text(d.description);
  resp.text4 = x.Text(d.version);
  resp.text5 = x.Text(d.text5);
  resp.text6 = x.Text(d.text6);
  resp.number = d.number;
}

// The record a create or modify carries; every text is required.
CLmError DomainOf(const OrbitInfoReq1& req, Domain* out) {
  const char* const texts[] = {req.text1, req.text2, req.text3, req.text4, req.text5, req.text6};
  const char* const what[] = {"domain name",    "Controlhost host name", "domain description",
                              "domain version", "fifth domain text",     "sixth domain text"};
  for (int i = 0; i < 6; ++i) {
    if (CLmError e = RequireText(texts[i], what[i])) return e;
  }
  *out = Domain{req.id1,   req.id2,   req.id3,   req.id4,   req.text1, req.text2,
                req.text3, req.text4, req.text5, req.text6, req.number};
  return CLmError();
}

CLmError Lookup(Store& store, const OrbitInfoReq1& req, OrbitInfoResp1& resp, Exchange& x) {
  Domain d;
  if (CLmError e = DomainStore(store).Lookup(req.id1, &d)) return e;
  DomainInto(d, resp, x);
  return CLmError();
}

CLmError Create(Store& store, const OrbitInfoReq1& req, OrbitInfoResp1& resp, Exchange& x) {
  Domain wanted, created;
  if (CLmError e = DomainOf(req, &wanted)) return e;
  if (CLmError e = DomainStore(store).Create(wanted, &created)) return e;
  DomainInto(created, resp, x);
  return CLmError();
}

CLmError Modify(Store& store, const OrbitInfoReq1& req, OrbitInfoResp1& resp, Exchange& x) {
  Domain wanted, stored;
  if (CLmError e = DomainOf(req, &wanted)) return e;
  if (CLmError e = DomainStore(store).Modify(wanted, &stored)) return e;
  DomainInto(stored, resp, x);
  return CLmError();
}

CLmError Remove(Store& store, const RemoveOrbitReq& req, GenericResp&, Exchange&) {
  return DomainStore(store).Remove(req.id);
}

}  // namespace

void RegisterDomainHandlers(Server& server, Store& store) {
  Register(server, store, msg::kOrbitLookup, Lookup);
  Register(server, store, msg::kOrbitCreate, Create);
  Register(server, store, msg::kOrbitModify, Modify);
  Register(server, store, msg::kOrbitRemove, Remove);
}

}  // namespace appmgr::server
