// The binary alert record: an EvAlertEx flattened into one fixed request.
//
// SendAlertExReq3 is sent under 0x34000128 with its full length of 1024 bytes and answered by
// GenericResp. Its fields follow the alert's attributes in a fixed order (numbered 1 to 107
// below). Where a field is "sign-extended" the attribute is a 32-bit signed value widened to 64
// bits; where it is "low 32 bits" a 64-bit id is cut to its low 32 bits and then sign-extended,
// so an id of 2^31 or more arrives altered (the subclient, backup set and storage policy ids
// travel at full width). A list is an unsigned 32-bit count and a pointer to that many
// elements: AppStringList for texts, LongList for integers (each 32-bit value sign-extended),
// AppMgrAlertEventMsg for event messages. Texts point into the alert's own strings.
#pragma once

#include "appmgr/records/GenericRecords.h"

// One event message of an alert: its four values in order, then its text.
struct AppMgrAlertEventMsg {
  uint64_t value1 = 0;
  uint64_t value2 = 0;
  uint64_t value3 = 0;
  uint64_t value4 = 0;
  const char* text = nullptr;
};
static_assert(sizeof(AppMgrAlertEventMsg) == 40);
static_assert(offsetof(AppMgrAlertEventMsg, value4) == 24 &&
              offsetof(AppMgrAlertEventMsg, text) == 32);

