// GlobalParamStore: the installation's global parameters and application properties.
//
// A global parameter is a named text value; an application property is a text value of one
// application installed on a client (a client application type, by its id) under a property
// number. Both are typed: the server knows a set of built-in parameters and property numbers,
// each with a type and a default (the tables in GlobalParamStore.cc, listed in
// docs/server.md). A value of a built-in is checked against its type and stored in canonical
// form ("007" as "7", "yes" as "1"); any other name or number holds text.
//
// Defaults are answered, not stored: a fresh installation reads every built-in at its default
// without a row in the database, removing a built-in parameter returns it to its default, and a
// default changed in a later server reaches every installation that never set the value.
//
// Names of global parameters are compared exactly (case matters). Every operation is one
// transaction; outputs are written only on success.
//
// Ownership: borrows the Store, which must outlive it. Thread-safety: as the Store.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

enum class ValueType { kText, kInteger, kBoolean };

// A built-in parameter or application property.
struct ValueDefinition {
  const char* name;  // a global parameter's name, or what an application property is
  ValueType type;
  const char* defaultValue;
  int64_t min = 0;  // kInteger: the values allowed, inclusive
  int64_t max = 0;
  const char* meaning = "";
};

struct AppPropertyDefinition {
  uint64_t number;
  ValueDefinition value;
};

std::span<const ValueDefinition> BuiltInGlobalParams();
std::span<const AppPropertyDefinition> BuiltInAppProperties();

// Limits of what the store keeps: a parameter's name (bytes, no control characters) and any
// value (bytes). A value is configuration, not data; a larger one is refused with a clear
// error rather than stored.
inline constexpr size_t kMaxParamNameBytes = 255;
inline constexpr size_t kMaxValueBytes = 65536;

// Checks a global parameter's name and value, and puts the value in its canonical form. Fails
// with kStoreErrInvalidArgument naming the parameter and what it takes. The fixture loader uses
// these too, so that no stored value breaks its type.
CLmError CheckGlobalParam(const std::string& name, std::string* value);
// The same for an application property number's value.
CLmError CheckAppProperty(uint64_t number, std::string* value);

class GlobalParamStore {
 public:
  explicit GlobalParamStore(Store& store) : store_(store) {}

  // The parameter's value: the stored one, else its default. A name neither stored nor
  // built in is kStoreErrNotFound.
  CLmError Get(const std::string& name, std::string* value);
  // Stores the value (checked and made canonical), replacing any earlier one.
  CLmError Set(const std::string& name, const std::string& value);
  // Removes the stored value. A built-in parameter returns to its default (and removing one
  // that holds its default is not an error); any other name that is not set is
  // kStoreErrNotFound.
  CLmError Remove(const std::string& name);

  // The application property `number` of client application type `appId`: the stored value,
  // else the number's default. A missing client application type, or a number neither stored
  // nor built in, is kStoreErrNotFound.
  CLmError GetApp(uint64_t appId, uint64_t number, std::string* value);
  // Stores the value (checked and made canonical) for an existing client application type.
  CLmError SetApp(uint64_t appId, uint64_t number, const std::string& value);

 private:
  Store& store_;
};

}  // namespace appmgr::server
