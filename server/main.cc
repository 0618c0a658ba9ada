// appmgrd: the App Manager server. docs/server.md describes its options, files, signals and exit
// codes.
//
// Start-up: parse the command line (exit 2 on a mistake), then bind the listening port before
// anything is written, so a second server started on a busy port leaves no folder, log or
// database behind. Then prepare the data folder, start the log (a file, or stderr / the systemd
// journal), report the settings file's warnings, open the database (loading the fixture when the
// database is new; with --check, verifying it), register the handlers, accept connections, write
// the port file, print one line on stdout and tell systemd it is ready. The main thread then waits
// in sigwait for SIGINT, SIGTERM or SIGHUP, which every thread has blocked since the first line of
// main, so no handler code ever runs in signal context: SIGHUP reopens the log file, the other
// two stop the server (closing every connection), close the database and exit 0. Any failure to
// start is one line on stderr and exit 1.
//
// Files are created without access for others (umask 027 at least): the database and the
// received files hold the installation's configuration.
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "appmgr/AppMgrVersion.h"
#include "platform/base/EvDebug.h"
#include "platform/base/KpSettings.h"
#include "platform/net/Frame.h"
#include "platform/net/Socket.h"
#include "server/core/Server.h"
#include "server/handlers/AllHandlers.h"
#include "server/handlers/PreInstallHandlers.h"
#include "server/store/FileContentStore.h"
#include "server/store/Fixture.h"
#include "server/store/Store.h"

namespace {

namespace fs = std::filesystem;
using appmgr::server::Server;
using appmgr::server::ServerOptions;
using appmgr::server::Store;

constexpr const char* kLabel = "appmgrd";
constexpr int kExitStopped = 0;
constexpr int kExitStartFailed = 1;
constexpr int kExitUsage = 2;

struct Config {
  std::string listen = "127.0.0.1";
  unsigned port = 8400;
  std::string dataDir;
  std::string fixture;
  std::string portFile;
  std::string logDir;  // empty: <data>/log
  int logLevel = 1;
  int idleTimeoutSeconds = 300;
  size_t maxConnections = 256;
  std::string webConsoleUrl;
  std::string installDir;  // empty: the data folder
  uint64_t maxFileMb = 256;
  size_t maxFrameBytes = 0;  // 0: [Network] nMaxFrameBytes of the settings, else 16 MiB
  std::string logTo;         // "file", "stderr", "journal"; empty: journal under systemd, else file
  bool check = false;
  bool sharedDatabase = false;
  uint64_t minFreeMb = 64;
  bool listFiles = false;  // print the file registrations and exit
};

constexpr size_t kMinFrameBytes = 4096;
constexpr size_t kMaxFrameBytes = size_t{1} << 30;

// One line, whatever the error text holds.
std::string OneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

// Until the log is configured, a line would open the platform's default log instead.
bool gLogConfigured = false;

int StartFailed(const std::string& why) {
  if (gLogConfigured) EvEventWrapper::Error(kLabel, "cannot start: %s", why.c_str());
  std::fprintf(stderr, "appmgrd: %s\n", OneLine(why).c_str());
  return kExitStartFailed;
}

// Parses the command line into *c; false with the exit code in *exitCode when the program
// should end at once (--help, or a mistake, already reported).
bool ParseCommandLine(int argc, char** argv, Config* c, int* exitCode) {
  CLI::App app{
      "appmgrd: the App Manager server. Keeps the configuration database in DIR/appmgr.db and "
      "answers the App Manager protocol on ADDR:PORT until SIGINT or SIGTERM.",
      "appmgrd"};
  app.add_option("--listen", c->listen, "address to listen on")->capture_default_str();
  app.add_option("--port", c->port, "TCP port; 0 picks a free one (see --port-file)")
      ->capture_default_str()
      ->check(CLI::Range(0, 65535));
  app.add_option("--data", c->dataDir,
                 "data folder: appmgr.db and Temp/ (received files); created when missing")
      ->required();
  app.add_option("--fixture", c->fixture,
                 "JSON fixture loaded once, when the database is created; ignored afterwards")
      ->check(CLI::ExistingFile);
  app.add_option("--port-file", c->portFile,
                 "file that receives the bound port, written atomically once listening");
  app.add_option("--log-dir", c->logDir, "folder of appmgrd.log (default: DIR/log)");
  app.add_option("--log-level", c->logLevel, "debug level of the log; 0 logs errors only")
      ->capture_default_str()
      ->check(CLI::Range(0, 99));
  app.add_option("--idle-timeout", c->idleTimeoutSeconds,
                 "seconds a connection may stay silent between requests")
      ->capture_default_str()
      ->check(CLI::Range(1, 7 * 24 * 3600));
  app.add_option("--max-connections", c->maxConnections,
                 "connections served at once; more are refused in their hello")
      ->capture_default_str()
      ->check(CLI::Range(1, 100000));
  app.add_option("--web-console-url", c->webConsoleUrl,
                 "web console address given to machines in pre-install mode (default: none)")
      ->check([](const std::string& url) {
        CLmError e = appmgr::server::CheckWebConsoleUrl(url);
        return e ? e.Text() : std::string();
      });
  app.add_option("--install-dir", c->installDir,
                 "install folder: files put through file transfer go to its Temp/ (default: DIR)");
  app.add_option("--max-file-mb", c->maxFileMb, "largest file accepted by file transfer, in MiB")
      ->capture_default_str()
      ->check(CLI::Range(1, 1 << 20));
  app.add_option("--max-frame-bytes", c->maxFrameBytes,
                 "largest frame payload received or sent, in bytes (default: [Network] "
                 "nMaxFrameBytes of the settings file, else 16777216)")
      ->check(CLI::Range(kMinFrameBytes, kMaxFrameBytes).description(""))
      ->type_name("BYTES");
  app.add_option("--log-to", c->logTo,
                 "where the log goes: file (LOGDIR/appmgrd.log), stderr, or journal (stderr "
                 "for the systemd journal); default: journal when stderr is the journal, else file")
      ->check(CLI::IsMember({"file", "stderr", "journal"}).description(""))
      ->type_name("file|stderr|journal");
  app.add_flag("--check", c->check,
               "check the whole database (SQLite integrity and foreign keys) before serving; a "
               "damaged database fails the start");
  app.set_version_flag("--version", "appmgrd " APPMGRNET_VERSION);
  app.add_flag("--shared-database", c->sharedDatabase,
               "let other programs open appmgr.db while the server runs (two file-lock calls "
               "per request); by default the server holds the file alone");
  app.add_option("--min-free-mb", c->minFreeMb,
                 "free space, in MiB, a file put must leave on the disk of Temp/")
      ->capture_default_str()
      ->check(CLI::Range(0, 1 << 30));
  app.add_flag("--list-files", c->listFiles,
               "print the files clients registered (tab-separated, with a header) and exit; "
               "works beside a server running with --shared-database");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) {  // --help, --version
      *exitCode = app.exit(e);
      return false;
    }
    std::fprintf(stderr, "appmgrd: %s (see appmgrd --help)\n", OneLine(e.what()).c_str());
    *exitCode = kExitUsage;
    return false;
  }
  if (c->logDir.empty()) c->logDir = (fs::path(c->dataDir) / "log").string();
  if (c->installDir.empty()) c->installDir = c->dataDir;
  return true;
}

