#include "server/core/Server.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "platform/base/EvDebug.h"
#include "platform/net/KpXdr.h"
#include "platform/net/XdrCodec.h"
#include "platform/xml/CNMessageBase.h"
#include "protocol/Catalogue.h"

namespace appmgr::server {

using net::Deadline;
using net::FrameKind;
using wire::Catalogue;
using wire::Direction;
using wire::MessageRow;

namespace {

constexpr const char* kLabel = "Server";
constexpr const char* kFileService = "File transfer";

}  // namespace

struct Server::Connection {
  ConnectionInfo info;
  net::FrameConn conn;
  std::thread thread;
  std::atomic<bool> done{false};
  wire::Arena arena;
  std::vector<char> record;
  std::vector<char> response;
  bool refuse = false;  // over the connection limit: refuse the hello
  // File puts of a file-transfer connection; made at its first file frame.
  std::unique_ptr<FileReceiver> files;

  void DropFile() {
    if (files) files->Abandon();
  }
};

const char* Exchange::Text(std::string_view text) {
  char* p = static_cast<char*>(arena_.Allocate(text.size() + 1, 1));
  std::memcpy(p, text.data(), text.size());
  p[text.size()] = '\0';
  return p;
}

void Exchange::ReplyRaw(std::vector<uint8_t> payload, uint64_t msgId, uint64_t recordLength) {
  raw_ = true;
  rawPayload_ = std::move(payload);
  rawId_ = msgId;
  rawRecordLength_ = recordLength;
}

void Exchange::ReplyError(int32_t code, std::string reason) {
  error_ = true;
  errorCode_ = code;
  errorReason_ = std::move(reason);
}

Server::Server(ServerOptions options) : options_(std::move(options)) {
  if (options_.maxFrameBytes == 0) options_.maxFrameBytes = net::MaxFramePayload();
}

Server::~Server() { Stop(); }

const MessageRow* Server::RowOf(uint32_t id, uint32_t length) {
  return Catalogue::Find(id, Direction::kRequest, length);
}

void Server::HandleRow(const MessageRow* requestRow, BinaryHandler handler) {
  if (requestRow == nullptr) return;
  std::unique_lock lock(handlersMutex_);
  binary_[requestRow] = std::make_shared<const BinaryHandler>(std::move(handler));
}

void Server::HandleXml(unsigned long tagId, XmlHandler handler) {
  std::unique_lock lock(handlersMutex_);
  xml_[tagId] = std::move(handler);
}

void Server::HandleUnknownXml(XmlHandler handler) {
  std::unique_lock lock(handlersMutex_);
  unknownXml_ = std::move(handler);
}

void Server::SetHelloPolicy(HelloPolicy policy) {
  std::unique_lock lock(handlersMutex_);
  helloPolicy_ = std::move(policy);
}

void Server::SetFileStoredHook(FileStoredHook hook) {
  std::unique_lock lock(handlersMutex_);
  fileStored_ = std::move(hook);
}

uint64_t Server::RequestCount(uint64_t id) const {
  std::lock_guard lock(countsMutex_);
  auto it = counts_.find(id);
  return it == counts_.end() ? 0 : it->second;
}

std::map<uint64_t, uint64_t> Server::RequestCounts() const {
  std::lock_guard lock(countsMutex_);
  return counts_;
}

void Server::Count(uint64_t id) {
  std::lock_guard lock(countsMutex_);
  ++counts_[id];
}

size_t Server::OpenConnections() const {
  std::lock_guard lock(connectionsMutex_);
  size_t n = 0;
  for (const auto& [id, c] : connections_) n += c->done ? 0 : 1;
  return n;
}

CLmError Server::Listen() {
  if (listener_.valid()) return {};
  return net::Socket::Listen(options_.address, options_.port, 128, &listener_, &port_);
}

CLmError Server::Start() {
  if (running_) return {};
  if (!options_.tempDirectory.empty()) {
    std::error_code ec;
    std::filesystem::create_directories(options_.tempDirectory, ec);
    if (ec) {
      return CLmError(kKpErrIo, "cannot create " + options_.tempDirectory + ": " + ec.message());
    }
    FileReceiver::RemoveStaleParts(options_.tempDirectory);
  }
  if (CLmError e = Listen()) return e;
  stopping_ = false;
  running_ = true;
  acceptThread_ = std::thread([this] { AcceptLoop(); });
  EvEventWrapper::DebugLvl(kLabel, 1, "listening on %s", net::HostPortText(options_.address, port_).c_str());
  return {};
}

void Server::Stop() {
  if (!running_.exchange(false)) return;
  stopping_ = true;
  ::shutdown(listener_.fd(), SHUT_RDWR);  // wakes the accept loop
  if (acceptThread_.joinable()) acceptThread_.join();
  listener_.Close();
  std::map<uint64_t, std::shared_ptr<Connection>> all;
  {
    std::lock_guard lock(connectionsMutex_);
    // Wake every connection blocked in a read; their descriptors stay open until joined.
    for (auto& [id, c] : connections_) ::shutdown(c->conn.socket().fd(), SHUT_RDWR);
    all.swap(connections_);
  }
  for (auto& [id, c] : all) {
    if (c->thread.joinable()) c->thread.join();
  }
  for (std::thread& t : finished_) {
    if (t.joinable()) t.join();
  }
  finished_.clear();
  EvEventWrapper::DebugLvl(kLabel, 1, "stopped");
}

void Server::ReapFinished() {
  std::vector<std::shared_ptr<Connection>> done;
  {
    std::lock_guard lock(connectionsMutex_);
    for (auto it = connections_.begin(); it != connections_.end();) {
      if (it->second->done) {
        done.push_back(it->second);
        it = connections_.erase(it);
      } else {
        ++it;
      }
    }
  }
  for (auto& c : done) {
    if (c->thread.joinable()) c->thread.join();
  }
}

void Server::AcceptLoop() {
  uint64_t nextId = 1;
  while (!stopping_) {
    ReapFinished();
    net::Socket socket;
    std::string peer;
    CLmError e = listener_.Accept(Deadline::After(500), &socket, &peer);
    if (e) {
      if (e.GetErrorCode() == kKpErrTimeout) continue;
      if (stopping_) break;
      EvEventWrapper::Error(kLabel, "accept failed: %s", e.AsString().c_str());
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      continue;
    }
    size_t open = OpenConnections();
    if (open >= 2 * options_.maxConnections) {
      EvEventWrapper::Error(kLabel, "closing connection from %s: %zu connections open", peer.c_str(), open);
      continue;  // the socket closes here
    }
    auto c = std::make_shared<Connection>();
    c->info.id = nextId++;
    c->info.peer = peer;
    c->conn = net::FrameConn(std::move(socket));
    c->refuse = open >= options_.maxConnections;
    ++accepted_;
    std::lock_guard lock(connectionsMutex_);
    if (stopping_) break;
    connections_[c->info.id] = c;
    c->thread = std::thread([this, c] { Serve(c); });
  }
}

bool Server::SendError(Connection& c, const kpsHostProtocolHeader& request, int32_t code,
                       const std::string& reason) {
  net::ReasonRecord r;
  r.text = reason.c_str();
  std::vector<uint8_t> payload;
  wire::EncodeRecord(r, payload);
  kpsHostProtocolHeader h;
  h.msgId = request.msgId;
  h.control = net::MakeControl(FrameKind::kError, true);
  h.jobId = request.jobId;
  h.status = net::MakeStatus(net::SequenceOf(request), code);
  EvEventWrapper::DebugLvl(kLabel, 2, "connection %llu: %s", static_cast<unsigned long long>(c.info.id),
                           reason.c_str());
  return !c.conn.Write(h, payload.data(), payload.size(),
                       Deadline::After(int64_t(options_.frameTimeoutSeconds) * 1000));
}

bool Server::Hello(Connection& c) {
  kpsHostProtocolHeader h;
  const uint8_t* payload = nullptr;
  size_t length = 0;
  Deadline deadline = Deadline::After(int64_t(options_.frameTimeoutSeconds) * 1000);
  if (c.conn.Read(&h, &payload, &length, deadline, std::min<size_t>(options_.maxFrameBytes, 65536))) {
    return false;
  }
  net::HelloRecord hello;
  wire::Arena arena;
  std::string reason;
  bool ok = net::KindOf(h) == FrameKind::kHello && !wire::DecodeRecord(payload, length, hello, arena);
  if (!ok) {
    reason = "the connection did not begin with a hello";
  } else if (c.refuse) {
    reason = "too many connections";
    ok = false;
  } else {
    std::string service = hello.service ? hello.service : "";
    bool offered = std::find(options_.services.begin(), options_.services.end(), service) !=
                   options_.services.end();
    if (service == kFileService) {
      offered = !options_.tempDirectory.empty() && hello.facility && hello.entry &&
                options_.fileFacility == hello.facility && options_.fileEntry == hello.entry;
    }
    if (!offered) {
      reason = "service \"" + service + "\" is not offered here";
      ok = false;
    } else {
      HelloPolicy policy;
      {
        std::shared_lock lock(handlersMutex_);
        policy = helloPolicy_;
      }
      ok = !policy || policy(hello, &reason);
    }
    c.info.service = service;
    c.info.client = hello.client ? hello.client : "";
    c.info.pid = hello.pid;
  }
  kpsHostProtocolHeader answer;
  answer.jobId = h.jobId;
  std::vector<uint8_t> out;
  if (ok) {
    net::HelloAcceptRecord accept;
    accept.server = options_.name.c_str();
    accept.connectionId = c.info.id;
    wire::EncodeRecord(accept, out);
    answer.control = net::MakeControl(FrameKind::kHelloAccept, true);
    EvEventWrapper::DebugLvl(kLabel, 3, "connection %llu from %s: client [%s] pid %lld attached to [%s]",
                             static_cast<unsigned long long>(c.info.id), c.info.peer.c_str(),
                             c.info.client.c_str(), static_cast<long long>(c.info.pid),
                             c.info.service.c_str());
  } else {
    net::ReasonRecord r;
    r.text = reason.c_str();
    wire::EncodeRecord(r, out);
    answer.control = net::MakeControl(FrameKind::kHelloRefuse, true);
    answer.status = net::MakeStatus(0, kKpErrRefused);
    EvEventWrapper::DebugLvl(kLabel, 2, "connection %llu from %s refused: %s",
                             static_cast<unsigned long long>(c.info.id), c.info.peer.c_str(), reason.c_str());
  }
  bool sent = !c.conn.Write(answer, out.data(), out.size(), deadline);
  return ok && sent;
}

void Server::Serve(std::shared_ptr<Connection> c) {
  if (Hello(*c)) {
    const int64_t frameMs = int64_t(options_.frameTimeoutSeconds) * 1000;
    const int64_t idleMs = int64_t(options_.idleTimeoutSeconds) * 1000;
    for (;;) {
      // Wait for the next frame with the receive itself (no poll per request): each wait is at
      // most the frame time-out, and waits that see no byte at all add up to the idle time-out.
      kpsHostProtocolHeader h;
      const uint8_t* payload = nullptr;
      size_t length = 0;
      CLmError e;
      for (int64_t idle = 0;;) {
        int64_t wait = std::min(frameMs, idleMs - idle);
        e = c->conn.ReadFrame(&h, &payload, &length, Deadline::After(wait), frameMs,
                              options_.maxFrameBytes);
        if (!e || e.GetErrorCode() != kKpErrTimeout || c->conn.HasBuffered() || stopping_) break;
        // A wait that timed out without a byte lasted its whole length (the clock is not read
        // for every request just for this).
        idle += wait;
        if (idle >= idleMs) {
          e = CLmError::Format(kKpErrTimeout, "idle for %d s", options_.idleTimeoutSeconds);
          break;
        }
      }
      if (e) {
        // An oversized frame is not read; the peer is told why before the connection closes.
        if (e.GetErrorCode() == kKpErrLimit) SendError(*c, kpsHostProtocolHeader{}, kKpErrLimit, e.Text());
        if (e.GetErrorCode() != kKpErrDisconnected || stopping_) {
          EvEventWrapper::DebugLvl(kLabel, 2, "connection %llu closed: %s",
                                   static_cast<unsigned long long>(c->info.id), e.AsString().c_str());
        }
        break;
      }
      bool keep = false;
      switch (net::KindOf(h)) {
        case FrameKind::kBinary:
          keep = Binary(*c, h, payload, length);
          break;
        case FrameKind::kXml:
          keep = Xml(*c, h, payload, length);
          break;
        case FrameKind::kFileBegin:
        case FrameKind::kFileData:
        case FrameKind::kFileEnd:
          keep = File(*c, h, payload, length);
          break;
        case FrameKind::kGoodbye:
          keep = false;
          break;
        default:
          SendError(*c, h, kKpErrProtocol,
                    std::string("a ") + net::FrameKindName(net::KindOf(h)) + " frame is not a request");
          keep = false;
      }
      if (!keep || stopping_) break;
    }
  }
  // The peer sees the end at once; the descriptor itself is closed when the thread is reaped.
  ::shutdown(c->conn.socket().fd(), SHUT_RDWR);
  c->DropFile();
  c->done = true;
}

bool Server::Binary(Connection& c, const kpsHostProtocolHeader& h, const uint8_t* payload,
                    size_t length) {
  Count(h.msgId);
  if (net::IsResponse(h)) {
    SendError(c, h, kKpErrProtocol, "a response is not a request");
    return false;
  }
  const MessageRow* row = h.msgId <= 0xffffffffu && h.recordLength <= 0xffffffffu
                              ? Catalogue::Find(uint32_t(h.msgId), Direction::kRequest,
                                                uint32_t(h.recordLength))
                              : nullptr;
  if (row == nullptr) {
    char why[160];
    snprintf(why, sizeof why, "message 0x%08llx (%s) with a record of %llu bytes is not known here",
             static_cast<unsigned long long>(h.msgId), KPS_PRIM_STRING(h.msgId),
             static_cast<unsigned long long>(h.recordLength));
    return SendError(c, h, kKpErrNotSupported, why);
  }
  c.arena.Reset();
  c.record.assign(row->record->size, 0);
  if (CLmError e = wire::Decode(*row->record, payload, length, c.record.data(), c.arena, row->name)) {
    return SendError(c, h, kKpErrProtocol, e.Text());
  }
  const wire::RecordSchema& respSchema = *row->responseRecord;
  c.response.assign(respSchema.size, 0);
  auto* respHdr = reinterpret_cast<AppMgrRespHdr*>(c.response.data());
  respHdr->version = 2;

  std::shared_ptr<const BinaryHandler> handler;
  {
    std::shared_lock lock(handlersMutex_);
    auto it = binary_.find(row);
    if (it != binary_.end()) handler = it->second;
  }
  Exchange x(*row, c.record.data(), h, c.info, c.response.data(), c.arena);
  if (!handler) {
    respHdr->errorCode = kServerNoHandler;
    respHdr->errorText = x.Text(std::string("this server has no handler for ") + row->name);
  } else {
    try {
      (*handler)(x);
    } catch (const std::exception& ex) {
      EvEventWrapper::Error(kLabel, "handler of %s failed: %s", row->name, ex.what());
      std::memset(c.response.data(), 0, c.response.size());
      respHdr->version = 2;
      respHdr->errorCode = kServerHandlerFailed;
      respHdr->errorText = x.Text(std::string("the handler of ") + row->name + " failed: " + ex.what());
      x.raw_ = x.error_ = false;
    }
  }
  if (x.closeNow_) return false;
  if (x.error_) return SendError(c, h, x.errorCode_, x.errorReason_) && !x.closeAfter_;

  kpsHostProtocolHeader out;
  out.msgId = row->responseId;
  out.control = net::MakeControl(FrameKind::kBinary, true);
  out.jobId = h.jobId;
  out.recordLength = respSchema.size;
  out.status = net::MakeStatus(net::SequenceOf(h), 0);
  Deadline deadline = Deadline::After(int64_t(options_.frameTimeoutSeconds) * 1000);
  CLmError e;
  if (x.raw_) {
    if (x.rawId_) out.msgId = x.rawId_;
    if (x.rawRecordLength_) out.recordLength = x.rawRecordLength_;
    e = c.conn.Write(out, x.rawPayload_.data(), x.rawPayload_.size(), deadline);
  } else {
    size_t room = c.conn.PayloadCapacity();
    size_t needed = 0;
    e = wire::Encode(respSchema, c.response.data(), c.conn.PayloadRoom(room), room, &needed,
                     row->name);
    if (!e && needed > room) {
      e = wire::Encode(respSchema, c.response.data(), c.conn.PayloadRoom(needed), needed, &needed,
                       row->name);
    }
    if (e) return SendError(c, h, kServerHandlerFailed, "the answer could not be encoded: " + e.Text());
    if (needed > options_.maxFrameBytes) {
      return SendError(c, h, kKpErrLimit, "the answer is above the frame limit");
    }
    e = c.conn.WriteBuffered(out, needed, deadline);
  }
  return !e && !x.closeAfter_;
}

bool Server::Xml(Connection& c, const kpsHostProtocolHeader& h, const uint8_t* payload,
                 size_t length) {
  Count(h.msgId);
  int err = 0;
  std::string why;
  std::unique_ptr<CNMessageBase> request =
      CNMessageBase::FromXml(reinterpret_cast<const char*>(payload), length, &err, &why);
  if (!request) {
    return SendError(c, h, kKpErrProtocol,
                     "the XML request could not be read (" + std::to_string(err) + "): " + why);
  }
  XmlHandler handler;
  {
    std::shared_lock lock(handlersMutex_);
    auto it = xml_.find(request->getTagId());
    if (it != xml_.end()) {
      handler = it->second;
    } else {
      handler = unknownXml_;
    }
  }
  if (!handler) {
    char why[96];
    snprintf(why, sizeof why, "no handler for XML tag 0x%08lx here", request->getTagId());
    return SendError(c, h, kKpErrNotSupported, why);
  }
  std::unique_ptr<CNMessageBase> answer;
  try {
    answer = handler(*request, c.info);
  } catch (const std::exception& ex) {
    return SendError(c, h, kServerHandlerFailed, std::string("the XML handler failed: ") + ex.what());
  }
  std::string text;
  if (answer && answer->serialize(text, false) != 0) {
    return SendError(c, h, kServerHandlerFailed, "the XML answer could not be serialised");
  }
  kpsHostProtocolHeader out;
  out.msgId = answer ? answer->getTagId() : 0;
  out.control = net::MakeControl(FrameKind::kXml, true);
  out.jobId = h.jobId;
  out.status = net::MakeStatus(net::SequenceOf(h), 0);
  return !c.conn.Write(out, text.data(), text.size(),
                       Deadline::After(int64_t(options_.frameTimeoutSeconds) * 1000));
}

bool Server::File(Connection& c, const kpsHostProtocolHeader& h, const uint8_t* payload,
                  size_t length) {
  if (c.info.service != kFileService) {
    SendError(c, h, kKpErrProtocol, "file frames need the file-transfer facility");
    return false;
  }
  if (!c.files) {
    FileReceiver::Options o;
    o.directory = options_.tempDirectory;
    o.maxFileBytes = options_.maxFileBytes;
    o.minFreeBytes = options_.minFreeBytes;
    c.files = std::make_unique<FileReceiver>(std::move(o), c.info.id);
  }
  FileReceiver::Outcome outcome;
  switch (net::KindOf(h)) {
    case FrameKind::kFileBegin:
      outcome = c.files->Begin(payload, length);
      break;
    case FrameKind::kFileData:
      outcome = c.files->Data(payload, length);
      break;
    default:
      outcome = c.files->End(payload, length);
      break;
  }
  if (!outcome.answer) return true;
  if (outcome.code != 0) {
    EvEventWrapper::DebugLvl(kLabel, 2, "connection %llu: file refused: %s",
                             static_cast<unsigned long long>(c.info.id), outcome.reason.c_str());
  } else {
    EvEventWrapper::DebugLvl(kLabel, 2, "connection %llu: stored %s",
                             static_cast<unsigned long long>(c.info.id), outcome.storedPath.c_str());
    FileStoredHook hook;
    {
      std::shared_lock lock(handlersMutex_);
      hook = fileStored_;
    }
    if (hook) hook(outcome.storedPath, c.info);
  }
  net::ReasonRecord r;
  r.text = outcome.code ? outcome.reason.c_str() : nullptr;
  std::vector<uint8_t> out;
  wire::EncodeRecord(r, out);
  kpsHostProtocolHeader a;
  a.control = net::MakeControl(FrameKind::kFileResult, true);
  a.jobId = h.jobId;
  a.status = net::MakeStatus(net::SequenceOf(h), outcome.code);
  return !c.conn.Write(a, out.data(), out.size(),
                       Deadline::After(int64_t(options_.frameTimeoutSeconds) * 1000));
}

}  // namespace appmgr::server