struct SendAlertExReq3 {
  AppMgrReqHdr hdr;
  int64_t alertType = 0;                         // 1 getAlertType, sign-extended
  int64_t alertCriteria = 0;                     // 2 getAlertCriteria, sign-extended
  int64_t alertStatus = 0;                       // 3 getAlertStatus, sign-extended
  int64_t libraryId = 0;                         // 4 low 32 bits of getLibraryId, sign-extended
  int64_t sparePoolId = 0;                       // 5 getSparePoolId, sign-extended
  int64_t driveId = 0;                           // 6 getDriveId, sign-extended
  int64_t mediaId = 0;                           // 7 low 32 bits of getMediaId, sign-extended
  int64_t storenodeId = 0;                       // 8 low 32 bits of getStorenodeId, sign-extended
  int64_t mountPathId = 0;                       // 9 getMountPathId, sign-extended
  int64_t orbitId = 0;                           // 10 low 32 bits of getOrbitId, sign-extended
  int64_t clientId = 0;                          // 11 low 32 bits of getClientId, sign-extended
  uint64_t subclientId = 0;                      // 12 getSubClientId
  uint64_t backupsetId = 0;                      // 13 getBackupsetId
  int64_t appTypeId = 0;                         // 14 low 32 bits of getappTypeId, sign-extended
  int64_t instanceId = 0;                        // 15 low 32 bits of getInstanceId, sign-extended
  uint64_t storPolicyId = 0;                     // 16 getStorPolicyId
  uint64_t alert = 0;                            // 17 getAlert
  uint64_t condition = 0;                        // 18 getCondition
  uint64_t jobId = 0;                            // 19 getJobId
  uint32_t conditionCleared = 0;                 // 20 IsConditionCleared, 1 or 0
  uint32_t mediaRequired = 0;                    // 21 IsMediaRequired, 1 or 0
  int64_t startTime = 0;                         // 22 getStartTime
  int64_t endTime = 0;                           // 23 getEndTime
  int64_t scheduledTime = 0;                     // 24 getScheduledTime
  uint64_t freeSpace = 0;                        // 25 getFreeSpace
  uint64_t otherLibId = 0;                       // 26 getOtherLibId
  uint64_t mediaSpaceLeft = 0;                   // 27 getMediaSpaceLeft
  uint64_t threshold = 0;                        // 28 getThreshold
  uint64_t copyId = 0;                           // 29 getCopyId
  uint64_t protectedCount = 0;                   // 30 getProtectedCount
  uint64_t recoveredCount = 0;                   // 31 getRecoveredCount
  uint64_t failedCount = 0;                      // 32 getFailedCount
  uint64_t skippedCount = 0;                     // 33 getSkippedCount
  uint64_t backupLevel = 0;                      // 34 getBackupLevel
  const char* orbitName = nullptr;               // 35
  const char* clientName = nullptr;              // 36
  const char* subClientName = nullptr;           // 37
  const char* backupsetName = nullptr;           // 38
  const char* appTypeName = nullptr;             // 39
  const char* instanceName = nullptr;            // 40
  const char* storenodeName = nullptr;           // 41
  const char* libraryName = nullptr;             // 42
  const char* storPolicyName = nullptr;          // 43
  const char* failureReason = nullptr;           // 44
  const char* mediaLabel = nullptr;              // 45
  const char* libName = nullptr;                 // 46
  const char* containerName = nullptr;           // 47
  const char* exportLocName = nullptr;           // 48
  const char* comment = nullptr;                 // 49
  const char* holidayChanges = nullptr;          // 50
  const char* scheduleName = nullptr;            // 51
  const char* driveName = nullptr;               // 52
  const char* drivePoolName = nullptr;           // 53
  const char* sparePoolMountPathName = nullptr;  // 54
  const char* description = nullptr;             // 55
  const char* vtInitiator = nullptr;             // 56
  const char* vtSourceLoc = nullptr;             // 57
  const char* vtTransitLoc = nullptr;            // 58
  const char* vtDestLoc = nullptr;               // 59
  const char* vtBarCodeCurrLoc = nullptr;        // 60
  const char* thresholdComment = nullptr;        // 61
  const char* attachmentName = nullptr;          // 62
  uint64_t whomId = 0;                           // 63 getWhomId
  uint32_t vtStoragePoliciesCount = 0;
  AppStringList* vtStoragePolicies = nullptr;  // 64 texts
  uint32_t clientsCount = 0;
  AppStringList* clients = nullptr;  // 65 texts
  uint32_t mediaCount = 0;
  AppStringList* media = nullptr;  // 66 texts
  uint32_t succeededClientsCount = 0;
  AppStringList* succeededClients = nullptr;  // 67 texts
  uint32_t failedClientsCount = 0;
  AppStringList* failedClients = nullptr;  // 68 texts
  uint32_t notNeededClientsCount = 0;
  AppStringList* notNeededClients = nullptr;  // 69 texts
  uint32_t unknownClientsCount = 0;
  AppStringList* unknownClients = nullptr;  // 70 texts
  uint32_t mediaIdsCount = 0;
  LongList* mediaIds = nullptr;  // 71
  int64_t taskId = 0;            // 72 getTaskId, sign-extended
  int64_t schedPolicyId = 0;     // 73 getSchedPolicyId, sign-extended
  uint32_t reservedCount = 0;
  LongList* reserved = nullptr;  // 74 always empty
  uint32_t failureReasonsCount = 0;
  LongList* failureReasons = nullptr;   // 75
  uint64_t freeDBSpace = 0;             // 76
  const char* mailBoxName = nullptr;    // 77
  uint64_t messageCount = 0;            // 78
  const char* folderName = nullptr;     // 79
  int64_t numberOfAvailFiles = 0;       // 80 sign-extended
  int64_t numberOfDownloadedFiles = 0;  // 81 sign-extended
  int64_t kbDownloaded = 0;             // 82 sign-extended
  int64_t elapsedTime = 0;              // 83 sign-extended
  uint32_t clientIdsCount = 0;
  LongList* clientIds = nullptr;  // 84
  uint32_t updatesCount = 0;
  AppStringList* updates = nullptr;    // 85
  const char* orbitRelease = nullptr;  // 86
  uint32_t freeSpacesCount = 0;
  LongList* freeSpaces = nullptr;  // 87
  uint32_t thresholdsCount = 0;
  LongList* thresholds = nullptr;  // 88
  uint32_t foldersCount = 0;
  AppStringList* folders = nullptr;    // 89
  int64_t phaseFailuresCount = 0;      // 90 sign-extended
  int64_t networkFailuresCount = 0;    // 91 sign-extended
  int64_t fileSize = 0;                // 92 sign-extended
  uint64_t lastActivity = 0;           // 93
  uint32_t moreMediaToCome = 0;        // 94
  uint32_t rdJob = 0;                  // 95
  const char* svuName = nullptr;       // 96
  const char* workFlowName = nullptr;  // 97
  int64_t vtPolicyId = 0;              // 98
  uint32_t succeededMediaCount = 0;
  LongList* succeededMedia = nullptr;  // 99
  uint32_t failedMediaCount = 0;
  LongList* failedMedia = nullptr;  // 100
  uint32_t eventMsgsCount = 0;
  AppMgrAlertEventMsg* eventMsgs = nullptr;  // 101
  int64_t mbTransferred = 0;                 // 102
  uint64_t prevJobId = 0;                    // 103
  uint64_t prevBkpSize = 0;                  // 104
  int32_t percentageChange = 0;              // 105
  uint32_t barCodeAlign = 0;  // always 0: keeps the bar code list on an 8-byte boundary
  uint32_t barCodesCount = 0;
  AppStringList* barCodes = nullptr;  // 106 texts
  int32_t pruneJobCount = 0;          // 107
};
static_assert(sizeof(SendAlertExReq3) == 1024);
static_assert(offsetof(SendAlertExReq3, alertType) == 32 &&
              offsetof(SendAlertExReq3, alertCriteria) == 40 &&
              offsetof(SendAlertExReq3, alertStatus) == 48);
