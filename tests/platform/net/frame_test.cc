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

}  // namespace
