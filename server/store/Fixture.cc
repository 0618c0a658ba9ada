#include "server/store/Fixture.h"

#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/base/EvDebug.h"
#include "server/store/EntityKind.h"
#include "server/store/GlobalParamStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using json = nlohmann::json;

constexpr const char* kLabel = "Store::LoadFixture";
constexpr uint64_t kFormat = 1;

// Walks the fixture and inserts each entry through the transaction. The first failure is kept
// (with the entry's path) and every later step does nothing, so entry functions read all their
// members and run their statement without checking after each step.
class Loader {
 public:
  Loader(Store::Transaction& txn, std::string source) : txn_(txn), source_(std::move(source)) {}

  CLmError Load(const json& root);
  size_t entries() const { return entries_; }

 private:
  bool ok() const { return !error_; }
  void Fail(const std::string& path, int code, const std::string& text);
  void Fail(const std::string& path, const CLmError& e) { Fail(path, e.GetErrorCode(), e.Text()); }

  // True when `j` is an object whose members are all among `keys`.
  bool Object(const json& j, const std::string& path, std::initializer_list<const char*> keys);
  // Member readers: a missing optional member reads as the default; a missing required one or a
  // member of the wrong type fails.
  uint64_t U64(const json& o, const std::string& path, const char* key, bool required = false);
  int64_t I64(const json& o, const std::string& path, const char* key);
  std::string Text(const json& o, const std::string& path, const char* key, bool required = false);
  bool Flag(const json& o, const std::string& path, const char* key);
  uint32_t MessageId(const json& o, const std::string& path, const char* key);
  std::vector<uint8_t> Bytes(const json& o, const std::string& path, const char* key);
  // Calls each(element, elementPath) for every element of the list member `key` (absent: none).
  template <typename Each>
  void ForEach(const json& o, const std::string& path, const char* key, Each each);

  void Run(Statement& st, const std::string& path);
  // Fails with kStoreErrNotFound and `missing` unless `sql`, with `params` bound in order,
  // finds a row.
  void Require(const char* sql, std::initializer_list<uint64_t> params, const std::string& path,
               const std::string& missing);
  void Require(EntityKind kind, uint64_t id, const std::string& path);

  void Domain(const json& j, const std::string& path);
  void AppType(const json& j, const std::string& path);
  void Client(const json& j, const std::string& path);
  void ClientApplication(const json& j, const std::string& path, uint64_t clientId);
  void ClientGroup(const json& j, const std::string& path);
  void Instance(const json& j, const std::string& path);
  void Content(const json& j, const std::string& path, const char* sql, uint64_t ownerId,
               int64_t position);
  void BackupSet(const json& j, const std::string& path);
  void Subclient(const json& j, const std::string& path, uint64_t backupSetId);
  void SetStore(const json& j, const std::string& path, uint64_t backupSetId, int64_t position);
  void ReplicationPair(const json& j, const std::string& path, uint64_t backupSetId);
  void InterfacePair(const json& j, const std::string& path, uint64_t backupSetId);
  void SystemState(const json& j, const std::string& path, uint64_t backupSetId);
  void PropertyEntry(const json& j, const std::string& path);
  void GlobalParam(const json& j, const std::string& path);
  void AppProperty(const json& j, const std::string& path);
  void CacheEntry(const json& j, const std::string& path);
  // Entity lists.
  void Provider(const json& j, const std::string& path);
  void Cloud(const json& j, const std::string& path);
  void DomainClient(const json& j, const std::string& path);
  void AsmInstance(const json& j, const std::string& path);
  void AppId(const json& j, const std::string& path);
  // Subclients.
  void SubclientSettings(const json& j, const std::string& path);
  void FileTypeExtension(const json& j, const std::string& path);
  // Alerts, advisories and log monitoring.
  void AdvisoryType(const json& j, const std::string& path);
  void SourceAdvisory(const json& j, const std::string& path);
  void ClientAdvisory(const json& j, const std::string& path);
  void LogMonitoringParam(const json& j, const std::string& path);
  void Alert(const json& j, const std::string& path);
  // Snapshot records and mailbox delegates.
  void Snapshot(const json& j, const std::string& path);
  void MailboxDelegate(const json& j, const std::string& path);

  Store::Transaction& txn_;
  const std::string source_;
  CLmError error_;
  size_t entries_ = 0;
};

void Loader::Fail(const std::string& path, int code, const std::string& text) {
  if (error_) return;
  error_ = CLmError(code, source_ + ": " + (path.empty() ? "top level" : path) + ": " + text);
}

bool Loader::Object(const json& j, const std::string& path,
                    std::initializer_list<const char*> keys) {
  if (!ok()) return false;
  if (!j.is_object()) {
    Fail(path, kStoreErrInvalidArgument, std::string("must be an object, not ") + j.type_name());
    return false;
  }
  for (const auto& [key, value] : j.items()) {
    bool known = false;
    for (const char* k : keys) known = known || key == k;
    if (!known) {
      Fail(path, kStoreErrInvalidArgument, "unknown member '" + key + "'");
      return false;
    }
  }
  return true;
}

uint64_t Loader::U64(const json& o, const std::string& path, const char* key, bool required) {
  auto it = o.find(key);
  if (it == o.end()) {
    if (required) Fail(path, kStoreErrInvalidArgument, std::string("'") + key + "' is missing");
    return 0;
  }
  if (!it->is_number_unsigned()) {
    Fail(path, kStoreErrInvalidArgument,
         std::string("'") + key + "' must be a whole number of at least 0");
    return 0;
  }
  return it->get<uint64_t>();
}

int64_t Loader::I64(const json& o, const std::string& path, const char* key) {
  auto it = o.find(key);
  if (it == o.end()) return 0;
  bool fits = it->is_number_integer() &&
              (!it->is_number_unsigned() ||
               it->get<uint64_t>() <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()));
  if (!fits) {
    Fail(path, kStoreErrInvalidArgument,
         std::string("'") + key + "' must be a whole number within 64 signed bits");
    return 0;
  }
  return it->get<int64_t>();
}

