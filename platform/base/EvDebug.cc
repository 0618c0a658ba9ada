#include "platform/base/EvDebug.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <errno.h>  // program_invocation_short_name
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include "platform/base/KpSettings.h"

std::atomic<int> EvLog::level_{INT_MAX};

namespace {

constexpr const char* kDefaultDirectory = "/var/log/appmgrnet";
constexpr const char* kPattern = "%Y-%m-%d %H:%M:%S.%f %P:%t %v";

long CurrentThreadId() {
  return static_cast<long>(::syscall(SYS_gettid));
}

std::string ProgramName() {
  const char* name = program_invocation_short_name;
  return (name && *name) ? name : "appmgrnet";
}

// All mutable state of the log. Never destroyed, so that lines written from other statics'
// destructors at exit still have somewhere to go.
struct LogState {
  std::mutex mutex;
  bool configured = false;
  EvLogConfig config;
  std::string path;
  std::shared_ptr<spdlog::logger> logger;
  // Held shared while a line is handed to spdlog, whose sinks have locks of their own; fork
  // takes it exclusively, so no sink lock is held when the process is copied.
  std::shared_mutex writeGate;
  std::atomic<unsigned long> dropped{0};
  std::atomic<int> captureCount{0};
  std::mutex captureMutex;
  std::vector<EvLogCapture*> captures;
};

LogState& TheLog() {
  static LogState* state = new LogState();
  return *state;
}

// A line the log cannot write (a full disk, a file removed under it, a closed stderr) is
// counted among the dropped lines, never reported on the caller's stdout or stderr, which belong
// to the program that loaded the library.
void QuietOnFailure(spdlog::logger& logger) {
  logger.set_error_handler(
      [](const std::string&) { TheLog().dropped.fetch_add(1, std::memory_order_relaxed); });
}

std::shared_ptr<spdlog::logger> OpenLogger(const std::string& directory, const std::string& file,
                                           size_t maxBytes, size_t maxFiles, std::string* path) {
  std::error_code ec;
  std::filesystem::create_directories(directory, ec);
  std::string full = (std::filesystem::path(directory) / file).string();
  try {
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
        full, std::max<size_t>(maxBytes, 4096), maxFiles);
    auto logger = std::make_shared<spdlog::logger>("appmgrnet", sink);
    logger->set_pattern(kPattern);
    logger->set_level(spdlog::level::trace);
    // Every line reaches the file at once: a crash must not lose the lines before it.
    logger->flush_on(spdlog::level::trace);
    QuietOnFailure(*logger);
    *path = full;
    return logger;
  } catch (const std::exception&) {
    return nullptr;
  }
}

std::shared_ptr<spdlog::logger> StderrLogger(EvLogConfig::Target target, std::string* path) {
  auto logger = std::make_shared<spdlog::logger>("appmgrnet",
                                                 std::make_shared<spdlog::sinks::stderr_sink_mt>());
  logger->set_pattern(target == EvLogConfig::Target::kJournal ? "%v" : kPattern);
  logger->set_level(spdlog::level::trace);
  logger->flush_on(spdlog::level::trace);
  QuietOnFailure(*logger);
  *path = "";
  return logger;
}

void ApplyLocked(LogState& s, const EvLogConfig& config) {
  s.config = config;
  if (s.config.fileName.empty()) s.config.fileName = ProgramName() + ".log";
  if (s.config.directory.empty()) s.config.directory = kDefaultDirectory;
  if (s.config.target != EvLogConfig::Target::kFile) {
    s.logger = StderrLogger(s.config.target, &s.path);
    s.configured = true;
    EvLog::level_.store(s.config.level, std::memory_order_relaxed);
    return;
  }
  s.logger = OpenLogger(s.config.directory, s.config.fileName, s.config.maxFileBytes,
                        s.config.maxFiles, &s.path);
  if (!s.logger) {
    std::string fallback = "/tmp/appmgrnet-" + std::to_string(::getuid());
    s.logger =
        OpenLogger(fallback, s.config.fileName, s.config.maxFileBytes, s.config.maxFiles, &s.path);
    if (!s.logger) s.path.clear();
  }
  s.configured = true;
  EvLog::level_.store(s.config.level, std::memory_order_relaxed);
}

EvLogConfig ConfigFromSettings() {
  KpSettings& settings = KpSettings::Instance();
  EvLogConfig c;
  unsigned long n = 0;
  if (settings.GetNumber("EventManager", "nDebugLevel", &n)) {
    c.level = static_cast<int>(std::min<unsigned long>(n, INT_MAX - 1));
  }
  settings.GetString("EventManager", "sLogDirectory", &c.directory);
  if (settings.GetNumber("EventManager", "nLogFileMaxKB", &n) && n > 0) {
    c.maxFileBytes = static_cast<size_t>(n) * 1024;
  }
  if (settings.GetNumber("EventManager", "nLogFiles", &n)) c.maxFiles = n;
  return c;
}

