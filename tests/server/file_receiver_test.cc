// FileReceiver, the receiving end of file puts, driven frame by frame: which names it takes, what
// it answers when, and that a file is only ever seen whole under its name.
#include "server/core/FileReceiver.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "platform/net/ControlRecords.h"
#include "platform/net/FileChecksum.h"
#include "platform/net/XdrCodec.h"
#include "tests/support/TestSettings.h"

namespace {

namespace fs = std::filesystem;
using appmgr::net::FileChecksum;
using appmgr::server::FileReceiver;

std::vector<uint8_t> BeginBytes(const std::string& name, uint64_t size, bool overwrite = true) {
  appmgr::net::FileBeginRecord begin;
  begin.directory = "/ignored/by/the/server";
  begin.fileName = name.c_str();
  begin.overwrite = overwrite ? 1 : 0;
  begin.binary = 1;
  begin.size = size;
  std::vector<uint8_t> out;
  appmgr::wire::EncodeRecord(begin, out);
  return out;
}

std::vector<uint8_t> EndBytes(uint64_t size, uint64_t checksum, uint32_t kind = appmgr::net::kChecksumXxh3_64) {
  appmgr::net::FileEndRecord end;
  end.size = size;
  end.checksumKind = kind;
  end.checksum = checksum;
  std::vector<uint8_t> out;
  appmgr::wire::EncodeRecord(end, out);
  return out;
}

const uint8_t* Bytes(const std::string& s) { return reinterpret_cast<const uint8_t*>(s.data()); }

class FileReceiverTest : public testing::Test {
 protected:
  FileReceiverTest() { fs::create_directories(dir_); }

  FileReceiver::Options Options(uint64_t maxFileBytes = 1u << 20) const {
    FileReceiver::Options o;
    o.directory = dir_;
    o.maxFileBytes = maxFileBytes;
    return o;
  }

  // Everything in the folder, hidden part files included.
  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir_)) names.insert(entry.path().filename().string());
    return names;
  }

  // A whole put of `body` in chunks of `chunk` bytes; the outcome of file-end.
  static FileReceiver::Outcome Put(FileReceiver& r, const std::string& name, const std::string& body,
                                   size_t chunk = 1000) {
    std::vector<uint8_t> begin = BeginBytes(name, body.size());
    if (FileReceiver::Outcome o = r.Begin(begin.data(), begin.size()); o.answer) return o;
    for (size_t at = 0; at < body.size(); at += chunk) {
      size_t n = std::min(chunk, body.size() - at);
      if (FileReceiver::Outcome o = r.Data(Bytes(body) + at, n); o.answer) return o;
    }
    std::vector<uint8_t> end = EndBytes(body.size(), FileChecksum::Of(body.data(), body.size()));
    return r.End(end.data(), end.size());
  }

  TestSettings settings_;
  std::string dir_ = settings_.dir() + "/Temp";
};

TEST(FileChecksumTest, IsXxh3AndTheSameFedInAnyPieces) {
  EXPECT_EQ(FileChecksum::Of("", 0), 0x2D06800538D394C2ull) << "XXH3-64 of nothing, seed 0";
  std::string data(3 * 1000 * 1000 + 17, '\0');
  for (size_t i = 0; i < data.size(); ++i) data[i] = char(i * 2654435761u >> 13);
  FileChecksum streamed;
  for (size_t at = 0, piece = 1; at < data.size(); at += piece, piece = piece * 3 + 1) {
    streamed.Update(data.data() + at, std::min(piece, data.size() - at));
  }
  EXPECT_EQ(streamed.Digest(), FileChecksum::Of(data.data(), data.size()));
  streamed.Reset();
  EXPECT_EQ(streamed.Digest(), FileChecksum::Of("", 0));
}

