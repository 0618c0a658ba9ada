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

constexpr CNFieldLayout kAlertListReqFields[] = {
    {AlertListReq::kFieldClientId, kCNKindInt64, "clientId", nullptr},
    {AlertListReq::kFieldUnacknowledgedOnly, kCNKindInt64, "unacknowledgedOnly", nullptr},
    {AlertListReq::kFieldLimit, kCNKindInt64, "limit", nullptr},
};
constexpr CNRecordLayout kAlertListReqLayout{AlertListReq::kTagName, kAlertListReqFields,
                                             std::size(kAlertListReqFields)};

constexpr CNFieldLayout kAlertRecordFields[] = {
    {AlertRecord::kFieldAlertId, kCNKindInt64, "alertId", nullptr},
    {AlertRecord::kFieldSeverity, kCNKindInt64, "severity", nullptr},
    {AlertRecord::kFieldClientId, kCNKindInt64, "clientId", nullptr},
    {AlertRecord::kFieldClientName, kCNKindString, "clientName", nullptr},
    {AlertRecord::kFieldReceived, kCNKindInt64, "received", nullptr},
    {AlertRecord::kFieldText, kCNKindString, "text", nullptr},
    {AlertRecord::kFieldAlertType, kCNKindInt64, "alertType", nullptr},
    {AlertRecord::kFieldRaised, kCNKindInt64, "raised", nullptr},
    {AlertRecord::kFieldAcknowledged, kCNKindInt64, "acknowledged", nullptr},
    {AlertRecord::kFieldAcknowledgedBy, kCNKindString, "acknowledgedBy", nullptr},
    {AlertRecord::kFieldSource, kCNKindInt64, "source", nullptr},
    {AlertRecord::kFieldDetails, kCNKindString, "details", nullptr},
};
constexpr CNRecordLayout kAlertRecordLayout{"KPGui::AlertRecord", kAlertRecordFields,
                                            std::size(kAlertRecordFields)};

constexpr CNFieldLayout kAlertListRespFields[] = {
    {AlertListResp::kFieldAlerts, kCNKindList, "alerts", &kAlertRecordLayout},
};
constexpr CNRecordLayout kAlertListRespLayout{AlertListResp::kTagName, kAlertListRespFields,
                                              std::size(kAlertListRespFields)};

constexpr CNFieldLayout kAlertAckEntryFields[] = {
    {AlertAckReq::kAlertFieldId, kCNKindInt64, "alertId", nullptr},
};
constexpr CNRecordLayout kAlertAckEntryLayout{"KPGui::AlertAckReq.alert", kAlertAckEntryFields,
                                              std::size(kAlertAckEntryFields)};

constexpr CNFieldLayout kAlertAckFields[] = {
    {AlertAckReq::kFieldAlerts, kCNKindList, "alerts", &kAlertAckEntryLayout},
    {AlertAckReq::kFieldBy, kCNKindString, "by", nullptr},
};
constexpr CNRecordLayout kAlertAckLayout{AlertAckReq::kTagName, kAlertAckFields,
                                         std::size(kAlertAckFields)};

constexpr CNFieldLayout kAdvisoryListReqFields[] = {
    {SRMAdvisoryListReq::kFieldClientId, kCNKindInt64, "clientId", nullptr},
    {SRMAdvisoryListReq::kFieldSourceName, kCNKindString, "sourceName", nullptr},
};
constexpr CNRecordLayout kAdvisoryListReqLayout{SRMAdvisoryListReq::kTagName,
                                                kAdvisoryListReqFields,
                                                std::size(kAdvisoryListReqFields)};

constexpr CNFieldLayout kAdvisoryEntryFields[] = {
    {SRMAdvisoryEntry::kFieldAdvisoryId, kCNKindInt64, "advisoryId", nullptr},
    {SRMAdvisoryEntry::kFieldType, kCNKindInt64, "type", nullptr},
    {SRMAdvisoryEntry::kFieldTitle, kCNKindString, "title", nullptr},
    {SRMAdvisoryEntry::kFieldClientId, kCNKindInt64, "clientId", nullptr},
    {SRMAdvisoryEntry::kFieldState, kCNKindInt64, "state", nullptr},
    {SRMAdvisoryEntry::kFieldSourceName, kCNKindString, "sourceName", nullptr},
};
constexpr CNRecordLayout kAdvisoryEntryLayout{"KPGui::SRMAdvisoryEntry", kAdvisoryEntryFields,
                                              std::size(kAdvisoryEntryFields)};

