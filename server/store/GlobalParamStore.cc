#include "server/store/GlobalParamStore.h"

#include <cinttypes>
#include <limits>
#include <string_view>

#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

// The built-in global parameters. Names follow the settings' convention: n for a number, b for
// a switch, s for text. Never rename one: installations store values under these names.
constexpr ValueDefinition kGlobalParams[] = {
    {"nAuditRetentionDays", ValueType::kInteger, "365", 1, 36500,
     "days the audit trail of configuration changes is kept"},
    {"nJobHistoryRetentionDays", ValueType::kInteger, "90", 1, 36500,
     "days finished jobs stay in the job history"},
    {"nMaxConcurrentJobs", ValueType::kInteger, "100", 1, 10000,
     "jobs the installation runs at once; more wait"},
    {"nClientCheckIntervalMinutes", ValueType::kInteger, "15", 1, 1440,
     "minutes between checks that every client is reachable"},
    {"bAllowClientRegistration", ValueType::kBoolean, "1", 0, 0,
     "whether a new machine may register itself as a client"},
    {"sAdminMail", ValueType::kText, "", 0, 0, "where mail for the administrators goes"},
    {"sTimeZone", ValueType::kText, "UTC", 0, 0, "the time zone schedules are written in"},
};

// The built-in application property numbers, for every client application type.
constexpr AppPropertyDefinition kAppProperties[] = {
    {1,
     {"data streams", ValueType::kInteger, "1", 1, 64,
      "streams a backup of the application writes at once"}},
    {2,
     {"compression", ValueType::kBoolean, "1", 0, 0,
      "whether the application's data is compressed on the client"}},
    {3,
     {"retries", ValueType::kInteger, "3", 0, 100,
      "times a failed backup of the application is retried"}},
    {4,
     {"pre-backup command", ValueType::kText, "", 0, 0,
      "a command run on the client before a backup"}},
    {5,
     {"post-backup command", ValueType::kText, "", 0, 0,
      "a command run on the client after a backup"}},
};

const ValueDefinition* FindParam(std::string_view name) {
  for (const ValueDefinition& d : kGlobalParams) {
    if (name == d.name) return &d;
  }
  return nullptr;
}

const ValueDefinition* FindAppProperty(uint64_t number) {
  for (const AppPropertyDefinition& d : kAppProperties) {
    if (d.number == number) return &d.value;
  }
  return nullptr;
}

// A value as an error message shows it: quoted, cut after 40 bytes, control characters as '?'.
std::string Shown(const std::string& value) {
  std::string shown = "'";
  for (size_t i = 0; i < value.size() && i < 40; ++i) {
    unsigned char c = static_cast<unsigned char>(value[i]);
    shown += c < 0x20 || c == 0x7f ? '?' : value[i];
  }
  return shown + (value.size() > 40 ? "...'" : "'");
}

// Strict decimal: an optional '-' and digits, nothing else, within 64 signed bits.
bool ParseInteger(const std::string& text, int64_t* out) {
  size_t i = !text.empty() && text[0] == '-' ? 1 : 0;
  if (i == text.size()) return false;
  uint64_t magnitude = 0;
  for (; i < text.size(); ++i) {
    if (text[i] < '0' || text[i] > '9') return false;
    if (magnitude > (std::numeric_limits<uint64_t>::max() - 9) / 10) return false;
    magnitude = magnitude * 10 + static_cast<uint64_t>(text[i] - '0');
  }
  const bool negative = text[0] == '-';
  if (magnitude > (negative ? uint64_t{1} << 63 : uint64_t{INT64_MAX})) return false;
  *out = negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
  return true;
}

// Switches take 0 or 1, and the words people write for them.
bool ParseBoolean(const std::string& text, bool* out) {
  std::string lower;
  for (char c : text) lower += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  for (const char* yes : {"1", "true", "yes", "on"}) {
    if (lower == yes) {
      *out = true;
      return true;
    }
  }
  for (const char* no : {"0", "false", "no", "off"}) {
    if (lower == no) {
      *out = false;
      return true;
    }
  }
  return false;
}

// Checks `value` against `d` (null: free text) and makes it canonical. `what` names the value
// in errors ("global parameter 'nX'").
CLmError CheckValue(const ValueDefinition* d, const std::string& what, std::string* value) {
  if (value->size() > kMaxValueBytes) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "the value of %s is %zu bytes long; at most %zu fit", what.c_str(),
                            value->size(), kMaxValueBytes);
  }
  if (d == nullptr || d->type == ValueType::kText) return CLmError();
  if (d->type == ValueType::kBoolean) {
    bool on = false;
    if (!ParseBoolean(*value, &on)) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "%s takes 0 or 1 (or yes/no, true/false, on/off), not %s",
                              what.c_str(), Shown(*value).c_str());
    }
    value->assign(1, on ? '1' : '0');  // not operator=(const char*): GCC 12 -O3 warns falsely
    return CLmError();
  }
  int64_t number = 0;
  if (!ParseInteger(*value, &number) || number < d->min || number > d->max) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "%s takes a whole number from %" PRId64 " to %" PRId64 ", not %s",
                            what.c_str(), d->min, d->max, Shown(*value).c_str());
  }
  *value = std::to_string(number);
  return CLmError();
}

