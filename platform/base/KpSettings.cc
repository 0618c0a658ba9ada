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

// Every section and key this system reads (docs/settings.md). A key read anywhere must be
// listed here, or a file that sets it is warned about. [Features] takes any name.
struct KnownSection {
  const char* name;
  std::vector<const char*> keys;
};
const std::vector<KnownSection>& KnownSections() {
  static const auto* known = new std::vector<KnownSection>{
      {"Platform",
       {"nPlatformType", "sPhysicalMachine", "sClientName", "sInstallDirectory", "sFocus"}},
      {"Controlhost",
       {"sHOSTNAME", "sCLIENTNAME", "sINSTALLDIRECTORY", "sAPPMGRHOSTNAME", "sAPPMGRCLIENTNAME"}},
      {"EventManager",
       {"nDebugLevel", "sLogDirectory", "nLogFileMaxKB", "nLogFiles", "nDisableAppMessageCache",
        "nServiceCacheExpirationTimeMinutes"}},
      {"FileSystemAgent", {"nLaptopAgent"}},
      {"Features", {}},
      {"Network",
       {"nMaxFrameBytes", "nIoTimeoutSeconds", "nAttachTimeoutSeconds", "nCallTimeoutSeconds",
        "nSessionCheckAfterIdleMs"}},
  };
  return *known;
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return Fold(x) == Fold(y); });
}

// Edit distance without regard to case, for "did you mean".
size_t Distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      size_t above = row[j];
      row[j] = std::min(
          {row[j] + 1, row[j - 1] + 1, diagonal + (Fold(a[i - 1]) == Fold(b[j - 1]) ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// " (did you mean X?)" for the closest candidate within a third of the name's length.
template <class Names>
std::string Suggestion(std::string_view name, const Names& candidates, const char* open,
                       const char* close) {
  std::string best;
  size_t bestDistance = std::max<size_t>(1, name.size() / 3) + 1;
  for (std::string_view candidate : candidates) {
    size_t d = Distance(name, candidate);
    if (d < bestDistance) {
      bestDistance = d;
      best = candidate;
    }
  }
  return best.empty() ? std::string() : " (did you mean " + std::string(open) + best + close + "?)";
}

// A blank followed by ';' or '#': the writer meant an inline comment, which this format does
// not have, so the comment became part of the value.
bool HoldsInlineComment(const std::string& value) {
  for (size_t i = 1; i < value.size(); ++i) {
    if ((value[i] == ';' || value[i] == '#') &&
        std::isspace(static_cast<unsigned char>(value[i - 1]))) {
      return true;
    }
  }
  return false;
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
  int sectionLine = 0;
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
      sectionLine = lineNo;
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
    const std::string stored = Key(section, key);
    auto [it, added] = out.where.try_emplace(stored);
    if (!added) {
      warn(("[" + section + "] " + key + " is set again; the value of line " +
            std::to_string(it->second.line) + " is replaced")
               .c_str());
    }
    it->second = {lineNo, sectionLine, section, key};
    out.values[stored] = value;
  }
  return out;
}

std::vector<std::string> KpSettings::Check(const Parsed& parsed, const std::string& origin) {
  std::vector<std::pair<int, std::string>> found;
  auto warn = [&](int line, std::string why) {
    found.emplace_back(line, origin + ":" + std::to_string(line) + ": " + std::move(why));
  };
  std::map<std::string, int> unknownSections;  // lower-cased name -> first line
  std::map<std::string, std::string> sectionSpelling;
  for (const auto& [stored, value] : parsed.values) {
    auto w = parsed.where.find(stored);
    if (w == parsed.where.end()) continue;
    const Parsed::Where& at = w->second;
    const std::string name = "[" + at.section + "] " + at.key;
    const KnownSection* section = nullptr;
    for (const KnownSection& k : KnownSections()) {
      if (SameName(k.name, at.section)) section = &k;
    }
    if (section == nullptr) {
      std::string lower = Lower(at.section);
      const int line = at.sectionLine ? at.sectionLine : at.line;
      auto [it, added] = unknownSections.try_emplace(lower, line);
      if (!added) it->second = std::min(it->second, line);
      sectionSpelling.try_emplace(lower, at.section);
      continue;
    }
    const bool features = std::string_view(section->name) == "Features";
    if (!features && std::none_of(section->keys.begin(), section->keys.end(),
                                  [&](const char* k) { return SameName(k, at.key); })) {
      warn(at.line, name + " is not a setting this system reads" +
                        Suggestion(at.key, section->keys, "", ""));
      continue;
    }
    const bool number = features || (!at.key.empty() && (at.key[0] == 'n' || at.key[0] == 'N'));
    unsigned long ignored = 0;
    if (number && !ParseNumber(value, &ignored)) {
      warn(at.line,
           name + " = \"" + value + "\" is not a number, so the default applies" +
               (HoldsInlineComment(value) ? " (a comment must be on a line of its own)" : ""));
    } else if (HoldsInlineComment(value)) {
      warn(at.line, name + " = \"" + value +
                        "\": the ';' or '#' is part of the value (a comment must be on a line of "
                        "its own)");
    }
  }
  std::vector<std::string> sectionNames;
  for (const KnownSection& k : KnownSections()) sectionNames.push_back(k.name);
  for (const auto& [lower, line] : unknownSections) {
    const std::string& spelt = sectionSpelling[lower];
    warn(line, "section [" + spelt + "] is not one this system reads; its keys are ignored" +
                   Suggestion(spelt, sectionNames, "[", "]"));
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> out;
  for (auto& [line, text] : found) out.push_back(std::move(text));
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
  const char* overlay = std::getenv(kOverlayVariable);
  overlay_read_ = overlay && *overlay;
  overlay_ = overlay_read_ ? Parse(overlay, kOverlayVariable) : Parsed{};
  generation_.fetch_add(1, std::memory_order_release);
}

const std::string* KpSettings::Find(KeyProbe probe) const {
  auto it = overlay_.values.find(probe);
  if (it != overlay_.values.end()) return &it->second;
  it = parsed_.values.find(probe);
  return it == parsed_.values.end() ? nullptr : &it->second;
}

bool KpSettings::GetString(const std::string& section, const std::string& key,
                           std::string* out) const {
  std::shared_lock lock(mutex_);
  const std::string* value = Find(KeyProbe{section, key});
  if (value == nullptr) return false;
  if (out) *out = *value;
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

bool KpSettings::OverlayRead() const {
  std::shared_lock lock(mutex_);
  return overlay_read_;
}

std::vector<std::string> KpSettings::Warnings() const {
  std::shared_lock lock(mutex_);
  std::vector<std::string> w = parsed_.warnings;
  for (std::string& c : Check(parsed_, path_)) w.push_back(std::move(c));
  w.insert(w.end(), overlay_.warnings.begin(), overlay_.warnings.end());
  for (std::string& c : Check(overlay_, kOverlayVariable)) w.push_back(std::move(c));
  return w;
}
