// AdaptersInterface: the queries and actions that belong to no single entity: lists of
// providers, application ids, domains, clients, instances, backup sets, subclients, client
// groups and clouds; alerts; XML requests; client file transfer. Obtained from
// getLibraryInterface(1); the caller owns the object and deletes it through this class. Objects
// hold no state, so one may serve many threads at once.
//
// Lists: every list operation is one request/response with the App Manager and returns 0 or the
// code of the step that failed, with `errorString` holding that step's text (the server's text
// for a server error). The answer's members are appended to the out-lists, which are never
// cleared first; on failure nothing is appended. What each selector selects is the server's
// (appmgrd: docs/server.md); the library carries the values in the order given below. A bool
// flag travels as 0 or 1, an int flag unchanged. The trailing void* is never read.
//
// Operations answered without a message, in three groups:
//   "not provided" (0xa0010, errorString set to "Api not implemented."),
//   "not provided, silent" (0xa0010, nothing written, not even errorString),
//   "no-op" (0, nothing done: success here does not mean anything happened).
// Alerts and XML (below, and docs/adapters.md): the binary alert answers 0 or the step's status
// with the server's text for a server error. The XML operations answer 0, a transport status,
// the status the server's generic response carries, or one of their own codes:
//   0x000b0001 "XML Message initilization failed", 0x000b0008 "XML Message serilization failed",
//   0x000b0002 "XML Message unserilization failed" (an answer of an unexpected tag, or one that
//   does not read), 0x000a0004 "Response is null" (processXMLRequest got no message).
//
// The order of the declarations below is the order of the class's virtual table.
#pragma once

#include <list>
#include <string>

class CNMessageBase;
class EvAlertEx;
namespace KPGui {
class AlertEvAlertExList;
class SyncSRMClientAdvisories;
class SyncSRMSourceAdvisories;
class ControlSRMAdvisories;
class AlertSRMAdvisoryTypeListReq;
class AlertSRMAdvisoryTypeListResp;
}  // namespace KPGui
namespace App {
class GetHTTPProxySettingsReq;
class HTTPProxySettings;
}  // namespace App

class AdaptersInterface {
 public:
  using IdList = std::list<unsigned long>;
  using NameList = std::list<std::string>;
  using FlagList = std::list<bool>;

  virtual ~AdaptersInterface() = default;

  // ---- Lists ----

  // Providers of type `selector`: ids, names, a second text, a flag and a value per provider.
  virtual int getProvidersList(IdList& ids, NameList& names, NameList& texts, FlagList& flags,
                               IdList& values, std::string& errorString, unsigned long selector,
                               void* context) = 0;
  // Application ids, in their text form, chosen by five selectors.
  virtual int getAppIdList(NameList& appIds, std::string& errorString, unsigned long a,
                           unsigned long b, unsigned long c, unsigned long d, unsigned long e,
                           void* context, bool flag) = 0;
  virtual int getOrbitList(IdList& ids, NameList& names, std::string& errorString,
                           unsigned long selector, void* context, bool flag) = 0;
  virtual int getClientList(IdList& ids, NameList& names, std::string& errorString,
                            unsigned long selector, void* context, int flag) = 0;
  virtual int getClientListOfType(IdList& ids, NameList& names, std::string& errorString,
                                  unsigned long a, unsigned long b, void* context, bool flag) = 0;
  virtual int getApplicationTypes(IdList& ids, NameList& names, std::string& errorString,
                                  unsigned long selector, void* context, int flag) = 0;
  // Sends the three ids as given.
  virtual int getInstanceList(IdList& ids, NameList& names, std::string& errorString,
                              unsigned long a, unsigned long b, unsigned long c, void* context,
                              int flag) = 0;
  // Sends a, 0, b.
  virtual int getInstanceList(IdList& ids, NameList& names, std::string& errorString,
                              unsigned long a, unsigned long b, void* context, int flag) = 0;
  // Sends 0, a, b. The two ids come before the lists.
  virtual int getInstanceList(unsigned long a, unsigned long b, IdList& ids, NameList& names,
                              std::string& errorString, void* context, int flag) = 0;
  // Backup sets with one flag each (true for a non-zero flag of the answer).
  virtual int getBackupSetList(IdList& ids, NameList& names, FlagList& flags,
                               std::string& errorString, unsigned long a, unsigned long b,
                               unsigned long c, void* context, int flag) = 0;
  virtual int getSubclientList(IdList& ids, NameList& names, FlagList& flags,
                               std::string& errorString, unsigned long a, unsigned long b,
                               void* context, int flag) = 0;
  virtual int getSubclientList(IdList& ids, NameList& names, std::string& errorString,
                               unsigned long a, unsigned long b, unsigned long c, unsigned long d,
                               void* context, int flag) = 0;
  // The other subclients of `subclientId`'s backup set, and five values about the subclient,
  // written on success even when the list is empty.
  virtual int getSiblingSubclientList(unsigned long subclientId, IdList& ids, NameList& names,
                                      unsigned long& value1, unsigned long& value2,
                                      unsigned long& value3, unsigned long& value4,
                                      unsigned long& value5, std::string& errorString,
                                      void* context, bool flag) = 0;
  virtual int getClientListByAppType(IdList& ids, NameList& names, std::string& errorString,
                                     unsigned long a, unsigned long b, void* context) = 0;
  virtual int getClientListByAppGroup(IdList& ids, NameList& names, std::string& errorString,
                                      unsigned long a, unsigned long b, void* context) = 0;
  // Application ids by archive group. `reserved` is never written.
  virtual int getApplications(NameList& appIds, unsigned long a, unsigned long b, bool& reserved,
                              std::string& errorString, void* context) = 0;
  // Clients of a client group.
  virtual int getClientList(IdList& ids, NameList& names, std::string& errorString, unsigned long a,
                            unsigned long b, void* context, int flag) = 0;
  virtual int getClientGroupList(IdList& ids, NameList& names, std::string& errorString,
                                 unsigned long selector, void* context, int flag) = 0;
  virtual int getClientGroupList(IdList& ids, NameList& names, std::string& errorString,
                                 unsigned long a, unsigned long b, void* context, int flag) = 0;
  // Clients with one value each. The request always carries 2 as its selector.
  virtual int getClientList(IdList& ids, NameList& names, IdList& values, std::string& errorString,
                            void* context, bool flag) = 0;
  // The members of a domain: ids into l1, three values into l2..l4, two texts into s1 and s2.
  // The bool is not sent.
  virtual int getExDMClientDomainList(const std::string& domain, IdList& l1, IdList& l2, IdList& l3,
                                      IdList& l4, NameList& s1, NameList& s2,
                                      std::string& errorString, void* context, bool flag) = 0;
  virtual int getCloudList(IdList& ids, NameList& names, unsigned long selector,
                           std::string& errorString, void* context) = 0;
  // The members of a cloud: two ids each.
  virtual int getCloudClientList(IdList& ids1, IdList& ids2, unsigned long cloudId,
                                 std::string& errorString, void* context) = 0;

