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

}  // namespace App
