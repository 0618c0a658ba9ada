#include "server/handlers/ClientHandlers.h"

#include <cinttypes>
#include <optional>
#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/handlers/PropertyHandlers.h"
#include "server/store/ClientStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

std::optional<std::string> Optional(const char* text) {
  return text ? std::optional<std::string>(text) : std::nullopt;
}

// The fields a create or modify request carries.
CLmError FieldsOf(const ClientInfoReq7& req, ClientFields* out) {
  if (static_cast<int32_t>(req.integer5Whole) != req.integer5) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "integer 5 is sent as %" PRId32 " in its 32-bit field but as %" PRId64
                            " whole; the 32-bit field must be the whole value cut to 32 bits",
                            req.integer5, req.integer5Whole);
  }
  ClientFields f;
  f.id = req.integer1;
  f.platformType = req.integer2;
  f.integers = {req.integer3, req.integer4, static_cast<uint64_t>(req.integer5Whole),
                req.integer6, req.integer7, req.integer8, req.integer9, req.integer10,
                req.integer11, req.integer12};
  f.name = Optional(req.text1);
  f.hostName = Optional(req.text2);
  const char* texts[] = {req.text3, req.text4, req.text5, req.text6, req.text7, req.text8};
  for (size_t i = 0; i < f.texts.size(); ++i) f.texts[i] = Optional(texts[i]);
  f.platformCount = req.platformCount;
  for (size_t i = 0; i < req.platformCount && i < ClientRecord::kPlatforms; ++i) {
    f.platformValues[i] = req.platforms[i].value;
    f.platformTexts[i] = Optional(req.platforms[i].text);
  }
  *out = std::move(f);
  return CLmError();
}

void RecordInto(const ClientRecord& c, ClientInfoResp7& r, Exchange& x) {
  r.integer1 = c.id;
  r.integer2 = c.platformType;
  r.integer3 = c.integers[0];
  r.integer4 = c.integers[1];
  r.integer5Whole = static_cast<int64_t>(c.integers[2]);
  r.integer5 = static_cast<int32_t>(r.integer5Whole);
  r.integer6 = c.integers[3];
  r.integer7 = c.integers[4];
  r.integer8 = c.integers[5];
  r.integer9 = c.integers[6];
  r.integer10 = c.integers[7];
  r.integer11 = c.integers[8];
  r.integer12 = c.integers[9];
  r.text1 = x.Text(c.name);
  r.text2 = x.Text(c.hostName);
  r.text3 = x.Text(c.texts[0]);
  r.text4 = x.Text(c.texts[1]);
  r.text5 = x.Text(c.texts[2]);
  r.text6 = x.Text(c.texts[3]);
  r.text7 = x.Text(c.texts[4]);
  r.text8 = x.Text(c.texts[5]);
  r.platformCount = static_cast<uint32_t>(c.platforms.size());
  r.platforms = x.Array<ClientPlatInfo>(c.platforms.size());
  for (size_t i = 0; i < c.platforms.size(); ++i) {
    r.platforms[i].value = c.platforms[i].value;
    r.platforms[i].text = x.Text(c.platforms[i].text);
  }
}

CLmError Lookup(Store& store, const ClientInfoReq7& req, ClientInfoResp7& resp, Exchange& x) {
  ClientRecord c;
  if (req.integer1 != 0) {
    if (CLmError e = ClientStore(store).Lookup(req.integer1, &c)) return e;
  } else if (req.text1 != nullptr && *req.text1 != '\0') {
    if (CLmError e = ClientStore(store).LookupByName(req.text1, &c)) return e;
  } else {
    return CLmError(kStoreErrInvalidArgument,
                    "the request names no client: give its id (integer 1) or its name (text 1)");
  }
  RecordInto(c, resp, x);
  return CLmError();
}

CLmError Create(Store& store, const ClientInfoReq7& req, ClientInfoResp7& resp, Exchange& x) {
  ClientFields fields;
  if (CLmError e = FieldsOf(req, &fields)) return e;
  // Whatever a create sends for them, the texts of a new client start empty, not absent.
  for (auto& t : fields.texts) {
    if (!t) t = std::string();
  }
  if (!fields.hostName) fields.hostName = std::string();
  ClientRecord c;
  if (CLmError e = ClientStore(store).Create(fields, &c)) return e;
  RecordInto(c, resp, x);
  return CLmError();
}

