// The console's XML messages (namespace KPGui): alerts, security advisories (SRM) and the
// generic response that answers them.
//
// Each class is a CNMessageBase with a fixed tag and a declared field table; the typed accessors
// are shorthands for the numbered fields. What the numbers inside mean (severities, actions,
// advisory types) is the server's business; the constants below are the values this build
// sends. docs/xml.md lists tags and fields. Thread-safety and ownership as CNMessageBase.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/xml/CNMessageBase.h"

namespace KPGui {

// The generic response: the outcome of a request carried as XML. The outcome lives in keyed
// element 0x1000406: slot 1, key 10268693, the status (integer, 0 for success); slot 2, key
// 12053727, the error text. So getint64(1, 0x1000406, 10268693) reads the status and
// getstringByRef(2, 2, 0x1000406, 12053727) the error text.
//
// The two constructor numbers are the layout version the response is written in, major and
// minor (1 and 24 in this build), kept in fields 1 and 2. A reader built for major M refuses a
// response that declares another major (kCNErrBadValue): a new major may move the outcome. A
// response without fields 1 and 2 is read as the reader's own layout. The minor is informative.
class AlertResponse : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003f0;
  static constexpr const char* kTagName = "KPGui::AlertResponse";
  static constexpr unsigned long kOutcomeElement = 0x1000406;
  static constexpr int kStatusSlot = 1;
  static constexpr unsigned long kStatusKey = 10268693;
  static constexpr int kErrorTextSlot = 2;
  static constexpr unsigned long kErrorTextKey = 12053727;
  static constexpr int kFieldLayoutMajor = 1;
  static constexpr int kFieldLayoutMinor = 2;
  static constexpr int kLayoutMajor = 1;
  static constexpr int kLayoutMinor = 24;

  // Layout kLayoutMajor.kLayoutMinor, status 0, no error text.
  AlertResponse() : AlertResponse(kLayoutMajor, kLayoutMinor) {}
  AlertResponse(int layoutMajor, int layoutMinor);

  int64_t GetStatus() const { return getint64(kStatusSlot, kOutcomeElement, kStatusKey); }
  const std::string& GetErrorText() const {
    return getstringByRef(kErrorTextSlot, kCNKindString, kOutcomeElement, kErrorTextKey);
  }
  int SetStatus(int64_t status) {
    return setint64(kStatusSlot, kOutcomeElement, kStatusKey, status);
  }
  int SetErrorText(const std::string& text) {
    return setstring(kErrorTextSlot, kCNKindString, kOutcomeElement, kErrorTextKey, text);
  }
  int64_t GetLayoutMajor() const { return GetInt64(kFieldLayoutMajor); }
  int64_t GetLayoutMinor() const { return GetInt64(kFieldLayoutMinor); }

 protected:
  int CheckContent(const CNEntity& record, std::string* detail) const override;

 private:
  int expectedMajor_;
};

// One alert. Fields: 1 alert id, 2 severity (kSeverity*), 3 client id (integers), 4 client
// name (text), 5 time (integer, seconds since 1970-01-01 UTC), 6 text.
struct AlertItem {
  static constexpr int kFieldAlertId = 1;
  static constexpr int kFieldSeverity = 2;
  static constexpr int kFieldClientId = 3;
  static constexpr int kFieldClientName = 4;
  static constexpr int kFieldTime = 5;
  static constexpr int kFieldText = 6;
  static constexpr int64_t kSeverityInfo = 1;
  static constexpr int64_t kSeverityWarning = 2;
  static constexpr int64_t kSeverityError = 3;
  static constexpr int64_t kSeverityCritical = 4;

  int64_t alertId = 0;
  int64_t severity = 0;
  int64_t clientId = 0;
  std::string clientName;
  int64_t time = 0;
  std::string text;

  // kCNErrBadArgument when a text is not valid (see CNEntity).
  int ToEntity(CNEntity* out) const;
  static AlertItem FromEntity(const CNEntity& entity);
  bool operator==(const AlertItem&) const = default;
};

