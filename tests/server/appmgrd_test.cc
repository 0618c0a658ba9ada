// The appmgrd program end to end: it serves the demo installation, keeps acknowledged changes
// across a restart, stops cleanly on SIGTERM and SIGINT, and reports a bad command line or a
// failed start with one line on stderr and its documented exit code.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

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

TEST(Appmgrd, APortInUseIsAStartFailure) {
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
                 "--web-console-url"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Appmgrd, ListFilesNeedsAnExistingDatabaseAndCreatesNothing) {
  TestSettings settings;
  std::string data = settings.dir() + "/empty-data";
  AppmgrdProcess::RunResult r = AppmgrdProcess::Run({"--data", data, "--list-files"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "appmgrd: there is no database at " + data + "/appmgr.db\n");
  EXPECT_FALSE(fs::exists(data));
}

TEST(Appmgrd, HelpListsEveryOptionAndExitsZero) {
  AppmgrdProcess::RunResult r = AppmgrdProcess::Run({"--help"});
  EXPECT_EQ(r.status, 0);
  for (const char* option :
       {"--listen", "--port", "--data", "--fixture", "--port-file", "--log-dir", "--log-level",
        "--idle-timeout", "--max-connections", "--web-console-url", "--max-file-mb",
        "--install-dir", "--min-free-mb"}) {
    EXPECT_NE(r.out.find(option), std::string::npos) << option;
  }
}

}  // namespace
}  // namespace appmgr::server
