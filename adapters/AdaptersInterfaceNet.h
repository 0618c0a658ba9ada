// AdaptersInterfaceNet: the adapters interface over the App Manager protocol. Holds no state.
//
// The members are defined one family per source, so that each family's work touches only its
// own file: AdaptersLists.cc (the list queries), AdaptersLocal.cc (the operations answered
// without a message), AdaptersAlerts.cc, AdaptersXml.cc and AdaptersFileTransfer.cc.
#pragma once

#include "appmgr/AdaptersInterface.h"

class AdaptersInterfaceNet : public AdaptersInterface {
 public:
  // ---- Lists ----

  int getProvidersList(IdList& ids, NameList& names, NameList& texts, FlagList& flags,
                       IdList& values, std::string& errorString, unsigned long selector,
                       void* context) override;
  int getAppIdList(NameList& appIds, std::string& errorString, unsigned long a, unsigned long b,
                   unsigned long c, unsigned long d, unsigned long e, void* context,
                   bool flag) override;
  int getOrbitList(IdList& ids, NameList& names, std::string& errorString, unsigned long selector,
                   void* context, bool flag) override;
  int getClientList(IdList& ids, NameList& names, std::string& errorString, unsigned long selector,
                    void* context, int flag) override;
  int getClientListOfType(IdList& ids, NameList& names, std::string& errorString, unsigned long a,
                          unsigned long b, void* context, bool flag) override;
  int getApplicationTypes(IdList& ids, NameList& names, std::string& errorString,
                          unsigned long selector, void* context, int flag) override;
  int getInstanceList(IdList& ids, NameList& names, std::string& errorString, unsigned long a,
                      unsigned long b, unsigned long c, void* context, int flag) override;
  int getInstanceList(IdList& ids, NameList& names, std::string& errorString, unsigned long a,
                      unsigned long b, void* context, int flag) override;
  int getInstanceList(unsigned long a, unsigned long b, IdList& ids, NameList& names,
                      std::string& errorString, void* context, int flag) override;
  int getBackupSetList(IdList& ids, NameList& names, FlagList& flags, std::string& errorString,
                       unsigned long a, unsigned long b, unsigned long c, void* context,
                       int flag) override;
  int getSubclientList(IdList& ids, NameList& names, FlagList& flags, std::string& errorString,
                       unsigned long a, unsigned long b, void* context, int flag) override;
  int getSubclientList(IdList& ids, NameList& names, std::string& errorString, unsigned long a,
                       unsigned long b, unsigned long c, unsigned long d, void* context,
                       int flag) override;
  int getSiblingSubclientList(unsigned long subclientId, IdList& ids, NameList& names,
                              unsigned long& value1, unsigned long& value2, unsigned long& value3,
                              unsigned long& value4, unsigned long& value5,
                              std::string& errorString, void* context, bool flag) override;
  int getClientListByAppType(IdList& ids, NameList& names, std::string& errorString,
                             unsigned long a, unsigned long b, void* context) override;
  int getClientListByAppGroup(IdList& ids, NameList& names, std::string& errorString,
                              unsigned long a, unsigned long b, void* context) override;
  int getApplications(NameList& appIds, unsigned long a, unsigned long b, bool& reserved,
                      std::string& errorString, void* context) override;
  int getClientList(IdList& ids, NameList& names, std::string& errorString, unsigned long a,
                    unsigned long b, void* context, int flag) override;
  int getClientGroupList(IdList& ids, NameList& names, std::string& errorString,
                         unsigned long selector, void* context, int flag) override;
  int getClientGroupList(IdList& ids, NameList& names, std::string& errorString, unsigned long a,
                         unsigned long b, void* context, int flag) override;
  int getClientList(IdList& ids, NameList& names, IdList& values, std::string& errorString,
                    void* context, bool flag) override;
  int getExDMClientDomainList(const std::string& domain, IdList& l1, IdList& l2, IdList& l3,
                              IdList& l4, NameList& s1, NameList& s2, std::string& errorString,
                              void* context, bool flag) override;
  int getCloudList(IdList& ids, NameList& names, unsigned long selector, std::string& errorString,
                   void* context) override;
  int getCloudClientList(IdList& ids1, IdList& ids2, unsigned long cloudId,
                         std::string& errorString, void* context) override;

  // ---- Not provided ----