  // ---- Not provided ----

  virtual int getBackupSetList(IdList& ids, NameList& names, std::list<int>& flags,
                               std::string& errorString, unsigned long a, unsigned long b,
                               unsigned long c, void* context, int flag) = 0;
  virtual int GetAppTypeNameIdPair(IdList& ids, NameList& names, std::string& errorString,
                                   void* context) = 0;
  virtual int getAssociatedSubclient(unsigned long id, unsigned long& subclientId,
                                     std::string& errorString, void* context) = 0;
  virtual int getSnapshotWorkflowList(IdList& ids, NameList& names, std::string& errorString,
                                      void* context) = 0;
  virtual int controlALertsSystem(bool enable, std::string& errorString, void* context) = 0;
  virtual int getEncryptedClientCount(unsigned long& count, std::string& errorString,
                                      void* context) = 0;
  virtual int getMultipleStreamSublientCount(unsigned long& count, std::string& errorString,
                                             void* context) = 0;
  virtual int getDefaultSubclient(unsigned long clientId, unsigned long appTypeId,
                                  unsigned long instanceId, unsigned long& subclientId,
                                  std::string& errorString, void* context) = 0;
  virtual int getPhysicalClientIdfromRACClientId(unsigned long racClientId,
                                                 unsigned long& physicalClientId,
                                                 std::string& errorString, void* context) = 0;
  // Calendar questions: a day or time of calendar `calendarId` relative to `time`.
  virtual int getStartDay(unsigned long calendarId, long time, long& day, std::string& errorString,
                          void* context) = 0;
  virtual int getEndDay(unsigned long calendarId, long time, long& day, std::string& errorString,
                        void* context) = 0;
  virtual int getDay(unsigned long calendarId, long time, long& day, std::string& errorString,
                     void* context) = 0;
  virtual int getLastWeekDay(unsigned long calendarId, long time, long& day,
                             std::string& errorString, void* context) = 0;
  virtual int getLastWeekDayOfMonth(unsigned long calendarId, long time, int weekDay, long& day,
                                    std::string& errorString, void* context) = 0;
  virtual int getLastWeekend(unsigned long calendarId, long time, long& day,
                             std::string& errorString, void* context) = 0;
  virtual int getNthWeekDay(unsigned long calendarId, long time, int n, int weekDay, long& day,
                            std::string& errorString, void* context) = 0;
  virtual int getNthWeekendDay(unsigned long calendarId, long time, int n, long& day,
                               std::string& errorString, void* context) = 0;
  virtual int getStartDayTime(unsigned long calendarId, long time, long& dayTime,
                              std::string& errorString, void* context) = 0;
  virtual int getCustomCalList(IdList& ids, NameList& names, std::string& errorString,
                               void* context) = 0;
  virtual int setCustomCalList(const IdList& ids, const NameList& names, std::string& errorString,
                               void* context) = 0;
  virtual int removeCustomCalList(const IdList& ids, std::string& errorString, void* context) = 0;
  virtual int getCustomCalMonthList(unsigned long calendarId, IdList& months,
                                    std::string& errorString, void* context) = 0;
  virtual int setCustomCalMonthList(unsigned long calendarId, const IdList& months,
                                    std::string& errorString, void* context) = 0;
  virtual int removeCustomCalMonthList(unsigned long calendarId, const IdList& months,
                                       std::string& errorString, void* context) = 0;
  virtual int getBackupSetContent(unsigned long backupSetId, NameList& content,
                                  std::string& errorString, void* context) = 0;
  virtual int moveInstance(unsigned long instanceId, unsigned long clientId,
                           std::string& errorString, void* context) = 0;
  virtual int getSubclientDeletedTime(unsigned long subclientId, long& time,
                                      std::string& errorString, void* context) = 0;
  virtual int setCloudClientList(unsigned long cloudId, const IdList& clientIds,
                                 std::string& errorString, void* context) = 0;
  virtual int addCloudClient(unsigned long cloudId, unsigned long clientId,
                             std::string& errorString, void* context) = 0;
  virtual int delCloudClient(unsigned long cloudId, unsigned long clientId,
                             std::string& errorString, void* context) = 0;
  virtual int deleteCloud(unsigned long cloudId, std::string& errorString, void* context) = 0;
  virtual int delComponentProp(unsigned long componentId, const std::string& name,
                               std::string& errorString, void* context) = 0;
  virtual int getExchMailBoxHistory(unsigned long subclientId, const std::string& mailbox,
                                    NameList& history, std::string& errorString, void* context) = 0;
  virtual int getAllClientNetHostName(IdList& ids, NameList& hostNames, std::string& errorString,
                                      void* context) = 0;
  virtual int lookupkeys(unsigned long id, NameList& keys, std::string& errorString,
                         void* context) = 0;
  virtual int updatekeys(unsigned long id, const NameList& keys, std::string& errorString,
                         void* context) = 0;

