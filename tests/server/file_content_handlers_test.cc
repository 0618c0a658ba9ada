// The client file content handlers on a real server core and store holding the demo fixture,
// receiving files into a Temp/ folder of its own: a registration needs its file, asks find it,
// pushed values are kept, and the refusals a client can cause.
#include "server/handlers/FileContentHandlers.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/store/FileContentStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

class FileContentHandlersTest : public testing::Test {
 protected:
  void Put(const std::string& name, const std::string& body) {
    std::filesystem::create_directories(served_.tempDirectory());
    std::ofstream(served_.tempDirectory() + "/" + name) << body;
  }
  Outcome Register(uint64_t client, const char* path, const char* text = "note") {
    return OutcomeOf(client_.Call(
        kSetClientFileContent,
        SetClientFileContentReq{.hdr = {}, .clientId = client, .serverPath = path, .text = text}));
  }
  Outcome Ask(uint64_t client, const char* text1, const char* text2 = "") {
    return OutcomeOf(client_.Call(
        kGetClientFileContent,
        GetClientFileContentReq{.hdr = {}, .clientId = client, .text1 = text1, .text2 = text2}));
  }
  ServedStore served_;
  HandlerClient client_{served_.connect()};
};

TEST_F(FileContentHandlersTest, ARegistrationNeedsTheFileInTempAndIsFoundAfterwards) {
  Outcome o = Register(3, "C:\\KP\\Temp/report.txt");
  EXPECT_EQ(o.code, kStoreErrNotFound);
  EXPECT_EQ(o.text, "report.txt is not in " + served_.tempDirectory() +
                        ": put the file before registering it");

  Put("report.txt", "twelve bytes");
  o = Register(3, "C:\\KP\\Temp/report.txt");
  ASSERT_EQ(o.code, 0) << o.text;
  std::vector<FileRegistration> regs;
  ASSERT_OK(FileContentStore(served_.store()).Registrations(3, &regs));
  ASSERT_EQ(regs.size(), 1u);
  EXPECT_EQ(regs[0].path, "C:\\KP\\Temp/report.txt");
  EXPECT_EQ(regs[0].storedPath, served_.tempDirectory() + "/report.txt");
  EXPECT_EQ(regs[0].size, 12u);
  EXPECT_EQ(regs[0].text, "note");

  EXPECT_EQ(Ask(3, "report.txt").code, 0);
  EXPECT_EQ(Ask(3, "C:\\KP\\Temp/report.txt").code, 0);
  o = Ask(4, "report.txt");
  EXPECT_EQ(o.code, kStoreErrNotFound);
  EXPECT_EQ(o.text, "client 4 has no registered file report.txt");
  std::filesystem::remove(served_.tempDirectory() + "/report.txt");
  o = Ask(3, "report.txt");
  EXPECT_EQ(o.code, kStoreErrNotFound);
  EXPECT_EQ(o.text, "report.txt is registered for client 3 but no longer in " + served_.tempDirectory());
}

TEST_F(FileContentHandlersTest, RefusalsACallerCanCause) {
  Put("x.txt", "x");
  struct Case {
    const char* what;
    Outcome outcome;
    int code;
    const char* text;
  } cases[] = {
      {"missing client", Register(42, "/opt/kp/Temp/x.txt"), kStoreErrNotFound, "client 42 does not exist"},
      {"no path", Register(3, nullptr), kStoreErrInvalidArgument, "the request carries no file path"},
      {"no text", Register(3, "/opt/kp/Temp/x.txt", nullptr), kStoreErrInvalidArgument,
       "the request carries no text"},
      {"a path that ends in ..", Register(3, "/opt/kp/Temp/.."), kStoreErrInvalidArgument,
       "\"..\" is not a file name"},
      {"a path that ends in a folder", Register(3, "/opt/kp/Temp/"), kStoreErrInvalidArgument,
       "the file has no name"},
      {"ask without a name", Ask(3, nullptr), kStoreErrInvalidArgument,
       "the request carries no file path or name"},
      {"ask for a missing client", Ask(42, "x.txt"), kStoreErrNotFound, "client 42 does not exist"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.outcome.code, c.code) << c.what;
    EXPECT_EQ(c.outcome.text, c.text) << c.what;
  }
  std::vector<FileRegistration> regs;
  ASSERT_OK(FileContentStore(served_.store()).Registrations(0, &regs));
  EXPECT_TRUE(regs.empty());
}

TEST_F(FileContentHandlersTest, PushedValuesAreKeptAsReceived) {
  pushVSDataReq req{.hdr = {}, .value1 = 1, .value2 = 2, .value3 = 3, .value4 = 4, .text = "vs01", .number = -9};
  EXPECT_EQ(client_.Call(kPushVSData, req).hdr.errorCode, 0);
  req.text = nullptr;
  Outcome o = OutcomeOf(client_.Call(kPushVSData, req));
  EXPECT_EQ(o.code, kStoreErrInvalidArgument);
  EXPECT_EQ(o.text, "the request carries no text");
  std::vector<VsDataRecord> kept;
  ASSERT_OK(FileContentStore(served_.store()).VsData(&kept));
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(kept[0].value4, 4u);
  EXPECT_EQ(kept[0].text, "vs01");
  EXPECT_EQ(kept[0].number, -9);
}

}  // namespace
}  // namespace appmgr::server
