// CKpNetwork against the real server core (ScriptServer) and against peers that misbehave
// (RawPeer): attach and refusal, bounded waits, broken connections, errors that leave the
// session usable, file puts, XML, and sessions inherited across fork().
#include "platform/net/CKpNetwork.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "platform/net/ControlRecords.h"
#include "platform/net/XdrCodec.h"
#include "platform/xml/AppMessages.h"
#include "protocol/Messages.h"
#include "tests/support/RawFiles.h"
#include "tests/support/RawPeer.h"
#include "tests/support/ScriptServer.h"
#include "tests/support/TestSettings.h"

namespace {

using namespace std::chrono_literals;
using appmgr::msg::kBsLookup;
using appmgr::net::Deadline;
using appmgr::net::FrameConn;
using Clock = std::chrono::steady_clock;

constexpr const char* kService = "AppManager network access";

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

struct Lookup {
  GenericLookupReq4 req;
  GenericLookupResp4 resp;
  kpsDatabuf_v2 out, in;
  Lookup(uint64_t id = 7) {
    req.hdr.version = 2;
    req.hdr.hostName = "testhost";
    req.id = id;
    out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
    in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
  }
  CLmError Send(CKpNetwork& s, int timeout = 5) {
    bool t = false;
    return s.SendXDRMessage(kBsLookup.requestId, &out, 0, timeout, t);
  }
  CLmError Receive(CKpNetwork& s, int timeout = 5, bool* timedOut = nullptr) {
    bool t = false;
    unsigned long id = kBsLookup.responseId;
    resp = GenericLookupResp4();
    CLmError e = s.ReceiveXDRMessage(&id, &in, nullptr, 0, timeout, t);
    if (timedOut) *timedOut = t;
    return e;
  }
};

void ScriptLookup(ScriptServer& server) {
  server.On(kBsLookup, [](const GenericLookupReq4& req, GenericLookupResp4& resp,
                          appmgr::server::Exchange& x) {
    resp.value = static_cast<int64_t>(req.id) * 10;
    resp.name = x.Text("bs-" + std::to_string(req.id));
    resp.text = req.hdr.hostName;
  });
}

CLmError Attach(CKpNetwork& s, const std::string& connect, const std::string& service = kService,
                int timeout = 5, bool* timedOut = nullptr) {
  bool t = false;
  CLmError e = s.Attach_RemoteService(connect, service, "client01", timeout, t);
  if (timedOut) *timedOut = t;
  return e;
}

class SessionTest : public testing::Test {
 protected:
  TestSettings settings_;
};

TEST_F(SessionTest, ExchangesARecordAndReleasesItsTexts) {
  ScriptServer server;
  ScriptLookup(server);
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server.connectString()));
  for (uint64_t id : {3u, 4u}) {
    Lookup l(id);
    ASSERT_FALSE(l.Send(s));
    ASSERT_FALSE(l.Receive(s));
    EXPECT_EQ(l.resp.hdr.version, 2u);
    EXPECT_EQ(l.resp.value, int64_t(id * 10));
    EXPECT_STREQ(l.resp.name, ("bs-" + std::to_string(id)).c_str());
    EXPECT_STREQ(l.resp.text, "testhost");
    EXPECT_GT(l.in.arena().BytesInUse(), 0u);
    ASSERT_FALSE(s.FreeReceivedMessage(kBsLookup.responseId, &l.in));
    EXPECT_EQ(l.in.arena().BytesInUse(), 0u);
  }
  EXPECT_EQ(server.Count(kBsLookup.requestId), 2u);
}

TEST_F(SessionTest, RefusedAttachSaysWhy) {
  ScriptServer server;
  server.RefuseHello("maintenance window");
  CKpNetwork s;
  CLmError e = Attach(s, server.connectString());
  ASSERT_TRUE(e);
  EXPECT_EQ(e.GetErrorCode(), kKpErrRefused);
  EXPECT_NE(e.AsString().find("refused the connection: maintenance window"), std::string::npos) << e.AsString();

  server.RefuseHello("");
  e = Attach(s, server.connectString(), "No such service");
  ASSERT_TRUE(e);
  EXPECT_NE(e.AsString().find("service \"No such service\" is not offered here"), std::string::npos);

  unsigned long code = 0;
  std::string text;
  s.GetLastErrorGenericText(&code, text, 0);
  EXPECT_EQ(code, static_cast<unsigned long>(kKpErrRefused));
  EXPECT_EQ(text, e.AsString());
  EXPECT_FALSE(Attach(s, server.connectString())) << "a refused session may attach again";
}

