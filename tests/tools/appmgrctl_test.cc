// appmgrctl end to end: the real program, loading the real library, against a real appmgrd
// holding the demo fixture. Each case starts its own server on a free port.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "appmgr/AppMgrVersion.h"
#include "protocol/Messages.h"
#include "tests/support/AppmgrdProcess.h"
#include "tests/support/RawPeer.h"
#include "tests/support/ScriptServer.h"
#include "tests/support/TestSettings.h"
#include "tests/tools/CtlRun.h"

namespace {

using nlohmann::json;
using appmgr_test::CtlRun;
using appmgr_test::Describe;
using appmgr_test::JsonLines;
using appmgr_test::RunCtl;

AppmgrdProcess::Options ServerOptions(std::vector<std::string> extraArgs = {}) {
  AppmgrdProcess::Options options;
  options.fixture = APPMGR_DEMO_FIXTURE;
  options.extraArgs = std::move(extraArgs);
  return options;
}

class AppmgrctlTest : public testing::Test {
 protected:
  // Shared: a case reads the database with appmgrd --list-files while the server runs.
  AppmgrctlTest()
      : server_(ServerOptions({"--shared-database"})), settings_(ControlhostAt(server_), 4) {}

  static std::string ControlhostAt(const AppmgrdProcess& server) {
    return "[Controlhost]\nsHOSTNAME = " + server.host() + "\nsCLIENTNAME = ch01\n";
  }

  // appmgrctl with this case's library and settings.
  CtlRun Ctl(std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), {"--lib", APPMGRNET_PATH, "--settings", settings_.path()});
    return RunCtl(args, input);
  }

  json CtlJson(std::vector<std::string> args) {
    args.insert(args.begin(), "--json");
    CtlRun run = Ctl(args);
    EXPECT_EQ(run.status, 0) << Describe(args) << "\n" << run.err;
    return run.status == 0 ? json::parse(run.out) : json();
  }

  AppmgrdProcess server_;
  TestSettings settings_;
};

