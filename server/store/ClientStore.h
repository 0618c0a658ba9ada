// ClientStore: clients, their platform descriptions and the client queries, on the store.
//
// A client is the record of the client requests: integer 1 is its id, integer 2 its platform
// type bits, text 1 its name (unique without regard to case), text 2 its host name; integers 3
// to 12 and texts 3 to 8 are kept as they are given. Each client has exactly three platform
// descriptions (value and text), slots 0 to 2, all zero and empty until set.
//
// A missing client fails every operation with kStoreErrNotFound and "client <id> does not
// exist". Outputs are written only on success and are replaced, never appended to. Each
// operation is one transaction.
//
// Properties of clients are PropertyStore's, with EntityKind::kClient.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct ClientPlatform {
  uint64_t value = 0;
  std::string text;

  bool operator==(const ClientPlatform&) const = default;
};

// A client as stored.
struct ClientRecord {
  static constexpr size_t kPlatforms = 3;

  uint64_t id = 0;            // integer 1
  uint64_t platformType = 0;  // integer 2
  // Integers 3 to 12 (integers[0] is integer 3), as 64-bit patterns; integer 5 is signed.
  std::array<uint64_t, 10> integers{};
  std::string name;      // text 1
  std::string hostName;  // text 2
  std::array<std::string, 6> texts;  // texts 3 to 8 (texts[0] is text 3)
  std::array<ClientPlatform, kPlatforms> platforms;

  bool operator==(const ClientRecord&) const = default;
};

// What a create or modify request carries. A text that is absent (nullopt) is stored empty by a
// create and left as it was by a modify; the name may not be absent from a create. Platforms
// beyond `platformCount` are not carried.
struct ClientFields {
  uint64_t id = 0;  // create: 0 lets the store choose
  uint64_t platformType = 0;
  std::array<uint64_t, 10> integers{};
  std::optional<std::string> name;
  std::optional<std::string> hostName;
  std::array<std::optional<std::string>, 6> texts;
  size_t platformCount = 0;
  std::array<uint64_t, ClientRecord::kPlatforms> platformValues{};
  std::array<std::optional<std::string>, ClientRecord::kPlatforms> platformTexts;
};

// One client of a property query.
struct ClientSummary {
  uint64_t id = 0;
  std::string name;
  std::string hostName;
  std::string text3;

  bool operator==(const ClientSummary&) const = default;
};

// The replication that writes to one destination client.
struct ReplicationToClient {
  std::vector<uint64_t> backupSets;     // each backup set with a pair to the client, ascending
  std::vector<uint64_t> sourceClients;  // the client owning each of those, in the same order
  std::vector<uint64_t> pairs;          // the pairs to the client, by backup set then pair id
};

// A client's latest report of file-system node activity.
struct FsNodeReport {
  std::string data;
  int32_t value = 0;
  bool flag = false;
  int64_t reportedAt = 0;  // seconds since 1970 (UTC) when the server stored it
};

class ClientStore {
 public:
  explicit ClientStore(Store& store) : store_(store) {}

  CLmError Lookup(uint64_t id, ClientRecord* out);
  // The client of that name, compared without regard to case.
  CLmError LookupByName(const std::string& name, ClientRecord* out);

  // Adds a client: the id given, or when it is 0 the next id never handed out before. An absent
  // or empty name, or more than three platforms, is kStoreErrInvalidArgument; a name another
  // client has (without regard to case) or an id in use is kStoreErrConflict. *out becomes the
  // client as stored.
  CLmError Create(const ClientFields& fields, ClientRecord* out);

  // Changes client `fields.id`: every number, every text that is present, and the platforms
  // carried (a platform's value always, its text when present). Properties, applications and
  // group memberships are not touched. An empty name is kStoreErrInvalidArgument, a name
  // another client has kStoreErrConflict. *out becomes the client as stored.
  CLmError Modify(const ClientFields& fields, ClientRecord* out);

  // Removes the client with its platforms, properties, group memberships and node report. A
  // client that still has application types (and so perhaps instances, backup sets and
  // subclients) or is the destination of replication pairs is refused with kStoreErrConflict
  // naming what is left: those are removed first, deliberately, never as a side effect.
  CLmError Remove(uint64_t id);

  // The replication pairs whose destination volume GUID is `volumeGuid` (without regard to
  // case), ascending. option 0: every such pair; a positive option: only the pairs in that
  // state. An empty GUID or a negative option is kStoreErrInvalidArgument.
  CLmError PairsForDestinationVolume(const std::string& volumeGuid, int64_t option,
                                     std::vector<uint64_t>* pairIds);

  // The replication that writes to client `clientId`.
  CLmError ReplicationTo(uint64_t clientId, ReplicationToClient* out);

  // The clients whose property `name` (table 0) has exactly `value`, by id. An empty name is
  // kStoreErrInvalidArgument.
  CLmError WithProperty(const std::string& name, const std::string& value,
                        std::vector<ClientSummary>* out);

  // The client's ASM instances, ascending; appTypeId 0 for every application type, otherwise
  // only that type's.
  CLmError AsmInstances(uint64_t clientId, uint64_t appTypeId, std::vector<uint64_t>* instanceIds);

  // Stores a report of file-system node activity as the client's latest.
  CLmError SetFsNodeReport(uint64_t clientId, const std::string& data, int32_t value, bool flag);
  // The client's latest report; kStoreErrNotFound when it has sent none.
  CLmError FsNodeReportOf(uint64_t clientId, FsNodeReport* out);

 private:
  Store& store_;
};

}  // namespace appmgr::server
