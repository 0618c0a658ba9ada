// appmgrctl list ...: the entity lists of the adapters interface, filters as options. Each
// command makes one list call and prints its members as rows; which call a combination of
// filters makes is in docs/cli.md.
#include <list>
#include <string>
#include <vector>

#include "appmgr/AdaptersInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

using L = std::list<unsigned long>;
using N = std::list<std::string>;
using F = std::list<bool>;

// ---------------------------------------------------------------------------------------------
// Arguments

CLI::Option* IdOption(CLI::App& cmd, const char* name, unsigned long& out, const char* what) {
  return cmd.add_option(name, out, what)->transform(Number<unsigned long>());
}

void DeletedFlag(CLI::App& cmd, Args& a) {
  cmd.add_flag("--deleted", a.listDeleted, "list members whose contents are marked deleted too");
}

void ClientsArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--platform", a.listPlatformBits, "clients with any of these platform type bits");
  IdOption(cmd, "--app-type", a.listAppType, "clients with this application type installed");
  IdOption(cmd, "--group", a.listGroup, "members of this client group");
  cmd.add_flag("--host-names", a.listHostNames, "name each client by its host name");
  cmd.add_flag("--with-platform", a.listWithPlatform,
               "every client with its platform type bits (takes no filter)");
  cmd.callback([&a] {
    if (a.listWithPlatform && (a.listPlatformBits || a.listAppType || a.listGroup)) {
      throw CLI::ValidationError("--with-platform lists every client; it takes no filter");
    }
    if (a.listGroup && a.listPlatformBits && a.listAppType) {
      throw CLI::ValidationError(
          "no list filters by group, application type and platform bits at once; drop one");
    }
    if (a.listGroup && a.listPlatformBits && a.listHostNames) {
      throw CLI::ValidationError("the list by group and platform bits has no host names");
    }
  });
}

void AppTypesArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--client", a.listClient, "the application types installed on this client");
  DeletedFlag(cmd, a);
}

void InstancesArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--client", a.listClient, "instances on this client");
  IdOption(cmd, "--app-type", a.listAppType, "instances of this application type");
  IdOption(cmd, "--group", a.listGroup, "instances on the members of this client group");
  DeletedFlag(cmd, a);
}

void BackupSetsArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--client", a.listClient, "backup sets on this client");
  IdOption(cmd, "--app-type", a.listAppType, "backup sets of this application type");
  IdOption(cmd, "--instance", a.listInstance, "backup sets of this instance");
  DeletedFlag(cmd, a);
}

void SubclientsArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--client", a.listClient, "subclients on this client");
  IdOption(cmd, "--app-type", a.listAppType, "subclients of this application type");
  IdOption(cmd, "--instance", a.listInstance, "subclients of this instance");
  IdOption(cmd, "--backupset", a.listBackupSet, "subclients of this backup set");
  DeletedFlag(cmd, a);
}

void SiblingsArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.listSubclient, "SUBCLIENT", "the subclient whose siblings to list");
  DeletedFlag(cmd, a);
}

void GroupsArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--client", a.listClient, "groups this client is a member of");
  IdOption(cmd, "--also-client", a.listSecondClient, "and this second client too");
}

void TypeArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--type", a.listType, "only this type");
}

void AppIdsArgs(CLI::App& cmd, Args& a) {
  for (int i = 0; i < 5; ++i) {
    static const char* const kNames[] = {"--number3", "--number4", "--number5", "--number6",
                                         "--number7"};
    IdOption(cmd, kNames[i], a.listAppIdNumbers[i], "application ids with this number");
  }
  IdOption(cmd, "--archive-group", a.listArchiveGroup, "application ids of this archive group");
  IdOption(cmd, "--incr-archive-group", a.listIncrArchiveGroup,
           "application ids of this incremental archive group");
  cmd.callback([&a] {
    bool byNumber = false;
    for (unsigned long n : a.listAppIdNumbers) byNumber = byNumber || n != 0;
    if (byNumber && (a.listArchiveGroup || a.listIncrArchiveGroup)) {
      throw CLI::ValidationError("filter by numbers or by archive groups, not both");
    }
  });
}

void DomainsArgs(CLI::App& cmd, Args& a) {
  IdOption(cmd, "--id", a.listDomainId, "only the domain record with this id");
}

void DomainClientsArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("DOMAIN", a.listDomainName, "the domain's name, any case (default: every domain)");
}

void CloudClientsArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.listCloud, "CLOUD", "the cloud's id");
}

// ---------------------------------------------------------------------------------------------
// Handlers

// Calls `f` with the adapters object.
template <class F>
Outcome WithAdapters(Library& lib, F f) {
  return WithInterface<AdaptersInterface>(lib, APPMGR_INTERFACE_ADAPTERS, "adapters", f);
}

