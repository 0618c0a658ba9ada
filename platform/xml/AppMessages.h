// The App Manager's XML messages (namespace App): the server-side cache fill, the pre-install
// web console lookup and the HTTP proxy settings.
//
// Each class is a CNMessageBase with a fixed tag and a declared field table; the typed accessors
// below are shorthands for the numbered fields, which remain available for anything a newer
// peer adds. docs/xml.md lists tags and fields. Thread-safety and ownership as CNMessageBase.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/xml/CNMessageBase.h"

namespace App {

// One prepared exchange of the server's message cache: a request record and the response the
// server would give to it, both in the session layer's encoded (XDR) form. Field numbers:
// 1 request id, 2 response id (integers), 3 encoded request, 4 encoded response (binary).
struct ServerMessageCacheEntity {
  static constexpr int kFieldRequestId = 1;
  static constexpr int kFieldResponseId = 2;
  static constexpr int kFieldRequest = 3;
  static constexpr int kFieldResponse = 4;

  int64_t requestId = 0;
  int64_t responseId = 0;
  std::string request;   // encoded request record
  std::string response;  // encoded response record

  int ToEntity(CNEntity* out) const;
  // Unset fields read as 0 or empty.
  static ServerMessageCacheEntity FromEntity(const CNEntity& entity);
  bool operator==(const ServerMessageCacheEntity&) const = default;
};

// The server's answer to a cache fill request for a job: field 1 lists the prepared exchanges,
// in the order the cache takes them.
class EnableAppServerCacheResp : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1ea717d1;
  static constexpr const char* kTagName = "App::EnableAppServerCacheResp";
  static constexpr int kFieldEntities = 1;

  EnableAppServerCacheResp();

  int AddCacheEntity(const ServerMessageCacheEntity& entity) {
    return AddItem(kFieldEntities, entity);
  }
  size_t GetCacheEntityCount() const { return GetList(kFieldEntities).size(); }
  // Copies; to read the bytes in place, walk GetList(kFieldEntities) with the field numbers of
  // ServerMessageCacheEntity.
  std::vector<ServerMessageCacheEntity> GetCacheEntities() const {
    return GetItems<ServerMessageCacheEntity>(kFieldEntities);
  }
};

// Asks the Controlhost's App Manager, before this machine is registered, for the data it needs;
// sent with no fields.
class GetDataInPreInstallModeReq : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1ea717cf;
  static constexpr const char* kTagName = "App::GetDataInPreInstallModeReq";

  GetDataInPreInstallModeReq();
};

// The answer: field 1 is the web console address (text); unset or empty when the server has
// none.
class GetDataInPreInstallModeResp : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1ea717d0;
  static constexpr const char* kTagName = "App::GetDataInPreInstallModeResp";
  static constexpr int kFieldWebConsoleUrl = 1;

  GetDataInPreInstallModeResp();

  const std::string& GetWebConsoleUrl() const { return GetString(kFieldWebConsoleUrl); }
  int SetWebConsoleUrl(const std::string& url) { return SetString(kFieldWebConsoleUrl, url); }
};

// Asks for the HTTP proxy settings that apply to a client. Its tag id is also the XML message
// type it is routed under. Field 1 (text, optional) names the client; absent or empty means the
// client that asks.
class GetHTTPProxySettingsReq : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1e392f0b;
  static constexpr const char* kTagName = "App::GetHTTPProxySettingsReq";
  static constexpr int kFieldClientName = 1;

  GetHTTPProxySettingsReq();

  const std::string& GetClientName() const { return GetString(kFieldClientName); }
  int SetClientName(const std::string& name) { return SetString(kFieldClientName, name); }
};