// Alerts raised on a client, sent to the App Manager in one message: field 1 lists them.
class AlertEvAlertExList : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x0100001f;
  static constexpr const char* kTagName = "KPGui::AlertEvAlertExList";
  static constexpr int kFieldAlerts = 1;

  AlertEvAlertExList();

  int AddAlert(const AlertItem& alert) { return AddItem(kFieldAlerts, alert); }
  size_t GetAlertCount() const { return GetList(kFieldAlerts).size(); }
  std::vector<AlertItem> GetAlerts() const { return GetItems<AlertItem>(kFieldAlerts); }
};

// One advisory. Fields: 1 advisory id, 2 advisory type (integers), 3 title (text).
struct SRMAdvisory {
  static constexpr int kFieldAdvisoryId = 1;
  static constexpr int kFieldType = 2;
  static constexpr int kFieldTitle = 3;

  int64_t advisoryId = 0;
  int64_t type = 0;
  std::string title;

  int ToEntity(CNEntity* out) const;
  static SRMAdvisory FromEntity(const CNEntity& entity);
  bool operator==(const SRMAdvisory&) const = default;
};

// The complete set of advisories that apply to one client; the server replaces what it held for
// that client. Fields: 1 client id (integer), 2 advisories (list of SRMAdvisory).
class SyncSRMClientAdvisories : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003fc;
  static constexpr const char* kTagName = "KPGui::SyncSRMClientAdvisories";
  static constexpr int kFieldClientId = 1;
  static constexpr int kFieldAdvisories = 2;

  SyncSRMClientAdvisories();

  int64_t GetClientId() const { return GetInt64(kFieldClientId); }
  int SetClientId(int64_t id) { return SetInt64(kFieldClientId, id); }
  int AddAdvisory(const SRMAdvisory& a) { return AddItem(kFieldAdvisories, a); }
  std::vector<SRMAdvisory> GetAdvisories() const { return GetItems<SRMAdvisory>(kFieldAdvisories); }
};

// The complete set of advisories published by one source (a feed); the server replaces what it
// held from that source. Fields: 1 source name (text), 2 advisories (list of SRMAdvisory).
class SyncSRMSourceAdvisories : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003fd;
  static constexpr const char* kTagName = "KPGui::SyncSRMSourceAdvisories";
  static constexpr int kFieldSourceName = 1;
  static constexpr int kFieldAdvisories = 2;

  SyncSRMSourceAdvisories();

  const std::string& GetSourceName() const { return GetString(kFieldSourceName); }
  int SetSourceName(const std::string& name) { return SetString(kFieldSourceName, name); }
  int AddAdvisory(const SRMAdvisory& a) { return AddItem(kFieldAdvisories, a); }
  std::vector<SRMAdvisory> GetAdvisories() const { return GetItems<SRMAdvisory>(kFieldAdvisories); }
};

// An advisory on a client: the target of a control action. Fields: 1 advisory id, 2 client id
// (integers; client id 0 means every client the advisory applies to).
struct SRMAdvisoryTarget {
  static constexpr int kFieldAdvisoryId = 1;
  static constexpr int kFieldClientId = 2;

  int64_t advisoryId = 0;
  int64_t clientId = 0;

  int ToEntity(CNEntity* out) const;
  static SRMAdvisoryTarget FromEntity(const CNEntity& entity);
  bool operator==(const SRMAdvisoryTarget&) const = default;
};

// One action applied to a set of advisories. Fields: 1 action (integer, kAction*), 2 targets
// (list of SRMAdvisoryTarget).
class ControlSRMAdvisories : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003fe;
  static constexpr const char* kTagName = "KPGui::ControlSRMAdvisories";
  static constexpr int kFieldAction = 1;
  static constexpr int kFieldTargets = 2;
  static constexpr int64_t kActionEnable = 1;
  static constexpr int64_t kActionDisable = 2;
  static constexpr int64_t kActionAcknowledge = 3;
  static constexpr int64_t kActionRemove = 4;

  ControlSRMAdvisories();

  int64_t GetAction() const { return GetInt64(kFieldAction); }
  int SetAction(int64_t action) { return SetInt64(kFieldAction, action); }
  int AddTarget(const SRMAdvisoryTarget& t) { return AddItem(kFieldTargets, t); }
  std::vector<SRMAdvisoryTarget> GetTargets() const {
    return GetItems<SRMAdvisoryTarget>(kFieldTargets);
  }
};

