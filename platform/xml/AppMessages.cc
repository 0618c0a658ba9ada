#include "platform/xml/AppMessages.h"

#include <iterator>

#include "platform/xml/CNRecordLayout.h"

namespace App {

namespace {

constexpr CNFieldLayout kCacheEntityFields[] = {
    {ServerMessageCacheEntity::kFieldRequestId, kCNKindInt64, "requestId", nullptr},
    {ServerMessageCacheEntity::kFieldResponseId, kCNKindInt64, "responseId", nullptr},
    {ServerMessageCacheEntity::kFieldRequest, kCNKindBinary, "request", nullptr},
    {ServerMessageCacheEntity::kFieldResponse, kCNKindBinary, "response", nullptr},
};
constexpr CNRecordLayout kCacheEntityLayout{"App::ServerMessageCacheEntity", kCacheEntityFields,
                                            std::size(kCacheEntityFields)};

constexpr CNFieldLayout kCacheRespFields[] = {
    {EnableAppServerCacheResp::kFieldEntities, kCNKindList, "entities", &kCacheEntityLayout},
};
constexpr CNRecordLayout kCacheRespLayout{EnableAppServerCacheResp::kTagName, kCacheRespFields,
                                          std::size(kCacheRespFields)};

constexpr CNRecordLayout kPreInstallReqLayout{GetDataInPreInstallModeReq::kTagName, nullptr, 0};

constexpr CNFieldLayout kPreInstallRespFields[] = {
    {GetDataInPreInstallModeResp::kFieldWebConsoleUrl, kCNKindString, "webConsoleUrl", nullptr},
};
constexpr CNRecordLayout kPreInstallRespLayout{
    GetDataInPreInstallModeResp::kTagName, kPreInstallRespFields, std::size(kPreInstallRespFields)};

constexpr CNFieldLayout kProxyReqFields[] = {
    {GetHTTPProxySettingsReq::kFieldClientName, kCNKindString, "clientName", nullptr},
};
constexpr CNRecordLayout kProxyReqLayout{GetHTTPProxySettingsReq::kTagName, kProxyReqFields,
                                         std::size(kProxyReqFields)};

constexpr CNFieldLayout kExclusionFields[] = {
    {HTTPProxySettings::kExclusionFieldPattern, kCNKindString, "pattern", nullptr},
};
constexpr CNRecordLayout kExclusionLayout{"App::HTTPProxySettings.exclusion", kExclusionFields,
                                          std::size(kExclusionFields)};

constexpr CNFieldLayout kProxyFields[] = {
    {HTTPProxySettings::kFieldEnabled, kCNKindInt64, "enabled", nullptr},
    {HTTPProxySettings::kFieldHost, kCNKindString, "host", nullptr},
    {HTTPProxySettings::kFieldPort, kCNKindInt64, "port", nullptr},
    {HTTPProxySettings::kFieldUser, kCNKindString, "user", nullptr},
    {HTTPProxySettings::kFieldPassword, kCNKindString, "password", nullptr},
    {HTTPProxySettings::kFieldExclusions, kCNKindList, "exclusions", &kExclusionLayout},
};
constexpr CNRecordLayout kProxyLayout{HTTPProxySettings::kTagName, kProxyFields,
                                      std::size(kProxyFields)};

constexpr CNFieldLayout kLogParamFields[] = {
    {LogMonitoringParam::kFieldType, kCNKindInt64, "type", nullptr},
    {LogMonitoringParam::kFieldName, kCNKindString, "name", nullptr},
    {LogMonitoringParam::kFieldValue, kCNKindString, "value", nullptr},
};
constexpr CNRecordLayout kLogParamLayout{"App::LogMonitoringParam", kLogParamFields,
                                         std::size(kLogParamFields)};

constexpr CNFieldLayout kLogParamsReqFields[] = {
    {LogMonitoringParamsReq::kFieldEntityId, kCNKindInt64, "entityId", nullptr},
    {LogMonitoringParamsReq::kFieldType, kCNKindInt64, "type", nullptr},
};
constexpr CNRecordLayout kLogParamsReqLayout{LogMonitoringParamsReq::kTagName, kLogParamsReqFields,
                                             std::size(kLogParamsReqFields)};

constexpr CNFieldLayout kLogParamsFields[] = {
    {LogMonitoringParams::kFieldEntityId, kCNKindInt64, "entityId", nullptr},
    {LogMonitoringParams::kFieldParams, kCNKindList, "params", &kLogParamLayout},
};
constexpr CNRecordLayout kLogParamsLayout{LogMonitoringParams::kTagName, kLogParamsFields,
                                          std::size(kLogParamsFields)};

constexpr CNFieldLayout kSetLogParamsFields[] = {
    {SetLogMonitoringParams::kFieldEntityId, kCNKindInt64, "entityId", nullptr},
    {SetLogMonitoringParams::kFieldAction, kCNKindInt64, "action", nullptr},
    {SetLogMonitoringParams::kFieldParams, kCNKindList, "params", &kLogParamLayout},
};
constexpr CNRecordLayout kSetLogParamsLayout{SetLogMonitoringParams::kTagName, kSetLogParamsFields,
                                             std::size(kSetLogParamsFields)};

}  // namespace

int ServerMessageCacheEntity::ToEntity(CNEntity* out) const {
  out->Clear();
  out->SetInt64(kFieldRequestId, requestId);
  out->SetInt64(kFieldResponseId, responseId);
  out->SetBinary(kFieldRequest, request);
  out->SetBinary(kFieldResponse, response);
  return kCNOk;  // integers and bytes cannot be refused
}

ServerMessageCacheEntity ServerMessageCacheEntity::FromEntity(const CNEntity& entity) {
  ServerMessageCacheEntity e;
  e.requestId = entity.GetInt64(kFieldRequestId);
  e.responseId = entity.GetInt64(kFieldResponseId);
  e.request = entity.GetBinary(kFieldRequest);
  e.response = entity.GetBinary(kFieldResponse);
  return e;
}

EnableAppServerCacheResp::EnableAppServerCacheResp()
    : CNMessageBase(kTagId, kTagName, &kCacheRespLayout) {}

GetDataInPreInstallModeReq::GetDataInPreInstallModeReq()
    : CNMessageBase(kTagId, kTagName, &kPreInstallReqLayout) {}

GetDataInPreInstallModeResp::GetDataInPreInstallModeResp()
    : CNMessageBase(kTagId, kTagName, &kPreInstallRespLayout) {}

GetHTTPProxySettingsReq::GetHTTPProxySettingsReq()
    : CNMessageBase(kTagId, kTagName, &kProxyReqLayout) {}

HTTPProxySettings::HTTPProxySettings() : CNMessageBase(kTagId, kTagName, &kProxyLayout) {}

std::vector<std::string> HTTPProxySettings::GetExclusions() const {
  std::vector<std::string> patterns;
  for (const CNEntity& entry : GetList(kFieldExclusions)) {
    patterns.push_back(entry.GetString(kExclusionFieldPattern));
  }
  return patterns;
}

int HTTPProxySettings::AddExclusion(const std::string& pattern) {
  CNEntity entry;
  if (int rc = entry.SetString(kExclusionFieldPattern, pattern); rc != kCNOk) return rc;
  return AddEntity(kFieldExclusions, std::move(entry));
}

// ---- Log monitoring ----

int LogMonitoringParam::ToEntity(CNEntity* out) const {
  out->Clear();
  out->SetInt64(kFieldType, type);
  if (int rc = out->SetString(kFieldName, name); rc != kCNOk) return rc;
  return out->SetString(kFieldValue, value);
}

LogMonitoringParam LogMonitoringParam::FromEntity(const CNEntity& entity) {
  return LogMonitoringParam{entity.GetInt64(kFieldType), entity.GetString(kFieldName),
                            entity.GetString(kFieldValue)};
}

LogMonitoringParamsReq::LogMonitoringParamsReq()
    : CNMessageBase(kTagId, kTagName, &kLogParamsReqLayout) {}

LogMonitoringParams::LogMonitoringParams() : CNMessageBase(kTagId, kTagName, &kLogParamsLayout) {}

SetLogMonitoringParams::SetLogMonitoringParams()
    : CNMessageBase(kTagId, kTagName, &kSetLogParamsLayout) {}

}  // namespace App