// Rows of ids and names under the columns `idColumn` and `nameColumn`.
Json PairRows(const L& ids, const N& names, const char* idColumn = "id",
              const char* nameColumn = "name") {
  Json rows = Json::array();
  auto name = names.begin();
  for (unsigned long id : ids) rows.push_back({{idColumn, id}, {nameColumn, *name++}});
  return rows;
}

Outcome PairList(int status, const std::string& error, const L& ids, const N& names,
                 const char* nameColumn = "name") {
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::List({"id", nameColumn}, PairRows(ids, names, "id", nameColumn)));
}

Outcome Clients(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids, values;
    N names;
    std::string error;
    const char* nameColumn = a.listHostNames ? "hostName" : "name";
    if (a.listWithPlatform) {
      int status = ad.getClientList(ids, names, values, error, nullptr, a.listHostNames);
      if (status != 0) return Outcome::Failed(status, error);
      Json rows = Json::array();
      auto name = names.begin();
      auto value = values.begin();
      for (unsigned long id : ids) {
        rows.push_back({{"id", id}, {nameColumn, *name++}, {"platform", *value++}});
      }
      return Outcome::Ok(Result::List({"id", nameColumn, "platform"}, std::move(rows)));
    }
    int status = 0;
    const int flag = a.listHostNames ? 1 : 0;
    if (a.listGroup && a.listPlatformBits) {
      status =
          ad.getClientListByAppGroup(ids, names, error, a.listGroup, a.listPlatformBits, nullptr);
    } else if (a.listGroup) {
      status = ad.getClientList(ids, names, error, a.listGroup, a.listAppType, nullptr, flag);
    } else if (a.listAppType) {
      status = ad.getClientListOfType(ids, names, error, a.listPlatformBits, a.listAppType, nullptr,
                                      a.listHostNames);
    } else {
      status = ad.getClientList(ids, names, error, a.listPlatformBits, nullptr, flag);
    }
    return PairList(status, error, ids, names, nameColumn);
  });
}

Outcome AppTypes(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    std::string error;
    int status = ad.getApplicationTypes(ids, names, error, a.listClient, nullptr, a.listDeleted);
    return PairList(status, error, ids, names);
  });
}

Outcome Instances(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    std::string error;
    int status = ad.getInstanceList(ids, names, error, a.listClient, a.listAppType, a.listGroup,
                                    nullptr, a.listDeleted);
    return PairList(status, error, ids, names);
  });
}

// Ids, names and the deleted mark of each.
Outcome FlaggedList(int status, const std::string& error, const L& ids, const N& names,
                    const F& deleted) {
  if (status != 0) return Outcome::Failed(status, error);
  Json rows = Json::array();
  auto name = names.begin();
  auto flag = deleted.begin();
  for (unsigned long id : ids)
    rows.push_back({{"id", id}, {"name", *name++}, {"deleted", *flag++}});
  return Outcome::Ok(Result::List({"id", "name", "deleted"}, std::move(rows)));
}

Outcome BackupSets(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    F deleted;
    std::string error;
    int status = ad.getBackupSetList(ids, names, deleted, error, a.listClient, a.listAppType,
                                     a.listInstance, nullptr, a.listDeleted);
    return FlaggedList(status, error, ids, names, deleted);
  });
}

Outcome Subclients(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    F deleted;
    std::string error;
    // The list by instance and backup set also tells which subclients are marked deleted; the
    // one by client and application type does not.
    if (a.listClient == 0 && a.listAppType == 0) {
      int status = ad.getSubclientList(ids, names, deleted, error, a.listInstance, a.listBackupSet,
                                       nullptr, a.listDeleted);
      return FlaggedList(status, error, ids, names, deleted);
    }
    int status = ad.getSubclientList(ids, names, error, a.listClient, a.listAppType, a.listInstance,
                                     a.listBackupSet, nullptr, a.listDeleted);
    return PairList(status, error, ids, names);
  });
}

Outcome Siblings(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    unsigned long client = 0, appType = 0, instance = 0, backupSet = 0, defaultSubclient = 0;
    std::string error;
    int status =
        ad.getSiblingSubclientList(a.listSubclient, ids, names, client, appType, instance,
                                   backupSet, defaultSubclient, error, nullptr, a.listDeleted);
    if (status != 0) return Outcome::Failed(status, error);
    // Field names follow appmgrd's meaning of the five values (docs/server.md).
    return Outcome::Ok(Result::Record({{"subclient", a.listSubclient},
                                       {"client", client},
                                       {"appType", appType},
                                       {"instance", instance},
                                       {"backupSet", backupSet},
                                       {"defaultSubclient", defaultSubclient},
                                       {"siblings", PairRows(ids, names)}}));
  });
}