// Asks for the advisory types the server knows. Field 1 (integer, optional): a client id to
// restrict the answer to the types that apply to that client; absent or 0 asks for all.
class AlertSRMAdvisoryTypeListReq : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003f6;
  static constexpr const char* kTagName = "KPGui::AlertSRMAdvisoryTypeListReq";
  static constexpr int kFieldClientId = 1;

  AlertSRMAdvisoryTypeListReq();

  int64_t GetClientId() const { return GetInt64(kFieldClientId); }
  int SetClientId(int64_t id) { return SetInt64(kFieldClientId, id); }
};

// One advisory type. Fields: 1 type id (integer), 2 name, 3 description (texts).
struct SRMAdvisoryType {
  static constexpr int kFieldTypeId = 1;
  static constexpr int kFieldName = 2;
  static constexpr int kFieldDescription = 3;

  int64_t typeId = 0;
  std::string name;
  std::string description;

  int ToEntity(CNEntity* out) const;
  static SRMAdvisoryType FromEntity(const CNEntity& entity);
  bool operator==(const SRMAdvisoryType&) const = default;
};

// The answer: field 1 lists the advisory types (SRMAdvisoryType).
class AlertSRMAdvisoryTypeListResp : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003f7;
  static constexpr const char* kTagName = "KPGui::AlertSRMAdvisoryTypeListResp";
  static constexpr int kFieldTypes = 1;

  AlertSRMAdvisoryTypeListResp();

  int AddType(const SRMAdvisoryType& t) { return AddItem(kFieldTypes, t); }
  std::vector<SRMAdvisoryType> GetTypes() const { return GetItems<SRMAdvisoryType>(kFieldTypes); }
};

// ---- What the App Manager holds: stored alerts and advisories ----

// Asks for the alerts the App Manager has received. Fields (integers, all optional): 1 client id
// (0 or absent: every client), 2 unacknowledged only (1) or all (0), 3 limit: the most recent
// so many (0 or absent: all).
class AlertListReq : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x01000020;
  static constexpr const char* kTagName = "KPGui::AlertListReq";
  static constexpr int kFieldClientId = 1;
  static constexpr int kFieldUnacknowledgedOnly = 2;
  static constexpr int kFieldLimit = 3;

  AlertListReq();

  int64_t GetClientId() const { return GetInt64(kFieldClientId); }
  int SetClientId(int64_t id) { return SetInt64(kFieldClientId, id); }
  bool GetUnacknowledgedOnly() const { return GetInt64(kFieldUnacknowledgedOnly) != 0; }
  int SetUnacknowledgedOnly(bool only) { return SetInt64(kFieldUnacknowledgedOnly, only ? 1 : 0); }
  int64_t GetLimit() const { return GetInt64(kFieldLimit); }
  int SetLimit(int64_t limit) { return SetInt64(kFieldLimit, limit); }
};

// One stored alert. Fields: 1 alert id (the App Manager's own), 2 severity, 3 client id,
// 4 client name (text), 5 time received, 6 text (text), 7 alert type, 8 time raised as the
// sender gave it (0: it gave none), 9 time acknowledged (0: not acknowledged), 10 who
// acknowledged it (text), 11 how it arrived (kSourceRecord or kSourceXml), 12 every field the
// sender gave, as a JSON object (text). Unnamed kinds are integers; times are seconds since
// 1970-01-01 UTC.
struct AlertRecord {
  static constexpr int kFieldAlertId = 1;
  static constexpr int kFieldSeverity = 2;
  static constexpr int kFieldClientId = 3;
  static constexpr int kFieldClientName = 4;
  static constexpr int kFieldReceived = 5;
  static constexpr int kFieldText = 6;
  static constexpr int kFieldAlertType = 7;
  static constexpr int kFieldRaised = 8;
  static constexpr int kFieldAcknowledged = 9;
  static constexpr int kFieldAcknowledgedBy = 10;
  static constexpr int kFieldSource = 11;
  static constexpr int kFieldDetails = 12;
  static constexpr int64_t kSourceRecord = 1;  // the binary alert record
  static constexpr int64_t kSourceXml = 2;     // an entry of KPGui::AlertEvAlertExList

