// FrameConn's receive buffer: frames of every size, arriving in pieces of every size, come out
// whole and in order, small frames read ahead and large payloads read to their end only.
#include "platform/net/Frame.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using appmgr::net::Deadline;
using appmgr::net::FrameConn;
using appmgr::net::FrameKind;

// The payload of frame i: its length and bytes depend on i alone.
std::string Payload(size_t i) {
  static const size_t kSizes[] = {0, 5, 48, 4000, 65536 - 48, 65536, 65537, 1u << 20, 300000, 7};
  std::string p(kSizes[i % std::size(kSizes)], '\0');
  for (size_t k = 0; k < p.size(); ++k) p[k] = char((i * 31 + k * 7) & 0xff);
  return p;
}

TEST(FrameConnTest, FramesOfEverySizeInPiecesOfEverySizeComeOutWhole) {
  int fds[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
  constexpr size_t kFrames = 60;
  // The writer encodes every frame, then sends the bytes in pieces of random sizes, so headers
  // and payloads are split everywhere.
  std::thread writer([fd = fds[0]] {
    std::vector<uint8_t> all;
    for (size_t i = 0; i < kFrames; ++i) {
      std::string p = Payload(i);
      kpsHostProtocolHeader h;
      h.msgId = i;
      h.control = appmgr::net::MakeControl(FrameKind::kFileData, false);
      h.payloadLength = p.size();
      uint8_t header[appmgr::net::kFrameHeaderBytes];
      appmgr::net::EncodeFrameHeader(h, header);
      all.insert(all.end(), header, header + sizeof header);
      all.insert(all.end(), p.begin(), p.end());
    }
    std::mt19937 random(7);
    for (size_t at = 0; at < all.size();) {
      size_t piece = std::min<size_t>(all.size() - at, 1 + random() % 200000);
      ssize_t n = ::send(fd, all.data() + at, piece, MSG_NOSIGNAL);
      if (n <= 0) break;
      at += size_t(n);
    }
    ::close(fd);
  });
  FrameConn conn{appmgr::net::Socket(fds[1])};
  for (size_t i = 0; i < kFrames; ++i) {
    kpsHostProtocolHeader h;
    const uint8_t* payload = nullptr;
    size_t length = 0;
    CLmError e = conn.Read(&h, &payload, &length, Deadline::After(10000), 16u << 20);
    ASSERT_FALSE(e) << "frame " << i << ": " << e.AsString();
    EXPECT_EQ(h.msgId, i);
    std::string expected = Payload(i);
    ASSERT_EQ(length, expected.size()) << "frame " << i;
    EXPECT_TRUE(std::equal(payload, payload + length, reinterpret_cast<const uint8_t*>(expected.data())))
        << "frame " << i;
  }
  EXPECT_FALSE(conn.HasBuffered());
  writer.join();
}

// A header that declares a large payload costs memory only as its bytes arrive: a peer that
// announces 16 MiB and sends 100 KB leaves the reader holding about that much, and when the
// bytes do come the frame still arrives whole.
TEST(FrameConnTest, TheBufferFollowsTheBytesThatArriveNotTheLengthDeclared) {
  int fds[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
  constexpr size_t kDeclared = 16u << 20, kSentFirst = 100000;
  std::string payload(kDeclared, '\0');
  for (size_t k = 0; k < payload.size(); ++k) payload[k] = char(k * 13);
  kpsHostProtocolHeader h;
  h.msgId = 1;
  h.control = appmgr::net::MakeControl(FrameKind::kBinary, false);
  h.payloadLength = kDeclared;
  uint8_t header[appmgr::net::kFrameHeaderBytes];
  appmgr::net::EncodeFrameHeader(h, header);
  ASSERT_EQ(::send(fds[0], header, sizeof header, 0), ssize_t(sizeof header));
  ASSERT_EQ(::send(fds[0], payload.data(), kSentFirst, 0), ssize_t(kSentFirst));

  FrameConn conn{appmgr::net::Socket(fds[1])};
  kpsHostProtocolHeader got;
  const uint8_t* data = nullptr;
  size_t length = 0;
  CLmError e = conn.Read(&got, &data, &length, Deadline::After(200), kDeclared);
  EXPECT_TRUE(e) << "the frame cannot be whole yet";
  EXPECT_LT(conn.ReceiveBufferBytes(), 4 * kSentFirst) << "allocated for the declared length";

  // The same declaration, honoured: the rest arrives and the frame reads whole.
  int again[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, again), 0);
  std::thread writer([fd = again[0], &header, &payload] {
    ::send(fd, header, sizeof header, MSG_NOSIGNAL);
    for (size_t at = 0; at < payload.size();) {
      ssize_t n = ::send(fd, payload.data() + at, std::min<size_t>(payload.size() - at, 70000), MSG_NOSIGNAL);
      if (n <= 0) break;
      at += size_t(n);
    }
  });
  FrameConn whole{appmgr::net::Socket(again[1])};
  e = whole.Read(&got, &data, &length, Deadline::After(10000), kDeclared);
  writer.join();
  ASSERT_FALSE(e) << e.AsString();
  ASSERT_EQ(length, kDeclared);
  EXPECT_TRUE(std::equal(data, data + length, reinterpret_cast<const uint8_t*>(payload.data())));
  ::close(fds[0]);
  ::close(again[0]);
}

}  // namespace