TEST_F(AppmgrctlTest, LookupPrintsAnAlignedRecordTable) {
  CtlRun run = Ctl({"bs", "lookup", "101"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "FIELD        VALUE\n"
            "id           101\n"
            "name         defaultBackupSet\n"
            "value        0\n"
            "description  Controlhost configuration and logs\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(AppmgrctlTest, ListsPrintAHeaderAndAlignedColumns) {
  CtlRun run = Ctl({"bs", "props", "102"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "NAME            TYPE  VALUE\n"
            "nRetentionDays  1     30\n"
            "sScanMode       2     journal\n");
  run = Ctl({"bs", "system-state", "105", "db01"});
  EXPECT_EQ(run.out,
            "ID  VALUE  TEXT1       TEXT2        PAIRS\n"
            "1   2      Registry    HKLM\\SYSTEM  1:SYSTEM, 2:SOFTWARE\n"
            "2   1      Boot files  C:\\Boot      3:BCD\n");
}

TEST_F(AppmgrctlTest, ReadCommandsPrintTheServersAnswerAsJson) {
  const json existingPair = {{"pair", 1},
                             {"backupSet", 105},
                             {"sourceClient", 3},
                             {"destinationClient", 4},
                             {"source", "D:\\Data"},
                             {"sourceGuid", "{6a1f0c2e-93b4-4d2a-a1e5-0f9c8b7a6d01}"},
                             {"destinationGuid", "{b2c3d4e5-f6a7-4b8c-9d0e-1f2a3b4c5d01}"},
                             {"destination", "/replica/db01/Data"},
                             {"state", 1}};
  auto proposed = [](const char* source, const char* destination) {
    return json{{"pair", 0},
                {"backupSet", 105},
                {"sourceClient", 3},
                {"destinationClient", 0},
                {"source", source},
                {"sourceGuid", ""},
                {"destinationGuid", ""},
                {"destination", destination},
                {"state", 0}};
  };
  struct Case {
    std::vector<std::string> args;
    json expected;
  };
  const Case cases[] = {
      {{"bs", "lookup", "102"},
       {{"id", 102},
        {"name", "defaultBackupSet"},
        {"value", 7},
        {"description", "Database server file system"}}},
      // Numbers are decimal or 0x hexadecimal; a leading zero is not octal.
      {{"bs", "client-id", "0x69"}, {{"id", 105}, {"client", 3}}},
      {{"bs", "client-id", "0105"}, {{"id", 105}, {"client", 3}}},
      {{"bs", "props", "102"},
       json::array({{{"name", "nRetentionDays"}, {"type", 1}, {"value", "30"}},
                    {{"name", "sScanMode"}, {"type", 2}, {"value", "journal"}}})},
      {{"bs", "props", "102", "--table", "1"}, json::array()},
      {{"bs", "stores", "102"}, {"primary", "archive"}},
      {{"bs", "wildcards", "101"}, {"*.tmp", "*.swp"}},
      {{"bs", "default-subclient", "102", "archive"},
       {{"id", 102}, {"store", "archive"}, {"subclient", 1022}}},
      {{"bs", "interface-pair", "105", "1", "--selector", "1"},
       {{"id", 105},
        {"pair", 1},
        {"selector", 1},
        {"first", "192.168.50.13"},
        {"second", "192.168.50.14"}}},
      {{"bs", "pair-conflict", "105", "D:\\Data", "/elsewhere"},
       {{"id", 105},
        {"conflict", true},
        {"existing", existingPair},
        {"proposed", proposed("D:\\Data", "/elsewhere")}}},
      {{"bs", "pair-conflict", "105", "E:\\New", "/new"},
       {{"id", 105},
        {"conflict", false},
        {"existing", nullptr},
        {"proposed", proposed("E:\\New", "/new")}}},
      {{"bs", "system-state", "105", "db01"},
       json::array({{{"id", 1},
                     {"value", 2},
                     {"text1", "Registry"},
                     {"text2", "HKLM\\SYSTEM"},
                     {"pairs", json::array({{{"id", 1}, {"name", "SYSTEM"}},
                                            {{"id", 2}, {"name", "SOFTWARE"}}})}},
                    {{"id", 2},
                     {"value", 1},
                     {"text1", "Boot files"},
                     {"text2", "C:\\Boot"},
                     {"pairs", json::array({{{"id", 3}, {"name", "BCD"}}})}}})},
      {{"bs", "system-state", "105", "nobody"}, json::array()},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(CtlJson(c.args), c.expected) << Describe(c.args);
  }
}

TEST_F(AppmgrctlTest, AnUpdateIsSeenByTheNextProcess) {
  // A control character in a value must not break the table's layout.
  CtlRun run = Ctl({"bs", "update", "101", "--name", "two\nlines", "--value", "-7"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(CtlJson({"bs", "lookup", "101"}),
            (json{{"id", 101},
                  {"name", "two\nlines"},
                  {"value", -7},
                  {"description", "Controlhost configuration and logs"}}));
  run = Ctl({"bs", "lookup", "101"});
  EXPECT_NE(run.out.find("\nname         two\\nlines\n"), std::string::npos) << run.out;
}

TEST_F(AppmgrctlTest, PropertyChangesRoundTrip) {
  auto names = [this] {
    std::vector<std::string> out;
    for (const json& p : CtlJson({"bs", "props", "102"})) {
      out.push_back(p["name"].get<std::string>() + "=" + p["value"].get<std::string>());
    }
    return out;
  };
  // The value is everything after the first '='.
  EXPECT_EQ(CtlJson({"bs", "set-props", "102", "sA=1", "sB=x=y", "--type", "2"}),
            (json{{"id", 102}, {"set", {"sA", "sB"}}, {"replace", false}}));
  EXPECT_EQ(names(),
            (std::vector<std::string>{"nRetentionDays=30", "sScanMode=journal", "sA=1", "sB=x=y"}));
  CtlJson({"bs", "remove-props", "102", "sA", "nRetentionDays", "absent"});
  EXPECT_EQ(names(), (std::vector<std::string>{"sScanMode=journal", "sB=x=y"}));

  CtlRun strict = Ctl({"bs", "remove-props", "102", "--strict", "sB", "absent"});
  EXPECT_EQ(strict.status, 1);
  EXPECT_TRUE(strict.err.starts_with("appmgrctl: error 1: ")) << strict.err;
  EXPECT_NE(strict.err.find("absent"), std::string::npos) << strict.err;
  EXPECT_EQ(names(), (std::vector<std::string>{"sScanMode=journal", "sB=x=y"}));

  CtlJson({"bs", "set-props", "102", "--replace", "only=1"});
  EXPECT_EQ(names(), (std::vector<std::string>{"only=1"}));
  CtlJson({"bs", "set-props", "102", "--replace"});  // no properties: clears them
  EXPECT_EQ(names(), (std::vector<std::string>{}));
}

TEST_F(AppmgrctlTest, FailuresExitOneWithTheLibrarysStatusAndText) {
  struct Case {
    std::vector<std::string> args;
    std::string errPrefix;
    bool exact;  // the whole of stderr
  };
  const Case cases[] = {
      {{"bs", "lookup", "42"}, "appmgrctl: error 1: backup set 42 does not exist\n", true},
      {{"bs", "delete-all", "42"}, "appmgrctl: error 1: backup set 42 does not exist\n", true},
      {{"bs", "stores", "42"}, "appmgrctl: error 1: backup set 42 does not exist\n", true},
      {{"bs", "default-subclient", "105", "standby"}, "appmgrctl: error 1: ", false},
      {{"bs", "update", "105", "--name", "defaultBackupSet", "--value", "0"},
       "appmgrctl: error 2: ",
       false},
      // These operations give no error text: the status alone.
      {{"bs", "pair-conflict", "42", "a", "b"}, "appmgrctl: error 1\n", true},
      {{"bs", "system-state", "42", "db01"}, "appmgrctl: error 1\n", true},
      // The library's success flag, not a status: 0 is the failure.
      {{"preinstall-url", server_.host()},
       "appmgrctl: error 0: no web console address from ",
       false},
      {{"--no-cache", "fill-cache", "500"},
       "appmgrctl: error 0: the message cache was not filled",
       false},
  };
  for (const Case& c : cases) {
    CtlRun run = Ctl(c.args);
    EXPECT_EQ(run.status, 1) << Describe(c.args);
    EXPECT_EQ(run.out, "") << Describe(c.args);
    if (c.exact) {
      EXPECT_EQ(run.err, c.errPrefix) << Describe(c.args);
    } else {
      EXPECT_TRUE(run.err.starts_with(c.errPrefix)) << Describe(c.args) << ": " << run.err;
    }
  }
}

TEST_F(AppmgrctlTest, AFailureUnderJsonIsAJsonErrorObjectToo) {
  struct Case {
    std::vector<std::string> args;
    json error;
  };
  const Case cases[] = {
      {{"--json", "bs", "lookup", "42"}, {{"status", 1}, {"text", "backup set 42 does not exist"}}},
      {{"bs", "system-state", "42", "db01", "--json"}, {{"status", 1}}},
  };
  for (const Case& c : cases) {
    CtlRun run = Ctl(c.args);
    EXPECT_EQ(run.status, 1) << Describe(c.args);
    EXPECT_EQ(json::parse(run.out), (json{{"error", c.error}})) << Describe(c.args);
    EXPECT_TRUE(run.err.starts_with("appmgrctl: error 1")) << run.err;
  }
  // Before the library: a failure of appmgrctl itself has a text and no status.
  CtlRun run = RunCtl({"--json", "--lib", "/nonexistent/lib.so", "stats"});
  EXPECT_EQ(run.status, 3);
  json doc = json::parse(run.out);
  EXPECT_FALSE(doc["error"].contains("status"));
  EXPECT_NE(doc["error"]["text"].get<std::string>().find("/nonexistent/lib.so"), std::string::npos);
}

TEST_F(AppmgrctlTest, HostOptionsNameTheServerWithoutASettingsFile) {
  const std::map<std::string, std::string> noFile = {{"APPMGR_SETTINGS", "/nonexistent/a.ini"}};
  // The client name defaults to the host name; given, it is used.
  for (std::vector<std::string> args :
       {std::vector<std::string>{"--host", server_.host()},
        std::vector<std::string>{"--host", server_.host(), "--client-name", "ch01"}}) {
    args.insert(args.begin(), {"--lib", APPMGRNET_PATH, "--json"});
    args.insert(args.end(), {"bs", "lookup", "102"});
    CtlRun run = RunCtl(args, "", noFile);
    ASSERT_EQ(run.status, 0) << Describe(args) << "\n" << run.err;
    EXPECT_EQ(json::parse(run.out)["value"], 7);
  }
  // --host wins over the settings file's Controlhost, which here names nothing that listens.
  // The rest of the file still applies (the log folder), and what in it looks mistaken is
  // logged once, when the process's log starts.
  TestSettings elsewhere(
      "[Controlhost]\nsHOSTNAME = 127.0.0.1:1\nsCLIENTNAME = ch01\n[EventManager]\nnDebugLvl = 4\n",
      1);
  CtlRun run = RunCtl({"--lib", APPMGRNET_PATH, "--settings", elsewhere.path(), "--host",
                       server_.host(), "batch", "-"},
                      "bs client-id 105\nbs client-id 105\n");
  EXPECT_EQ(run.status, 0) << run.err;
  const std::string log = ReadFileText(elsewhere.logDir() + "/appmgrctl.log");
  const std::string warning = "ERR [KpSettings] settings: " + elsewhere.path() +
                              ":5: [EventManager] nDebugLvl is not a setting this system reads "
                              "(did you mean nDebugLevel?)\n";
  const size_t first = log.find(warning);
  EXPECT_NE(first, std::string::npos) << log;
  EXPECT_EQ(log.find(warning, first + 1), std::string::npos) << "logged more than once:\n" << log;

  // Without --host, a missing settings file is said plainly, before anything is loaded.
  run = RunCtl({"--lib", "/nonexistent/lib.so", "bs", "lookup", "102"}, "", noFile);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "appmgrctl: no settings to find the App Manager: /nonexistent/a.ini "
            "($APPMGR_SETTINGS) does not exist; name the server with --host HOST[:PORT], or a "
            "settings file with --settings FILE or APPMGR_SETTINGS\n");
  // Commands that ask no Controlhost need no settings.
  run = RunCtl({"--lib", APPMGRNET_PATH, "stats"}, "", noFile);
  EXPECT_EQ(run.status, 0) << run.err;
  // Nor does a caller that names the server in its own overlay.
  run = RunCtl({"--lib", APPMGRNET_PATH, "bs", "client-id", "105"}, "",
               {{"APPMGR_SETTINGS", "/nonexistent/a.ini"},
                {"APPMGR_SETTINGS_OVERLAY",
                 "[Controlhost]\nsHOSTNAME = " + server_.host() + "\nsCLIENTNAME = ch01\n"}});
  EXPECT_EQ(run.status, 0) << run.err;
}

TEST_F(AppmgrctlTest, ChangesAndHelpersReportWhatTheyDid) {
  EXPECT_EQ(CtlJson({"bs", "delete-all", "101"}), (json{{"id", 101}, {"contentsDeleted", true}}));
  EXPECT_EQ(CtlJson({"bs", "undelete-all", "101"}),
            (json{{"id", 101}, {"contentsDeleted", false}}));
  EXPECT_EQ(CtlJson({"fill-cache", "500"}), (json{{"jobId", 500}, {"loaded", true}}));
  json stats = CtlJson({"stats"});
  EXPECT_EQ(stats["totalCalls"], 0);
  EXPECT_EQ(stats["cacheInUse"], true);
  EXPECT_EQ(stats["fullPool"]["exists"], false);
}

TEST_F(AppmgrctlTest, PreinstallUrlAsksTheNamedHost) {
  AppmgrdProcess withConsole(
      ServerOptions({"--web-console-url", "https://console.lab.example.net/"}));
  EXPECT_EQ(CtlJson({"preinstall-url", withConsole.host(), "--host-client", "ch01"}),
            (json{{"host", withConsole.host()}, {"url", "https://console.lab.example.net/"}}));
}

TEST_F(AppmgrctlTest, ABatchAnswersARepeatedReadFromTheCache) {
  const std::string input =
      "# a repeated read\n"
      "bs lookup 101\n"
      "\n"
      "  bs lookup 101   # the same again\n"
      "stats\n";
  for (bool noCache : {false, true}) {
    std::vector<std::string> args = {"--json", "batch", "-"};
    if (noCache) args.insert(args.begin(), "--no-cache");
    CtlRun run = Ctl(args, input);
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<json> docs = JsonLines(run.out);
    ASSERT_EQ(docs.size(), 3u) << run.out;
    EXPECT_EQ(docs[0]["line"], 2);
    EXPECT_EQ(docs[1]["line"], 4);
    EXPECT_EQ(docs[1]["command"], "bs lookup 101   # the same again");
    EXPECT_EQ(docs[1]["result"], docs[0]["result"]);
    EXPECT_EQ(docs[2]["command"], "stats");
    EXPECT_EQ(docs[2]["result"]["totalCalls"], 2) << "no-cache " << noCache;
    EXPECT_EQ(docs[2]["result"]["skippedCalls"], noCache ? 0 : 1) << "no-cache " << noCache;
  }
}

TEST_F(AppmgrctlTest, ABatchSeesItsOwnChanges) {
  CtlRun run = Ctl({"batch", "-"},
                   "bs lookup 101\n"
                   "bs update 101 --name 'new name' --value 9\n"
                   "bs lookup 101\n");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "> bs lookup 101\n"
            "FIELD        VALUE\n"
            "id           101\n"
            "name         defaultBackupSet\n"
            "value        0\n"
            "description  Controlhost configuration and logs\n"
            "\n"
            "> bs update 101 --name 'new name' --value 9\n"
            "FIELD  VALUE\n"
            "id     101\n"
            "name   new name\n"
            "value  9\n"
            "\n"
            "> bs lookup 101\n"
            "FIELD        VALUE\n"
            "id           101\n"
            "name         new name\n"
            "value        9\n"
            "description  Controlhost configuration and logs\n");
}

TEST_F(AppmgrctlTest, ABatchStopsAtTheFirstFailureUnlessToldToKeepGoing) {
  const std::string input = "bs lookup 101\nbs lookup 42\nbs lookup 102\n";
  for (bool keepGoing : {false, true}) {
    std::vector<std::string> args = {"--json", "batch", "-"};
    if (keepGoing) args.push_back("--keep-going");
    CtlRun run = Ctl(args, input);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "appmgrctl: line 2: error 1: backup set 42 does not exist\n");
    std::vector<json> docs = JsonLines(run.out);
    ASSERT_EQ(docs.size(), keepGoing ? 3u : 2u) << run.out;
    EXPECT_EQ(docs[1],
              (json{{"line", 2},
                    {"command", "bs lookup 42"},
                    {"error", {{"status", 1}, {"text", "backup set 42 does not exist"}}}}));
    if (keepGoing) {
      EXPECT_EQ(docs[2]["result"]["id"], 102);
    }
  }
}

TEST_F(AppmgrctlTest, ABatchWithABadLineRunsNothing) {
  CtlRun run = Ctl({"batch", "-"},
                   "bs update 101 --name changed --value 1\n"
                   "bs lookup\n"
                   "bs lookup 101 'unterminated\n"
                   "batch -\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  for (const char* line : {"line 2: ", "line 3: ", "line 4: "}) {
    EXPECT_NE(run.err.find(line), std::string::npos) << run.err;
  }
  EXPECT_EQ(CtlJson({"bs", "lookup", "101"})["name"], "defaultBackupSet");
}

// Without a server: these never reach the library.

TEST(AppmgrctlTimeoutTest, TimeoutBoundsACallToAServerThatDoesNotAnswer) {
  using Clock = std::chrono::steady_clock;
  // A server that takes the request and never answers: the library's own bound on the pooled
  // session's receive ends the call.
  ScriptServer slow;
  slow.On(appmgr::msg::kBsLookup,
          [](const GenericLookupReq4&, GenericLookupResp4&, appmgr::server::Exchange&) {});
  slow.Delay(appmgr::msg::kBsLookup.requestId, std::chrono::seconds(4));
  // A server that accepts the connection and never answers its hello.
  RawPeer silent([](appmgr::net::Socket& s) {
    char buffer[256];
    size_t n = 0;
    s.RecvSome(buffer, sizeof buffer, appmgr::net::Deadline::After(4000), &n, "hello");
    std::this_thread::sleep_for(std::chrono::seconds(4));
  });
  for (const std::string& host : {slow.host(), "127.0.0.1:" + std::to_string(silent.port())}) {
    auto start = Clock::now();
    CtlRun run = RunCtl({"--lib", APPMGRNET_PATH, "--host", host, "--timeout", "1", "--json", "bs",
                         "lookup", "101"});
    double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    EXPECT_EQ(run.status, 1) << host << ": " << run.err;
    EXPECT_LT(seconds, 3.5) << host << ": the bound of 1 s (and a second's grace) did not hold";
    EXPECT_TRUE(run.err.starts_with("appmgrctl: ")) << run.err;
    EXPECT_TRUE(json::parse(run.out).contains("error")) << run.out;
  }
}

TEST(AppmgrctlUsageTest, MistakenCommandsAreNamedPlainly) {
  struct Case {
    std::vector<std::string> args;
    std::string err;
  };
  const Case cases[] = {
      {{}, "appmgrctl: no command given (appmgrctl --help lists the commands)\n"},
      {{"--json"}, "appmgrctl: no command given (appmgrctl --help lists the commands)\n"},
      {{"frobnicate", "1"},
       "appmgrctl: unknown command \"frobnicate\" (appmgrctl --help lists the commands)\n"},
      {{"--settings", "/etc/passwd", "frobnicate"},
       "appmgrctl: unknown command \"frobnicate\" (appmgrctl --help lists the commands)\n"},
      {{"bs"}, "appmgrctl: bs needs a command: lookup, update, "},
      {{"bs", "lookupp", "101"}, "appmgrctl: unknown bs command \"lookupp\" (bs takes lookup, "},
  };
  for (const Case& c : cases) {
    CtlRun run = RunCtl(c.args);
    EXPECT_EQ(run.status, 2) << Describe(c.args);
    EXPECT_TRUE(run.err.starts_with(c.err)) << Describe(c.args) << ": " << run.err;
  }
}

TEST(AppmgrctlUsageTest, UsageErrorsExitTwoBeforeTheLibraryIsLoaded) {
  const std::vector<std::string> cases[] = {
      {},
      {"frobnicate"},
      {"bs"},
      {"bs", "lookup"},
      {"bs", "lookup", "abc"},
      {"bs", "lookup", "-1"},
      {"bs", "lookup", "18446744073709551616"},
      {"bs", "lookup", "101", "102"},
      {"bs", "update", "101", "--name", "x"},
      {"bs", "update", "101", "--name", "x", "--value", "9223372036854775808"},
      {"bs", "set-props", "101"},
      {"bs", "set-props", "101", "novalue"},
      {"bs", "set-props", "101", "=value"},
      {"bs", "remove-props", "101"},
      {"bs", "interface-pair", "105"},
      {"batch", "/nonexistent/commands.txt"},
      {"--settings", "/nonexistent/settings.ini", "stats"},
      {"--host", "", "stats"},
      {"--host", "ch01 8400", "stats"},
      {"--host", "a@b", "stats"},
      {"--client-name", "two\nlines", "stats"},
      {"--timeout", "-1", "stats"},
      {"--timeout", "86401", "stats"},
  };
  for (const std::vector<std::string>& c : cases) {
    std::vector<std::string> args = {"--lib", "/nonexistent/libappmgrnet.so"};
    args.insert(args.end(), c.begin(), c.end());
    CtlRun run = RunCtl(args);
    EXPECT_EQ(run.status, 2) << Describe(c) << ": " << run.err;
    EXPECT_TRUE(run.err.starts_with("appmgrctl: ")) << Describe(c) << ": " << run.err;
    EXPECT_EQ(run.out, "") << Describe(c);
  }
}

TEST(AppmgrctlUsageTest, HelpExitsZero) {
  struct Case {
    std::vector<std::string> args;
    std::string expected;
  };
  const Case cases[] = {
      {{"--help"}, "batch"},
      {{"bs", "--help"}, "pair-conflict"},
      {{"bs", "set-props", "--help"}, "--replace"},
      {{"--help-all"}, "system-state"},
  };
  for (const Case& c : cases) {
    CtlRun run = RunCtl(c.args);
    EXPECT_EQ(run.status, 0) << Describe(c.args);
    EXPECT_NE(run.out.find(c.expected), std::string::npos) << Describe(c.args) << ": " << run.out;
  }
}

TEST(AppmgrctlLoadTest, ALibraryThatCannotBeUsedExitsThreeWithTheLoadersText) {
  struct Case {
    std::vector<std::string> args;
    std::map<std::string, std::string> env;
    std::vector<std::string> mentions;
  };
  const Case cases[] = {
      {{"--lib", "/nonexistent/libappmgrnet.so", "stats"},
       {},
       {"/nonexistent/libappmgrnet.so", "--lib", "No such file"}},
      // The environment variable is used when --lib is absent, and wins over the build tree.
      {{"stats"},
       {{"APPMGR_LIBRARY", "/nonexistent/env.so"}},
       {"/nonexistent/env.so", "APPMGR_LIBRARY", "No such file"}},
      // --lib wins over the environment variable.
      {{"--lib", "/nonexistent/option.so", "stats"},
       {{"APPMGR_LIBRARY", APPMGRNET_PATH}},
       {"/nonexistent/option.so"}},
      {{"--lib", APPMGRCTL_INCOMPLETE_LIB, "stats"},
       {},
       {APPMGRCTL_INCOMPLETE_LIB, "GetClientLibraryStatistics", "undefined symbol"}},
  };
  for (const Case& c : cases) {
    CtlRun run = RunCtl(c.args, "", c.env);
    EXPECT_EQ(run.status, 3) << Describe(c.args) << ": " << run.err;
    for (const std::string& m : c.mentions) {
      EXPECT_NE(run.err.find(m), std::string::npos) << Describe(c.args) << ": " << run.err;
    }
  }
}

TEST(AppmgrctlLoadTest, VersionNamesTheLibraryFileAndVersionItLoaded) {
  // By the SONAME in the build tree, or the file --lib names.
  const std::string buildTree =
      std::filesystem::path(APPMGRNET_PATH).parent_path().string() + "/" APPMGRNET_SONAME;
  for (const auto& [args, file] :
       {std::pair<std::vector<std::string>, std::string>{{"--version"}, buildTree},
        {{"--lib", APPMGRNET_PATH, "--version"}, APPMGRNET_PATH}}) {
    CtlRun run = RunCtl(args);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "appmgrctl " APPMGRNET_VERSION "\nlibrary " + file +
                           " (libappmgrnet " APPMGRNET_VERSION ")\n");
  }
  CtlRun run = RunCtl({"--lib", "/nonexistent/lib.so", "--version"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, "appmgrctl " APPMGRNET_VERSION "\n");
  EXPECT_TRUE(run.err.starts_with("appmgrctl: cannot load /nonexistent/lib.so")) << run.err;
}

TEST(AppmgrctlLoadTest, FindsTheLibraryOfItsOwnBuildTree) {
  TestSettings settings("", 1);
  CtlRun run = RunCtl({"--settings", settings.path(), "--json", "stats"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["totalCalls"], 0);
}

// ---- Entity lists ----

TEST_F(AppmgrctlTest, ListsPrintTheServersMembersAsTablesAndJson) {
  CtlRun run = Ctl({"list", "backupsets", "--client", "3", "--deleted"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "ID   NAME              DELETED\n"
            "102  defaultBackupSet  false\n"
            "103  databases         false\n"
            "105  replication       false\n"
            "106  retired           true\n");
  run = Ctl({"list", "cloud-clients", "1"});
  EXPECT_EQ(run.out,
            "CLIENT  ACCESSNODE\n"
            "3       2\n"
            "4       -\n");

  struct Case {
    std::vector<std::string> args;
    json expected;
  };
  const Case cases[] = {
      {{"list", "clients", "--platform", "4", "--host-names"},
       json::array({{{"id", 3}, {"hostName", "db01.lab.example.net"}},
                    {{"id", 4}, {"hostName", "fs02.lab.example.net"}}})},
      {{"list", "clients", "--group", "1", "--app-type", "20"},
       json::array({{{"id", 3}, {"name", "db01"}}})},
      {{"list", "clients", "--with-platform"},
       json::array({{{"id", 2}, {"name", "controlhost"}, {"platform", 1}},
                    {{"id", 3}, {"name", "db01"}, {"platform", 4}},
                    {{"id", 4}, {"name", "fs02"}, {"platform", 4}}})},
      {{"list", "instances", "--app-type", "10", "--group", "1"},
       json::array({{{"id", 12}, {"name", "default"}}, {{"id", 14}, {"name", "default"}}})},
      {{"list", "subclients", "--client", "3", "--app-type", "20"},
       json::array({{{"id", 1031}, {"name", "default"}}, {{"id", 1032}, {"name", "hourly-logs"}}})},
      {{"list", "subclients", "--backupset", "106", "--deleted"},
       json::array({{{"id", 1061}, {"name", "default"}, {"deleted", true}}})},
      {{"list", "siblings", "1021"},
       {{"subclient", 1021},
        {"client", 3},
        {"appType", 10},
        {"instance", 12},
        {"backupSet", 102},
        {"defaultSubclient", 1021},
        {"siblings", json::array({{{"id", 1022}, {"name", "logs"}}})}}},
      {{"list", "groups", "--client", "3", "--also-client", "4"},
       json::array({{{"id", 1}, {"name", "Production servers"}}})},
      {{"list", "providers", "--type", "2"},
       json::array({{{"id", 2},
                     {"name", "Object store"},
                     {"description", "https://s3.lab.example.net"},
                     {"enabled", true},
                     {"value", 16}}})},
      {{"list", "appids", "--archive-group", "1", "--incr-archive-group", "3"},
       {"3|2|20|13|103|1031|0|SALESDB||"}},
      {{"list", "clouds", "--type", "7"}, json::array()},
      {{"list", "domain-clients", "dmz"},
       json::array({{{"client", 2},
                     {"name", "controlhost"},
                     {"domain", "DMZ"},
                     {"value1", 2},
                     {"value2", 1},
                     {"value3", 22}}})},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(CtlJson(c.args), c.expected) << Describe(c.args);
  }
}

TEST_F(AppmgrctlTest, ListFailuresAndFilterCombinationsNoListTakes) {
  CtlRun run = Ctl({"list", "instances", "--client", "42"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "appmgrctl: error 1: client 42 does not exist\n");
  run = Ctl({"list", "cloud-clients", "9"});
  EXPECT_EQ(run.err, "appmgrctl: error 1: cloud 9 does not exist\n");

  for (std::vector<std::string> args : {
           std::vector<std::string>{"list", "clients", "--with-platform", "--group", "1"},
           {"list", "clients", "--group", "1", "--app-type", "10", "--platform", "4"},
           {"list", "appids", "--number3", "3", "--archive-group", "7"},
           {"list", "siblings"},
       }) {
    run = Ctl(args);
    EXPECT_EQ(run.status, 2) << Describe(args) << ": " << run.err;
    EXPECT_EQ(run.out, "") << Describe(args);
  }
}

}  // namespace

namespace {

// ---- Clients and application ids ----

// A file in a fresh temporary folder, removed with the object.
class TempFile {
 public:
  explicit TempFile(const std::string& text) {
    dir_ = (std::filesystem::temp_directory_path() / "appmgrctl-record-XXXXXX").string();
    if (!mkdtemp(dir_.data())) throw std::runtime_error("mkdtemp failed");
    std::ofstream(path()) << text;
  }
  ~TempFile() {
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  std::string path() const { return dir_ + "/record.json"; }

 private:
  std::string dir_;
};

TEST_F(AppmgrctlTest, ClientsAreCreatedFromOptionsChangedFromARecordAndRemoved) {
  json made = CtlJson({"client", "create", "--name", "web01", "--host", "web01.lab.example.net",
                       "--set", "integer5=-1", "--set", "platform1.text=Linux x86-64"});
  EXPECT_EQ(made["id"], 5);
  EXPECT_EQ(made["integer5"], -1);
  EXPECT_EQ(made["platform1"], (json{{"value", 0}, {"text", "Linux x86-64"}}))
      << "a create carries no platform texts; appmgrctl sets them right after";
  EXPECT_EQ(CtlJson({"client", "lookup", "--name", "WEB01"}), made);

  // What lookup prints, edited, is a record modify takes; fields not in it are kept.
  TempFile record(R"({"id": 5, "text3": "Web server", "platform2": {"value": 2}})");
  json changed = CtlJson({"client", "modify", "5", "--from-file", record.path(), "--set", "text4=rack 9"});
  EXPECT_EQ(changed["text3"], "Web server");
  EXPECT_EQ(changed["text4"], "rack 9");
  EXPECT_EQ(changed["platform2"]["value"], 2);
  EXPECT_EQ(changed["platform1"]["text"], "Linux x86-64");
  EXPECT_EQ(changed["hostName"], "web01.lab.example.net");
  EXPECT_EQ(CtlJson({"client", "lookup", "5"}), changed);

  CtlRun run = Ctl({"client", "remove", "5"});
  EXPECT_EQ(run.out, "FIELD    VALUE\nid       5\nremoved  true\n");
  run = Ctl({"client", "lookup", "5"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "appmgrctl: error 1: client 5 does not exist\n");
  run = Ctl({"client", "remove", "3"});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(run.err.starts_with(
      "appmgrctl: error 2: client 3 cannot be removed: it still has 3 application types"))
      << run.err;
}

TEST_F(AppmgrctlTest, ClientQueriesAndApplicationIds) {
  EXPECT_EQ(CtlJson({"client", "volume-pairs", "{B2C3D4E5-F6A7-4B8C-9D0E-1F2A3B4C5D02}"}), json({2}));
  EXPECT_EQ(CtlJson({"client", "replication-sets", "4"}),
            (json{{"id", 4}, {"backupSets", {105}}, {"sourceClients", {3}}, {"pairs", {1, 2}}}));
  CtlRun run = Ctl({"client", "with-property", "sSite", "rack 7"});
  EXPECT_EQ(run.out,
            "ID  NAME  HOSTNAME              TEXT3\n"
            "4   fs02  fs02.lab.example.net  File server and replication target\n");
  EXPECT_EQ(CtlJson({"client", "asm-instances", "3", "--app-type", "20"}), json({15}));
  EXPECT_EQ(CtlJson({"client", "fs-node-data", "4", "nodes=3", "--value", "-2", "--flag"}),
            (json{{"id", 4}, {"data", "nodes=3"}, {"value", -2}, {"flag", true}}));
  CtlJson({"client", "set-props", "4", "sRole=replica"});
  CtlJson({"client", "remove-props", "4", "sSite", "--as-properties", "--strict"});
  EXPECT_EQ(CtlJson({"client", "props", "4"}),
            json::array({{{"name", "sNetworkThrottle"}, {"type", 1}, {"value", "0"}},
                          {{"name", "nHTTPProxyEnabled"}, {"type", 1}, {"value", "0"}},
                          {{"name", "sRole"}, {"type", 0}, {"value", "replica"}}}));

  json id = CtlJson({"appid", "create", "--set", "number3=4", "--set", "text0=/srv/shares"});
  EXPECT_EQ(id["number0"], 3);
  EXPECT_EQ(id["textForm"], "4|3|0|0|0|0|0|/srv/shares||");
  TempFile record(id.dump());  // what a command prints names the id for the next one
  EXPECT_EQ(CtlJson({"appid", "lookup", "--from-file", record.path()}), id);
  EXPECT_EQ(CtlJson({"appid", "set-archive-groups", "3", "30", "31"}),
            (json{{"id", 3}, {"archiveGroup", 30}, {"incrArchiveGroup", 31}}));
  EXPECT_EQ(CtlJson({"appid", "incr-archive-group", "3"}), (json{{"id", 3}, {"incrArchiveGroup", 31}}));
  CtlJson({"appid", "remove", "--set", "number3=4", "--set", "text0=/srv/shares"});
  run = Ctl({"appid", "lookup", "3"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "appmgrctl: error 1: application id 3 does not exist\n");
}

TEST(AppmgrctlUsageTest, ClientAndApplicationIdRecordsAreCheckedBeforeTheLibraryIsLoaded) {
  TempFile otherClient(R"({"id": 4, "text3": "x"})");
  TempFile unknownField(R"({"platform1": {"colour": "red"}})");
  TempFile notJson("{\"name\": ");
  const std::vector<std::string> cases[] = {
      {"client", "lookup"},
      {"client", "lookup", "3", "--name", "db01"},
      {"client", "create", "--host", "h"},
      {"client", "modify", "3"},
      {"client", "create", "--name", "x", "--set", "colour=red"},
      {"client", "create", "--name", "x", "--set", "integer3=-1"},
      {"client", "create", "--name", "x", "--set", "integer5=x"},
      {"client", "create", "--from-file", "/nonexistent/record.json"},
      {"client", "create", "--name", "x", "--from-file", notJson.path()},
      {"client", "create", "--name", "x", "--from-file", unknownField.path()},
      {"client", "modify", "3", "--from-file", otherClient.path()},
      {"client", "fs-node-data", "4294967296", "x"},
      {"appid", "create", "--set", "option=4294967296"},
      {"appid", "lookup", "--set", "textForm=1|2"},
      {"appid", "set-archive-groups", "1", "2"},
  };
  for (const std::vector<std::string>& c : cases) {
    std::vector<std::string> args = {"--lib", "/nonexistent/libappmgrnet.so"};
    args.insert(args.end(), c.begin(), c.end());
    CtlRun run = RunCtl(args);
    EXPECT_EQ(run.status, 2) << Describe(c) << ": " << run.err;
    EXPECT_TRUE(run.err.starts_with("appmgrctl: ")) << Describe(c) << ": " << run.err;
  }
}

}  // namespace
TEST_F(AppmgrctlTest, AlertsAdvisoriesAndLogMonitoringRoundTripThroughTheirCommands) {
  CtlRun sent = Ctl({"alert", "send", "disk full", "--type", "12", "--client", "3"});
  EXPECT_EQ(sent.status, 0) << sent.err;
  EXPECT_EQ(sent.out, "FIELD   VALUE\nsent    true\ntype    12\nclient  3\n");
  json alerts = CtlJson({"alert", "list", "--client", "3"});
  ASSERT_EQ(alerts.size(), 2u);
  EXPECT_EQ(alerts[1]["text"], "disk full");
  EXPECT_EQ(alerts[1]["clientName"], "db01");
  EXPECT_EQ(alerts[1]["severity"], "none");
  EXPECT_EQ(alerts[0]["received"], "2023-11-14T22:13:20Z");
  const int64_t id = alerts[1]["id"];
  EXPECT_EQ(CtlJson({"alert", "ack", std::to_string(id), "--by", "ops"}),
            (json{{"acknowledged", {id}}}));
  json open = CtlJson({"alert", "list", "--unacknowledged"});
  for (const json& a : open) EXPECT_NE(a["id"], id);

  CtlJson({"advisory", "sync-client", "4", "9002:2:Compression", "9005:1:New one"});
  CtlJson({"advisory", "control", "acknowledge", "9005", "--client", "4"});
  EXPECT_EQ(CtlJson({"advisory", "list", "--client", "4"}),
            json::parse(R"([{"id":9002,"type":2,"title":"Compression","client":4,"state":"enabled","source":""},
                           {"id":9005,"type":1,"title":"New one","client":4,"state":"acknowledged","source":""}])"));
  EXPECT_EQ(CtlJson({"advisory", "types", "--client", "3"}).size(), 2u);

  CtlJson({"logmon", "set", "4", "2", "nKeep=5"});
  EXPECT_EQ(CtlJson({"logmon", "list", "4"}),
            json::parse(R"([{"type":1,"name":"sLogPath","value":"/var/log/messages"},
                           {"type":2,"name":"nKeep","value":"5"}])"));
  EXPECT_EQ(CtlJson({"logmon", "get", "4", "2", "nKeep"}),
            (json{{"entity", 4}, {"type", 2}, {"name", "nKeep"}, {"value", "5"}}));

  // Raw XML: the request's own tag is its message type; the answer is printed as it came.
  CtlRun proxy = Ctl({"--json", "xml", "send", "-"},
                     R"(<App.GetHTTPProxySettingsReq tag="0x1e392f0b"><str n="1">db01</str></App.GetHTTPProxySettingsReq>)");
  ASSERT_EQ(proxy.status, 0) << proxy.err;
  json answer = json::parse(proxy.out);
  EXPECT_EQ(answer["type"], "0x1e392f0b");
  EXPECT_TRUE(answer["answer"].get<std::string>().starts_with(
      R"(<App.HTTPProxySettings tag="0x1e392f0c"><int n="1">1</int><str n="2">proxy.lab.example.net</str>)"))
      << answer["answer"];
  CtlRun agent = Ctl({"--json", "xml", "agent", "3", "0", "-"},
                     R"(<KPGui.AlertListReq tag="0x01000020"><int n="3">1</int></KPGui.AlertListReq>)");
  ASSERT_EQ(agent.status, 0) << agent.err;
  EXPECT_TRUE(json::parse(agent.out)["answer"].get<std::string>().starts_with(
      R"(<KPGui.AlertListResp tag="0x01000021">)"));
}

TEST_F(AppmgrctlTest, XmlFamilyFailuresExitWithTheServersCodeAndText) {
  struct Case {
    std::vector<std::string> args;
    std::string input;
    int status;
    std::string err;
  };
  const Case cases[] = {
      {{"alert", "send", "x", "--client", "99"}, "", 1, "error 1: client 99 does not exist\n"},
      {{"alert", "ack", "99"}, "", 1, "error 1: alert 99 does not exist\n"},
      {{"alert", "list", "--client", "99"}, "", 1, "error 1: client 99 does not exist\n"},
      {{"advisory", "control", "remove", "9001", "--client", "4"}, "", 1,
       "error 1: advisory 9001 does not apply to client 4\n"},
      {{"advisory", "sync-source", "other", "9001:1:x"}, "", 1,
       "error 2: advisory 9001 is published by source 'vendor-feed', not 'other'\n"},
      // The parameter look-up gives no text: the status alone.
      {{"logmon", "get", "3", "9", "nothing"}, "", 1, "error 1\n"},
      {{"logmon", "remove", "3", "1", "nothing"}, "", 1,
       "error 1: log-monitoring parameter 'nothing' of type 1 is not set for 3\n"},
      {{"xml", "send", "-", "--type", "0x1e392f0b"}, "<<not xml", 1,
       "error 3: the XML document could not be read (1101): "},
      {{"xml", "send", "-"}, "<x tag=\"0x0badcafe\"/>", 1,
       "error 1008: no handler for XML message type 0x0badcafe here\n"},
      {{"xml", "send", "-"}, "no tag", 1, "error -1: - names no tag on its root; give --type\n"},
      {{"xml", "agent", "99", "0", "-"}, "<x tag=\"0x01000020\"/>", 1,
       "error 1: client 99 does not exist\n"},
      {{"advisory", "sync-client", "4"}, "", 2, "appmgrctl: give ID:TYPE:TITLE advisories"},
      {{"advisory", "sync-client", "4", "9:x:title"}, "", 2, "appmgrctl: "},
  };
  for (const Case& c : cases) {
    CtlRun run = Ctl(c.args, c.input);
    EXPECT_EQ(run.status, c.status) << Describe(c.args);
    EXPECT_EQ(run.out, "") << Describe(c.args);
    // Failures the server or the library report carry the program's prefix as well.
    const std::string err = c.status == 1 ? "appmgrctl: " + c.err : c.err;
    EXPECT_TRUE(run.err.starts_with(err)) << Describe(c.args) << ": " << run.err;
  }
}

TEST_F(AppmgrctlTest, SnapshotAndDelegateCommandsRoundTripAndFail) {
  CtlRun run = Ctl({"snapshot", "lookup", "502"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "FIELD  VALUE\n"
            "id     502\n"
            "f1     3\n"
            "f4     E:\\\n"
            "f5     array01\n"
            "f6     vol-sales-02\n"
            "f8     snap-20240301-0200\n"
            "f9     {6f1c2a90-snap-0002}\n"
            "f10    1709258400\n"
            "f11    536870912\n"
            "f12    2\n"
            "f13    hourly\n"
            "f15    7\n");

  EXPECT_EQ(CtlJson({"snapshot", "set", "600", "--f3", "NEWDB", "--f4", "F:\\", "--f15", "9"}),
            (json{{"id", 600}, {"set", true}}));
  json list = CtlJson({"snapshot", "list"});
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[2]["id"], 600);
  EXPECT_EQ(list[2]["f3"], "NEWDB");
  EXPECT_EQ(list[2]["f15"], 9);
  EXPECT_EQ(CtlJson({"snapshot", "remove", "600"}), (json{{"id", 600}, {"removed", true}}));

  json delegates = CtlJson({"delegate", "list", "--selector", "4"});
  ASSERT_EQ(delegates.size(), 2u);
  EXPECT_EQ(delegates[1]["g3"], "carol@lab.example.net");
  EXPECT_EQ(CtlJson({"delegate", "list"}).size(), 3u);
  EXPECT_EQ(CtlJson({"delegate", "create", "9", "--g1", "4", "--g2", "x@lab"}),
            (json{{"id", 9}, {"create", true}}));
  EXPECT_EQ(CtlJson({"delegate", "lookup", "9"})["g2"], "x@lab");
  EXPECT_EQ(CtlJson({"delegate", "remove-list", "9", "1"}), (json{{"removed", {9, 1}}}));

  struct Case {
    std::vector<std::string> args;
    std::string err;
  } failures[] = {
      {{"snapshot", "lookup", "999"}, "error 1: snapshot record 999 does not exist\n"},
      {{"snapshot", "create", "501"}, "error 2: snapshot record 501 exists already\n"},
      {{"delegate", "remove", "1"}, "error 1: mailbox delegate 1 does not exist\n"},
      {{"delegate", "remove-list", "2", "77"},
       "error 1: mailbox delegate 77 does not exist; none was removed\n"},
  };
  for (const Case& c : failures) {
    CtlRun failed = Ctl(c.args);
    EXPECT_EQ(failed.status, 1) << Describe(c.args);
    EXPECT_EQ(failed.err, "appmgrctl: " + c.err) << Describe(c.args);
  }
}

TEST_F(AppmgrctlTest, FilePutStoresAndRegistersTheFileWithPlainProgressLines) {
  // The registered path is built from the install folder the settings name.
  TestSettings settings(ControlhostAt(server_) + "sINSTALLDIRECTORY = " + server_.dataDir() + "\n", 4);
  std::string local = settings.dir() + "/payload.bin";
  std::string body(3u << 20, '\0');
  for (size_t i = 0; i < body.size(); ++i) body[i] = char(i * 131 % 251);
  std::ofstream(local, std::ios::binary) << body;

  std::vector<std::string> args = {"--lib",  APPMGRNET_PATH, "--settings", settings.path(), "--json",
                                   "file",   "put",          local,        "--client",      "3",
                                   "--text", "nightly"};
  CtlRun run = RunCtl(args);
  ASSERT_EQ(run.status, 0) << run.err;
  json put = json::parse(run.out);
  EXPECT_EQ(put["file"], "payload.bin");
  EXPECT_EQ(put["bytes"], body.size());
  EXPECT_EQ(put["client"], 3);
  // Not a terminal: plain lines, the last one for the last byte.
  EXPECT_NE(run.err.find("put payload.bin: 3145728 of 3145728 bytes (100%), "), std::string::npos) << run.err;
  EXPECT_EQ(run.err.find('\r'), std::string::npos);
  EXPECT_TRUE(ReadFileText(server_.dataDir() + "/Temp/payload.bin") == body);

  AppmgrdProcess::RunResult listed = AppmgrdProcess::Run({"--data", server_.dataDir(), "--list-files"});
  EXPECT_EQ(listed.status, 0) << listed.err;
  std::string stored = server_.dataDir() + "/Temp/payload.bin";
  EXPECT_NE(listed.out.find("\t3\tpayload.bin\t3145728\t"), std::string::npos) << listed.out;
  EXPECT_NE(listed.out.find("\tnightly\t" + stored + "\t" + stored + "\n"), std::string::npos) << listed.out;

  args[3] = settings_.path();  // again, without progress
  args.push_back("--no-progress");
  run = RunCtl(args);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");

  // A name the server keeps for files in transfer is refused: the put fails, with no text.
  std::string hidden = settings.dir() + "/.x.part-1";
  std::ofstream(hidden) << "x";
  run = RunCtl({"--lib", APPMGRNET_PATH, "--settings", settings.path(), "file", "put", hidden,
                "--client", "3", "--no-progress"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "appmgrctl: error 1: the file was not put or not registered (the library's log has the cause)\n");
}

TEST_F(AppmgrctlTest, TheTwoOneRecordFileRequestsReportThatTheyWereSent) {
  EXPECT_EQ(CtlJson({"file", "push-vs-data", "1", "2", "3", "0x4", "vs01", "-5"}),
            (json{{"values", {1, 2, 3, 4}}, {"text", "vs01"}, {"number", -5}, {"sent", true}}));
  // The server's answer is not read: a file nobody registered is still "sent".
  EXPECT_EQ(CtlJson({"file", "get-content", "3", "nothing.txt"}),
            (json{{"client", 3}, {"text1", "nothing.txt"}, {"text2", ""}, {"sent", true}}));
}
