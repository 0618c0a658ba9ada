#include "platform/base/KpSettings.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>

namespace {

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string Trim(const std::string& s) {
  size_t b = 0, e = s.size();
  while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
  while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
  return s.substr(b, e - b);
}

std::string Key(const std::string& section, const std::string& key) {
  return Lower(section) + '\n' + Lower(key);
}

inline unsigned char Fold(char c) {
  unsigned char u = static_cast<unsigned char>(c);
  return (u >= 'A' && u <= 'Z') ? static_cast<unsigned char>(u + ('a' - 'A')) : u;
}

std::string PathFromEnvironment() {
  const char* env = std::getenv(KpSettings::kPathVariable);
  return (env && *env) ? env : KpSettings::kDefaultPath;
}

}  // namespace

int KpSettings::KeyLess::Compare(const KeyProbe& probe, const std::string& stored) {
  // The probe stands for lower("section") + '\n' + lower("key"), compared byte by byte as
  // std::string compares (unsigned).
  const size_t sectionLen = probe.section.size();
  const size_t total = sectionLen + 1 + probe.key.size();
  const size_t n = std::min(total, stored.size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char a = i < sectionLen ? Fold(probe.section[i])
                      : i == sectionLen ? static_cast<unsigned char>('\n')
                                        : Fold(probe.key[i - sectionLen - 1]);
    unsigned char b = static_cast<unsigned char>(stored[i]);
    if (a != b) return a < b ? -1 : 1;
  }
  return total < stored.size() ? -1 : (total > stored.size() ? 1 : 0);
}

KpSettings& KpSettings::Instance() {
  // Never destroyed: logging may read settings while other statics are torn down.
  static KpSettings* instance = new KpSettings();
  return *instance;
}

KpSettings::KpSettings() { LoadLocked(PathFromEnvironment()); }

KpSettings::Parsed KpSettings::Parse(const std::string& text, const std::string& origin) {
  Parsed out;
  std::string section;
  std::istringstream in(text);
  std::string raw;
  int lineNo = 0;
  while (std::getline(in, raw)) {
    ++lineNo;
    if (lineNo == 1 && raw.compare(0, 3, "\xEF\xBB\xBF") == 0) raw.erase(0, 3);  // UTF-8 BOM
    std::string line = Trim(raw);
    if (line.empty() || line[0] == ';' || line[0] == '#') continue;
    auto warn = [&](const char* why) {
      out.warnings.push_back(origin + ":" + std::to_string(lineNo) + ": " + why);
    };
    if (line[0] == '[') {
      if (line.back() != ']') {
        warn("section header without closing ']'");
        continue;
      }
      section = Trim(line.substr(1, line.size() - 2));
      continue;
    }
    size_t eq = line.find('=');
    if (eq == std::string::npos) {
      warn("line is neither a section, a comment nor key = value");
      continue;
    }
    std::string key = Trim(line.substr(0, eq));
    if (key.empty()) {
      warn("empty key");
      continue;
    }
    std::string value = Trim(line.substr(eq + 1));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
      value = value.substr(1, value.size() - 2);
    }
    out.values[Key(section, key)] = value;
  }
  return out;
}

bool KpSettings::ParseNumber(const std::string& text, unsigned long* out) {
  std::string s = Trim(text);
  if (s.empty() || s[0] == '-' || s[0] == '+') return false;
  int base = 10;
  const char* begin = s.c_str();
  if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
    base = 16;
    begin += 2;
    if (!std::isxdigit(static_cast<unsigned char>(*begin))) return false;
  } else if (!std::isdigit(static_cast<unsigned char>(*begin))) {
    return false;
  }
  errno = 0;
  char* end = nullptr;
  unsigned long long v = std::strtoull(begin, &end, base);
  if (errno == ERANGE || *end != '\0' || v > ULONG_MAX) return false;
  *out = static_cast<unsigned long>(v);
  return true;
}

void KpSettings::LoadLocked(const std::string& path) {
  path_ = path;
  std::ifstream f(path, std::ios::binary);
  file_read_ = static_cast<bool>(f);
  if (file_read_) {
    std::ostringstream ss;
    ss << f.rdbuf();
    parsed_ = Parse(ss.str(), path);
  } else {
    parsed_ = Parsed{};
  }
  generation_.fetch_add(1, std::memory_order_release);
}

bool KpSettings::GetString(const std::string& section, const std::string& key,
                           std::string* out) const {
  std::shared_lock lock(mutex_);
  auto it = parsed_.values.find(KeyProbe{section, key});
  if (it == parsed_.values.end()) return false;
  if (out) *out = it->second;
  return true;
}

bool KpSettings::GetNumber(const std::string& section, const std::string& key,
                           unsigned long* out) const {
  std::string text;
  if (!GetString(section, key, &text)) return false;
  unsigned long v = 0;
  if (!ParseNumber(text, &v)) return false;
  if (out) *out = v;
  return true;
}

void KpSettings::Load(const std::string& path) {
  std::unique_lock lock(mutex_);
  explicit_path_ = true;
  LoadLocked(path);
}

void KpSettings::Reload() {
  std::unique_lock lock(mutex_);
  LoadLocked(explicit_path_ ? path_ : PathFromEnvironment());
}

void KpSettings::ResetToEnvironment() {
  std::unique_lock lock(mutex_);
  explicit_path_ = false;
  LoadLocked(PathFromEnvironment());
}

std::string KpSettings::Path() const {
  std::shared_lock lock(mutex_);
  return path_;
}

bool KpSettings::FileRead() const {
  std::shared_lock lock(mutex_);
  return file_read_;
}

std::vector<std::string> KpSettings::Warnings() const {
  std::shared_lock lock(mutex_);
  std::vector<std::string> w = parsed_.warnings;
  // Values that are not numbers are found on use; list the ones that look numeric-typed.
  for (const auto& [k, v] : parsed_.values) {
    size_t nl = k.find('\n');
    if (nl + 1 < k.size() && k[nl + 1] == 'n') {
      unsigned long ignored;
      if (!ParseNumber(v, &ignored)) {
        w.push_back(path_ + ": key " + k.substr(nl + 1) + " in section [" + k.substr(0, nl) +
                    "] is not a number: \"" + v + "\"");
      }
    }
  }
  return w;
}
