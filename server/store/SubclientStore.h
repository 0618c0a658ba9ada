// SubclientStore: the operations of the subclient requests, on the store, beyond content lists
// (ContentStore) and properties (PropertyStore, EntityKind::kSubclient).
//
// Each operation is one transaction and names the subclient by id. A subclient that does not
// exist fails every operation with kStoreErrNotFound and "subclient <id> does not exist"; a
// missing part (a store name, a replication pair, stored pair data, a file type) is
// kStoreErrNotFound with a text naming it. Outputs are written only on success and are
// replaced, never appended to.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct SubclientInfo {
  uint64_t id = 0;
  uint64_t backupSetId = 0;
  std::string name;
  std::string guid;  // empty: none
  int64_t value = 0;
  uint64_t attr2 = 0;
  uint64_t attr3 = 0;
  uint64_t attr4 = 0;
  std::string text;
  uint64_t contentFlag = 0;
};

// Association kinds as the schema numbers them.
enum class AssociationKind : int { kStore = 1, kDirectory = 2 };

// What the file-system backup-set content question names: numbers 3 to 7 of an application id
// (client, application type, instance, backup set, subclient; 0 means "any" for all but the
// backup set), a content type (0: every type) and whether subclients whose contents are marked
// deleted count.
struct BackupSetContentQuery {
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  uint64_t instanceId = 0;
  uint64_t backupSetId = 0;
  uint64_t subclientId = 0;
  uint64_t contentType = 0;
  bool withDeleted = false;
};

struct BackupSetContent {
  std::vector<uint64_t> subclientIds;  // ascending
  std::string backupSetName;
  std::string entries;  // every entry of those subclients, one per line, subclient by subclient
};

class SubclientStore {
 public:
  explicit SubclientStore(Store& store) : store_(store) {}

  CLmError Lookup(uint64_t id, SubclientInfo* out);
  // By GUID, compared exactly. Not found: "no subclient has GUID '<guid>'".
  CLmError LookupByGuid(const std::string& guid, SubclientInfo* out);

  // Renames the subclient and sets its value. An empty name is kStoreErrInvalidArgument; a name
  // another subclient of the same backup set has is kStoreErrConflict.
  CLmError Update(uint64_t id, const std::string& name, int64_t value);

  // The stored content flag (1: set).
  CLmError ContentFlag(uint64_t id, uint64_t* flag);

  // Replaces the subclient's associations of `kind` with `names`, in order; a name given twice
  // is stored once. An empty name is kStoreErrInvalidArgument. A store association must name a
  // store of the subclient's backup set ("backup set 102 has no store named 'x'").
  CLmError SetAssociations(uint64_t id, AssociationKind kind, const std::vector<std::string>& names);
  CLmError Associations(uint64_t id, AssociationKind kind, std::vector<std::string>* names);

  // The other subclients of the same client whose content overlaps this one's: an entry of one
  // equals an entry of the other, or contains it as a path ("/var" contains "/var/log" and
  // "/var/log/x", not "/varnish"; "C:\" contains "C:\Users"). '/' and '\' both separate and
  // match each other, a trailing separator is ignored, texts are otherwise compared exactly (case
  // included) and content types are not compared. Ascending ids; empty when nothing overlaps. Linear in the content read
  // times the depth of its paths.
  CLmError Overlapping(uint64_t id, std::vector<uint64_t>* ids);

  // The client that backs the subclient up: the one set for it, else its own client.
  CLmError BackupHost(uint64_t id, uint64_t* clientId);

  // Replication pair data: the text kept for (subclient, pair, selector), and the pair's state.
  // The pair must be a replication pair of the subclient's backup set.
  CLmError GetPairData(uint64_t id, uint64_t pairId, uint64_t selector, uint64_t* state,
                       std::string* text);
  // Stores the text; with `replace` false, data already stored under the same key is
  // kStoreErrConflict and is left as it was.
  CLmError SetPairData(uint64_t id, uint64_t pairId, uint64_t selector, const std::string& text,
                       bool replace);

  // The extensions of a file type (its name compared without regard to case).
  CLmError FileTypeExtensions(const std::string& fileType, std::string* extensions);

  // See BackupSetContentQuery. Not found when the backup set does not exist, when a non-zero
  // client, application type or instance is not the backup set's, or when a non-zero subclient
  // is not one of its subclients.
  CLmError FsBackupSetContent(const BackupSetContentQuery& query, BackupSetContent* out);

  // The subclient's reference-copy subclients, in their stored order.
  CLmError ReferenceCopies(uint64_t id, std::vector<uint64_t>* ids);

 private:
  Store& store_;
};

}  // namespace appmgr::server
