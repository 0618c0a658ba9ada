// KpSettings: the platform settings store, one INI file per installation.
//
// The file's path comes from the environment variable APPMGR_SETTINGS, or
// /etc/appmgrnet/appmgrnet.ini when it is unset. It is read on first use; Load() points the
// process at another file and Reload() reads the current one again (tests, and servers on
// SIGHUP). A missing or unreadable file is an empty store: every key is absent.
//
// The overlay: INI text in the environment variable APPMGR_SETTINGS_OVERLAY, read with the
// file, whose keys win over the file's. It lets a program hand the library a few settings of
// its own (appmgrctl --host, --timeout) without writing or editing a file.
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
// Warnings() also reports what is probably a mistake although it reads: a section or key this
// system does not read (with the known name it is closest to), a key set twice, and a value
// holding " ;" or " #", an inline comment the format does not have.
//
// Thread-safety: every method may be called from any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <new>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

class KpSettings {
 public:
  static constexpr const char* kPathVariable = "APPMGR_SETTINGS";
  static constexpr const char* kDefaultPath = "/etc/appmgrnet/appmgrnet.ini";
  static constexpr const char* kOverlayVariable = "APPMGR_SETTINGS_OVERLAY";

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
  // Around fork(): the settings' lock taken before it, given back after it (parent and child).
  void LockForFork() { mutex_.lock(); }
  void UnlockAfterFork() { mutex_.unlock(); }
  // In the child: the lock made anew (a read-write lock's owner is a thread of the parent, so
  // the child cannot unlock it).
  void ResetAfterForkInChild() { new (&mutex_) std::shared_mutex(); }
  // Forgets an explicit Load() and reads the file the environment names.
  void ResetToEnvironment();

  std::string Path() const;
  // True when the current file existed and was read.
  bool FileRead() const;
  // True when the environment held a non-empty overlay at the last read.
  bool OverlayRead() const;
  // What in the file (and the overlay) was ignored or looks mistaken, as "path:line: reason".
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
  // `warnings` holds the lines that were ignored or overridden, as "origin:line: reason".
  struct Parsed {
    struct Where {
      int line = 0;
      int sectionLine = 0;  // of the "[Section]" line above it; 0 before any
      std::string section;  // as written
      std::string key;
    };
    std::map<std::string, std::string, KeyLess> values;
    std::map<std::string, Where> where;  // by stored key: the line that set the value
    std::vector<std::string> warnings;
  };
  static Parsed Parse(const std::string& text, const std::string& origin);
  // What in `parsed` reads but is probably a mistake (unknown names, numbers that are not,
  // inline comments), as "origin:line: reason", in line order.
  static std::vector<std::string> Check(const Parsed& parsed, const std::string& origin);
  // Parses a settings number; false for anything that is not a whole unsigned long.
  static bool ParseNumber(const std::string& text, unsigned long* out);

 private:
  KpSettings();
  void LoadLocked(const std::string& path);

  const std::string* Find(KeyProbe probe) const;

  mutable std::shared_mutex mutex_;
  std::string path_;
  bool explicit_path_ = false;
  bool file_read_ = false;
  Parsed parsed_;
  Parsed overlay_;
  bool overlay_read_ = false;
  std::atomic<uint64_t> generation_{0};
};