  int64_t alertId = 0;
  int64_t severity = 0;
  int64_t clientId = 0;
  std::string clientName;
  int64_t received = 0;
  std::string text;
  int64_t alertType = 0;
  int64_t raised = 0;
  int64_t acknowledged = 0;
  std::string acknowledgedBy;
  int64_t source = 0;
  std::string details;

  int ToEntity(CNEntity* out) const;
  static AlertRecord FromEntity(const CNEntity& entity);
  bool operator==(const AlertRecord&) const = default;
};

// The answer: field 1 lists the alerts (AlertRecord), oldest first.
class AlertListResp : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x01000021;
  static constexpr const char* kTagName = "KPGui::AlertListResp";
  static constexpr int kFieldAlerts = 1;

  AlertListResp();

  int AddAlert(const AlertRecord& alert) { return AddItem(kFieldAlerts, alert); }
  std::vector<AlertRecord> GetAlerts() const { return GetItems<AlertRecord>(kFieldAlerts); }
};

// Acknowledges stored alerts. Fields: 1 alerts (list; each entry's field 1 is an alert id),
// 2 who acknowledges (text; absent or empty: the client the request comes from). Answered by
// the generic response.
class AlertAckReq : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x01000022;
  static constexpr const char* kTagName = "KPGui::AlertAckReq";
  static constexpr int kFieldAlerts = 1;
  static constexpr int kFieldBy = 2;
  static constexpr int kAlertFieldId = 1;

  AlertAckReq();

  std::vector<int64_t> GetAlertIds() const;
  int AddAlertId(int64_t id);
  const std::string& GetBy() const { return GetString(kFieldBy); }
  int SetBy(const std::string& by) { return SetString(kFieldBy, by); }
};

// Asks for the stored advisories. Fields (optional): 1 client id (integer): the advisories that
// apply to that client (0 or absent: to every client); 2 source name (text): when set, the
// advisories that source published instead.
class SRMAdvisoryListReq : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003f8;
  static constexpr const char* kTagName = "KPGui::SRMAdvisoryListReq";
  static constexpr int kFieldClientId = 1;
  static constexpr int kFieldSourceName = 2;

  SRMAdvisoryListReq();

  int64_t GetClientId() const { return GetInt64(kFieldClientId); }
  int SetClientId(int64_t id) { return SetInt64(kFieldClientId, id); }
  const std::string& GetSourceName() const { return GetString(kFieldSourceName); }
  int SetSourceName(const std::string& name) { return SetString(kFieldSourceName, name); }
};

// One stored advisory. Fields: 1 advisory id, 2 advisory type (integers), 3 title (text),
// 4 client id, 5 state (kState*; both 0 for an advisory of a source) (integers), 6 source name
// (text; empty for an advisory of a client).
struct SRMAdvisoryEntry {
  static constexpr int kFieldAdvisoryId = 1;
  static constexpr int kFieldType = 2;
  static constexpr int kFieldTitle = 3;
  static constexpr int kFieldClientId = 4;
  static constexpr int kFieldState = 5;
  static constexpr int kFieldSourceName = 6;
  static constexpr int64_t kStateEnabled = 1;
  static constexpr int64_t kStateDisabled = 2;
  static constexpr int64_t kStateAcknowledged = 3;

  int64_t advisoryId = 0;
  int64_t type = 0;
  std::string title;
  int64_t clientId = 0;
  int64_t state = 0;
  std::string sourceName;

  int ToEntity(CNEntity* out) const;
  static SRMAdvisoryEntry FromEntity(const CNEntity& entity);
  bool operator==(const SRMAdvisoryEntry&) const = default;
};

// The answer: field 1 lists the advisories (SRMAdvisoryEntry).
class SRMAdvisoryListResp : public CNMessageBase {
 public:
  static constexpr unsigned long kTagId = 0x010003f9;
  static constexpr const char* kTagName = "KPGui::SRMAdvisoryListResp";
  static constexpr int kFieldAdvisories = 1;

  SRMAdvisoryListResp();

  int AddAdvisory(const SRMAdvisoryEntry& a) { return AddItem(kFieldAdvisories, a); }
  std::vector<SRMAdvisoryEntry> GetAdvisories() const {
    return GetItems<SRMAdvisoryEntry>(kFieldAdvisories);
  }
};

}  // namespace KPGui
