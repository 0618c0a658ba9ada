// ListStore: the entity lists, read from the store by indexed queries and handed over one row at
// a time, so that a caller can place each row straight where its answer needs it.
//
// Each list is one read transaction: the store first counts the rows the list will have, tells
// the sink (Begin), then gives it exactly that many rows (Row) in ascending id, all from one
// snapshot. A sink sized by Begin therefore never grows and never copies: a list of 100,000
// clients costs the answer's own memory and nothing besides. The texts of a row are the
// database's, valid only during the Row call.
//
// Filters: an id of 0 means "any". A filter that names an entity (client, application type,
// instance, backup set, client group, subclient, cloud, domain) that does not exist fails the
// list with kStoreErrNotFound ("client 42 does not exist"), so a mistyped id is not mistaken for
// an empty list. Masks and type numbers are values, not entities: a value nothing matches is an
// empty list. Entities whose contents are marked deleted (client application types, instances,
// backup sets, subclients) are left out unless the filter asks for them.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

// One member of a list. What `text` and `values` hold depends on the list (below).
struct ListRow {
  uint64_t id = 0;
  std::string_view name;
  std::string_view text;
  uint64_t values[3] = {};
};

// Receives a list. Begin comes first, once, with the number of rows; a failure it returns ends
// the list with that failure and no row follows. Then Row comes exactly that many times.
class ListSink {
 public:
  virtual ~ListSink() = default;
  virtual CLmError Begin(size_t rows) = 0;
  virtual void Row(const ListRow& row) = 0;
};

// Which clients a client list holds.
struct ClientFilter {
  uint64_t platformMask = 0;  // clients whose platform type has any of these bits; 0: any
  uint64_t appTypeId = 0;     // clients with this application type installed (not marked deleted)
  uint64_t groupId = 0;       // members of this client group
  bool hostNames = false;     // name each client by its host name instead of its client name
};

// Where in the entity tree a list of instances, backup sets or subclients looks.
struct TreeFilter {
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  uint64_t instanceId = 0;
  uint64_t backupSetId = 0;
  uint64_t groupId = 0;  // on clients that are members of this client group
  bool withDeleted = false;
};

// Where a subclient sits, as the sibling list reports it.
struct SubclientPlace {
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  uint64_t instanceId = 0;
  uint64_t backupSetId = 0;
  // The default subclient of the backup set's first store; 0 when it has no store or that
  // store has no default.
  uint64_t defaultSubclientId = 0;
};

class ListStore {
 public:
  explicit ListStore(Store& store) : store_(store) {}

  // Providers of one type (0: every provider). Row: id, name, text the description, values[0]
  // 1 when enabled, values[1] the provider's value.
  CLmError Providers(uint64_t type, ListSink& sink);

  // Application ids whose numbers 0 to 4 equal `numbers` (a 0 matches anything). Row: id, name
  // the id's text form (numbers 3, 0, 4, 5, 6, 7, 8 and texts 0, 1, 2, joined by
  // KP_STRING_APPLICATIONID_DELIMITER, the form callers write too).
  CLmError AppIds(const uint64_t (&numbers)[5], ListSink& sink);
  // Application ids of an archive group and incremental archive group (0: any). Row as above.
  CLmError AppIdsByArchiveGroup(uint64_t archiveGroup, uint64_t incrArchiveGroup, ListSink& sink);

  // The domain (0: every domain record). Row: id, name (the domain's first text).
  CLmError Domains(uint64_t domainId, ListSink& sink);

  // Row: id, name (or host name), values[0] the platform type bits.
  CLmError Clients(const ClientFilter& filter, ListSink& sink);

  // The application types installed on a client, or with client 0 every application type the
  // installation knows (then withDeleted does not apply). Row: id, name.
  CLmError AppTypes(uint64_t clientId, bool withDeleted, ListSink& sink);

  // Instances by client, application type and client group. Row: id, name.
  CLmError Instances(const TreeFilter& filter, ListSink& sink);
  // Backup sets by client, application type and instance. Row: id, name, values[0] 1 when
  // marked deleted.
  CLmError BackupSets(const TreeFilter& filter, ListSink& sink);
  // Subclients by client, application type, instance and backup set. Row as backup sets.
  CLmError Subclients(const TreeFilter& filter, ListSink& sink);
  // The other subclients of the subclient's backup set, and where the subclient sits.
  CLmError Siblings(uint64_t subclientId, bool withDeleted, SubclientPlace* place, ListSink& sink);

  // The client groups that have client `a` and client `b` as members (0: any). Row: id, name.
  CLmError ClientGroups(uint64_t a, uint64_t b, ListSink& sink);

  // The clients listed in a domain, by its name (any case; empty: every domain). Row: id the
  // client, name the client's name, text the domain's name as stored, values[0..2] its values.
  CLmError DomainClients(std::string_view domain, ListSink& sink);

  // Clouds of one type (0: every cloud). Row: id, name.
  CLmError Clouds(uint64_t type, ListSink& sink);
  // The clients of a cloud. Row: id the client, values[0] its access node (0: none).
  CLmError CloudClients(uint64_t cloudId, ListSink& sink);

 private:
  Store& store_;
};

}  // namespace appmgr::server
