#include "server/handlers/PropertyHandlers.h"

#include <cinttypes>
#include <string>
#include <vector>

#include "protocol/Schemas.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/PropertyStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {

CLmError PropertiesOf(uint32_t count, const AppMgrProps* props, bool withValues,
                      std::vector<Property>* out) {
  if (count > 0 && props == nullptr) return RequireText(nullptr, "property list");
  out->reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    if (props[i].name == nullptr || (withValues && props[i].value == nullptr)) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "property %" PRIu32 " of %" PRIu32 " in the request has no %s", i + 1,
                              count, props[i].name == nullptr ? "name" : "value");
    }
    out->push_back(Property{props[i].name, props[i].type, withValues ? props[i].value : ""});
  }
  return CLmError();
}

CLmError NamesOf(uint32_t count, const AppStringList* names, std::vector<std::string>* out) {
  if (count > 0 && names == nullptr) return RequireText(nullptr, "name list");
  out->reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    if (names[i].text == nullptr) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "name %" PRIu32 " of %" PRIu32 " in the request is missing", i + 1,
                              count);
    }
    out->emplace_back(names[i].text);
  }
  return CLmError();
}

namespace {

CLmError Get(Store& store, EntityKind kind, const GenericGetPropsReq& req, GenericGetPropsResp& resp,
             Exchange& x) {
  std::vector<Property> props;
  if (CLmError e = PropertyStore(store).Get(kind, req.id, req.table, &props)) return e;
  AppMgrProps* out = x.Array<AppMgrProps>(props.size());
  for (size_t i = 0; i < props.size(); ++i) {
    out[i].name = x.Text(props[i].name);
    out[i].type = props[i].type;
    out[i].value = x.Text(props[i].value);
  }
  resp.count = static_cast<uint32_t>(props.size());
  resp.props = out;
  return CLmError();
}

CLmError Set(Store& store, EntityKind kind, const GenericSetPropsReq& req) {
  std::vector<Property> props;
  if (CLmError e = PropertiesOf(req.count, req.props, true, &props)) return e;
  return PropertyStore(store).Set(kind, req.id, props, /*replaceAll=*/req.flag != 0);
}

CLmError Remove(Store& store, EntityKind kind, const GenericRemovePropsReq1& req) {
  std::vector<Property> props;
  if (CLmError e = PropertiesOf(req.count, req.props, false, &props)) return e;
  std::vector<std::string> names;
  names.reserve(props.size());
  for (Property& p : props) names.push_back(std::move(p.name));
  return PropertyStore(store).Remove(kind, req.id, names, /*strict=*/req.flag != 0);
}

CLmError RemoveNames(Store& store, EntityKind kind, const GenericRemovePropsReq2& req) {
  std::vector<std::string> names;
  if (CLmError e = NamesOf(req.count, req.names, &names)) return e;
  return PropertyStore(store).Remove(kind, req.id, names, /*strict=*/req.flag != 0);
}

}  // namespace

void RegisterPropertyHandlers(Server& server, Store& store, EntityKind kind,
                              const PropertyMessages& messages) {
  // Register() takes plain functions; the kind travels in the lambdas instead.
  server.Handle(messages.get, [&store, kind](const GenericGetPropsReq& req, GenericGetPropsResp& resp,
                                             Exchange& x) { Answer(Get(store, kind, req, resp, x), resp, x); });
  server.Handle(messages.set, [&store, kind](const GenericSetPropsReq& req, GenericResp& resp,
                                             Exchange& x) { Answer(Set(store, kind, req), resp, x); });
  server.Handle(messages.remove, [&store, kind](const GenericRemovePropsReq1& req, GenericResp& resp,
                                                Exchange& x) { Answer(Remove(store, kind, req), resp, x); });
  server.Handle(messages.removeNames,
                [&store, kind](const GenericRemovePropsReq2& req, GenericResp& resp, Exchange& x) {
                  Answer(RemoveNames(store, kind, req), resp, x);
                });
}

}  // namespace appmgr::server
