#include "platform/net/CKpNetwork.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/base/KpSettings.h"
#include "platform/net/ControlRecords.h"
#include "platform/net/FileChecksum.h"
#include "platform/net/MangleHostName.h"
#include "platform/net/XdrCodec.h"
#include "platform/xml/CNMessageBase.h"
#include "protocol/Catalogue.h"

using appmgr::net::Deadline;
using appmgr::net::FrameKind;
using appmgr::net::MakeControl;
using appmgr::net::MakeStatus;
using appmgr::wire::Catalogue;
using appmgr::wire::Direction;
using appmgr::wire::MessageRow;

namespace {

std::atomic<uint64_t> g_forkGeneration{0};

void AfterForkInChild() { g_forkGeneration.fetch_add(1, std::memory_order_relaxed); }

void RegisterForkHandler() {
  static std::once_flag once;
  std::call_once(once, [] { pthread_atfork(nullptr, nullptr, AfterForkInChild); });
}

int DefaultIoTimeout() {
  unsigned long v = 600;
  KpSettings::Instance().GetNumber("Network", "nIoTimeoutSeconds", &v);
  return v == 0 || v > 86400 ? 600 : static_cast<int>(v);
}

// An attach's time-out, shortened to [Network] nAttachTimeoutSeconds when that is set and
// shorter: the callers' 120 s is fixed, and a tool asked to give up sooner must still be able
// to bound the connect and the hello.
int CappedAttachTimeout(int seconds) {
  unsigned long cap = 0;
  if (KpSettings::Instance().GetNumber("Network", "nAttachTimeoutSeconds", &cap) && cap > 0 &&
      cap < static_cast<unsigned long>(seconds)) {
    return static_cast<int>(cap);
  }
  return seconds;
}

// The bytes of one file-data frame: large enough that per-frame costs vanish, small enough that
// a receiver's frame buffer, which keeps up to 2 MiB between frames, is reused for every frame.
constexpr size_t kFileChunk = 1u << 20;

// The reason a refusal or error frame gives, or "no reason given".
std::string ReasonText(const uint8_t* payload, size_t length) {
  appmgr::net::ReasonRecord reason;
  appmgr::wire::Arena arena;
  appmgr::wire::DecodeRecord(payload, length, reason, arena);
  return reason.text ? reason.text : "no reason given";
}

// The failure an error frame answering `what` stands for.
CLmError ServerError(const kpsHostProtocolHeader& h, const uint8_t* payload, size_t length,
                     const std::string& what) {
  int32_t code = appmgr::net::StatusOf(h);
  return CLmError(code ? code : kKpErrServer,
                  "the server did not serve " + what + ": " + ReasonText(payload, length));
}

}  // namespace

uint64_t KpForkGeneration() { return g_forkGeneration.load(std::memory_order_relaxed); }

CKpNetwork::CKpNetwork() : defaultTimeout_(DefaultIoTimeout()) {
  RegisterForkHandler();
  forkGeneration_ = KpForkGeneration();
}

CKpNetwork::~CKpNetwork() { conn_.Close(); }

Deadline CKpNetwork::DeadlineFor(int timeoutSeconds) const {
  int s = timeoutSeconds > 0 ? timeoutSeconds : defaultTimeout_;
  return Deadline::After(int64_t(s) * 1000);
}

CLmError CKpNetwork::Done(CLmError error) {
  lastError_ = error;
  return error;
}

CLmError CKpNetwork::Fail(CLmError error, bool breaks, bool* timedOut) {
  if (timedOut && error.GetErrorCode() == kKpErrTimeout) *timedOut = true;
  if (breaks) {
    broken_ = true;
    brokenReason_ = error;
    conn_.Close();
  }
  return Done(std::move(error));
}

CLmError CKpNetwork::Usable() {
  if (forkGeneration_ != KpForkGeneration()) {
    // Inherited across fork(): the parent still uses this connection. Drop our descriptor
    // without a word on the wire.
    conn_.Close();
    broken_ = true;
    brokenReason_ = CLmError(kKpErrDisconnected, "the session belongs to the parent process");
  }
  if (broken_) {
    return CLmError(brokenReason_.GetErrorCode(), "connection is broken: " + brokenReason_.Text());
  }
  if (!conn_.connected()) return CLmError(kKpErrDisconnected, "the session is not connected");
  return {};
}