// True when stderr is a stream of the systemd journal: systemd names the stream it connected in
// JOURNAL_STREAM as "device:inode", which must be our fd 2 (a child of the service may have
// redirected it).
bool StderrIsTheJournal() {
  const char* stream = std::getenv("JOURNAL_STREAM");
  unsigned long long device = 0, inode = 0;
  if (stream == nullptr || std::sscanf(stream, "%llu:%llu", &device, &inode) != 2) return false;
  struct stat st {};
  return ::fstat(STDERR_FILENO, &st) == 0 && st.st_dev == device && st.st_ino == inode;
}

EvLogConfig::Target LogTarget(const std::string& logTo) {
  if (logTo == "stderr") return EvLogConfig::Target::kStderr;
  if (logTo == "journal") return EvLogConfig::Target::kJournal;
  if (logTo == "file") return EvLogConfig::Target::kFile;
  return StderrIsTheJournal() ? EvLogConfig::Target::kJournal : EvLogConfig::Target::kFile;
}

// Tells systemd (Type=notify) about the service's state; does nothing when not started by it.
// The protocol is one datagram to the socket NOTIFY_SOCKET names ('@' for the abstract space).
void NotifySystemd(const std::string& state) {
  const char* path = std::getenv("NOTIFY_SOCKET");
  if (path == nullptr || (path[0] != '/' && path[0] != '@')) return;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  size_t length = std::strlen(path);
  if (length >= sizeof address.sun_path) return;
  std::memcpy(address.sun_path, path, length);
  if (path[0] == '@') address.sun_path[0] = '\0';
  int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return;
  ::sendto(fd, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<sockaddr*>(&address),
           static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
  ::close(fd);
}

CLmError CreateFolder(const std::string& path, const char* what) {
  std::error_code ec;
  fs::create_directories(path, ec);
  if (!ec) return CLmError();
  return CLmError(kKpErrIo,
                  std::string("cannot create the ") + what + " " + path + ": " + ec.message());
}

// Writes the port to a file beside `path` and renames it into place, so a reader never sees a
// partial number.
CLmError WritePortFile(const std::string& path, unsigned port) {
  std::string temp = path + ".tmp-" + std::to_string(::getpid());
  {
    std::ofstream out(temp, std::ios::trunc);
    out << port << '\n';
    out.close();
    if (!out) {
      std::error_code ignored;
      fs::remove(temp, ignored);
      return CLmError(kKpErrIo, "cannot write the port file " + temp);
    }
  }
  std::error_code ec;
  fs::rename(temp, path, ec);
  if (ec) {
    fs::remove(temp, ec);
    return CLmError(kKpErrIo, "cannot write the port file " + path + ": " + ec.message());
  }
  return CLmError();
}

void RemoveDatabase(const std::string& path) {
  std::error_code ignored;
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) fs::remove(path + suffix, ignored);
}

