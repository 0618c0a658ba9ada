#include "platform/base/EvDebug.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <thread>

#include "tests/support/TestSettings.h"

namespace {

const std::regex kLine(
    R"(^(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6}) (\d+):(\d+) (ERR|D\d+) \[([^\]]*)\] (.*)$)");

std::vector<std::string> FileLines(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream in(ReadFileText(path));
  for (std::string l; std::getline(in, l);) lines.push_back(l);
  return lines;
}

TEST(EvLog, DebugLinesAboveTheLevelAreDroppedAndErrorsAlwaysWritten) {
  TestSettings t("", 4);
  EvLogCapture cap;
  EvEvent ev("Test::filter");
  ev.Debug(4, "at level %d", 4);
  ev.Debug(5, "above level %d", 5);
  ev.Error("error %s", "always");
  EvLog::SetLevel(0);
  ev.Debug(1, "now dropped");
  ev.Error("still written");
  ev.Debug(0, "level zero passes");

  std::vector<EvLogRecord> r = cap.Records();
  ASSERT_EQ(r.size(), 4u);
  EXPECT_EQ(r[0].text, "at level 4");
  EXPECT_EQ(r[0].level, 4);
  EXPECT_FALSE(r[0].error);
  EXPECT_EQ(r[0].label, "Test::filter");
  EXPECT_EQ(r[1].text, "error always");
  EXPECT_TRUE(r[1].error);
  EXPECT_EQ(r[2].text, "still written");
  EXPECT_EQ(r[3].text, "level zero passes");
  EXPECT_FALSE(EvLog::On(1));
  EXPECT_TRUE(EvLog::On(0));
}

TEST(EvLog, WritesOneLineWithTimePidThreadLevelLabelAndText) {
  TestSettings t("", 10);
  EvEventWrapper::DebugLvl("NetMessage::verifyResponseHeader", 3, "Msg version mismatch [%lx-%lx].",
                           3ul, 2ul);
  EvDebug(nullptr, "ClientSessionWrapper::send").Error("two\nlines\tand\x01 control");
  std::vector<std::string> lines = FileLines(EvLog::FilePath());
  ASSERT_EQ(lines.size(), 2u) << ReadFileText(EvLog::FilePath());
  std::smatch m;
  ASSERT_TRUE(std::regex_match(lines[0], m, kLine)) << lines[0];
  EXPECT_EQ(m[2], std::to_string(getpid()));
  EXPECT_EQ(m[4], "D3");
  EXPECT_EQ(m[5], "NetMessage::verifyResponseHeader");
  EXPECT_EQ(m[6], "Msg version mismatch [3-2].");
  ASSERT_TRUE(std::regex_match(lines[1], m, kLine)) << lines[1];
  EXPECT_EQ(m[4], "ERR");
  EXPECT_EQ(m[6], "two\\nlines and\\x01 control");
  EXPECT_EQ(EvLog::FilePath(), t.logDir() + "/platform_base_tests.log");
}

TEST(EvLog, LongLinesAreWrittenWhole) {
  TestSettings t("", 10);
  EvLogCapture cap;
  std::string big(5000, 'x');
  EvEventWrapper::DebugLvl("L", 1, "[%s]", big.c_str());
  ASSERT_EQ(cap.Records().size(), 1u);
  EXPECT_EQ(cap.Records()[0].text, "[" + big + "]");
}

TEST(EvLog, TwoThreadsNeverTearALine) {
  TestSettings t("", 10);
  constexpr int kLines = 2000;
  auto writer = [](const char* label, char fill) {
    std::string payload(120, fill);
    for (int i = 0; i < kLines; ++i) {
      EvEventWrapper::DebugLvl(label, 2, "%d %s", i, payload.c_str());
    }
  };
  std::thread a(writer, "ThreadA", 'a');
  std::thread b(writer, "ThreadB", 'b');
  a.join();
  b.join();
  std::vector<std::string> lines = FileLines(EvLog::FilePath());
  ASSERT_EQ(lines.size(), 2u * kLines);
  int seenA = 0, seenB = 0;
  for (const std::string& l : lines) {
    std::smatch m;
    ASSERT_TRUE(std::regex_match(l, m, kLine)) << l;
    std::string text = m[6];
    char fill = m[5] == "ThreadA" ? 'a' : 'b';
    int& seen = fill == 'a' ? seenA : seenB;
    EXPECT_EQ(text, std::to_string(seen) + " " + std::string(120, fill));
    ++seen;
  }
  EXPECT_EQ(seenA, kLines);
  EXPECT_EQ(seenB, kLines);
}

TEST(EvLog, SettingsChooseLevelAndDirectory) {
  TestSettings t("[EventManager]\nnDebugLevel = 3\n");
  EXPECT_EQ(EvLog::Level(), 3);
  EXPECT_EQ(std::filesystem::path(EvLog::FilePath()).parent_path(), t.logDir());
  t.Write("[EventManager]\nnDebugLevel = 7\n");
  EXPECT_EQ(EvLog::Level(), 7);
}

TEST(EvLog, UnusableDirectoryFallsBackToTmp) {
  TestSettings t("[EventManager]\nsLogDirectory = /proc/no/such/dir\n");
  std::string expected = "/tmp/appmgrnet-" + std::to_string(getuid());
  EXPECT_EQ(std::filesystem::path(EvLog::FilePath()).parent_path(), expected);
}

TEST(EvLog, RotatesBySizeAndKeepsTheConfiguredNumberOfFiles) {
  TestSettings t("", 10);
  EvLogConfig c;
  c.directory = t.logDir();
  c.fileName = "rot.log";
  c.level = 5;
  c.maxFileBytes = 4096;
  c.maxFiles = 2;
  EvLog::Configure(c);
  std::string payload(100, 'r');
  for (int i = 0; i < 300; ++i) EvEventWrapper::DebugLvl("R", 1, "%s", payload.c_str());
  namespace fs = std::filesystem;
  EXPECT_TRUE(fs::exists(t.logDir() + "/rot.log"));
  EXPECT_TRUE(fs::exists(t.logDir() + "/rot.1.log"));
  EXPECT_TRUE(fs::exists(t.logDir() + "/rot.2.log"));
  EXPECT_FALSE(fs::exists(t.logDir() + "/rot.3.log"));
  EXPECT_LE(fs::file_size(t.logDir() + "/rot.1.log"), 4096u);
}

// The program that loaded the library owns stdout and stderr: a log file that cannot be
// written (here the disk is full) drops its lines and counts them, and prints nothing.
TEST(EvLog, ALineThatCannotBeWrittenIsCountedAndNeverPrinted) {
  TestSettings t("", 10);
  std::filesystem::create_symlink("/dev/full", t.logDir() + "/full.log");
  EvLogConfig c;
  c.directory = t.logDir();
  c.fileName = "full.log";
  c.level = 5;
  EvLog::Configure(c);
  const unsigned long before = EvLog::DroppedLines();
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  EvEvent("Test::full").Error("nowhere to go");
  EvEventWrapper::DebugLvl("Test::full", 1, "nor this");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(EvLog::DroppedLines(), before + 2);
}

TEST(EvLog, SeparateFileTakesItsOwnLines) {
  TestSettings t("", 10);
  EvLogFile file("component.log");
  EvDebug(&file, "Component").Debug(1, "into the component file");
  EvDebug(nullptr, "Main").Debug(1, "into the process log");
  EXPECT_NE(ReadFileText(t.logDir() + "/component.log").find("into the component file"),
            std::string::npos);
  EXPECT_EQ(ReadFileText(EvLog::FilePath()).find("into the component file"), std::string::npos);
}

}  // namespace