bool CKpNetwork::IsAttached() const {
  return conn_.connected() && !broken_ && forkGeneration_ == KpForkGeneration();
}

bool CKpNetwork::IsUsable() const { return IsAttached() && conn_.LooksAlive(); }

CLmError CKpNetwork::Attach_RemoteService(const std::string& connect, const std::string& service,
                                          const std::string& clientName, int timeoutSeconds,
                                          bool& timedOut) {
  return Attach(connect, service, clientName, nullptr, timeoutSeconds, timedOut);
}

CLmError CKpNetwork::Attach_RemoteDLL(const std::string& connect,
                                      const kpsExecuteRemoteDllType* facility,
                                      const std::string& clientName, int timeoutSeconds,
                                      bool& aborted) {
  if (facility == nullptr || facility->facility == nullptr || facility->entry == nullptr) {
    return Done(CLmError(kKpErrBadArgument, "Attach_RemoteDLL: no facility named"));
  }
  return Attach(connect, "File transfer", clientName, facility, timeoutSeconds, aborted);
}

CLmError CKpNetwork::Attach(const std::string& connect, const std::string& service,
                            const std::string& clientName, const kpsExecuteRemoteDllType* facility,
                            int timeoutSeconds, bool& timedOut) {
  timedOut = false;
  conn_.Close();
  broken_ = false;
  forkGeneration_ = KpForkGeneration();
  KpConnectTarget target;
  if (!ParseConnectString(connect, &target)) {
    return Done(CLmError(kKpErrBadArgument, "connect string \"" + connect + "\" names no host"));
  }
  int seconds = CappedAttachTimeout(timeoutSeconds > 0 ? timeoutSeconds : 120);
  Deadline deadline = Deadline::After(int64_t(seconds) * 1000);

  appmgr::net::Socket socket;
  CLmError e = appmgr::net::Socket::Connect(target.host, target.port1, deadline, &socket);
  if (e && e.GetErrorCode() == kKpErrRefused && target.port2 != target.port1) {
    e = appmgr::net::Socket::Connect(target.host, target.port2, deadline, &socket);
  }
  if (e) return Fail(std::move(e), false, &timedOut);
  conn_ = appmgr::net::FrameConn(std::move(socket));

  appmgr::net::HelloRecord hello;
  hello.frameVersion = appmgr::net::kFrameVersion;
  hello.authMethod = authMethod_;
  hello.flags = ignoreAntiChatter_ ? appmgr::net::kHelloIgnoreAntiChatter : 0;
  hello.pid = ::getpid();
  hello.service = service.c_str();
  hello.client = clientName.c_str();
  hello.target = target.client.c_str();
  hello.facility = facility ? facility->facility : nullptr;
  hello.entry = facility ? facility->entry : nullptr;
  std::vector<uint8_t> payload;
  if ((e = appmgr::wire::EncodeRecord(hello, payload))) return Fail(std::move(e), true, &timedOut);
  kpsHostProtocolHeader h;
  h.control = MakeControl(FrameKind::kHello, false);
  h.jobId = jobId_;
  if ((e = conn_.Write(h, payload.data(), payload.size(), deadline))) {
    return Fail(std::move(e), true, &timedOut);
  }
  const uint8_t* data = nullptr;
  size_t length = 0;
  if ((e = conn_.Read(&h, &data, &length, deadline, appmgr::net::MaxFramePayload()))) {
    return Fail(CLmError(e.GetErrorCode(), "hello to " + service + " at " +
                                               appmgr::net::HostPortText(target.host, target.port1) +
                                               ": " + e.Text()),
                true, &timedOut);
  }
  appmgr::wire::Arena arena;
  if (appmgr::net::KindOf(h) == FrameKind::kHelloRefuse) {
    CLmError refused(kKpErrRefused, "service \"" + service + "\" at " +
                                        appmgr::net::HostPortText(target.host, target.port1) +
                                        " refused the connection: " + ReasonText(data, length));
    return Fail(std::move(refused), true, &timedOut);
  }
  appmgr::net::HelloAcceptRecord accept;
  if (appmgr::net::KindOf(h) != FrameKind::kHelloAccept ||
      appmgr::wire::DecodeRecord(data, length, accept, arena)) {
    return Fail(CLmError(kKpErrProtocol, std::string("hello answered by a ") +
                                             appmgr::net::FrameKindName(appmgr::net::KindOf(h)) +
                                             " frame"),
                true, &timedOut);
  }
  broken_ = false;
  sequence_ = 0;
  connect_ = connect;
  service_ = service;
  client_ = clientName;
  attachTimeout_ = seconds;
  if (facility) {
    facilityName_ = facility->facility;
    facilityEntry_ = facility->entry;
    facility_ = std::make_unique<kpsExecuteRemoteDllType>();
    facility_->facility = facilityName_.c_str();
    facility_->entry = facilityEntry_.c_str();
  } else {
    facility_.reset();
  }
  return Done({});
}