// Opens the database; a new one gets the fixture. A new database that fails to open or to take
// the fixture is removed again, so the next start is again a first start. With --check an
// existing database is read whole and verified first.
CLmError OpenStore(const Config& c, std::unique_ptr<Store>* store) {
  std::string path = (fs::path(c.dataDir) / "appmgr.db").string();
  std::error_code ec;
  bool fresh = !fs::exists(path, ec);
  Store::Options options;
  options.exclusive = !c.sharedDatabase;
  if (CLmError e = Store::Open(path, options, store)) {
    if (fresh) RemoveDatabase(path);
    return e;
  }
  EvEventWrapper::DebugLvl(kLabel, 1, "database %s (%s), schema version %d", path.c_str(),
                           fresh ? "new" : "existing", (*store)->schema_version());
  if (c.check && !fresh) {
    if (CLmError e = (*store)->CheckIntegrity()) {
      store->reset();
      return e;
    }
    EvEventWrapper::DebugLvl(kLabel, 1, "integrity check of %s: ok", path.c_str());
  }
  if (!fresh || c.fixture.empty()) return CLmError();
  if (CLmError e = appmgr::server::LoadFixtureFile(**store, c.fixture)) {
    store->reset();
    RemoveDatabase(path);
    return CLmError(e.GetErrorCode(), "cannot load the fixture: " + e.Text());
  }
  EvEventWrapper::DebugLvl(kLabel, 1, "loaded the fixture %s", c.fixture.c_str());
  return CLmError();
}

// --list-files: the registrations of an existing database, one tab-separated line each, under a
// header. Errors only are logged, into the server's log.
int ListFiles(const Config& c) {
  std::string path = (fs::path(c.dataDir) / "appmgr.db").string();
  std::error_code ec;
  if (!fs::exists(path, ec)) {
    std::fprintf(stderr, "appmgrd: there is no database at %s\n", path.c_str());
    return kExitStartFailed;
  }
  EvLogConfig log;
  log.directory = c.logDir;
  log.fileName = "appmgrd.log";
  log.level = 0;
  EvLog::Configure(log);
  gLogConfigured = true;
  std::unique_ptr<Store> store;
  Store::Options options;
  options.exclusive = false;  // a server started with --shared-database may have it open
  if (CLmError e = Store::Open(path, options, &store)) return StartFailed(e.Text());
  std::vector<appmgr::server::FileRegistration> registrations;
  if (CLmError e = appmgr::server::FileContentStore(*store).Registrations(0, &registrations)) {
    return StartFailed(e.Text());
  }
  // Tabs and line breaks inside a text would break the columns: shown escaped.
  auto field = [](const std::string& text) {
    std::string out;
    for (char ch : text) {
      if (ch == '\t') {
        out += "\\t";
      } else if (ch == '\n') {
        out += "\\n";
      } else {
        out += ch;
      }
    }
    return out;
  };
  std::printf("id\tclient\tfile\tbytes\tregistered\ttext\tpath\tstored\n");
  for (const auto& r : registrations) {
    char when[32] = "-";
    std::time_t t = static_cast<std::time_t>(r.registeredAt);
    std::tm tm {};
    if (gmtime_r(&t, &tm)) std::strftime(when, sizeof when, "%Y-%m-%dT%H:%M:%SZ", &tm);
    std::printf("%llu\t%llu\t%s\t%llu\t%s\t%s\t%s\t%s\n", static_cast<unsigned long long>(r.id),
                static_cast<unsigned long long>(r.clientId), field(r.fileName).c_str(),
                static_cast<unsigned long long>(r.size), when, field(r.text).c_str(),
                field(r.path).c_str(), field(r.storedPath).c_str());
  }
  return std::fflush(stdout) == 0 ? kExitStopped : kExitStartFailed;
}

