// appmgrctl bs ...: the backup-set interface, one command per operation.
#include <cstring>
#include <list>
#include <string>
#include <vector>

#include "appmgr/BSInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

// ---------------------------------------------------------------------------------------------
// Arguments

void SetId(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the backup set's id");
}

void OnlyId(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
}

void UpdateArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("--name", a.name, "the new name")->required();
  // Required, not looked up: a read-then-write of the current value is two exchanges, and the
  // read may be answered by the message cache, so the value written back could be stale.
  cmd.add_option("--value", a.value, "the new value (the server sets name and value together)")
      ->required()
      ->transform(Number<long>());
}

void PropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  PropsTableOption(cmd, a);
}

void SetPropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  SetPropsOptions(cmd, a, "the backup set's properties");
}

void RemovePropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  RemovePropsOptions(cmd, a);
}

void DefaultSubclientArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("STORE", a.store, "the store's name")->required();
}

void PairConflictArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("SOURCE", a.source, "source of the proposed pair")->required();
  cmd.add_option("DESTINATION", a.destination, "destination of the proposed pair")->required();
}

void InterfacePairArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("PAIR", a.pair, "the replication pair's id")
      ->required()
      ->transform(Number<unsigned long>());
  cmd.add_option("--selector", a.selector, "which interface pair of the replication pair")
      ->transform(Number<unsigned long>())
      ->capture_default_str();
}

void SystemStateArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("NAME", a.name, "the system-state name")->required();
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each, the answer as a Result.

Outcome Lookup(Library& lib, const Args& a) {
  std::string name, description, error;
  long value = 0;
  unsigned long out1 = 0, out2 = 0, out3 = 0, out4 = 0;
  int status = lib.backupSets().lookup(a.id, name, value, out1, out2, out3, description, out4,
                                       error, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record(
      {{"id", a.id}, {"name", name}, {"value", value}, {"description", description}}));
}

Outcome Update(Library& lib, const Args& a) {
  std::string error;
  long value = a.value;
  int status =
      lib.backupSets().update(a.id, a.name, value, false, 0, 0, 0, std::string(), error, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record({{"id", a.id}, {"name", a.name}, {"value", a.value}}));
}

Outcome SetContentsDeleted(Library& lib, const Args& a, bool deleted) {
  std::string error;
  int status = deleted ? lib.backupSets().deleteAll(a.id, error, nullptr)
                       : lib.backupSets().undeleteAll(a.id, error, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record({{"id", a.id}, {"contentsDeleted", deleted}}));
}

Outcome DeleteAll(Library& lib, const Args& a) {
  return SetContentsDeleted(lib, a, true);
}
Outcome UndeleteAll(Library& lib, const Args& a) {
  return SetContentsDeleted(lib, a, false);
}

Outcome Props(Library& lib, const Args& a) {
  std::string error;
  PropertyRows rows;
  int status = lib.backupSets().getProperties(a.id, a.table, error, &rows, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::List({"name", "type", "value"}, std::move(rows.rows)));
}

