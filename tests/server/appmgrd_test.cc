// The appmgrd program end to end: it serves the demo installation, keeps acknowledged changes
// across a restart, stops cleanly on SIGTERM and SIGINT, and reports a bad command line or a
// failed start with one line on stderr and its documented exit code.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "appmgr/AppMgrVersion.h"
#include "platform/net/CKpNetwork.h"
#include "platform/net/Socket.h"
#include "protocol/Messages.h"
#include "tests/server/HandlerClient.h"
#include "tests/support/AppmgrdProcess.h"
#include "tests/support/TestSettings.h"

namespace appmgr::server {
namespace {

namespace fs = std::filesystem;
using namespace appmgr::msg;

AppmgrdProcess::Options Demo() {
  AppmgrdProcess::Options o;
  o.fixture = AppmgrdProcess::DemoFixture();
  return o;
}

bool IsOneErrorLine(const std::string& text) {
  return text.rfind("appmgrd: ", 0) == 0 && text.find('\n') == text.size() - 1;
}

TEST(Appmgrd, AcknowledgedChangesSurviveARestart) {
  TestSettings settings;  // the test's own log
  AppmgrdProcess appmgrd(Demo());
  unsigned port = appmgrd.port();
  // The port file appears just before the line is printed: on a loaded machine the test can
  // get there first, so wait for the line, bounded.
  std::string out = appmgrd.Stdout();
  for (int i = 0; i < 500 && out.empty(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    out = appmgrd.Stdout();
  }
  EXPECT_EQ(out, "appmgrd listening on 127.0.0.1:" + std::to_string(port) + " (data " +
                     appmgrd.dataDir() + ")\n");
  {
    HandlerClient client(appmgrd.connectString());
    GenericUpdateReq2 u;
    u.id = 102;
    u.name = "renamed";
    u.value = 11;
    ASSERT_EQ(OutcomeOf(client.Call(kBsUpdate, u)).code, 0);
    AppMgrProps p[1] = {{"sKept", 2, "yes"}};
    GenericSetPropsReq s;
    s.id = 102;
    s.count = 1;
    s.props = p;
    s.flag = 1;
    ASSERT_EQ(OutcomeOf(client.Call(kBsSetProperties, s)).code, 0);
  }
  appmgrd.Restart();  // the fixture is not loaded again: the database is not new
  EXPECT_EQ(appmgrd.port(), port);

  HandlerClient client(appmgrd.connectString());
  GenericLookupReq4 l;
  l.id = 102;
  GenericLookupResp4 r = client.Call(kBsLookup, l);
  EXPECT_STREQ(r.name, "renamed");
  EXPECT_EQ(r.value, 11);
  GenericGetPropsReq g;
  g.id = 102;
  GenericGetPropsResp props = client.Call(kBsGetProperties, g);
  ASSERT_EQ(props.count, 1u);
  EXPECT_STREQ(props.props[0].name, "sKept");
}

// By default appmgrd holds its database alone while it runs; --shared-database lets another
// program read it meanwhile.
TEST(Appmgrd, HoldsItsDatabaseAloneUnlessShared) {
  TestSettings settings;
  for (bool shared : {false, true}) {
    AppmgrdProcess::Options o = Demo();
    if (shared) o.extraArgs = {"--shared-database"};
    AppmgrdProcess appmgrd(o);
    HandlerClient client(appmgrd.connectString());
    GenericLookupReq4 l;
    l.id = 102;
    EXPECT_STREQ(client.Call(kBsLookup, l).name, "defaultBackupSet");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2((appmgrd.dataDir() + "/appmgr.db").c_str(), &db, SQLITE_OPEN_READONLY, nullptr),
              SQLITE_OK);
    int rc = sqlite3_exec(db, "SELECT count(*) FROM backup_sets", nullptr, nullptr, nullptr);
    EXPECT_EQ(rc, shared ? SQLITE_OK : SQLITE_BUSY) << sqlite3_errmsg(db);
    sqlite3_close(db);
  }
}

TEST(Appmgrd, StopsCleanlyOnSigtermAndSigint) {
  TestSettings settings;
  for (int signal : {SIGTERM, SIGINT}) {
    AppmgrdProcess appmgrd(Demo());
    {
      HandlerClient client(appmgrd.connectString());  // an open connection does not hold it
      ASSERT_TRUE(client.attached());
      EXPECT_EQ(appmgrd.Stop(signal), 0);
    }
    std::string log = ReadFileText(appmgrd.logPath());
    EXPECT_NE(log.find(signal == SIGTERM ? "stopping on SIGTERM" : "stopping on SIGINT"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("[appmgrd] stopped"), std::string::npos) << log;
    EXPECT_TRUE(fs::exists(appmgrd.dataDir() + "/appmgr.db"));
    EXPECT_TRUE(fs::is_directory(appmgrd.dataDir() + "/Temp"));
  }
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "no child is left, not even a zombie";
}

TEST(Appmgrd, AStartThatFailsThrowsWithTheProgramsMessageAndLeavesNoChild) {
  TestSettings settings;
  AppmgrdProcess::Options o = Demo();
  o.extraArgs = {"--max-connections", "0"};
  try {
    AppmgrdProcess appmgrd(o);
    ADD_FAILURE() << "appmgrd started with a bad option";
  } catch (const std::runtime_error& e) {
    std::string what = e.what();
    EXPECT_NE(what.find("exited with status 2 before listening"), std::string::npos) << what;
    EXPECT_NE(what.find("appmgrd: --max-connections"), std::string::npos) << what;
  }
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(Appmgrd, AFixtureThatFailsToLoadIsAStartFailureAndLeavesNoDatabase) {
  TestSettings settings;
  std::string bad = settings.dir() + "/bad.json";
  std::ofstream(bad) << R"({"format": 1, "clients": [{"id": 1}]})";
  std::string data = settings.dir() + "/data";
  AppmgrdProcess::RunResult r =
      AppmgrdProcess::Run({"--data", data, "--port", "0", "--fixture", bad});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(IsOneErrorLine(r.err)) << r.err;
  EXPECT_NE(r.err.find("cannot load the fixture"), std::string::npos) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_FALSE(fs::exists(data + "/appmgr.db"));
}

TEST(Appmgrd, APortInUseIsAStartFailureThatWritesNothing) {
  TestSettings settings;
  net::Socket listener;
  unsigned port = 0;
  ASSERT_FALSE(net::Socket::Listen("127.0.0.1", 0, 1, &listener, &port));
  AppmgrdProcess::RunResult r =
      AppmgrdProcess::Run({"--data", settings.dir() + "/data", "--port", std::to_string(port)});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(IsOneErrorLine(r.err)) << r.err;
  EXPECT_NE(r.err.find("cannot listen on 127.0.0.1:" + std::to_string(port)), std::string::npos)
      << r.err;
  EXPECT_FALSE(fs::exists(settings.dir() + "/data")) << "no data folder, log or database";
}

// The mode bits of `path` that others (not owner or group) have.
unsigned OthersMode(const std::string& path) {
  struct stat st {};
  EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
  return st.st_mode & 0007;
}

TEST(Appmgrd, CreatesItsFilesWithoutAccessForOthersAndReopensItsLogOnSighup) {
  TestSettings settings;
  AppmgrdProcess appmgrd(Demo());
  for (const std::string& path :
       {appmgrd.dataDir() + "/appmgr.db", appmgrd.dataDir() + "/appmgr.db-wal", appmgrd.logPath(),
        appmgrd.dataDir() + "/Temp"}) {
    EXPECT_EQ(OthersMode(path), 0u) << path;
  }

  // Log rotation renames the file, then sends SIGHUP: the server goes on in a new file.
  const std::string rotated = appmgrd.logPath() + ".1";
  fs::rename(appmgrd.logPath(), rotated);
  ASSERT_EQ(::kill(appmgrd.pid(), SIGHUP), 0);
  std::string log;
  for (int i = 0; i < 200 && log.find("reopened the log on SIGHUP") == std::string::npos; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    log = ReadFileText(appmgrd.logPath());
  }
  EXPECT_NE(log.find("reopened the log on SIGHUP"), std::string::npos) << log;
  EXPECT_EQ(OthersMode(appmgrd.logPath()), 0u);
  HandlerClient client(appmgrd.connectString());
  EXPECT_TRUE(client.attached()) << "SIGHUP does not stop the server";
  EXPECT_EQ(appmgrd.Stop(), 0);
  EXPECT_EQ(ReadFileText(rotated).find("stopping"), std::string::npos) << "the old file is left";
  EXPECT_NE(ReadFileText(appmgrd.logPath()).find("stopped"), std::string::npos);
}

TEST(Appmgrd, TheFrameLimitOptionClosesAConnectionThatSendsMore) {
  TestSettings settings;
  AppmgrdProcess::Options o = Demo();
  o.extraArgs = {"--max-frame-bytes", "4096"};
  AppmgrdProcess appmgrd(o);
  EXPECT_NE(ReadFileText(appmgrd.logPath()).find("frames up to 4096 bytes"), std::string::npos);
  CKpNetwork session;
  bool timedOut = false;
  ASSERT_FALSE(session.Attach_RemoteService(appmgrd.connectString(), "AppManager network access",
                                            "test", 10, timedOut));
  std::string longName(5000, 'x');
  GenericUpdateReq2 u;
  u.hdr.version = 2;
  u.id = 102;
  u.name = longName.c_str();
  GenericResp resp;
  kpsDatabuf_v2 out, in;
  out.setExternalBuffer(reinterpret_cast<char*>(&u), sizeof u);
  in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
  ASSERT_FALSE(session.SendXDRMessage(kBsUpdate.requestId, &out, 0, 10, timedOut));
  unsigned long id = kBsUpdate.responseId;
  CLmError e = session.ReceiveXDRMessage(&id, &in, nullptr, 0, 10, timedOut);
  // The server says why before it closes: an error frame with the limit's code and reason.
  EXPECT_EQ(e.GetErrorCode(), 1009) << e.AsString();
  EXPECT_NE(e.AsString().find("exceeds the limit of 4096 bytes"), std::string::npos) << e.AsString();
  EXPECT_FALSE(timedOut);
}

TEST(Appmgrd, SettingsWarningsAreLoggedAndPrintedAtStart) {
  TestSettings settings;
  const std::string ini = settings.dir() + "/appmgrnet.ini";
  std::ofstream(ini) << "[Network]\nnMaxFrameBytes = 65536 ; 64 KiB\n";
  std::string previous = getenv("APPMGR_SETTINGS") ? getenv("APPMGR_SETTINGS") : "";
  setenv("APPMGR_SETTINGS", ini.c_str(), 1);
  AppmgrdProcess appmgrd(Demo());
  setenv("APPMGR_SETTINGS", previous.c_str(), 1);
  const std::string warning =
      ini + ":2: [Network] nMaxFrameBytes = \"65536 ; 64 KiB\" is not a number";
  EXPECT_EQ(appmgrd.Stderr().rfind("appmgrd: warning: settings: " + warning, 0), 0u)
      << appmgrd.Stderr();
  EXPECT_NE(ReadFileText(appmgrd.logPath()).find("ERR [appmgrd] settings: " + warning),
            std::string::npos);
  EXPECT_NE(ReadFileText(appmgrd.logPath()).find("frames up to 16777216 bytes"), std::string::npos)
      << "the default applies";
}

TEST(Appmgrd, LogsToStderrForTheJournalWhenAsked) {
  TestSettings settings;
  for (const char* target : {"journal", "stderr"}) {
    AppmgrdProcess::Options o = Demo();
    o.extraArgs = {"--log-to", target};
    AppmgrdProcess appmgrd(o);
    EXPECT_EQ(appmgrd.Stop(), 0);
    std::string err = appmgrd.Stderr();
    bool journal = std::string(target) == "journal";
    EXPECT_NE(err.find(journal ? "\n<6>D1 [appmgrd] stopped\n" : " D1 [appmgrd] stopped\n"),
              std::string::npos)
        << err;
    EXPECT_FALSE(fs::exists(appmgrd.logPath())) << target;
  }
}

TEST(Appmgrd, TellsSystemdWhenItIsReadyAndWhenItStops) {
  TestSettings settings;
  const std::string path = settings.dir() + "/notify";
  int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ASSERT_GE(fd, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
  ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  timeval wait{5, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
  auto receive = [fd] {
    char buffer[256] = {};
    ssize_t n = ::recv(fd, buffer, sizeof buffer - 1, 0);
    return std::string(buffer, n > 0 ? static_cast<size_t>(n) : 0);
  };
  setenv("NOTIFY_SOCKET", path.c_str(), 1);
  AppmgrdProcess appmgrd(Demo());
  unsetenv("NOTIFY_SOCKET");
  EXPECT_EQ(receive(), "READY=1\nSTATUS=listening on 127.0.0.1:" + std::to_string(appmgrd.port()));
  EXPECT_EQ(appmgrd.Stop(), 0);
  EXPECT_EQ(receive(), "STOPPING=1");
  ::close(fd);
}

TEST(Appmgrd, CheckRefusesADamagedDatabase) {
  TestSettings settings;
  AppmgrdProcess::Options o = Demo();
  o.extraArgs = {"--check"};
  AppmgrdProcess appmgrd(o);
  EXPECT_EQ(appmgrd.Stop(), 0);
  appmgrd.Start();  // an existing database is checked
  EXPECT_NE(ReadFileText(appmgrd.logPath()).find("integrity check of"), std::string::npos);
  EXPECT_EQ(appmgrd.Stop(), 0);

  // A row that refers to a client that does not exist, written behind the server's back.
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open((appmgrd.dataDir() + "/appmgr.db").c_str(), &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db,
                         "PRAGMA foreign_keys = OFF; "
                         "INSERT INTO client_platforms (client_id, slot) VALUES (424242, 0);",
                         nullptr, nullptr, nullptr),
            SQLITE_OK)
      << sqlite3_errmsg(db);
  sqlite3_close(db);
  AppmgrdProcess::RunResult r = AppmgrdProcess::Run(
      {"--data", appmgrd.dataDir(), "--port", "0", "--log-dir", settings.dir(), "--check"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(IsOneErrorLine(r.err)) << r.err;
  EXPECT_NE(r.err.find("failed its integrity check (1 problem): a row of client_platforms refers "
                       "to a missing row of clients"),
            std::string::npos)
      << r.err;
  r = AppmgrdProcess::Run({"--data", appmgrd.dataDir(), "--port", "0", "--log-dir", settings.dir()},
                          std::chrono::milliseconds(1500));
  EXPECT_NE(r.out.find("appmgrd listening on"), std::string::npos) << "without --check it starts";
}

struct BadUsage {
  const char* name;
  std::vector<std::string> args;  // "DATA" stands for a data folder
  const char* says;               // part of the error line
};
void PrintTo(const BadUsage& c, std::ostream* os) {
  *os << c.name;
}

class AppmgrdBadUsage : public testing::TestWithParam<BadUsage> {};

TEST_P(AppmgrdBadUsage, ExitsTwoWithOneLineOnStderr) {
  TestSettings settings;
  std::vector<std::string> args = GetParam().args;
  for (std::string& a : args) {
    if (a == "DATA") a = settings.dir() + "/data";
  }
  AppmgrdProcess::RunResult r = AppmgrdProcess::Run(args);
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(IsOneErrorLine(r.err)) << r.err;
  EXPECT_NE(r.err.find(GetParam().says), std::string::npos) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_FALSE(fs::exists(settings.dir() + "/data")) << "nothing is created on bad usage";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, AppmgrdBadUsage,
    testing::Values(
        BadUsage{"NoDataFolder", {"--port", "0"}, "--data is required"},
        BadUsage{"PortAboveRange", {"--data", "DATA", "--port", "65536"}, "--port"},
        BadUsage{"PortNotANumber", {"--data", "DATA", "--port", "http"}, "--port"},
        BadUsage{"UnknownOption", {"--data", "DATA", "--verbose"}, "--verbose"},
        BadUsage{"StrayArgument", {"--data", "DATA", "extra"}, "extra"},
        BadUsage{"MissingFixture",
                 {"--data", "DATA", "--fixture", "/no/such/fixture.json"},
                 "/no/such/fixture.json"},
        BadUsage{
            "ZeroConnections", {"--data", "DATA", "--max-connections", "0"}, "--max-connections"},
        BadUsage{"LogLevelAboveRange", {"--data", "DATA", "--log-level", "100"}, "--log-level"},
        BadUsage{"ConsoleAddressWithAControlCharacter",
                 {"--data", "DATA", "--web-console-url", "https://ch01/\x01"},
                 "--web-console-url"},
        BadUsage{"FrameLimitBelowFourKiB",
                 {"--data", "DATA", "--max-frame-bytes", "4095"},
                 "--max-frame-bytes"},
        BadUsage{"UnknownLogTarget", {"--data", "DATA", "--log-to", "syslog"}, "--log-to"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Appmgrd, ListFilesNeedsAnExistingDatabaseAndCreatesNothing) {
  TestSettings settings;
  std::string data = settings.dir() + "/empty-data";
  AppmgrdProcess::RunResult r = AppmgrdProcess::Run({"--data", data, "--list-files"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "appmgrd: there is no database at " + data + "/appmgr.db\n");
  EXPECT_FALSE(fs::exists(data));
}

TEST(Appmgrd, HelpListsEveryOptionAndVersionNamesTheReleaseBothExitingZero) {
  AppmgrdProcess::RunResult r = AppmgrdProcess::Run({"--help"});
  EXPECT_EQ(r.status, 0);
  for (const char* option :
       {"--listen", "--port", "--data", "--fixture", "--port-file", "--log-dir", "--log-level",
        "--idle-timeout", "--max-connections", "--web-console-url", "--max-file-mb",
        "--max-frame-bytes", "--log-to", "--check", "--version", "--shared-database",
        "--install-dir", "--min-free-mb", "--list-files"}) {
    EXPECT_NE(r.out.find(option), std::string::npos) << option;
  }
  r = AppmgrdProcess::Run({"--version"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "appmgrd " APPMGRNET_VERSION "\n");
}

}  // namespace
}  // namespace appmgr::server