constexpr CNFieldLayout kAdvisoryListRespFields[] = {
    {SRMAdvisoryListResp::kFieldAdvisories, kCNKindList, "advisories", &kAdvisoryEntryLayout},
};
constexpr CNRecordLayout kAdvisoryListRespLayout{SRMAdvisoryListResp::kTagName,
                                                 kAdvisoryListRespFields,
                                                 std::size(kAdvisoryListRespFields)};

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

// ---- Stored alerts and advisories ----

AlertListReq::AlertListReq() : CNMessageBase(kTagId, kTagName, &kAlertListReqLayout) {}

int AlertRecord::ToEntity(CNEntity* out) const {
  return Fill(out,
              {{kFieldAlertId, alertId},
               {kFieldSeverity, severity},
               {kFieldClientId, clientId},
               {kFieldReceived, received},
               {kFieldAlertType, alertType},
               {kFieldRaised, raised},
               {kFieldAcknowledged, acknowledged},
               {kFieldSource, source}},
              {{kFieldClientName, &clientName},
               {kFieldText, &text},
               {kFieldAcknowledgedBy, &acknowledgedBy},
               {kFieldDetails, &details}});
}

AlertRecord AlertRecord::FromEntity(const CNEntity& e) {
  AlertRecord r;
  r.alertId = e.GetInt64(kFieldAlertId);
  r.severity = e.GetInt64(kFieldSeverity);
  r.clientId = e.GetInt64(kFieldClientId);
  r.clientName = e.GetString(kFieldClientName);
  r.received = e.GetInt64(kFieldReceived);
  r.text = e.GetString(kFieldText);
  r.alertType = e.GetInt64(kFieldAlertType);
  r.raised = e.GetInt64(kFieldRaised);
  r.acknowledged = e.GetInt64(kFieldAcknowledged);
  r.acknowledgedBy = e.GetString(kFieldAcknowledgedBy);
  r.source = e.GetInt64(kFieldSource);
  r.details = e.GetString(kFieldDetails);
  return r;
}

AlertListResp::AlertListResp() : CNMessageBase(kTagId, kTagName, &kAlertListRespLayout) {}

AlertAckReq::AlertAckReq() : CNMessageBase(kTagId, kTagName, &kAlertAckLayout) {}

std::vector<int64_t> AlertAckReq::GetAlertIds() const {
  std::vector<int64_t> ids;
  for (const CNEntity& entry : GetList(kFieldAlerts)) ids.push_back(entry.GetInt64(kAlertFieldId));
  return ids;
}

int AlertAckReq::AddAlertId(int64_t id) {
  CNEntity entry;
  entry.SetInt64(kAlertFieldId, id);
  return AddEntity(kFieldAlerts, std::move(entry));
}

SRMAdvisoryListReq::SRMAdvisoryListReq()
    : CNMessageBase(kTagId, kTagName, &kAdvisoryListReqLayout) {}

int SRMAdvisoryEntry::ToEntity(CNEntity* out) const {
  return Fill(out,
              {{kFieldAdvisoryId, advisoryId},
               {kFieldType, type},
               {kFieldClientId, clientId},
               {kFieldState, state}},
              {{kFieldTitle, &title}, {kFieldSourceName, &sourceName}});
}

SRMAdvisoryEntry SRMAdvisoryEntry::FromEntity(const CNEntity& e) {
  return SRMAdvisoryEntry{e.GetInt64(kFieldAdvisoryId), e.GetInt64(kFieldType),
                          e.GetString(kFieldTitle),     e.GetInt64(kFieldClientId),
                          e.GetInt64(kFieldState),      e.GetString(kFieldSourceName)};
}

SRMAdvisoryListResp::SRMAdvisoryListResp()
    : CNMessageBase(kTagId, kTagName, &kAdvisoryListRespLayout) {}

}  // namespace KPGui
