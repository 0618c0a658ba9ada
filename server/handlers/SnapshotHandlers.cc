#include "server/handlers/SnapshotHandlers.h"

#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/SnapshotStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

// Whether a request carries F3 (slot 2): only set and the list write do.
enum class F3 : bool { kAbsent = false, kCarried = true };

// The text of a slot the request carries: null is an invalid argument.
CLmError Carried(const char* text, const char* field, std::string* out) {
  if (CLmError e = RequireText(text, field)) return e;
  *out = text;
  return CLmError();
}

// A text that need not travel: null reads as empty.
std::string Optional(const char* text) { return text ? text : ""; }

CLmError SnapshotFromWire(const SnapInfo& in, F3 f3, SnapshotRecord* out) {
  SnapshotRecord r;
  r.f1 = in.f1;
  r.f2 = in.f2;
  if (f3 == F3::kCarried) {
    if (CLmError e = Carried(in.f3, "F3", &r.f3)) return e;
  }
  if (CLmError e = Carried(in.f4, "F4", &r.f4)) return e;
  if (CLmError e = Carried(in.f5, "F5", &r.f5)) return e;
  if (CLmError e = Carried(in.f6, "F6", &r.f6)) return e;
  r.f7 = in.f7;
  if (CLmError e = Carried(in.f8, "F8", &r.f8)) return e;
  if (CLmError e = Carried(in.f9, "F9", &r.f9)) return e;
  r.f10 = in.f10;
  r.f11 = in.f11;
  r.f12 = in.f12;
  if (CLmError e = Carried(in.f13, "F13", &r.f13)) return e;
  r.f14 = Optional(in.f14);
  r.f15 = in.f15;
  *out = std::move(r);
  return CLmError();
}

// Every slot, F3, F7 and F14 included: a reader that does not use them skips them.
void SnapshotIntoWire(const SnapshotRecord& r, SnapInfo& out, Exchange& x) {
  out.f1 = r.f1;
  out.f2 = r.f2;
  out.f3 = x.Text(r.f3);
  out.f4 = x.Text(r.f4);
  out.f5 = x.Text(r.f5);
  out.f6 = x.Text(r.f6);
  out.f7 = r.f7;
  out.f8 = x.Text(r.f8);
  out.f9 = x.Text(r.f9);
  out.f10 = r.f10;
  out.f11 = r.f11;
  out.f12 = r.f12;
  out.f13 = x.Text(r.f13);
  out.f14 = x.Text(r.f14);
  out.f15 = r.f15;
}

CLmError DelegateFromWire(const MailBoxDelegate& in, DelegateRecord* out) {
  DelegateRecord r;
  r.g1 = in.g1;
  if (CLmError e = Carried(in.g2, "G2", &r.g2)) return e;
  if (CLmError e = Carried(in.g3, "G3", &r.g3)) return e;
  if (CLmError e = Carried(in.g4, "G4", &r.g4)) return e;
  if (CLmError e = Carried(in.g5, "G5", &r.g5)) return e;
  if (CLmError e = Carried(in.g6, "G6", &r.g6)) return e;
  r.g7 = in.g7;
  *out = std::move(r);
  return CLmError();
}

void DelegateIntoWire(const DelegateRecord& r, MailBoxDelegate& out, Exchange& x) {
  out.g1 = r.g1;
  out.g2 = x.Text(r.g2);
  out.g3 = x.Text(r.g3);
  out.g4 = x.Text(r.g4);
  out.g5 = x.Text(r.g5);
  out.g6 = x.Text(r.g6);
  out.g7 = r.g7;
}

// The entries of a list request, each converted by `convert`; a bad entry is named.
template <class Wire, class Record, class Convert>
CLmError Entries(uint32_t count, const Wire* items, Convert convert, std::vector<Record>* out) {
  if (count > 0 && items == nullptr) return RequireText(nullptr, "record list");
  out->resize(count);
  for (uint32_t i = 0; i < count; ++i) {
    if (CLmError e = convert(items[i], &(*out)[i])) {
      return CLmError(e.GetErrorCode(), "entry " + std::to_string(i + 1) + " of " +
                                            std::to_string(count) + ": " + e.Text());
    }
  }
  return CLmError();
}

// ---- Snapshot records ----

CLmError SnapLookup(Store& store, const SanpInfoReq& req, SanpInfoResp& resp, Exchange& x) {
  SnapshotRecord r;
  if (CLmError e = SnapshotStore(store).Lookup(req.info.f2, &r)) return e;
  SnapshotIntoWire(r, resp.info, x);
  return CLmError();
}

CLmError SnapCreate(Store& store, const SanpInfoReq& req, GenericResp&, Exchange&) {
  SnapshotRecord r;
  if (CLmError e = SnapshotFromWire(req.info, F3::kAbsent, &r)) return e;
  return SnapshotStore(store).Create(r);
}

CLmError SnapUpdate(Store& store, const SanpInfoReq& req, GenericResp&, Exchange&) {
  SnapshotRecord r;
  if (CLmError e = SnapshotFromWire(req.info, F3::kAbsent, &r)) return e;
  return SnapshotStore(store).Update(r, /*withF3=*/false);
}

CLmError SnapRemove(Store& store, const SanpInfoReq& req, GenericResp&, Exchange&) {
  return SnapshotStore(store).Remove(req.info.f2);
}