  int getBackupSetList(IdList& ids, NameList& names, std::list<int>& flags,
                       std::string& errorString, unsigned long a, unsigned long b, unsigned long c,
                       void* context, int flag) override;
  int GetAppTypeNameIdPair(IdList& ids, NameList& names, std::string& errorString,
                           void* context) override;
  int getAssociatedSubclient(unsigned long id, unsigned long& subclientId, std::string& errorString,
                             void* context) override;
  int getSnapshotWorkflowList(IdList& ids, NameList& names, std::string& errorString,
                              void* context) override;
  int controlALertsSystem(bool enable, std::string& errorString, void* context) override;
  int getEncryptedClientCount(unsigned long& count, std::string& errorString,
                              void* context) override;
  int getMultipleStreamSublientCount(unsigned long& count, std::string& errorString,
                                     void* context) override;
  int getDefaultSubclient(unsigned long clientId, unsigned long appTypeId, unsigned long instanceId,
                          unsigned long& subclientId, std::string& errorString,
                          void* context) override;
  int getPhysicalClientIdfromRACClientId(unsigned long racClientId, unsigned long& physicalClientId,
                                         std::string& errorString, void* context) override;
  int getStartDay(unsigned long calendarId, long time, long& day, std::string& errorString,
                  void* context) override;
  int getEndDay(unsigned long calendarId, long time, long& day, std::string& errorString,
                void* context) override;
  int getDay(unsigned long calendarId, long time, long& day, std::string& errorString,
             void* context) override;
  int getLastWeekDay(unsigned long calendarId, long time, long& day, std::string& errorString,
                     void* context) override;
  int getLastWeekDayOfMonth(unsigned long calendarId, long time, int weekDay, long& day,
                            std::string& errorString, void* context) override;
  int getLastWeekend(unsigned long calendarId, long time, long& day, std::string& errorString,
                     void* context) override;
  int getNthWeekDay(unsigned long calendarId, long time, int n, int weekDay, long& day,
                    std::string& errorString, void* context) override;
  int getNthWeekendDay(unsigned long calendarId, long time, int n, long& day,
                       std::string& errorString, void* context) override;
  int getStartDayTime(unsigned long calendarId, long time, long& dayTime, std::string& errorString,
                      void* context) override;
  int getCustomCalList(IdList& ids, NameList& names, std::string& errorString,
                       void* context) override;
  int setCustomCalList(const IdList& ids, const NameList& names, std::string& errorString,
                       void* context) override;
  int removeCustomCalList(const IdList& ids, std::string& errorString, void* context) override;
  int getCustomCalMonthList(unsigned long calendarId, IdList& months, std::string& errorString,
                            void* context) override;
  int setCustomCalMonthList(unsigned long calendarId, const IdList& months,
                            std::string& errorString, void* context) override;
  int removeCustomCalMonthList(unsigned long calendarId, const IdList& months,
                               std::string& errorString, void* context) override;
  int getBackupSetContent(unsigned long backupSetId, NameList& content, std::string& errorString,
                          void* context) override;
  int moveInstance(unsigned long instanceId, unsigned long clientId, std::string& errorString,
                   void* context) override;
  int getSubclientDeletedTime(unsigned long subclientId, long& time, std::string& errorString,
                              void* context) override;
  int setCloudClientList(unsigned long cloudId, const IdList& clientIds, std::string& errorString,
                         void* context) override;
  int addCloudClient(unsigned long cloudId, unsigned long clientId, std::string& errorString,
                     void* context) override;
  int delCloudClient(unsigned long cloudId, unsigned long clientId, std::string& errorString,
                     void* context) override;
  int deleteCloud(unsigned long cloudId, std::string& errorString, void* context) override;
  int delComponentProp(unsigned long componentId, const std::string& name, std::string& errorString,
                       void* context) override;
  int getExchMailBoxHistory(unsigned long subclientId, const std::string& mailbox,
                            NameList& history, std::string& errorString, void* context) override;
  int getAllClientNetHostName(IdList& ids, NameList& hostNames, std::string& errorString,
                              void* context) override;
  int lookupkeys(unsigned long id, NameList& keys, std::string& errorString,
                 void* context) override;
  int updatekeys(unsigned long id, const NameList& keys, std::string& errorString,
                 void* context) override;

  // ---- Not provided, silent: errorString is left as it was ----

