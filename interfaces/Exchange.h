// The one exchange every binary operation of every interface class makes.
//
//   Exchange<GenericLookupReq4, GenericLookupResp4> x(appmgr::msg::kBsLookup);
//   x.request().id = id;                       // header already stamped
//   if (int status = x.Run(errorString)) return status;
//   name = x.response().name ...               // copy out while x lives
//
// The constructor makes the records (zeroed: response first, then request), a NetMessage, and a
// ClientSessionWrapper (service 0x1a000000, lite pool allowed unless asked otherwise), and
// stamps the request header. Run() sends, receives and verifies the response header, and
// returns the first failing step's status with errorString as that step left it (a failed
// header check puts the header's error text there). Response texts and arrays point into the
// wrapper and die with the Exchange, so operations copy out before returning.
//
// The throwing style is RunOrThrow() inside RunThrowing(), which catches the NetException,
// logs its text under the operation's label and returns its code.
//
// Thread-safety: an Exchange is a stack object of one call.
#pragma once

#include <cstring>
#include <functional>
#include <list>
#include <string>
#include <type_traits>
#include <vector>

#include "appmgr/AppMgrDefs.h"
#include "appmgr/AppMgrTypes.h"
#include "appmgr/records/GenericRecords.h"
#include "platform/base/EvDebug.h"
#include "protocol/Message.h"
#include "session/ClientSessionWrapper.h"
#include "session/NetMessage.h"

namespace appmgr::iface {

inline constexpr unsigned long kAppMgrServiceCode = 0x1a000000;

// A declared operation this class does not provide: no exchange at all.
inline constexpr int kNotImplemented = 0xa0010;
inline int NotImplemented(std::string& errorString) {
  errorString = "Api not implemented.";
  return kNotImplemented;
}

// An operation refused as a whole: "Feature Not Supported", logged as an error under the
// operation's label (through a log object without a file of its own), -1, no exchange.
inline int FeatureNotSupported(const char* label, std::string& errorString) {
  EvDebug log(nullptr, label);
  errorString = "Feature Not Supported";
  log.Error("%s", errorString.c_str());
  return -1;
}

// A text the server sent where the operation expects one: a null reads as empty rather than
// crashing the caller.
inline std::string Text(const char* text) { return text ? std::string(text) : std::string(); }

// Copies a fixed character array of the server's into the caller's array of the same size: up
// to its terminator, which is written; an array the server left unterminated is cut to fit.
// Bytes after the terminator are left as they were.
template <size_t N>
void CopyChars(char (&to)[N], const char (&from)[N]) {
  size_t n = strnlen(from, N);
  if (n == N) n = N - 1;
  std::memcpy(to, from, n);
  to[n] = '\0';
}

template <class Req, class Resp>
class Exchange {
 public:
  explicit Exchange(const wire::Op<Req, Resp>& op, bool skipLitePool = false)
      : op_(op), wrapper_(kAppMgrServiceCode, skipLitePool) {
    static_assert(std::is_standard_layout_v<Req> && std::is_standard_layout_v<Resp>);
    std::memset(static_cast<void*>(&response_), 0, sizeof response_);
    std::memset(static_cast<void*>(&request_), 0, sizeof request_);
    message_.initRequestHeader(request_.hdr);
  }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  Req& request() { return request_; }
  const Resp& response() const { return response_; }

  // Send, receive, verify. 0, or the failing step's status.
  int Run(std::string& errorString) {
    int status = Send(errorString);
    if (status != 0) return status;
    status = Receive(errorString);
    if (status != 0) return status;
    status = message_.verifyResponseHeader(response_.hdr);
    if (status != 0) errorString = Text(response_.hdr.errorText);
    return status;
  }

  // As Run, but a failing step throws NetException(status, errorString).
  void RunOrThrow(std::string& errorString) {
    if (int status = Run(errorString)) throw NetException(status, errorString);
  }

  // Send and receive only; the header is not verified (the operation reads it itself, or the
  // server's error travels inside the answer).
  int SendReceive(std::string& errorString) {
    int status = Send(errorString);
    if (status != 0) return status;
    return Receive(errorString);
  }

