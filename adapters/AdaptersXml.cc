// XML message routing of AdaptersInterfaceNet: XML text inside HandleXMLReq, typed messages
// inside SendKpAlertXML_Req (the alert list and the advisory requests), and messages sent on the
// session itself.
#include <atomic>
#include <string>
#include <sys/types.h>
#include <unordered_set>

#include "adapters/AdaptersInterfaceNet.h"
#include "interfaces/Exchange.h"
#include "platform/xml/AppMessages.h"
#include "platform/xml/KPGuiMessages.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::kAppMgrServiceCode;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

namespace {

// Status codes of this family.
constexpr int kXmlInitializationFailed = 0x000b0001;
constexpr int kXmlUnserializationFailed = 0x000b0002;
constexpr int kXmlSerializationFailed = 0x000b0008;
constexpr int kResponseIsNull = 0x000a0004;

constexpr const char* kInitializationFailedText = "XML Message initilization failed";
constexpr const char* kSerializationFailedText = "XML Message serilization failed";
constexpr const char* kUnserializationFailedText = "XML Message unserilization failed";

// Seconds both directions of an XML exchange on the session may take.
constexpr int kXmlTimeout = 300;

// XML message types that only the central server's App Manager serves: requests of these types
// skip the lite App Manager and go straight to the Controlhost's pool. Built once, never changed.
const std::unordered_set<unsigned long>& xmlMessageHandledOnlyByCH() {
  static const auto* types = new std::unordered_set<unsigned long>{
      0x1e70954d, 0x1e980685, 0x168df5d9, 0x1e752270, 0x644c8485, 0x7657b53e};
  return *types;
}

// Set once CNMessageBase::Initialize has succeeded for this class. Two threads may both
// initialise; Initialize answers a second call with the first one's result.
std::atomic<bool> isXMLInitialized{false};

void MarkInitialized() {
  isXMLInitialized.store(true, std::memory_order_relaxed);
}
bool Initialized() {
  return isXMLInitialized.load(std::memory_order_relaxed);
}

// Steps 1 and 2 of every typed request: the XML library ready, the request serialised. 0, or
// the status with errorString set.
int PrepareRequest(const EvDebug& log, const CNMessageBase& request, std::string& xml,
                   std::string& errorString) {
  if (!Initialized()) {
    if (int rc = CNMessageBase::Initialize()) {
      errorString = kInitializationFailedText;
      log.Error("%s. Error[%d]", errorString.c_str(), rc);
      return kXmlInitializationFailed;
    }
    MarkInitialized();
  }
  if (int rc = request.serialize(xml)) {
    log.Error("Could not serialize request data. Error[%d]", rc);
    errorString = kSerializationFailedText;
    return kXmlSerializationFailed;
  }
  return 0;
}

// Reads the generic response the answer carries: its status, with its error text in
// errorString (also when empty). `checked` false ignores a document that does not read, which
// then gives status 0 and an empty text.
int ReadGenericResponse(const EvDebug& log, const char* xml, bool checked,
                        std::string& errorString) {
  std::string text = Text(xml);
  if (!Initialized()) {
    CNMessageBase::Initialize();
    MarkInitialized();
  }
  KPGui::AlertResponse response;
  int rc = response.unserialize(text);
  if (rc != 0 && checked) {
    log.Error("Error[%d] Unserializing Generic Response", rc);
    errorString = kUnserializationFailedText;
    return kXmlUnserializationFailed;
  }
  errorString = response.GetErrorText();
  return static_cast<int>(response.GetStatus());
}

// The advisory requests: `request` travels under `op` with its tag id, and the answer is the
// generic response, whose status is the result. A failed header check puts the header's text in
// errorString, but the response's tag still decides the result.
int AdvisoryRequest(const appmgr::wire::Op<SendKpAlertXML_Req, SendKpAlertXML_Resp>& op,
                    const char* label, const CNMessageBase& request, std::string& errorString) {
  EvDebug log(label);
  std::string xml;
  if (int status = PrepareRequest(log, request, xml, errorString)) return status;
  Exchange x(op);
  x.request().tagId = request.getTagId();
  x.request().xml = xml.c_str();
  if (int status = x.SendReceive(errorString)) return status;
  const SendKpAlertXML_Resp& r = x.response();
  if (x.VerifyHeader() != 0) {
    errorString = Text(r.hdr.errorText);
  }
  if (r.tagId == KPGui::AlertResponse::kTagId) {
    return ReadGenericResponse(log, r.xml, true, errorString);
  }
  log.Error("Expecting KPGui::Tag_GenericResp, got [0x%08lx]", static_cast<unsigned long>(r.tagId));
  errorString = kUnserializationFailedText;
  return kXmlUnserializationFailed;
}

}  // namespace