CLmError CKpNetwork::SendXDRMessage(unsigned long msgId, kpsDatabuf_v2* buffer, int /*flags*/,
                                    int timeoutSeconds, bool& timedOut) {
  timedOut = false;
  if (CLmError e = Usable()) return Done(std::move(e));
  if (buffer == nullptr || buffer->data() == nullptr) {
    return Done(CLmError(kKpErrBadArgument, "SendXDRMessage: no record to send"));
  }
  const MessageRow* row = msgId <= 0xffffffffu
                              ? Catalogue::Find(static_cast<uint32_t>(msgId), Direction::kRequest,
                                                static_cast<uint32_t>(buffer->length()))
                              : nullptr;
  if (row == nullptr) {
    return Done(CLmError::Format(kKpErrNotSupported,
                                 "message 0x%08lx (%s) has no request record of %lu bytes", msgId,
                                 KPS_PRIM_STRING(msgId), buffer->length()));
  }
  // Bytes nobody asked for mean the connection is out of step: it is not written on again. The
  // peer is not asked whether it is still there (that costs a system call per request): a
  // request written into a connection the server had closed is found by the receive, which
  // then tells the caller that the request never reached the server (RequestNeverReachedPeer).
  if (conn_.HasBuffered()) {
    return Fail(CLmError(kKpErrProtocol, std::string(row->name) +
                                             ": bytes nobody asked for wait on the connection"),
                true, &timedOut);
  }
  size_t room = conn_.PayloadCapacity();
  size_t needed = 0;
  CLmError e = appmgr::wire::Encode(*row->record, buffer->data(), conn_.PayloadRoom(room), room,
                                    &needed, row->name);
  if (!e && needed > room) {
    if (needed > appmgr::net::MaxFramePayload()) {
      return Done(CLmError::Format(kKpErrLimit, "%s encodes to %zu bytes, above the frame limit of %zu",
                                   row->name, needed, appmgr::net::MaxFramePayload()));
    }
    e = appmgr::wire::Encode(*row->record, buffer->data(), conn_.PayloadRoom(needed), needed,
                             &needed, row->name);
  }
  if (e) return Done(std::move(e));
  kpsHostProtocolHeader h;
  h.msgId = msgId;
  h.control = MakeControl(FrameKind::kBinary, false);
  h.jobId = jobId_;
  h.recordLength = buffer->length();
  h.status = MakeStatus(++sequence_, 0);
  if ((e = conn_.WriteBuffered(h, needed, DeadlineFor(timeoutSeconds)))) {
    return Fail(CLmError(e.GetErrorCode(), std::string(row->name) + ": " + e.Text()), true, &timedOut);
  }
  return Done({});
}