TEST_F(SessionTest, NothingListeningIsRefusedAtOnce) {
  unsigned port;
  {
    appmgr::net::Socket probe;
    ASSERT_FALSE(appmgr::net::Socket::Listen("127.0.0.1", 0, 1, &probe, &port));
  }
  CKpNetwork s;
  auto start = Clock::now();
  CLmError e = Attach(s, "c@127.0.0.1:" + std::to_string(port) + "," + std::to_string(port));
  EXPECT_EQ(e.GetErrorCode(), kKpErrRefused) << e.AsString();
  EXPECT_LT(Seconds(start), 1.0);
}

TEST_F(SessionTest, SilentPeerTimesOutTheAttach) {
  RawPeer silent([](appmgr::net::Socket& s) {
    char buf[64];
    size_t n;
    s.RecvSome(buf, sizeof buf, Deadline::After(3000), &n, "silent");  // read the hello, answer nothing
    std::this_thread::sleep_for(2500ms);
  });
  CKpNetwork s;
  bool timedOut = false;
  auto start = Clock::now();
  CLmError e = Attach(s, silent.connectString(), kService, 1, &timedOut);
  EXPECT_EQ(e.GetErrorCode(), kKpErrTimeout) << e.AsString();
  EXPECT_TRUE(timedOut);
  EXPECT_LT(Seconds(start), 2.0);
}

TEST_F(SessionTest, AttachTimeoutSettingShortensTheCallersTimeout) {
  RawPeer silent([](appmgr::net::Socket& s) {
    char buf[64];
    size_t n;
    s.RecvSome(buf, sizeof buf, Deadline::After(3000), &n, "silent");
    std::this_thread::sleep_for(2500ms);
  });
  settings_.Write("[Network]\nnAttachTimeoutSeconds = 1\n");
  CKpNetwork s;
  auto start = Clock::now();
  CLmError e = Attach(s, silent.connectString(), kService, 120);
  EXPECT_EQ(e.GetErrorCode(), kKpErrTimeout) << e.AsString();
  EXPECT_LT(Seconds(start), 2.0);
}

TEST_F(SessionTest, FullBacklogTimesOutTheConnect) {
  // A listener that never accepts, with its queue filled: the kernel drops further SYNs, so a
  // connect waits. Either the connect or the hello must give up within the time-out.
  RawPeer never([](appmgr::net::Socket&) {}, 0);
  std::vector<appmgr::net::Socket> fillers(8);
  for (auto& f : fillers) appmgr::net::Socket::Connect("127.0.0.1", never.port(), Deadline::After(200), &f);
  CKpNetwork s;
  bool timedOut = false;
  auto start = Clock::now();
  CLmError e = Attach(s, never.connectString(), kService, 1, &timedOut);
  EXPECT_TRUE(e);
  EXPECT_LT(Seconds(start), 2.5);
}

TEST_F(SessionTest, SlowAnswerTimesOutTheReceiveAndBreaksTheSession) {
  ScriptServer server;
  ScriptLookup(server);
  server.Delay(kBsLookup.requestId, 2000ms);
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server.connectString()));
  Lookup l;
  ASSERT_FALSE(l.Send(s));
  bool timedOut = false;
  auto start = Clock::now();
  CLmError e = l.Receive(s, 1, &timedOut);
  EXPECT_EQ(e.GetErrorCode(), kKpErrTimeout) << e.AsString();
  EXPECT_TRUE(timedOut);
  EXPECT_LT(Seconds(start), 1.8);
  EXPECT_TRUE(s.IsBroken());

  // Sticky: later calls fail at once, naming the first failure, until attached again.
  start = Clock::now();
  e = l.Send(s);
  EXPECT_EQ(e.GetErrorCode(), kKpErrTimeout);
  EXPECT_NE(e.AsString().find("connection is broken:"), std::string::npos) << e.AsString();
  EXPECT_LT(Seconds(start), 0.1);
  server.Delay(kBsLookup.requestId, 0ms);
  ASSERT_FALSE(Attach(s, server.connectString()));
  ASSERT_FALSE(l.Send(s));
  EXPECT_FALSE(l.Receive(s));
}

