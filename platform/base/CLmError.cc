#include "platform/base/CLmError.h"

#include <cstdio>
#include <cstring>

CLmError CLmError::Format(int code, const char* format, ...) {
  char buf[2048];
  va_list ap;
  va_start(ap, format);
  vsnprintf(buf, sizeof buf, format, ap);
  va_end(ap);
  return CLmError(code, buf);
}

CLmError CLmError::FromErrno(int code, int errnum, const std::string& what) {
  char buf[256];
  // GNU strerror_r returns the message pointer, which may or may not be buf.
  const char* msg = strerror_r(errnum, buf, sizeof buf);
  return CLmError(code, what + ": " + msg);
}

const char* KpErrName(int code) {
  switch (code) {
    case kKpOk: return "ok";
    case kKpErrBadArgument: return "bad argument";
    case kKpErrIo: return "i/o";
    case kKpErrTimeout: return "timeout";
    case kKpErrDisconnected: return "disconnected";
    case kKpErrProtocol: return "protocol";
    case kKpErrRefused: return "refused";
    case kKpErrNotFound: return "not found";
    case kKpErrNotSupported: return "not supported";
    case kKpErrLimit: return "limit";
    case kKpErrServer: return "server";
    case kKpErrInternal: return "internal";
    default: return "error";
  }
}
