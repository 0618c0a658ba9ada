#include "session/NetMessage.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "platform/base/EvDebug.h"
#include "tests/support/TestSettings.h"

namespace {

TEST(NetMessage, StampsVersionProcessThreadAndHost) {
  NetMessage msg;
  AppMgrReqHdr hdr;
  msg.initRequestHeader(hdr);
  char host[1024] = {};
  gethostname(host, sizeof host - 1);
  EXPECT_EQ(hdr.version, 2u);
  EXPECT_EQ(hdr.pid, static_cast<int64_t>(getpid()));
  EXPECT_EQ(hdr.threadId, static_cast<uint64_t>(pthread_self()));
  ASSERT_NE(hdr.hostName, nullptr);
  EXPECT_STREQ(hdr.hostName, host);
  AppMgrReqHdr again;
  msg.initRequestHeader(again);
  EXPECT_EQ(again.hostName, hdr.hostName) << "the header points into the NetMessage, not a copy";
  EXPECT_EQ(msg.verifyRequestHeader(hdr), 0);

  // A child after fork() stamps its own process id, though the parent's was kept.
  pid_t child = fork();
  if (child == 0) {
    AppMgrReqHdr h;
    NetMessage().initRequestHeader(h);
    _exit(h.pid == static_cast<int64_t>(getpid()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the child sent its parent's id";
}

// The host name is read once, and again when the settings are re-read; a name of 1024
// characters or more is cut to 1023.
TEST(NetMessage, ReadsTheHostNameAgainOnlyWhenTheSettingsAreReRead) {
  TestSettings settings;
  static int reads = 0;
  NetMessage::SetHostNameReaderForTesting([](char* buffer, size_t size) {
    if (++reads == 1) return snprintf(buffer, size, "host-1"), 0;
    memset(buffer, 'h', size);  // fills the buffer without a terminator
    return 0;
  });
  AppMgrReqHdr hdr;
  for (int i = 0; i < 3; ++i) NetMessage().initRequestHeader(hdr);
  EXPECT_EQ(reads, 1);
  settings.Write("");
  NetMessage msg;
  msg.initRequestHeader(hdr);
  NetMessage::SetHostNameReaderForTesting(nullptr);
  EXPECT_EQ(reads, 2);
  EXPECT_EQ(strlen(hdr.hostName), 1023u);
}

TEST(NetMessage, VerifiesTheResponseHeader) {
  TestSettings settings("", 10);
  struct {
    const char* name;
    uint64_t version;
    int32_t code;
    const char* text;
    int expected;
    const char* logged;  // nullptr: nothing logged
  } cases[] = {
      {"success", 2, 0, nullptr, 0, nullptr},
      {"status 100 is returned unlogged", 2, 100, "not an error", 100, nullptr},
      {"server error with text", 2, 7, "boom", 7, "Error Code [7] returned - [boom]."},
      {"server error without text", 2, 5, nullptr, 5, "Error Code [5] returned."},
      {"newer version", 3, 5, "ignored", -1, "Msg version mismatch [3-2]."},
      {"version 0", 0, 0, nullptr, -1, "Msg version mismatch [0-2]."},
  };
  for (const auto& c : cases) {
    EvLogCapture log;
    AppMgrRespHdr hdr;
    hdr.version = c.version;
    hdr.errorCode = c.code;
    hdr.errorText = c.text;
    EXPECT_EQ(NetMessage().verifyResponseHeader(hdr), c.expected) << c.name;
    auto records = log.Records();
    if (c.logged == nullptr) {
      EXPECT_TRUE(records.empty()) << c.name;
    } else {
      ASSERT_EQ(records.size(), 1u) << c.name;
      EXPECT_EQ(records[0].text, c.logged) << c.name;
      EXPECT_TRUE(records[0].error) << c.name;
      EXPECT_EQ(records[0].label, "NetMessage::verifyResponseHeader") << c.name;
    }
  }
}

TEST(NetException, CarriesCodeAndTextWithoutAPrefix) {
  NetException e(7, "x");
  EXPECT_EQ(e.toString(), "x");
  EXPECT_EQ(e.getType(), 16385);
  EXPECT_EQ(e.getErrorCode(), 7);
  EXPECT_EQ(Exception(1, "message", 2, "prefix: ").toString(), "prefix: message");
}

}  // namespace
