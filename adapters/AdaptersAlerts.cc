// Alerts of AdaptersInterfaceNet: an EvAlertEx flattened into SendAlertExReq3 and sent in one
// exchange.
#include "adapters/AdaptersAlerts.h"

#include <string>
#include <vector>

#include "adapters/AdaptersInterfaceNet.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
namespace msg = appmgr::msg;

namespace {

// A 32-bit value of the alert, widened with its sign.
int64_t Widen(int value) {
  return static_cast<int64_t>(value);
}
// A 64-bit id of which the record keeps only the low 32 bits, read back as a signed 32-bit
// value: ids of 2^31 and above arrive altered, which is the record's contract.
int64_t Low32(long id) {
  return static_cast<int64_t>(static_cast<int32_t>(static_cast<uint32_t>(id)));
}
uint32_t Bit(bool flag) {
  return flag ? 1 : 0;
}
const char* Chars(const std::string& text) {
  return text.c_str();
}

// A counted array of one element per entry, filled in order; nothing for an empty list.
template <class Element, class Value, class Fill>
void List(const std::vector<Value>& values, uint32_t& count, Element*& items, Fill fill) {
  count = static_cast<uint32_t>(values.size());
  if (values.empty()) return;
  items = new Element[values.size()]();
  size_t i = 0;
  for (const Value& value : values) fill(items[i++], value);
}
void Texts(const std::vector<std::string>& values, uint32_t& count, AppStringList*& items) {
  List(values, count, items, [](AppStringList& e, const std::string& v) { e.text = v.c_str(); });
}
void Numbers(const std::vector<int>& values, uint32_t& count, LongList*& items) {
  List(values, count, items,
       [](LongList& e, int v) { e.id = static_cast<uint64_t>(static_cast<int64_t>(v)); });
}

template <class Element>
void Release(Element*& items) {
  delete[] items;
  items = nullptr;
}

}  // namespace

