// CKpNetwork: one session with a remote service: a TCP connection that has passed the hello,
// over which records and XML messages travel as frames (platform/net/Frame.h).
//
// Life: Attach_RemoteService (or Attach_RemoteDLL for the file-transfer facility) connects and
// runs the hello; SendXDRMessage/ReceiveXDRMessage exchange records by message id; Disconnect
// says goodbye and closes; AbortConnection closes at once. Any I/O error, time-out or framing
// error marks the session broken: every later call fails at once with the original reason until
// the session is attached again. A server's error frame is reported but leaves the session
// usable. An exchange costs two system calls, the send and the receive: the session does not ask
// the socket whether the peer is still there before each send (see RequestNeverReachedPeer).
//
// Time-outs are in seconds; -1 (or 0) means the session's default I/O time-out (the pool sets it;
// otherwise [Network] nIoTimeoutSeconds, default 600). A session inherited by a child process
// across fork() never writes: every call in the child fails, and destruction only closes the
// child's descriptor.
//
// Every call returns a CLmError and records it, so GetLastErrorGenericText() tells the last
// failure's code and text.
//
// Thread-safety: one thread at a time (a pool lends a session to one borrower).
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/CLmError.h"
#include "platform/net/Frame.h"
#include "platform/net/KpXdr.h"
#include "platform/net/kpsDatabuf.h"

class CNMessageBase;

typedef int kpsStatus;

// Told of the progress of a file put: `sent` of `total` bytes of `fileName` (the plain name the
// server receives) have gone out.
typedef void (*KpPutProgressFn)(void* context, const char* fileName, unsigned long long sent,
                                unsigned long long total);

// The remote facility Attach_RemoteDLL reaches: two names and a reserved word.
struct kpsExecuteRemoteDllType {
  const char* facility = nullptr;  // first name
  const char* entry = nullptr;     // second name
  unsigned long reserved = 0;
};

// One file put: the name of the local file (no directory) and the server folder it goes to.
struct kpsFilexferRequest {
  char sourceFileName[256] = {};
  char destinationDirectory[1024] = {};
  int overwrite = 0;          // 1: replace a file of the same name
  int binary = 0;             // 1: bytes travel unchanged (the only mode kept)
  unsigned long long bytesSent = 0;  // out
};

class CKpNetwork {
 public:
  CKpNetwork();
  virtual ~CKpNetwork();
  CKpNetwork(const CKpNetwork&) = delete;
  CKpNetwork& operator=(const CKpNetwork&) = delete;

  // Connects to the host a connect string names (MangleHostName) and asks for `service` as
  // `clientName`. `timedOut` is set when the time-out ran out.
  CLmError Attach_RemoteService(const std::string& connect, const std::string& service,
                                const std::string& clientName, int timeoutSeconds,
                                bool& timedOut);
  // Connects to the file-transfer facility `facility` names.
  CLmError Attach_RemoteDLL(const std::string& connect, const kpsExecuteRemoteDllType* facility,
                            const std::string& clientName, int timeoutSeconds, bool& aborted);

  // Encodes the record the buffer describes (found by id, request direction and the buffer's
  // length) and sends it.
  CLmError SendXDRMessage(unsigned long msgId, kpsDatabuf_v2* buffer, int flags, int timeoutSeconds,
                          bool& timedOut);
  // As SendXDRMessage, but asks the peer first whether it is still there; a send that fails on a
  // lost connection is repeated, up to twice, on a connection attached again with the same
  // parameters.
  CLmError SendMessageWithRetry(unsigned long msgId, kpsDatabuf_v2* buffer, int flags,
                                int timeoutSeconds, bool& timedOut);
  // Receives one response record and decodes it into the record the buffer describes; texts
  // and arrays go to the buffer's arena. *msgId: in the id expected, out the id received (a
  // different id is accepted when its record has the buffer's length). `header` may be null.
  CLmError ReceiveXDRMessage(unsigned long* msgId, kpsDatabuf_v2* buffer,
                             kpsHostProtocolHeader* header, int flags, int timeoutSeconds,
                             bool& timedOut);
  // Releases what decoding placed in the buffer's arena.
  CLmError FreeReceivedMessage(unsigned long msgId, kpsDatabuf_v2* buffer);

  CLmError SendXMLMessage(CNMessageBase& message, unsigned int flags, int timeoutSeconds,
                          bool& timedOut);
  // Receives one XML message; `message` receives an object the caller owns and deletes (null
  // when the frame held no text). *type receives its tag id.
  CLmError ReceiveXMLMessage(unsigned long* type, CNMessageBase*& message,
                             kpsHostProtocolHeader* header, unsigned int flags, int timeoutSeconds,
                             bool& timedOut);

