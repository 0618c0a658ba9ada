// FileContentStore: the files clients registered after putting them into the server's Temp/
// folder, and the values clients pushed (pushVSData), on the store.
//
// A registration names a client, the path the client registered (its idea of where the file
// lies on the server), the plain file name that path ends in, where the server actually holds
// the file, the file's size, the client's text, and the time. One client has at most one
// registration per file name: registering the name again replaces it (a file put again over
// the old one). Registrations go with their client.
//
// Pushed values are kept as received, newest last; only the newest kMaxVsData are kept, so a
// client that pushes without end cannot fill the disk.
//
// Each operation is one transaction; outputs are written only on success and replaced. A client
// that does not exist is kStoreErrNotFound ("client 42 does not exist").
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct FileRegistration {
  uint64_t id = 0;  // given by the store
  uint64_t clientId = 0;
  std::string fileName;    // the plain name the path ends in
  std::string path;        // as the client registered it
  std::string storedPath;  // where the server holds the file
  uint64_t size = 0;
  std::string text;  // the client's second text
  int64_t registeredAt = 0;  // seconds since 1970 (UTC)

  bool operator==(const FileRegistration&) const = default;
};

struct VsDataRecord {
  uint64_t id = 0;  // given by the store
  uint64_t value1 = 0, value2 = 0, value3 = 0, value4 = 0;
  std::string text;
  int32_t number = 0;
  int64_t receivedAt = 0;  // seconds since 1970 (UTC)

  bool operator==(const VsDataRecord&) const = default;
};

class FileContentStore {
 public:
  static constexpr int64_t kMaxVsData = 10000;

  explicit FileContentStore(Store& store) : store_(store) {}

  // Registers the file (replacing the client's registration of the same file name); *id
  // receives the registration's id. An empty file name is kStoreErrInvalidArgument.
  CLmError Register(const FileRegistration& registration, uint64_t* id);
  // The registrations of `clientId` (0: of every client), by client and file name.
  CLmError Registrations(uint64_t clientId, std::vector<FileRegistration>* out);
  // The client's registration whose path is `pathOrName`, or whose file name is `pathOrName` or
  // the plain name it ends in; kStoreErrNotFound ("client 3 has no registered file x.txt").
  CLmError FindRegistration(uint64_t clientId, std::string_view pathOrName, FileRegistration* out);

  // Keeps the record (its id and time given by the store; *id receives the id).
  CLmError AddVsData(const VsDataRecord& record, uint64_t* id);
  // The kept records, oldest first.
  CLmError VsData(std::vector<VsDataRecord>* out);

 private:
  Store& store_;
};

// The plain file name at the end of `path`: what follows its last '/' or '\' (all of it when it
// has neither).
std::string_view LastPathComponent(std::string_view path);

}  // namespace appmgr::server
