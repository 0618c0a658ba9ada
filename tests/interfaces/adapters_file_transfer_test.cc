// The client file content operations of AdaptersInterfaceNet against the scriptable server (which
// also offers the file-transfer facility): how setClientFileContent splits the local path and
// builds the registered one, what it reports as 1, and what the two one-record requests send.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "adapters/AdaptersInterfaceNet.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace fs = std::filesystem;
namespace msg = appmgr::msg;
using appmgr::server::Exchange;

constexpr const char* kLabel = "AdaptersInterfaceNet::setClientFileContent";

// Runs in `dir` until destroyed.
class InFolder {
 public:
  explicit InFolder(const std::string& dir) : before_(fs::current_path()) { fs::current_path(dir); }
  ~InFolder() { fs::current_path(before_); }

 private:
  fs::path before_;
};

struct Registration {
  uint64_t client = 0;
  std::string path, text;
};

class FileTransferTest : public SessionFixture {
 protected:
  void SetUp() override {
    local_ = fs::temp_directory_path() / ("appmgr-put-" + std::to_string(::getpid()));
    fs::create_directories(local_);
    Install("/opt/kp");
    server_.On(msg::kSetClientFileContent,
               [this](const SetClientFileContentReq& req, SetClientFileContentResp&, Exchange&) {
                 registered_.push_back({req.clientId, req.serverPath, req.text});
               });
  }
  void TearDown() override { fs::remove_all(local_); }

  // Names the install folder the library builds the registered path from.
  void Install(const std::string& folder) {
    Settings(ControlhostAt(server_) + "sINSTALLDIRECTORY = " + folder + "\n");
  }
  std::string Local(const std::string& relative, const std::string& body) {
    fs::path p = local_ / relative;
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << body;
    return p.string();
  }
  bool Logged(bool error, int level, const std::string& text) {
    for (const EvLogRecord& r : log_.Records()) {
      if (r.error == error && r.level == level && r.label == kLabel && r.text == text) return true;
    }
    return false;
  }
  static ScriptServer::Options WithFiles(const fs::path& temp) {
    ScriptServer::Options o;
    o.tempDirectory = temp.string();
    return o;
  }

  fs::path local_;
  fs::path temp_ = fs::temp_directory_path() / ("appmgr-temp-" + std::to_string(::getpid()));
  ScriptServer server_{WithFiles(temp_)};
  AdaptersInterfaceNet adapters_;
  std::vector<Registration> registered_;
};

TEST_F(FileTransferTest, PutsTheFileThenRegistersInstallFolderTempAndName) {
  std::string path = Local("reports/q1.txt", "quarter one");
  ASSERT_EQ(adapters_.setClientFileContent(3, path, "monthly", nullptr), 0);
  EXPECT_EQ(ReadFileText((temp_ / "q1.txt").string()), "quarter one");
  ASSERT_EQ(registered_.size(), 1u);
  EXPECT_EQ(registered_[0].client, 3u);
  EXPECT_EQ(registered_[0].path, "/opt/kp/Temp/q1.txt");
  EXPECT_EQ(registered_[0].text, "monthly");
  EXPECT_TRUE(Logged(false, 2, "Successfully put the file [q1.txt] at [/opt/kp/Temp/] on the server."));
  fs::remove_all(temp_);
}

TEST_F(FileTransferTest, SplitsTheLocalPathAtItsLastSeparatorOfAnyPlatform) {
  struct Case {
    const char* localPath;  // as the caller passes it, relative to the working folder
    const char* fileOnDisk;  // where the file lies, relative to the working folder
    const char* installFolder;
    const char* registered;
  } cases[] = {
      // No separator: the name is the path, and so is the "directory".
      {"report.txt", "report.txt", "/opt/kp", "/opt/kp/Temp/report.txt"},
      // A colon splits too: the directory is what precedes it.
      {"C:data.bin", "C/data.bin", "/opt/kp/", "/opt/kp/Temp/data.bin"},
      {"sub\\win.log", "sub/win.log", "C:\\KP\\", "C:\\KP\\Temp/win.log"},
      {"sub/unix.log", "sub/unix.log", "D:\\Program Files\\KP", "D:\\Program Files\\KP/Temp/unix.log"},
  };
  InFolder here(local_.string());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.localPath);
    Local(c.fileOnDisk, c.localPath);
    Install(c.installFolder);
    registered_.clear();
    ASSERT_EQ(adapters_.setClientFileContent(4, c.localPath, "", nullptr), 0);
    ASSERT_EQ(registered_.size(), 1u);
    EXPECT_EQ(registered_[0].path, c.registered);
    std::string name = fs::path(c.fileOnDisk).filename().string();
    EXPECT_EQ(ReadFileText((temp_ / name).string()), c.localPath);
  }
  fs::remove_all(temp_);
}