  // ---- Not provided, silent: errorString is left as it was ----

  virtual int getEntitiesList(unsigned long entityType, IdList& ids, NameList& names,
                              std::string& errorString, void* context) = 0;
  virtual int getEntityMembersList(unsigned long entityId, IdList& members,
                                   std::string& errorString, void* context) = 0;
  virtual int setEntityMembersList(unsigned long entityId, const IdList& members,
                                   std::string& errorString, void* context) = 0;
  virtual int removeEntityMembersList(unsigned long entityId, const IdList& members,
                                      std::string& errorString, void* context) = 0;
  virtual int getAssociatedEntityInfo(unsigned long entityType, unsigned long entityId, IdList& ids,
                                      NameList& names, std::string& errorString, void* context) = 0;
  virtual int getCostCategories(IdList& ids, NameList& names, std::string& errorString,
                                void* context) = 0;
  virtual int setWorkFlowOperation(unsigned long workflowId, const std::string& operation,
                                   std::string& errorString, void* context) = 0;
  virtual int LookupFirewallRelationships(unsigned long clientId, IdList& clientIds, IdList& kinds,
                                          std::string& errorString, void* context) = 0;
  virtual int deletePlatformInfo(unsigned long clientId, std::string& errorString,
                                 void* context) = 0;
  virtual int getPlatformInfo(unsigned long clientId, std::string& info, std::string& errorString,
                              void* context) = 0;
  virtual int setPlatformInfo(unsigned long clientId, const std::string& info,
                              std::string& errorString, void* context) = 0;
  virtual int getCIEntityTagListBlob(unsigned long entityType, unsigned long entityId,
                                     std::string& blob, std::string& errorString,
                                     void* context) = 0;
  virtual int configRepsetForDDRSnapSubclient(unsigned long subclientId, unsigned long repsetId,
                                              std::string& errorString, void* context) = 0;
  // The overload of two strings: the rules, then the error string.
  virtual int getJobErrorRules(std::string& rules, std::string& errorString) = 0;
  virtual int setJobErrorRules(const std::string& rules, std::string& errorString,
                               void* context) = 0;
  virtual int configureContentAnalyzerCloud(unsigned long cloudId, const std::string& settings,
                                            std::string& errorString, void* context) = 0;
  virtual int deleteAssocIdForEntity(unsigned long entityType, unsigned long entityId,
                                     std::string& errorString, void* context) = 0;
  virtual int getCredentialIdFromAssocIdForEntity(unsigned long entityType, unsigned long entityId,
                                                  unsigned long& credentialId,
                                                  std::string& errorString, void* context) = 0;
  virtual int setAssocIdforEntity(unsigned long entityType, unsigned long entityId,
                                  unsigned long credentialId, std::string& errorString,
                                  void* context) = 0;
  virtual int getRightsOnCredentialsForUser(unsigned long userId, unsigned long credentialId,
                                            unsigned long& rights, std::string& errorString,
                                            void* context) = 0;
  virtual int getCredentialNameForId(unsigned long credentialId, std::string& name,
                                     std::string& errorString, void* context) = 0;

