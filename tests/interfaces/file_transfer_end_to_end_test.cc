// Client file content through the library against the real appmgrd: a file put and registered is
// found byte-identical under Temp/ of the install folder and listed; the local path is split as
// the caller's platform writes it; refusals (a refused attach, the size limit, no room, hostile
// names) are 1 and store nothing; a transfer cut in the middle, even by killing the server,
// leaves no file under its name.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "adapters/AdaptersInterfaceNet.h"
#include "platform/net/CKpNetwork.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"
#include "tests/support/RawFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class FileEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    local_ = fs::path(Scratch()) / "local";
    fs::create_directories(local_);
  }

  // Starts appmgrd on the demo data with these extra options, files going to Temp/ of
  // `install_`, and points this process's settings at it.
  void Start(std::vector<std::string> extra = {}) {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    // Shared: Listed() reads the registrations with appmgrd --list-files while the server runs.
    o.extraArgs = {"--install-dir", install_.string(), "--shared-database"};
    o.extraArgs.insert(o.extraArgs.end(), extra.begin(), extra.end());
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() +
             "\nsCLIENTNAME = controlhost\nsINSTALLDIRECTORY = " + install_.string() + "\n");
  }
  // A folder of this case's, removed with the settings.
  std::string Scratch() {
    if (!settings_) Settings("");
    return settings_->dir();
  }
  std::string Local(const std::string& name, const std::string& body) {
    fs::path p = local_ / name;
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << body;
    return p.string();
  }
  std::set<std::string> InTemp() const {
    std::set<std::string> names;
    std::error_code ec;
    for (const auto& e : fs::directory_iterator(install_ / "Temp", ec)) names.insert(e.path().filename());
    return names;
  }
  // The registrations as appmgrd lists them, without the header line.
  std::vector<std::string> Listed() {
    AppmgrdProcess::RunResult r = AppmgrdProcess::Run({"--data", server_->dataDir(), "--list-files"});
    EXPECT_EQ(r.status, 0) << r.err;
    std::vector<std::string> lines;
    std::istringstream in(r.out);
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
  }
  // The server still answers: it lists the demo's clients.
  bool Serving() {
    std::list<unsigned long> ids;
    std::list<std::string> names;
    std::string err;
    return adapters_.getClientList(ids, names, err, 0, nullptr, 0) == 0 && !ids.empty();
  }

  fs::path local_;
  fs::path install_ = fs::path(Scratch()) / "install";
  std::unique_ptr<AppmgrdProcess> server_;
  AdaptersInterfaceNet adapters_;
};

std::string Pattern(size_t size) {
  std::string body(size, '\0');
  for (size_t i = 0; i < size; ++i) body[i] = char((i * 7919 + i / 4096) % 256);
  return body;
}

TEST_F(FileEndToEnd, APutFileIsStoredByteIdenticalRegisteredAndListed) {
  Start();
  std::string body = Pattern((2u << 20) + 12345);
  ASSERT_EQ(adapters_.setClientFileContent(3, Local("reports/q1.bin", body), "quarterly", nullptr), 0);
  EXPECT_TRUE(ReadFileText((install_ / "Temp/q1.bin").string()) == body);
  EXPECT_EQ(InTemp(), (std::set<std::string>{"q1.bin"}));
  std::string stored = (install_ / "Temp/q1.bin").string();
  std::vector<std::string> listed = Listed();
  ASSERT_EQ(listed.size(), 1u);
  EXPECT_NE(listed[0].find("\t3\tq1.bin\t" + std::to_string(body.size()) + "\t"), std::string::npos) << listed[0];
  EXPECT_NE(listed[0].find("\tquarterly\t" + stored + "\t" + stored), std::string::npos) << listed[0];

  // The path splits at its last separator, whichever platform wrote it.
  {
    struct InFolder {
      fs::path before = fs::current_path();
      explicit InFolder(const fs::path& p) { fs::current_path(p); }
      ~InFolder() { fs::current_path(before); }
    } here(local_);
    Local("report.txt", "no separator");
    Local("C/data.bin", "after a colon");
    ASSERT_EQ(adapters_.setClientFileContent(4, "report.txt", "", nullptr), 0);
    ASSERT_EQ(adapters_.setClientFileContent(4, "C:data.bin", "", nullptr), 0);
  }
  EXPECT_EQ(ReadFileText((install_ / "Temp/report.txt").string()), "no separator");
  EXPECT_EQ(ReadFileText((install_ / "Temp/data.bin").string()), "after a colon");
  EXPECT_EQ(Listed().size(), 3u);

  // The two one-record requests, and the server's refusals, which the library does not read.
  EXPECT_EQ(adapters_.getClientFileContent(3, "q1.bin", "", nullptr), 0);
  EXPECT_EQ(adapters_.getClientFileContent(42, "q1.bin", "", nullptr), 0);
  EXPECT_EQ(adapters_.pushVSData(1, 2, 3, 4, "vs01", 5, nullptr), 0);
  EXPECT_EQ(adapters_.setClientFileContent(42, Local("other.bin", "o"), "", nullptr), 0)
      << "put, but client 42 does not exist: the registration is refused unseen";
  EXPECT_EQ(Listed().size(), 3u);
  EXPECT_NE(ReadFileText(server_->logPath()).find("client 42 does not exist"), std::string::npos);
}