TEST_F(FileTransferTest, ARefusedAttachIsOneWithoutAnAppManagerExchange) {
  ScriptServer plain;  // offers no file-transfer facility: the attach is refused
  Settings(ControlhostAt(plain) + "sINSTALLDIRECTORY = /opt/kp\n");
  plain.Answer(msg::kSetClientFileContent);
  std::string path = Local("a.txt", "a");
  EXPECT_EQ(adapters_.setClientFileContent(3, path, "t", nullptr), 1);
  EXPECT_EQ(plain.Count(msg::kSetClientFileContent.requestId), 0u);
  bool logged = false;
  for (const EvLogRecord& r : log_.Records()) {
    logged |= r.error && r.label == kLabel &&
              r.text.rfind("Failed to attach to server [", 0) == 0 &&
              r.text.find(plain.host()) != std::string::npos && r.text.find("]. Error:[") != std::string::npos &&
              r.text.find("is not offered here") != std::string::npos;
  }
  EXPECT_TRUE(logged);
}

TEST_F(FileTransferTest, AFailedPutIsOneWithoutRegistering) {
  EXPECT_EQ(adapters_.setClientFileContent(3, (local_ / "missing.bin").string(), "t", nullptr), 1);
  EXPECT_TRUE(registered_.empty());
  bool logged = false;
  for (const EvLogRecord& r : log_.Records()) {
    logged |= r.error && r.label == kLabel &&
              r.text.rfind("Failed to create the file [missing.bin] at [/opt/kp/Temp/] on the server. Error:[", 0) == 0;
  }
  EXPECT_TRUE(logged);
  EXPECT_EQ(server_.Count(msg::kSetClientFileContent.requestId), 0u);
}

TEST_F(FileTransferTest, TheRegistrationsHeaderIsNotReadButItsTransportIs) {
  std::string path = Local("b.txt", "b");
  server_.On(msg::kSetClientFileContent, [](const SetClientFileContentReq&, SetClientFileContentResp& resp,
                                            Exchange&) {
    resp.hdr.errorCode = 1;
    resp.hdr.errorText = "b.txt is not in Temp";
  });
  EXPECT_EQ(adapters_.setClientFileContent(3, path, "t", nullptr), 0) << "the header is not verified";
  server_.DropBeforeAnswer(msg::kSetClientFileContent.requestId);
  EXPECT_EQ(adapters_.setClientFileContent(3, path, "t", nullptr), 1) << "a lost answer is 1";
  fs::remove_all(temp_);
}

TEST_F(FileTransferTest, TheOneRecordRequestsSendTheirFieldsAndAnswerTheTransportStatus) {
  std::vector<std::string> seen;
  server_.On(msg::kGetClientFileContent, [&](const GetClientFileContentReq& req, GetClientFileContentResp& resp,
                                             Exchange&) {
    seen.push_back(std::to_string(req.clientId) + " " + req.text1 + " " + req.text2);
    resp.hdr.errorCode = 1;  // not looked at
  });
  server_.On(msg::kPushVSData, [&](const pushVSDataReq& req, pushVSDataResp&, Exchange&) {
    seen.push_back(std::to_string(req.value1) + " " + std::to_string(req.value2) + " " +
                   std::to_string(req.value3) + " " + std::to_string(req.value4) + " " + req.text +
                   " " + std::to_string(req.number));
  });
  EXPECT_EQ(adapters_.getClientFileContent(7, "report.txt", "note", nullptr), 0);
  EXPECT_EQ(adapters_.pushVSData(1, 2, 3, 4, "vs", -6, nullptr), 0);
  EXPECT_EQ(seen, (std::vector<std::string>{"7 report.txt note", "1 2 3 4 vs -6"}));

  server_.DropBeforeAnswer(msg::kPushVSData.requestId);
  EXPECT_EQ(adapters_.pushVSData(1, 2, 3, 4, "vs", 0, nullptr), kKpErrDisconnected);
  server_.Stop();
  EXPECT_NE(adapters_.getClientFileContent(7, "x", "y", nullptr), 0) << "no server: the send fails";
}

}  // namespace
