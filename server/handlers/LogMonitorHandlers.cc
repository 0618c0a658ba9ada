#include "server/handlers/LogMonitorHandlers.h"

#include <cinttypes>
#include <string>
#include <vector>

#include "platform/xml/AppMessages.h"
#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/LogMonitorStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

constexpr int64_t kMaxType = 0xffffffffLL;

CLmError TypeOutOfRange(int64_t type) {
  return CLmError::Format(kStoreErrInvalidArgument,
                          "log-monitoring type %" PRId64 " is not within 0 to 4294967295", type);
}

// The entity a message names, or the passthrough's first id when it names none.
uint64_t EntityOf(const CNMessageBase& m, int field, const XmlCall& call) {
  return m.HasField(field) ? static_cast<uint64_t>(m.GetInt64(field)) : call.defaultEntity;
}

// App::LogMonitoringParamsReq: the entity's parameters of one type, or of every type for 0.
CLmError ListParams(XmlCall& call, const CNMessageBase& request,
                    std::unique_ptr<CNMessageBase>* answer) {
  std::unique_ptr<App::LogMonitoringParamsReq> holder;
  CLmError error;
  const auto* req = As<App::LogMonitoringParamsReq>(request, &holder, &error);
  if (req == nullptr) return error;
  const uint64_t entity = EntityOf(*req, App::LogMonitoringParamsReq::kFieldEntityId, call);
  const int64_t type = req->HasField(App::LogMonitoringParamsReq::kFieldType)
                           ? req->GetType()
                           : static_cast<int64_t>(call.defaultType);
  if (type < 0 || type > kMaxType) return TypeOutOfRange(type);
  std::vector<LogParam> params;
  if (CLmError e = LogMonitorStore(call.store)
                       .List(entity, static_cast<uint32_t>(type), type == 0, &params)) {
    return e;
  }
  auto out = std::make_unique<App::LogMonitoringParams>();
  out->SetEntityId(static_cast<int64_t>(entity));
  for (const LogParam& p : params) {
    if (int rc = out->AddParam({p.type, p.name, p.value})) {
      return CLmError::Format(kKpErrInternal, "parameter '%s' cannot be written to the answer (%d)",
                              p.name.c_str(), rc);
    }
  }
  *answer = std::move(out);
  return CLmError();
}

// App::SetLogMonitoringParams: set, remove or replace the entity's parameters.
CLmError SetParams(XmlCall& call, const CNMessageBase& request, std::unique_ptr<CNMessageBase>*) {
  std::unique_ptr<App::SetLogMonitoringParams> holder;
  CLmError error;
  const auto* req = As<App::SetLogMonitoringParams>(request, &holder, &error);
  if (req == nullptr) return error;
  const uint64_t entity = EntityOf(*req, App::SetLogMonitoringParams::kFieldEntityId, call);
  std::vector<LogParam> params;
  for (const App::LogMonitoringParam& p : req->GetParams()) {
    if (p.type < 0 || p.type > kMaxType) return TypeOutOfRange(p.type);
    params.push_back(LogParam{static_cast<uint32_t>(p.type), p.name, p.value});
  }
  LogMonitorStore store(call.store);
  switch (req->GetAction()) {
    case App::SetLogMonitoringParams::kActionSet:
      return store.Set(entity, params);
    case App::SetLogMonitoringParams::kActionRemove:
      return store.Remove(entity, params);
    case App::SetLogMonitoringParams::kActionReplace:
      return store.Replace(entity, params);
    default:
      return CLmError::Format(kStoreErrInvalidArgument,
                              "action %" PRId64 " is not one of 1 set, 2 remove, 3 replace",
                              req->GetAction());
  }
}

// The messages the log-monitoring passthrough carries; nothing else travels there.
const XmlRouter& LogMonitorRouter() {
  static const XmlRouter* router = [] {
    auto* r = new XmlRouter;
    AddLogMonitorRoutes(*r);
    return r;
  }();
  return *router;
}

// GET_LOG_MONITORING_PARAM: one value, by entity, type and name.
CLmError GetParam(Store& store, const GetLogMonitoringParamReq& req,
                  GetLogMonitoringParamResp& resp, Exchange& x) {
  if (CLmError e = RequireText(req.name, "parameter name")) return e;
  std::string value;
  if (CLmError e = LogMonitorStore(store).Get(req.id, req.type, req.name, &value)) return e;
  resp.value = x.Text(value);
  return CLmError();
}

// HANDLE_LOG_MONITOR_XML: the document routed with the two ids as its defaults. The answer is
// always XML; the header repeats an error the answer carries.
CLmError HandleLogMonitorXml(Store& store, const HandleLogMonitorXMLReq& req,
                             HandleLogMonitorXMLResp& resp, Exchange& x) {
  XmlCall call{store, x.connection, req.id1, req.id2};
  AnswerInto(*LogMonitorRouter().RouteText(call, req.xml, 0), resp.hdr, &resp.xml, x);
  return CLmError();
}

}  // namespace

void RegisterLogMonitorHandlers(Server& server, Store& store) {
  Register(server, store, msg::kGetLogMonitoringParam, GetParam);
  Register(server, store, msg::kHandleLogMonitorXml, HandleLogMonitorXml);
}

void AddLogMonitorRoutes(XmlRouter& router) {
  router.Add(App::LogMonitoringParamsReq::kTagId, ListParams);
  router.Add(App::SetLogMonitoringParams::kTagId, SetParams);
}

}  // namespace appmgr::server
