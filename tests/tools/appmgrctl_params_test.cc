// appmgrctl param, group and domain: the real program, loading the real library, against a
// real appmgrd holding the demo fixture. Each case starts its own server.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/support/AppmgrdProcess.h"
#include "tests/support/TestSettings.h"
#include "tests/tools/CtlRun.h"

namespace {

using appmgr_test::CtlRun;
using appmgr_test::Describe;
using appmgr_test::RunCtl;
using nlohmann::json;

AppmgrdProcess::Options DemoServer() {
  AppmgrdProcess::Options options;
  options.fixture = APPMGR_DEMO_FIXTURE;
  return options;
}

class AppmgrctlParamsTest : public testing::Test {
 protected:
  AppmgrctlParamsTest()
      : server_(DemoServer()),
        settings_("[Controlhost]\nsHOSTNAME = " + server_.host() + "\nsCLIENTNAME = ch01\n", 4) {}

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
  // A command that must fail with exit status 1 and exactly this line on stderr.
  void ExpectFailure(const std::vector<std::string>& args, const std::string& line) {
    CtlRun run = Ctl(args);
    EXPECT_EQ(run.status, 1) << Describe(args);
    EXPECT_EQ(run.out, "") << Describe(args);
    EXPECT_EQ(run.err, line + "\n") << Describe(args);
  }

  AppmgrdProcess server_;
  TestSettings settings_;
};

TEST_F(AppmgrctlParamsTest, ParamCommandsReadAndSetLikeAConfigurationTool) {
  CtlRun run = Ctl({"param", "get", "nAuditRetentionDays"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "FIELD  VALUE\n"
            "name   nAuditRetentionDays\n"
            "value  90\n");
  // A set shows the value the server now holds, in its canonical form.
  EXPECT_EQ(CtlJson({"param", "set", "nMaxConcurrentJobs", "007"}),
            (json{{"name", "nMaxConcurrentJobs"}, {"value", "7"}}));
  EXPECT_EQ(CtlJson({"param", "set", "sSite", ""}), (json{{"name", "sSite"}, {"value", ""}}));
  EXPECT_EQ(CtlJson({"param", "remove", "nMaxConcurrentJobs"}),
            (json{{"name", "nMaxConcurrentJobs"}, {"removed", true}}));
  EXPECT_EQ(CtlJson({"param", "get", "nMaxConcurrentJobs"}),
            (json{{"name", "nMaxConcurrentJobs"}, {"value", "100"}}));
  EXPECT_EQ(CtlJson({"param", "app-get", "302", "1"}),
            (json{{"app", 302}, {"number", 1}, {"value", "4"}}));
  EXPECT_EQ(CtlJson({"param", "app-set", "302", "2", "off"}),
            (json{{"app", 302}, {"number", 2}, {"value", "0"}}));

  ExpectFailure({"param", "get", "sNothing"}, "appmgrctl: error 1: global parameter 'sNothing' is not set");
  ExpectFailure({"param", "set", "bAllowClientRegistration", "maybe"},
                "appmgrctl: error 3: global parameter 'bAllowClientRegistration' takes 0 or 1 (or yes/no, "
                "true/false, on/off), not 'maybe'");
  ExpectFailure({"param", "remove", "sNothing"}, "appmgrctl: error 1: global parameter 'sNothing' is not set");
  ExpectFailure({"param", "app-get", "999", "1"},
                "appmgrctl: error 1: client application type 999 does not exist");
  ExpectFailure({"param", "app-set", "302", "1", "0"},
                "appmgrctl: error 3: application property 1 (data streams) takes a whole number from 1 to 64, "
                "not '0'");
  EXPECT_EQ(Ctl({"param", "set", "sOnlyAName"}).status, 2) << "VALUE is required";
}

TEST_F(AppmgrctlParamsTest, GroupAndDomainCommands) {
  EXPECT_EQ(CtlJson({"group", "lookup", "LINUX machines"}),
            (json{{"id", 2},
                  {"name", "Linux machines"},
                  {"description", "Clients on Linux x86-64"},
                  {"text3", "infra team"},
                  {"int2", 1},
                  {"int3", 0},
                  {"int4", 0},
                  {"int5", 0},
                  {"int6", 0}}));
  json created =
      CtlJson({"group", "create", "Databases", "--description", "SQL", "--int3", "0x10"});
  EXPECT_EQ(created["id"], 3);
  EXPECT_EQ(created["int3"], 16);
  ExpectFailure({"group", "create", "databases"},
                "appmgrctl: error 2: client group 'databases' already exists (id 3, 'Databases')");
  ExpectFailure({"group", "lookup", "Nobody"}, "appmgrctl: error 1: no client group is named 'Nobody'");
  ExpectFailure({"group", "update", "Databases"}, "appmgrctl: error 655376: Api not implemented.");
  ExpectFailure({"group", "remove", "3"}, "appmgrctl: error 655376: Api not implemented.");

  CtlRun run = Ctl({"domain", "lookup"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "FIELD              VALUE\n"
            "id                 1\n"
            "controlhostClient  2\n"
            "id3                0\n"
            "id4                0\n"
            "name               lab-domain\n"
            "controlhostHost    ch01.lab.example.net\n"
            "description        Demonstration domain\n"
            "version            1.0\n"
            "text5\n"
            "text6\n");
  // In one batch: a modify changes only the fields given, even after a read of the domain.
  run = Ctl({"--json", "batch", "-"},
            "domain lookup\n"
            "domain modify --description 'New description' --id4 7\n"
            "domain lookup 1\n");
  ASSERT_EQ(run.status, 0) << run.err;
  std::vector<json> docs = appmgr_test::JsonLines(run.out);
  ASSERT_EQ(docs.size(), 3u);
  json expected = docs[0]["result"];
  expected["description"] = "New description";
  expected["id4"] = 7;
  EXPECT_EQ(docs[1]["result"], expected);
  EXPECT_EQ(docs[2]["result"], expected);

  EXPECT_EQ(Ctl({"domain", "modify"}).status, 2) << "nothing to change";
  ExpectFailure({"domain", "create", "--name", "second"},
                "appmgrctl: error 2: this installation already has a domain (1, 'lab-domain'); modify or "
                "remove it instead");
  ExpectFailure({"domain", "remove", "2"},
                "appmgrctl: error 1: domain 2 does not exist (this installation's domain is 1)");
  EXPECT_EQ(CtlJson({"domain", "remove", "1"}), (json{{"id", 1}, {"removed", true}}));
  ExpectFailure({"domain", "lookup"}, "appmgrctl: error 1: this installation has no domain");
  ExpectFailure({"domain", "modify", "--name", "x"}, "appmgrctl: error 1: this installation has no domain");
  json fresh =
      CtlJson({"domain", "create", "--name", "rebuilt", "--number", "-4", "--version", "2"});
  EXPECT_EQ(fresh["id"], 1);
  EXPECT_EQ(fresh["name"], "rebuilt");
  EXPECT_EQ(fresh["version"], "2");
}

}  // namespace
