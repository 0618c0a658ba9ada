// AppIdStore: application ids, on the store.
//
// An application id stands for one protected object. Its number 0 is the id itself; numbers 3
// to 8 and texts 0 to 2 say which object it stands for (no two ids stand for the same one);
// numbers 1 and 2 and the option are kept as they are given. Each id also has an archive group
// and an incremental archive group, 0 until set.
//
// A request names an id by number 0 or, when that is 0, by the object (numbers 3 to 8 and texts
// 0 to 2, compared exactly). A missing id is kStoreErrNotFound: "application id 7 does not
// exist", or "no application id stands for (3, 10, 12, 102, 1021, 0, 'C:', '', 'vol')". Outputs
// are written only on success. Each operation is one transaction.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct AppIdRecord {
  std::array<uint64_t, 9> numbers{};  // numbers[0] is the id
  std::array<std::string, 3> texts;
  uint32_t option = 0;
  uint64_t archiveGroup = 0;      // read only: set by UpdateArchiveGroups
  uint64_t incrArchiveGroup = 0;  // read only: set by UpdateArchiveGroups

  bool operator==(const AppIdRecord&) const = default;
};

class AppIdStore {
 public:
  explicit AppIdStore(Store& store) : store_(store) {}

  // The id `key` names (see above).
  CLmError Get(const AppIdRecord& key, AppIdRecord* out);

  // Adds the id `fields` describes: number 0 as given, or when it is 0 the next id never handed
  // out before. An id in use, or an object another id already stands for, is kStoreErrConflict
  // naming that id. *out becomes the id as stored.
  CLmError Create(const AppIdRecord& fields, AppIdRecord* out);

  // Removes the id `key` names.
  CLmError Remove(const AppIdRecord& key);

  // Sets both archive groups of id `id`.
  CLmError UpdateArchiveGroups(uint64_t id, uint64_t archiveGroup, uint64_t incrArchiveGroup);

  // The incremental archive group of id `id` (0 when none was set).
  CLmError IncrArchiveGroup(uint64_t id, uint64_t* archiveGroup);

 private:
  Store& store_;
};

// The object an id stands for, as errors show it: "(3, 10, 12, 102, 1021, 0, 'C:', '', 'vol')".
std::string AppIdObjectText(const AppIdRecord& r);

}  // namespace appmgr::server