static_assert(offsetof(SendAlertExReq3, libraryId) == 56 &&
              offsetof(SendAlertExReq3, sparePoolId) == 64 &&
              offsetof(SendAlertExReq3, driveId) == 72);
static_assert(offsetof(SendAlertExReq3, mediaId) == 80 &&
              offsetof(SendAlertExReq3, storenodeId) == 88 &&
              offsetof(SendAlertExReq3, mountPathId) == 96);
static_assert(offsetof(SendAlertExReq3, orbitId) == 104 &&
              offsetof(SendAlertExReq3, clientId) == 112 &&
              offsetof(SendAlertExReq3, subclientId) == 120);
static_assert(offsetof(SendAlertExReq3, backupsetId) == 128 &&
              offsetof(SendAlertExReq3, appTypeId) == 136 &&
              offsetof(SendAlertExReq3, instanceId) == 144);
static_assert(offsetof(SendAlertExReq3, storPolicyId) == 152 &&
              offsetof(SendAlertExReq3, alert) == 160 &&
              offsetof(SendAlertExReq3, condition) == 168);
static_assert(offsetof(SendAlertExReq3, jobId) == 176 &&
              offsetof(SendAlertExReq3, conditionCleared) == 184 &&
              offsetof(SendAlertExReq3, mediaRequired) == 188);
static_assert(offsetof(SendAlertExReq3, startTime) == 192 &&
              offsetof(SendAlertExReq3, endTime) == 200 &&
              offsetof(SendAlertExReq3, scheduledTime) == 208);
static_assert(offsetof(SendAlertExReq3, freeSpace) == 216 &&
              offsetof(SendAlertExReq3, otherLibId) == 224 &&
              offsetof(SendAlertExReq3, mediaSpaceLeft) == 232);
static_assert(offsetof(SendAlertExReq3, threshold) == 240 &&
              offsetof(SendAlertExReq3, copyId) == 248 &&
              offsetof(SendAlertExReq3, protectedCount) == 256);
static_assert(offsetof(SendAlertExReq3, recoveredCount) == 264 &&
              offsetof(SendAlertExReq3, failedCount) == 272 &&
              offsetof(SendAlertExReq3, skippedCount) == 280);
static_assert(offsetof(SendAlertExReq3, backupLevel) == 288 &&
              offsetof(SendAlertExReq3, orbitName) == 296 &&
              offsetof(SendAlertExReq3, clientName) == 304);
static_assert(offsetof(SendAlertExReq3, subClientName) == 312 &&
              offsetof(SendAlertExReq3, backupsetName) == 320 &&
              offsetof(SendAlertExReq3, appTypeName) == 328);
static_assert(offsetof(SendAlertExReq3, instanceName) == 336 &&
              offsetof(SendAlertExReq3, storenodeName) == 344 &&
              offsetof(SendAlertExReq3, libraryName) == 352);
static_assert(offsetof(SendAlertExReq3, storPolicyName) == 360 &&
              offsetof(SendAlertExReq3, failureReason) == 368 &&
              offsetof(SendAlertExReq3, mediaLabel) == 376);
static_assert(offsetof(SendAlertExReq3, libName) == 384 &&
              offsetof(SendAlertExReq3, containerName) == 392 &&
              offsetof(SendAlertExReq3, exportLocName) == 400);
static_assert(offsetof(SendAlertExReq3, comment) == 408 &&
              offsetof(SendAlertExReq3, holidayChanges) == 416 &&
              offsetof(SendAlertExReq3, scheduleName) == 424);
static_assert(offsetof(SendAlertExReq3, driveName) == 432 &&
              offsetof(SendAlertExReq3, drivePoolName) == 440 &&
              offsetof(SendAlertExReq3, sparePoolMountPathName) == 448);
static_assert(offsetof(SendAlertExReq3, description) == 456 &&
              offsetof(SendAlertExReq3, vtInitiator) == 464 &&
              offsetof(SendAlertExReq3, vtSourceLoc) == 472);
static_assert(offsetof(SendAlertExReq3, vtTransitLoc) == 480 &&
              offsetof(SendAlertExReq3, vtDestLoc) == 488 &&
              offsetof(SendAlertExReq3, vtBarCodeCurrLoc) == 496);
static_assert(offsetof(SendAlertExReq3, thresholdComment) == 504 &&
              offsetof(SendAlertExReq3, attachmentName) == 512 &&
              offsetof(SendAlertExReq3, whomId) == 520);
static_assert(offsetof(SendAlertExReq3, vtStoragePoliciesCount) == 528 &&
              offsetof(SendAlertExReq3, vtStoragePolicies) == 536 &&
              offsetof(SendAlertExReq3, clientsCount) == 544);
