#include "server/handlers/ListHandlers.h"

#include <cinttypes>
#include <cstdint>

#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/ListStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

// The one value selector of the client list with values: each client's platform type bits.
constexpr uint64_t kValuesArePlatformTypes = 2;

// Sizes the answer's arrays when the store says how many rows come (`size`), then fills element
// i of each from row i (`put`).
template <class Size, class Put>
class AnswerSink final : public ListSink {
 public:
  AnswerSink(Size size, Put put) : size_(size), put_(put) {}

  CLmError Begin(size_t rows) override {
    if (rows > UINT32_MAX) {
      return CLmError::Format(kKpErrLimit, "a list of %zu members does not fit one answer", rows);
    }
    size_(static_cast<uint32_t>(rows));
    return CLmError();
  }
  void Row(const ListRow& row) override { put_(next_++, row); }

 private:
  Size size_;
  Put put_;
  uint32_t next_ = 0;
};

template <class Size, class Put>
AnswerSink<Size, Put> Sink(Size size, Put put) {
  return AnswerSink<Size, Put>(size, put);
}

// A counted array of `n` zeroed elements in the exchange's memory.
template <class T>
void Sized(Exchange& x, uint32_t n, uint32_t& count, T*& items) {
  count = n;
  items = x.Array<T>(n);
}

// An answer of ids and names.
template <class Resp>
auto Pairs(Resp& r, Exchange& x) {
  return Sink(
      [&r, &x](uint32_t n) {
        Sized(x, n, r.idCount, r.ids);
        Sized(x, n, r.nameCount, r.names);
      },
      [&r, &x](uint32_t i, const ListRow& row) {
        r.ids[i] = row.id;
        r.names[i] = x.Text(row.name);
      });
}

// Ids, names and the flag the store puts in values[0].
template <class Resp>
auto PairsWithFlags(Resp& r, Exchange& x) {
  return Sink(
      [&r, &x](uint32_t n) {
        Sized(x, n, r.idCount, r.ids);
        Sized(x, n, r.nameCount, r.names);
        Sized(x, n, r.flagCount, r.flags);
      },
      [&r, &x](uint32_t i, const ListRow& row) {
        r.ids[i] = row.id;
        r.names[i] = x.Text(row.name);
        r.flags[i] = row.values[0];
      });
}

// A string list of the rows' names.
auto Strings(GenericStringListResp& r, Exchange& x) {
  return Sink([&r, &x](uint32_t n) { Sized(x, n, r.count, r.texts); },
              [&r, &x](uint32_t i, const ListRow& row) { r.texts[i] = x.Text(row.name); });
}

CLmError Providers(Store& store, const GetProvidersListReq& req, GetProvidersListResp& r,
                   Exchange& x) {
  auto sink = Sink(
      [&r, &x](uint32_t n) {
        Sized(x, n, r.nameCount, r.names);
        Sized(x, n, r.textCount, r.texts);
        Sized(x, n, r.idCount, r.ids);
        Sized(x, n, r.flagCount, r.flags);
        Sized(x, n, r.valueCount, r.values);
      },
      [&r, &x](uint32_t i, const ListRow& row) {
        r.names[i] = x.Text(row.name);
        r.texts[i] = x.Text(row.text);
        r.ids[i] = row.id;
        r.flags[i] = row.values[0];
        r.values[i] = row.values[1];
      });
  return ListStore(store).Providers(req.selector, sink);
}

CLmError AppIds(Store& store, const GetAppIdListReq& req, GenericStringListResp& r, Exchange& x) {
  const uint64_t numbers[5] = {req.selector1, req.selector2, req.selector3, req.selector4,
                               req.selector5};
  auto sink = Strings(r, x);
  return ListStore(store).AppIds(numbers, sink);
}

CLmError AppIdsByArchiveGroup(Store& store, const GetAppIdListByArchIdReq& req,
                              GenericStringListResp& r, Exchange& x) {
  auto sink = Strings(r, x);
  return ListStore(store).AppIdsByArchiveGroup(req.id1, req.id2, sink);
}