// The HTTP proxy a client should use. Fields: 1 enabled (integer, 0 or 1), 2 host (text),
// 3 port (integer), 4 user (text), 5 password (text; as protected as the connection carrying
// the message, no more), 6 exclusions (list; each entry's field 1 is a host pattern, text, that
// is reached without the proxy).
class HTTPProxySettings : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1e392f0c;
  static constexpr const char* kTagName = "App::HTTPProxySettings";
  static constexpr int kFieldEnabled = 1;
  static constexpr int kFieldHost = 2;
  static constexpr int kFieldPort = 3;
  static constexpr int kFieldUser = 4;
  static constexpr int kFieldPassword = 5;
  static constexpr int kFieldExclusions = 6;
  static constexpr int kExclusionFieldPattern = 1;

  HTTPProxySettings();

  bool GetEnabled() const { return GetInt64(kFieldEnabled) != 0; }
  const std::string& GetHost() const { return GetString(kFieldHost); }
  int64_t GetPort() const { return GetInt64(kFieldPort); }
  const std::string& GetUser() const { return GetString(kFieldUser); }
  const std::string& GetPassword() const { return GetString(kFieldPassword); }
  std::vector<std::string> GetExclusions() const;

  int SetEnabled(bool enabled) { return SetInt64(kFieldEnabled, enabled ? 1 : 0); }
  int SetHost(const std::string& host) { return SetString(kFieldHost, host); }
  int SetPort(int64_t port) { return SetInt64(kFieldPort, port); }
  int SetUser(const std::string& user) { return SetString(kFieldUser, user); }
  int SetPassword(const std::string& password) { return SetString(kFieldPassword, password); }
  int AddExclusion(const std::string& pattern);
};

// ---- Log monitoring ----

// One log-monitoring parameter: 1 type (integer, 0 to 2^32-1), 2 name, 3 value (texts).
struct LogMonitoringParam {
  static constexpr int kFieldType = 1;
  static constexpr int kFieldName = 2;
  static constexpr int kFieldValue = 3;

  int64_t type = 0;
  std::string name;
  std::string value;

  int ToEntity(CNEntity* out) const;
  static LogMonitoringParam FromEntity(const CNEntity& entity);
  bool operator==(const LogMonitoringParam&) const = default;
};

// Asks for the log-monitoring parameters of one monitored entity. Fields (integers, optional):
// 1 entity id, 2 type (0: every type). Where the request travels with ids of its own (the
// log-monitoring passthrough), an absent field takes the first id as the entity and the second
// as the type.
class LogMonitoringParamsReq : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1e5b0a01;
  static constexpr const char* kTagName = "App::LogMonitoringParamsReq";
  static constexpr int kFieldEntityId = 1;
  static constexpr int kFieldType = 2;

  LogMonitoringParamsReq();

  int64_t GetEntityId() const { return GetInt64(kFieldEntityId); }
  int SetEntityId(int64_t id) { return SetInt64(kFieldEntityId, id); }
  int64_t GetType() const { return GetInt64(kFieldType); }
  int SetType(int64_t type) { return SetInt64(kFieldType, type); }
};

// The answer: 1 entity id (integer), 2 parameters (list of LogMonitoringParam), by type and name.
class LogMonitoringParams : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1e5b0a02;
  static constexpr const char* kTagName = "App::LogMonitoringParams";
  static constexpr int kFieldEntityId = 1;
  static constexpr int kFieldParams = 2;

  LogMonitoringParams();

  int64_t GetEntityId() const { return GetInt64(kFieldEntityId); }
  int SetEntityId(int64_t id) { return SetInt64(kFieldEntityId, id); }
  int AddParam(const LogMonitoringParam& p) { return AddItem(kFieldParams, p); }
  std::vector<LogMonitoringParam> GetParams() const {
    return GetItems<LogMonitoringParam>(kFieldParams);
  }
};

// Changes the log-monitoring parameters of one entity. Fields: 1 entity id (integer; absent:
// the passthrough's first id), 2 action (integer, kAction*), 3 parameters (list of
// LogMonitoringParam; a remove reads only type and name). Answered by the generic response.
class SetLogMonitoringParams : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x1e5b0a03;
  static constexpr const char* kTagName = "App::SetLogMonitoringParams";
  static constexpr int kFieldEntityId = 1;
  static constexpr int kFieldAction = 2;
  static constexpr int kFieldParams = 3;
  static constexpr int64_t kActionSet = 1;      // insert each, or replace its value
  static constexpr int64_t kActionRemove = 2;   // remove each by type and name
  static constexpr int64_t kActionReplace = 3;  // the list becomes the entity's whole set

  SetLogMonitoringParams();

  int64_t GetEntityId() const { return GetInt64(kFieldEntityId); }
  int SetEntityId(int64_t id) { return SetInt64(kFieldEntityId, id); }
  int64_t GetAction() const { return GetInt64(kFieldAction); }
  int SetAction(int64_t action) { return SetInt64(kFieldAction, action); }
  int AddParam(const LogMonitoringParam& p) { return AddItem(kFieldParams, p); }
  std::vector<LogMonitoringParam> GetParams() const {
    return GetItems<LogMonitoringParam>(kFieldParams);
  }
};

}  // namespace App