int Run(const Config& c, const sigset_t& signals) {
  std::error_code ec;
  std::string dataDir = fs::absolute(c.dataDir, ec).lexically_normal().string();
  if (ec) dataDir = c.dataDir;
  // Absolute, as logged and as file registrations record it.
  std::string installDir = fs::absolute(c.installDir, ec).lexically_normal().string();
  if (ec) installDir = c.installDir;
  const std::string tempDir = (fs::path(installDir) / "Temp").string();
  ServerOptions options;
  options.address = c.listen;
  options.port = c.port;
  options.name = "appmgrd";
  options.maxConnections = c.maxConnections;
  options.idleTimeoutSeconds = c.idleTimeoutSeconds;
  options.tempDirectory = tempDir;
  options.maxFileBytes = c.maxFileMb << 20;
  options.maxFrameBytes = c.maxFrameBytes ? c.maxFrameBytes : appmgr::net::MaxFramePayload();
  options.minFreeBytes = c.minFreeMb << 20;
  Server server(options);
  // The port first: nothing is created or written when it cannot be had.
  if (CLmError e = server.Listen()) {
    return StartFailed("cannot listen on " + appmgr::net::HostPortText(c.listen, c.port) + ": " +
                       e.Text());
  }

  const EvLogConfig::Target target = LogTarget(c.logTo);
  if (CLmError e = CreateFolder(c.dataDir, "data folder")) return StartFailed(e.Text());
  if (target == EvLogConfig::Target::kFile) {
    if (CLmError e = CreateFolder(c.logDir, "log folder")) return StartFailed(e.Text());
  }
  if (CLmError e = CreateFolder(tempDir, "file-transfer folder")) return StartFailed(e.Text());
  EvLogConfig log;
  log.target = target;
  log.directory = c.logDir;
  log.fileName = "appmgrd.log";
  log.level = c.logLevel;
  EvLog::Configure(log);
  gLogConfigured = true;
  EvEventWrapper::DebugLvl(
      kLabel, 1, "starting %s: data %s, listen %s, port %u, frames up to %zu bytes, files into %s",
      APPMGRNET_VERSION, dataDir.c_str(), c.listen.c_str(), server.port(), options.maxFrameBytes,
      tempDir.c_str());
  // A setting that is silently not applied is a fault nobody can find: each warning is an error
  // line of the log and, when the log is a file, a line on stderr too.
  for (const std::string& w : KpSettings::Instance().Warnings()) {
    EvEventWrapper::Error(kLabel, "settings: %s", w.c_str());
    if (target == EvLogConfig::Target::kFile) {
      std::fprintf(stderr, "appmgrd: warning: settings: %s\n", OneLine(w).c_str());
    }
  }

  std::unique_ptr<Store> store;
  if (CLmError e = OpenStore(c, &store)) return StartFailed(e.Text());

  appmgr::server::RegisterAllHandlers(server, *store, {c.webConsoleUrl, tempDir});
  if (CLmError e = server.Start()) {
    return StartFailed("cannot listen on " + appmgr::net::HostPortText(c.listen, c.port) + ": " +
                       e.Text());
  }
  if (!c.portFile.empty()) {
    if (CLmError e = WritePortFile(c.portFile, server.port())) {
      server.Stop();
      return StartFailed(e.Text());
    }
  }
  std::string where = appmgr::net::HostPortText(c.listen, server.port());
  EvEventWrapper::DebugLvl(kLabel, 1, "listening on %s", where.c_str());
  std::printf("appmgrd listening on %s (data %s)\n", where.c_str(), dataDir.c_str());
  std::fflush(stdout);
  NotifySystemd("READY=1\nSTATUS=listening on " + where);

  int sig = 0;
  for (;;) {
    if (sigwait(&signals, &sig) != 0) continue;
    if (sig != SIGHUP) break;
    // Log rotation has renamed the file (or removed it): start a new one under the old name.
    EvLog::Reopen();
    EvEventWrapper::DebugLvl(kLabel, 1, "reopened the log on SIGHUP");
  }
  NotifySystemd("STOPPING=1");
  EvEventWrapper::DebugLvl(kLabel, 1, "stopping on %s", sig == SIGINT ? "SIGINT" : "SIGTERM");
  server.Stop();
  store.reset();
  if (!c.portFile.empty()) fs::remove(c.portFile, ec);
  EvEventWrapper::DebugLvl(kLabel, 1, "stopped");
  return kExitStopped;
}

}  // namespace

int main(int argc, char** argv) {
  // Blocked before any thread exists, so every thread inherits the mask and the signals are
  // only ever taken by sigwait in Run.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  // Sockets never raise SIGPIPE; a closed stdout must not kill the server either.
  ::signal(SIGPIPE, SIG_IGN);
  // No access for others to anything the server creates; a stricter umask is kept.
  ::umask(::umask(0) | 027);

  Config config;
  int exitCode = 0;
  if (!ParseCommandLine(argc, argv, &config, &exitCode)) return exitCode;
  if (config.listFiles) return ListFiles(config);
  return Run(config, signals);
}