std::string Loader::Text(const json& o, const std::string& path, const char* key, bool required) {
  auto it = o.find(key);
  if (it == o.end()) {
    if (required) Fail(path, kStoreErrInvalidArgument, std::string("'") + key + "' is missing");
    return std::string();
  }
  if (!it->is_string()) {
    Fail(path, kStoreErrInvalidArgument, std::string("'") + key + "' must be a string");
    return std::string();
  }
  return it->get<std::string>();
}

bool Loader::Flag(const json& o, const std::string& path, const char* key) {
  auto it = o.find(key);
  if (it == o.end()) return false;
  if (!it->is_boolean()) {
    Fail(path, kStoreErrInvalidArgument, std::string("'") + key + "' must be true or false");
    return false;
  }
  return it->get<bool>();
}

uint32_t Loader::MessageId(const json& o, const std::string& path, const char* key) {
  auto it = o.find(key);
  uint64_t id = 0;
  bool good = false;
  if (it != o.end() && it->is_number_unsigned()) {
    id = it->get<uint64_t>();
    good = true;
  } else if (it != o.end() && it->is_string()) {
    const std::string& s = it->get_ref<const std::string&>();
    char* end = nullptr;
    errno = 0;
    id = std::strtoull(s.c_str(), &end, 16);
    good = s.size() > 2 && s.compare(0, 2, "0x") == 0 && *end == '\0' && errno == 0;
  }
  if (!good || id > 0xffffffffu) {
    Fail(path, kStoreErrInvalidArgument,
         std::string("'") + key + "' must be a 32-bit message id, as a number or \"0x...\"");
    return 0;
  }
  return static_cast<uint32_t>(id);
}

std::vector<uint8_t> Loader::Bytes(const json& o, const std::string& path, const char* key) {
  std::string hex = Text(o, path, key, true);
  std::vector<uint8_t> bytes;
  auto digit = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  for (size_t i = 0; ok() && i < hex.size(); i += 2) {
    int high = digit(hex[i]);
    int low = i + 1 < hex.size() ? digit(hex[i + 1]) : -1;
    if (high < 0 || low < 0) {
      Fail(path, kStoreErrInvalidArgument,
           std::string("'") + key + "' must be hex digits, two per byte");
      return {};
    }
    bytes.push_back(static_cast<uint8_t>(high * 16 + low));
  }
  return bytes;
}

template <typename Each>
void Loader::ForEach(const json& o, const std::string& path, const char* key, Each each) {
  if (!ok()) return;
  auto it = o.find(key);
  if (it == o.end()) return;
  std::string listPath = path.empty() ? key : path + "." + key;
  if (!it->is_array()) {
    Fail(listPath, kStoreErrInvalidArgument, "must be a list");
    return;
  }
  for (size_t i = 0; ok() && i < it->size(); ++i) {
    each((*it)[i], listPath + "[" + std::to_string(i) + "]");
  }
}

void Loader::Run(Statement& st, const std::string& path) {
  if (!ok()) return;
  if (CLmError e = st.Run()) {
    Fail(path, e);
    return;
  }
  ++entries_;
}

void Loader::Require(const char* sql, std::initializer_list<uint64_t> params,
                     const std::string& path, const std::string& missing) {
  if (!ok()) return;
  Statement st = txn_.Prepare(sql);
  int index = 1;
  for (uint64_t p : params) st.BindU64(index++, p);
  bool row = false;
  if (CLmError e = st.Step(&row)) {
    Fail(path, e);
  } else if (!row) {
    Fail(path, kStoreErrNotFound, missing);
  }
}

void Loader::Require(EntityKind kind, uint64_t id, const std::string& path) {
  if (!ok()) return;
  if (CLmError e = RequireEntity(txn_, kind, id)) Fail(path, e);
}

CLmError Loader::Load(const json& root) {
  if (!Object(root, "",
              {"format", "domain", "appTypes", "clients", "clientGroups", "instances", "backupSets",
               "properties", "globalParams", "appProperties", "preparedCache", "providers",
               "clouds", "domainClients", "asmInstances", "appIds", "subclientSettings",
               "fileTypeExtensions", "advisoryTypes", "sourceAdvisories", "clientAdvisories",
               "logMonitoringParams", "alerts", "snapshots", "mailboxDelegates"})) {
    return error_;
  }
  if (!root.contains("format")) {
    Fail("format", kStoreErrInvalidArgument, "missing; this server reads format 1");
    return error_;
  }
  uint64_t format = U64(root, "", "format");
  if (ok() && format != kFormat) {
    Fail("format", kStoreErrInvalidArgument,
         std::to_string(format) + " is not a format this server reads (1)");
  }
  if (ok() && root.contains("domain")) Domain(root["domain"], "domain");
  ForEach(root, "", "appTypes", [&](const json& j, const std::string& p) { AppType(j, p); });
  ForEach(root, "", "clients", [&](const json& j, const std::string& p) { Client(j, p); });
  ForEach(root, "", "clientGroups",
          [&](const json& j, const std::string& p) { ClientGroup(j, p); });
  ForEach(root, "", "instances", [&](const json& j, const std::string& p) { Instance(j, p); });
  ForEach(root, "", "backupSets", [&](const json& j, const std::string& p) { BackupSet(j, p); });
  ForEach(root, "", "properties",
          [&](const json& j, const std::string& p) { PropertyEntry(j, p); });
  ForEach(root, "", "globalParams",
          [&](const json& j, const std::string& p) { GlobalParam(j, p); });
  ForEach(root, "", "appProperties",
          [&](const json& j, const std::string& p) { AppProperty(j, p); });
  ForEach(root, "", "preparedCache",
          [&](const json& j, const std::string& p) { CacheEntry(j, p); });
  ForEach(root, "", "providers", [&](const json& j, const std::string& p) { Provider(j, p); });
  ForEach(root, "", "clouds", [&](const json& j, const std::string& p) { Cloud(j, p); });
  ForEach(root, "", "domainClients",
          [&](const json& j, const std::string& p) { DomainClient(j, p); });
  ForEach(root, "", "asmInstances",
          [&](const json& j, const std::string& p) { AsmInstance(j, p); });
  ForEach(root, "", "appIds", [&](const json& j, const std::string& p) { AppId(j, p); });
  ForEach(root, "", "subclientSettings",
          [&](const json& j, const std::string& p) { SubclientSettings(j, p); });
  ForEach(root, "", "fileTypeExtensions",
          [&](const json& j, const std::string& p) { FileTypeExtension(j, p); });
  ForEach(root, "", "advisoryTypes",
          [&](const json& j, const std::string& p) { AdvisoryType(j, p); });
  ForEach(root, "", "sourceAdvisories",
          [&](const json& j, const std::string& p) { SourceAdvisory(j, p); });
  ForEach(root, "", "clientAdvisories",
          [&](const json& j, const std::string& p) { ClientAdvisory(j, p); });
  ForEach(root, "", "logMonitoringParams",
          [&](const json& j, const std::string& p) { LogMonitoringParam(j, p); });
  ForEach(root, "", "alerts", [&](const json& j, const std::string& p) { Alert(j, p); });
  ForEach(root, "", "snapshots", [&](const json& j, const std::string& p) { Snapshot(j, p); });
  ForEach(root, "", "mailboxDelegates",
          [&](const json& j, const std::string& p) { MailboxDelegate(j, p); });
  return error_;
}