TEST(FileNameTest, OnlyPlainNamesAreAccepted) {
  struct Case {
    std::string name;
    const char* why;  // a piece of the refusal; null when the name is accepted
  } cases[] = {
      {"report.txt", nullptr},
      {"spaces and-dashes_1.bin", nullptr},
      {".hidden", nullptr},
      {"..x", nullptr},
      {std::string(255, 'n'), nullptr},
      {"", "has no name"},
      {std::string(256, 'n'), "at most 255 bytes"},
      {".", "is not a file name"},
      {"..", "is not a file name"},
      {"/etc/passwd", "absolute path"},
      {"\\share\\x", "absolute path"},
      {"../escape.txt", "path component"},
      {"a/b.txt", "path component"},
      {"a\\b.txt", "path component"},
      {std::string("nul\0name", 8), "NUL"},
      {"tab\tname", "control character"},
      {".report.txt.part-12", "file in transfer"},
  };
  for (const Case& c : cases) {
    CLmError e = FileReceiver::CheckFileName(c.name);
    if (c.why == nullptr) {
      EXPECT_FALSE(e) << "[" << c.name << "]: " << e.Text();
    } else {
      EXPECT_EQ(e.GetErrorCode(), kKpErrBadArgument) << "[" << c.name << "]";
      EXPECT_NE(e.Text().find(c.why), std::string::npos) << "[" << c.name << "]: " << e.Text();
    }
  }
}

TEST_F(FileReceiverTest, AWholeFileIsStoredUnderItsNameOnlyAtItsEnd) {
  FileReceiver r(Options(), 7);
  std::string body(5000, 'b');
  std::vector<uint8_t> begin = BeginBytes("whole.bin", body.size());
  EXPECT_FALSE(r.Begin(begin.data(), begin.size()).answer);
  EXPECT_FALSE(r.Data(Bytes(body), 4000).answer);
  EXPECT_EQ(Files(), (std::set<std::string>{".whole.bin.part-7"})) << "written beside, hidden";
  EXPECT_FALSE(r.Data(Bytes(body) + 4000, 1000).answer);
  std::vector<uint8_t> end = EndBytes(body.size(), FileChecksum::Of(body.data(), body.size()));
  FileReceiver::Outcome o = r.End(end.data(), end.size());
  ASSERT_TRUE(o.answer);
  EXPECT_EQ(o.code, 0) << o.reason;
  EXPECT_EQ(o.storedPath, dir_ + "/whole.bin");
  EXPECT_EQ(Files(), (std::set<std::string>{"whole.bin"}));
  EXPECT_EQ(ReadFileText(dir_ + "/whole.bin"), body);

  // The connection goes on to a second file, an empty one.
  FileReceiver::Outcome empty = Put(r, "empty.txt", "");
  EXPECT_EQ(empty.code, 0) << empty.reason;
  EXPECT_TRUE(fs::is_regular_file(dir_ + "/empty.txt"));
}