CLmError SnapSet(Store& store, const SetSnapInfoReq& req, GenericResp&, Exchange&) {
  SnapshotRecord r;
  if (CLmError e = SnapshotFromWire(req.info, F3::kCarried, &r)) return e;
  return SnapshotStore(store).Set(r);
}

CLmError SnapGetList(Store& store, const GetSnapInfoListReq&, GetSnapInfoListResp& resp,
                     Exchange& x) {
  std::vector<SnapshotRecord> records;
  if (CLmError e = SnapshotStore(store).List(&records)) return e;
  resp.infos = x.Array<SnapInfo>(records.size());
  for (size_t i = 0; i < records.size(); ++i) SnapshotIntoWire(records[i], resp.infos[i], x);
  resp.count = static_cast<uint32_t>(records.size());
  return CLmError();
}

CLmError SnapSetList(Store& store, const SetSnapInfoListReq& req, GenericResp&, Exchange&) {
  std::vector<SnapshotRecord> records;
  auto convert = [](const SnapInfo& in, SnapshotRecord* out) {
    return SnapshotFromWire(in, F3::kCarried, out);
  };
  if (CLmError e = Entries(req.count, req.infos, convert, &records)) return e;
  return SnapshotStore(store).SetList(records);
}

// ---- Mailbox delegates ----

CLmError DelegateLookup(Store& store, const MailBoxDelegateReq& req, MailBoxDelegateResp& resp,
                        Exchange& x) {
  DelegateRecord r;
  if (CLmError e = DelegateStore(store).Lookup(req.info.g7, &r)) return e;
  DelegateIntoWire(r, resp.info, x);
  return CLmError();
}

CLmError DelegateCreate(Store& store, const MailBoxDelegateReq& req, GenericResp&, Exchange&) {
  DelegateRecord r;
  if (CLmError e = DelegateFromWire(req.info, &r)) return e;
  return DelegateStore(store).Create(r);
}

CLmError DelegateUpdate(Store& store, const MailBoxDelegateReq& req, GenericResp&, Exchange&) {
  DelegateRecord r;
  if (CLmError e = DelegateFromWire(req.info, &r)) return e;
  return DelegateStore(store).Update(r);
}

CLmError DelegateRemove(Store& store, const MailBoxDelegateReq& req, GenericResp&, Exchange&) {
  return DelegateStore(store).Remove(req.info.g7);
}

CLmError DelegateSet(Store& store, const SetMailBoxDelegateReq& req, GenericResp&, Exchange&) {
  DelegateRecord r;
  if (CLmError e = DelegateFromWire(req.info, &r)) return e;
  return DelegateStore(store).Set(r);
}

CLmError DelegateGetList(Store& store, const GetMailBoxDelegateListReq& req,
                         GetMailBoxDelegateListResp& resp, Exchange& x) {
  std::vector<DelegateRecord> records;
  if (CLmError e = DelegateStore(store).List(req.selector, &records)) return e;
  resp.infos = x.Array<MailBoxDelegate>(records.size());
  for (size_t i = 0; i < records.size(); ++i) DelegateIntoWire(records[i], resp.infos[i], x);
  resp.count = static_cast<uint32_t>(records.size());
  return CLmError();
}

CLmError DelegateSetList(Store& store, const SetMailBoxDelegateListReq& req, GenericResp&,
                         Exchange&) {
  std::vector<DelegateRecord> records;
  if (CLmError e = Entries(req.count, req.infos, DelegateFromWire, &records)) return e;
  return DelegateStore(store).SetList(records);
}

CLmError DelegateRemoveList(Store& store, const RemoveMailBoxDelegateListReq& req, GenericResp&,
                            Exchange&) {
  // Only the ids are read; the texts of the entries may be anything, null included.
  std::vector<uint64_t> ids;
  auto id = [](const MailBoxDelegate& in, uint64_t* out) {
    *out = in.g7;
    return CLmError();
  };
  if (CLmError e = Entries(req.count, req.infos, id, &ids)) return e;
  return DelegateStore(store).RemoveList(ids);
}

}  // namespace

void RegisterSnapshotHandlers(Server& server, Store& store) {
  namespace msg = appmgr::msg;
  Register(server, store, msg::kSnapLookup, SnapLookup);
  Register(server, store, msg::kSnapCreate, SnapCreate);
  Register(server, store, msg::kSnapUpdate, SnapUpdate);
  Register(server, store, msg::kSnapRemove, SnapRemove);
  Register(server, store, msg::kSnapSet, SnapSet);
  Register(server, store, msg::kSnapGetList, SnapGetList);
  Register(server, store, msg::kSnapSetList, SnapSetList);

  Register(server, store, msg::kDelegateLookup, DelegateLookup);
  Register(server, store, msg::kDelegateCreate, DelegateCreate);
  Register(server, store, msg::kDelegateUpdate, DelegateUpdate);
  Register(server, store, msg::kDelegateRemove, DelegateRemove);
  Register(server, store, msg::kDelegateSet, DelegateSet);
  Register(server, store, msg::kDelegateGetList, DelegateGetList);
  Register(server, store, msg::kDelegateSetList, DelegateSetList);
  Register(server, store, msg::kDelegateRemoveList, DelegateRemoveList);
}

}  // namespace appmgr::server
