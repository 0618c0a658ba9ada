// ClientGroupStore: client groups and their members.
//
// A group has an id the server gives it when it is created, a name unique among groups
// regardless of case, a description, five integers and a third text that the server keeps as
// given. A client may belong to any number of groups; membership goes with the group or the
// client when either is deleted.
//
// Every operation is one transaction; outputs are written only on success. A group that does
// not exist is kStoreErrNotFound ("client group 4 does not exist", or "no client group is named
// 'x'").
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

struct ClientGroup {
  uint64_t id = 0;
  std::string name;
  std::string description;
  std::string text3;
  uint64_t int2 = 0;
  uint64_t int3 = 0;
  uint64_t int4 = 0;
  uint64_t int5 = 0;
  uint64_t int6 = 0;

  bool operator==(const ClientGroup&) const = default;
};

class ClientGroupStore {
 public:
  explicit ClientGroupStore(Store& store) : store_(store) {}

  // The group of that name, compared regardless of case. An empty name is
  // kStoreErrInvalidArgument.
  CLmError Lookup(const std::string& name, ClientGroup* out);

  // Creates a group from everything in `group` but its id, which the server gives (one above
  // the highest in use). *created is the group as stored. An empty name is
  // kStoreErrInvalidArgument; a name another group has (in any case) is kStoreErrConflict.
  CLmError Create(const ClientGroup& group, ClientGroup* created);

  // Makes the client a member of the group; being one already is not an error.
  CLmError AddMember(uint64_t groupId, uint64_t clientId);
  // Ends the client's membership; kStoreErrNotFound when it is not a member.
  CLmError RemoveMember(uint64_t groupId, uint64_t clientId);
  // The group's member clients, by id.
  CLmError Members(uint64_t groupId, std::vector<uint64_t>* clientIds);
  // The groups the client belongs to, by id.
  CLmError GroupsOfClient(uint64_t clientId, std::vector<uint64_t>* groupIds);

 private:
  Store& store_;
};

}  // namespace appmgr::server
