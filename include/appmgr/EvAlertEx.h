// EvAlertEx: an alert raised by a component (a job failed, media is needed, space is low, a
// client could not be updated, ...), as a caller hands it to AdaptersInterface::SendAlert.
//
// A plain value: every attribute has a getter, named as callers know them (a few spellings such
// as getKBDoanloaded and getMediaLable are part of those names), and a setter named set<Name>
// after the getter's name without its "get"/"Is" (setAlertType, setConditionCleared, ...).
// Everything starts at 0, false or empty. What the numbers mean (alert types, criteria,
// conditions) is the App Manager's business.
//
// SendAlert sends pointers into the alert's own strings, so an alert must not change while it is
// being sent. Distinct alerts may be used from distinct threads.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// One event message of an alert: four 64-bit values and a text, kept in this order.
struct EvAlertEventMsg {
  uint64_t value1 = 0;
  uint64_t value2 = 0;
  uint64_t value3 = 0;
  uint64_t value4 = 0;
  std::string text;
};

// The attributes, as X(getter, setter, member) per type.
#define EV_ALERT_INT32_ATTRIBUTES(X)                                                  \
  X(getAlertType, setAlertType, alertType_)                                           \
  X(getAlertCriteria, setAlertCriteria, alertCriteria_)                               \
  X(getAlertStatus, setAlertStatus, alertStatus_)                                     \
  X(getSparePoolId, setSparePoolId, sparePoolId_)                                     \
  X(getDriveId, setDriveId, driveId_)                                                 \
  X(getMountPathId, setMountPathId, mountPathId_)                                     \
  X(getTaskId, setTaskId, taskId_)                                                    \
  X(getSchedPolicyId, setSchedPolicyId, schedPolicyId_)                               \
  X(getNumberOfAvailFiles, setNumberOfAvailFiles, numberOfAvailFiles_)                \
  X(getNumberOfDownloadedFiles, setNumberOfDownloadedFiles, numberOfDownloadedFiles_) \
  X(getKBDoanloaded, setKBDoanloaded, kbDownloaded_)                                  \
  X(getElapsedTime, setElapsedTime, elapsedTime_)                                     \
  X(getPhaseFailuresCount, setPhaseFailuresCount, phaseFailuresCount_)                \
  X(getNetworkFailuresCount, setNetworkFailuresCount, networkFailuresCount_)          \
  X(getFileSize, setFileSize, fileSize_)                                              \
  X(getVtPolicyId, setVtPolicyId, vtPolicyId_)                                        \
  X(getMbTransferred, setMbTransferred, mbTransferred_)                               \
  X(getPercentageChange, setPercentageChange, percentageChange_)                      \
  X(getPruneJobCount, setPruneJobCount, pruneJobCount_)

#define EV_ALERT_INT64_ATTRIBUTES(X)                       \
  X(getLibraryId, setLibraryId, libraryId_)                \
  X(getMediaId, setMediaId, mediaId_)                      \
  X(getStorenodeId, setStorenodeId, storenodeId_)          \
  X(getOrbitId, setOrbitId, orbitId_)                      \
  X(getClientId, setClientId, clientId_)                   \
  X(getSubClientId, setSubClientId, subClientId_)          \
  X(getBackupsetId, setBackupsetId, backupsetId_)          \
  X(getappTypeId, setappTypeId, appTypeId_)                \
  X(getInstanceId, setInstanceId, instanceId_)             \
  X(getStorPolicyId, setStorPolicyId, storPolicyId_)       \
  X(getAlert, setAlert, alert_)                            \
  X(getCondition, setCondition, condition_)                \
  X(getJobId, setJobId, jobId_)                            \
  X(getStartTime, setStartTime, startTime_)                \
  X(getEndTime, setEndTime, endTime_)                      \
  X(getScheduledTime, setScheduledTime, scheduledTime_)    \
  X(getFreeSpace, setFreeSpace, freeSpace_)                \
  X(getFreeDBSpace, setFreeDBSpace, freeDBSpace_)          \
  X(getOtherLibId, setOtherLibId, otherLibId_)             \
  X(getMediaSpaceLeft, setMediaSpaceLeft, mediaSpaceLeft_) \
  X(getThreshold, setThreshold, threshold_)                \
  X(getCopyId, setCopyId, copyId_)                         \
  X(getProtectedCount, setProtectedCount, protectedCount_) \
  X(getRecoveredCount, setRecoveredCount, recoveredCount_) \
  X(getFailedCount, setFailedCount, failedCount_)          \
  X(getSkippedCount, setSkippedCount, skippedCount_)       \
  X(getBackupLevel, setBackupLevel, backupLevel_)          \
  X(getWhomId, setWhomId, whomId_)                         \
  X(getMessageCount, setMessageCount, messageCount_)       \
  X(getLastActivity, setLastActivity, lastActivity_)       \
  X(getPrevJobId, setPrevJobId, prevJobId_)                \
  X(getPrevBkpSize, setPrevBkpSize, prevBkpSize_)