Outcome SetProps(Library& lib, const Args& a) {
  PropertyList list(a.words, a.type);
  std::string error;
  int status =
      lib.backupSets().setProperties(a.id, list.pointers, a.replace, error, nullptr, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  Json names = Json::array();
  for (const ApplProperty& p : list.properties) names.push_back(p.getName());
  return Outcome::Ok(
      Result::Record({{"id", a.id}, {"set", std::move(names)}, {"replace", a.replace}}));
}

Outcome RemoveProps(Library& lib, const Args& a) {
  std::list<std::string> names(a.words.begin(), a.words.end());
  std::string error;
  int status = lib.backupSets().removeProperties(a.id, names, a.strict, error, nullptr, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", a.words}, {"strict", a.strict}}));
}

Outcome DefaultSubclient(Library& lib, const Args& a) {
  std::string error;
  unsigned long subclient = 0;
  int status =
      lib.backupSets().getDefaultSubclientForStore(subclient, a.id, a.store, error, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record({{"id", a.id}, {"store", a.store}, {"subclient", subclient}}));
}

Outcome Stores(Library& lib, const Args& a) {
  std::string error;
  std::list<std::string> stores;
  int status = lib.backupSets().getStoreList(a.id, stores, error, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::List({"store"}, Json(stores)));
}

Outcome Wildcards(Library& lib, const Args& a) {
  std::string error;
  std::list<std::string> expressions;
  int status = lib.backupSets().getWildcardExpressionList(a.id, expressions, error, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::List({"expression"}, Json(expressions)));
}

template <size_t N>
std::string Chars(const char (&text)[N]) {
  return std::string(text, strnlen(text, N));
}

// Field names follow appmgrd's meaning of the record (docs/server.md); the library only
// carries the values.
Json PairJson(const DataPairConflict& p) {
  return {{"pair", p.id1},
          {"backupSet", p.id2},
          {"sourceClient", p.id3},
          {"destinationClient", p.id4},
          {"source", Chars(p.text1)},
          {"sourceGuid", Chars(p.text2)},
          {"destinationGuid", Chars(p.text3)},
          {"destination", Chars(p.text4)},
          {"state", p.value}};
}

Outcome PairConflict(Library& lib, const Args& a) {
  bool conflict = false;
  DataPairConflict existing, proposed;
  int status = lib.backupSets().doesNewPairConflict(a.id, conflict, a.source, a.destination,
                                                    existing, proposed, nullptr);
  if (status != 0) return Outcome::Failed(status);
  // Without a conflict the server sends an all-zero first pair: shown as none, not as pair 0.
  return Outcome::Ok(Result::Record({{"id", a.id},
                                     {"conflict", conflict},
                                     {"existing", conflict ? PairJson(existing) : Json()},
                                     {"proposed", PairJson(proposed)}}));
}

Outcome InterfacePair(Library& lib, const Args& a) {
  std::string first, second, error;
  unsigned long selector = a.selector;
  int status = lib.backupSets().getFRdataInterfacePair(a.id, a.pair, selector, first, second, error,
                                                       nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record({{"id", a.id},
                                     {"pair", a.pair},
                                     {"selector", a.selector},
                                     {"first", first},
                                     {"second", second}}));
}

Outcome ClientId(Library& lib, const Args& a) {
  std::string error;
  unsigned long client = 0;
  int status = lib.backupSets().getClientIdForBackupSet(a.id, client, error, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record({{"id", a.id}, {"client", client}}));
}

Outcome SystemState(Library& lib, const Args& a) {
  std::list<FLRSystemStateInfo> infos;
  int status = lib.backupSets().getFLRSystemStateInfo(a.id, a.name, infos, nullptr);
  if (status != 0) return Outcome::Failed(status);
  Json rows = Json::array();
  for (const FLRSystemStateInfo& info : infos) {
    Json pairs = Json::array();
    for (const PairData& p : info.pairs) pairs.push_back({{"id", p.id}, {"name", p.name}});
    rows.push_back({{"id", info.id},
                    {"value", info.value},
                    {"text1", info.text1},
                    {"text2", info.text2},
                    {"pairs", std::move(pairs)}});
  }
  return Outcome::Ok(Result::List({"id", "value", "text1", "text2", "pairs"}, std::move(rows)));
}

constexpr CommandGroup kGroups[] = {
    {"bs", "Backup sets: look one up, change it, read its stores, properties and pairs"},
};

constexpr Command kCommands[] = {
    {"bs", "lookup", "Show a backup set's name, value and description", OnlyId, Lookup},
    {"bs", "update", "Rename a backup set and set its value", UpdateArgs, Update},
    {"bs", "delete-all", "Mark every content of a backup set deleted", OnlyId, DeleteAll},
    {"bs", "undelete-all", "Mark every content of a backup set not deleted", OnlyId, UndeleteAll},
    {"bs", "props", "List a backup set's properties", PropsArgs, Props},
    {"bs", "set-props", "Set properties of a backup set", SetPropsArgs, SetProps},
    {"bs", "remove-props", "Remove properties of a backup set by name", RemovePropsArgs,
     RemoveProps},
    {"bs", "default-subclient", "Show the default subclient of one of a backup set's stores",
     DefaultSubclientArgs, DefaultSubclient},
    {"bs", "stores", "List a backup set's stores", OnlyId, Stores},
    {"bs", "wildcards", "List a backup set's wildcard expressions", OnlyId, Wildcards},
    {"bs", "pair-conflict",
     "Check whether a new replication pair would conflict with an existing one", PairConflictArgs,
     PairConflict},
    {"bs", "interface-pair", "Show the interfaces that carry a replication pair's data",
     InterfacePairArgs, InterfacePair},
    {"bs", "client-id", "Show the client that owns a backup set", OnlyId, ClientId},
    {"bs", "system-state", "List a backup set's system-state records of one name", SystemStateArgs,
     SystemState},
};

}  // namespace

CommandFamily BackupSetCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
