// The server core: listens, runs the hello, and answers frames through registered handlers.
//
// Each connection has its own thread. A connection first sends a hello naming a service the
// server offers (or the file-transfer facility); then, for each binary request, the core finds
// the record by (message id, record length) in the catalogue, decodes it, calls the handler
// registered for that message and sends the handler's response record under the response id
// the catalogue pairs with the request. XML requests are dispatched by tag id likewise. On a
// connection of the file-transfer facility, file frames go to the connection's FileReceiver,
// which writes into tempDirectory (docs/protocol.md, "File transfer").
//
// Nothing a peer sends can crash the server or hold a thread forever:
// - an unknown message, or a request that does not decode, gets an error frame and the
//   connection goes on; a known message without a handler gets its response record with an
//   error in the header;
// - a frame above the size limit is answered with an error frame (kKpErrLimit) and closes the
//   connection, unread; bytes that are not a frame, or a second hello, close it;
// - an XML request that does not read gets an error frame naming what is wrong; one whose tag
//   has no handler goes to the unknown-tag handler when one is set, else gets an error frame;
// - a connection silent for idleTimeoutSeconds between frames, or slower than
//   frameTimeoutSeconds to deliver a frame it started, is closed;
// - above maxConnections, new connections are refused in their hello;
// - a handler that throws gets its request answered with an error in the response header.
//
// Thread-safety: Start/Stop from one controlling thread; handlers may be registered at any
// time and run concurrently on connection threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

#include "platform/base/CLmError.h"
#include "platform/net/Arena.h"
#include "platform/net/ControlRecords.h"
#include "platform/net/Frame.h"
#include "protocol/Message.h"
#include "server/core/FileReceiver.h"

class CNMessageBase;

namespace appmgr::server {

struct ServerOptions {
  std::string address = "127.0.0.1";
  unsigned port = 8400;  // 0 picks a free port; Server::port() tells which
  std::vector<std::string> services = {"AppManager network access"};
  std::string name = "appmgrd";
  size_t maxConnections = 256;
  int idleTimeoutSeconds = 300;   // between frames
  int frameTimeoutSeconds = 30;   // for the rest of a frame once it has begun, and for the hello
  size_t maxFrameBytes = 0;       // 0: the platform's frame limit
  // File transfer: where plain file names are stored. Empty: the facility is not offered.
  std::string tempDirectory;
  std::string fileFacility = "sLNPATCHUPDATECLIENT";
  std::string fileEntry = "sLPUPDATEPATCHES";
  uint64_t maxFileBytes = 256ull << 20;  // a larger file is refused at its begin
  uint64_t minFreeBytes = 0;  // a file that would leave less free space on its disk is refused
};

// What the server knows of a connection.
struct ConnectionInfo {
  uint64_t id = 0;
  std::string peer;
  std::string service;
  std::string client;
  int64_t pid = 0;
};

// One binary request being answered. The handler fills `response` (a zeroed record of the
// paired response type whose header already says version 2), or picks another answer.
class Exchange {
 public:
  const wire::MessageRow& request;
  const void* record;
  const kpsHostProtocolHeader& header;
  const ConnectionInfo& connection;
  void* response;

  // A copy of `text` that lives until the answer is sent.
  const char* Text(std::string_view text);
  // Zeroed memory for `count` elements that lives until the answer is sent.
  template <class T>
  T* Array(size_t count) {
    if (count == 0) return nullptr;
    void* p = arena_.Allocate(sizeof(T) * count, alignof(T));
    return new (p) T[count]();
  }

  // Sends these bytes as the payload instead of the encoded response record (tests use it to
  // send what no encoder would make). `msgId` and `recordLength` default to the pair's.
  void ReplyRaw(std::vector<uint8_t> payload, uint64_t msgId = 0, uint64_t recordLength = 0);
  // Answers with an error frame instead of a record.
  void ReplyError(int32_t code, std::string reason);
  // Closes the connection after the answer, or without sending one.
  void CloseAfterReply() { closeAfter_ = true; }
  void CloseWithoutReply() { closeNow_ = true; }

  Exchange(const wire::MessageRow& request, const void* record, const kpsHostProtocolHeader& header,
           const ConnectionInfo& connection, void* response, wire::Arena& arena)
      : request(request), record(record), header(header), connection(connection),
        response(response), arena_(arena) {}

