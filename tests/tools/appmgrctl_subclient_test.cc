// appmgrctl subclient: the real program, loading the real library, against a
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

class AppmgrctlSubclientTest : public testing::Test {
 protected:
  AppmgrctlSubclientTest()
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
    EXPECT_EQ(run.err, "appmgrctl: " + line + "\n") << Describe(args);
  }

  AppmgrdProcess server_;
  TestSettings settings_;
};

TEST_F(AppmgrctlSubclientTest, ContentIsOnePathPerLineOrJsonAndChangesShowInTheNextRead) {
  CtlRun run = Ctl({"subclient", "content", "1051"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "PATH\nD:\\Data\nD:\\Logs\\Replica\n");

  run = Ctl({"subclient", "add-content", "1051", "D:\\New", "E:\\"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(CtlJson({"subclient", "content", "1051"}),
            json::array({"D:\\Data", "D:\\Logs\\Replica", "D:\\New", "E:\\"}));
  EXPECT_EQ(Ctl({"subclient", "remove-content", "1051", "D:\\Data"}).status, 0);
  json detail = CtlJson({"subclient", "content", "1051", "--detail"});
  EXPECT_EQ(detail["contentFlag"], true);
  EXPECT_EQ(detail["entries"][0], (json{{"type", 1}, {"path", "D:\\Logs\\Replica"}}));
  EXPECT_EQ(detail["entries"].size(), 3u);

  ExpectFailure({"subclient", "content", "999"}, "error 1: subclient 999 does not exist");
  ExpectFailure({"subclient", "add-content", "1051", ""},
                "error 3: entry 1 of 1 of the content to add to subclient 1051 is empty");
}

TEST_F(AppmgrctlSubclientTest, LookupsSettingsAndLocalAnswers) {
  json found = CtlJson({"subclient", "lookup-guid", "9b1e0f6a-5d34-4b8e-8f7a-2c3d4e5f1022"});
  EXPECT_EQ(found["id"], 1022);
  EXPECT_EQ(found["name"], "logs");
  EXPECT_EQ(CtlJson({"subclient", "overlapping", "1021"}), json::array({1061}));
  EXPECT_EQ(CtlJson({"subclient", "backup-host", "1051"})["backupHost"], 4);
  EXPECT_EQ(CtlJson({"subclient", "pair-data", "1051", "1"})["text"], "journal");
  EXPECT_EQ(CtlJson({"subclient", "extensions", "Images"})["extensions"], "jpg,jpeg,png,gif,tif,tiff");
  EXPECT_EQ(CtlJson({"subclient", "reference-copies", "1022"}), json::array({1051}));
  json fs = CtlJson({"subclient", "fs-content", "--backupset", "102"});
  EXPECT_EQ(fs["subclients"], json::array({1021, 1022}));
  EXPECT_EQ(fs["entries"], json::array({"C:\\", "D:\\Logs"}));
  EXPECT_EQ(Ctl({"subclient", "set-stores", "1022", "primary"}).status, 0);

  ExpectFailure({"subclient", "set-stores", "1022", "nowhere"},
                "error 1: backup set 102 has no store named 'nowhere'");
  ExpectFailure({"subclient", "extensions", "Nothing"}, "error 1");
  ExpectFailure({"subclient", "data-paths", "1022"}, "error -1: Feature Not Supported");
  ExpectFailure({"subclient", "set-content-groups", "1022"}, "error 655376");
}

}  // namespace
