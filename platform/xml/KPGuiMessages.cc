#include "platform/xml/KPGuiMessages.h"

#include <initializer_list>
#include <iterator>
#include <utility>

#include "platform/xml/CNRecordLayout.h"

namespace KPGui {

namespace {

constexpr CNFieldLayout kAlertResponseFields[] = {
    {AlertResponse::kFieldLayoutMajor, kCNKindInt64, "layoutMajor", nullptr},
    {AlertResponse::kFieldLayoutMinor, kCNKindInt64, "layoutMinor", nullptr},
};
constexpr CNRecordLayout kAlertResponseLayout{AlertResponse::kTagName, kAlertResponseFields,
                                              std::size(kAlertResponseFields)};

constexpr CNFieldLayout kAlertItemFields[] = {
    {AlertItem::kFieldAlertId, kCNKindInt64, "alertId", nullptr},
    {AlertItem::kFieldSeverity, kCNKindInt64, "severity", nullptr},
    {AlertItem::kFieldClientId, kCNKindInt64, "clientId", nullptr},
    {AlertItem::kFieldClientName, kCNKindString, "clientName", nullptr},
    {AlertItem::kFieldTime, kCNKindInt64, "time", nullptr},
    {AlertItem::kFieldText, kCNKindString, "text", nullptr},
};
constexpr CNRecordLayout kAlertItemLayout{"KPGui::AlertItem", kAlertItemFields,
                                          std::size(kAlertItemFields)};

constexpr CNFieldLayout kAlertListFields[] = {
    {AlertEvAlertExList::kFieldAlerts, kCNKindList, "alerts", &kAlertItemLayout},
};
constexpr CNRecordLayout kAlertListLayout{AlertEvAlertExList::kTagName, kAlertListFields,
                                          std::size(kAlertListFields)};

constexpr CNFieldLayout kAdvisoryFields[] = {
    {SRMAdvisory::kFieldAdvisoryId, kCNKindInt64, "advisoryId", nullptr},
    {SRMAdvisory::kFieldType, kCNKindInt64, "type", nullptr},
    {SRMAdvisory::kFieldTitle, kCNKindString, "title", nullptr},
};
constexpr CNRecordLayout kAdvisoryLayout{"KPGui::SRMAdvisory", kAdvisoryFields,
                                         std::size(kAdvisoryFields)};

constexpr CNFieldLayout kClientAdvisoriesFields[] = {
    {SyncSRMClientAdvisories::kFieldClientId, kCNKindInt64, "clientId", nullptr},
    {SyncSRMClientAdvisories::kFieldAdvisories, kCNKindList, "advisories", &kAdvisoryLayout},
};
constexpr CNRecordLayout kClientAdvisoriesLayout{
    SyncSRMClientAdvisories::kTagName, kClientAdvisoriesFields, std::size(kClientAdvisoriesFields)};

constexpr CNFieldLayout kSourceAdvisoriesFields[] = {
    {SyncSRMSourceAdvisories::kFieldSourceName, kCNKindString, "sourceName", nullptr},
    {SyncSRMSourceAdvisories::kFieldAdvisories, kCNKindList, "advisories", &kAdvisoryLayout},
};
constexpr CNRecordLayout kSourceAdvisoriesLayout{
    SyncSRMSourceAdvisories::kTagName, kSourceAdvisoriesFields, std::size(kSourceAdvisoriesFields)};

constexpr CNFieldLayout kTargetFields[] = {
    {SRMAdvisoryTarget::kFieldAdvisoryId, kCNKindInt64, "advisoryId", nullptr},
    {SRMAdvisoryTarget::kFieldClientId, kCNKindInt64, "clientId", nullptr},
};
constexpr CNRecordLayout kTargetLayout{"KPGui::SRMAdvisoryTarget", kTargetFields,
                                       std::size(kTargetFields)};

constexpr CNFieldLayout kControlFields[] = {
    {ControlSRMAdvisories::kFieldAction, kCNKindInt64, "action", nullptr},
    {ControlSRMAdvisories::kFieldTargets, kCNKindList, "targets", &kTargetLayout},
};
constexpr CNRecordLayout kControlLayout{ControlSRMAdvisories::kTagName, kControlFields,
                                        std::size(kControlFields)};

constexpr CNFieldLayout kTypeListReqFields[] = {
    {AlertSRMAdvisoryTypeListReq::kFieldClientId, kCNKindInt64, "clientId", nullptr},
};
constexpr CNRecordLayout kTypeListReqLayout{AlertSRMAdvisoryTypeListReq::kTagName,
                                            kTypeListReqFields, std::size(kTypeListReqFields)};

constexpr CNFieldLayout kTypeFields[] = {
    {SRMAdvisoryType::kFieldTypeId, kCNKindInt64, "typeId", nullptr},
    {SRMAdvisoryType::kFieldName, kCNKindString, "name", nullptr},
    {SRMAdvisoryType::kFieldDescription, kCNKindString, "description", nullptr},
};
constexpr CNRecordLayout kTypeLayout{"KPGui::SRMAdvisoryType", kTypeFields, std::size(kTypeFields)};

constexpr CNFieldLayout kTypeListRespFields[] = {
    {AlertSRMAdvisoryTypeListResp::kFieldTypes, kCNKindList, "types", &kTypeLayout},
};
constexpr CNRecordLayout kTypeListRespLayout{AlertSRMAdvisoryTypeListResp::kTagName,
                                             kTypeListRespFields, std::size(kTypeListRespFields)};

// Fills `out` from integer and text fields; the first refused text decides the result.
int Fill(CNEntity* out, std::initializer_list<std::pair<int, int64_t>> numbers,
         std::initializer_list<std::pair<int, const std::string*>> texts) {
  out->Clear();
  for (const auto& [field, value] : numbers) out->SetInt64(field, value);
  for (const auto& [field, text] : texts) {
    if (int rc = out->SetString(field, *text); rc != kCNOk) return rc;
  }
  return kCNOk;
}

}  // namespace

// ---- AlertResponse ----

AlertResponse::AlertResponse(int layoutMajor, int layoutMinor)
    : CNMessageBase(kTagId, kTagName, &kAlertResponseLayout), expectedMajor_(layoutMajor) {
  SetInt64(kFieldLayoutMajor, layoutMajor);
  SetInt64(kFieldLayoutMinor, layoutMinor);
  SetStatus(0);
}

int AlertResponse::CheckContent(const CNEntity& record, std::string* detail) const {
  if (record.HasField(kFieldLayoutMajor) && record.GetInt64(kFieldLayoutMajor) != expectedMajor_) {
    *detail = "layout " + std::to_string(record.GetInt64(kFieldLayoutMajor)) +
              " cannot be read as layout " + std::to_string(expectedMajor_);
    return kCNErrBadValue;
  }
  CNFieldKind status = record.getkind(kStatusSlot, kOutcomeElement, kStatusKey);
  CNFieldKind text = record.getkind(kErrorTextSlot, kOutcomeElement, kErrorTextKey);
  if ((status != kCNKindNone && status != kCNKindInt64) ||
      (text != kCNKindNone && text != kCNKindString)) {
    *detail = "outcome element holds a status or error text of the wrong kind";
    return kCNErrBadValue;
  }
  return kCNOk;
}

// ---- Alerts ----

int AlertItem::ToEntity(CNEntity* out) const {
  return Fill(out,
              {{kFieldAlertId, alertId},
               {kFieldSeverity, severity},
               {kFieldClientId, clientId},
               {kFieldTime, time}},
              {{kFieldClientName, &clientName}, {kFieldText, &text}});
}

AlertItem AlertItem::FromEntity(const CNEntity& e) {
  return AlertItem{e.GetInt64(kFieldAlertId),  e.GetInt64(kFieldSeverity),
                   e.GetInt64(kFieldClientId), e.GetString(kFieldClientName),
                   e.GetInt64(kFieldTime),     e.GetString(kFieldText)};
}

AlertEvAlertExList::AlertEvAlertExList() : CNMessageBase(kTagId, kTagName, &kAlertListLayout) {}

// ---- Advisories ----

int SRMAdvisory::ToEntity(CNEntity* out) const {
  return Fill(out, {{kFieldAdvisoryId, advisoryId}, {kFieldType, type}}, {{kFieldTitle, &title}});
}

SRMAdvisory SRMAdvisory::FromEntity(const CNEntity& e) {
  return SRMAdvisory{e.GetInt64(kFieldAdvisoryId), e.GetInt64(kFieldType),
                     e.GetString(kFieldTitle)};
}

int SRMAdvisoryTarget::ToEntity(CNEntity* out) const {
  return Fill(out, {{kFieldAdvisoryId, advisoryId}, {kFieldClientId, clientId}}, {});
}

SRMAdvisoryTarget SRMAdvisoryTarget::FromEntity(const CNEntity& e) {
  return SRMAdvisoryTarget{e.GetInt64(kFieldAdvisoryId), e.GetInt64(kFieldClientId)};
}

int SRMAdvisoryType::ToEntity(CNEntity* out) const {
  return Fill(out, {{kFieldTypeId, typeId}},
              {{kFieldName, &name}, {kFieldDescription, &description}});
}

SRMAdvisoryType SRMAdvisoryType::FromEntity(const CNEntity& e) {
  return SRMAdvisoryType{e.GetInt64(kFieldTypeId), e.GetString(kFieldName),
                         e.GetString(kFieldDescription)};
}

SyncSRMClientAdvisories::SyncSRMClientAdvisories()
    : CNMessageBase(kTagId, kTagName, &kClientAdvisoriesLayout) {}

SyncSRMSourceAdvisories::SyncSRMSourceAdvisories()
    : CNMessageBase(kTagId, kTagName, &kSourceAdvisoriesLayout) {}

ControlSRMAdvisories::ControlSRMAdvisories() : CNMessageBase(kTagId, kTagName, &kControlLayout) {}

AlertSRMAdvisoryTypeListReq::AlertSRMAdvisoryTypeListReq()
    : CNMessageBase(kTagId, kTagName, &kTypeListReqLayout) {}

AlertSRMAdvisoryTypeListResp::AlertSRMAdvisoryTypeListResp()
    : CNMessageBase(kTagId, kTagName, &kTypeListRespLayout) {}

}  // namespace KPGui