CLmError CKpNetwork::SendMessageWithRetry(unsigned long msgId, kpsDatabuf_v2* buffer, int flags,
                                          int timeoutSeconds, bool& timedOut) {
  CLmError e;
  // This send has no caller that recovers after the receive, so it asks the peer first: one
  // that has closed (a server restart) fails the attempt before anything is written.
  if (!connect_.empty() && conn_.connected() && !broken_ && !conn_.LooksAlive()) {
    e = Fail(CLmError(kKpErrDisconnected, "the server has closed the connection"), true, &timedOut);
  } else {
    e = SendXDRMessage(msgId, buffer, flags, timeoutSeconds, timedOut);
  }
  for (int retry = 0; retry < 2 && e && !connect_.empty(); ++retry) {
    int code = e.GetErrorCode();
    // Only a lost or broken connection is worth a new one; a bad record stays bad.
    if (code != kKpErrDisconnected && code != kKpErrIo && code != kKpErrTimeout) break;
    bool attachTimedOut = false;
    if (Attach(connect_, service_, client_, facility_.get(), attachTimeout_, attachTimedOut)) break;
    e = SendXDRMessage(msgId, buffer, flags, timeoutSeconds, timedOut);
  }
  return e;
}

CLmError CKpNetwork::ReadFrame(kpsHostProtocolHeader* h, const uint8_t** payload, size_t* length,
                               Deadline deadline) {
  return conn_.Read(h, payload, length, deadline, appmgr::net::MaxFramePayload());
}

CLmError CKpNetwork::ReceiveXDRMessage(unsigned long* msgId, kpsDatabuf_v2* buffer,
                                       kpsHostProtocolHeader* header, int /*flags*/,
                                       int timeoutSeconds, bool& timedOut) {
  timedOut = false;
  if (CLmError e = Usable()) return Done(std::move(e));
  if (buffer == nullptr || buffer->data() == nullptr || msgId == nullptr) {
    return Done(CLmError(kKpErrBadArgument, "ReceiveXDRMessage: no record to receive into"));
  }
  kpsHostProtocolHeader h;
  const uint8_t* payload = nullptr;
  size_t length = 0;
  requestNeverReachedPeer_ = false;
  if (CLmError e = ReadFrame(&h, &payload, &length, DeadlineFor(timeoutSeconds))) {
    // Closed before a byte of the answer came, and the peer's TCP acknowledged nothing of the
    // request: it was written after the server had closed its end, and no server read it. (A
    // server that read the request and then died acknowledged it, at the latest with its FIN.)
    requestNeverReachedPeer_ = e.GetErrorCode() == kKpErrDisconnected && conn_.LastReadGotNothing() &&
                               conn_.socket().UnacknowledgedBytes() > 0;
    return Fail(CLmError(e.GetErrorCode(),
                         std::string("waiting for ") + KPS_PRIM_STRING(*msgId) + ": " + e.Text()),
                true, &timedOut);
  }
  if (header) *header = h;
  FrameKind kind = appmgr::net::KindOf(h);
  if (kind == FrameKind::kError) {
    return Done(ServerError(h, payload, length, KPS_PRIM_STRING(*msgId)));
  }
  if (kind != FrameKind::kBinary || !appmgr::net::IsResponse(h)) {
    return Fail(CLmError::Format(kKpErrProtocol, "expected a binary response, got a %s frame",
                                 appmgr::net::FrameKindName(kind)),
                true, &timedOut);
  }
  if (sequence_ != 0 && appmgr::net::SequenceOf(h) != sequence_) {
    return Fail(CLmError::Format(kKpErrProtocol, "response %u does not answer request %u",
                                 appmgr::net::SequenceOf(h), sequence_),
                true, &timedOut);
  }
  const MessageRow* row =
      h.msgId <= 0xffffffffu && h.recordLength <= 0xffffffffu
          ? Catalogue::Find(static_cast<uint32_t>(h.msgId), Direction::kResponse,
                            static_cast<uint32_t>(h.recordLength))
          : nullptr;
  if (row == nullptr) {
    return Done(CLmError::Format(kKpErrProtocol,
                                 "received message 0x%08llx (%s) with a record of %llu bytes, "
                                 "which the catalogue does not know",
                                 static_cast<unsigned long long>(h.msgId), KPS_PRIM_STRING(h.msgId),
                                 static_cast<unsigned long long>(h.recordLength)));
  }
  if (row->record->size != buffer->length()) {
    return Done(CLmError::Format(kKpErrProtocol,
                                 "received %s (%u bytes) where %s of %lu bytes was expected",
                                 row->name, row->record->size, KPS_PRIM_STRING(*msgId),
                                 buffer->length()));
  }
  if (CLmError e = appmgr::wire::Decode(*row->record, payload, length, buffer->data(),
                                        buffer->arena(), row->name)) {
    return Done(std::move(e));
  }
  *msgId = h.msgId;
  return Done({});
}

