// AppTypeStore: application types on clients (client_app_types), named by the pair (client id,
// application type id), and their volume-property records.
//
// The application types themselves (app_types: id and name) are the installation's catalogue
// and come from the fixture; a request can put one on a client or take it off, never invent
// one. Each operation is one transaction. Failures:
//  - a client that does not exist: kStoreErrNotFound "client 42 does not exist";
//  - a type not in the catalogue: kStoreErrNotFound "application type 99 does not exist";
//  - a type the client does not have: kStoreErrNotFound "client 3 has no application type 30".
// Outputs are written only on success.
//
// Properties of an application type on a client are PropertyStore's, with
// EntityKind::kClientAppType and the pair's surrogate id (SurrogateId).
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct AppTypeInfo {
  std::string name;  // the catalogue's name of the type
  uint64_t value = 0;
};

// One volume-property record, keyed by the application type on a client and the volume.
struct VolumeProperty {
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  uint64_t volumeId = 0;
  uint64_t value1 = 0;
  std::string text;
  uint64_t value2 = 0;
  uint64_t value3 = 0;
  uint64_t value4 = 0;
  int64_t signedValue = 0;
  uint64_t value5 = 0;

  bool operator==(const VolumeProperty&) const = default;
};

class AppTypeStore {
 public:
  explicit AppTypeStore(Store& store) : store_(store) {}

  CLmError Lookup(uint64_t clientId, uint64_t appTypeId, AppTypeInfo* out);

  // Puts the application type on the client, with value 0. Already there: kStoreErrConflict.
  CLmError Create(uint64_t clientId, uint64_t appTypeId);

  // Sets the value of the application type on the client.
  CLmError Update(uint64_t clientId, uint64_t appTypeId, uint64_t value);

  // Takes the application type off the client, with everything under it (instances, backup
  // sets, subclients, their content and properties). Refused with kStoreErrConflict while any
  // instance under it is not marked deleted: a delete-all first marks the whole subtree, so
  // removing configuration that is in use always takes two deliberate steps.
  CLmError Remove(uint64_t clientId, uint64_t appTypeId);

  // The id under which the pair's properties are kept (client_app_types.id).
  CLmError SurrogateId(uint64_t clientId, uint64_t appTypeId, uint64_t* id);

  // Stores the record, replacing the one of the same volume of the same pair.
  CLmError SetVolumeProperty(const VolumeProperty& record);
  // The record of one volume; kStoreErrNotFound when there is none.
  CLmError GetVolumeProperty(uint64_t clientId, uint64_t appTypeId, uint64_t volumeId,
                             VolumeProperty* out);

 private:
  Store& store_;
};

// Within `txn`: the surrogate id of the pair, or the failure the header describes.
CLmError ResolveClientAppType(Store::Transaction& txn, uint64_t clientId, uint64_t appTypeId,
                              uint64_t* id);

}  // namespace appmgr::server
