// DomainStore: the domain record, of which an installation has at most one.
//
// The record is four ids, six texts and a 32-bit number: the domain's id, the Controlhost's
// client id, two further ids; the domain's name, the Controlhost's host name, a description, a
// version and two further texts, each kept as given. The number is fixed when the domain is
// created: a modify keeps it.
//
// Because there is only one, the domain may be named by id 0 ("the domain") for a lookup and a
// modify; a remove must name its id, so that nothing is removed by accident. An id that is not
// the domain's is kStoreErrNotFound. Every operation is one transaction; outputs are written
// only on success.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct Domain {
  uint64_t id = 0;
  uint64_t controlhostClientId = 0;
  uint64_t id3 = 0;
  uint64_t id4 = 0;
  std::string name;
  std::string controlhostHost;
  std::string description;
  std::string version;
  std::string text5;
  std::string text6;
  int32_t number = 0;

  bool operator==(const Domain&) const = default;
};

class DomainStore {
 public:
  explicit DomainStore(Store& store) : store_(store) {}

  // The domain; `id` 0 or the domain's own.
  CLmError Lookup(uint64_t id, Domain* out);

  // Creates the domain from `domain` (id 0 takes id 1); *created is the record as stored.
  // Refused with kStoreErrConflict when the installation has a domain already. An empty name,
  // or an id above the highest the store keeps (2^63 - 1), is kStoreErrInvalidArgument.
  CLmError Create(const Domain& domain, Domain* created);

  // Replaces every field of the domain named by `domain.id` (0 or its own) but the id and the
  // number; *stored is the record as stored. An empty name is kStoreErrInvalidArgument.
  CLmError Modify(const Domain& domain, Domain* stored);

  // Removes the domain `id`, with its properties. Id 0 is kStoreErrInvalidArgument.
  CLmError Remove(uint64_t id);

 private:
  Store& store_;
};

}  // namespace appmgr::server
