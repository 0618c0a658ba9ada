// Sockets with bounded waits: connect, send and receive each take a time-out, so a silent or
// half-open peer can never hold a caller longer than the caller allowed.
//
// Connected sockets are blocking, with SO_RCVTIMEO/SO_SNDTIMEO carrying the remaining time of
// each call (set only when it changes by more than kTimeoutSlackMs, so a wait may overrun its
// deadline by at most that), so a request/response costs one send and one receive system call,
// as on a plain socket. Writes use MSG_NOSIGNAL: a closed peer is an error, never a
// SIGPIPE. Every descriptor is close-on-exec.
//
// Thread-safety: a socket is used by one thread at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/base/CLmError.h"

namespace appmgr::net {

using Clock = std::chrono::steady_clock;

constexpr int kTimeoutSlackMs = 50;

// A point in time after which a wait gives up; "never" for an unbounded wait.
class Deadline {
 public:
  static Deadline After(int64_t milliseconds) {
    return Deadline(Clock::now() + std::chrono::milliseconds(milliseconds));
  }
  static Deadline Never() { return Deadline(Clock::time_point::max()); }
  bool Expired() const { return Clock::now() >= at_; }
  // Milliseconds left, at least 1 unless expired (0); INT64_MAX for Never().
  int64_t RemainingMs() const;

 private:
  explicit Deadline(Clock::time_point at) : at_(at) {}
  Clock::time_point at_;
};

// An owned socket descriptor, closed on destruction.
class Socket {
 public:
  Socket() = default;
  explicit Socket(int fd) : fd_(fd) {}
  ~Socket() { Close(); }
  Socket(Socket&& o) noexcept : fd_(o.fd_), rcvTimeoutMs_(o.rcvTimeoutMs_), sndTimeoutMs_(o.sndTimeoutMs_) { o.fd_ = -1; }
  Socket& operator=(Socket&& o) noexcept;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  int fd() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  void Close();
  // Closes without telling the peer anything it would not see from close() alone.
  int Release();
  // Shuts both directions down (the peer sees end of stream), then closes.
  void ShutdownAndClose();

  // Connects to host:port (any address family the name resolves to), bounded by `deadline`.
  static CLmError Connect(const std::string& host, unsigned port, Deadline deadline, Socket* out);
  // Listens on address:port (port 0 picks a free one); *boundPort receives the port.
  static CLmError Listen(const std::string& address, unsigned port, int backlog, Socket* out,
                         unsigned* boundPort);
  // Accepts one connection; kKpErrTimeout when none arrives by the deadline.
  CLmError Accept(Deadline deadline, Socket* out, std::string* peer) const;

  // Sends all `length` bytes by the deadline.
  CLmError SendAll(const void* data, size_t length, Deadline deadline, const char* what);
  // Receives between 1 and `room` bytes by the deadline; kKpErrDisconnected at end of stream.
  CLmError RecvSome(void* data, size_t room, Deadline deadline, size_t* received, const char* what);
  // True when the peer has not closed and no unexpected bytes wait: a non-blocking peek (one
  // system call; callers ask only where it earns its cost).
  bool LooksAlive() const;
  // Bytes written that the peer's TCP has not acknowledged (sent or still queued); 0 when it
  // cannot be told. Asked after a failure only.
  size_t UnacknowledgedBytes() const;
  // True when a receive would not wait: bytes have arrived, or the peer has closed. A
  // non-blocking peek.
  bool HasIncoming() const;

 private:
  CLmError SetTimeout(int option, int64_t ms, int* cached);
  int fd_ = -1;
  int rcvTimeoutMs_ = -2;  // what SO_RCVTIMEO holds now; -2 unknown
  int sndTimeoutMs_ = -2;
};

// "host:port" for messages, with brackets for IPv6.
std::string HostPortText(const std::string& host, unsigned port);

}  // namespace appmgr::net