std::atomic<uint64_t> CKpNetwork::freeCalls_{0};
std::atomic<unsigned long> CKpNetwork::lastFreedId_{0};

CLmError CKpNetwork::FreeReceivedMessage(unsigned long msgId, kpsDatabuf_v2* buffer) {
  freeCalls_.fetch_add(1, std::memory_order_relaxed);
  lastFreedId_.store(msgId, std::memory_order_relaxed);
  if (buffer == nullptr) return Done(CLmError(kKpErrBadArgument, "FreeReceivedMessage: no buffer"));
  buffer->Release();
  return Done({});
}

CLmError CKpNetwork::SendXMLMessage(CNMessageBase& message, unsigned int /*flags*/,
                                    int timeoutSeconds, bool& timedOut) {
  timedOut = false;
  if (CLmError e = Usable()) return Done(std::move(e));
  // As for a binary request: bytes nobody asked for would be read as this message's answer.
  if (conn_.HasBuffered()) {
    return Fail(CLmError::Format(kKpErrProtocol,
                                 "XML message %s: bytes nobody asked for wait on the connection",
                                 message.getTagName()),
                true, &timedOut);
  }
  std::string text;
  if (int rc = message.serialize(text, false)) {
    return Done(CLmError::Format(kKpErrBadArgument, "XML message %s could not be serialised (%d)",
                                 message.getTagName(), rc));
  }
  if (text.size() > appmgr::net::MaxFramePayload()) {
    return Done(CLmError::Format(kKpErrLimit, "XML message %s of %zu bytes is above the frame limit",
                                 message.getTagName(), text.size()));
  }
  kpsHostProtocolHeader h;
  h.msgId = message.getTagId();
  h.control = MakeControl(FrameKind::kXml, false);
  h.jobId = jobId_;
  h.status = MakeStatus(++sequence_, 0);
  if (CLmError e = conn_.Write(h, text.data(), text.size(), DeadlineFor(timeoutSeconds))) {
    return Fail(std::move(e), true, &timedOut);
  }
  return Done({});
}

CLmError CKpNetwork::ReceiveXMLMessage(unsigned long* type, CNMessageBase*& message,
                                       kpsHostProtocolHeader* header, unsigned int /*flags*/,
                                       int timeoutSeconds, bool& timedOut) {
  timedOut = false;
  message = nullptr;
  if (CLmError e = Usable()) return Done(std::move(e));
  kpsHostProtocolHeader h;
  const uint8_t* payload = nullptr;
  size_t length = 0;
  if (CLmError e = ReadFrame(&h, &payload, &length, DeadlineFor(timeoutSeconds))) {
    return Fail(std::move(e), true, &timedOut);
  }
  if (header) *header = h;
  FrameKind kind = appmgr::net::KindOf(h);
  if (kind == FrameKind::kError) {
    return Done(ServerError(h, payload, length, "the XML request"));
  }
  if (kind != FrameKind::kXml) {
    return Fail(CLmError::Format(kKpErrProtocol, "expected an XML message, got a %s frame",
                                 appmgr::net::FrameKindName(kind)),
                true, &timedOut);
  }
  if (type) *type = h.msgId;
  if (length == 0) return Done({});
  int err = 0;
  std::unique_ptr<CNMessageBase> m =
      CNMessageBase::FromXml(reinterpret_cast<const char*>(payload), length, &err);
  if (!m) {
    return Done(CLmError::Format(kKpErrProtocol, "XML message with tag 0x%08llx could not be read (%d)",
                                 static_cast<unsigned long long>(h.msgId), err));
  }
  message = m.release();
  return Done({});
}

