// appmgrd: the App Manager server. docs/server.md describes its options, files and exit codes.
//
// Start-up: parse the command line (exit 2 on a mistake), prepare the data folder, open the
// database (loading the fixture when the database is new), register the handlers, listen, write
// the port file, print one line on stdout. Then the main thread waits in sigwait for SIGINT or
// SIGTERM, which every thread has blocked since the first line of main, so no handler code ever
// runs in signal context; on either it stops the server (closing every connection), closes the
// database and exits 0. Any failure to start is one line on stderr and exit 1.
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "platform/base/EvDebug.h"
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
  uint64_t minFreeMb = 64;
  bool listFiles = false;  // print the file registrations and exit
};

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
  app.add_option("--min-free-mb", c->minFreeMb,
                 "free space, in MiB, a file put must leave on the disk of Temp/")
      ->capture_default_str()
      ->check(CLI::Range(0, 1 << 30));
  app.add_flag("--list-files", c->listFiles,
               "print the files clients registered (tab-separated, with a header) and exit; "
               "works beside a running server");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) {  // --help
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
// the fixture is removed again, so the next start is again a first start.
CLmError OpenStore(const Config& c, std::unique_ptr<Store>* store) {
  std::string path = (fs::path(c.dataDir) / "appmgr.db").string();
  std::error_code ec;
  bool fresh = !fs::exists(path, ec);
  if (CLmError e = Store::Open(path, Store::Options{}, store)) {
    if (fresh) RemoveDatabase(path);
    return e;
  }
  EvEventWrapper::DebugLvl(kLabel, 1, "database %s (%s), schema version %d", path.c_str(),
                           fresh ? "new" : "existing", (*store)->schema_version());
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
  if (CLmError e = Store::Open(path, Store::Options{}, &store)) return StartFailed(e.Text());
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

int Run(const Config& c, const sigset_t& stopSignals) {
  if (CLmError e = CreateFolder(c.dataDir, "data folder")) return StartFailed(e.Text());
  if (CLmError e = CreateFolder(c.logDir, "log folder")) return StartFailed(e.Text());
  // Absolute, as logged and as registrations record it.
  std::error_code ec;
  std::string installDir = fs::absolute(c.installDir, ec).lexically_normal().string();
  if (ec) installDir = c.installDir;
  const std::string tempDir = (fs::path(installDir) / "Temp").string();
  if (CLmError e = CreateFolder(tempDir, "file-transfer folder")) return StartFailed(e.Text());
  EvLogConfig log;
  log.directory = c.logDir;
  log.fileName = "appmgrd.log";
  log.level = c.logLevel;
  EvLog::Configure(log);
  gLogConfigured = true;
  std::string dataDir = fs::absolute(c.dataDir, ec).lexically_normal().string();
  if (ec) dataDir = c.dataDir;
  EvEventWrapper::DebugLvl(kLabel, 1, "starting: data %s, listen %s, port %u, files into %s",
                           dataDir.c_str(), c.listen.c_str(), c.port, tempDir.c_str());

  std::unique_ptr<Store> store;
  if (CLmError e = OpenStore(c, &store)) return StartFailed(e.Text());

  ServerOptions options;
  options.address = c.listen;
  options.port = c.port;
  options.name = "appmgrd";
  options.maxConnections = c.maxConnections;
  options.idleTimeoutSeconds = c.idleTimeoutSeconds;
  options.tempDirectory = tempDir;
  options.maxFileBytes = c.maxFileMb << 20;
  options.minFreeBytes = c.minFreeMb << 20;
  Server server(options);
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

  int sig = 0;
  while (sigwait(&stopSignals, &sig) != 0) {
  }
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
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
  // Sockets never raise SIGPIPE; a closed stdout must not kill the server either.
  ::signal(SIGPIPE, SIG_IGN);

  Config config;
  int exitCode = 0;
  if (!ParseCommandLine(argc, argv, &config, &exitCode)) return exitCode;
  if (config.listFiles) return ListFiles(config);
  return Run(config, stopSignals);
}