int AdaptersInterfaceNet::handleXMLReq(unsigned long route, unsigned long xmlType,
                                       std::string& xml, std::string& errorString,
                                       std::string extra, unsigned long value) {
  const bool central = xmlMessageHandledOnlyByCH().count(xmlType) != 0;
  if (central) {
    EvEventWrapper::DebugLvl("AdaptersInterfaceNet::handleXMLReq", 10,
                             "Routing xml message request [%lu] to CH App Manager...", xmlType);
  }
  Exchange x(msg::kHandleXml, /*skipLitePool=*/central);
  x.request().route = route;
  x.request().xmlType = xmlType;
  x.request().value = value;
  x.request().extra = extra.c_str();
  x.request().xml = xml.c_str();
  // The header is not read: the server's outcome travels inside the answer's XML.
  if (int status = x.SendReceive(errorString)) return status;
  xml = Text(x.response().xml);
  return 0;
}

int AdaptersInterfaceNet::processXMLRequest(CNMessageBase& request, CNMessageBase*& response,
                                            std::string& errorString, void*) {
  EvDebug log("AdaptersInterfaceNet::processXMLRequest");
  ClientSessionWrapper wrapper(kAppMgrServiceCode, false);
  CKpNetwork* session = wrapper.getKpSessionObj();
  // A private session (no pool could lend one) is connected only by a send; this exchange does
  // not go through send, so it connects here.
  if (!session->IsConnected()) {
    if (int status = wrapper.connectToCH("AppManager network access", errorString)) return status;
  }
  auto failed = [&](const char* what, const CLmError& e, bool timedOut) {
    unsigned long sessionError = 0;
    session->GetLastErrorGenericText(&sessionError, errorString, 0);
    log.Error("%s() failed. Error [%ld - %s], SessionError[%ld], ErrorString[%s], timedOut[%s]",
              what, static_cast<long>(e.GetErrorCode()), e.AsString().c_str(),
              static_cast<long>(sessionError), errorString.c_str(), timedOut ? "TRUE" : "FALSE");
    return e.GetErrorCode();
  };

  log.Debug(8, "Sending XML Message [%s] with timeout [%d] minutes...", request.getTagName(),
            kXmlTimeout);
  bool timedOut = false;
  CLmError e = session->SendXMLMessage(request, 0, kXmlTimeout, timedOut);
  if (e.IsError() || timedOut) return failed("SendXMLMessage", e, timedOut);

  log.Debug(8, "Receiving XML Message with timeout [%d] minutes...", kXmlTimeout);
  unsigned long type = 0;
  CNMessageBase* answer = nullptr;
  kpsHostProtocolHeader header;
  e = session->ReceiveXMLMessage(&type, answer, &header, 0, kXmlTimeout, timedOut);
  if (e.IsError() || timedOut) {
    delete answer;
    return failed("ReceiveXMLMessage", e, timedOut);
  }
  if (answer != nullptr) {
    response = answer;
    log.Debug(5, "Got response [%s].", answer->getTagName());
    return 0;
  }
  log.Error("Error : Response is null.");
  errorString = "Response is null";
  return kResponseIsNull;
}

int AdaptersInterfaceNet::SendAlert(KPGui::AlertEvAlertExList& alerts, std::string& errorString) {
  EvDebug log("AdaptersInterfaceNet::SendAlert(string & alert ..");
  std::string xml;
  // Measured before the list is written into it, so this always logs 0.
  log.Debug(3, "Size of XML is [%zd]", static_cast<ssize_t>(xml.size()));
  alerts.serialize(xml);
  Exchange x(msg::kSendKpAlertXml);
  x.request().tagId = KPGui::AlertEvAlertExList::kTagId;
  x.request().xml = xml.c_str();
  // Send, receive and the header: the answer's XML is not read.
  return x.Run(errorString);
}