// Configures the log from the settings when nothing has yet; true when this call did.
bool ConfigureOnceLocked(LogState& s) {
  if (s.configured) return false;
  ApplyLocked(s, ConfigFromSettings());
  return true;
}

// After the log first configures itself from the settings: what the settings file holds that
// was ignored or looks mistaken, once per process, as error lines, since a setting that is
// silently not applied is a fault an administrator must be able to find.
void LogSettingsWarnings() {
  for (const std::string& w : KpSettings::Instance().Warnings()) {
    EvLog::Write(true, 0, "KpSettings", "settings: " + w);
  }
}

void EnsureConfigured(LogState& s) {
  bool first = false;
  {
    std::lock_guard lock(s.mutex);
    first = ConfigureOnceLocked(s);
  }
  if (first) LogSettingsWarnings();
}

// One event, one line: control characters would split it or corrupt a terminal.
void AppendEscaped(std::string& out, std::string_view text) {
  for (char c : text) {
    unsigned char u = static_cast<unsigned char>(c);
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += ' ';
    } else if (u < 0x20 || u == 0x7f) {
      char hex[8];
      snprintf(hex, sizeof hex, "\\x%02x", u);
      out += hex;
    } else {
      out += c;
    }
  }
}

}  // namespace

struct EvLogFile::Impl {
  std::shared_ptr<spdlog::logger> logger;
};

EvLogFile::EvLogFile(const std::string& fileName) : impl_(new Impl) {
  LogState& s = TheLog();
  EnsureConfigured(s);
  std::lock_guard lock(s.mutex);
  std::string path;
  impl_->logger =
      OpenLogger(s.config.directory, fileName, s.config.maxFileBytes, s.config.maxFiles, &path);
}

EvLogFile::~EvLogFile() {
  delete impl_;
}

void EvLog::Configure(const EvLogConfig& config) {
  LogState& s = TheLog();
  std::lock_guard lock(s.mutex);
  ApplyLocked(s, config);
}

void EvLog::ConfigureFromSettings() {
  EvLogConfig c = ConfigFromSettings();
  Configure(c);
}

void EvLog::Reopen() {
  LogState& s = TheLog();
  std::lock_guard lock(s.mutex);
  // A line being written holds its own reference to the old logger, which closes its file
  // when the last such line is done.
  if (s.configured) ApplyLocked(s, s.config);
}

void EvLog::LockForFork() {
  LogState& s = TheLog();
  s.mutex.lock();
  s.writeGate.lock();
  s.captureMutex.lock();
}

void EvLog::UnlockAfterFork() {
  LogState& s = TheLog();
  s.captureMutex.unlock();
  s.writeGate.unlock();
  s.mutex.unlock();
}

void EvLog::ResetAfterForkInChild() {
  LogState& s = TheLog();
  // The forking thread held them all: nothing else can be using them in the child.
  new (&s.captureMutex) std::mutex();
  new (&s.writeGate) std::shared_mutex();
  new (&s.mutex) std::mutex();
}

void EvLog::SetLevel(int level) {
  LogState& s = TheLog();
  EnsureConfigured(s);
  std::lock_guard lock(s.mutex);
  s.config.level = level;
  level_.store(level, std::memory_order_relaxed);
}

int EvLog::Level() {
  LogState& s = TheLog();
  EnsureConfigured(s);
  return level_.load(std::memory_order_relaxed);
}

std::string EvLog::FilePath() {
  LogState& s = TheLog();
  EnsureConfigured(s);
  std::lock_guard lock(s.mutex);
  return s.path;
}

unsigned long EvLog::DroppedLines() {
  return TheLog().dropped.load();
}

void EvLog::Write(bool error, int level, const char* label, std::string_view text,
                  EvLogFile* file) {
  LogState& s = TheLog();
  std::shared_ptr<spdlog::logger> logger;
  bool journal = false;
  {
    std::unique_lock lock(s.mutex);
    if (ConfigureOnceLocked(s)) {
      lock.unlock();  // the warnings are lines of their own
      LogSettingsWarnings();
      lock.lock();
    }
    if (!error && level > s.config.level) return;
    logger = (file && file->impl()->logger) ? file->impl()->logger : s.logger;
    journal = s.config.target == EvLogConfig::Target::kJournal && logger == s.logger;
  }
  const char* safeLabel = label ? label : "";
  std::string line;
  line.reserve(text.size() + 48);
  if (journal) line += error ? "<3>" : level <= 1 ? "<6>" : "<7>";  // syslog priorities
  if (error) {
    line += "ERR [";
  } else {
    char lv[16];
    snprintf(lv, sizeof lv, "D%d [", level);
    line += lv;
  }
  line += safeLabel;
  line += "] ";
  AppendEscaped(line, text);

  if (logger) {
    std::shared_lock gate(s.writeGate);
    logger->log(error ? spdlog::level::err : spdlog::level::debug,
                spdlog::string_view_t(line.data(), line.size()));
  } else {
    s.dropped.fetch_add(1, std::memory_order_relaxed);
  }

  if (s.captureCount.load(std::memory_order_acquire) > 0) {
    EvLogRecord r{error, error ? 0 : level, safeLabel, std::string(text), CurrentThreadId()};
    std::lock_guard lock(s.captureMutex);
    for (EvLogCapture* c : s.captures) c->Add(r);
  }
}

