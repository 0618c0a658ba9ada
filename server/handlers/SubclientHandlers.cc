#include "server/handlers/SubclientHandlers.h"

#include <cinttypes>
#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/handlers/PropertyHandlers.h"
#include "server/store/ContentStore.h"
#include "server/store/StoreErrors.h"
#include "server/store/SubclientStore.h"

namespace appmgr::server {
namespace {

void InfoInto(const SubclientInfo& info, AppGetSubClientPropertiesResp& resp, Exchange& x) {
  resp.subclientId = info.id;
  resp.name = x.Text(info.name);
  resp.value = info.value;
  resp.attr2 = info.attr2;
  resp.attr3 = info.attr3;
  resp.attr4 = info.attr4;
  resp.text = x.Text(info.text);
  resp.parentId = info.backupSetId;
}

CLmError Lookup(Store& store, const GenericLookupReq& req, AppGetSubClientPropertiesResp& resp,
                Exchange& x) {
  SubclientInfo info;
  if (CLmError e = SubclientStore(store).Lookup(req.id, &info)) return e;
  InfoInto(info, resp, x);
  return CLmError();
}

CLmError LookupByGuid(Store& store, const SCGUIDLookupReq& req,
                      AppGetSubClientPropertiesResp& resp, Exchange& x) {
  if (CLmError e = RequireText(req.guid, "GUID")) return e;
  SubclientInfo info;
  if (CLmError e = SubclientStore(store).LookupByGuid(req.guid, &info)) return e;
  InfoInto(info, resp, x);
  return CLmError();
}

CLmError Update(Store& store, const GenericUpdateReq2& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.name, "new name")) return e;
  return SubclientStore(store).Update(req.id, req.name, req.value);
}

CLmError InitContent(Store& store, const GenericInitContentReq& req,
                     GenericInitContentResp2& resp, Exchange& x) {
  uint64_t flag = 0;
  if (CLmError e = SubclientStore(store).ContentFlag(req.id, &flag)) return e;
  std::vector<ContentEntry> content;
  if (CLmError e = ContentStore(store).Read(EntityKind::kSubclient, req.id, &content)) return e;
  AppMgrContent* entries = x.Array<AppMgrContent>(content.size());
  for (size_t i = 0; i < content.size(); ++i) {
    entries[i].text = x.Text(content[i].entry);
    entries[i].type = static_cast<int64_t>(content[i].type);
  }
  resp.contentFlag = flag;
  resp.count = static_cast<uint32_t>(content.size());
  resp.entries = entries;
  return CLmError();
}

// The entries of one content array; a null text names its place in the list.
CLmError EntriesOf(uint64_t id, uint32_t count, const AppMgrContent* entries, const char* which,
                   std::vector<ContentEntry>* out) {
  if (count > 0 && entries == nullptr) return RequireText(nullptr, which);
  out->reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    if (entries[i].text == nullptr) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "entry %" PRIu32 " of %" PRIu32 " of the %s subclient %" PRIu64
                              " has no text",
                              i + 1, count, which, id);
    }
    out->push_back(ContentEntry{entries[i].text, static_cast<uint64_t>(entries[i].type)});
  }
  return CLmError();
}

CLmError UpdateContent(Store& store, const GenericUpdateContentReq& req, GenericResp&, Exchange&) {
  std::vector<ContentEntry> add, remove;
  if (CLmError e = EntriesOf(req.id, req.count1, req.content1, "content to add to", &add)) {
    return e;
  }
  if (CLmError e = EntriesOf(req.id, req.count2, req.content2, "content to remove from", &remove)) {
    return e;
  }
  return ContentStore(store).Update(EntityKind::kSubclient, req.id, add, remove,
                                    /*replace=*/req.flag1 != 0);
}

template <class Req>
CLmError NamesOf(const Req& req, std::vector<std::string>* out) {
  if (req.count > 0 && req.names == nullptr) return RequireText(nullptr, "name list");
  out->reserve(req.count);
  for (uint32_t i = 0; i < req.count; ++i) {
    if (req.names[i].text == nullptr) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "name %" PRIu32 " of %" PRIu32 " in the request is missing", i + 1,
                              req.count);
    }
    out->emplace_back(req.names[i].text);
  }
  return CLmError();
}

CLmError SetStoreAssociation(Store& store, const SetStoreAssocReq& req, GenericResp&, Exchange&) {
  std::vector<std::string> names;
  if (CLmError e = NamesOf(req, &names)) return e;
  return SubclientStore(store).SetAssociations(req.id, AssociationKind::kStore, names);
}

CLmError SetDirectoryAssociation(Store& store, const SetActiveDirAssocReq& req, GenericResp&,
                                 Exchange&) {
  std::vector<std::string> names;
  if (CLmError e = NamesOf(req, &names)) return e;
  return SubclientStore(store).SetAssociations(req.id, AssociationKind::kDirectory, names);
}