  // ---- No-ops: 0, nothing sent, nothing written ----

  virtual int setOpRules(unsigned long entityId, const NameList& rules, std::string& errorString,
                         void* context) = 0;
  virtual int setOpRule(unsigned long entityId, const std::string& rule, std::string& errorString,
                        void* context) = 0;
  virtual int setOpRule(unsigned long entityId, unsigned long ruleId, bool enable,
                        std::string& errorString, void* context) = 0;
  virtual int deleteOpRules(unsigned long entityId, std::string& errorString, void* context) = 0;
  virtual int GetUTCToClientLocalTime(unsigned long clientId, long utcTime, long& localTime,
                                      std::string& errorString, void* context) = 0;
  // Leaves `ids` as it was.
  virtual int getInstanceList(IdList& ids, unsigned long a, unsigned long b,
                              std::string& errorString, void* context) = 0;

  // ---- Alerts ----

  // Sends the alert as one binary record (appmgr/records/AlertRecords.h). The record points
  // into the alert's strings: the alert must not change during the call.
  virtual int SendAlert(EvAlertEx& alert, std::string& errorString) = 0;

  // ---- XML messages ----

  // `xml` holds the request on entry and the answer on success. The status is the exchange's
  // alone: the server's outcome travels inside the answer. Types the central App Manager alone
  // serves bypass a configured lite App Manager.
  virtual int handleXMLReq(unsigned long route, unsigned long xmlType, std::string& xml,
                           std::string& errorString, std::string extra, unsigned long value) = 0;
  // Sends `request` on the session itself and waits (300 s each way) for the answer. On success
  // `response` is a message the caller owns and deletes.
  virtual int processXMLRequest(CNMessageBase& request, CNMessageBase*& response,
                                std::string& errorString, void* context) = 0;
  // The status of the exchange and of the answer's header; the answer's XML is not read.
  virtual int SendAlert(KPGui::AlertEvAlertExList& alerts, std::string& errorString) = 0;
  // The advisory requests answer the status of the server's generic response, with its text in
  // errorString; getSRMAdvisoryTypes fills `response` when the server answers with the list.
  virtual int syncSRMClientAdvisories(KPGui::SyncSRMClientAdvisories& request,
                                      std::string& errorString) = 0;
  virtual int syncSRMSourceAdvisories(KPGui::SyncSRMSourceAdvisories& request,
                                      std::string& errorString) = 0;
  virtual int controlAdvisories(KPGui::ControlSRMAdvisories& request, std::string& errorString) = 0;
  virtual int getSRMAdvisoryTypes(KPGui::AlertSRMAdvisoryTypeListReq& request,
                                  KPGui::AlertSRMAdvisoryTypeListResp& response,
                                  std::string& errorString) = 0;
  // Carried by handleXMLReq (route 1, type 0x1e392f0b). A code of the XML reader when the answer
  // is not the settings; a server's refusal puts its text in errorString.
  virtual long GetHTTPProxySettings(App::GetHTTPProxySettingsReq& request,
                                    App::HTTPProxySettings& settings, std::string& errorString) = 0;

  // ---- Client file content (no error string: the status alone; the response header is not
  // read, so a server's refusal is not seen here) ----

  // Puts the local file `localPath` into Temp/ of the Controlhost's install folder through the
  // file-transfer facility, then registers the path it has there, with `text`, for `clientId`.
  // 0 on success, 1 on any failure (the reason is in the log).
  virtual int setClientFileContent(unsigned long clientId, const std::string& localPath,
                                   const std::string& text, void* context) = 0;
  // One request carrying the three values; the send or receive status.
  virtual int getClientFileContent(unsigned long clientId, const std::string& text1,
                                   const std::string& text2, void* context) = 0;
  // One request carrying the six values in order; the send or receive status.
  virtual int pushVSData(unsigned long a, unsigned long b, unsigned long c, unsigned long d,
                         const std::string& text, int value, void* context) = 0;
};