void EvLog::WriteV(bool error, int level, const char* label, const char* format, va_list ap,
                   EvLogFile* file) {
  char stackBuf[1024];
  va_list copy;
  va_copy(copy, ap);
  int n = vsnprintf(stackBuf, sizeof stackBuf, format, copy);
  va_end(copy);
  if (n < 0) {
    Write(error, level, label, "(unformattable log line)", file);
  } else if (static_cast<size_t>(n) < sizeof stackBuf) {
    Write(error, level, label, std::string_view(stackBuf, static_cast<size_t>(n)), file);
  } else {
    std::string big(static_cast<size_t>(n) + 1, '\0');
    vsnprintf(big.data(), big.size(), format, ap);
    big.resize(static_cast<size_t>(n));
    Write(error, level, label, big, file);
  }
}

void EvDebug::Error(const char* format, ...) const {
  va_list ap;
  va_start(ap, format);
  EvLog::WriteV(true, 0, label_, format, ap, file_);
  va_end(ap);
}

void EvDebug::Debug(int level, const char* format, ...) const {
  if (!EvLog::On(level)) return;
  va_list ap;
  va_start(ap, format);
  EvLog::WriteV(false, level, label_, format, ap, file_);
  va_end(ap);
}

void EvDebug::Log(int level, const char* format, ...) const {
  if (!EvLog::On(level)) return;
  va_list ap;
  va_start(ap, format);
  EvLog::WriteV(false, level, label_, format, ap, file_);
  va_end(ap);
}

void EvEvent::SetError(int code, const char* format, ...) {
  char buf[4096];
  va_list ap;
  va_start(ap, format);
  vsnprintf(buf, sizeof buf, format, ap);
  va_end(ap);
  errorCode_ = code;
  errorText_ = buf;
  EvLog::Write(true, 0, label_, errorText_, file_);
}

void EvEventWrapper::DebugLvl(const char* label, int level, const char* format, ...) {
  if (!EvLog::On(level)) return;
  va_list ap;
  va_start(ap, format);
  EvLog::WriteV(false, level, label, format, ap);
  va_end(ap);
}

void EvEventWrapper::Error(const char* label, const char* format, ...) {
  va_list ap;
  va_start(ap, format);
  EvLog::WriteV(true, 0, label, format, ap);
  va_end(ap);
}

struct EvLogCapture::State {
  mutable std::mutex mutex;
  std::vector<EvLogRecord> records;
};

EvLogCapture::EvLogCapture() : state_(new State) {
  LogState& s = TheLog();
  std::lock_guard lock(s.captureMutex);
  s.captures.push_back(this);
  s.captureCount.fetch_add(1, std::memory_order_release);
}

EvLogCapture::~EvLogCapture() {
  LogState& s = TheLog();
  {
    std::lock_guard lock(s.captureMutex);
    s.captures.erase(std::remove(s.captures.begin(), s.captures.end(), this), s.captures.end());
    s.captureCount.fetch_sub(1, std::memory_order_release);
  }
  delete state_;
}

void EvLogCapture::Add(const EvLogRecord& record) {
  std::lock_guard lock(state_->mutex);
  state_->records.push_back(record);
}

std::vector<EvLogRecord> EvLogCapture::Records() const {
  std::lock_guard lock(state_->mutex);
  return state_->records;
}

size_t EvLogCapture::Count(std::string_view text) const {
  std::lock_guard lock(state_->mutex);
  return static_cast<size_t>(std::count_if(state_->records.begin(), state_->records.end(),
                                           [&](const EvLogRecord& r) { return r.text == text; }));
}

size_t EvLogCapture::CountContaining(std::string_view fragment) const {
  std::lock_guard lock(state_->mutex);
  return static_cast<size_t>(std::count_if(
      state_->records.begin(), state_->records.end(),
      [&](const EvLogRecord& r) { return r.text.find(fragment) != std::string::npos; }));
}

void EvLogCapture::Clear() {
  std::lock_guard lock(state_->mutex);
  state_->records.clear();
}