int AdaptersInterfaceNet::syncSRMClientAdvisories(KPGui::SyncSRMClientAdvisories& request,
                                                  std::string& errorString) {
  return AdvisoryRequest(msg::kSyncSrmClientAdvisories,
                         "AdaptersInterfaceNet::syncSRMClientAdvisories()", request, errorString);
}

int AdaptersInterfaceNet::syncSRMSourceAdvisories(KPGui::SyncSRMSourceAdvisories& request,
                                                  std::string& errorString) {
  return AdvisoryRequest(msg::kSyncSrmSourceAdvisories,
                         "AdaptersInterfaceNet::syncSRMSourceAdvisories()", request, errorString);
}

int AdaptersInterfaceNet::controlAdvisories(KPGui::ControlSRMAdvisories& request,
                                            std::string& errorString) {
  return AdvisoryRequest(msg::kControlSrmAdvisories, "AdaptersInterfaceNet::controlAdvisories()",
                         request, errorString);
}

int AdaptersInterfaceNet::getSRMAdvisoryTypes(KPGui::AlertSRMAdvisoryTypeListReq& request,
                                              KPGui::AlertSRMAdvisoryTypeListResp& response,
                                              std::string& errorString) {
  EvDebug log("AdaptersInterfaceNet::getSRMAdvisoryTypes()");
  std::string xml;
  if (int status = PrepareRequest(log, request, xml, errorString)) return status;
  Exchange x(msg::kGetSrmAdvisoryTypes);
  x.request().tagId = request.getTagId();
  x.request().xml = xml.c_str();
  if (int status = x.SendReceive(errorString)) return status;
  const SendKpAlertXML_Resp& r = x.response();
  if (x.VerifyHeader() != 0) {
    errorString = Text(r.hdr.errorText);
  }
  if (r.tagId == KPGui::AlertResponse::kTagId) {
    return ReadGenericResponse(log, r.xml, /*checked=*/false, errorString);
  }
  if (r.tagId == KPGui::AlertSRMAdvisoryTypeListResp::kTagId) {
    if (int rc = response.unserialize(Text(r.xml))) {
      log.Error("Error[%d] Unserializing Generic Response", rc);
      errorString = kUnserializationFailedText;
      return kXmlUnserializationFailed;
    }
    return 0;
  }
  log.Error("Expecting KPGui::Tag_AlertSRMAdvisoryTypeListResp, got [0x%08lx]",
            static_cast<unsigned long>(r.tagId));
  errorString = kUnserializationFailedText;
  return kXmlUnserializationFailed;
}

long AdaptersInterfaceNet::GetHTTPProxySettings(App::GetHTTPProxySettingsReq& request,
                                                App::HTTPProxySettings& settings,
                                                std::string& errorString) {
  static constexpr const char* kLabel =
      "virtual long int AdaptersInterfaceNet::GetHTTPProxySettings(App::GetHTTPProxySettingsReq&, "
      "App::HTTPProxySettings&, std::string&)";
  std::string xml;
  if (int rc = request.serialize(xml)) {
    EvEventWrapper::Error(kLabel, "Error serializing input http request : [%ld]",
                          static_cast<long>(rc));
    return rc;
  }
  const std::string requestXml = xml;
  // Through the object's own table, so that a derived class can carry the request otherwise.
  long status = this->handleXMLReq(1, App::GetHTTPProxySettingsReq::kTagId, xml, errorString,
                                   std::string(), 0);
  if (status != 0) {
    EvEventWrapper::Error(kLabel,
                          "Failed to fetch HTTP Proxy Settings for the request : [%s]. Error "
                          "[%ld] : [%s]",
                          requestXml.c_str(), status, errorString.c_str());
    return status;
  }
  if (int rc = settings.unserialize(xml)) {
    EvEventWrapper::Error(kLabel, "Error constructing response for input : [%s]. Error : [%ld]",
                          xml.c_str(), static_cast<long>(rc));
    // A server that could not answer with settings says why in a generic response.
    KPGui::AlertResponse refusal;
    if (refusal.unserialize(xml) == 0) errorString = refusal.GetErrorText();
    return static_cast<int>(rc);
  }
  return 0;
}
