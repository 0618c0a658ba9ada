// The event log: EvDebug, EvEvent, EvEventWrapper, and the process-wide controls in EvLog.
//
// Every line is written to one file per program in the configured log directory, as
//   2026-11-22 10:01:02.123456 4242:4250 D4 [ClientSessionWrapper::send] Entry(...)
// (time, pid:thread, "ERR" or "D<level>", [label], text). Control characters in the text are
// escaped so that one event is one line. The library never writes to stdout or
// stderr; a program may choose stderr (or the journal) instead of the file (EvLogConfig::target).
//
// Error lines are always written. A debug line is written when its level is at most the
// configured debug level; a line above the level costs one comparison and is never formatted.
// Callers whose arguments are costly to compute guard the call with EvLog::On(level).
//
// Configuration comes from the settings store, section "EventManager": "nDebugLevel" (default
// 1), "sLogDirectory" (default /var/log/appmgrnet, falling back to /tmp/appmgrnet-<uid> when it
// cannot be created), "nLogFileMaxKB" (default 10240) and "nLogFiles" (default 5) for the
// size-based rotation. It is read on the first line; EvLog::ConfigureFromSettings() re-reads it
// and EvLog::Configure() replaces it.
//
// Thread-safety: all of it may be used from any thread; lines from concurrent threads are never
// interleaved within a line.
#pragma once

#include <atomic>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#define EV_PRINTF(fmt_index, first_arg) __attribute__((format(printf, fmt_index, first_arg)))

struct EvLogConfig {
  // Where lines go. kFile: the file below. kStderr: standard error, in the file's format.
  // kJournal: standard error read by the systemd journal, each line opened by its syslog
  // priority ("<3>" error, "<6>" level 0 and 1, "<7>" debug) and without the time, which the
  // journal adds. Only the programs choose kStderr or kJournal; the library always writes a file.
  enum class Target { kFile, kStderr, kJournal };
  Target target = Target::kFile;
  std::string directory;         // created when missing
  std::string fileName;          // default: "<program name>.log"
  int level = 1;                 // debug lines above this level are dropped
  size_t maxFileBytes = 10u << 20;  // rotate when a file would grow past this
  size_t maxFiles = 5;           // rotated files kept beside the live one
};

// One line as the log saw it; what EvLogCapture collects.
struct EvLogRecord {
  bool error = false;
  int level = 0;  // 0 for error lines
  std::string label;
  std::string text;
  long threadId = 0;
};

class EvLogFile;

class EvLog {
 public:
  // The configured debug level. Until the first configuration it is INT_MAX, so the first line
  // always reaches the slow path, which configures and then applies the real level.
  static std::atomic<int> level_;

  static bool On(int level) { return level <= level_.load(std::memory_order_relaxed); }

  static void Configure(const EvLogConfig& config);
  static void ConfigureFromSettings();
  // Closes the log file and opens it again under its name, so that a file renamed by log
  // rotation is left alone and a new one started (a server does this on SIGHUP).
  static void Reopen();
  // Around fork(): every lock of the log taken before it, and given back after it in the
  // parent and the child, so that a child never starts with a lock another thread held.
  static void LockForFork();
  static void UnlockAfterFork();
  // In the child: the locks made anew (a read-write lock's owner is a thread of the parent).
  static void ResetAfterForkInChild();
  static void SetLevel(int level);
  static int Level();
  // Path of the file being written; empty when no file could be opened.
  static std::string FilePath();
  // Lines dropped: no log file could be opened, or a write to it failed.
  static unsigned long DroppedLines();

  // Writes one finished line. `file` null means the process log.
  static void Write(bool error, int level, const char* label, std::string_view text,
                    EvLogFile* file = nullptr);
  static void WriteV(bool error, int level, const char* label, const char* format, va_list ap,
                     EvLogFile* file = nullptr);
};

// A log file of its own in the log directory, for a component that keeps a separate log.
class EvLogFile {
 public:
  explicit EvLogFile(const std::string& fileName);
  ~EvLogFile();
  EvLogFile(const EvLogFile&) = delete;
  EvLogFile& operator=(const EvLogFile&) = delete;
  struct Impl;
  Impl* impl() { return impl_; }

 private:
  Impl* impl_;
};

// A labelled writer of error and debug lines. Cheap to construct: it holds the label pointer
// (which must outlive it; labels are literals in practice) and the optional file.
class EvDebug {
 public:
  explicit EvDebug(const char* label = "") : label_(label ? label : "") {}
  // `file` null writes to the process log.
  EvDebug(EvLogFile* file, const char* label) : label_(label ? label : ""), file_(file) {}

  void setLabel(const char* label) { label_ = label ? label : ""; }
  const char* label() const { return label_; }

  void Error(const char* format, ...) const EV_PRINTF(2, 3);
  void Debug(int level, const char* format, ...) const EV_PRINTF(3, 4);
  void Log(int level, const char* format, ...) const EV_PRINTF(3, 4);  // same as Debug

 protected:
  const char* label_;
  EvLogFile* file_ = nullptr;
};

// EvDebug plus the error record of the object's last failure.
class EvEvent : public EvDebug {
 public:
  explicit EvEvent(const char* label = "") : EvDebug(label) {}

  // Records and logs an error line.
  void SetError(int code, const char* format, ...) EV_PRINTF(3, 4);
  int GetErrorCode() const { return errorCode_; }
  const std::string& GetErrorText() const { return errorText_; }

 private:
  int errorCode_ = 0;
  std::string errorText_;
};

// Static, label-per-call logging.
class EvEventWrapper {
 public:
  static void DebugLvl(const char* label, int level, const char* format, ...) EV_PRINTF(3, 4);
  static void Error(const char* label, const char* format, ...) EV_PRINTF(2, 3);
};

// Test hook: while an EvLogCapture lives it receives every line that is written (after level
// filtering), with its label and level. Several may live at once.
class EvLogCapture {
 public:
  EvLogCapture();
  ~EvLogCapture();
  EvLogCapture(const EvLogCapture&) = delete;
  EvLogCapture& operator=(const EvLogCapture&) = delete;

  std::vector<EvLogRecord> Records() const;
  // Lines whose text equals `text` exactly.
  size_t Count(std::string_view text) const;
  // Lines whose text contains `fragment`.
  size_t CountContaining(std::string_view fragment) const;
  void Clear();

  void Add(const EvLogRecord& record);

 private:
  struct State;
  State* state_;
};