TEST_F(SessionTest, PeerThatStopsReadingTimesOutTheSend) {
  RawPeer deaf([](appmgr::net::Socket& sock) {
    FrameConn conn(std::move(sock));
    RawPeer::AcceptHello(conn);
    std::this_thread::sleep_for(3000ms);  // never reads again
  });
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, deaf.connectString()));
  // A record far larger than the socket buffers.
  std::vector<std::string> names(100000, std::string(40, 'n'));
  std::vector<AppMgrProps> props(names.size());
  for (size_t i = 0; i < names.size(); ++i) props[i] = {names[i].c_str(), 1, names[i].c_str()};
  GenericSetPropsReq req;
  req.hdr.version = 2;
  req.count = static_cast<uint32_t>(props.size());
  req.props = props.data();
  kpsDatabuf_v2 buf;
  buf.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
  bool timedOut = false;
  auto start = Clock::now();
  CLmError e = s.SendXDRMessage(appmgr::msg::kBsSetProperties.requestId, &buf, 0, 1, timedOut);
  EXPECT_EQ(e.GetErrorCode(), kKpErrTimeout) << e.AsString();
  EXPECT_TRUE(timedOut);
  EXPECT_LT(Seconds(start), 2.0);
  EXPECT_TRUE(s.IsBroken());
}

TEST_F(SessionTest, PeerClosingMidFrameIsALostConnection) {
  RawPeer half([](appmgr::net::Socket& sock) {
    FrameConn conn(std::move(sock));
    RawPeer::AcceptHello(conn);
    kpsHostProtocolHeader req;
    RawPeer::ReadFrame(conn, &req);
    kpsHostProtocolHeader h;
    h.msgId = kBsLookup.responseId;
    h.control = appmgr::net::MakeControl(appmgr::net::FrameKind::kBinary, true);
    h.payloadLength = 100;
    h.recordLength = sizeof(GenericLookupResp4);
    uint8_t bytes[appmgr::net::kFrameHeaderBytes + 10] = {};
    appmgr::net::EncodeFrameHeader(h, bytes);
    conn.socket().SendAll(bytes, sizeof bytes, Deadline::After(1000), "half");
  });
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, half.connectString()));
  Lookup l;
  ASSERT_FALSE(l.Send(s));
  CLmError e = l.Receive(s);
  EXPECT_EQ(e.GetErrorCode(), kKpErrDisconnected) << e.AsString();
  EXPECT_NE(e.AsString().find("in the middle of a 100-byte frame"), std::string::npos) << e.AsString();
  EXPECT_TRUE(s.IsBroken());
}

TEST_F(SessionTest, ServerErrorsLeaveTheSessionUsable) {
  ScriptServer server;
  ScriptLookup(server);
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server.connectString()));

  // A message the server has no handler for: its response record, error in the header.
  GetStoreListReq req;
  req.hdr.version = 2;
  GenericStringListResp resp;
  kpsDatabuf_v2 out, in;
  out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
  in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
  bool t = false;
  ASSERT_FALSE(s.SendXDRMessage(appmgr::msg::kBsStoreList.requestId, &out, 0, 5, t));
  unsigned long id = appmgr::msg::kBsStoreList.responseId;
  ASSERT_FALSE(s.ReceiveXDRMessage(&id, &in, nullptr, 0, 5, t));
  EXPECT_EQ(resp.hdr.errorCode, appmgr::server::kServerNoHandler);
  EXPECT_STREQ(resp.hdr.errorText, "this server has no handler for BS_STORE_LIST_REQ");

  // A reply the client cannot decode: an error, the stream stays in step.
  server.Raw(kBsLookup, {0, 0, 0, 1});
  Lookup bad;
  ASSERT_FALSE(bad.Send(s));
  CLmError e = bad.Receive(s);
  EXPECT_EQ(e.GetErrorCode(), kKpErrProtocol) << e.AsString();
  EXPECT_FALSE(s.IsBroken());

  ScriptLookup(server);
  Lookup good;
  ASSERT_FALSE(good.Send(s));
  ASSERT_FALSE(good.Receive(s));
  EXPECT_STREQ(good.resp.name, "bs-7");
}