  // The two transport steps on their own, for operations that report each one separately.
  int Send(std::string& errorString) {
    return wrapper_.send(op_.requestId, &request_, sizeof request_, errorString);
  }
  int Receive(std::string& errorString) {
    return wrapper_.receive(op_.responseId, &response_, sizeof response_, errorString);
  }

  // The header check alone (the last step of Run), for operations that go on after a failed one.
  int VerifyHeader() { return message_.verifyResponseHeader(response_.hdr); }

  NetMessage& message() { return message_; }
  ClientSessionWrapper& wrapper() { return wrapper_; }

 private:
  const wire::Op<Req, Resp>& op_;
  Req request_;
  Resp response_;
  NetMessage message_;
  ClientSessionWrapper wrapper_;
};

// The throwing style: runs `body`, which throws NetException at the failing step; the
// exception is caught here as an Exception, its text logged under the operation's label, and
// its code returned. 0 when the body returns normally.
inline int RunThrowing(const EvDebug& log, const std::function<void()>& body) {
  try {
    body();
    return 0;
  } catch (const Exception& e) {
    log.Error("%s", e.toString().c_str());
    return e.getErrorCode();
  }
}

// Element arrays of a request, owned by the operation for the exchange: exactly one element per
// entry of the caller's list, pointing into the caller's strings; an empty list is count 0 and
// a null pointer.
template <class Element>
class RequestArray {
 public:
  template <class List, class Fill>
  RequestArray(const List& list, Fill fill) : items_(list.size()) {
    size_t i = 0;
    for (const auto& entry : list) fill(items_[i++], entry);
  }
  uint32_t count() const { return static_cast<uint32_t>(items_.size()); }
  Element* data() { return items_.empty() ? nullptr : items_.data(); }

 private:
  std::vector<Element> items_;
};

// The content arrays of GenericUpdateContentReq: one AppMgrContent per entry of the caller's
// list, in list order, each pointing at the caller's string and carrying the one content type
// of the call sign-extended. A null entry of the list travels as a null text, which the server
// refuses with a clear error instead of this process crashing on it.
class ContentArray {
 public:
  ContentArray(const std::list<std::string*>& entries, int contentType)
      : items_(entries, [contentType](AppMgrContent& c, const std::string* entry) {
          c.text = entry != nullptr ? entry->c_str() : nullptr;
          c.type = static_cast<int64_t>(contentType);
        }) {}
  uint32_t count() const { return items_.count(); }
  AppMgrContent* data() { return items_.data(); }

 private:
  RequestArray<AppMgrContent> items_;
};

// The walk of an id/name pair list: ids[i] and names[i] appended to the caller's lists for every
// i below the ids' count (the caller's lists are not cleared first). The decoder has refused a
// response whose names are fewer than its ids, so names[i] is always there; a null name
// appends an empty string.
inline void AppendPairs(const GenericListPairResp& r, std::list<unsigned long>& ids,
                        std::list<std::string>& names) {
  for (uint32_t i = 0; i < r.idCount; ++i) {
    ids.push_back(r.ids[i]);
    names.push_back(Text(r.names[i]));
  }
}

// The walk of a content read-out: one addContent call per entry, in the response's order,
// skipping an entry whose type (as unsigned 64-bit) is above KP_CONTENT_MAX_INDEX sign-extended.
// A null text reaches the callback as an empty string.
inline void DeliverContent(ContentCallBack* callback, uint32_t count, const AppMgrContent* entries) {
  if (callback == nullptr) return;
  const uint64_t max = static_cast<uint64_t>(static_cast<int64_t>(KP_CONTENT_MAX_INDEX));
  for (uint32_t i = 0; i < count; ++i) {
    const uint64_t type = static_cast<uint64_t>(entries[i].type);
    if (type > max) continue;
    callback->addContent(static_cast<unsigned long>(type), Text(entries[i].text));
  }
}

}  // namespace appmgr::iface
