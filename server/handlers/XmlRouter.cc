#include "server/handlers/XmlRouter.h"

#include <cstring>

#include "platform/base/EvDebug.h"
#include "platform/xml/KPGuiMessages.h"

namespace appmgr::server {
namespace {

constexpr const char* kLabel = "XmlHandlers";

// A failure the request caused is a debug line; one of the database or of the server an error.
void LogFailure(const CNMessageBase& request, const XmlCall& call, const CLmError& error) {
  switch (error.GetErrorCode()) {
    case kStoreErrNotFound:
    case kStoreErrConflict:
    case kStoreErrInvalidArgument:
    case kKpErrNotSupported:
      EvEventWrapper::DebugLvl(
          kLabel, 2, "%s from connection %llu [%s]: %d %s", request.getTagName(),
          static_cast<unsigned long long>(call.connection.id), call.connection.client.c_str(),
          error.GetErrorCode(), error.Text().c_str());
      break;
    default:
      EvEventWrapper::Error(
          kLabel, "%s from connection %llu [%s] failed: %d %s", request.getTagName(),
          static_cast<unsigned long long>(call.connection.id), call.connection.client.c_str(),
          error.GetErrorCode(), error.Text().c_str());
  }
}

CLmError Refused(const CLmError& error, const XmlCall& call, const char* what) {
  EvEventWrapper::DebugLvl(kLabel, 2, "%s from connection %llu [%s]: %d %s", what,
                           static_cast<unsigned long long>(call.connection.id),
                           call.connection.client.c_str(), error.GetErrorCode(),
                           error.Text().c_str());
  return error;
}

}  // namespace

std::unique_ptr<CNMessageBase> GenericAnswer(const CLmError& error) {
  auto answer = std::make_unique<KPGui::AlertResponse>();
  answer->SetStatus(error.GetErrorCode());
  if (answer->SetErrorText(error.Text()) != kCNOk) {
    // A text XML cannot carry (a control character a request brought in): the same text with
    // every byte outside printable ASCII as '?', rather than no text at all.
    std::string plain = error.Text();
    for (char& c : plain) {
      if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) > 0x7e) c = '?';
    }
    answer->SetErrorText(plain);
  }
  return answer;
}

int32_t StatusOf(const CNMessageBase& answer) {
  if (answer.getTagId() != KPGui::AlertResponse::kTagId) return 0;
  return static_cast<int32_t>(answer.getint64(KPGui::AlertResponse::kStatusSlot,
                                              KPGui::AlertResponse::kOutcomeElement,
                                              KPGui::AlertResponse::kStatusKey));
}

std::string ErrorTextOf(const CNMessageBase& answer) {
  if (answer.getTagId() != KPGui::AlertResponse::kTagId) return std::string();
  return answer.getstringByRef(KPGui::AlertResponse::kErrorTextSlot, kCNKindString,
                               KPGui::AlertResponse::kOutcomeElement,
                               KPGui::AlertResponse::kErrorTextKey);
}

std::string AnswerText(const CNMessageBase& answer) {
  std::string text;
  if (int rc = answer.serialize(text)) {
    EvEventWrapper::Error(kLabel, "the answer %s could not be written (%d)", answer.getTagName(),
                          rc);
    GenericAnswer(CLmError::Format(kKpErrLimit,
                                   "the answer %s is too large for one XML document (%d)",
                                   answer.getTagName(), rc))
        ->serialize(text);
  }
  return text;
}

void AnswerInto(const CNMessageBase& answer, AppMgrRespHdr& hdr, const char** xml, Exchange& x) {
  *xml = x.Text(AnswerText(answer));
  if (int32_t status = StatusOf(answer)) {
    hdr.errorCode = status;
    hdr.errorText = x.Text(ErrorTextOf(answer));
  }
}

std::unique_ptr<CNMessageBase> XmlRouter::Route(XmlCall& call, const CNMessageBase& request) const {
  auto it = routes_.find(request.getTagId());
  if (it == routes_.end()) {
    return GenericAnswer(Refused(
        CLmError::Format(kKpErrNotSupported, "no handler for XML message %s (tag 0x%08lx) here",
                         request.getTagName(), request.getTagId()),
        call, request.getTagName()));
  }
  std::unique_ptr<CNMessageBase> answer;
  if (CLmError e = it->second(call, request, &answer)) {
    LogFailure(request, call, e);
    return GenericAnswer(e);
  }
  return answer ? std::move(answer) : GenericAnswer();
}

std::unique_ptr<CNMessageBase> XmlRouter::RouteText(XmlCall& call, const char* xml,
                                                    unsigned long tagId) const {
  if (xml == nullptr) {
    return GenericAnswer(Refused(
        CLmError(kStoreErrInvalidArgument, "the request carries no XML document"), call, "XML"));
  }
  if (tagId != 0 && !Has(tagId)) {
    return GenericAnswer(Refused(
        CLmError::Format(kKpErrNotSupported, "no handler for XML message type 0x%08lx here", tagId),
        call, "XML"));
  }
  int rc = 0;
  std::string why;
  std::unique_ptr<CNMessageBase> request = CNMessageBase::FromXml(xml, std::strlen(xml), &rc, &why);
  if (!request) {
    return GenericAnswer(
        Refused(CLmError::Format(kStoreErrInvalidArgument,
                                 "the XML document could not be read (%d): %s", rc, why.c_str()),
                call, "XML"));
  }
  if (tagId != 0 && request->getTagId() != tagId) {
    return GenericAnswer(Refused(
        CLmError::Format(kStoreErrInvalidArgument,
                         "the XML document is a %s (tag 0x%08lx), not a message of type 0x%08lx",
                         request->getTagName(), request->getTagId(), tagId),
        call, "XML"));
  }
  return Route(call, *request);
}

}  // namespace appmgr::server