TEST_F(FileEndToEnd, RefusedFilesAreOneAndLeaveNothingBehind) {
  Start({"--max-file-mb", "1"});
  EXPECT_EQ(adapters_.setClientFileContent(3, Local("big.bin", Pattern((1u << 20) + 1)), "", nullptr), 1)
      << "one byte above the limit";
  EXPECT_EQ(adapters_.setClientFileContent(3, Local("fits.bin", Pattern(1u << 20)), "", nullptr), 0);
  EXPECT_EQ(adapters_.setClientFileContent(3, Local(".sneaky.part-1", "x"), "", nullptr), 1);

  // Hostile names, as a session that names them directly sends them.
  for (const char* name : {"../escape.txt", "..", "/etc/passwd", "a\\b.txt"}) {
    RawFiles raw(server_->port());
    ASSERT_TRUE(raw.attached());
    std::string reason;
    raw.Begin(name, 1);
    raw.Data("x");
    raw.End("x");
    EXPECT_EQ(raw.Result(&reason), kKpErrBadArgument) << name;
    EXPECT_FALSE(reason.empty()) << name;
  }
  EXPECT_FALSE(fs::exists(install_ / "escape.txt"));
  EXPECT_EQ(InTemp(), (std::set<std::string>{"fits.bin"}));
  EXPECT_TRUE(Serving());
}

TEST_F(FileEndToEnd, NoRoomAndARefusedAttachAreOneWithoutARegistration) {
  // More free space than any disk has: every file is refused before it is sent.
  Start({"--min-free-mb", "1073741824", "--max-connections", "1"});
  // With one connection allowed, the App Manager session the call borrows first takes it: the
  // file-transfer attach is refused, and no registration is sent.
  EXPECT_EQ(adapters_.setClientFileContent(3, Local("a.bin", "a"), "", nullptr), 1);
  bool refusedAttach = false;
  for (const EvLogRecord& r : log_.Records()) {
    refusedAttach |= r.error && r.label == "AdaptersInterfaceNet::setClientFileContent" &&
                     r.text.find("Failed to attach to server [") == 0 &&
                     r.text.find("too many connections") != std::string::npos;
  }
  EXPECT_TRUE(refusedAttach);
  server_->Stop();
  server_.reset();
  Reset();  // the pools of this process knew the old server
  Start({"--min-free-mb", "1073741824"});
  EXPECT_EQ(adapters_.setClientFileContent(3, Local("b.bin", "b"), "", nullptr), 1);
  bool noRoom = false;
  for (const EvLogRecord& r : log_.Records()) {
    noRoom |= r.error && r.text.find("Failed to create the file [b.bin]") == 0 &&
              r.text.find("not enough free space on the server for b.bin") != std::string::npos;
  }
  EXPECT_TRUE(noRoom);
  EXPECT_TRUE(InTemp().empty());
  EXPECT_TRUE(Listed().empty());
  EXPECT_TRUE(Serving());
}

TEST_F(FileEndToEnd, ATransferCutInTheMiddleLeavesNoFileUnderItsName) {
  Start();
  auto settle = [&](auto done) {
    auto until = std::chrono::steady_clock::now() + 10s;
    while (!done() && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(10ms);
  };
  {
    RawFiles raw(server_->port());
    ASSERT_TRUE(raw.attached());
    raw.Begin("cut.bin", 4u << 20);
    raw.Data(std::string(1u << 20, 'c'));
    settle([&] { return !InTemp().empty(); });
    EXPECT_EQ(InTemp().size(), 1u) << "a hidden part file while it is received";
    raw.Close();
  }
  settle([&] { return InTemp().empty(); });
  EXPECT_TRUE(InTemp().empty());

  // Killed in the middle of a file: the restarted server removes what the dead one left.
  RawFiles raw(server_->port());
  ASSERT_TRUE(raw.attached());
  raw.Begin("killed.bin", 4u << 20);
  raw.Data(std::string(1u << 20, 'k'));
  settle([&] { return !InTemp().empty(); });
  ASSERT_EQ(InTemp().size(), 1u);
  EXPECT_EQ(server_->Stop(SIGKILL), 128 + SIGKILL);
  EXPECT_FALSE(fs::exists(install_ / "Temp/killed.bin"));
  server_->Start();
  EXPECT_TRUE(InTemp().empty());
  EXPECT_TRUE(Serving());
}

}  // namespace
