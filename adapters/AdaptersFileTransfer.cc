// Client file content transfer of AdaptersInterfaceNet. These operations have no error string
// and do not read the response header: the status alone, with the texts of a failure in the log.
//
// setClientFileContent puts the local file into Temp/ of the Controlhost's install folder over a
// private file-transfer session, then registers the path the file now has there. Every failure
// is 1. getClientFileContent and pushVSData are one exchange each, answering the send or receive
// status.
#include <cstdio>
#include <cstring>
#include <string>

#include "adapters/AdaptersInterfaceNet.h"
#include "appmgr/records/FileContentRecords.h"
#include "interfaces/Exchange.h"
#include "platform/info/KPPlatformInfo.h"
#include "platform/net/CKpNetwork.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
namespace msg = appmgr::msg;

namespace {

constexpr const char* kSetLabel = "AdaptersInterfaceNet::setClientFileContent";
// The facility of the App Manager's machine that accepts files, named by two fixed texts.
constexpr const char* kFacility = "sLNPATCHUPDATECLIENT";
constexpr const char* kFacilityEntry = "sLPUPDATEPATCHES";
constexpr int kAttachTimeoutSeconds = 120;

// The name this machine attaches as: the Controlhost's own client name on the Controlhost,
// else the physical machine's name (at most 255 characters).
std::string AttachName() {
  KPPlatformInfo info(KPPI_Focus::getFocus());
  if (info.getKPPlatformType() & KPPI_PLATFORM_CONTROLHOST) {
    char name[257] = {};
    info.getControlhosterClientName(name, 256);
    return name;
  }
  return info.getPhysicalMachine().substr(0, 255);
}

// Copies `text` into a fixed field; false when it does not fit with its terminator.
template <size_t N>
bool CopyField(char (&field)[N], const std::string& text) {
  if (text.size() >= N) return false;
  std::memcpy(field, text.c_str(), text.size() + 1);
  return true;
}

}  // namespace

int AdaptersInterfaceNet::setClientFileContent(unsigned long clientId, const std::string& localPath,
                                               const std::string& text, void*) {
  EvEvent event(kSetLabel);
  // The registration's exchange; its session is borrowed now and used after the put.
  Exchange x(msg::kSetClientFileContent);
  CKpNetwork transfer;  // private: used only for the file
  int result = 0;

  KPClient controlhost(KPClient::kControlhost);
  const std::string host = controlhost.getNetworkHostnameMangled();
  kpsExecuteRemoteDllType facility;
  facility.facility = kFacility;
  facility.entry = kFacilityEntry;
  facility.reserved = 0;
  bool aborted = false;
  CLmError e = transfer.Attach_RemoteDLL(host, &facility, AttachName(), kAttachTimeoutSeconds, aborted);
  if (e) {
    event.Error("Failed to attach to server [%s]. Error:[%s]", host.c_str(), e.AsString().c_str());
    result = 1;
  } else {
    // The name follows the last separator of any platform the path may come from. Without one
    // the "directory" is the whole path too (the prefix up to the not-found position), which
    // the session layer takes as the file itself.
    size_t cut = localPath.find_last_of("\\/:");
    std::string fileName = cut == std::string::npos ? localPath : localPath.substr(cut + 1);
    std::string localDirectory = localPath.substr(0, cut);

    std::string folder;
    controlhost.getInstallDirectory(folder, 1, nullptr);  // unset: the put goes to "/Temp/"
    if (folder.empty() || (folder.back() != '/' && folder.back() != '\\')) folder += '/';
    folder += "Temp/";

    kpsFilexferRequest request;
    if (!CopyField(request.sourceFileName, fileName) ||
        !CopyField(request.destinationDirectory, folder)) {
      e = CLmError(kKpErrBadArgument, "the file name or the server folder is too long");
    } else {
      request.overwrite = 1;
      request.binary = 1;
      e = transfer.PutFileRequest(localDirectory, &request, -1, aborted);
    }
    if (e) {
      event.Error("Failed to create the file [%s] at [%s] on the server. Error:[%s]",
                  fileName.c_str(), folder.c_str(), e.AsString().c_str());
      result = 1;
    } else {
      event.Debug(2, "Successfully put the file [%s] at [%s] on the server.", fileName.c_str(),
                  folder.c_str());
      const std::string serverPath = folder + fileName;
      x.request().clientId = clientId;
      x.request().serverPath = serverPath.c_str();
      x.request().text = text.c_str();
      std::string dropped;
      result = x.SendReceive(dropped) != 0 ? 1 : 0;
    }
  }
  if (transfer.IsConnected()) transfer.Disconnect(kAttachTimeoutSeconds, aborted);
  return result;
}

int AdaptersInterfaceNet::getClientFileContent(unsigned long clientId, const std::string& text1,
                                               const std::string& text2, void*) {
  Exchange x(msg::kGetClientFileContent);
  x.request().clientId = clientId;
  x.request().text1 = text1.c_str();
  x.request().text2 = text2.c_str();
  std::string dropped;
  return x.SendReceive(dropped);
}

int AdaptersInterfaceNet::pushVSData(unsigned long a, unsigned long b, unsigned long c,
                                     unsigned long d, const std::string& text, int value, void*) {
  Exchange x(msg::kPushVSData);
  x.request().value1 = a;
  x.request().value2 = b;
  x.request().value3 = c;
  x.request().value4 = d;
  x.request().text = text.c_str();
  x.request().number = value;
  std::string dropped;
  return x.SendReceive(dropped);
}