CLmError Domains(Store& store, const GenericListPairReq& req, GenericListPairResp& r, Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).Domains(req.selector, sink);
}

CLmError Clients(Store& store, const ClientFilter& filter, GenericListPairResp& r, Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).Clients(filter, sink);
}

CLmError ClientsByPlatform(Store& store, const GenericListPairReq& req, GenericListPairResp& r,
                           Exchange& x) {
  return Clients(store, {.platformMask = req.selector, .hostNames = req.option != 0}, r, x);
}

CLmError ClientsOfType(Store& store, const GetClientListOfTypeReq& req, GenericListPairResp& r,
                       Exchange& x) {
  return Clients(
      store,
      {.platformMask = req.selector1, .appTypeId = req.selector2, .hostNames = req.flag != 0}, r,
      x);
}

CLmError ClientsByAppType(Store& store, const GetClientListByAppTypeReq& req,
                          GenericListPairResp& r, Exchange& x) {
  return Clients(store, {.appTypeId = req.selector1, .groupId = req.selector2}, r, x);
}

CLmError ClientsByAppGroup(Store& store, const GetClientListByAppGroupReq& req,
                           GenericListPairResp& r, Exchange& x) {
  return Clients(store, {.platformMask = req.selector2, .groupId = req.selector1}, r, x);
}

CLmError ClientsOfGroup(Store& store, const GetClientsByClientGroupReq& req, GenericListPairResp& r,
                        Exchange& x) {
  return Clients(store, {.appTypeId = req.id2, .groupId = req.id1, .hostNames = req.flag != 0}, r,
                 x);
}

CLmError ClientsWithValues(Store& store, const GenericListPairReq& req, ClientListWOSResp& r,
                           Exchange& x) {
  if (req.selector != kValuesArePlatformTypes) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "value selector %" PRIu64
                            " is unknown; this server answers 2 (platform types)",
                            req.selector);
  }
  auto sink = Sink(
      [&r, &x](uint32_t n) {
        Sized(x, n, r.idCount, r.ids);
        Sized(x, n, r.valueCount, r.values);
        Sized(x, n, r.nameCount, r.names);
      },
      [&r, &x](uint32_t i, const ListRow& row) {
        r.ids[i] = row.id;
        r.values[i] = row.values[0];
        r.names[i] = x.Text(row.name);
      });
  return ListStore(store).Clients({.hostNames = req.option != 0}, sink);
}

CLmError AppTypes(Store& store, const GenericListPairReq& req, GenericListPairResp& r,
                  Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).AppTypes(req.selector, req.option != 0, sink);
}

CLmError Instances(Store& store, const GetInstanceListReq& req, GenericListPairResp& r,
                   Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).Instances(
      {.clientId = req.id1, .appTypeId = req.id2, .groupId = req.id3, .withDeleted = req.flag != 0},
      sink);
}

CLmError BackupSets(Store& store, const GetBackupsetListReq& req, BackupsetListResp& r,
                    Exchange& x) {
  auto sink = PairsWithFlags(r, x);
  return ListStore(store).BackupSets({.clientId = req.id1,
                                      .appTypeId = req.id2,
                                      .instanceId = req.id3,
                                      .withDeleted = req.flag != 0},
                                     sink);
}

CLmError Subclients(Store& store, const GetSubclientListReq& req, SubclientListResp& r,
                    Exchange& x) {
  auto sink = PairsWithFlags(r, x);
  return ListStore(store).Subclients(
      {.instanceId = req.id1, .backupSetId = req.id2, .withDeleted = req.flag != 0}, sink);
}

CLmError AllSubclients(Store& store, const GetAllSubclientListReq& req, GetAllSubclientListResp& r,
                       Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).Subclients({.clientId = req.id1,
                                      .appTypeId = req.id2,
                                      .instanceId = req.id3,
                                      .backupSetId = req.id4,
                                      .withDeleted = req.flag != 0},
                                     sink);
}