void Loader::Domain(const json& j, const std::string& path) {
  if (!Object(j, path,
              {"id", "id2", "id3", "id4", "text1", "text2", "text3", "text4", "text5", "text6",
               "number"})) {
    return;
  }
  int64_t number = I64(j, path, "number");
  if (ok() && (number < INT32_MIN || number > INT32_MAX)) {
    Fail(path, kStoreErrInvalidArgument, "'number' must fit in 32 signed bits");
  }
  // An installation has one domain at most (DomainStore).
  if (ok()) {
    Statement any = txn_.Prepare("SELECT id FROM domain LIMIT 1");
    bool row = false;
    if (CLmError e = any.Step(&row)) {
      Fail(path, e);
    } else if (row) {
      Fail(path, kStoreErrConflict,
           "the installation has a domain already (" + std::to_string(any.U64(0)) + ")");
    }
  }
  Statement st = txn_.Prepare(
      "INSERT INTO domain (id, id2, id3, id4, text1, text2, text3, text4, text5, text6, number)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)");
  st.BindU64(1, U64(j, path, "id", true));
  st.BindU64(2, U64(j, path, "id2"))
      .BindU64(3, U64(j, path, "id3"))
      .BindU64(4, U64(j, path, "id4"));
  const char* texts[] = {"text1", "text2", "text3", "text4", "text5", "text6"};
  for (int i = 0; i < 6; ++i) st.BindText(5 + i, Text(j, path, texts[i]));
  st.BindInt(11, number);
  Run(st, path);
}

void Loader::AppType(const json& j, const std::string& path) {
  if (!Object(j, path, {"id", "name"})) return;
  Statement st = txn_.Prepare("INSERT INTO app_types (id, name) VALUES (?1, ?2)");
  st.BindU64(1, U64(j, path, "id", true)).BindText(2, Text(j, path, "name", true));
  Run(st, path);
}

void Loader::Client(const json& j, const std::string& path) {
  if (!Object(j, path, {"id",    "name",  "hostName",  "platformType", "int3",  "int4",
                        "int5",  "int6",  "int7",      "int8",         "int9",  "int10",
                        "int11", "int12", "text3",     "text4",        "text5", "text6",
                        "text7", "text8", "platforms", "applications"})) {
    return;
  }
  uint64_t id = U64(j, path, "id", true);
  Statement st = txn_.Prepare(
      "INSERT INTO clients (id, name, host_name, platform_type, int3, int4, int5, int6, int7,"
      " int8, int9, int10, int11, int12, text3, text4, text5, text6, text7, text8)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18,"
      " ?19, ?20)");
  st.BindU64(1, id).BindText(2, Text(j, path, "name", true));
  st.BindText(3, Text(j, path, "hostName", true)).BindU64(4, U64(j, path, "platformType"));
  const char* ints[] = {"int3", "int4", "int5",  "int6",  "int7",
                        "int8", "int9", "int10", "int11", "int12"};
  for (int i = 0; i < 10; ++i) st.BindInt(5 + i, I64(j, path, ints[i]));
  const char* texts[] = {"text3", "text4", "text5", "text6", "text7", "text8"};
  for (int i = 0; i < 6; ++i) st.BindText(15 + i, Text(j, path, texts[i]));
  Run(st, path);

  int64_t slot = 0;
  ForEach(j, path, "platforms", [&](const json& p, const std::string& pp) {
    if (!Object(p, pp, {"value", "text"})) return;
    if (slot > 2) {
      Fail(pp, kStoreErrInvalidArgument, "a client has at most 3 platforms");
      return;
    }
    Statement ins = txn_.Prepare(
        "INSERT INTO client_platforms (client_id, slot, value, text) VALUES (?1, ?2, ?3, ?4)");
    ins.BindU64(1, id).BindInt(2, slot++).BindU64(3, U64(p, pp, "value"));
    ins.BindText(4, Text(p, pp, "text"));
    Run(ins, pp);
  });
  ForEach(j, path, "applications",
          [&](const json& a, const std::string& ap) { ClientApplication(a, ap, id); });
}

void Loader::ClientApplication(const json& j, const std::string& path, uint64_t clientId) {
  if (!Object(j, path, {"id", "appType", "value", "contentsDeleted"})) return;
  uint64_t appType = U64(j, path, "appType", true);
  Require("SELECT 1 FROM app_types WHERE id = ?1", {appType}, path,
          "application type " + std::to_string(appType) + " does not exist");
  Statement st = txn_.Prepare(
      "INSERT INTO client_app_types (id, client_id, app_type_id, value, contents_deleted)"
      " VALUES (?1, ?2, ?3, ?4, ?5)");
  st.BindU64(1, U64(j, path, "id", true)).BindU64(2, clientId).BindU64(3, appType);
  st.BindInt(4, I64(j, path, "value")).BindInt(5, Flag(j, path, "contentsDeleted") ? 1 : 0);
  Run(st, path);
}