TEST_F(SessionTest, RecordsNotInTheCatalogueAreRefusedBeforeSending) {
  ScriptServer server;
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server.connectString()));
  Lookup l;
  bool t = false;
  CLmError e = s.SendXDRMessage(0x35000001, &l.out, 0, 5, t);
  EXPECT_EQ(e.GetErrorCode(), kKpErrNotSupported);
  EXPECT_EQ(e.AsString(), "message 0x35000001 (UNKNOWN_MESSAGE) has no request record of 40 bytes");
  EXPECT_FALSE(s.IsBroken());
  EXPECT_EQ(server.Count(0x35000001), 0u);
}

TEST_F(SessionTest, SendWithRetryReattachesAfterTheServerRestarts) {
  ScriptServer server;
  ScriptLookup(server);
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server.connectString()));
  server.Restart();
  std::this_thread::sleep_for(50ms);
  Lookup l;
  bool t = false;
  // The first write into the dead connection may still be accepted by the kernel; the retry
  // logic is exercised by a broken session.
  kpsStatus status;
  s.AbortConnection(status, 5, t);
  ASSERT_FALSE(s.SendMessageWithRetry(kBsLookup.requestId, &l.out, 0, 5, t));
  ASSERT_FALSE(l.Receive(s));
  EXPECT_STREQ(l.resp.name, "bs-7");
}

TEST_F(SessionTest, XmlMessagesTravelByTag) {
  ScriptServer server;
  server.core().HandleXml(App::GetDataInPreInstallModeReq().getTagId(),
                          [](const CNMessageBase&, const appmgr::server::ConnectionInfo&) {
                            auto resp = std::make_unique<App::GetDataInPreInstallModeResp>();
                            resp->SetWebConsoleUrl("https://console.example/");
                            return resp;
                          });
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server.connectString()));
  App::GetDataInPreInstallModeReq req;
  bool t = false;
  ASSERT_FALSE(s.SendXMLMessage(req, 0, 5, t));
  CNMessageBase* answer = nullptr;
  unsigned long type = 0;
  ASSERT_FALSE(s.ReceiveXMLMessage(&type, answer, nullptr, 0, 5, t));
  std::unique_ptr<CNMessageBase> owned(answer);
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(type, 0x1ea717d0u);
  EXPECT_EQ(answer->getTagId(), 0x1ea717d0u);
  auto* typed = dynamic_cast<App::GetDataInPreInstallModeResp*>(answer);
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typed->GetWebConsoleUrl(), "https://console.example/");
}

class FilePutTest : public SessionTest {
 protected:
  void SetUp() override {
    temp_ = settings_.dir() + "/server/Temp";
    local_ = settings_.dir() + "/local";
    std::filesystem::create_directories(local_);
  }
  ScriptServer::Options ServerOptions() const {
    ScriptServer::Options o;
    o.tempDirectory = temp_;
    return o;
  }
  // Names in the server's folder, hidden part files included.
  std::set<std::string> Stored() const {
    std::set<std::string> names;
    for (auto& entry : std::filesystem::directory_iterator(temp_)) names.insert(entry.path().filename());
    return names;
  }
  static CLmError Attach(CKpNetwork& s, const ScriptServer& server) {
    kpsExecuteRemoteDllType facility;
    facility.facility = "sLNPATCHUPDATECLIENT";
    facility.entry = "sLPUPDATEPATCHES";
    bool aborted = false;
    return s.Attach_RemoteDLL(server.connectString(), &facility, "client01", 5, aborted);
  }
  static CLmError Put(CKpNetwork& s, const std::string& directory, const std::string& name,
                      kpsFilexferRequest* req = nullptr) {
    kpsFilexferRequest local;
    if (req == nullptr) req = &local;
    snprintf(req->sourceFileName, sizeof req->sourceFileName, "%s", name.c_str());
    req->overwrite = req->binary = 1;
    bool aborted = false;
    return s.PutFileRequest(directory, req, 10, aborted);
  }
  std::string temp_, local_;
};

