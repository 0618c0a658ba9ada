#include "tools/appmgrctl/Commands.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <list>
#include <type_traits>
#include <utility>

#include <CLI/CLI.hpp>

#include "tools/appmgrctl/Library.h"

namespace appmgrctl {

static_assert(sizeof(long) == 8 && sizeof(unsigned long) == 8,
              "ids and values of the library are 64-bit longs");

Outcome Outcome::Ok(Result result) {
  Outcome o;
  o.result = std::move(result);
  return o;
}

Outcome Outcome::Failed(int status, std::string error) {
  Outcome o;
  o.ok = false;
  o.status = status;
  o.error = std::move(error);
  return o;
}

namespace {

// ---------------------------------------------------------------------------------------------
// Arguments

bool ParseMagnitude(std::string_view text, uint64_t* value) {
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  if (text.empty()) return false;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), *value, base);
  return ec == std::errc() && end == text.data() + text.size();
}

// Decimal or 0x-hexadecimal, fitting T, with a '-' only where T is signed.
template <class T>
bool ParseNumber(std::string_view text, T* value) {
  bool negative = std::is_signed_v<T> && !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  uint64_t magnitude = 0;
  if (!ParseMagnitude(text, &magnitude)) return false;
  if constexpr (std::is_signed_v<T>) {
    const uint64_t limit = negative ? uint64_t{1} << 63 : uint64_t{INT64_MAX};
    if (magnitude > limit) return false;
    // Two's complement: -2^63 is representable although its magnitude is not.
    *value = negative ? static_cast<T>(0 - magnitude) : static_cast<T>(magnitude);
  } else {
    *value = static_cast<T>(magnitude);
  }
  return true;
}

// CLI11's own conversion takes "-1" for an unsigned option (as 2^64 - 1) and reads a leading 0
// as octal. Every number therefore passes through this transform first, which refuses those and
// rewrites the text as plain decimal for CLI11 to store.
template <class T>
CLI::Validator Number() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        T value{};
        if (!ParseNumber(text, &value)) {
          return std::string(std::is_signed_v<T> ? "not a 64-bit integer: "
                                                 : "not an unsigned 64-bit integer: ") +
                 text;
        }
        text = std::to_string(value);
        return {};
      },
      // No description: CLI11 already names the type (INT, UINT) in --help.
      "");
}

void IdArg(CLI::App& cmd, Args& a) {
  cmd.add_option("ID", a.id, "the backup set's id")->required()->transform(Number<unsigned long>());
}

void OnlyId(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
}

void UpdateArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("--name", a.name, "the new name")->required();
  // Required, not looked up: a read-then-write of the current value is two exchanges, and the
  // read may be answered by the message cache, so the value written back could be stale.
  cmd.add_option("--value", a.value, "the new value (the server sets name and value together)")
      ->required()
      ->transform(Number<long>());
}

void PropsArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("--table", a.table, "the property table to read")
      ->transform(Number<long>())
      ->capture_default_str();
}

void SetPropsArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("NAME=VALUE", a.words,
                 "properties to set; none with --replace clears the backup set's properties")
      ->check(CLI::Validator(
          [](std::string& text) -> std::string {
            size_t eq = text.find('=');
            if (eq == std::string::npos || eq == 0) return "not NAME=VALUE: " + text;
            return {};
          },
          ""));
  cmd.add_option("--type", a.type, "the type of every property given")
      ->transform(Number<unsigned long>())
      ->capture_default_str();
  cmd.add_flag("--replace", a.replace,
               "make the list the whole property table instead of adding to it");
  cmd.callback([&a] {
    if (a.words.empty() && !a.replace) {
      throw CLI::ValidationError("give NAME=VALUE properties, or --replace to clear them all");
    }
  });
}

void RemovePropsArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("NAME", a.words, "names of the properties to remove")->required();
  cmd.add_flag("--strict", a.strict, "remove nothing and fail when any name is absent");
}

void DefaultSubclientArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("STORE", a.store, "the store's name")->required();
}

void PairConflictArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("SOURCE", a.source, "source of the proposed pair")->required();
  cmd.add_option("DESTINATION", a.destination, "destination of the proposed pair")->required();
}

void InterfacePairArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("PAIR", a.pair, "the replication pair's id")
      ->required()
      ->transform(Number<unsigned long>());
  cmd.add_option("--selector", a.selector, "which interface pair of the replication pair")
      ->transform(Number<unsigned long>())
      ->capture_default_str();
}

void SystemStateArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a);
  cmd.add_option("NAME", a.name, "the system-state name")->required();
}

void NoArgs(CLI::App&, Args&) {}

void PreInstallArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("HOST", a.host, "the Controlhost (host or host:port)")->required();
  cmd.add_option("--host-client", a.hostClient,
                 "the client name the Controlhost is known by (default: HOST)");
}

void FillCacheArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("JOBID", a.jobId, "the job whose prepared answers to load")
      ->required()
      ->transform(Number<unsigned long>());
}

void BatchArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("FILE", a.file, "the file of commands, or - for standard input")
      ->required()
      ->check(CLI::Validator(
          [](std::string& text) -> std::string {
            std::error_code ec;
            if (text != "-" && !std::filesystem::is_regular_file(text, ec)) {
              return "no such file: " + text;
            }
            return {};
          },
          ""));
  cmd.add_flag("--keep-going", a.keepGoing, "run the remaining lines after a failed one");
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

class PropertyRows : public PropCallBack {
 public:
  void addProperty(const std::string& name, unsigned long type, const std::string& value,
                   long) override {
    rows.push_back({{"name", name}, {"type", type}, {"value", value}});
  }
  Json rows = Json::array();
};

Outcome Props(Library& lib, const Args& a) {
  std::string error;
  PropertyRows rows;
  int status = lib.backupSets().getProperties(a.id, a.table, error, &rows, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::List({"name", "type", "value"}, std::move(rows.rows)));
}

Outcome SetProps(Library& lib, const Args& a) {
  // The declaration checked every word for a '=' after a non-empty name.
  std::vector<ApplProperty> properties;
  properties.reserve(a.words.size());
  for (const std::string& word : a.words) {
    size_t eq = word.find('=');
    properties.emplace_back(word.substr(0, eq), a.type, word.substr(eq + 1));
  }
  std::list<const ApplProperty*> list;
  for (const ApplProperty& p : properties) list.push_back(&p);
  std::string error;
  int status = lib.backupSets().setProperties(a.id, list, a.replace, error, nullptr, nullptr);
  if (status != 0) return Outcome::Failed(status, error);
  Json names = Json::array();
  for (const ApplProperty& p : properties) names.push_back(p.getName());
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

Json PoolJson(uint32_t exists, uint64_t open, uint64_t lent, uint64_t attached, uint64_t replaced) {
  return {{"exists", exists != 0},
          {"open", open},
          {"lent", lent},
          {"attached", attached},
          {"replaced", replaced}};
}

Outcome Stats(Library& lib, const Args&) {
  AppMgrNetStatistics s{};
  if (int status = lib.GetClientLibraryStatistics(&s); status != 0) {
    return Outcome::Failed(status);
  }
  return Outcome::Ok(
      Result::Record({{"cacheInUse", s.cacheInUse != 0},
                      {"totalCalls", s.totalMessageCalls},
                      {"skippedCalls", s.skippedMessageCalls},
                      {"cacheEntries", s.messagesInCache},
                      {"cacheBytes", s.cacheBytes},
                      {"maxCachedRequestBytes", s.maxSendMessageSize},
                      {"fullPool", PoolJson(s.fullPoolExists, s.fullPoolOpen, s.fullPoolLent,
                                            s.fullPoolAttached, s.fullPoolReplaced)},
                      {"litePool", PoolJson(s.litePoolExists, s.litePoolOpen, s.litePoolLent,
                                            s.litePoolAttached, s.litePoolReplaced)}}));
}

// GetDataInPreInstallMode and EnableServerSideMessageCache pass on a success flag, not a
// status: non-zero is success and 0 failure, with no text. The library logs the cause, so the
// failure line says where to look.
Outcome PreInstallUrl(Library& lib, const Args& a) {
  std::string url;
  int result = lib.GetDataInPreInstallMode(a.host, url, a.hostClient);
  if (result == 0) {
    return Outcome::Failed(
        result, "no web console address from " + a.host + " (the library's log has the cause)");
  }
  return Outcome::Ok(Result::Record({{"host", a.host}, {"url", url}}));
}

Outcome FillCache(Library& lib, const Args& a) {
  if (int result = lib.EnableServerSideMessageCache(a.jobId); result == 0) {
    return Outcome::Failed(result,
                           "the message cache was not filled for job " + std::to_string(a.jobId) +
                               " (it may be switched off; the library's log has the cause)");
  }
  return Outcome::Ok(Result::Record({{"jobId", a.jobId}, {"loaded", true}}));
}

// ---------------------------------------------------------------------------------------------
// The table

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
    {"", "stats", "Show the library's call, cache and session-pool counters", NoArgs, Stats},
    {"", "preinstall-url", "Ask a Controlhost for its web console address before installation",
     PreInstallArgs, PreInstallUrl},
    {"", "fill-cache", "Load the answers the server prepared for a job into the message cache",
     FillCacheArgs, FillCache},
    {"", "batch",
     "Run one command per line of FILE in this one process, so repeated reads can be answered "
     "from the message cache",
     BatchArgs, nullptr},
};

}  // namespace

std::span<const Command> CommandTable() {
  return kCommands;
}

std::span<const CommandGroup> CommandGroups() {
  return kGroups;
}

}  // namespace appmgrctl