 private:
  friend class Server;
  wire::Arena& arena_;
  bool raw_ = false;
  std::vector<uint8_t> rawPayload_;
  uint64_t rawId_ = 0, rawRecordLength_ = 0;
  bool error_ = false;
  int32_t errorCode_ = 0;
  std::string errorReason_;
  bool closeAfter_ = false;
  bool closeNow_ = false;
};

using BinaryHandler = std::function<void(Exchange&)>;
// Answers an XML request with a message (null: an empty XML answer).
using XmlHandler =
    std::function<std::unique_ptr<CNMessageBase>(const CNMessageBase& request, const ConnectionInfo&)>;
// Decides a hello the core would accept; false refuses it with *reason.
using HelloPolicy = std::function<bool(const net::HelloRecord& hello, std::string* reason)>;
// Told of each file stored: its final path.
using FileStoredHook = std::function<void(const std::string& path, const ConnectionInfo&)>;

class Server {
 public:
  explicit Server(ServerOptions options);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Binds and listens on the address and port without accepting yet (connections wait in the
  // backlog), so a program can find a busy port before it writes anything. Start() listens
  // itself when this was not called.
  CLmError Listen();
  CLmError Start();
  // Closes the listener and every connection, and waits for their threads.
  void Stop();
  bool running() const { return running_.load(); }
  unsigned port() const { return port_; }
  const ServerOptions& options() const { return options_; }

  // Registers the handler of one request record (by its catalogue row).
  void HandleRow(const wire::MessageRow* requestRow, BinaryHandler handler);
  // Typed registration: the handler sees the decoded request and fills the response.
  template <class Req, class Resp>
  void Handle(const wire::Op<Req, Resp>& op,
              std::type_identity_t<std::function<void(const Req&, Resp&, Exchange&)>> handler) {
    HandleRow(RowOf(op.requestId, wire::Wire<Req>::schema.size),
              [handler](Exchange& x) {
                handler(*static_cast<const Req*>(x.record), *static_cast<Resp*>(x.response), x);
              });
  }
  void HandleXml(unsigned long tagId, XmlHandler handler);
  // Answers the XML requests whose tag has no handler of its own.
  void HandleUnknownXml(XmlHandler handler);
  void SetHelloPolicy(HelloPolicy policy);
  void SetFileStoredHook(FileStoredHook hook);

  // Requests seen per message id (binary) or tag id (XML), whether answered or not.
  uint64_t RequestCount(uint64_t id) const;
  std::map<uint64_t, uint64_t> RequestCounts() const;
  uint64_t ConnectionsAccepted() const { return accepted_.load(); }
  size_t OpenConnections() const;

 private:
  struct Connection;
  static const wire::MessageRow* RowOf(uint32_t id, uint32_t length);
  void AcceptLoop();
  void Serve(std::shared_ptr<Connection> c);
  bool Hello(Connection& c);
  bool Binary(Connection& c, const kpsHostProtocolHeader& h, const uint8_t* payload, size_t length);
  bool Xml(Connection& c, const kpsHostProtocolHeader& h, const uint8_t* payload, size_t length);
  bool File(Connection& c, const kpsHostProtocolHeader& h, const uint8_t* payload, size_t length);
  bool SendError(Connection& c, const kpsHostProtocolHeader& request, int32_t code,
                 const std::string& reason);
  void ReapFinished();
  void Count(uint64_t id);

  ServerOptions options_;
  net::Socket listener_;
  unsigned port_ = 0;
  std::atomic<bool> running_{false};
  std::atomic<bool> stopping_{false};
  std::thread acceptThread_;
  std::atomic<uint64_t> accepted_{0};

  mutable std::mutex connectionsMutex_;
  std::map<uint64_t, std::shared_ptr<Connection>> connections_;
  std::vector<std::thread> finished_;

  mutable std::shared_mutex handlersMutex_;
  // Shared, so a request takes its handler with a reference count rather than a copy of the
  // function (which would allocate on every request).
  std::map<const wire::MessageRow*, std::shared_ptr<const BinaryHandler>> binary_;
  std::map<unsigned long, XmlHandler> xml_;
  XmlHandler unknownXml_;
  HelloPolicy helloPolicy_;
  FileStoredHook fileStored_;

  mutable std::mutex countsMutex_;
  std::map<uint64_t, uint64_t> counts_;
};

// Error codes the core puts in answers it makes itself.
enum : int32_t {
  kServerNoHandler = kKpErrNotSupported,  // a known message this server does not serve
  kServerHandlerFailed = kKpErrInternal,  // the handler threw
};

}  // namespace appmgr::server