  // Puts the local file localDirectory/sourceFileName into the facility's folder (or the file
  // localDirectory itself, when that is a regular file and the joined path names nothing). The
  // file is streamed: memory stays one frame whatever its size. Succeeds once the server has
  // checked the byte count and checksum and stored the file under its name; fails with the
  // server's reason when it refuses the file (its name, its size, no room), and leaves the
  // session usable then. Each frame, and the wait for the server's answer, is bounded by the
  // time-out on its own.
  CLmError PutFileRequest(const std::string& localDirectory, kpsFilexferRequest* request,
                          int timeoutSeconds, bool& aborted);
  // The observer of every file put of the process, called on the thread that puts the file:
  // once before the first byte (sent 0), then after each file-data frame. Null stops it.
  static void SetPutProgressObserver(KpPutProgressFn observer, void* context);

  // Closes at once, without a goodbye.
  CLmError AbortConnection(kpsStatus& status, int timeoutSeconds, bool& timedOut);
  // Says goodbye (bounded by the time-out) and closes.
  CLmError Disconnect(int timeoutSeconds, bool& timedOut);

  void setJobId(long long jobId) { jobId_ = static_cast<uint64_t>(jobId); }
  long long jobId() const { return static_cast<long long>(jobId_); }
  void SetAuthenticationMethod(int method) { authMethod_ = static_cast<uint32_t>(method); }
  void SetIgnoreAntiChatterFlag(bool ignore = true) { ignoreAntiChatter_ = ignore; }
  // The default I/O time-out in seconds, used for time-outs of -1 or 0.
  void SetDefaultTimeout(int seconds) { defaultTimeout_ = seconds > 0 ? seconds : 600; }

  // Code and text of the last failure (code 0 and an empty text when the last call succeeded).
  CLmError GetLastErrorGenericText(unsigned long* code, std::string& text, unsigned long flags);
  const CLmError& LastError() const { return lastError_; }

  // Connected, not broken, and not inherited across fork(): no system call.
  bool IsAttached() const;
  // Attached, and the peer has not closed (asks the socket: one system call).
  bool IsUsable() const;
  // After a failed ReceiveXDRMessage: the connection was found closed before any byte of the
  // answer, and the peer acknowledged nothing of the request. The server had closed its end
  // before the request arrived (a restart while the session sat idle), so no server read it and
  // sending it again on a new attach cannot make it happen twice.
  bool RequestNeverReachedPeer() const { return requestNeverReachedPeer_; }
  bool IsConnected() const { return conn_.connected(); }
  bool IsBroken() const { return broken_; }
  // The service and client of the last successful attach ("" before one).
  const std::string& service() const { return service_; }

  // Calls of FreeReceivedMessage in this process, and the id the last one named (tests and
  // statistics).
  static uint64_t FreeReceivedCalls() { return freeCalls_.load(std::memory_order_relaxed); }
  static unsigned long LastFreedMessageId() { return lastFreedId_.load(std::memory_order_relaxed); }

  static CLmError ConvertXdr(KpNetworkXdrOp_e op, unsigned long msgId, void* out, void* in,
                             int* length, int* direction, int& errorCode) {
    return KpConvertXdr(op, msgId, out, in, length, direction, errorCode);
  }

 private:
  CLmError Attach(const std::string& connect, const std::string& service,
                  const std::string& clientName, const kpsExecuteRemoteDllType* facility,
                  int timeoutSeconds, bool& timedOut);
  CLmError Usable();  // fails when not connected, broken or inherited across fork()
  CLmError Fail(CLmError error, bool breaks, bool* timedOut);
  CLmError Done(CLmError error);
  appmgr::net::Deadline DeadlineFor(int timeoutSeconds) const;
  CLmError ReadFrame(kpsHostProtocolHeader* h, const uint8_t** payload, size_t* length,
                     appmgr::net::Deadline deadline);

  static std::atomic<uint64_t> freeCalls_;
  static std::atomic<unsigned long> lastFreedId_;

  appmgr::net::FrameConn conn_;
  bool broken_ = false;
  bool requestNeverReachedPeer_ = false;
  CLmError brokenReason_;
  CLmError lastError_;
  uint64_t forkGeneration_ = 0;
  uint64_t jobId_ = 0;
  uint32_t sequence_ = 0;
  uint32_t authMethod_ = 0;
  bool ignoreAntiChatter_ = false;
  int defaultTimeout_;
  // What the last attach used, for SendMessageWithRetry.
  std::string connect_, service_, client_;
  std::unique_ptr<kpsExecuteRemoteDllType> facility_;
  std::string facilityName_, facilityEntry_;
  int attachTimeout_ = 120;
};

// The number of fork() calls this process has seen as a child; sessions compare it with the
// value at their attach.
uint64_t KpForkGeneration();
