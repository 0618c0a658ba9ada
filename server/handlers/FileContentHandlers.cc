#include "server/handlers/FileContentHandlers.h"

#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "platform/base/EvDebug.h"
#include "protocol/Messages.h"
#include "server/core/FileReceiver.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/FileContentStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

constexpr const char* kLabel = "Handlers";

// The file `name` in the Temp/ folder: its path and size, or why it is not there.
CLmError HeldFile(const std::string& tempDirectory, const std::string& name, std::string* path,
                  uint64_t* size) {
  if (tempDirectory.empty()) {
    return CLmError(kKpErrNotSupported, "this server does not receive files");
  }
  if (CLmError e = FileReceiver::CheckFileName(name)) {
    return CLmError(kStoreErrInvalidArgument, e.Text());
  }
  *path = (std::filesystem::path(tempDirectory) / name).string();
  struct stat st {};
  if (::lstat(path->c_str(), &st) != 0 || !S_ISREG(st.st_mode)) {
    return CLmError(kStoreErrNotFound,
                    name + " is not in " + tempDirectory + ": put the file before registering it");
  }
  *size = static_cast<uint64_t>(st.st_size);
  return CLmError();
}

CLmError SetFileContent(Store& store, const std::string& tempDirectory,
                        const SetClientFileContentReq& req, Exchange& x) {
  if (CLmError e = RequireText(req.serverPath, "file path")) return e;
  if (CLmError e = RequireText(req.text, "text")) return e;
  FileRegistration r;
  r.clientId = req.clientId;
  r.path = req.serverPath;
  r.fileName = std::string(LastPathComponent(r.path));
  r.text = req.text;
  if (CLmError e = HeldFile(tempDirectory, r.fileName, &r.storedPath, &r.size)) return e;
  uint64_t id = 0;
  if (CLmError e = FileContentStore(store).Register(r, &id)) return e;
  EvEventWrapper::DebugLvl(kLabel, 2, "client %llu [%s] registered %s (%llu bytes) as %s",
                           static_cast<unsigned long long>(r.clientId), x.connection.client.c_str(),
                           r.storedPath.c_str(), static_cast<unsigned long long>(r.size),
                           r.path.c_str());
  return CLmError();
}

CLmError GetFileContent(Store& store, const std::string& tempDirectory,
                        const GetClientFileContentReq& req) {
  if (CLmError e = RequireText(req.text1, "file path or name")) return e;
  if (CLmError e = RequireText(req.text2, "second text")) return e;
  FileRegistration r;
  if (CLmError e = FileContentStore(store).FindRegistration(req.clientId, req.text1, &r)) return e;
  std::string path;
  uint64_t size = 0;
  if (CLmError e = HeldFile(tempDirectory, r.fileName, &path, &size)) {
    if (e.GetErrorCode() != kStoreErrNotFound) return e;
    return CLmError(kStoreErrNotFound, r.fileName + " is registered for client " +
                                           std::to_string(req.clientId) + " but no longer in " +
                                           tempDirectory);
  }
  return CLmError();
}

CLmError PushVsData(Store& store, const pushVSDataReq& req) {
  if (CLmError e = RequireText(req.text, "text")) return e;
  VsDataRecord r;
  r.value1 = req.value1;
  r.value2 = req.value2;
  r.value3 = req.value3;
  r.value4 = req.value4;
  r.text = req.text;
  r.number = req.number;
  uint64_t id = 0;
  return FileContentStore(store).AddVsData(r, &id);
}

}  // namespace

void RegisterFileContentHandlers(Server& server, Store& store, const std::string& tempDirectory) {
  namespace msg = appmgr::msg;
  server.Handle(msg::kSetClientFileContent,
                [&store, tempDirectory](const SetClientFileContentReq& req,
                                        SetClientFileContentResp& resp, Exchange& x) {
                  Answer(SetFileContent(store, tempDirectory, req, x), resp, x);
                });
  server.Handle(msg::kGetClientFileContent,
                [&store, tempDirectory](const GetClientFileContentReq& req,
                                        GetClientFileContentResp& resp, Exchange& x) {
                  Answer(GetFileContent(store, tempDirectory, req), resp, x);
                });
  server.Handle(msg::kPushVSData, [&store](const pushVSDataReq& req, pushVSDataResp& resp,
                                           Exchange& x) { Answer(PushVsData(store, req), resp, x); });
}

}  // namespace appmgr::server