TEST_F(FileReceiverTest, RefusalsAnswerOnceAndLeaveNoFileBehind) {
  std::ofstream(dir_ + "/taken.txt") << "old";
  const std::string body = "0123456789";
  const uint64_t good = FileChecksum::Of(body.data(), body.size());
  struct Case {
    const char* what;
    std::string name;
    uint64_t announced;       // size in file-begin
    size_t sent;              // bytes of body in file-data
    std::vector<uint8_t> end;
    bool overwrite;
    int32_t code;
    const char* why;
    bool answeredAtBegin;
  } cases[] = {
      {"a path", "../up.txt", 10, 10, EndBytes(10, good), true, kKpErrBadArgument, "path component", true},
      {"above the limit", "big.bin", 2000, 0, EndBytes(0, 0), true, kKpErrLimit, "above this server's limit of 1000", true},
      {"a name in use", "taken.txt", 10, 10, EndBytes(10, good), false, kKpErrRefused, "taken.txt exists already", true},
      {"damaged on the way", "damaged.bin", 10, 10, EndBytes(10, good ^ 1), true, kKpErrProtocol, "damaged on the way", false},
      {"an unknown checksum", "kind.bin", 10, 10, EndBytes(10, good, 9), true, kKpErrProtocol, "checksum kind 9", false},
      {"cut short", "short.bin", 10, 6, EndBytes(6, good), true, kKpErrProtocol, "10 bytes announced, 6 sent, 6 received", false},
      {"more than announced", "long.bin", 4, 10, EndBytes(10, good), true, kKpErrProtocol, "more bytes of long.bin than the 4", false},
      {"no end record", "noend.bin", 10, 10, {}, true, kKpErrProtocol, "file-end record of noend.bin cannot be read", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    FileReceiver r(Options(1000), 3);
    std::vector<uint8_t> begin = BeginBytes(c.name, c.announced, c.overwrite);
    std::vector<FileReceiver::Outcome> answers;
    if (auto o = r.Begin(begin.data(), begin.size()); o.answer) answers.push_back(o);
    EXPECT_EQ(answers.size(), c.answeredAtBegin ? 1u : 0u);
    if (auto o = r.Data(Bytes(body), c.sent); o.answer) answers.push_back(o);
    if (auto o = r.End(c.end.data(), c.end.size()); o.answer) answers.push_back(o);
    ASSERT_EQ(answers.size(), 1u) << "one answer per file";
    EXPECT_EQ(answers[0].code, c.code);
    EXPECT_NE(answers[0].reason.find(c.why), std::string::npos) << answers[0].reason;
    EXPECT_EQ(Files(), (std::set<std::string>{"taken.txt"}));
    EXPECT_EQ(ReadFileText(dir_ + "/taken.txt"), "old");

    // Whatever happened, the next file on the connection is received.
    FileReceiver::Outcome next = Put(r, "next.txt", "next");
    EXPECT_EQ(next.code, 0) << next.reason;
    fs::remove(dir_ + "/next.txt");
  }
}

TEST_F(FileReceiverTest, AnAbandonedTransferLeavesNothingAndStalePartsGoAtStart) {
  {
    FileReceiver r(Options(), 4);
    std::vector<uint8_t> begin = BeginBytes("cut.bin", 100);
    r.Begin(begin.data(), begin.size());
    r.Data(Bytes(std::string(50, 'c')), 50);
    EXPECT_EQ(Files().size(), 1u);
    r.Abandon();
    EXPECT_TRUE(Files().empty()) << "the connection ended in the middle of the file";
    r.Begin(begin.data(), begin.size());
    r.Data(Bytes(std::string(50, 'c')), 50);
  }
  EXPECT_TRUE(Files().empty()) << "nor when the receiver goes";

  // What a server killed in the middle of a file leaves, and a file that only looks similar.
  std::ofstream(dir_ + "/.cut.bin.part-12") << "partial";
  std::ofstream(dir_ + "/.cut.bin.part-x") << "not ours";
  std::ofstream(dir_ + "/kept.txt") << "kept";
  FileReceiver::RemoveStaleParts(dir_);
  EXPECT_EQ(Files(), (std::set<std::string>{".cut.bin.part-x", "kept.txt"}));
}

TEST_F(FileReceiverTest, NoRoomIsARefusalWithItsReason) {
  FileReceiver::Options o = Options();
  o.minFreeBytes = ~0ull / 2;  // more than any disk has
  FileReceiver r(o, 1);
  std::vector<uint8_t> begin = BeginBytes("room.bin", 10);
  FileReceiver::Outcome out = r.Begin(begin.data(), begin.size());
  ASSERT_TRUE(out.answer);
  EXPECT_EQ(out.code, kKpErrLimit);
  EXPECT_NE(out.reason.find("not enough free space on the server for room.bin"), std::string::npos) << out.reason;
  EXPECT_TRUE(Files().empty());
}

// A write that fails half way (here the file-size limit, as a full disk would) is answered at
// once with the reason, the part file goes, and the process lives on.
TEST_F(FileReceiverTest, AWriteThatFailsMidFileIsAnAnswerNotACrash) {
  ::signal(SIGXFSZ, SIG_IGN);
  struct rlimit before {};
  ::getrlimit(RLIMIT_FSIZE, &before);
  struct rlimit limited = before;
  limited.rlim_cur = 64 * 1024;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);

  FileReceiver r(Options(), 2);
  std::string chunk(32 * 1024, 'w');
  std::vector<uint8_t> begin = BeginBytes("huge.bin", 4 * chunk.size());
  EXPECT_FALSE(r.Begin(begin.data(), begin.size()).answer);
  std::vector<FileReceiver::Outcome> answers;
  for (int i = 0; i < 4; ++i) {
    if (auto o = r.Data(Bytes(chunk), chunk.size()); o.answer) answers.push_back(o);
  }
  ::setrlimit(RLIMIT_FSIZE, &before);

  ASSERT_EQ(answers.size(), 1u);
  EXPECT_EQ(answers[0].code, kKpErrIo);
  EXPECT_NE(answers[0].reason.find("cannot hold a file this large: cannot write huge.bin after 65536 of 131072 bytes"),
            std::string::npos)
      << answers[0].reason;
  EXPECT_TRUE(Files().empty());
  std::vector<uint8_t> end = EndBytes(4 * chunk.size(), 0);
  EXPECT_FALSE(r.End(end.data(), end.size()).answer) << "the file was answered already";
}

}  // namespace
