#include "server/handlers/InstanceHandlers.h"

#include <cinttypes>
#include <vector>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/handlers/PropertyHandlers.h"
#include "server/store/ContentStore.h"
#include "server/store/InstanceStore.h"
#include "server/store/PropertyStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

CLmError Lookup(Store& store, const GenericLookupReq3& req, GenericLookupResp3& resp, Exchange& x) {
  InstanceInfo info;
  if (CLmError e = InstanceStore(store).Lookup(req.id, &info)) return e;
  resp.id = req.id;
  resp.name = x.Text(info.name);
  resp.value = info.value;
  resp.attr2 = info.attr2;
  resp.attr3 = info.attr3;
  resp.attr4 = info.attr4;
  resp.text = x.Text(info.text);
  return CLmError();
}

CLmError Update(Store& store, const GenericUpdateReq2& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.name, "new name")) return e;
  return InstanceStore(store).Update(req.id, req.name, req.value);
}

CLmError SetAgProperties(Store& store, const GenericSetPropsReq& req, GenericResp&, Exchange&) {
  std::vector<Property> props;
  if (CLmError e = PropertiesOf(req.count, req.props, true, &props)) return e;
  return PropertyStore(store).Set(EntityKind::kInstance, req.id, props,
                                  /*replaceAll=*/req.flag != 0, kAvailabilityGroupPropertyTable);
}

CLmError InitContent(Store& store, const GenericInitContentReq& req, GenericInitContentResp& resp,
                     Exchange& x) {
  std::vector<ContentEntry> entries;
  if (CLmError e = ContentStore(store).Read(EntityKind::kInstance, req.id, &entries)) return e;
  AppMgrContent* out = x.Array<AppMgrContent>(entries.size());
  for (size_t i = 0; i < entries.size(); ++i) {
    out[i].text = x.Text(entries[i].entry);
    out[i].type = static_cast<int64_t>(entries[i].type);
  }
  resp.count = static_cast<uint32_t>(entries.size());
  resp.content = out;
  return CLmError();
}

// One content array of the request; `which` names it in errors ("add", "remove").
CLmError EntriesOf(uint32_t count, const AppMgrContent* content, const char* which,
                   std::vector<ContentEntry>* out) {
  if (count > 0 && content == nullptr) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "the request counts %" PRIu32 " entries to %s but carries none", count,
                            which);
  }
  out->reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    if (content[i].text == nullptr) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "entry %" PRIu32 " of %" PRIu32 " to %s in the request has no text",
                              i + 1, count, which);
    }
    out->push_back(ContentEntry{content[i].text, static_cast<uint64_t>(content[i].type)});
  }
  return CLmError();
}

CLmError UpdateContent(Store& store, const GenericUpdateContentReq& req, GenericResp&, Exchange&) {
  std::vector<ContentEntry> add, remove;
  if (CLmError e = EntriesOf(req.count1, req.content1, "add", &add)) return e;
  if (CLmError e = EntriesOf(req.count2, req.content2, "remove", &remove)) return e;
  return ContentStore(store).Update(EntityKind::kInstance, req.id, add, remove,
                                    /*replace=*/req.flag1 != 0);
}

}  // namespace

void RegisterInstanceHandlers(Server& server, Store& store) {
  Register(server, store, msg::kInstLookup, Lookup);
  Register(server, store, msg::kInstUpdate, Update);
  RegisterPropertyHandlers(server, store, EntityKind::kInstance,
                           {msg::kInstGetProperties, msg::kInstSetProperties,
                            msg::kInstRemoveProperties, msg::kInstRemovePropertyNames});
  Register(server, store, msg::kInstSetAgProperties, SetAgProperties);
  Register(server, store, msg::kInstInitContent, InitContent);
  Register(server, store, msg::kInstUpdateContent, UpdateContent);
}

}  // namespace appmgr::server
