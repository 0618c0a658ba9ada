#include "server/handlers/AppTypeHandlers.h"

#include <cinttypes>
#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/handlers/PropertyHandlers.h"
#include "server/store/AppTypeStore.h"
#include "server/store/PropertyStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

constexpr EntityKind kKind = EntityKind::kClientAppType;

CLmError Create(Store& store, const GenericDaxReq& req, GenericResp&, Exchange&) {
  return AppTypeStore(store).Create(/*clientId=*/req.id1, /*appTypeId=*/req.id2);
}

CLmError Remove(Store& store, const GenericDaxReq& req, GenericResp&, Exchange&) {
  return AppTypeStore(store).Remove(/*clientId=*/req.id1, /*appTypeId=*/req.id2);
}

CLmError Lookup(Store& store, const GenericDaxReq& req, GenericLookupResp2& resp, Exchange& x) {
  AppTypeInfo info;
  if (CLmError e = AppTypeStore(store).Lookup(/*clientId=*/req.id2, /*appTypeId=*/req.id1, &info)) {
    return e;
  }
  resp.value = info.value;
  resp.name = x.Text(info.name);
  return CLmError();
}

CLmError Update(Store& store, const ApptypeUpdateReq& req, GenericResp&, Exchange&) {
  return AppTypeStore(store).Update(/*clientId=*/req.id2, /*appTypeId=*/req.id1,
                                    static_cast<uint64_t>(req.value));
}

// Runs a property operation on the pair's surrogate id. The pair is resolved in its own read
// transaction; should it be removed before the property operation runs, the property store's
// "client application type 5 does not exist" is answered as the pair the caller named.
template <class Op>
CLmError OnPair(Store& store, uint64_t clientId, uint64_t appTypeId, Op op) {
  uint64_t id = 0;
  if (CLmError e = AppTypeStore(store).SurrogateId(clientId, appTypeId, &id)) return e;
  CLmError e = op(id);
  if (e.GetErrorCode() == kStoreErrNotFound) {
    return CLmError::Format(kStoreErrNotFound,
                            "client %" PRIu64 " has no application type %" PRIu64, clientId,
                            appTypeId);
  }
  return e;
}

CLmError GetProperties(Store& store, const GetAppTypePropsReq& req, GenericGetPropsResp& resp,
                       Exchange& x) {
  std::vector<Property> props;
  if (CLmError e = OnPair(store, req.clientId, req.appTypeId, [&](uint64_t id) {
        return PropertyStore(store).Get(kKind, id, req.table, &props);
      })) {
    return e;
  }
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

CLmError SetProperties(Store& store, const SetAppTypePropsReq& req, GenericResp&, Exchange&) {
  std::vector<Property> props;
  if (CLmError e = PropertiesOf(req.count, req.props, true, &props)) return e;
  return OnPair(store, req.clientId, req.appTypeId, [&](uint64_t id) {
    return PropertyStore(store).Set(kKind, id, props, /*replaceAll=*/req.flag != 0);
  });
}

CLmError RemoveProperties(Store& store, const RemoveAppTypePropsReq1& req, GenericResp&,
                          Exchange&) {
  std::vector<Property> props;
  if (CLmError e = PropertiesOf(req.count, req.props, false, &props)) return e;
  std::vector<std::string> names;
  names.reserve(props.size());
  for (Property& p : props) names.push_back(std::move(p.name));
  return OnPair(store, req.clientId, req.appTypeId, [&](uint64_t id) {
    return PropertyStore(store).Remove(kKind, id, names, /*strict=*/req.flag != 0);
  });
}

CLmError RemovePropertyNames(Store& store, const RemoveAppTypePropsReq2& req, GenericResp&,
                             Exchange&) {
  std::vector<std::string> names;
  if (CLmError e = NamesOf(req.count, req.names, &names)) return e;
  return OnPair(store, req.clientId, req.appTypeId, [&](uint64_t id) {
    return PropertyStore(store).Remove(kKind, id, names, /*strict=*/req.flag != 0);
  });
}

CLmError SetVolumeProperty(Store& store, const UpdateDCVolPropReq& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.text, "volume text")) return e;
  return AppTypeStore(store).SetVolumeProperty(
      {req.clientId, req.appTypeId, req.volumeId, req.value1, req.text, req.value2, req.value3,
       req.value4, req.signedValue, req.value5});
}

}  // namespace

void RegisterAppTypeHandlers(Server& server, Store& store) {
  Register(server, store, msg::kAppTypeCreate, Create);
  Register(server, store, msg::kAppTypeRemove, Remove);
  Register(server, store, msg::kAppTypeLookup, Lookup);
  Register(server, store, msg::kAppTypeUpdate, Update);
  Register(server, store, msg::kAppTypeGetProperties, GetProperties);
  Register(server, store, msg::kAppTypeSetProperties, SetProperties);
  Register(server, store, msg::kAppTypeRemoveProperties, RemoveProperties);
  Register(server, store, msg::kAppTypeRemovePropertyNames, RemovePropertyNames);
  Register(server, store, msg::kAppTypeDcVolProp, SetVolumeProperty);
}

}  // namespace appmgr::server
