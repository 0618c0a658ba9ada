// SnapshotStore: snapshot-information records and mailbox delegates, on the store.
//
// Both kinds are flat records kept positionally (their meaning is the agents'): a snapshot record
// of fifteen fields whose F2 is its id, a mailbox delegate of seven whose G7 is its id and whose
// G1 selects lists. Ids are non-zero. Each operation is one transaction; a record that does not
// exist is kStoreErrNotFound ("snapshot record 42 does not exist", "mailbox delegate 9 does not
// exist"). Outputs are written only on success; list outputs are replaced.
//
// Writes of a snapshot record never change F7 and F14 of a record that exists: the library
// never carries them, so they keep what the record was created with (a create, or the fixture).
// A list write is all or nothing: the first bad entry rolls every entry back, and the error
// names it ("entry 2 of 3: ...").
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct SnapshotRecord {
  uint64_t f1 = 0;
  uint64_t f2 = 0;  // the id
  std::string f3, f4, f5, f6;
  uint64_t f7 = 0;
  std::string f8, f9;
  uint64_t f10 = 0, f11 = 0, f12 = 0;
  std::string f13, f14;
  uint64_t f15 = 0;

  bool operator==(const SnapshotRecord&) const = default;
};

struct DelegateRecord {
  uint64_t g1 = 0;  // the list selector
  std::string g2, g3, g4, g5, g6;
  uint64_t g7 = 0;  // the id

  bool operator==(const DelegateRecord&) const = default;
};

class SnapshotStore {
 public:
  explicit SnapshotStore(Store& store) : store_(store) {}

  CLmError Lookup(uint64_t id, SnapshotRecord* out);
  // A new record; an id in use is kStoreErrConflict, id 0 kStoreErrInvalidArgument.
  CLmError Create(const SnapshotRecord& record);
  // Every field of the existing record but F7 and F14, and F3 only when `withF3`.
  CLmError Update(const SnapshotRecord& record, bool withF3);
  CLmError Remove(uint64_t id);
  // Creates the record or updates it (F3 included).
  CLmError Set(const SnapshotRecord& record);
  // Every record, by id.
  CLmError List(std::vector<SnapshotRecord>* out);
  // Set for each entry, in order, all or nothing (a repeated id takes its later entry).
  CLmError SetList(const std::vector<SnapshotRecord>& records);

 private:
  Store& store_;
};

class DelegateStore {
 public:
  explicit DelegateStore(Store& store) : store_(store) {}

  CLmError Lookup(uint64_t id, DelegateRecord* out);
  CLmError Create(const DelegateRecord& record);
  CLmError Update(const DelegateRecord& record);
  CLmError Remove(uint64_t id);
  CLmError Set(const DelegateRecord& record);
  // The delegates whose G1 is `selector` (0: every delegate), by id.
  CLmError List(uint64_t selector, std::vector<DelegateRecord>* out);
  CLmError SetList(const std::vector<DelegateRecord>& records);
  // Removes every delegate named; when any is missing nothing is removed and the error names
  // every missing id. A repeated id is removed once.
  CLmError RemoveList(const std::vector<uint64_t>& ids);

 private:
  Store& store_;
};

}  // namespace appmgr::server