CLmError CheckName(const std::string& name) {
  if (name.empty()) {
    return CLmError(kStoreErrInvalidArgument, "a global parameter's name cannot be empty");
  }
  if (name.size() > kMaxParamNameBytes) {
    return CLmError::Format(kStoreErrInvalidArgument,
                            "a global parameter's name is at most %zu bytes long, not %zu",
                            kMaxParamNameBytes, name.size());
  }
  for (char c : name) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
      return CLmError::Format(kStoreErrInvalidArgument,
                              "the global parameter name %s holds a control character",
                              Shown(name).c_str());
    }
  }
  return CLmError();
}

std::string ParamWhat(const std::string& name) {
  return "global parameter '" + name + "'";
}

std::string AppPropertyWhat(uint64_t number) {
  const ValueDefinition* d = FindAppProperty(number);
  return "application property " + std::to_string(number) +
         (d != nullptr ? std::string(" (") + d->name + ")" : std::string());
}

}  // namespace

std::span<const ValueDefinition> BuiltInGlobalParams() {
  return kGlobalParams;
}

std::span<const AppPropertyDefinition> BuiltInAppProperties() {
  return kAppProperties;
}

CLmError CheckGlobalParam(const std::string& name, std::string* value) {
  if (CLmError e = CheckName(name)) return e;
  return CheckValue(FindParam(name), ParamWhat(name), value);
}

CLmError CheckAppProperty(uint64_t number, std::string* value) {
  return CheckValue(FindAppProperty(number), AppPropertyWhat(number), value);
}

CLmError GlobalParamStore::Get(const std::string& name, std::string* value) {
  Txn txn(store_, "global parameter read", Txn::kRead);
  Statement st = txn.Prepare("SELECT value FROM global_params WHERE name = ?1");
  st.BindText(1, name);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (row) {
    *value = st.Text(0);
    return CLmError();
  }
  if (const ValueDefinition* d = FindParam(name)) {
    *value = d->defaultValue;
    return CLmError();
  }
  return CLmError::Format(kStoreErrNotFound, "global parameter '%s' is not set", name.c_str());
}

CLmError GlobalParamStore::Set(const std::string& name, const std::string& value) {
  std::string canonical = value;
  if (CLmError e = CheckGlobalParam(name, &canonical)) return e;
  Txn txn(store_, "global parameter change", Txn::kWrite);
  Statement st = txn.Prepare(
      "INSERT INTO global_params (name, value) VALUES (?1, ?2)"
      " ON CONFLICT (name) DO UPDATE SET value = excluded.value");
  st.BindText(1, name).BindText(2, canonical);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

CLmError GlobalParamStore::Remove(const std::string& name) {
  if (CLmError e = CheckName(name)) return e;
  Txn txn(store_, "global parameter removal", Txn::kWrite);
  Statement st = txn.Prepare("DELETE FROM global_params WHERE name = ?1");
  st.BindText(1, name);
  if (CLmError e = st.Run()) return e;
  if (st.Changes() == 0 && FindParam(name) == nullptr) {
    return CLmError::Format(kStoreErrNotFound, "global parameter '%s' is not set", name.c_str());
  }
  return txn.Commit();
}

CLmError GlobalParamStore::GetApp(uint64_t appId, uint64_t number, std::string* value) {
  Txn txn(store_, "application property read", Txn::kRead);
  if (CLmError e = RequireEntity(txn, EntityKind::kClientAppType, appId)) return e;
  Statement st = txn.Prepare("SELECT value FROM app_properties WHERE id1 = ?1 AND id2 = ?2");
  st.BindU64(1, appId).BindU64(2, number);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (row) {
    *value = st.Text(0);
    return CLmError();
  }
  if (const ValueDefinition* d = FindAppProperty(number)) {
    *value = d->defaultValue;
    return CLmError();
  }
  return CLmError::Format(
      kStoreErrNotFound, "client application type %" PRIu64 " has no application property %" PRIu64,
      appId, number);
}

CLmError GlobalParamStore::SetApp(uint64_t appId, uint64_t number, const std::string& value) {
  std::string canonical = value;
  if (CLmError e = CheckAppProperty(number, &canonical)) return e;
  Txn txn(store_, "application property change", Txn::kWrite);
  if (CLmError e = RequireEntity(txn, EntityKind::kClientAppType, appId)) return e;
  Statement st = txn.Prepare(
      "INSERT INTO app_properties (id1, id2, value) VALUES (?1, ?2, ?3)"
      " ON CONFLICT (id1, id2) DO UPDATE SET value = excluded.value");
  st.BindU64(1, appId).BindU64(2, number).BindText(3, canonical);
  if (CLmError e = st.Run()) return e;
  return txn.Commit();
}

}  // namespace appmgr::server