void Loader::ClientGroup(const json& j, const std::string& path) {
  if (!Object(
          j, path,
          {"id", "name", "int2", "int3", "int4", "int5", "int6", "text2", "text3", "members"})) {
    return;
  }
  uint64_t id = U64(j, path, "id", true);
  Statement st = txn_.Prepare(
      "INSERT INTO client_groups (id, name, int2, int3, int4, int5, int6, text2, text3)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
  st.BindU64(1, id).BindText(2, Text(j, path, "name", true));
  const char* ints[] = {"int2", "int3", "int4", "int5", "int6"};
  for (int i = 0; i < 5; ++i) st.BindInt(3 + i, I64(j, path, ints[i]));
  st.BindText(8, Text(j, path, "text2")).BindText(9, Text(j, path, "text3"));
  Run(st, path);
  ForEach(j, path, "members", [&](const json& m, const std::string& mp) {
    if (!m.is_number_unsigned()) {
      Fail(mp, kStoreErrInvalidArgument, "a member is a client id");
      return;
    }
    uint64_t client = m.get<uint64_t>();
    Require(EntityKind::kClient, client, mp);
    Statement ins =
        txn_.Prepare("INSERT INTO client_group_members (group_id, client_id) VALUES (?1, ?2)");
    ins.BindU64(1, id).BindU64(2, client);
    Run(ins, mp);
  });
}

void Loader::Instance(const json& j, const std::string& path) {
  if (!Object(j, path,
              {"id", "client", "appType", "name", "value", "attr2", "attr3", "attr4", "text",
               "contentsDeleted", "content"})) {
    return;
  }
  uint64_t id = U64(j, path, "id", true);
  uint64_t client = U64(j, path, "client", true);
  uint64_t appType = U64(j, path, "appType", true);
  uint64_t clientAppType = 0;
  if (ok()) {
    Statement find =
        txn_.Prepare("SELECT id FROM client_app_types WHERE client_id = ?1 AND app_type_id = ?2");
    find.BindU64(1, client).BindU64(2, appType);
    bool row = false;
    if (CLmError e = find.Step(&row)) {
      Fail(path, e);
    } else if (!row) {
      Fail(path, kStoreErrNotFound,
           "client " + std::to_string(client) + " has no application type " +
               std::to_string(appType) + " (list it under the client's applications)");
    } else {
      clientAppType = find.U64(0);
    }
  }
  Statement st = txn_.Prepare(
      "INSERT INTO instances (id, client_app_type_id, name, value, attr2, attr3, attr4, text,"
      " contents_deleted) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
  st.BindU64(1, id).BindU64(2, clientAppType).BindText(3, Text(j, path, "name", true));
  st.BindInt(4, I64(j, path, "value")).BindU64(5, U64(j, path, "attr2"));
  st.BindU64(6, U64(j, path, "attr3")).BindU64(7, U64(j, path, "attr4"));
  st.BindText(8, Text(j, path, "text")).BindInt(9, Flag(j, path, "contentsDeleted") ? 1 : 0);
  Run(st, path);
  int64_t position = 0;
  ForEach(j, path, "content", [&](const json& c, const std::string& cp) {
    Content(c, cp,
            "INSERT INTO instance_content (instance_id, position, entry, content_type)"
            " VALUES (?1, ?2, ?3, ?4)",
            id, position++);
  });
}

void Loader::Content(const json& j, const std::string& path, const char* sql, uint64_t ownerId,
                     int64_t position) {
  if (!Object(j, path, {"entry", "type"})) return;
  Statement st = txn_.Prepare(sql);
  st.BindU64(1, ownerId).BindInt(2, position).BindText(3, Text(j, path, "entry", true));
  st.BindInt(4, I64(j, path, "type"));
  Run(st, path);
}

void Loader::BackupSet(const json& j, const std::string& path) {
  if (!Object(j, path,
              {"id", "instance", "name", "value", "description", "contentsDeleted", "subclients",
               "stores", "wildcards", "replicationPairs", "interfacePairs", "systemState"})) {
    return;
  }
  uint64_t id = U64(j, path, "id", true);
  uint64_t instance = U64(j, path, "instance", true);
  Require(EntityKind::kInstance, instance, path);
  Statement st = txn_.Prepare(
      "INSERT INTO backup_sets (id, instance_id, name, value, description, contents_deleted)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
  st.BindU64(1, id).BindU64(2, instance).BindText(3, Text(j, path, "name", true));
  st.BindInt(4, I64(j, path, "value")).BindText(5, Text(j, path, "description"));
  st.BindInt(6, Flag(j, path, "contentsDeleted") ? 1 : 0);
  Run(st, path);

  ForEach(j, path, "subclients",
          [&](const json& s, const std::string& sp) { Subclient(s, sp, id); });
  int64_t position = 0;
  ForEach(j, path, "stores",
          [&](const json& s, const std::string& sp) { SetStore(s, sp, id, position++); });
  position = 0;
  ForEach(j, path, "wildcards", [&](const json& w, const std::string& wp) {
    if (!w.is_string()) {
      Fail(wp, kStoreErrInvalidArgument, "a wildcard expression is a string");
      return;
    }
    Statement ins = txn_.Prepare(
        "INSERT INTO backup_set_wildcards (backup_set_id, position, expression)"
        " VALUES (?1, ?2, ?3)");
    ins.BindU64(1, id).BindInt(2, position++).BindText(3, w.get<std::string>());
    Run(ins, wp);
  });
  ForEach(j, path, "replicationPairs",
          [&](const json& p, const std::string& pp) { ReplicationPair(p, pp, id); });
  ForEach(j, path, "interfacePairs",
          [&](const json& p, const std::string& pp) { InterfacePair(p, pp, id); });
  ForEach(j, path, "systemState",
          [&](const json& s, const std::string& sp) { SystemState(s, sp, id); });
}

void Loader::Subclient(const json& j, const std::string& path, uint64_t backupSetId) {
  if (!Object(j, path,
              {"id", "name", "guid", "value", "attr2", "attr3", "attr4", "text", "contentFlag",
               "contentsDeleted", "content", "storeAssociations", "directoryAssociations"})) {
    return;
  }
  uint64_t id = U64(j, path, "id", true);
  Statement st = txn_.Prepare(
      "INSERT INTO subclients (id, backup_set_id, name, guid, value, attr2, attr3, attr4, text,"
      " content_flag, contents_deleted) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)");
  st.BindU64(1, id).BindU64(2, backupSetId).BindText(3, Text(j, path, "name", true));
  if (j.contains("guid")) {
    st.BindText(4, Text(j, path, "guid"));
  } else {
    st.BindNull(4);
  }
  st.BindInt(5, I64(j, path, "value")).BindU64(6, U64(j, path, "attr2"));
  st.BindU64(7, U64(j, path, "attr3")).BindU64(8, U64(j, path, "attr4"));
  st.BindText(9, Text(j, path, "text")).BindU64(10, U64(j, path, "contentFlag"));
  st.BindInt(11, Flag(j, path, "contentsDeleted") ? 1 : 0);
  Run(st, path);

  int64_t position = 0;
  ForEach(j, path, "content", [&](const json& c, const std::string& cp) {
    Content(c, cp,
            "INSERT INTO subclient_content (subclient_id, position, entry, content_type)"
            " VALUES (?1, ?2, ?3, ?4)",
            id, position++);
  });
  // Association kinds as the schema numbers them: 1 stores, 2 directories.
  for (int kind : {1, 2}) {
    position = 0;
    ForEach(j, path, kind == 1 ? "storeAssociations" : "directoryAssociations",
            [&](const json& a, const std::string& ap) {
              if (!a.is_string()) {
                Fail(ap, kStoreErrInvalidArgument, "an association is a name");
                return;
              }
              Statement ins = txn_.Prepare(
                  "INSERT INTO subclient_associations (subclient_id, kind, position, name)"
                  " VALUES (?1, ?2, ?3, ?4)");
              ins.BindU64(1, id).BindInt(2, kind).BindInt(3, position++);
              ins.BindText(4, a.get<std::string>());
              Run(ins, ap);
            });
  }
}

void Loader::SetStore(const json& j, const std::string& path, uint64_t backupSetId,
                      int64_t position) {
  if (!Object(j, path, {"name", "defaultSubclient"})) return;
  Statement st = txn_.Prepare(
      "INSERT INTO backup_set_stores (backup_set_id, position, name, default_subclient_id)"
      " VALUES (?1, ?2, ?3, ?4)");
  st.BindU64(1, backupSetId).BindInt(2, position).BindText(3, Text(j, path, "name", true));
  if (j.contains("defaultSubclient")) {
    uint64_t subclient = U64(j, path, "defaultSubclient");
    Require("SELECT 1 FROM subclients WHERE id = ?1 AND backup_set_id = ?2",
            {subclient, backupSetId}, path,
            "subclient " + std::to_string(subclient) + " is not a subclient of backup set " +
                std::to_string(backupSetId));
    st.BindU64(4, subclient);
  } else {
    st.BindNull(4);
  }
  Run(st, path);
}

void Loader::ReplicationPair(const json& j, const std::string& path, uint64_t backupSetId) {
  if (!Object(j, path,
              {"id", "destinationClient", "source", "sourceGuid", "destinationGuid", "destination",
               "state"})) {
    return;
  }
  uint64_t destinationClient = U64(j, path, "destinationClient", true);
  Require(EntityKind::kClient, destinationClient, path);
  Statement st = txn_.Prepare(
      "INSERT INTO replication_pairs (id, backup_set_id, destination_client_id, source,"
      " source_guid, destination_guid, destination, state)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)");
  st.BindU64(1, U64(j, path, "id", true)).BindU64(2, backupSetId).BindU64(3, destinationClient);
  st.BindText(4, Text(j, path, "source", true)).BindText(5, Text(j, path, "sourceGuid"));
  st.BindText(6, Text(j, path, "destinationGuid"));
  st.BindText(7, Text(j, path, "destination", true)).BindU64(8, U64(j, path, "state"));
  Run(st, path);
}

void Loader::InterfacePair(const json& j, const std::string& path, uint64_t backupSetId) {
  if (!Object(j, path, {"pair", "selector", "first", "second"})) return;
  uint64_t pair = U64(j, path, "pair", true);
  Require("SELECT 1 FROM replication_pairs WHERE id = ?1 AND backup_set_id = ?2",
          {pair, backupSetId}, path,
          "pair " + std::to_string(pair) + " is not a replication pair of backup set " +
              std::to_string(backupSetId));
  Statement st = txn_.Prepare(
      "INSERT INTO fr_interface_pairs (backup_set_id, pair_id, selector, first_interface,"
      " second_interface) VALUES (?1, ?2, ?3, ?4, ?5)");
  st.BindU64(1, backupSetId).BindU64(2, pair).BindU64(3, U64(j, path, "selector"));
  st.BindText(4, Text(j, path, "first", true)).BindText(5, Text(j, path, "second", true));
  Run(st, path);
}

void Loader::SystemState(const json& j, const std::string& path, uint64_t backupSetId) {
  if (!Object(j, path, {"name", "id", "value", "text1", "text2", "pairs"})) return;
  Statement st = txn_.Prepare(
      "INSERT INTO flr_system_states (backup_set_id, name, info_id, value, text1, text2)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6) RETURNING row_id");
  st.BindU64(1, backupSetId).BindText(2, Text(j, path, "name", true));
  st.BindU64(3, U64(j, path, "id", true)).BindU64(4, U64(j, path, "value"));
  st.BindText(5, Text(j, path, "text1")).BindText(6, Text(j, path, "text2"));
  if (!ok()) return;
  bool row = false;
  if (CLmError e = st.Step(&row)) {
    Fail(path, e);
    return;
  }
  int64_t stateRow = st.Int(0);
  if (CLmError e = st.Run()) {  // finish the statement: RETURNING writes as it goes
    Fail(path, e);
    return;
  }
  ++entries_;
  int64_t position = 0;
  ForEach(j, path, "pairs", [&](const json& p, const std::string& pp) {
    if (!Object(p, pp, {"id", "name"})) return;
    Statement ins = txn_.Prepare(
        "INSERT INTO flr_system_state_pairs (state_row_id, position, pair_id, pair_name)"
        " VALUES (?1, ?2, ?3, ?4)");
    ins.BindInt(1, stateRow).BindInt(2, position++).BindU64(3, U64(p, pp, "id", true));
    ins.BindText(4, Text(p, pp, "name", true));
    Run(ins, pp);
  });
}

void Loader::PropertyEntry(const json& j, const std::string& path) {
  if (!Object(j, path, {"kind", "id", "table", "name", "type", "value"})) return;
  std::string kindName = Text(j, path, "kind", true);
  std::optional<EntityKind> kind = EntityKindFromFixtureName(kindName);
  if (ok() && !kind) {
    Fail(path, kStoreErrInvalidArgument,
         "kind '" + kindName +
             "' is none of domain, client, clientGroup, clientAppType, "
             "instance, backupSet, subclient");
    return;
  }
  uint64_t id = U64(j, path, "id", true);
  if (kind) Require(*kind, id, path);
  Statement st = txn_.Prepare(
      "INSERT INTO properties (entity_kind, entity_id, table_selector, name, type, value)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
  st.BindInt(1, kind ? static_cast<int>(*kind) : 0).BindU64(2, id);
  st.BindInt(3, I64(j, path, "table")).BindText(4, Text(j, path, "name", true));
  st.BindU64(5, U64(j, path, "type")).BindText(6, Text(j, path, "value"));
  Run(st, path);
}

void Loader::GlobalParam(const json& j, const std::string& path) {
  if (!Object(j, path, {"name", "value"})) return;
  std::string name = Text(j, path, "name", true);
  std::string value = Text(j, path, "value");
  // Held to the types the server keeps them in, as a set request would be.
  if (CLmError e = ok() ? CheckGlobalParam(name, &value) : CLmError()) Fail(path, e);
  Statement st = txn_.Prepare("INSERT INTO global_params (name, value) VALUES (?1, ?2)");
  st.BindText(1, name).BindText(2, value);
  Run(st, path);
}

void Loader::AppProperty(const json& j, const std::string& path) {
  if (!Object(j, path, {"id1", "id2", "value"})) return;
  uint64_t app = U64(j, path, "id1", true);
  uint64_t number = U64(j, path, "id2", true);
  std::string value = Text(j, path, "value");
  // id1 is a client application type (an application of a client), as in a set request.
  Require(EntityKind::kClientAppType, app, path);
  if (CLmError e = ok() ? CheckAppProperty(number, &value) : CLmError()) Fail(path, e);
  Statement st = txn_.Prepare("INSERT INTO app_properties (id1, id2, value) VALUES (?1, ?2, ?3)");
  st.BindU64(1, app).BindU64(2, number).BindText(3, value);
  Run(st, path);
}

void Loader::CacheEntry(const json& j, const std::string& path) {
  if (!Object(j, path, {"jobId", "requestId", "responseId", "request", "response"})) return;
  uint64_t job = U64(j, path, "jobId", true);
  Statement st = txn_.Prepare(
      "INSERT INTO server_cache_entries"
      " (job_id, position, request_id, response_id, request, response)"
      " VALUES (?1, (SELECT coalesce(max(position) + 1, 0) FROM server_cache_entries"
      "              WHERE job_id = ?1), ?2, ?3, ?4, ?5)");
  st.BindU64(1, job).BindInt(2, MessageId(j, path, "requestId"));
  st.BindInt(3, MessageId(j, path, "responseId"));
  st.BindBlob(4, Bytes(j, path, "request")).BindBlob(5, Bytes(j, path, "response"));
  Run(st, path);
}

void Loader::Provider(const json& j, const std::string& path) {
  if (!Object(j, path, {"id", "name", "description", "type", "disabled", "value"})) return;
  Statement st = txn_.Prepare(
      "INSERT INTO providers (id, name, description, provider_type, enabled, value)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
  st.BindU64(1, U64(j, path, "id", true)).BindText(2, Text(j, path, "name", true));
  st.BindText(3, Text(j, path, "description")).BindU64(4, U64(j, path, "type"));
  st.BindInt(5, Flag(j, path, "disabled") ? 0 : 1).BindU64(6, U64(j, path, "value"));
  Run(st, path);
}

void Loader::Cloud(const json& j, const std::string& path) {
  if (!Object(j, path, {"id", "name", "type", "clients"})) return;
  uint64_t id = U64(j, path, "id", true);
  Statement st = txn_.Prepare("INSERT INTO clouds (id, name, cloud_type) VALUES (?1, ?2, ?3)");
  st.BindU64(1, id).BindText(2, Text(j, path, "name", true)).BindU64(3, U64(j, path, "type"));
  Run(st, path);
  ForEach(j, path, "clients", [&](const json& c, const std::string& cp) {
    if (!Object(c, cp, {"client", "accessNode"})) return;
    uint64_t client = U64(c, cp, "client", true);
    Require(EntityKind::kClient, client, cp);
    Statement ins = txn_.Prepare(
        "INSERT INTO cloud_clients (cloud_id, client_id, access_node_id) VALUES (?1, ?2, ?3)");
    ins.BindU64(1, id).BindU64(2, client);
    if (c.contains("accessNode")) {
      uint64_t node = U64(c, cp, "accessNode");
      Require(EntityKind::kClient, node, cp);
      ins.BindU64(3, node);
    } else {
      ins.BindNull(3);
    }
    Run(ins, cp);
  });
}

void Loader::DomainClient(const json& j, const std::string& path) {
  if (!Object(j, path, {"domain", "client", "value1", "value2", "value3"})) return;
  uint64_t client = U64(j, path, "client", true);
  Require(EntityKind::kClient, client, path);
  Statement st = txn_.Prepare(
      "INSERT INTO exdm_domain_clients (domain, client_id, value1, value2, value3)"
      " VALUES (?1, ?2, ?3, ?4, ?5)");
  st.BindText(1, Text(j, path, "domain", true)).BindU64(2, client);
  st.BindU64(3, U64(j, path, "value1")).BindU64(4, U64(j, path, "value2"));
  st.BindU64(5, U64(j, path, "value3"));
  Run(st, path);
}

void Loader::AsmInstance(const json& j, const std::string& path) {
  if (!ok()) return;
  if (!j.is_number_unsigned()) {
    Fail(path, kStoreErrInvalidArgument, "an ASM instance is an instance id");
    return;
  }
  uint64_t instance = j.get<uint64_t>();
  Require(EntityKind::kInstance, instance, path);
  Statement st = txn_.Prepare("INSERT INTO asm_instances (instance_id) VALUES (?1)");
  st.BindU64(1, instance);
  Run(st, path);
}

void Loader::AppId(const json& j, const std::string& path) {
  if (!Object(j, path,
              {"id", "number1", "number2", "number3", "number4", "number5", "number6", "number7",
               "number8", "text0", "text1", "text2", "option", "archiveGroup",
               "incrArchiveGroup"})) {
    return;
  }
  uint64_t option = U64(j, path, "option");
  if (ok() && option > UINT32_MAX) {
    Fail(path, kStoreErrInvalidArgument, "'option' must fit in 32 unsigned bits");
  }
  Statement st = txn_.Prepare(
      "INSERT INTO app_ids (id, number0, number1, number2, number3, number4, number5, number6,"
      " number7, number8, text0, text1, text2, option_value, archive_group_id,"
      " incr_archive_group_id)"
      " VALUES (?1, ?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)");
  st.BindU64(1, U64(j, path, "id", true));
  const char* numbers[] = {"number1", "number2", "number3", "number4",
                           "number5", "number6", "number7", "number8"};
  for (int i = 0; i < 8; ++i) st.BindU64(2 + i, U64(j, path, numbers[i]));
  const char* texts[] = {"text0", "text1", "text2"};
  for (int i = 0; i < 3; ++i) st.BindText(10 + i, Text(j, path, texts[i]));
  st.BindU64(13, option).BindU64(14, U64(j, path, "archiveGroup"));
  st.BindU64(15, U64(j, path, "incrArchiveGroup"));
  Run(st, path);
}

// Per-subclient settings, listed apart from the subclients so that a reference copy may name a
// subclient of any backup set and pair data any replication pair, whatever their order.
void Loader::SubclientSettings(const json& j, const std::string& path) {
  if (!Object(j, path, {"subclient", "backupHost", "referenceCopies", "pairData"})) return;
  uint64_t id = U64(j, path, "subclient", true);
  Require(EntityKind::kSubclient, id, path);
  if (j.contains("backupHost")) {
    uint64_t host = U64(j, path, "backupHost");
    Require(EntityKind::kClient, host, path);
    Statement st = txn_.Prepare(
        "INSERT INTO subclient_backup_hosts (subclient_id, client_id) VALUES (?1, ?2)");
    st.BindU64(1, id).BindU64(2, host);
    Run(st, path);
  }
  int64_t position = 0;
  ForEach(j, path, "referenceCopies", [&](const json& c, const std::string& cp) {
    if (!c.is_number_unsigned()) {
      Fail(cp, kStoreErrInvalidArgument, "a reference copy is a subclient id");
      return;
    }
    uint64_t copy = c.get<uint64_t>();
    Require(EntityKind::kSubclient, copy, cp);
    Statement st = txn_.Prepare(
        "INSERT INTO subclient_reference_copies (subclient_id, position, copy_id)"
        " VALUES (?1, ?2, ?3)");
    st.BindU64(1, id).BindInt(2, position++).BindU64(3, copy);
    Run(st, cp);
  });
  ForEach(j, path, "pairData", [&](const json& d, const std::string& dp) {
    if (!Object(d, dp, {"pair", "selector", "text"})) return;
    uint64_t pair = U64(d, dp, "pair", true);
    Require(
        "SELECT 1 FROM replication_pairs p JOIN subclients s ON s.backup_set_id = p.backup_set_id"
        " WHERE p.id = ?1 AND s.id = ?2",
        {pair, id}, dp,
        "replication pair " + std::to_string(pair) + " is not a pair of subclient " +
            std::to_string(id) + "'s backup set");
    Statement st = txn_.Prepare(
        "INSERT INTO subclient_pair_data (subclient_id, pair_id, selector, text)"
        " VALUES (?1, ?2, ?3, ?4)");
    st.BindU64(1, id).BindU64(2, pair).BindU64(3, U64(d, dp, "selector"));
    st.BindText(4, Text(d, dp, "text", true));
    Run(st, dp);
  });
}

void Loader::FileTypeExtension(const json& j, const std::string& path) {
  if (!Object(j, path, {"fileType", "extensions"})) return;
  Statement st =
      txn_.Prepare("INSERT INTO file_type_extensions (file_type, extensions) VALUES (?1, ?2)");
  st.BindText(1, Text(j, path, "fileType", true)).BindText(2, Text(j, path, "extensions", true));
  Run(st, path);
}

void Loader::Snapshot(const json& j, const std::string& path) {
  if (!Object(j, path,
              {"id", "f1", "f3", "f4", "f5", "f6", "f7", "f8", "f9", "f10", "f11", "f12", "f13",
               "f14", "f15"})) {
    return;
  }
  Statement st = txn_.Prepare(
      "INSERT INTO snapshots (id, f1, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)");
  // The columns after the id, in order, and whether each is a number.
  static constexpr std::pair<const char*, bool> kFields[] = {
      {"f1", true},   {"f3", false},  {"f4", false},  {"f5", false}, {"f6", false},
      {"f7", true},   {"f8", false},  {"f9", false},  {"f10", true}, {"f11", true},
      {"f12", true},  {"f13", false}, {"f14", false}, {"f15", true}};
  uint64_t id = U64(j, path, "id", true);
  if (ok() && id == 0) Fail(path, kStoreErrInvalidArgument, "'id' must not be 0");
  st.BindU64(1, id);
  int index = 2;
  for (const auto& [key, number] : kFields) {
    if (number) {
      st.BindU64(index++, U64(j, path, key));
    } else {
      st.BindText(index++, Text(j, path, key));
    }
  }
  Run(st, path);
}

void Loader::MailboxDelegate(const json& j, const std::string& path) {
  if (!Object(j, path, {"id", "g1", "g2", "g3", "g4", "g5", "g6"})) return;
  uint64_t id = U64(j, path, "id", true);
  if (ok() && id == 0) Fail(path, kStoreErrInvalidArgument, "'id' must not be 0");
  Statement st = txn_.Prepare(
      "INSERT INTO mailbox_delegates (id, g1, g2, g3, g4, g5, g6)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  st.BindU64(1, id).BindU64(2, U64(j, path, "g1"));
  const char* texts[] = {"g2", "g3", "g4", "g5", "g6"};
  for (int i = 0; i < 5; ++i) st.BindText(3 + i, Text(j, path, texts[i]));
  Run(st, path);
}

}  // namespace

CLmError LoadFixtureText(Store& store, std::string_view text, const std::string& source) {
  json root;
  try {
    root = json::parse(text);
  } catch (const json::parse_error& e) {
    CLmError error(kStoreErrInvalidArgument, source + ": not valid JSON: " + e.what());
    EvEventWrapper::Error(kLabel, "%s", error.Text().c_str());
    return error;
  }
  Store::Transaction txn(store, "inserting", Store::Transaction::kWrite);
  if (txn.status()) return txn.status();
  Loader loader(txn, source);
  CLmError e = loader.Load(root);
  if (!e) e = txn.Commit();
  if (e) {
    EvEventWrapper::Error(kLabel, "%s", e.Text().c_str());
    return e;
  }
  EvEventWrapper::DebugLvl(kLabel, 2, "%s: %zu rows inserted", source.c_str(), loader.entries());
  return CLmError();
}

CLmError LoadFixtureFile(Store& store, const std::string& path) {
  std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) {
    int err = errno;
    return CLmError::FromErrno(err == ENOENT ? kKpErrNotFound : kKpErrIo, err,
                               "reading fixture " + path);
  }
  std::string text;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, file.get())) > 0) text.append(buf, n);
  if (std::ferror(file.get())) {
    return CLmError::FromErrno(kKpErrIo, errno, "reading fixture " + path);
  }
  return LoadFixtureText(store, text, path);
}

void Loader::AdvisoryType(const json& j, const std::string& path) {
  if (!Object(j, path, {"id", "name", "description"})) return;
  Statement st =
      txn_.Prepare("INSERT INTO advisory_types (id, name, description) VALUES (?1, ?2, ?3)");
  st.BindInt(1, I64(j, path, "id")).BindText(2, Text(j, path, "name", true));
  st.BindText(3, Text(j, path, "description"));
  Run(st, path);
}

void Loader::SourceAdvisory(const json& j, const std::string& path) {
  if (!Object(j, path, {"source", "id", "type", "title"})) return;
  Statement st = txn_.Prepare(
      "INSERT INTO source_advisories (advisory_id, source, position, type, title)"
      " VALUES (?1, ?2, (SELECT count(*) FROM source_advisories WHERE source = ?2), ?3, ?4)");
  st.BindInt(1, I64(j, path, "id")).BindText(2, Text(j, path, "source", true));
  st.BindInt(3, I64(j, path, "type")).BindText(4, Text(j, path, "title"));
  Run(st, path);
}

void Loader::ClientAdvisory(const json& j, const std::string& path) {
  if (!Object(j, path, {"client", "id", "type", "title", "state"})) return;
  uint64_t client = U64(j, path, "client", true);
  Require(EntityKind::kClient, client, path);
  Statement st = txn_.Prepare(
      "INSERT INTO client_advisories (client_id, advisory_id, type, title, state)"
      " VALUES (?1, ?2, ?3, ?4, ?5)");
  st.BindU64(1, client).BindInt(2, I64(j, path, "id")).BindInt(3, I64(j, path, "type"));
  st.BindText(4, Text(j, path, "title"));
  st.BindInt(5, j.contains("state") ? I64(j, path, "state") : 1);
  Run(st, path);
}

void Loader::LogMonitoringParam(const json& j, const std::string& path) {
  if (!Object(j, path, {"entity", "type", "name", "value"})) return;
  Statement st = txn_.Prepare(
      "INSERT INTO log_monitoring_params (entity_id, type, name, value) VALUES (?1, ?2, ?3, ?4)");
  st.BindU64(1, U64(j, path, "entity", true)).BindU64(2, U64(j, path, "type"));
  st.BindText(3, Text(j, path, "name", true)).BindText(4, Text(j, path, "value"));
  Run(st, path);
}

void Loader::Alert(const json& j, const std::string& path) {
  if (!Object(j, path, {"time", "clientId", "clientName", "severity", "type", "text",
                        "acknowledgedAt", "acknowledgedBy"})) {
    return;
  }
  const int64_t time = I64(j, path, "time");
  const int64_t client = I64(j, path, "clientId");
  const int64_t severity = I64(j, path, "severity");
  const int64_t acknowledged = I64(j, path, "acknowledgedAt");
  if (client != 0) Require(EntityKind::kClient, static_cast<uint64_t>(client), path);
  if (ok() && (severity < 0 || severity > 4)) {
    Fail(path, kStoreErrInvalidArgument, "'severity' must be 0 to 4");
    return;
  }
  // As an entry of an XML alert list would be stored: raised and received at `time`, named
  // after its client unless it names itself.
  Statement st = txn_.Prepare(
      "INSERT INTO alerts (source, received_at, raised_at, alert_type, severity, client_id,"
      " client_name, text, details, acknowledged_at, acknowledged_by)"
      " VALUES (2, ?1, ?1, ?2, ?3, ?4,"
      " coalesce(nullif(?5, ''), (SELECT name FROM clients WHERE id = ?4), ''), ?6, ?7,"
      " nullif(?8, 0), ?9)");
  st.BindInt(1, time).BindInt(2, I64(j, path, "type")).BindInt(3, severity);
  st.BindInt(4, client).BindText(5, Text(j, path, "clientName"));
  st.BindText(6, Text(j, path, "text")).BindText(7, j.dump()).BindInt(8, acknowledged);
  st.BindText(9, Text(j, path, "acknowledgedBy"));
  Run(st, path);
}

}  // namespace appmgr::server
