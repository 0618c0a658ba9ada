#include "tools/appmgrctl/CommandSupport.h"

#include <charconv>

namespace appmgrctl {

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

void IdArg(CLI::App& cmd, unsigned long& out, const char* name, const char* what) {
  cmd.add_option(name, out, what)->required()->transform(Number<unsigned long>());
}

CLI::Validator NameEqualsValue() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        size_t eq = text.find('=');
        if (eq == std::string::npos || eq == 0) return "not NAME=VALUE: " + text;
        return {};
      },
      "");
}

void PropertyRows::addProperty(const std::string& name, unsigned long type,
                               const std::string& value, long) {
  rows.push_back({{"name", name}, {"type", type}, {"value", value}});
}

PropertyList::PropertyList(const std::vector<std::string>& words, unsigned long type) {
  properties.reserve(words.size());
  for (const std::string& word : words) {
    size_t eq = word.find('=');
    properties.emplace_back(word.substr(0, eq), type, word.substr(eq + 1));
  }
  for (const ApplProperty& p : properties) pointers.push_back(&p);
}

}  // namespace appmgrctl
