// What the command families of appmgrctl share: number parsing that CLI11 gets wrong, the
// common argument shapes, the property rows, and the call of an interface object that the
// library may not offer.
//
// Each family (commands/*.cc) declares its rows with these and returns them as a
// CommandFamily; Commands.cc lists the families.
#pragma once

#include <cstdint>
#include <limits>
#include <list>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <CLI/CLI.hpp>

#include "appmgr/AppMgrNet.h"
#include "appmgr/AppMgrTypes.h"
#include "tools/appmgrctl/Commands.h"
#include "tools/appmgrctl/Library.h"

namespace appmgrctl {

// Decimal or 0x-hexadecimal digits into a 64-bit magnitude; false on anything else.
bool ParseMagnitude(std::string_view text, uint64_t* value);

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
    if (magnitude > static_cast<uint64_t>(std::numeric_limits<T>::max())) return false;
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
          return std::string(std::is_signed_v<T> ? "not a " : "not an unsigned ") +
                 std::to_string(sizeof(T) * 8) + "-bit integer: " + text;
        }
        text = std::to_string(value);
        return {};
      },
      // No description: CLI11 already names the type (INT, UINT) in --help.
      "");
}

// A required positional unsigned id bound to `out`, described by `what` ("the client's id").
void IdArg(CLI::App& cmd, unsigned long& out, const char* name, const char* what);

// NAME=VALUE words: each must have a '=' after a non-empty name.
CLI::Validator NameEqualsValue();

// The options of the property commands (props, set-props, remove-props) every family with
// properties has, on the family's own arguments: `table`, `words`, `type`, `replace`, `strict`,
// and `asProperties` where the family can remove by property records too.
template <class A>
void PropsTableOption(CLI::App& cmd, A& a, const std::string& help = "the property table to read") {
  cmd.add_option("--table", a.table, help)->transform(Number<long>())->capture_default_str();
}

// `cleared` says what --replace with no properties clears ("the client's properties").
template <class A>
void SetPropsOptions(CLI::App& cmd, A& a, const std::string& cleared) {
  cmd.add_option("NAME=VALUE", a.words, "properties to set; none with --replace clears " + cleared)
      ->check(NameEqualsValue());
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

template <class A>
void RemovePropsOptions(CLI::App& cmd, A& a) {
  cmd.add_option("NAME", a.words, "names of the properties to remove")->required();
  cmd.add_flag("--strict", a.strict, "remove nothing and fail when any name is absent");
  if constexpr (requires { a.asProperties; }) {
    cmd.add_flag("--as-properties", a.asProperties,
                 "send the names as property records (the other remove request) instead of names");
  }
}

// Receives properties as list rows {name, type, value}.
class PropertyRows : public PropCallBack {
 public:
  void addProperty(const std::string& name, unsigned long type, const std::string& value,
                   long) override;
  Json rows = Json::array();
};

// ApplProperty objects made from NAME=VALUE words, all of one type, and the list of pointers
// the interfaces take. The words were checked by NameEqualsValue.
struct PropertyList {
  PropertyList(const std::vector<std::string>& words, unsigned long type);
  std::vector<ApplProperty> properties;
  std::list<const ApplProperty*> pointers;
};

// Calls `f` with the interface object the library makes for `code`; a library that makes none
// is a failure naming the code, not a crash.
template <class I, class F>
Outcome WithInterface(Library& lib, AppMgrInterfaceCode code, const char* what, F f) {
  I* object = lib.Object<I>(code);
  if (object == nullptr) {
    return Outcome::Failed(-1, std::string(lib.path()) + " makes no " + what +
                                   " interface (getLibraryInterface(" + std::to_string(code) +
                                   ") returned null)");
  }
  return f(*object);
}

}  // namespace appmgrctl
