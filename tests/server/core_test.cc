// The server core under hostile and clumsy clients: it answers or closes, never crashes, never
// lets one client hold it, and stops cleanly.
#include "server/core/Server.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "platform/net/CKpNetwork.h"
#include "platform/net/ControlRecords.h"
#include "platform/net/XdrCodec.h"
#include "platform/xml/CNMessageBase.h"
#include "protocol/Messages.h"
#include "tests/support/RawPeer.h"
#include "tests/support/ScriptServer.h"
#include "tests/support/TestSettings.h"

namespace {

using namespace std::chrono_literals;
using appmgr::msg::kBsLookup;
using appmgr::net::Deadline;
using appmgr::net::FrameConn;
using appmgr::net::FrameKind;

// A raw connection that has passed the hello.
FrameConn Attached(const ScriptServer& server, const char* service = "AppManager network access") {
  appmgr::net::Socket sock;
  EXPECT_FALSE(appmgr::net::Socket::Connect("127.0.0.1", server.port(), Deadline::After(2000), &sock));
  FrameConn conn(std::move(sock));
  appmgr::net::HelloRecord hello;
  hello.frameVersion = 1;
  hello.service = service;
  hello.client = "raw";
  std::vector<uint8_t> out;
  appmgr::wire::EncodeRecord(hello, out);
  kpsHostProtocolHeader h;
  h.control = appmgr::net::MakeControl(FrameKind::kHello, false);
  conn.Write(h, out.data(), out.size(), Deadline::After(2000));
  kpsHostProtocolHeader answer;
  EXPECT_TRUE(RawPeer::ReadFrame(conn, &answer));
  EXPECT_EQ(appmgr::net::KindOf(answer), FrameKind::kHelloAccept);
  return conn;
}

// Reads until the server closes; true when it does within the time.
bool ClosedByServer(FrameConn& conn, int ms = 3000) {
  kpsHostProtocolHeader h;
  const uint8_t* p;
  size_t n;
  auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  while (std::chrono::steady_clock::now() < until) {
    CLmError e = conn.Read(&h, &p, &n, Deadline::After(ms), 1u << 24);
    if (e) return e.GetErrorCode() == kKpErrDisconnected;
  }
  return false;
}

std::vector<uint8_t> LookupPayload(uint64_t id) {
  GenericLookupReq4 req;
  req.hdr.version = 2;
  req.id = id;
  std::vector<uint8_t> out;
  appmgr::wire::EncodeRecord(req, out);
  return out;
}

kpsHostProtocolHeader RequestHeader(uint64_t msgId, uint64_t recordLength, uint32_t seq = 1) {
  kpsHostProtocolHeader h;
  h.msgId = msgId;
  h.control = appmgr::net::MakeControl(FrameKind::kBinary, false);
  h.recordLength = recordLength;
  h.status = appmgr::net::MakeStatus(seq, 0);
  return h;
}

class CoreTest : public testing::Test {
 protected:
  CoreTest() {
    server_.On(kBsLookup, [](const GenericLookupReq4& req, GenericLookupResp4& resp,
                             appmgr::server::Exchange& x) {
      if (req.id == 666) throw std::runtime_error("the store is on fire");
      resp.name = x.Text("bs-" + std::to_string(req.id));
    });
  }
  // The server still answers a well-behaved client.
  void ExpectServing() {
    CKpNetwork s;
    bool t;
    ASSERT_FALSE(s.Attach_RemoteService(server_.connectString(), "AppManager network access", "c", 5, t));
    GenericLookupReq4 req;
    req.hdr.version = 2;
    req.id = 5;
    GenericLookupResp4 resp;
    kpsDatabuf_v2 out, in;
    out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
    in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
    ASSERT_FALSE(s.SendXDRMessage(kBsLookup.requestId, &out, 0, 5, t));
    unsigned long id = kBsLookup.responseId;
    ASSERT_FALSE(s.ReceiveXDRMessage(&id, &in, nullptr, 0, 5, t));
    EXPECT_STREQ(resp.name, "bs-5");
  }
  TestSettings settings_;
  ScriptServer server_;
};

TEST_F(CoreTest, UnknownMessagesGetAnErrorFrameAndTheConnectionGoesOn) {
  FrameConn conn = Attached(server_);
  auto payload = LookupPayload(1);
  struct {
    uint64_t id, length;
    const char* reason;
  } cases[] = {
      {0x35000001, 40, "message 0x35000001 (UNKNOWN_MESSAGE) with a record of 40 bytes is not known here"},
      {kBsLookup.requestId, 48, "message 0x3400027f (BS_LOOKUP_REQ) with a record of 48 bytes is not known here"},
  };
  uint32_t seq = 1;
  for (const auto& c : cases) {
    ASSERT_FALSE(conn.Write(RequestHeader(c.id, c.length, seq), payload.data(), payload.size(), Deadline::After(2000)));
    kpsHostProtocolHeader h;
    const uint8_t* p;
    size_t n;
    ASSERT_FALSE(conn.Read(&h, &p, &n, Deadline::After(2000), 65536));
    EXPECT_EQ(appmgr::net::KindOf(h), FrameKind::kError);
    EXPECT_EQ(appmgr::net::StatusOf(h), kKpErrNotSupported);
    EXPECT_EQ(appmgr::net::SequenceOf(h), seq);
    appmgr::net::ReasonRecord r;
    appmgr::wire::Arena a;
    ASSERT_FALSE(appmgr::wire::DecodeRecord(p, n, r, a));
    EXPECT_STREQ(r.text, c.reason);
    ++seq;
  }
  // Garbage inside a well-formed frame: an error frame, the stream stays usable.
  std::vector<uint8_t> junk = {0, 0, 0, 2, 9, 9};
  ASSERT_FALSE(conn.Write(RequestHeader(kBsLookup.requestId, 40, seq), junk.data(), junk.size(), Deadline::After(2000)));
  kpsHostProtocolHeader h;
  const uint8_t* p;
  size_t n;
  ASSERT_FALSE(conn.Read(&h, &p, &n, Deadline::After(2000), 65536));
  EXPECT_EQ(appmgr::net::KindOf(h), FrameKind::kError);
  EXPECT_EQ(appmgr::net::StatusOf(h), kKpErrProtocol);
  ASSERT_FALSE(conn.Write(RequestHeader(kBsLookup.requestId, 40, ++seq), payload.data(), payload.size(), Deadline::After(2000)));
  ASSERT_FALSE(conn.Read(&h, &p, &n, Deadline::After(2000), 65536));
  EXPECT_EQ(appmgr::net::KindOf(h), FrameKind::kBinary);
  EXPECT_EQ(h.msgId, kBsLookup.responseId);
}

TEST_F(CoreTest, BytesThatAreNotFramesCloseTheConnection) {
  struct {
    const char* name;
    std::vector<uint8_t> bytes;
  } cases[] = {
      {"text", std::vector<uint8_t>(64, 'G')},
      {"oversize frame", {}},
      {"second hello", {}},
  };
  {
    kpsHostProtocolHeader big = RequestHeader(kBsLookup.requestId, 40);
    big.payloadLength = 1ull << 40;
    cases[1].bytes.resize(appmgr::net::kFrameHeaderBytes);
    appmgr::net::EncodeFrameHeader(big, cases[1].bytes.data());
    kpsHostProtocolHeader hello;
    hello.control = appmgr::net::MakeControl(FrameKind::kHello, false);
    cases[2].bytes.resize(appmgr::net::kFrameHeaderBytes);
    appmgr::net::EncodeFrameHeader(hello, cases[2].bytes.data());
  }
  for (auto& c : cases) {
    FrameConn conn = Attached(server_);
    ASSERT_FALSE(conn.socket().SendAll(c.bytes.data(), c.bytes.size(), Deadline::After(2000), "t"));
    EXPECT_TRUE(ClosedByServer(conn)) << c.name;
  }
  ExpectServing();
}

TEST_F(CoreTest, AConnectionMustBeginWithAHello) {
  appmgr::net::Socket sock;
  ASSERT_FALSE(appmgr::net::Socket::Connect("127.0.0.1", server_.port(), Deadline::After(2000), &sock));
  FrameConn conn(std::move(sock));
  auto payload = LookupPayload(1);
  ASSERT_FALSE(conn.Write(RequestHeader(kBsLookup.requestId, 40), payload.data(), payload.size(), Deadline::After(2000)));
  kpsHostProtocolHeader h;
  ASSERT_TRUE(RawPeer::ReadFrame(conn, &h));
  EXPECT_EQ(appmgr::net::KindOf(h), FrameKind::kHelloRefuse);
  EXPECT_TRUE(ClosedByServer(conn));
  EXPECT_EQ(server_.Count(kBsLookup.requestId), 0u);
}

TEST_F(CoreTest, AThrowingHandlerIsAnErrorInTheResponseHeader) {
  FrameConn conn = Attached(server_);
  auto payload = LookupPayload(666);
  ASSERT_FALSE(conn.Write(RequestHeader(kBsLookup.requestId, 40), payload.data(), payload.size(), Deadline::After(2000)));
  kpsHostProtocolHeader h;
  const uint8_t* p;
  size_t n;
  ASSERT_FALSE(conn.Read(&h, &p, &n, Deadline::After(2000), 65536));
  GenericLookupResp4 resp;
  appmgr::wire::Arena a;
  ASSERT_FALSE(appmgr::wire::DecodeRecord(p, n, resp, a));
  EXPECT_EQ(resp.hdr.version, 2u);
  EXPECT_EQ(resp.hdr.errorCode, appmgr::server::kServerHandlerFailed);
  EXPECT_STREQ(resp.hdr.errorText, "the handler of BS_LOOKUP_REQ failed: the store is on fire");
  EXPECT_EQ(resp.name, nullptr);
}

TEST_F(CoreTest, SilentAndSlowClientsAreClosed) {
  ScriptServer::Options o;
  o.idleTimeoutSeconds = 1;
  o.frameTimeoutSeconds = 1;
  ScriptServer strict(o);
  {
    FrameConn idle = Attached(strict);
    auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(ClosedByServer(idle, 4000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms);
  }
  {
    FrameConn slow = Attached(strict);
    uint8_t partial[10] = {};
    slow.socket().SendAll(partial, sizeof partial, Deadline::After(1000), "t");  // and nothing more
    EXPECT_TRUE(ClosedByServer(slow, 4000));
  }
  {  // connected but never says hello
    appmgr::net::Socket sock;
    ASSERT_FALSE(appmgr::net::Socket::Connect("127.0.0.1", strict.port(), Deadline::After(2000), &sock));
    FrameConn mute(std::move(sock));
    EXPECT_TRUE(ClosedByServer(mute, 4000));
  }
}

TEST_F(CoreTest, ConnectionsAboveTheLimitAreRefusedInTheirHello) {
  ScriptServer::Options o;
  o.maxConnections = 2;
  ScriptServer small(o);
  FrameConn a = Attached(small);
  FrameConn b = Attached(small);
  CKpNetwork third;
  bool t;
  CLmError e = third.Attach_RemoteService(small.connectString(), "AppManager network access", "c", 5, t);
  EXPECT_EQ(e.GetErrorCode(), kKpErrRefused);
  EXPECT_NE(e.AsString().find("too many connections"), std::string::npos) << e.AsString();
}

TEST_F(CoreTest, StopIsCleanWithClientsConnectedAndRequestsInFlight) {
  ScriptServer::Options o;
  auto server = std::make_unique<ScriptServer>(o);
  server->Answer(kBsLookup);
  server->Delay(kBsLookup.requestId, 300ms);
  std::vector<FrameConn> conns;
  for (int i = 0; i < 5; ++i) conns.push_back(Attached(*server));
  auto payload = LookupPayload(1);
  conns[0].Write(RequestHeader(kBsLookup.requestId, 40), payload.data(), payload.size(), Deadline::After(2000));
  std::this_thread::sleep_for(50ms);
  auto start = std::chrono::steady_clock::now();
  server->Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
  for (auto& c : conns) EXPECT_TRUE(ClosedByServer(c, 2000));
}

// An XML request frame carrying `text` under `tag`.
kpsHostProtocolHeader XmlHeader(uint64_t tag, uint32_t seq) {
  kpsHostProtocolHeader h;
  h.msgId = tag;
  h.control = appmgr::net::MakeControl(FrameKind::kXml, false);
  h.status = appmgr::net::MakeStatus(seq, 0);
  return h;
}

TEST_F(CoreTest, XmlRequestsThatDoNotReadOrHaveNoHandlerAreAnsweredAndTheConnectionGoesOn) {
  server_.core().HandleXml(0x0100abcd, [](const CNMessageBase& req, const appmgr::server::ConnectionInfo&) {
    return std::make_unique<CNMessageBase>(req.getTagId() + 1);
  });
  FrameConn conn = Attached(server_);
  auto exchange = [&](const std::string& text, uint32_t seq, std::string* reason) {
    EXPECT_FALSE(conn.Write(XmlHeader(0x0100abcd, seq), text.data(), text.size(), Deadline::After(2000)));
    kpsHostProtocolHeader h;
    const uint8_t* p;
    size_t n;
    EXPECT_FALSE(conn.Read(&h, &p, &n, Deadline::After(2000), 65536));
    EXPECT_EQ(appmgr::net::SequenceOf(h), seq);
    if (appmgr::net::KindOf(h) == FrameKind::kError) {
      appmgr::net::ReasonRecord r;
      appmgr::wire::Arena a;
      EXPECT_FALSE(appmgr::wire::DecodeRecord(p, n, r, a));
      *reason = r.text ? r.text : "";
      return static_cast<uint64_t>(appmgr::net::StatusOf(h));
    }
    *reason = std::string(reinterpret_cast<const char*>(p), n);
    return h.msgId;
  };
  std::string reason;
  EXPECT_EQ(exchange("<x tag=\"0x0100abcd\"><int n=\"1\">", 1, &reason), uint64_t{kKpErrProtocol});
  EXPECT_NE(reason.find("the XML request could not be read (1101): "), std::string::npos) << reason;
  EXPECT_EQ(exchange("<x tag=\"0x0100abce\"/>", 2, &reason), uint64_t{kKpErrNotSupported});
  EXPECT_EQ(reason, "no handler for XML tag 0x0100abce here");
  EXPECT_EQ(exchange("<x tag=\"0x0100abcd\"/>", 3, &reason), 0x0100abceu) << "still serving";

  server_.core().HandleUnknownXml([](const CNMessageBase& req, const appmgr::server::ConnectionInfo&) {
    return std::make_unique<CNMessageBase>(req.getTagId() + 0x100);
  });
  EXPECT_EQ(exchange("<x tag=\"0x0100abce\"/>", 4, &reason), 0x0100acceu);
  EXPECT_EQ(reason, "<CNMessage tag=\"0x0100acce\"/>");
}

TEST_F(CoreTest, AFrameAboveTheLimitIsRefusedWithAReasonUnread) {
  ScriptServer::Options o;
  o.maxFrameBytes = 4096;
  ScriptServer small(o);
  FrameConn conn = Attached(small);
  std::string big(5000, 'x');
  ASSERT_FALSE(conn.Write(XmlHeader(0x0100abcd, 1), big.data(), big.size(), Deadline::After(2000)));
  kpsHostProtocolHeader h;
  const uint8_t* p;
  size_t n;
  ASSERT_FALSE(conn.Read(&h, &p, &n, Deadline::After(2000), 65536));
  EXPECT_EQ(appmgr::net::KindOf(h), FrameKind::kError);
  EXPECT_EQ(appmgr::net::StatusOf(h), kKpErrLimit);
  appmgr::net::ReasonRecord r;
  appmgr::wire::Arena a;
  ASSERT_FALSE(appmgr::wire::DecodeRecord(p, n, r, a));
  EXPECT_STREQ(r.text, "frame of 5000 bytes exceeds the limit of 4096 bytes");
  EXPECT_TRUE(ClosedByServer(conn));
}

TEST_F(CoreTest, RestartKeepsThePortAndTheScripts) {
  unsigned port = server_.port();
  server_.Restart();
  EXPECT_EQ(server_.port(), port);
  ExpectServing();
}

}  // namespace
