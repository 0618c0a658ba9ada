// KpSettings: the platform settings store, one INI file per installation.
//
// The file's path comes from the environment variable APPMGR_SETTINGS, or
// /etc/appmgrnet/appmgrnet.ini when it is unset. It is read on first use; Load() points the
// process at another file and Reload() reads the current one again (tests, and servers on
// SIGHUP). A missing or unreadable file is an empty store: every key is absent.
//
// Format: "[Section]" lines open a section; "key = value" lines set a key in it; lines whose
// first non-blank character is ';' or '#' are comments; blank lines are ignored. Section and key
// names match without regard to case. Values are trimmed, and one pair of surrounding double
// quotes is removed. A key set twice in one section keeps its last value. Lines that are
// none of these are ignored and reported by Warnings().
//
// Numbers are decimal, or hexadecimal with a 0x prefix, and must fit in an unsigned long; a
// value that is not such a number is treated as absent (and reported by Warnings()).
//
// Thread-safety: every method may be called from any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

class KpSettings {
 public:
  static constexpr const char* kPathVariable = "APPMGR_SETTINGS";
  static constexpr const char* kDefaultPath = "/etc/appmgrnet/appmgrnet.ini";

  // The process-wide store; never destroyed.
  static KpSettings& Instance();

  // Absent keys leave *out untouched and answer false.
  bool GetString(const std::string& section, const std::string& key, std::string* out) const;
  bool GetNumber(const std::string& section, const std::string& key, unsigned long* out) const;

  // Reads `path` and makes it the current file.
  void Load(const std::string& path);
  // Reads the current file again (the environment variable is consulted again as well when no
  // explicit Load() was made).
  void Reload();
  // Forgets an explicit Load() and reads the file the environment names.
  void ResetToEnvironment();

  std::string Path() const;
  // True when the current file existed and was read.
  bool FileRead() const;
  // Lines of the current file that were ignored, as "path:line: reason".
  std::vector<std::string> Warnings() const;
  // Increments on every Load()/Reload(); readers that cache derived values compare it. A plain
  // atomic read: cheap enough for every call of the library's hot path.
  uint64_t Generation() const { return generation_.load(std::memory_order_acquire); }

  // A section and key to look up, compared without regard to ASCII case and without building
  // a string: reads are frequent (every session wrapper asks a few) and must not allocate.
  struct KeyProbe {
    std::string_view section;
    std::string_view key;
  };
  struct KeyLess {
    using is_transparent = void;
    bool operator()(const std::string& a, const std::string& b) const { return a < b; }
    bool operator()(const KeyProbe& a, const std::string& b) const { return Compare(a, b) < 0; }
    bool operator()(const std::string& a, const KeyProbe& b) const { return Compare(b, a) > 0; }
    static int Compare(const KeyProbe& probe, const std::string& stored);
  };

  // Parses INI text; exposed for tests. Keys are stored as "section\nkey", lower-cased.
  struct Parsed {
    std::map<std::string, std::string, KeyLess> values;
    std::vector<std::string> warnings;
  };
  static Parsed Parse(const std::string& text, const std::string& origin);
  // Parses a settings number; false for anything that is not a whole unsigned long.
  static bool ParseNumber(const std::string& text, unsigned long* out);

 private:
  KpSettings();
  void LoadLocked(const std::string& path);

  mutable std::shared_mutex mutex_;
  std::string path_;
  bool explicit_path_ = false;
  bool file_read_ = false;
  Parsed parsed_;
  std::atomic<uint64_t> generation_{0};
};
