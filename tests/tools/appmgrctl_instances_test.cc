// appmgrctl instance and apptype: the real program, loading the real library, against a real
// appmgrd holding the demo fixture. One server for the whole case.
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

class AppmgrctlInstancesTest : public testing::Test {
 protected:
  AppmgrctlInstancesTest()
      : server_(DemoServer()),
        settings_("[Controlhost]\nsHOSTNAME = " + server_.host() + "\nsCLIENTNAME = ch01\n", 4) {}

  CtlRun Ctl(std::vector<std::string> args) {
    args.insert(args.begin(), {"--lib", APPMGRNET_PATH, "--settings", settings_.path()});
    return RunCtl(args);
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

TEST_F(AppmgrctlInstancesTest, InstanceAndApplicationTypeCommands) {
  CtlRun table = Ctl({"instance", "content", "13"});
  EXPECT_EQ(table.status, 0) << table.err;
  EXPECT_EQ(table.out,
            "TYPE  ENTRY\n"
            "2     SALESDB\n"
            "2     SALESDB_ARCHIVE\n");

  EXPECT_EQ(CtlJson({"instance", "lookup", "13"}),
            (json{{"id", 13}, {"name", "SALESDB"}, {"value", 0}, {"attr2", 0}, {"attr3", 0},
                  {"attr4", 0}, {"text", "listener port 4100"}}));
  CtlJson({"instance", "update-content", "13", "--type", "2", "--add", "HIST", "--remove",
           "SALESDB_ARCHIVE"});
  EXPECT_EQ(CtlJson({"instance", "content", "13"}),
            (json{{{"type", 2}, {"entry", "SALESDB"}}, {{"type", 2}, {"entry", "HIST"}}}));
  CtlJson({"instance", "set-ag-props", "13", "sListener=AG1", "--type", "2"});
  EXPECT_EQ(CtlJson({"instance", "props", "13", "--table", "2"}),
            (json{{{"name", "sListener"}, {"type", 2}, {"value", "AG1"}}}));

  EXPECT_EQ(CtlJson({"apptype", "lookup", "3", "20"}),
            (json{{"client", 3}, {"appType", 20}, {"name", "SQL Database"}, {"value", 1}}));
  CtlJson({"apptype", "create", "4", "30"});
  CtlJson({"apptype", "set-props", "4", "30", "sMode=on"});
  EXPECT_EQ(CtlJson({"apptype", "props", "4", "30"}),
            (json{{{"name", "sMode"}, {"type", 0}, {"value", "on"}}}));
  CtlJson({"apptype", "volume-prop", "4", "30", "7", "--text", "{guid}", "--value1", "1"});
  CtlJson({"apptype", "remove", "4", "30"});

  struct Case {
    std::vector<std::string> args;
    std::string err;
  } failures[] = {
      {{"instance", "lookup", "999"}, "error 1: instance 999 does not exist\n"},
      {{"apptype", "lookup", "4", "30"}, "error 1: client 4 has no application type 30\n"},
      {{"apptype", "create", "3", "20"}, "error 2: client 3 already has application type 20\n"},
      {{"apptype", "fs-number", "1"}, "error -1: Feature Not Supported\n"},
  };
  for (const Case& c : failures) {
    CtlRun run = Ctl(c.args);
    EXPECT_EQ(run.status, 1) << Describe(c.args);
    EXPECT_EQ(run.out, "") << Describe(c.args);
    EXPECT_EQ(run.err, "appmgrctl: " + c.err) << Describe(c.args);
  }
}

}  // namespace