CLmError Modify(Store& store, const ClientInfoReq7& req, ClientInfoResp7& resp, Exchange& x) {
  ClientFields fields;
  if (CLmError e = FieldsOf(req, &fields)) return e;
  ClientRecord c;
  if (CLmError e = ClientStore(store).Modify(fields, &c)) return e;
  RecordInto(c, resp, x);
  return CLmError();
}

CLmError Remove(Store& store, const RemoveClientReq& req, GenericResp&, Exchange&) {
  return ClientStore(store).Remove(req.clientId);
}

uint64_t* IdsInto(const std::vector<uint64_t>& ids, uint32_t* count, Exchange& x) {
  uint64_t* out = x.Array<uint64_t>(ids.size());
  for (size_t i = 0; i < ids.size(); ++i) out[i] = ids[i];
  *count = static_cast<uint32_t>(ids.size());
  return out;
}

CLmError VolumeGuidPairs(Store& store, const GetPairListForDestinationVolumeGUIDReq& req,
                         GetPairListForDestinationVolumeGUIDResp& resp, Exchange& x) {
  if (CLmError e = RequireText(req.volumeGuid, "volume GUID")) return e;
  std::vector<uint64_t> ids;
  if (CLmError e = ClientStore(store).PairsForDestinationVolume(req.volumeGuid, req.option, &ids)) {
    return e;
  }
  resp.pairIds = IdsInto(ids, &resp.count, x);
  return CLmError();
}

CLmError ReplicationSets(Store& store, const GetFRSetsWithDestinationClientReq& req,
                         GetFRSetsWithDestinationClientResp& resp, Exchange& x) {
  ReplicationToClient r;
  if (CLmError e = ClientStore(store).ReplicationTo(req.clientId, &r)) return e;
  resp.ids1 = IdsInto(r.backupSets, &resp.count1, x);
  resp.ids2 = IdsInto(r.sourceClients, &resp.count2, x);
  resp.ids3 = IdsInto(r.pairs, &resp.count3, x);
  return CLmError();
}

CLmError WithProperty(Store& store, const GetClientInfoReq& req, GetClientInfoResp& resp,
                      Exchange& x) {
  if (CLmError e = RequireText(req.propertyName, "property name")) return e;
  if (CLmError e = RequireText(req.propertyValue, "property value")) return e;
  std::vector<ClientSummary> found;
  if (CLmError e = ClientStore(store).WithProperty(req.propertyName, req.propertyValue, &found)) {
    return e;
  }
  resp.clients = x.Array<GetClientInfoElement>(found.size());
  for (size_t i = 0; i < found.size(); ++i) {
    resp.clients[i] = {found[i].id, x.Text(found[i].name), x.Text(found[i].hostName),
                       x.Text(found[i].text3)};
  }
  resp.count = static_cast<uint32_t>(found.size());
  return CLmError();
}

CLmError AsmInstances(Store& store, const GetASMIntancesReq& req, GetASMIntancesResp& resp,
                      Exchange& x) {
  std::vector<uint64_t> ids;
  if (CLmError e = ClientStore(store).AsmInstances(req.id1, req.id2, &ids)) return e;
  resp.instanceIds = IdsInto(ids, &resp.count, x);
  return CLmError();
}

CLmError FsNodeActivity(Store& store, const HandleFSNodeActivityReq& req, HandleFSNodeActivityResp&,
                        Exchange&) {
  if (CLmError e = RequireText(req.data, "node data")) return e;
  if (req.flag > 1) {
    return CLmError::Format(kStoreErrInvalidArgument, "the flag is %" PRIu32 ", not 0 or 1",
                            req.flag);
  }
  return ClientStore(store).SetFsNodeReport(req.clientId, req.data, req.value, req.flag != 0);
}

}  // namespace

void RegisterClientHandlers(Server& server, Store& store) {
  Register(server, store, msg::kClientLookup, Lookup);
  Register(server, store, msg::kClientCreate, Create);
  Register(server, store, msg::kClientModify, Modify);
  Register(server, store, msg::kClientRemove, Remove);
  RegisterPropertyHandlers(server, store, EntityKind::kClient,
                           {msg::kClientGetProperties, msg::kClientSetProperties,
                            msg::kClientRemoveProperties, msg::kClientRemovePropertyNames});
  Register(server, store, msg::kClientVolumeGuidPairs, VolumeGuidPairs);
  Register(server, store, msg::kClientReplicationSets, ReplicationSets);
  Register(server, store, msg::kClientsWithProperty, WithProperty);
  Register(server, store, msg::kClientAsmInstances, AsmInstances);
  Register(server, store, msg::kClientFsNodeActivity, FsNodeActivity);
}

}  // namespace appmgr::server