TEST_F(FilePutTest, StoresPlainNamesInTempAndNothingElse) {
  ScriptServer server(ServerOptions());
  struct Case {
    const char* name;
    bool stored;
  } cases[] = {{"report.txt", true}, {"../escape.txt", false},   {"..", false},
               {".", false},         {"a/b.txt", false},         {"a\\b.txt", false},
               {"/etc/passwd", false}, {"", false}, {"spaces in name.bin", true}};
  for (const Case& c : cases) {
    RawFiles raw(server.port());
    ASSERT_TRUE(raw.attached());
    std::string body = std::string("content of ") + c.name, reason;
    raw.Begin(c.name, body.size());
    raw.Data(body);
    raw.End(body);
    int32_t status = raw.Result(&reason);
    if (c.stored) {
      ASSERT_EQ(status, 0) << c.name << ": " << reason;
      EXPECT_EQ(ReadFileText(temp_ + "/" + c.name), body);
    } else {
      EXPECT_EQ(status, kKpErrBadArgument) << "[" << c.name << "]";
      EXPECT_FALSE(reason.empty()) << c.name;
    }
  }
  // A NUL inside the name: no encoder makes one, so the bytes are altered on the way.
  {
    RawFiles raw(server.port());
    std::vector<uint8_t> record = RawFiles::BeginBytes("nulXname.txt", 1);
    std::replace(record.begin(), record.end(), uint8_t('X'), uint8_t(0));
    raw.Begin(record);
    raw.Data("x");
    raw.End("x");
    std::string reason;
    EXPECT_EQ(raw.Result(&reason), kKpErrBadArgument);
    EXPECT_NE(reason.find("NUL"), std::string::npos) << reason;
  }
  EXPECT_EQ(Stored(), (std::set<std::string>{"report.txt", "spaces in name.bin"}));
  EXPECT_FALSE(std::filesystem::exists(settings_.dir() + "/server/escape.txt"));
}

struct Progress {
  std::vector<std::pair<unsigned long long, unsigned long long>> calls;
  std::string name;
  static void Record(void* context, const char* name, unsigned long long sent, unsigned long long total) {
    auto* p = static_cast<Progress*>(context);
    p->name = name;
    p->calls.push_back({sent, total});
  }
};

TEST_F(FilePutTest, ClientStreamsALocalFileAndReportsItsProgress) {
  ScriptServer server(ServerOptions());
  std::string big(3u << 20, 'x');  // several data frames
  for (size_t i = 0; i < big.size(); i += 4096) big[i] = char('a' + i % 26);
  std::ofstream(local_ + "/big.bin", std::ios::binary) << big;
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server));
  Progress progress;
  CKpNetwork::SetPutProgressObserver(Progress::Record, &progress);
  kpsFilexferRequest req;
  CLmError e = Put(s, local_, "big.bin", &req);
  CKpNetwork::SetPutProgressObserver(nullptr, nullptr);
  ASSERT_FALSE(e) << e.AsString();
  EXPECT_EQ(req.bytesSent, big.size());
  EXPECT_TRUE(ReadFileText(temp_ + "/big.bin") == big);
  EXPECT_EQ(progress.name, "big.bin");
  ASSERT_EQ(progress.calls.size(), 4u) << "before the first byte, then once per 1 MiB frame";
  EXPECT_EQ(progress.calls.front(), (std::pair<unsigned long long, unsigned long long>{0, big.size()}));
  EXPECT_EQ(progress.calls[1].first, 1u << 20);
  EXPECT_EQ(progress.calls.back().first, big.size());

  // A bare file name given as its own directory is the file itself; the session goes on.
  std::ofstream(local_ + "/solo.txt") << "solo";
  ASSERT_FALSE(Put(s, local_ + "/solo.txt", "solo.txt"));
  EXPECT_EQ(ReadFileText(temp_ + "/solo.txt"), "solo");
  EXPECT_EQ(Stored(), (std::set<std::string>{"big.bin", "solo.txt"}));
}

