#include "server/handlers/BackupSetHandlers.h"

#include <cinttypes>
#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/BackupSetStore.h"
#include "server/store/PropertyStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

constexpr EntityKind kKind = EntityKind::kBackupSet;

CLmError Lookup(Store& store, const GenericLookupReq4& req, GenericLookupResp4& resp, Exchange& x) {
  BackupSetInfo info;
  if (CLmError e = BackupSetStore(store).Lookup(req.id, &info)) return e;
  resp.value = info.value;
  resp.name = x.Text(info.name);
  resp.text = x.Text(info.description);
  return CLmError();
}

CLmError Update(Store& store, const GenericUpdateReq2& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.name, "new name")) return e;
  return BackupSetStore(store).Update(req.id, req.name, req.value);
}

CLmError GetProperties(Store& store, const GenericGetPropsReq& req, GenericGetPropsResp& resp,
                       Exchange& x) {
  std::vector<Property> props;
  if (CLmError e = PropertyStore(store).Get(kKind, req.id, req.table, &props)) return e;
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

// The request's property elements; `withValues` also requires each value.
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

CLmError SetProperties(Store& store, const GenericSetPropsReq& req, GenericResp&, Exchange&) {
  std::vector<Property> props;
  if (CLmError e = PropertiesOf(req.count, req.props, true, &props)) return e;
  return PropertyStore(store).Set(kKind, req.id, props, /*replaceAll=*/req.flag != 0);
}

CLmError RemoveProperties(Store& store, const GenericRemovePropsReq1& req, GenericResp&,
                          Exchange&) {
  std::vector<Property> props;
  if (CLmError e = PropertiesOf(req.count, req.props, false, &props)) return e;
  std::vector<std::string> names;
  names.reserve(props.size());
  for (Property& p : props) names.push_back(std::move(p.name));
  return PropertyStore(store).Remove(kKind, req.id, names, /*strict=*/req.flag != 0);
}

CLmError RemovePropertyNames(Store& store, const GenericRemovePropsReq2& req, GenericResp&,
                             Exchange&) {
  if (req.count > 0 && req.names == nullptr) return RequireText(nullptr, "name list");
  std::vector<std::string> names;
  names.reserve(req.count);
  for (uint32_t i = 0; i < req.count; ++i) {
    if (req.names[i].text == nullptr) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "name %" PRIu32 " of %" PRIu32 " in the request is missing", i + 1,
                              req.count);
    }
    names.emplace_back(req.names[i].text);
  }
  return PropertyStore(store).Remove(kKind, req.id, names, /*strict=*/req.flag != 0);
}

CLmError DefaultSubclientForStore(Store& store, const GetDefaultSCForStoreReq& req,
                                  GetDefaultSCForStoreResp& resp, Exchange&) {
  if (CLmError e = RequireText(req.storeName, "store name")) return e;
  return BackupSetStore(store).DefaultSubclientForStore(req.id, req.storeName, &resp.subclientId);
}

CLmError StoreList(Store& store, const GetStoreListReq& req, GenericStringListResp& resp,
                   Exchange& x) {
  std::vector<std::string> names;
  if (CLmError e = BackupSetStore(store).StoreList(req.id, &names)) return e;
  TextsInto(names, &resp.count, &resp.texts, x);
  return CLmError();
}

CLmError WildcardList(Store& store, const GetStoreListReq& req, GenericStringListResp& resp,
                      Exchange& x) {
  std::vector<std::string> expressions;
  if (CLmError e = BackupSetStore(store).WildcardExpressions(req.id, &expressions)) return e;
  TextsInto(expressions, &resp.count, &resp.texts, x);
  return CLmError();
}

void PairInto(const DataPair& pair, DataPairConflict_1& out) {
  out.id1 = pair.pairId;
  out.id2 = pair.backupSetId;
  out.id3 = pair.sourceClientId;
  out.id4 = pair.destinationClientId;
  CopyCut(pair.source, out.text1);
  CopyCut(pair.sourceGuid, out.text2);
  CopyCut(pair.destinationGuid, out.text3);
  CopyCut(pair.destination, out.text4);
  out.value = pair.state;
}