CLmError Siblings(Store& store, const GetSiblingSCListReq& req, SiblingSCListResp& r, Exchange& x) {
  SubclientPlace place;
  auto sink = Pairs(r, x);
  if (CLmError e = ListStore(store).Siblings(req.subclientId, req.flag != 0, &place, sink)) {
    return e;
  }
  r.value1 = place.clientId;
  r.value2 = place.appTypeId;
  r.value3 = place.instanceId;
  r.value4 = place.backupSetId;
  r.value5 = place.defaultSubclientId;
  return CLmError();
}

CLmError GroupsOfClient(Store& store, const GenericListPairReq& req, GenericListPairResp& r,
                        Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).ClientGroups(req.selector, 0, sink);
}

CLmError GroupsOfClients(Store& store, const GetClientGroupsOfClientReq& req,
                         GenericListPairResp& r, Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).ClientGroups(req.id1, req.id2, sink);
}

CLmError DomainClients(Store& store, const GetEXDMDomainListReq& req, GetEXDMDomainListResp& r,
                       Exchange& x) {
  if (CLmError e = RequireText(req.domain, "domain name")) return e;
  auto sink = Sink(
      [&r, &x](uint32_t n) {
        Sized(x, n, r.idCount, r.ids);
        Sized(x, n, r.value1Count, r.values1);
        Sized(x, n, r.value2Count, r.values2);
        Sized(x, n, r.value3Count, r.values3);
        Sized(x, n, r.text1Count, r.texts1);
        Sized(x, n, r.text2Count, r.texts2);
      },
      [&r, &x](uint32_t i, const ListRow& row) {
        r.ids[i] = row.id;
        r.values1[i] = row.values[0];
        r.values2[i] = row.values[1];
        r.values3[i] = row.values[2];
        r.texts1[i] = x.Text(row.name);
        r.texts2[i] = x.Text(row.text);
      });
  return ListStore(store).DomainClients(req.domain, sink);
}

CLmError Clouds(Store& store, const GetCloudListReq& req, GetCloudListResp& r, Exchange& x) {
  auto sink = Pairs(r, x);
  return ListStore(store).Clouds(req.selector, sink);
}

CLmError CloudClients(Store& store, const GetCloudClientListReq& req, GetCloudClientListResp& r,
                      Exchange& x) {
  auto sink = Sink(
      [&r, &x](uint32_t n) {
        Sized(x, n, r.id1Count, r.ids1);
        Sized(x, n, r.id2Count, r.ids2);
      },
      [&r](uint32_t i, const ListRow& row) {
        r.ids1[i] = row.id;
        r.ids2[i] = row.values[0];
      });
  return ListStore(store).CloudClients(req.cloudId, sink);
}

}  // namespace

void RegisterListHandlers(Server& server, Store& store) {
  Register(server, store, msg::kGetProvidersList, Providers);
  Register(server, store, msg::kGetAppIdList, AppIds);
  Register(server, store, msg::kGetOrbitList, Domains);
  Register(server, store, msg::kGetClientList, ClientsByPlatform);
  Register(server, store, msg::kGetClientListOfType, ClientsOfType);
  Register(server, store, msg::kGetApplicationTypes, AppTypes);
  Register(server, store, msg::kGetInstanceList, Instances);
  Register(server, store, msg::kGetBackupSetList, BackupSets);
  Register(server, store, msg::kGetSubclientList, Subclients);
  Register(server, store, msg::kGetAllSubclientList, AllSubclients);
  Register(server, store, msg::kGetSiblingSubclientList, Siblings);
  Register(server, store, msg::kGetClientListByAppType, ClientsByAppType);
  Register(server, store, msg::kGetClientListByAppGroup, ClientsByAppGroup);
  Register(server, store, msg::kGetAppIdListByArchId, AppIdsByArchiveGroup);
  Register(server, store, msg::kGetClientsByClientGroup, ClientsOfGroup);
  Register(server, store, msg::kGetClientGroupList, GroupsOfClient);
  Register(server, store, msg::kGetClientGroupsOfClient, GroupsOfClients);
  Register(server, store, msg::kGetClientListWithValues, ClientsWithValues);
  Register(server, store, msg::kGetExdmDomainList, DomainClients);
  Register(server, store, msg::kGetCloudList, Clouds);
  Register(server, store, msg::kGetCloudClientList, CloudClients);
}

}  // namespace appmgr::server
