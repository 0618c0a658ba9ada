#include "platform/net/Frame.h"

#include <atomic>
#include <cstring>

#include "platform/base/KpSettings.h"
#include "platform/net/BigEndian.h"

namespace appmgr::net {
namespace {

constexpr size_t kDefaultMaxFrame = 16u << 20;
constexpr size_t kMinMaxFrame = 4096;
std::atomic<size_t> g_maxFrame{0};

}  // namespace

const char* FrameKindName(FrameKind kind) {
  switch (kind) {
    case FrameKind::kHello: return "hello";
    case FrameKind::kHelloAccept: return "hello-accept";
    case FrameKind::kHelloRefuse: return "hello-refuse";
    case FrameKind::kBinary: return "binary";
    case FrameKind::kXml: return "xml";
    case FrameKind::kError: return "error";
    case FrameKind::kFileBegin: return "file-begin";
    case FrameKind::kFileData: return "file-data";
    case FrameKind::kFileEnd: return "file-end";
    case FrameKind::kFileResult: return "file-result";
    case FrameKind::kGoodbye: return "goodbye";
  }
  return "unknown";
}

void ReloadFrameLimit() {
  unsigned long v = kDefaultMaxFrame;
  KpSettings::Instance().GetNumber("Network", "nMaxFrameBytes", &v);
  g_maxFrame.store(v < kMinMaxFrame ? kMinMaxFrame : v, std::memory_order_relaxed);
}

size_t MaxFramePayload() {
  size_t v = g_maxFrame.load(std::memory_order_relaxed);
  if (v == 0) {
    ReloadFrameLimit();
    v = g_maxFrame.load(std::memory_order_relaxed);
  }
  return v;
}

void EncodeFrameHeader(const kpsHostProtocolHeader& h, uint8_t out[kFrameHeaderBytes]) {
  PutU64(out, h.msgId);
  PutU64(out + 8, h.control);
  PutU64(out + 16, h.jobId);
  PutU64(out + 24, h.payloadLength);
  PutU64(out + 32, h.recordLength);
  PutU64(out + 40, h.status);
}

CLmError DecodeFrameHeader(const uint8_t in[kFrameHeaderBytes], size_t maxPayload,
                           kpsHostProtocolHeader* out) {
  kpsHostProtocolHeader h;
  h.msgId = GetU64(in);
  h.control = GetU64(in + 8);
  h.jobId = GetU64(in + 16);
  h.payloadLength = GetU64(in + 24);
  h.recordLength = GetU64(in + 32);
  h.status = GetU64(in + 40);
  if (uint32_t(h.control >> 32) != kFrameMagic) {
    return CLmError::Format(kKpErrProtocol, "frame does not start with the session magic (got 0x%016llx)",
                            static_cast<unsigned long long>(h.control));
  }
  uint32_t version = uint32_t(h.control >> 24) & 0xff;
  if (version != kFrameVersion) {
    return CLmError::Format(kKpErrProtocol, "frame version %u is not %u", version, kFrameVersion);
  }
  uint32_t kind = uint32_t(h.control & 0xff);
  if (kind < uint32_t(FrameKind::kHello) || kind > uint32_t(FrameKind::kGoodbye)) {
    return CLmError::Format(kKpErrProtocol, "unknown frame kind %u", kind);
  }
  if (h.payloadLength > maxPayload) {
    return CLmError::Format(kKpErrLimit, "frame of %llu bytes exceeds the limit of %zu bytes",
                            static_cast<unsigned long long>(h.payloadLength), maxPayload);
  }
  *out = h;
  return {};
}

CLmError FrameConn::Write(kpsHostProtocolHeader header, const void* payload, size_t length,
                          Deadline deadline) {
  uint8_t* room = PayloadRoom(length);
  if (length) std::memcpy(room, payload, length);
  return WriteBuffered(header, length, deadline);
}

uint8_t* FrameConn::PayloadRoom(size_t length) {
  if (wbuf_.size() < kFrameHeaderBytes + length) wbuf_.resize(kFrameHeaderBytes + length);
  return wbuf_.data() + kFrameHeaderBytes;
}

CLmError FrameConn::WriteBuffered(kpsHostProtocolHeader header, size_t length, Deadline deadline) {
  if (!socket_.valid()) return CLmError(kKpErrDisconnected, "not connected");
  if (wbuf_.size() < kFrameHeaderBytes + length) wbuf_.resize(kFrameHeaderBytes + length);
  header.payloadLength = length;
  EncodeFrameHeader(header, wbuf_.data());
  return socket_.SendAll(wbuf_.data(), kFrameHeaderBytes + length, deadline,
                         FrameKindName(KindOf(header)));
}

CLmError FrameConn::Fill(size_t need, Deadline deadline, int64_t restMs) {
  if (rlen_ - rpos_ >= need) return {};
  if (rpos_ == rlen_) {
    rpos_ = rlen_ = 0;
    if (rbuf_.size() > kKeptReceiveBytes) rbuf_ = std::vector<uint8_t>();  // an unusually large frame
  }
  // Small frames are read ahead, up to 64 KiB, so that one system call brings several. A large
  // payload (a file chunk) is read up to its own end only: the next frame then starts at the
  // front of the buffer, and no payload is ever moved within it.
  const bool large = need > kReadAheadBytes;
  size_t end = large ? rpos_ + need : rpos_ + std::max(need, kReadAheadBytes);
  if (end > rbuf_.size() && rpos_ > 0 && end - rpos_ <= rbuf_.size()) {
    // Room enough once what is unread moves to the front.
    std::memmove(rbuf_.data(), rbuf_.data() + rpos_, rlen_ - rpos_);
    rlen_ -= rpos_;
    end -= rpos_;
    rpos_ = 0;
  }
  const size_t limit = large ? rpos_ + need : std::max(end, rbuf_.size());
  if (!large && rbuf_.size() < end) rbuf_.resize(end);
  while (rlen_ - rpos_ < need) {
    if (rlen_ == rbuf_.size()) {
      // Only a large frame gets here. Its buffer grows with the bytes that arrive, never to a
      // length a header merely declares: a peer that announces a large frame and sends little
      // costs little. Doubling keeps the copies of a frame that does arrive linear in its size.
      rbuf_.resize(std::min(limit, std::max(rbuf_.size() * 2, rlen_ + kReadAheadBytes)));
    }
    size_t got = 0;
    const size_t room = std::min(limit, rbuf_.size()) - rlen_;
    if (CLmError e = socket_.RecvSome(rbuf_.data() + rlen_, room, deadline, &got, "frame")) {
      return e;
    }
    // The frame has begun: what is missing gets restMs (the clock is read only if something is).
    if (rlen_ == rpos_ && restMs > 0 && got < need) deadline = Deadline::After(restMs);
    rlen_ += got;
  }
  return {};
}

CLmError FrameConn::Read(kpsHostProtocolHeader* header, const uint8_t** payload, size_t* length,
                         Deadline deadline, size_t maxPayload) {
  return ReadFrame(header, payload, length, deadline, 0, maxPayload);
}

CLmError FrameConn::ReadFrame(kpsHostProtocolHeader* header, const uint8_t** payload,
                              size_t* length, Deadline firstByte, int64_t restMs,
                              size_t maxPayload) {
  if (!socket_.valid()) return CLmError(kKpErrDisconnected, "not connected");
  if (rlen_ > rpos_) firstByte = restMs > 0 ? Deadline::After(restMs) : firstByte;
  if (CLmError e = Fill(kFrameHeaderBytes, firstByte, restMs)) {
    lastReadGotNothing_ = rlen_ == rpos_;
    return e;
  }
  lastReadGotNothing_ = false;
  kpsHostProtocolHeader h;
  if (CLmError e = DecodeFrameHeader(rbuf_.data() + rpos_, maxPayload, &h)) return e;
  rpos_ += kFrameHeaderBytes;
  size_t n = static_cast<size_t>(h.payloadLength);
  // The rest of the frame gets restMs from here, unless it has all arrived with the header (the
  // common case: then the clock is not read).
  Deadline rest = restMs > 0 && rlen_ - rpos_ < n ? Deadline::After(restMs) : firstByte;
  if (CLmError e = Fill(n, rest)) {
    if (e.GetErrorCode() == kKpErrDisconnected) {
      return CLmError::Format(kKpErrDisconnected,
                              "the peer closed the connection in the middle of a %zu-byte frame", n);
    }
    return e;
  }
  *header = h;
  *payload = rbuf_.data() + rpos_;
  *length = n;
  rpos_ += n;
  if (rpos_ == rlen_) rpos_ = rlen_ = 0;
  return {};
}
}  // namespace appmgr::net
