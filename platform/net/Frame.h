// Frames: the unit both ends of a session exchange.
//
// A frame is the 48-byte header (six unsigned 64-bit words, big-endian) followed by
// payloadLength bytes:
//   word 0  msgId          binary: the message id; XML: the XML tag id; otherwise 0
//   word 1  control        bits 63..32 magic 0x4B505331 ("KPS1"), bits 31..24 frame version (1),
//                          bits 15..8 direction (0 request, 1 response), bits 7..0 kind
//   word 2  jobId          the job the sender tags its requests with
//   word 3  payloadLength  bytes after the header; never above the frame limit
//   word 4  recordLength   binary: the in-memory size of the record, which with the id and the
//                          direction names the record; 0 otherwise
//   word 5  status         bits 63..32 sequence number (a response echoes its request's),
//                          bits 31..0 a status code (error, refuse and result frames)
// docs/protocol.md describes the kinds and the life of a connection.
//
// Thread-safety: a FrameConn is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "platform/net/Socket.h"

// The protocol header of a frame, as the session library hands it to callers.
struct kpsHostProtocolHeader {
  uint64_t msgId = 0;
  uint64_t control = 0;
  uint64_t jobId = 0;
  uint64_t payloadLength = 0;
  uint64_t recordLength = 0;
  uint64_t status = 0;
};
static_assert(sizeof(kpsHostProtocolHeader) == 48);

namespace appmgr::net {

constexpr size_t kFrameHeaderBytes = 48;
// Small frames are read ahead up to this many bytes per system call.
constexpr size_t kReadAheadBytes = 64 * 1024;
// A connection keeps a receive buffer up to this size between frames (a 1 MiB file chunk and its
// header fit); a larger one, left by an unusually large frame, is given back.
constexpr size_t kKeptReceiveBytes = 2u << 20;
constexpr uint32_t kFrameMagic = 0x4B505331;  // "KPS1"
constexpr uint32_t kFrameVersion = 1;

enum class FrameKind : uint8_t {
  kHello = 1,         // client -> server: HelloRecord
  kHelloAccept = 2,   // server -> client: HelloAcceptRecord
  kHelloRefuse = 3,   // server -> client: ReasonRecord, status = code; the server then closes
  kBinary = 4,        // an App Manager record, XDR
  kXml = 5,           // an XML message, UTF-8 text
  kError = 6,         // server -> client: ReasonRecord, status = code; the request was not served
  kFileBegin = 7,     // client -> server: FileBeginRecord
  kFileData = 8,      // client -> server: raw file bytes, at most 1 MiB
  kFileEnd = 9,       // client -> server: FileEndRecord (byte count and checksum)
  kFileResult = 10,   // server -> client: ReasonRecord, status = 0 or code; may come early
  kGoodbye = 11,      // either side: no payload; the sender closes next
};

const char* FrameKindName(FrameKind kind);

inline uint64_t MakeControl(FrameKind kind, bool response) {
  return (uint64_t(kFrameMagic) << 32) | (uint64_t(kFrameVersion) << 24) |
         (uint64_t(response ? 1 : 0) << 8) | uint64_t(kind);
}
inline FrameKind KindOf(const kpsHostProtocolHeader& h) { return FrameKind(h.control & 0xff); }
inline bool IsResponse(const kpsHostProtocolHeader& h) { return ((h.control >> 8) & 0xff) == 1; }
inline uint32_t SequenceOf(const kpsHostProtocolHeader& h) { return uint32_t(h.status >> 32); }
inline int32_t StatusOf(const kpsHostProtocolHeader& h) { return int32_t(uint32_t(h.status)); }
inline uint64_t MakeStatus(uint32_t sequence, int32_t code) {
  return (uint64_t(sequence) << 32) | uint32_t(code);
}

// The largest payload a frame may carry: [Network] nMaxFrameBytes, default 16 MiB, at least
// 4 KiB. Read once per process (ReloadFrameLimit re-reads it).
size_t MaxFramePayload();
void ReloadFrameLimit();

void EncodeFrameHeader(const kpsHostProtocolHeader& h, uint8_t out[kFrameHeaderBytes]);
// Checks magic, version and kind; the payload length against `maxPayload`.
CLmError DecodeFrameHeader(const uint8_t in[kFrameHeaderBytes], size_t maxPayload,
                           kpsHostProtocolHeader* out);

// A connected socket speaking frames, with a reused receive buffer.
class FrameConn {
 public:
  FrameConn() = default;
  explicit FrameConn(Socket socket) : socket_(std::move(socket)) {}

  Socket& socket() { return socket_; }
  bool connected() const { return socket_.valid(); }

  // Sends the header (its payloadLength set from `length`) and the payload as one write.
  CLmError Write(kpsHostProtocolHeader header, const void* payload, size_t length, Deadline deadline);
  // Room for a payload of `length` bytes right after header space, for encoders that write in
  // place; then WriteBuffered() sends header + those bytes.
  uint8_t* PayloadRoom(size_t length);
  // Payload bytes PayloadRoom() can offer without growing.
  size_t PayloadCapacity() const { return wbuf_.size() > kFrameHeaderBytes ? wbuf_.size() - kFrameHeaderBytes : 0; }
  CLmError WriteBuffered(kpsHostProtocolHeader header, size_t length, Deadline deadline);

  // Reads one whole frame. The payload stays valid until the next Read.
  CLmError Read(kpsHostProtocolHeader* header, const uint8_t** payload, size_t* length,
                Deadline deadline, size_t maxPayload);
  // As Read, but waits for the first byte only until `firstByte`; once a frame has begun, the
  // rest of it must arrive within `restMs`. A time-out with nothing received leaves the
  // connection as it was (HasBuffered() false), so a server can count idle time.
  CLmError ReadFrame(kpsHostProtocolHeader* header, const uint8_t** payload, size_t* length,
                     Deadline firstByte, int64_t restMs, size_t maxPayload);

  // Bytes the receive buffer holds allocated now.
  size_t ReceiveBufferBytes() const { return rbuf_.size(); }
  // True when bytes of a next frame are already buffered.
  bool HasBuffered() const { return rlen_ > rpos_; }
  // After a failed read: true when not one byte of the frame had arrived.
  bool LastReadGotNothing() const { return lastReadGotNothing_; }
  // True when a Read would find bytes (or the end of the stream) at once.
  bool HasIncoming() const { return HasBuffered() || socket_.HasIncoming(); }
  // True when nothing is buffered and the socket looks alive (peer has not closed).
  bool LooksAlive() const { return rlen_ == rpos_ && socket_.LooksAlive(); }

  void Close() { socket_.Close(); rpos_ = rlen_ = 0; }
  void ShutdownAndClose() { socket_.ShutdownAndClose(); rpos_ = rlen_ = 0; }

 private:
  CLmError Fill(size_t need, Deadline deadline, int64_t restMs = 0);

  Socket socket_;
  std::vector<uint8_t> wbuf_;
  std::vector<uint8_t> rbuf_;
  size_t rpos_ = 0;  // first unread byte
  size_t rlen_ = 0;  // bytes held
  bool lastReadGotNothing_ = false;
};

}  // namespace appmgr::net
