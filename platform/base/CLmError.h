// CLmError: the result value of every platform call.
//
// A CLmError is either success (code 0, no text) or a failure with a numeric code and a text
// that names what failed, with context (host, message, system error). Platform calls return it
// by value; nothing in the platform layer throws. Success costs no allocation.
//
// The platform's own codes (KpErr) are picked by what the caller should do next: fix its input,
// retry on a new connection, wait, or give up. Server and protocol codes travel unchanged.
//
// Thread-safety: a value type; distinct objects may be used from distinct threads.
#pragma once

#include <cstdarg>
#include <string>
#include <utility>

// Platform error codes. Numbers are part of what callers see (they become operation statuses
// through GetLastErrorGenericText), so they never change; a retired code stays as a comment.
enum KpErr : int {
  kKpOk = 0,
  kKpErrBadArgument = 1001,  // the caller's input is wrong; retrying will not help
  kKpErrIo = 1002,           // a system call failed (socket, file)
  kKpErrTimeout = 1003,      // a bounded wait ran out; the connection is no longer trusted
  kKpErrDisconnected = 1004, // the peer closed, or the connection was marked broken earlier
  kKpErrProtocol = 1005,     // bytes from the peer do not follow the wire format
  kKpErrRefused = 1006,      // the peer refused the connection or the hello
  kKpErrNotFound = 1007,     // a name, file or entry does not exist
  kKpErrNotSupported = 1008, // an operation or message this build does not offer
  kKpErrLimit = 1009,        // a configured limit (frame size, pool size, depth) was reached
  kKpErrServer = 1010,       // the server answered with an error of its own
  kKpErrInternal = 1011,     // our own bug: an invariant did not hold
};

class CLmError {
 public:
  CLmError() = default;
  CLmError(int code, std::string text) : code_(code), text_(std::move(text)) {}

  // printf-style constructor for failures built where they happen.
  static CLmError Format(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
  // A failed system call: the text gets ": <strerror(errnum)>" appended.
  static CLmError FromErrno(int code, int errnum, const std::string& what);

  bool IsError() const { return code_ != kKpOk; }
  int GetErrorCode() const { return code_; }
  // The failure text; "Success" for success.
  std::string AsString() const { return IsError() ? text_ : std::string("Success"); }
  const std::string& Text() const { return text_; }

  explicit operator bool() const { return IsError(); }

 private:
  int code_ = kKpOk;
  std::string text_;
};

// Name of a platform code ("timeout", "protocol", ...); "error" for codes outside KpErr.
const char* KpErrName(int code);