CLmError Overlapping(Store& store, const GetOverlappingSCListReq& req,
                     GetOverlappingSCListResp& resp, Exchange& x) {
  std::vector<uint64_t> ids;
  if (CLmError e = SubclientStore(store).Overlapping(req.id, &ids)) return e;
  uint64_t* out = x.Array<uint64_t>(ids.size());
  for (size_t i = 0; i < ids.size(); ++i) out[i] = ids[i];
  resp.count = static_cast<uint32_t>(ids.size());
  resp.ids = out;
  return CLmError();
}

CLmError BackupHost(Store& store, const BackupHostClientReq& req, BackupHostClientResp& resp,
                    Exchange&) {
  return SubclientStore(store).BackupHost(req.id, &resp.hostId);
}

CLmError GetPairData(Store& store, const GetFRdataPairPropReq& req, GetFRdataPairPropResp& resp,
                     Exchange& x) {
  std::string text;
  if (CLmError e =
          SubclientStore(store).GetPairData(req.first, req.second, req.third, &resp.value, &text)) {
    return e;
  }
  resp.text = x.Text(text);
  return CLmError();
}

CLmError SetPairData(Store& store, const SetFRdataPairPropReq& req, GenericResp&, Exchange&) {
  if (CLmError e = RequireText(req.text, "pair data text")) return e;
  return SubclientStore(store).SetPairData(req.first, req.second, req.third, req.text,
                                           /*replace=*/req.flag != 0);
}

CLmError FileTypeExtensions(Store& store, const GetExtensionsForFileTypeReq& req,
                            GetExtensionsForFileTypeResp& resp, Exchange& x) {
  if (CLmError e = RequireText(req.fileType, "file type")) return e;
  std::string extensions;
  if (CLmError e = SubclientStore(store).FileTypeExtensions(req.fileType, &extensions)) return e;
  resp.extensions = x.Text(extensions);
  return CLmError();
}

CLmError BackupSetContentOf(Store& store, const GetBackupsetContentReq& req,
                            GetBackupsetContentResp& resp, Exchange& x) {
  BackupSetContentQuery q;
  q.clientId = req.appId.number3;
  q.appTypeId = req.appId.number4;
  q.instanceId = req.appId.number5;
  q.backupSetId = req.appId.number6;
  q.subclientId = req.appId.number7;
  q.contentType = req.value;
  q.withDeleted = req.flag != 0;
  BackupSetContent content;
  if (CLmError e = SubclientStore(store).FsBackupSetContent(q, &content)) return e;
  uint64_t* ids = x.Array<uint64_t>(content.subclientIds.size());
  for (size_t i = 0; i < content.subclientIds.size(); ++i) ids[i] = content.subclientIds[i];
  resp.count = static_cast<uint32_t>(content.subclientIds.size());
  resp.ids = ids;
  resp.text1 = x.Text(content.backupSetName);
  resp.text2 = x.Text(content.entries);
  return CLmError();
}

CLmError ReferenceCopies(Store& store, const GetReferenceCopySCReq& req,
                         GetReferenceCopySCResp& resp, Exchange& x) {
  std::vector<uint64_t> ids;
  if (CLmError e = SubclientStore(store).ReferenceCopies(req.id, &ids)) return e;
  RefCopySCInfo* copies = x.Array<RefCopySCInfo>(ids.size());
  for (size_t i = 0; i < ids.size(); ++i) copies[i].subclientId = ids[i];
  resp.count = static_cast<uint32_t>(ids.size());
  resp.copies = copies;
  return CLmError();
}

}  // namespace

void RegisterSubclientHandlers(Server& server, Store& store) {
  Register(server, store, msg::kScLookup, Lookup);
  Register(server, store, msg::kScLookupByGuid, LookupByGuid);
  Register(server, store, msg::kScUpdate, Update);
  RegisterPropertyHandlers(server, store, EntityKind::kSubclient,
                           {msg::kScGetProperties, msg::kScSetProperties,
                            msg::kScRemoveProperties, msg::kScRemovePropertyNames});
  Register(server, store, msg::kScInitContent, InitContent);
  Register(server, store, msg::kScUpdateContent, UpdateContent);
  Register(server, store, msg::kScSetStoreAssociation, SetStoreAssociation);
  Register(server, store, msg::kScSetDirectoryAssociation, SetDirectoryAssociation);
  Register(server, store, msg::kScOverlapping, Overlapping);
  Register(server, store, msg::kScBackupHost, BackupHost);
  Register(server, store, msg::kScGetPairData, GetPairData);
  Register(server, store, msg::kScSetPairData, SetPairData);
  Register(server, store, msg::kScFileTypeExtensions, FileTypeExtensions);
  Register(server, store, msg::kScBackupSetContent, BackupSetContentOf);
  Register(server, store, msg::kScReferenceCopies, ReferenceCopies);
}

}  // namespace appmgr::server
