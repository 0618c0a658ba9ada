#include "server/handlers/AdvisoryHandlers.h"

#include <string>
#include <vector>

#include "platform/xml/KPGuiMessages.h"
#include "server/store/AdvisoryStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

std::vector<Advisory> AdvisoriesOf(const std::vector<KPGui::SRMAdvisory>& list) {
  std::vector<Advisory> out;
  out.reserve(list.size());
  for (const KPGui::SRMAdvisory& a : list) out.push_back(Advisory{a.advisoryId, a.type, a.title});
  return out;
}

// Ids travel as signed 64-bit integers in XML; the store's client ids are their bit patterns.
uint64_t ClientId(int64_t id) {
  return static_cast<uint64_t>(id);
}

CLmError SyncClient(XmlCall& call, const CNMessageBase& request, std::unique_ptr<CNMessageBase>*) {
  std::unique_ptr<KPGui::SyncSRMClientAdvisories> holder;
  CLmError error;
  const auto* req = As<KPGui::SyncSRMClientAdvisories>(request, &holder, &error);
  if (req == nullptr) return error;
  return AdvisoryStore(call.store)
      .SyncClient(ClientId(req->GetClientId()), AdvisoriesOf(req->GetAdvisories()));
}

CLmError SyncSource(XmlCall& call, const CNMessageBase& request, std::unique_ptr<CNMessageBase>*) {
  std::unique_ptr<KPGui::SyncSRMSourceAdvisories> holder;
  CLmError error;
  const auto* req = As<KPGui::SyncSRMSourceAdvisories>(request, &holder, &error);
  if (req == nullptr) return error;
  return AdvisoryStore(call.store)
      .SyncSource(req->GetSourceName(), AdvisoriesOf(req->GetAdvisories()));
}

CLmError Control(XmlCall& call, const CNMessageBase& request, std::unique_ptr<CNMessageBase>*) {
  std::unique_ptr<KPGui::ControlSRMAdvisories> holder;
  CLmError error;
  const auto* req = As<KPGui::ControlSRMAdvisories>(request, &holder, &error);
  if (req == nullptr) return error;
  std::vector<AdvisoryTarget> targets;
  for (const KPGui::SRMAdvisoryTarget& t : req->GetTargets()) {
    targets.push_back(AdvisoryTarget{t.advisoryId, ClientId(t.clientId)});
  }
  return AdvisoryStore(call.store).Control(req->GetAction(), targets);
}

CLmError Types(XmlCall& call, const CNMessageBase& request,
               std::unique_ptr<CNMessageBase>* answer) {
  std::unique_ptr<KPGui::AlertSRMAdvisoryTypeListReq> holder;
  CLmError error;
  const auto* req = As<KPGui::AlertSRMAdvisoryTypeListReq>(request, &holder, &error);
  if (req == nullptr) return error;
  std::vector<AdvisoryType> types;
  if (CLmError e = AdvisoryStore(call.store).Types(ClientId(req->GetClientId()), &types)) return e;
  auto out = std::make_unique<KPGui::AlertSRMAdvisoryTypeListResp>();
  for (const AdvisoryType& t : types) {
    if (int rc = out->AddType({t.id, t.name, t.description})) {
      return CLmError::Format(kKpErrInternal, "advisory type %lld cannot be written (%d)",
                              static_cast<long long>(t.id), rc);
    }
  }
  *answer = std::move(out);
  return CLmError();
}

// KPGui::SRMAdvisoryListReq: a source's advisories when it names a source, else those that apply
// to the client (to every client for 0).
CLmError List(XmlCall& call, const CNMessageBase& request, std::unique_ptr<CNMessageBase>* answer) {
  std::unique_ptr<KPGui::SRMAdvisoryListReq> holder;
  CLmError error;
  const auto* req = As<KPGui::SRMAdvisoryListReq>(request, &holder, &error);
  if (req == nullptr) return error;
  std::vector<StoredAdvisory> found;
  AdvisoryStore store(call.store);
  CLmError e = req->GetSourceName().empty() ? store.ForClients(ClientId(req->GetClientId()), &found)
                                            : store.ForSource(req->GetSourceName(), &found);
  if (e) return e;
  if (found.size() > kCNMaxListEntries) {
    return CLmError::Format(kKpErrLimit, "%zu advisories are more than one answer holds (%zu)",
                            found.size(), kCNMaxListEntries);
  }
  auto out = std::make_unique<KPGui::SRMAdvisoryListResp>();
  for (const StoredAdvisory& a : found) {
    KPGui::SRMAdvisoryEntry entry{a.id,    a.type,  a.title, static_cast<int64_t>(a.clientId),
                                  a.state, a.source};
    if (int rc = out->AddAdvisory(entry)) {
      return CLmError::Format(kKpErrInternal, "advisory %lld cannot be written (%d)",
                              static_cast<long long>(a.id), rc);
    }
  }
  *answer = std::move(out);
  return CLmError();
}

}  // namespace

void AddAdvisoryRoutes(XmlRouter& router) {
  router.Add(KPGui::SyncSRMClientAdvisories::kTagId, SyncClient);
  router.Add(KPGui::SyncSRMSourceAdvisories::kTagId, SyncSource);
  router.Add(KPGui::ControlSRMAdvisories::kTagId, Control);
  router.Add(KPGui::AlertSRMAdvisoryTypeListReq::kTagId, Types);
  router.Add(KPGui::SRMAdvisoryListReq::kTagId, List);
}

}  // namespace appmgr::server