Outcome Groups(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    std::string error;
    int status =
        a.listSecondClient
            ? ad.getClientGroupList(ids, names, error, a.listClient, a.listSecondClient, nullptr, 0)
            : ad.getClientGroupList(ids, names, error, a.listClient, nullptr, 0);
    return PairList(status, error, ids, names);
  });
}

Outcome Providers(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids, values;
    N names, texts;
    F flags;
    std::string error;
    int status = ad.getProvidersList(ids, names, texts, flags, values, error, a.listType, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json rows = Json::array();
    auto name = names.begin();
    auto text = texts.begin();
    auto flag = flags.begin();
    auto value = values.begin();
    for (unsigned long id : ids) {
      rows.push_back({{"id", id},
                      {"name", *name++},
                      {"description", *text++},
                      {"enabled", *flag++},
                      {"value", *value++}});
    }
    return Outcome::Ok(
        Result::List({"id", "name", "description", "enabled", "value"}, std::move(rows)));
  });
}

Outcome AppIds(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    N appIds;
    std::string error;
    int status = 0;
    if (a.listArchiveGroup || a.listIncrArchiveGroup) {
      bool reserved = false;
      status = ad.getApplications(appIds, a.listArchiveGroup, a.listIncrArchiveGroup, reserved,
                                  error, nullptr);
    } else {
      const unsigned long* n = a.listAppIdNumbers;
      status = ad.getAppIdList(appIds, error, n[0], n[1], n[2], n[3], n[4], nullptr, false);
    }
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"appId"}, Json(appIds)));
  });
}

Outcome Clouds(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    std::string error;
    int status = ad.getCloudList(ids, names, a.listType, error, nullptr);
    return PairList(status, error, ids, names);
  });
}

Outcome CloudClients(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L clients, nodes;
    std::string error;
    int status = ad.getCloudClientList(clients, nodes, a.listCloud, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json rows = Json::array();
    auto node = nodes.begin();
    // An access node of 0 is none: shown as null rather than as a client 0.
    for (unsigned long client : clients) {
      unsigned long n = *node++;
      rows.push_back({{"client", client}, {"accessNode", n ? Json(n) : Json()}});
    }
    return Outcome::Ok(Result::List({"client", "accessNode"}, std::move(rows)));
  });
}

Outcome Domains(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L ids;
    N names;
    std::string error;
    int status = ad.getOrbitList(ids, names, error, a.listDomainId, nullptr, false);
    return PairList(status, error, ids, names);
  });
}

Outcome DomainClients(Library& lib, const Args& a) {
  return WithAdapters(lib, [&a](AdaptersInterface& ad) {
    L clients, v1, v2, v3;
    N names, domains;
    std::string error;
    int status = ad.getExDMClientDomainList(a.listDomainName, clients, v1, v2, v3, names, domains,
                                            error, nullptr, false);
    if (status != 0) return Outcome::Failed(status, error);
    Json rows = Json::array();
    auto a1 = v1.begin(), a2 = v2.begin(), a3 = v3.begin();
    auto name = names.begin(), domain = domains.begin();
    for (unsigned long client : clients) {
      rows.push_back({{"client", client},
                      {"name", *name++},
                      {"domain", *domain++},
                      {"value1", *a1++},
                      {"value2", *a2++},
                      {"value3", *a3++}});
    }
    return Outcome::Ok(
        Result::List({"client", "name", "domain", "value1", "value2", "value3"}, std::move(rows)));
  });
}

constexpr CommandGroup kGroups[] = {
    {"list", "Entity lists: clients, instances, backup sets, subclients, groups and more"},
};

constexpr Command kCommands[] = {
    {"list", "clients", "List clients by platform bits, application type or group", ClientsArgs,
     Clients},
    {"list", "apptypes", "List application types, all or a client's", AppTypesArgs, AppTypes},
    {"list", "instances", "List instances by client, application type or group", InstancesArgs,
     Instances},
    {"list", "backupsets", "List backup sets by client, application type or instance",
     BackupSetsArgs, BackupSets},
    {"list", "subclients", "List subclients by client, application type, instance or backup set",
     SubclientsArgs, Subclients},
    {"list", "siblings", "Show where a subclient sits and list the other subclients of its set",
     SiblingsArgs, Siblings},
    {"list", "groups", "List client groups, all or those of one or two clients", GroupsArgs,
     Groups},
    {"list", "providers", "List providers", TypeArgs, Providers},
    {"list", "appids", "List application ids by their numbers or archive groups", AppIdsArgs,
     AppIds},
    {"list", "clouds", "List clouds", TypeArgs, Clouds},
    {"list", "cloud-clients", "List a cloud's clients and their access nodes", CloudClientsArgs,
     CloudClients},
    {"list", "domains", "List the domain records", DomainsArgs, Domains},
    {"list", "domain-clients", "List the clients listed in a domain", DomainClientsArgs,
     DomainClients},
};

}  // namespace

CommandFamily ListCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