namespace {

std::mutex g_progressMutex;
KpPutProgressFn g_progress = nullptr;
void* g_progressContext = nullptr;

void ReportProgress(const std::string& name, uint64_t sent, uint64_t total) {
  KpPutProgressFn observer;
  void* context;
  {
    std::lock_guard lock(g_progressMutex);
    observer = g_progress;
    context = g_progressContext;
  }
  if (observer) observer(context, name.c_str(), sent, total);
}

// A descriptor closed on every way out.
struct LocalFile {
  int fd = -1;
  ~LocalFile() {
    if (fd >= 0) ::close(fd);
  }
};

// Reads up to `length` bytes at the file's position; fewer only at the end of the file.
CLmError ReadFully(int fd, uint8_t* out, size_t length, size_t* got, const std::string& path) {
  *got = 0;
  while (*got < length) {
    ssize_t n = ::read(fd, out + *got, length - *got);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return CLmError(kKpErrIo, "reading " + path + ": " + std::strerror(errno));
    if (n == 0) break;
    *got += static_cast<size_t>(n);
  }
  return {};
}

}  // namespace

void CKpNetwork::SetPutProgressObserver(KpPutProgressFn observer, void* context) {
  std::lock_guard lock(g_progressMutex);
  g_progress = observer;
  g_progressContext = context;
}

