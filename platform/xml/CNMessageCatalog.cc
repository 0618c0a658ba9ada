#include "platform/xml/CNMessageCatalog.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

#include "platform/base/KpCriticalSection.h"
#include "platform/xml/AppMessages.h"
#include "platform/xml/CNMessageBase.h"
#include "platform/xml/CNRecordLayout.h"
#include "platform/xml/CNXmlReader.h"
#include "platform/xml/KPGuiMessages.h"

namespace {

template <typename T>
std::unique_ptr<CNMessageBase> Make() {
  return std::make_unique<T>();
}

template <typename T>
constexpr CNMessageType Row() {
  return CNMessageType{T::kTagId, T::kTagName, &Make<T>};
}

// Ascending tag id; Initialize checks the order. Tag ids never change or get reused: a retired
// message stays here as a comment.
constexpr CNMessageType kMessageTypes[] = {
    Row<KPGui::AlertEvAlertExList>(),            // 0x0100001f
    Row<KPGui::AlertListReq>(),                  // 0x01000020
    Row<KPGui::AlertListResp>(),                 // 0x01000021
    Row<KPGui::AlertAckReq>(),                   // 0x01000022
    Row<KPGui::AlertResponse>(),                 // 0x010003f0
    Row<KPGui::AlertSRMAdvisoryTypeListReq>(),   // 0x010003f6
    Row<KPGui::AlertSRMAdvisoryTypeListResp>(),  // 0x010003f7
    Row<KPGui::SRMAdvisoryListReq>(),            // 0x010003f8
    Row<KPGui::SRMAdvisoryListResp>(),           // 0x010003f9
    Row<KPGui::SyncSRMClientAdvisories>(),       // 0x010003fc
    Row<KPGui::SyncSRMSourceAdvisories>(),       // 0x010003fd
    Row<KPGui::ControlSRMAdvisories>(),          // 0x010003fe
    Row<App::GetHTTPProxySettingsReq>(),         // 0x1e392f0b
    Row<App::HTTPProxySettings>(),               // 0x1e392f0c
    Row<App::LogMonitoringParamsReq>(),          // 0x1e5b0a01
    Row<App::LogMonitoringParams>(),             // 0x1e5b0a02
    Row<App::SetLogMonitoringParams>(),          // 0x1e5b0a03
    Row<App::GetDataInPreInstallModeReq>(),      // 0x1ea717cf
    Row<App::GetDataInPreInstallModeResp>(),     // 0x1ea717d0
    Row<App::EnableAppServerCacheResp>(),        // 0x1ea717d1
};

int CheckCatalogue() {
  std::span<const CNMessageType> types = CNMessageTypes();
  for (size_t i = 0; i < types.size(); ++i) {
    const CNMessageType& t = types[i];
    if (i > 0 && types[i - 1].tagId >= t.tagId) return kCNErrInternal;  // order, uniqueness
    for (size_t k = 0; k < i; ++k) {
      if (std::strcmp(types[k].tagName, t.tagName) == 0) return kCNErrInternal;
    }
    std::unique_ptr<CNMessageBase> m = t.create();
    if (!m || m->getTagId() != t.tagId || std::strcmp(m->getTagName(), t.tagName) != 0 ||
        !m->GetLayout() || CNCheckLayout(*m->GetLayout(), nullptr) != kCNOk) {
      return kCNErrInternal;
    }
    // A class must be able to write itself and read its own text back.
    std::string text;
    if (m->serialize(text) != kCNOk || t.create()->unserialize(text) != kCNOk) {
      return kCNErrInternal;
    }
  }
  return kCNOk;
}

}  // namespace

std::span<const CNMessageType> CNMessageTypes() {
  return kMessageTypes;
}

const CNMessageType* CNFindMessageType(unsigned long tagId) {
  auto it = std::lower_bound(std::begin(kMessageTypes), std::end(kMessageTypes), tagId,
                             [](const CNMessageType& t, unsigned long id) { return t.tagId < id; });
  return it != std::end(kMessageTypes) && it->tagId == tagId ? it : nullptr;
}

int CNMessageBase::Initialize() {
  // The check runs once; threads that arrive while it runs wait for its result. Running out of
  // memory is not kept as the result, so a later call tries again. Never destroyed, so a call
  // from another static's destructor still works.
  static KpCriticalSection* lock = new KpCriticalSection();
  static std::atomic<int> result{-1};  // -1: not checked yet
  int r = result.load(std::memory_order_acquire);
  if (r >= 0) return r;
  KpCriticalSectionLock hold(lock);
  r = result.load(std::memory_order_relaxed);
  if (r >= 0) return r;
  try {
    r = CheckCatalogue();
  } catch (const std::bad_alloc&) {
    return kCNErrLimit;
  }
  result.store(r, std::memory_order_release);
  return r;
}

std::unique_ptr<CNMessageBase> CNMessageBase::Create(unsigned long tagId) {
  const CNMessageType* type = CNFindMessageType(tagId);
  if (type) return type->create();
  return std::make_unique<CNMessageBase>(tagId);
}

std::unique_ptr<CNMessageBase> CNMessageBase::FromXml(const char* data, size_t length, int* error,
                                                      std::string* errorText) {
  int rc = kCNOk;
  std::string detail;
  std::unique_ptr<CNMessageBase> message;
  try {
    appmgr::xml::ParsedMessage parsed;
    rc = appmgr::xml::ReadMessage(data, length, &parsed, &detail);
    if (rc == kCNOk) {
      message = Create(parsed.tagId);
      rc = message->Adopt(parsed.tagId, std::move(parsed.tagName), std::move(parsed.record));
      if (rc != kCNOk) detail = message->GetReadError();
    }
  } catch (const std::bad_alloc&) {
    rc = kCNErrLimit;
    detail = "out of memory";
  }
  if (error) *error = rc;
  if (errorText) *errorText = rc == kCNOk ? std::string() : std::move(detail);
  if (rc != kCNOk) message.reset();
  return message;
}
