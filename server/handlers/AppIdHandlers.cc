#include "server/handlers/AppIdHandlers.h"

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/AppIdStore.h"

namespace appmgr::server {
namespace {

CLmError RecordOf(const AppIdInfoReq& req, AppIdRecord* out) {
  if (CLmError e = RequireText(req.text0, "text 0")) return e;
  if (CLmError e = RequireText(req.text1, "text 1")) return e;
  if (CLmError e = RequireText(req.text2, "text 2")) return e;
  AppIdRecord r;
  r.numbers = {req.number0, req.number1, req.number2, req.number3, req.number4,
               req.number5, req.number6, req.number7, req.number8};
  r.texts = {req.text0, req.text1, req.text2};
  r.option = req.option;
  *out = std::move(r);
  return CLmError();
}

void RecordInto(const AppIdRecord& r, AppIdInfoResp& resp, Exchange& x) {
  uint64_t* numbers[] = {&resp.number0, &resp.number1, &resp.number2, &resp.number3, &resp.number4,
                         &resp.number5, &resp.number6, &resp.number7, &resp.number8};
  for (size_t i = 0; i < r.numbers.size(); ++i) *numbers[i] = r.numbers[i];
  resp.text0 = x.Text(r.texts[0]);
  resp.text1 = x.Text(r.texts[1]);
  resp.text2 = x.Text(r.texts[2]);
}

CLmError Get(Store& store, const AppIdInfoReq& req, AppIdInfoResp& resp, Exchange& x) {
  AppIdRecord key, found;
  if (CLmError e = RecordOf(req, &key)) return e;
  if (CLmError e = AppIdStore(store).Get(key, &found)) return e;
  RecordInto(found, resp, x);
  return CLmError();
}

CLmError Create(Store& store, const AppIdInfoReq& req, AppIdInfoResp& resp, Exchange& x) {
  AppIdRecord fields, made;
  if (CLmError e = RecordOf(req, &fields)) return e;
  if (CLmError e = AppIdStore(store).Create(fields, &made)) return e;
  RecordInto(made, resp, x);
  return CLmError();
}

CLmError Remove(Store& store, const AppIdInfoReq& req, GenericResp&, Exchange&) {
  AppIdRecord key;
  if (CLmError e = RecordOf(req, &key)) return e;
  return AppIdStore(store).Remove(key);
}

CLmError UpdateArchiveGroups(Store& store, const AppIdUpdSPReq& req, GenericResp&, Exchange&) {
  return AppIdStore(store).UpdateArchiveGroups(req.first, req.second, req.third);
}

CLmError IncrArchiveGroup(Store& store, const GetIncrAgInfoReq& req, GetIncrAgInfoRes& resp,
                          Exchange&) {
  return AppIdStore(store).IncrArchiveGroup(req.id, &resp.archiveGroupId);
}

}  // namespace

void RegisterAppIdHandlers(Server& server, Store& store) {
  Register(server, store, msg::kAppIdGet, Get);
  Register(server, store, msg::kAppIdCreate, Create);
  Register(server, store, msg::kAppIdRemove, Remove);
  Register(server, store, msg::kAppIdUpdateArchiveGroups, UpdateArchiveGroups);
  Register(server, store, msg::kAppIdIncrArchiveGroup, IncrArchiveGroup);
}

}  // namespace appmgr::server