CLmError CheckPairConflict(Store& store, const CheckPairConflictReq& req,
                           CheckPairConflictResp& resp, Exchange&) {
  if (CLmError e = RequireText(req.text1, "source of the new pair")) return e;
  if (CLmError e = RequireText(req.text2, "destination of the new pair")) return e;
  PairConflict result;
  if (CLmError e = BackupSetStore(store).CheckPairConflict(req.id, req.text1, req.text2, &result)) {
    return e;
  }
  PairInto(result.existing, resp.pair1);
  PairInto(result.proposed, resp.pair2);
  resp.conflict = result.conflict ? 1 : 0;
  return CLmError();
}

CLmError FrInterfacePair(Store& store, const getFRdataInterfacePairReq& req,
                         getFRdataInterfacePairResp& resp, Exchange& x) {
  InterfacePair pair;
  if (CLmError e =
          BackupSetStore(store).DataInterfacePair(req.id, req.pairId, req.selector, &pair)) {
    return e;
  }
  resp.first = x.Text(pair.first);
  resp.second = x.Text(pair.second);
  return CLmError();
}

CLmError ClientId(Store& store, const GetClientIdFromBackupSetReq& req,
                  GetClientIdFromBackupSetResp& resp, Exchange&) {
  return BackupSetStore(store).ClientIdForBackupSet(req.id, &resp.clientId);
}

CLmError SystemStateInfo(Store& store, const APPFLRSystemStateInfoReq& req,
                         APPFLRSystemStateInfoResp& resp, Exchange& x) {
  if (CLmError e = RequireText(req.name, "name")) return e;
  std::vector<FlrSystemState> states;
  if (CLmError e = BackupSetStore(store).FlrSystemStateInfo(req.id, req.name, &states)) return e;
  APPFLRSystemStateInfo* infos = x.Array<APPFLRSystemStateInfo>(states.size());
  for (size_t i = 0; i < states.size(); ++i) {
    const FlrSystemState& s = states[i];
    APPFLRSystemStateInfo& info = infos[i];
    info.id = s.id;
    info.value = s.value;
    info.text1 = x.Text(s.text1);
    info.text2 = x.Text(s.text2);
    info.pairCount = static_cast<uint32_t>(s.pairs.size());
    info.pairs = x.Array<APPFLRSystemStatePair>(s.pairs.size());
    for (size_t j = 0; j < s.pairs.size(); ++j) {
      info.pairs[j].id = s.pairs[j].id;
      info.pairs[j].name = x.Text(s.pairs[j].name);
    }
  }
  resp.count = static_cast<uint32_t>(states.size());
  resp.infos = infos;
  return CLmError();
}

}  // namespace

void RegisterBackupSetHandlers(Server& server, Store& store) {
  Register(server, store, msg::kBsLookup, Lookup);
  Register(server, store, msg::kBsUpdate, Update);
  Register(server, store, msg::kBsGetProperties, GetProperties);
  Register(server, store, msg::kBsSetProperties, SetProperties);
  Register(server, store, msg::kBsRemoveProperties, RemoveProperties);
  Register(server, store, msg::kBsRemovePropertyNames, RemovePropertyNames);
  Register(server, store, msg::kBsDefaultSubclientForStore, DefaultSubclientForStore);
  Register(server, store, msg::kBsStoreList, StoreList);
  Register(server, store, msg::kBsWildcardList, WildcardList);
  Register(server, store, msg::kBsPairConflict, CheckPairConflict);
  Register(server, store, msg::kBsFrInterfacePair, FrInterfacePair);
  Register(server, store, msg::kBsClientId, ClientId);
  Register(server, store, msg::kBsFlrSystemState, SystemStateInfo);
}

}  // namespace appmgr::server
