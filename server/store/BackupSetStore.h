// BackupSetStore: the operations of the backup-set requests, on the store.
//
// Each operation is one transaction and names the backup set by id. A backup set that does not
// exist fails every operation with kStoreErrNotFound and the text "backup set <id> does not
// exist"; a missing part of one (a store name, an interface pair) is kStoreErrNotFound with a
// text naming that part. Outputs are written only on success, and are replaced, never appended
// to.
//
// Properties of backup sets are PropertyStore's, with EntityKind::kBackupSet.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct BackupSetInfo {
  std::string name;
  int64_t value = 0;
  std::string description;
};

// One replication (data) pair as the conflict check reports it. It fills a record of four
// 64-bit identifiers, four character fields of 255, 128, 128 and 1024 bytes (each text at most
// one byte shorter, for the terminator) and one 64-bit value, in this order.
struct DataPair {
  static constexpr size_t kSourceMax = 254;
  static constexpr size_t kSourceGuidMax = 127;
  static constexpr size_t kDestinationGuidMax = 127;
  static constexpr size_t kDestinationMax = 1023;

  uint64_t pairId = 0;  // 0 for a proposed pair
  uint64_t backupSetId = 0;
  uint64_t sourceClientId = 0;       // the backup set's client
  uint64_t destinationClientId = 0;  // 0 for a proposed pair: the request does not name one
  std::string source;
  std::string sourceGuid;
  std::string destinationGuid;
  std::string destination;
  uint64_t state = 0;

  bool operator==(const DataPair&) const = default;
};

struct PairConflict {
  bool conflict = false;
  // The existing pair that shares the source or the destination (the lowest pair id when
  // several do); all zero and empty when there is no conflict.
  DataPair existing;
  // The pair the request proposes, as it would be stored.
  DataPair proposed;
};

struct InterfacePair {
  std::string first;
  std::string second;
};

struct FlrPair {
  uint64_t id = 0;
  std::string name;

  bool operator==(const FlrPair&) const = default;
};

struct FlrSystemState {
  uint64_t id = 0;
  std::vector<FlrPair> pairs;  // in their stored order
  uint64_t value = 0;
  std::string text1;
  std::string text2;
};

class BackupSetStore {
 public:
  explicit BackupSetStore(Store& store) : store_(store) {}

  // The backup set's name, 64-bit value and description.
  CLmError Lookup(uint64_t id, BackupSetInfo* out);

  // Renames the backup set and sets its value. An empty name is kStoreErrInvalidArgument; a
  // name another backup set of the same instance has is kStoreErrConflict.
  CLmError Update(uint64_t id, const std::string& name, int64_t value);

  // The default subclient of the backup set's store named `storeName` (names are compared
  // exactly). Not found when the backup set has no such store or the store has no default.
  CLmError DefaultSubclientForStore(uint64_t backupSetId, const std::string& storeName,
                                    uint64_t* subclientId);

  // The names of the backup set's stores, in order.
  CLmError StoreList(uint64_t id, std::vector<std::string>* names);

  // The backup set's wildcard expressions, in order.
  CLmError WildcardExpressions(uint64_t id, std::vector<std::string>* expressions);

  // The client that owns the backup set (through its instance).
  CLmError ClientIdForBackupSet(uint64_t id, uint64_t* clientId);

  // Whether a new pair (source, destination) would conflict with an existing pair of the backup
  // set: one with the same source or the same destination (exact comparison). An empty source
  // or destination, or one longer than its field, is kStoreErrInvalidArgument. Reads only.
  CLmError CheckPairConflict(uint64_t id, const std::string& source, const std::string& destination,
                             PairConflict* out);

  // The interface pair that serves replication pair `pairId` of the backup set under
  // `selector`. Not found when there is none.
  CLmError DataInterfacePair(uint64_t id, uint64_t pairId, uint64_t selector, InterfacePair* out);

  // The system-state records of the backup set stored under `name` (exact match), in the order
  // they were stored; empty when there are none.
  CLmError FlrSystemStateInfo(uint64_t id, const std::string& name,
                              std::vector<FlrSystemState>* out);

 private:
  Store& store_;
};

}  // namespace appmgr::server
