// The operations AdaptersInterfaceNet answers without a message, in the three groups callers
// depend on: "not provided" sets the error string, "not provided, silent" writes nothing at all,
// and the no-ops succeed without doing anything.
#include "adapters/AdaptersInterfaceNet.h"
#include "interfaces/Exchange.h"

using appmgr::iface::kNotImplemented;
using appmgr::iface::NotImplemented;

// ---- Not provided: 0xa0010 and "Api not implemented." ----

int AdaptersInterfaceNet::getBackupSetList(IdList&, NameList&, std::list<int>&,
                                           std::string& errorString, unsigned long, unsigned long,
                                           unsigned long, void*, int) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::GetAppTypeNameIdPair(IdList&, NameList&, std::string& errorString,
                                               void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getAssociatedSubclient(unsigned long, unsigned long&,
                                                 std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getSnapshotWorkflowList(IdList&, NameList&, std::string& errorString,
                                                  void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::controlALertsSystem(bool, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getEncryptedClientCount(unsigned long&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getMultipleStreamSublientCount(unsigned long&, std::string& errorString,
                                                         void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getDefaultSubclient(unsigned long, unsigned long, unsigned long,
                                              unsigned long&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getPhysicalClientIdfromRACClientId(unsigned long, unsigned long&,
                                                             std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getStartDay(unsigned long, long, long&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getEndDay(unsigned long, long, long&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getDay(unsigned long, long, long&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getLastWeekDay(unsigned long, long, long&, std::string& errorString,
                                         void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getLastWeekDayOfMonth(unsigned long, long, int, long&,
                                                std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getLastWeekend(unsigned long, long, long&, std::string& errorString,
                                         void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getNthWeekDay(unsigned long, long, int, int, long&,
                                        std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getNthWeekendDay(unsigned long, long, int, long&,
                                           std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getStartDayTime(unsigned long, long, long&, std::string& errorString,
                                          void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getCustomCalList(IdList&, NameList&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::setCustomCalList(const IdList&, const NameList&, std::string& errorString,
                                           void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::removeCustomCalList(const IdList&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getCustomCalMonthList(unsigned long, IdList&, std::string& errorString,
                                                void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::setCustomCalMonthList(unsigned long, const IdList&,
                                                std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::removeCustomCalMonthList(unsigned long, const IdList&,
                                                   std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getBackupSetContent(unsigned long, NameList&, std::string& errorString,
                                              void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::moveInstance(unsigned long, unsigned long, std::string& errorString,
                                       void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getSubclientDeletedTime(unsigned long, long&, std::string& errorString,
                                                  void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::setCloudClientList(unsigned long, const IdList&, std::string& errorString,
                                             void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::addCloudClient(unsigned long, unsigned long, std::string& errorString,
                                         void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::delCloudClient(unsigned long, unsigned long, std::string& errorString,
                                         void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::deleteCloud(unsigned long, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::delComponentProp(unsigned long, const std::string&,
                                           std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getExchMailBoxHistory(unsigned long, const std::string&, NameList&,
                                                std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::getAllClientNetHostName(IdList&, NameList&, std::string& errorString,
                                                  void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::lookupkeys(unsigned long, NameList&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int AdaptersInterfaceNet::updatekeys(unsigned long, const NameList&, std::string& errorString,
                                     void*) {
  return NotImplemented(errorString);
}

// ---- Not provided, silent: 0xa0010, the error string left as it was ----

int AdaptersInterfaceNet::getEntitiesList(unsigned long, IdList&, NameList&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getEntityMembersList(unsigned long, IdList&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::setEntityMembersList(unsigned long, const IdList&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::removeEntityMembersList(unsigned long, const IdList&, std::string&,
                                                  void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getAssociatedEntityInfo(unsigned long, unsigned long, IdList&, NameList&,
                                                  std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getCostCategories(IdList&, NameList&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::setWorkFlowOperation(unsigned long, const std::string&, std::string&,
                                               void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::LookupFirewallRelationships(unsigned long, IdList&, IdList&, std::string&,
                                                      void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::deletePlatformInfo(unsigned long, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getPlatformInfo(unsigned long, std::string&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::setPlatformInfo(unsigned long, const std::string&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getCIEntityTagListBlob(unsigned long, unsigned long, std::string&,
                                                 std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::configRepsetForDDRSnapSubclient(unsigned long, unsigned long,
                                                          std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getJobErrorRules(std::string&, std::string&) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::setJobErrorRules(const std::string&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::configureContentAnalyzerCloud(unsigned long, const std::string&,
                                                        std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::deleteAssocIdForEntity(unsigned long, unsigned long, std::string&,
                                                 void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getCredentialIdFromAssocIdForEntity(unsigned long, unsigned long,
                                                              unsigned long&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::setAssocIdforEntity(unsigned long, unsigned long, unsigned long,
                                              std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getRightsOnCredentialsForUser(unsigned long, unsigned long,
                                                        unsigned long&, std::string&, void*) {
  return kNotImplemented;
}
int AdaptersInterfaceNet::getCredentialNameForId(unsigned long, std::string&, std::string&, void*) {
  return kNotImplemented;
}

// ---- No-ops: success, and nothing happens ----

int AdaptersInterfaceNet::setOpRules(unsigned long, const NameList&, std::string&, void*) {
  return 0;
}
int AdaptersInterfaceNet::setOpRule(unsigned long, const std::string&, std::string&, void*) {
  return 0;
}
int AdaptersInterfaceNet::setOpRule(unsigned long, unsigned long, bool, std::string&, void*) {
  return 0;
}
int AdaptersInterfaceNet::deleteOpRules(unsigned long, std::string&, void*) {
  return 0;
}
int AdaptersInterfaceNet::GetUTCToClientLocalTime(unsigned long, long, long&, std::string&, void*) {
  return 0;
}
int AdaptersInterfaceNet::getInstanceList(IdList&, unsigned long, unsigned long, std::string&,
                                          void*) {
  return 0;
}