  int getEntitiesList(unsigned long entityType, IdList& ids, NameList& names,
                      std::string& errorString, void* context) override;
  int getEntityMembersList(unsigned long entityId, IdList& members, std::string& errorString,
                           void* context) override;
  int setEntityMembersList(unsigned long entityId, const IdList& members, std::string& errorString,
                           void* context) override;
  int removeEntityMembersList(unsigned long entityId, const IdList& members,
                              std::string& errorString, void* context) override;
  int getAssociatedEntityInfo(unsigned long entityType, unsigned long entityId, IdList& ids,
                              NameList& names, std::string& errorString, void* context) override;
  int getCostCategories(IdList& ids, NameList& names, std::string& errorString,
                        void* context) override;
  int setWorkFlowOperation(unsigned long workflowId, const std::string& operation,
                           std::string& errorString, void* context) override;
  int LookupFirewallRelationships(unsigned long clientId, IdList& clientIds, IdList& kinds,
                                  std::string& errorString, void* context) override;
  int deletePlatformInfo(unsigned long clientId, std::string& errorString, void* context) override;
  int getPlatformInfo(unsigned long clientId, std::string& info, std::string& errorString,
                      void* context) override;
  int setPlatformInfo(unsigned long clientId, const std::string& info, std::string& errorString,
                      void* context) override;
  int getCIEntityTagListBlob(unsigned long entityType, unsigned long entityId, std::string& blob,
                             std::string& errorString, void* context) override;
  int configRepsetForDDRSnapSubclient(unsigned long subclientId, unsigned long repsetId,
                                      std::string& errorString, void* context) override;
  int getJobErrorRules(std::string& rules, std::string& errorString) override;
  int setJobErrorRules(const std::string& rules, std::string& errorString, void* context) override;
  int configureContentAnalyzerCloud(unsigned long cloudId, const std::string& settings,
                                    std::string& errorString, void* context) override;
  int deleteAssocIdForEntity(unsigned long entityType, unsigned long entityId,
                             std::string& errorString, void* context) override;
  int getCredentialIdFromAssocIdForEntity(unsigned long entityType, unsigned long entityId,
                                          unsigned long& credentialId, std::string& errorString,
                                          void* context) override;
  int setAssocIdforEntity(unsigned long entityType, unsigned long entityId,
                          unsigned long credentialId, std::string& errorString,
                          void* context) override;
  int getRightsOnCredentialsForUser(unsigned long userId, unsigned long credentialId,
                                    unsigned long& rights, std::string& errorString,
                                    void* context) override;
  int getCredentialNameForId(unsigned long credentialId, std::string& name,
                             std::string& errorString, void* context) override;

  // ---- No-ops: 0, nothing sent, nothing written ----

  int setOpRules(unsigned long entityId, const NameList& rules, std::string& errorString,
                 void* context) override;
  int setOpRule(unsigned long entityId, const std::string& rule, std::string& errorString,
                void* context) override;
  int setOpRule(unsigned long entityId, unsigned long ruleId, bool enable, std::string& errorString,
                void* context) override;
  int deleteOpRules(unsigned long entityId, std::string& errorString, void* context) override;
  int GetUTCToClientLocalTime(unsigned long clientId, long utcTime, long& localTime,
                              std::string& errorString, void* context) override;
  int getInstanceList(IdList& ids, unsigned long a, unsigned long b, std::string& errorString,
                      void* context) override;

  // ---- Alerts ----

  int SendAlert(EvAlertEx& alert, std::string& errorString) override;

  // ---- XML messages ----

  int handleXMLReq(unsigned long route, unsigned long xmlType, std::string& xml,
                   std::string& errorString, std::string extra, unsigned long value) override;
  int processXMLRequest(CNMessageBase& request, CNMessageBase*& response, std::string& errorString,
                        void* context) override;
  int SendAlert(KPGui::AlertEvAlertExList& alerts, std::string& errorString) override;
  int syncSRMClientAdvisories(KPGui::SyncSRMClientAdvisories& request,
                              std::string& errorString) override;
  int syncSRMSourceAdvisories(KPGui::SyncSRMSourceAdvisories& request,
                              std::string& errorString) override;
  int controlAdvisories(KPGui::ControlSRMAdvisories& request, std::string& errorString) override;
  int getSRMAdvisoryTypes(KPGui::AlertSRMAdvisoryTypeListReq& request,
                          KPGui::AlertSRMAdvisoryTypeListResp& response,
                          std::string& errorString) override;
  long GetHTTPProxySettings(App::GetHTTPProxySettingsReq& request, App::HTTPProxySettings& settings,
                            std::string& errorString) override;

  // ---- Client file content (no error string: the status alone) ----

  int setClientFileContent(unsigned long clientId, const std::string& localPath,
                           const std::string& text, void* context) override;
  int getClientFileContent(unsigned long clientId, const std::string& text1,
                           const std::string& text2, void* context) override;
  int pushVSData(unsigned long a, unsigned long b, unsigned long c, unsigned long d,
                 const std::string& text, int value, void* context) override;
};