int CopyAlertExData(SendAlertExReq3& req, EvAlertEx& alert) {
  req.alertType = Widen(alert.getAlertType());
  req.alertCriteria = Widen(alert.getAlertCriteria());
  req.alertStatus = Widen(alert.getAlertStatus());
  req.libraryId = Low32(alert.getLibraryId());
  req.sparePoolId = Widen(alert.getSparePoolId());
  req.driveId = Widen(alert.getDriveId());
  req.mediaId = Low32(alert.getMediaId());
  req.storenodeId = Low32(alert.getStorenodeId());
  req.mountPathId = Widen(alert.getMountPathId());
  req.orbitId = Low32(alert.getOrbitId());
  req.clientId = Low32(alert.getClientId());
  req.subclientId = static_cast<uint64_t>(alert.getSubClientId());
  req.backupsetId = static_cast<uint64_t>(alert.getBackupsetId());
  req.appTypeId = Low32(alert.getappTypeId());
  req.instanceId = Low32(alert.getInstanceId());
  req.storPolicyId = static_cast<uint64_t>(alert.getStorPolicyId());
  req.alert = static_cast<uint64_t>(alert.getAlert());
  req.condition = static_cast<uint64_t>(alert.getCondition());
  req.jobId = static_cast<uint64_t>(alert.getJobId());
  req.conditionCleared = Bit(alert.IsConditionCleared());
  req.mediaRequired = Bit(alert.IsMediaRequired());
  req.startTime = alert.getStartTime();
  req.endTime = alert.getEndTime();
  req.scheduledTime = alert.getScheduledTime();
  req.freeSpace = static_cast<uint64_t>(alert.getFreeSpace());
  req.otherLibId = static_cast<uint64_t>(alert.getOtherLibId());
  req.mediaSpaceLeft = static_cast<uint64_t>(alert.getMediaSpaceLeft());
  req.threshold = static_cast<uint64_t>(alert.getThreshold());
  req.copyId = static_cast<uint64_t>(alert.getCopyId());
  req.protectedCount = static_cast<uint64_t>(alert.getProtectedCount());
  req.recoveredCount = static_cast<uint64_t>(alert.getRecoveredCount());
  req.failedCount = static_cast<uint64_t>(alert.getFailedCount());
  req.skippedCount = static_cast<uint64_t>(alert.getSkippedCount());
  req.backupLevel = static_cast<uint64_t>(alert.getBackupLevel());

  req.orbitName = Chars(alert.getOrbitName());
  req.clientName = Chars(alert.getClientName());
  req.subClientName = Chars(alert.getSubClientName());
  req.backupsetName = Chars(alert.getBackupsetName());
  req.appTypeName = Chars(alert.getAppTypeName());
  req.instanceName = Chars(alert.getInstanceName());
  req.storenodeName = Chars(alert.getStorenodeName());
  req.libraryName = Chars(alert.getLibraryName());
  req.storPolicyName = Chars(alert.getStorPolicyName());
  req.failureReason = Chars(alert.getFailureReason());
  req.mediaLabel = Chars(alert.getMediaLable());
  req.libName = Chars(alert.getLibName());
  req.containerName = Chars(alert.getContainerName());
  req.exportLocName = Chars(alert.getExportLocName());
  req.comment = Chars(alert.getComment());
  req.holidayChanges = Chars(alert.getHolidayChanges());
  req.scheduleName = Chars(alert.getScheduleName());
  req.driveName = Chars(alert.getDriveName());
  req.drivePoolName = Chars(alert.getDrivePoolName());
  req.sparePoolMountPathName = Chars(alert.getSparePoolMountPathName());
  req.description = Chars(alert.getDescription());
  req.vtInitiator = Chars(alert.getVtInitiator());
  req.vtSourceLoc = Chars(alert.getVtSourceLoc());
  req.vtTransitLoc = Chars(alert.getVtTransitLoc());
  req.vtDestLoc = Chars(alert.getVtDestLoc());
  req.vtBarCodeCurrLoc = Chars(alert.getVtBarCodeCurrLoc());
  req.thresholdComment = Chars(alert.getThresholdCommen());
  req.attachmentName = Chars(alert.getAttachmentName());
  req.whomId = static_cast<uint64_t>(alert.getWhomId());

  Texts(alert.getVtStoragePolicyList(), req.vtStoragePoliciesCount, req.vtStoragePolicies);
  Texts(alert.getClientList(), req.clientsCount, req.clients);
  Texts(alert.getMediaList(), req.mediaCount, req.media);
  Texts(alert.getSuccClntList(), req.succeededClientsCount, req.succeededClients);
  Texts(alert.getFailClntList(), req.failedClientsCount, req.failedClients);
  Texts(alert.getNotNeededClntList(), req.notNeededClientsCount, req.notNeededClients);
  Texts(alert.getUnKnownClientList(), req.unknownClientsCount, req.unknownClients);
  Numbers(alert.getMediaIdsList(), req.mediaIdsCount, req.mediaIds);
  req.taskId = Widen(alert.getTaskId());
  req.schedPolicyId = Widen(alert.getSchedPolicyId());
  // The reserved list is left as the zeroed record has it: count 0, no array.
  Numbers(alert.getFailureReasons(), req.failureReasonsCount, req.failureReasons);
  req.freeDBSpace = static_cast<uint64_t>(alert.getFreeDBSpace());
  req.mailBoxName = Chars(alert.getMailBoxName());
  req.messageCount = static_cast<uint64_t>(alert.getMessageCount());
  req.folderName = Chars(alert.getFolderName());
  req.numberOfAvailFiles = Widen(alert.getNumberOfAvailFiles());
  req.numberOfDownloadedFiles = Widen(alert.getNumberOfDownloadedFiles());
  req.kbDownloaded = Widen(alert.getKBDoanloaded());
  req.elapsedTime = Widen(alert.getElapsedTime());
  Numbers(alert.getClientIdsList(), req.clientIdsCount, req.clientIds);
  Texts(alert.getUpdatesList(), req.updatesCount, req.updates);
  req.orbitRelease = Chars(alert.getOrbitRelease());
  Numbers(alert.getFreeSpaceList(), req.freeSpacesCount, req.freeSpaces);
  Numbers(alert.getThresholdsList(), req.thresholdsCount, req.thresholds);
  Texts(alert.getFoldersList(), req.foldersCount, req.folders);
  req.phaseFailuresCount = Widen(alert.getPhaseFailuresCount());
  req.networkFailuresCount = Widen(alert.getNetworkFailuresCount());
  req.fileSize = Widen(alert.getFileSize());
  req.lastActivity = static_cast<uint64_t>(alert.getLastActivity());
  // The boolean's byte value, which for a bool is 0 or 1 as well.
  req.moreMediaToCome = static_cast<uint32_t>(static_cast<unsigned char>(alert.getMoreMediaToCome()));
  req.rdJob = Bit(alert.getRdJob());
  req.svuName = Chars(alert.getSVUName());
  req.workFlowName = Chars(alert.getWorkFlowName());
  req.vtPolicyId = Widen(alert.getVtPolicyId());
  Numbers(alert.getSucceededMedialist(), req.succeededMediaCount, req.succeededMedia);
  Numbers(alert.getFailedMedialist(), req.failedMediaCount, req.failedMedia);
  List(alert.getEventMsgList(), req.eventMsgsCount, req.eventMsgs,
       [](AppMgrAlertEventMsg& e, const EvAlertEventMsg& m) {
         e.text = m.text.c_str();
         e.value1 = m.value1;
         e.value2 = m.value2;
         e.value3 = m.value3;
         e.value4 = m.value4;
       });
  req.mbTransferred = Widen(alert.getMbTransferred());
  req.prevJobId = static_cast<uint64_t>(alert.getPrevJobId());
  req.prevBkpSize = static_cast<uint64_t>(alert.getPrevBkpSize());
  req.percentageChange = alert.getPercentageChange();
  Texts(alert.getBarCodeList(), req.barCodesCount, req.barCodes);
  req.pruneJobCount = alert.getPruneJobCount();
  return 0;
}

void ReleaseAlertExData(SendAlertExReq3& req) {
  Release(req.vtStoragePolicies);
  Release(req.clients);
  Release(req.media);
  Release(req.succeededClients);
  Release(req.failedClients);
  Release(req.notNeededClients);
  Release(req.unknownClients);
  Release(req.mediaIds);
  Release(req.reserved);
  Release(req.failureReasons);
  Release(req.clientIds);
  Release(req.updates);
  Release(req.freeSpaces);
  Release(req.thresholds);
  Release(req.folders);
  Release(req.succeededMedia);
  Release(req.failedMedia);
  Release(req.eventMsgs);
  Release(req.barCodes);
}

int AdaptersInterfaceNet::SendAlert(EvAlertEx& alert, std::string& errorString) {
  Exchange x(msg::kSendAlertEx);
  // Every array of the record goes when the call ends, on every path: an agent raises alerts
  // for as long as it runs, and nothing of an alert is needed once it has been answered.
  struct Arrays {
    SendAlertExReq3& req;
    ~Arrays() { ReleaseAlertExData(req); }
  } arrays{x.request()};
  CopyAlertExData(x.request(), alert);
  int status = x.Run(errorString);
  Release(x.request().eventMsgs);
  return status;
}
