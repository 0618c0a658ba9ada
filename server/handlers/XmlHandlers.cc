#include "server/handlers/XmlHandlers.h"

#include <memory>
#include <string>

#include "platform/base/EvDebug.h"
#include "platform/xml/AppMessages.h"
#include "platform/xml/KPGuiMessages.h"
#include "protocol/Messages.h"
#include "server/handlers/AdvisoryHandlers.h"
#include "server/handlers/AlertHandlers.h"
#include "server/handlers/HandlerSupport.h"
#include "server/handlers/LogMonitorHandlers.h"
#include "server/store/EntityKind.h"
#include "server/store/HttpProxyStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

constexpr const char* kLabel = "XmlHandlers";

// App::GetHTTPProxySettingsReq: the proxy of the client it names, or of the client that asks.
// Only a name the request gives must be a client; one the connection gives need not be.
CLmError ProxySettings(XmlCall& call, const CNMessageBase& request,
                       std::unique_ptr<CNMessageBase>* answer) {
  std::unique_ptr<App::GetHTTPProxySettingsReq> holder;
  CLmError error;
  const auto* req = As<App::GetHTTPProxySettingsReq>(request, &holder, &error);
  if (req == nullptr) return error;
  const bool named = !req->GetClientName().empty();
  HttpProxy proxy;
  if (CLmError e = HttpProxyStore(call.store)
                       .Get(named ? req->GetClientName() : call.connection.client, named, &proxy)) {
    return e;
  }
  auto out = std::make_unique<App::HTTPProxySettings>();
  int rc = out->SetEnabled(proxy.enabled);
  if (rc == 0) rc = out->SetHost(proxy.host);
  if (rc == 0) rc = out->SetPort(proxy.port);
  if (rc == 0) rc = out->SetUser(proxy.user);
  if (rc == 0) rc = out->SetPassword(proxy.password);
  for (size_t i = 0; rc == 0 && i < proxy.exclusions.size(); ++i) {
    rc = out->AddExclusion(proxy.exclusions[i]);
  }
  if (rc != 0) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "the stored proxy settings are not text an XML message carries (%d)",
                            rc);
  }
  *answer = std::move(out);
  return CLmError();
}

// HANDLE_XML: the document routed by the message type the request names, which must be the
// document's tag. The route, extra value and extra text are accepted and not used. Every outcome
// is an XML answer; an error is in the header too.
CLmError HandleXml(Store& store, const HandleXMLReq& req, HandleXMLResp& resp, Exchange& x) {
  XmlCall call{store, x.connection};
  EvEventWrapper::DebugLvl(kLabel, 3, "XML request of type 0x%08llx (route %llu) from [%s]",
                           static_cast<unsigned long long>(req.xmlType),
                           static_cast<unsigned long long>(req.route), x.connection.client.c_str());
  // Tags are 32-bit and never 0 (which RouteText reads as "any tag").
  std::unique_ptr<CNMessageBase> answer;
  if (req.xmlType == 0 || req.xmlType > 0xffffffffu) {
    answer = GenericAnswer(CLmError::Format(kKpErrNotSupported,
                                            "no handler for XML message type 0x%08llx here",
                                            static_cast<unsigned long long>(req.xmlType)));
  } else {
    answer = AppMgrXmlRouter().RouteText(call, req.xml, req.xmlType);
  }
  AnswerInto(*answer, resp.hdr, &resp.xml, x);
  return CLmError();
}

// The SendKpAlertXML requests: each id carries the message of one tag, which both the record and
// the document must name. The answer travels with its own tag.
template <unsigned long kTag>
CLmError TypedXml(Store& store, const SendKpAlertXML_Req& req, SendKpAlertXML_Resp& resp,
                  Exchange& x) {
  XmlCall call{store, x.connection};
  std::unique_ptr<CNMessageBase> answer;
  if (req.tagId != kTag) {
    answer = GenericAnswer(
        CLmError::Format(kStoreErrInvalidArgument, "%s carries %s (tag 0x%08lx), not tag 0x%08llx",
                         x.request.name, CNMessageBase::Create(kTag)->getTagName(), kTag,
                         static_cast<unsigned long long>(req.tagId)));
  } else {
    answer = AppMgrXmlRouter().RouteText(call, req.xml, kTag);
  }
  resp.tagId = answer->getTagId();
  AnswerInto(*answer, resp.hdr, &resp.xml, x);
  return CLmError();
}

// HANDLE_DAX_XML: an agent's document, routed by its own tag like any XML request. The first id
// is the client the agent acts for (0: not said), which must exist; the second, a job id, is
// only logged. The header's code is the answer's status, which the agent takes as the result.
CLmError HandleDaxXml(Store& store, const HandleDaxXMLReq& req, HandleDaxXMLResp& resp,
                      Exchange& x) {
  XmlCall call{store, x.connection};
  EvEventWrapper::DebugLvl(kLabel, 3, "agent XML request for client %llu, job %llu, from [%s]",
                           static_cast<unsigned long long>(req.id1),
                           static_cast<unsigned long long>(req.id2), x.connection.client.c_str());
  std::unique_ptr<CNMessageBase> answer;
  if (req.id1 != 0) {
    Store::Transaction txn(store, "agent XML request", Store::Transaction::kRead);
    if (CLmError e = RequireEntity(txn, EntityKind::kClient, req.id1)) answer = GenericAnswer(e);
  }
  if (!answer) answer = AppMgrXmlRouter().RouteText(call, req.xml, 0);
  AnswerInto(*answer, resp.hdr, &resp.xml, x);
  return CLmError();
}

}  // namespace

const XmlRouter& AppMgrXmlRouter() {
  static const XmlRouter* router = [] {
    auto* r = new XmlRouter;
    AddAlertRoutes(*r);
    AddAdvisoryRoutes(*r);
    AddLogMonitorRoutes(*r);
    r->Add(App::GetHTTPProxySettingsReq::kTagId, ProxySettings);
    return r;
  }();
  return *router;
}

void RegisterAlertAndXmlHandlers(Server& server, Store& store) {
  RegisterAlertHandlers(server, store);
  RegisterLogMonitorHandlers(server, store);
  Register(server, store, msg::kHandleXml, HandleXml);
  Register(server, store, msg::kSendKpAlertXml, TypedXml<KPGui::AlertEvAlertExList::kTagId>);
  Register(server, store, msg::kSyncSrmClientAdvisories,
           TypedXml<KPGui::SyncSRMClientAdvisories::kTagId>);
  Register(server, store, msg::kSyncSrmSourceAdvisories,
           TypedXml<KPGui::SyncSRMSourceAdvisories::kTagId>);
  Register(server, store, msg::kControlSrmAdvisories,
           TypedXml<KPGui::ControlSRMAdvisories::kTagId>);
  Register(server, store, msg::kGetSrmAdvisoryTypes,
           TypedXml<KPGui::AlertSRMAdvisoryTypeListReq::kTagId>);
  Register(server, store, msg::kHandleDaxXml, HandleDaxXml);
  // XML frames: tags with a handler of their own (the pre-install look-up) keep it; every other
  // tag is routed here, and one without a route gets the XML error answer.
  server.HandleUnknownXml([&store](const CNMessageBase& request, const ConnectionInfo& connection) {
    XmlCall call{store, connection};
    return AppMgrXmlRouter().Route(call, request);
  });
}

}  // namespace appmgr::server