// The file travels as file-begin, file-data frames of at most kFileChunk bytes read straight
// into the frame buffer (so memory stays one chunk whatever the file's size), and file-end with
// the byte count and checksum; the server answers with one file-result. The server may answer
// before file-end when it refuses the file (a bad name, no room): the client then stops sending
// data, still sends file-end so that both ends agree where the file stopped, and reports the
// refusal. Each frame, and the wait for the answer, is bounded by the time-out on its own, so a
// large file is not cut off by a deadline meant for one exchange.
CLmError CKpNetwork::PutFileRequest(const std::string& localDirectory, kpsFilexferRequest* request,
                                    int timeoutSeconds, bool& aborted) {
  aborted = false;
  if (CLmError e = Usable()) return Done(std::move(e));
  if (request == nullptr || request->sourceFileName[0] == '\0') {
    return Done(CLmError(kKpErrBadArgument, "PutFileRequest: no file named"));
  }
  std::string name(request->sourceFileName, strnlen(request->sourceFileName, sizeof request->sourceFileName));
  std::string path = localDirectory.empty() ? name : localDirectory + "/" + name;
  struct stat st {};
  // A caller that split a bare file name keeps the name as its "directory": the file itself.
  if (::stat(path.c_str(), &st) != 0 && ::stat(localDirectory.c_str(), &st) == 0 &&
      S_ISREG(st.st_mode)) {
    path = localDirectory;
  }
  LocalFile file;
  file.fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file.fd < 0) {
    return Done(CLmError(kKpErrNotFound, "cannot read local file " + path + ": " + std::strerror(errno)));
  }
  if (::fstat(file.fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    return Done(CLmError(kKpErrBadArgument, "local file " + path + " is not a regular file"));
  }
  ::posix_fadvise(file.fd, 0, 0, POSIX_FADV_SEQUENTIAL);
  std::string dest(request->destinationDirectory,
                   strnlen(request->destinationDirectory, sizeof request->destinationDirectory));
  appmgr::net::FileBeginRecord begin;
  begin.directory = dest.c_str();
  begin.fileName = name.c_str();
  begin.overwrite = request->overwrite ? 1 : 0;
  begin.binary = request->binary ? 1 : 0;
  begin.size = static_cast<uint64_t>(st.st_size);
  std::vector<uint8_t> payload;
  CLmError e = appmgr::wire::EncodeRecord(begin, payload);
  if (e) return Done(std::move(e));
  kpsHostProtocolHeader h;
  h.control = MakeControl(FrameKind::kFileBegin, false);
  h.jobId = jobId_;
  h.status = MakeStatus(++sequence_, 0);
  if ((e = conn_.Write(h, payload.data(), payload.size(), DeadlineFor(timeoutSeconds)))) {
    return Fail(std::move(e), true, &aborted);
  }

  ReportProgress(name, 0, begin.size);
  const size_t chunk = std::min(kFileChunk, appmgr::net::MaxFramePayload());
  appmgr::net::FileChecksum checksum;
  uint64_t sent = 0;
  h.control = MakeControl(FrameKind::kFileData, false);
  // An answer already waiting can only be the server refusing the file: stop sending.
  while (sent < begin.size && !conn_.HasIncoming()) {
    size_t want = static_cast<size_t>(std::min<uint64_t>(chunk, begin.size - sent));
    uint8_t* room = conn_.PayloadRoom(want);
    size_t got = 0;
    if ((e = ReadFully(file.fd, room, want, &got, path))) return Fail(std::move(e), true, &aborted);
    if (got < want) {
      return Fail(CLmError::Format(kKpErrIo, "%s became shorter while it was sent (%llu of %llu bytes)",
                                   path.c_str(), static_cast<unsigned long long>(sent + got),
                                   static_cast<unsigned long long>(begin.size)),
                  true, &aborted);
    }
    checksum.Update(room, got);
    if ((e = conn_.WriteBuffered(h, got, DeadlineFor(timeoutSeconds)))) {
      return Fail(std::move(e), true, &aborted);
    }
    sent += got;
    ReportProgress(name, sent, begin.size);
  }

  appmgr::net::FileEndRecord end;
  end.size = sent;
  end.checksumKind = appmgr::net::kChecksumXxh3_64;
  end.checksum = checksum.Digest();
  payload.clear();
  if ((e = appmgr::wire::EncodeRecord(end, payload))) return Done(std::move(e));
  h.control = MakeControl(FrameKind::kFileEnd, false);
  if ((e = conn_.Write(h, payload.data(), payload.size(), DeadlineFor(timeoutSeconds)))) {
    return Fail(std::move(e), true, &aborted);
  }
  const uint8_t* reply = nullptr;
  size_t length = 0;
  if ((e = ReadFrame(&h, &reply, &length, DeadlineFor(timeoutSeconds)))) {
    return Fail(CLmError(e.GetErrorCode(), "waiting for the server to store " + name + ": " + e.Text()),
                true, &aborted);
  }
  if (appmgr::net::KindOf(h) != FrameKind::kFileResult) {
    return Fail(CLmError::Format(kKpErrProtocol, "file put answered by a %s frame",
                                 appmgr::net::FrameKindName(appmgr::net::KindOf(h))),
                true, &aborted);
  }
  int32_t status = appmgr::net::StatusOf(h);
  if (status != 0) {
    return Done(CLmError(status, "the server did not store " + name + ": " + ReasonText(reply, length)));
  }
  if (sent != begin.size) {  // cannot happen: the server refuses a short file
    return Done(CLmError(kKpErrProtocol, "the server stored " + name + " before all of it was sent"));
  }
  request->bytesSent = sent;
  return Done({});
}

CLmError CKpNetwork::AbortConnection(kpsStatus& status, int /*timeoutSeconds*/, bool& timedOut) {
  timedOut = false;
  status = 0;
  conn_.Close();
  broken_ = false;
  return Done({});
}

CLmError CKpNetwork::Disconnect(int timeoutSeconds, bool& timedOut) {
  timedOut = false;
  if (forkGeneration_ == KpForkGeneration() && conn_.connected() && !broken_) {
    kpsHostProtocolHeader h;
    h.control = MakeControl(FrameKind::kGoodbye, false);
    h.jobId = jobId_;
    int seconds = timeoutSeconds > 0 ? std::min(timeoutSeconds, 5) : 5;
    conn_.Write(h, nullptr, 0, Deadline::After(int64_t(seconds) * 1000));  // best effort
  }
  conn_.Close();
  broken_ = false;
  return Done({});
}

CLmError CKpNetwork::GetLastErrorGenericText(unsigned long* code, std::string& text,
                                             unsigned long /*flags*/) {
  if (code) *code = static_cast<unsigned long>(static_cast<long>(lastError_.GetErrorCode()));
  text = lastError_.IsError() ? lastError_.Text() : std::string();
  return {};
}