#define EV_ALERT_BOOL_ATTRIBUTES(X)                             \
  X(IsConditionCleared, setConditionCleared, conditionCleared_) \
  X(IsMediaRequired, setMediaRequired, mediaRequired_)          \
  X(getMoreMediaToCome, setMoreMediaToCome, moreMediaToCome_)   \
  X(getRdJob, setRdJob, rdJob_)

#define EV_ALERT_STRING_ATTRIBUTES(X)                                              \
  X(getOrbitName, setOrbitName, orbitName_)                                        \
  X(getClientName, setClientName, clientName_)                                     \
  X(getSubClientName, setSubClientName, subClientName_)                            \
  X(getBackupsetName, setBackupsetName, backupsetName_)                            \
  X(getAppTypeName, setAppTypeName, appTypeName_)                                  \
  X(getInstanceName, setInstanceName, instanceName_)                               \
  X(getStorenodeName, setStorenodeName, storenodeName_)                            \
  X(getLibraryName, setLibraryName, libraryName_)                                  \
  X(getStorPolicyName, setStorPolicyName, storPolicyName_)                         \
  X(getFailureReason, setFailureReason, failureReason_)                            \
  X(getMediaLable, setMediaLable, mediaLabel_)                                     \
  X(getLibName, setLibName, libName_)                                              \
  X(getContainerName, setContainerName, containerName_)                            \
  X(getExportLocName, setExportLocName, exportLocName_)                            \
  X(getComment, setComment, comment_)                                              \
  X(getHolidayChanges, setHolidayChanges, holidayChanges_)                         \
  X(getScheduleName, setScheduleName, scheduleName_)                               \
  X(getDriveName, setDriveName, driveName_)                                        \
  X(getDrivePoolName, setDrivePoolName, drivePoolName_)                            \
  X(getSparePoolMountPathName, setSparePoolMountPathName, sparePoolMountPathName_) \
  X(getDescription, setDescription, description_)                                  \
  X(getVtInitiator, setVtInitiator, vtInitiator_)                                  \
  X(getVtSourceLoc, setVtSourceLoc, vtSourceLoc_)                                  \
  X(getVtTransitLoc, setVtTransitLoc, vtTransitLoc_)                               \
  X(getVtDestLoc, setVtDestLoc, vtDestLoc_)                                        \
  X(getVtBarCodeCurrLoc, setVtBarCodeCurrLoc, vtBarCodeCurrLoc_)                   \
  X(getThresholdCommen, setThresholdCommen, thresholdComment_)                     \
  X(getAttachmentName, setAttachmentName, attachmentName_)                         \
  X(getMailBoxName, setMailBoxName, mailBoxName_)                                  \
  X(getFolderName, setFolderName, folderName_)                                     \
  X(getOrbitRelease, setOrbitRelease, orbitRelease_)                               \
  X(getSVUName, setSVUName, svuName_)                                              \
  X(getWorkFlowName, setWorkFlowName, workFlowName_)

#define EV_ALERT_STRING_LIST_ATTRIBUTES(X)                              \
  X(getVtStoragePolicyList, setVtStoragePolicyList, vtStoragePolicies_) \
  X(getClientList, setClientList, clients_)                             \
  X(getMediaList, setMediaList, media_)                                 \
  X(getSuccClntList, setSuccClntList, succeededClients_)                \
  X(getFailClntList, setFailClntList, failedClients_)                   \
  X(getNotNeededClntList, setNotNeededClntList, notNeededClients_)      \
  X(getUnKnownClientList, setUnKnownClientList, unknownClients_)        \
  X(getUpdatesList, setUpdatesList, updates_)                           \
  X(getFoldersList, setFoldersList, folders_)                           \
  X(getBarCodeList, setBarCodeList, barCodes_)

#define EV_ALERT_INT_LIST_ATTRIBUTES(X)                            \
  X(getMediaIdsList, setMediaIdsList, mediaIds_)                   \
  X(getFailureReasons, setFailureReasons, failureReasons_)         \
  X(getClientIdsList, setClientIdsList, clientIds_)                \
  X(getFreeSpaceList, setFreeSpaceList, freeSpaces_)               \
  X(getThresholdsList, setThresholdsList, thresholds_)             \
  X(getSucceededMedialist, setSucceededMedialist, succeededMedia_) \
  X(getFailedMedialist, setFailedMedialist, failedMedia_)