static_assert(offsetof(SendAlertExReq3, clients) == 552 &&
              offsetof(SendAlertExReq3, mediaCount) == 560 &&
              offsetof(SendAlertExReq3, media) == 568);
static_assert(offsetof(SendAlertExReq3, succeededClientsCount) == 576 &&
              offsetof(SendAlertExReq3, succeededClients) == 584 &&
              offsetof(SendAlertExReq3, failedClientsCount) == 592);
static_assert(offsetof(SendAlertExReq3, failedClients) == 600 &&
              offsetof(SendAlertExReq3, notNeededClientsCount) == 608 &&
              offsetof(SendAlertExReq3, notNeededClients) == 616);
static_assert(offsetof(SendAlertExReq3, unknownClientsCount) == 624 &&
              offsetof(SendAlertExReq3, unknownClients) == 632 &&
              offsetof(SendAlertExReq3, mediaIdsCount) == 640);
static_assert(offsetof(SendAlertExReq3, mediaIds) == 648 &&
              offsetof(SendAlertExReq3, taskId) == 656 &&
              offsetof(SendAlertExReq3, schedPolicyId) == 664);
static_assert(offsetof(SendAlertExReq3, reservedCount) == 672 &&
              offsetof(SendAlertExReq3, reserved) == 680 &&
              offsetof(SendAlertExReq3, failureReasonsCount) == 688);
static_assert(offsetof(SendAlertExReq3, failureReasons) == 696 &&
              offsetof(SendAlertExReq3, freeDBSpace) == 704 &&
              offsetof(SendAlertExReq3, mailBoxName) == 712);
static_assert(offsetof(SendAlertExReq3, messageCount) == 720 &&
              offsetof(SendAlertExReq3, folderName) == 728 &&
              offsetof(SendAlertExReq3, numberOfAvailFiles) == 736);
static_assert(offsetof(SendAlertExReq3, numberOfDownloadedFiles) == 744 &&
              offsetof(SendAlertExReq3, kbDownloaded) == 752 &&
              offsetof(SendAlertExReq3, elapsedTime) == 760);
static_assert(offsetof(SendAlertExReq3, clientIdsCount) == 768 &&
              offsetof(SendAlertExReq3, clientIds) == 776 &&
              offsetof(SendAlertExReq3, updatesCount) == 784);
static_assert(offsetof(SendAlertExReq3, updates) == 792 &&
              offsetof(SendAlertExReq3, orbitRelease) == 800 &&
              offsetof(SendAlertExReq3, freeSpacesCount) == 808);
static_assert(offsetof(SendAlertExReq3, freeSpaces) == 816 &&
              offsetof(SendAlertExReq3, thresholdsCount) == 824 &&
              offsetof(SendAlertExReq3, thresholds) == 832);
static_assert(offsetof(SendAlertExReq3, foldersCount) == 840 &&
              offsetof(SendAlertExReq3, folders) == 848 &&
              offsetof(SendAlertExReq3, phaseFailuresCount) == 856);
static_assert(offsetof(SendAlertExReq3, networkFailuresCount) == 864 &&
              offsetof(SendAlertExReq3, fileSize) == 872 &&
              offsetof(SendAlertExReq3, lastActivity) == 880);
static_assert(offsetof(SendAlertExReq3, moreMediaToCome) == 888 &&
              offsetof(SendAlertExReq3, rdJob) == 892 && offsetof(SendAlertExReq3, svuName) == 896);
static_assert(offsetof(SendAlertExReq3, workFlowName) == 904 &&
              offsetof(SendAlertExReq3, vtPolicyId) == 912 &&
              offsetof(SendAlertExReq3, succeededMediaCount) == 920);
static_assert(offsetof(SendAlertExReq3, succeededMedia) == 928 &&
              offsetof(SendAlertExReq3, failedMediaCount) == 936 &&
              offsetof(SendAlertExReq3, failedMedia) == 944);
static_assert(offsetof(SendAlertExReq3, eventMsgsCount) == 952 &&
              offsetof(SendAlertExReq3, eventMsgs) == 960 &&
              offsetof(SendAlertExReq3, mbTransferred) == 968);
static_assert(offsetof(SendAlertExReq3, prevJobId) == 976 &&
              offsetof(SendAlertExReq3, prevBkpSize) == 984 &&
              offsetof(SendAlertExReq3, percentageChange) == 992);
static_assert(offsetof(SendAlertExReq3, barCodeAlign) == 996 &&
              offsetof(SendAlertExReq3, barCodesCount) == 1000 &&
              offsetof(SendAlertExReq3, barCodes) == 1008);
static_assert(offsetof(SendAlertExReq3, pruneJobCount) == 1016);
