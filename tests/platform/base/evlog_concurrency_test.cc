// The log under concurrent use: lines written from many threads while the file is renamed and
// reopened (log rotation, then a server's SIGHUP) all arrive, each whole, in the old file or the
// new one.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/base/EvDebug.h"
#include "tests/support/TestSettings.h"

namespace {

namespace fs = std::filesystem;

TEST(EvLogConcurrency, ReopeningWhileThreadsWriteLosesAndTearsNoLine) {
  TestSettings t("", 10);
  EvLogConfig c;
  c.directory = t.logDir();
  c.fileName = "rotated.log";
  c.level = 5;
  c.maxFileBytes = size_t{64} << 20;  // no size rotation: only the renames below
  EvLog::Configure(c);
  const std::string path = t.logDir() + "/rotated.log";

  constexpr int kThreads = 4;
  constexpr int kLines = 500;
  constexpr int kMinRotations = 20;
  const std::string payload(80, 'x');
  std::atomic<bool> go{false};
  std::atomic<int> finished{0};
  std::vector<std::thread> writers;
  for (int w = 0; w < kThreads; ++w) {
    writers.emplace_back([w, &go, &finished, &payload] {
      while (!go.load()) std::this_thread::yield();
      for (int i = 0; i < kLines; ++i) {
        EvEventWrapper::DebugLvl("Writer", 2, "%d %d %s", w, i, payload.c_str());
      }
      ++finished;
    });
  }
  go = true;
  // Rotations for as long as anybody writes (and a few more).
  for (int r = 0; r < kMinRotations || finished.load() < kThreads; ++r) {
    std::error_code ec;
    fs::rename(path, path + "." + std::to_string(r), ec);
    EvLog::Reopen();
  }
  for (std::thread& w : writers) w.join();

  const std::regex line(R"(^\S+ \S+ \d+:\d+ D2 \[Writer\] (\d+) (\d+) (x*)$)");
  std::set<std::pair<int, int>> seen;
  size_t total = 0;
  int files = 0;
  for (const fs::directory_entry& e : fs::directory_iterator(t.logDir())) {
    if (e.path().filename().string().rfind("rotated.log", 0) != 0) continue;
    ++files;
    std::istringstream in(ReadFileText(e.path().string()));
    for (std::string l; std::getline(in, l);) {
      std::smatch m;
      ASSERT_TRUE(std::regex_match(l, m, line)) << e.path() << ": " << l;
      EXPECT_EQ(m[3].length(), 80) << l;
      seen.emplace(std::stoi(m[1]), std::stoi(m[2]));
      ++total;
    }
  }
  EXPECT_GT(files, 1) << "the renames left one file";
  EXPECT_EQ(total, size_t{kThreads} * kLines) << "a line was lost or written twice";
  EXPECT_EQ(seen.size(), size_t{kThreads} * kLines);
}

}  // namespace