class EvAlertEx {
 public:
#define EV_ALERT_ACCESSORS(getter, setter, member, Type, Param) \
  Type getter() const {                                         \
    return member;                                              \
  }                                                             \
  void setter(Param value) {                                    \
    member = value;                                             \
  }
#define EV_ALERT_INT32(getter, setter, member) EV_ALERT_ACCESSORS(getter, setter, member, int, int)
#define EV_ALERT_INT64(getter, setter, member) \
  EV_ALERT_ACCESSORS(getter, setter, member, long, long)
#define EV_ALERT_BOOL(getter, setter, member) EV_ALERT_ACCESSORS(getter, setter, member, bool, bool)
#define EV_ALERT_STRING(getter, setter, member) \
  EV_ALERT_ACCESSORS(getter, setter, member, const std::string&, const std::string&)
#define EV_ALERT_STRING_LIST(getter, setter, member)                          \
  EV_ALERT_ACCESSORS(getter, setter, member, const std::vector<std::string>&, \
                     const std::vector<std::string>&)
#define EV_ALERT_INT_LIST(getter, setter, member) \
  EV_ALERT_ACCESSORS(getter, setter, member, const std::vector<int>&, const std::vector<int>&)

  EV_ALERT_INT32_ATTRIBUTES(EV_ALERT_INT32)
  EV_ALERT_INT64_ATTRIBUTES(EV_ALERT_INT64)
  EV_ALERT_BOOL_ATTRIBUTES(EV_ALERT_BOOL)
  EV_ALERT_STRING_ATTRIBUTES(EV_ALERT_STRING)
  EV_ALERT_STRING_LIST_ATTRIBUTES(EV_ALERT_STRING_LIST)
  EV_ALERT_INT_LIST_ATTRIBUTES(EV_ALERT_INT_LIST)

  const std::vector<EvAlertEventMsg>& getEventMsgList() const {
    return eventMsgs_;
  }
  void setEventMsgList(const std::vector<EvAlertEventMsg>& list) {
    eventMsgs_ = list;
  }
  void addEventMsg(const EvAlertEventMsg& msg) {
    eventMsgs_.push_back(msg);
  }

#undef EV_ALERT_INT_LIST
#undef EV_ALERT_STRING_LIST
#undef EV_ALERT_STRING
#undef EV_ALERT_BOOL
#undef EV_ALERT_INT64
#undef EV_ALERT_INT32
#undef EV_ALERT_ACCESSORS

 private:
#define EV_ALERT_MEMBER(getter, setter, member, Type) Type member{};
#define EV_ALERT_INT32_MEMBER(g, s, m) EV_ALERT_MEMBER(g, s, m, int)
#define EV_ALERT_INT64_MEMBER(g, s, m) EV_ALERT_MEMBER(g, s, m, long)
#define EV_ALERT_BOOL_MEMBER(g, s, m) EV_ALERT_MEMBER(g, s, m, bool)
#define EV_ALERT_STRING_MEMBER(g, s, m) EV_ALERT_MEMBER(g, s, m, std::string)
#define EV_ALERT_STRING_LIST_MEMBER(g, s, m) EV_ALERT_MEMBER(g, s, m, std::vector<std::string>)
#define EV_ALERT_INT_LIST_MEMBER(g, s, m) EV_ALERT_MEMBER(g, s, m, std::vector<int>)

  EV_ALERT_INT32_ATTRIBUTES(EV_ALERT_INT32_MEMBER)
  EV_ALERT_INT64_ATTRIBUTES(EV_ALERT_INT64_MEMBER)
  EV_ALERT_BOOL_ATTRIBUTES(EV_ALERT_BOOL_MEMBER)
  EV_ALERT_STRING_ATTRIBUTES(EV_ALERT_STRING_MEMBER)
  EV_ALERT_STRING_LIST_ATTRIBUTES(EV_ALERT_STRING_LIST_MEMBER)
  EV_ALERT_INT_LIST_ATTRIBUTES(EV_ALERT_INT_LIST_MEMBER)
  std::vector<EvAlertEventMsg> eventMsgs_;

#undef EV_ALERT_INT_LIST_MEMBER
#undef EV_ALERT_STRING_LIST_MEMBER
#undef EV_ALERT_STRING_MEMBER
#undef EV_ALERT_BOOL_MEMBER
#undef EV_ALERT_INT64_MEMBER
#undef EV_ALERT_INT32_MEMBER
#undef EV_ALERT_MEMBER
};