TEST_F(FilePutTest, ARefusedFileStopsTheSenderAndLeavesTheSessionUsable) {
  ScriptServer::Options o = ServerOptions();
  o.maxFileBytes = 1u << 20;
  ScriptServer server(o);
  {
    // 64 MiB that take no room: a sparse file reads as zeros.
    std::ofstream(local_ + "/huge.bin");
    std::filesystem::resize_file(local_ + "/huge.bin", 64u << 20);
  }
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server));
  Progress progress;
  CKpNetwork::SetPutProgressObserver(Progress::Record, &progress);
  CLmError e = Put(s, local_, "huge.bin");
  CKpNetwork::SetPutProgressObserver(nullptr, nullptr);
  EXPECT_EQ(e.GetErrorCode(), kKpErrLimit);
  EXPECT_NE(e.Text().find("the server did not store huge.bin: huge.bin has 67108864 bytes, above this "
                          "server's limit of 1048576 bytes per file"),
            std::string::npos)
      << e.AsString();
  ASSERT_FALSE(progress.calls.empty());
  EXPECT_LT(progress.calls.back().first, 16u << 20) << "the sender stops once refused";
  EXPECT_FALSE(s.IsBroken());

  std::ofstream(local_ + "/small.txt") << "small";
  EXPECT_FALSE(Put(s, local_, "small.txt"));
  EXPECT_EQ(Stored(), (std::set<std::string>{"small.txt"}));
}

TEST_F(FilePutTest, ANameWithAPathIsRefusedEvenWhenTheLocalFileExists) {
  ScriptServer server(ServerOptions());
  std::ofstream(settings_.dir() + "/escape.txt") << "outside";
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server));
  CLmError e = Put(s, local_, "../escape.txt");  // local_/../escape.txt exists
  EXPECT_EQ(e.GetErrorCode(), kKpErrBadArgument) << e.AsString();
  EXPECT_NE(e.Text().find("has a path component"), std::string::npos) << e.AsString();
  EXPECT_TRUE(Stored().empty());
  EXPECT_FALSE(std::filesystem::exists(settings_.dir() + "/server/escape.txt"));
}

TEST_F(FilePutTest, AConnectionCutInTheMiddleOfAFileLeavesNoFile) {
  ScriptServer server(ServerOptions());
  {
    RawFiles raw(server.port());
    ASSERT_TRUE(raw.attached());
    raw.Begin("cut.bin", 3u << 20);
    raw.Data(std::string(1u << 20, 'c'));
    raw.Close();
  }
  // The server notices the end of the connection on its own thread.
  auto until = Clock::now() + 5s;
  while (!Stored().empty() && Clock::now() < until) std::this_thread::sleep_for(10ms);
  EXPECT_TRUE(Stored().empty()) << "neither cut.bin nor its part file";
}

TEST_F(FilePutTest, RefusesToReplaceUnlessAskedAndTheFacilityMustBeNamed) {
  ScriptServer server(ServerOptions());
  std::ofstream(local_ + "/data.bin") << "new";
  std::filesystem::create_directories(temp_);
  std::ofstream(temp_ + "/data.bin") << "old";
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server));
  kpsFilexferRequest req;
  snprintf(req.sourceFileName, sizeof req.sourceFileName, "data.bin");
  bool aborted = false;
  CLmError e = s.PutFileRequest(local_, &req, 5, aborted);
  EXPECT_EQ(e.GetErrorCode(), kKpErrRefused);
  EXPECT_NE(e.AsString().find("data.bin exists already"), std::string::npos) << e.AsString();
  EXPECT_EQ(ReadFileText(temp_ + "/data.bin"), "old");
  req.overwrite = 1;
  ASSERT_FALSE(s.PutFileRequest(local_, &req, 5, aborted));
  EXPECT_EQ(ReadFileText(temp_ + "/data.bin"), "new");

  kpsExecuteRemoteDllType wrong;
  wrong.facility = "OTHER";
  wrong.entry = "sLPUPDATEPATCHES";
  CKpNetwork other;
  EXPECT_EQ(other.Attach_RemoteDLL(server.connectString(), &wrong, "c", 5, aborted).GetErrorCode(),
            kKpErrRefused);
}

TEST_F(SessionTest, AChildProcessNeverWritesOnItsParentsSession) {
  ScriptServer server;
  ScriptLookup(server);
  CKpNetwork s;
  ASSERT_FALSE(Attach(s, server.connectString()));
  pid_t child = fork();
  if (child == 0) {
    Lookup l;
    CLmError e = l.Send(s);
    bool ok = e && e.AsString().find("belongs to the parent process") != std::string::npos;
    _exit(ok ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  // The parent's connection saw nothing from the child and still works.
  Lookup l;
  ASSERT_FALSE(l.Send(s));
  ASSERT_FALSE(l.Receive(s));
  EXPECT_STREQ(l.resp.name, "bs-7");
  EXPECT_EQ(server.Count(kBsLookup.requestId), 1u);
}

}  // namespace
