// ScriptServer: an in-process App Manager on the real server core, on a free loopback port,
// whose answers a test scripts message by message.
//
//   ScriptServer server;                       // started on 127.0.0.1:<free port>
//   server.On(appmgr::msg::kBsLookup, [](const GenericLookupReq4& req, GenericLookupResp4& resp,
//                                        appmgr::server::Exchange& x) { resp.name = x.Text("bs"); });
//   server.Raw(appmgr::msg::kBsLookup, bytes);  // answer with bytes no encoder would make
//   server.Delay(id, 2s); server.DropBeforeAnswer(id); server.RefuseHello("maintenance");
//   server.Count(id);                          // requests seen, across restarts
//   server.Restart();                          // stop, then listen again on the same port
//
// Delays and drops apply to scripted messages (Answer(op) scripts the zeroed response record,
// version 2, no error); a message with no script gets the core's "no handler" answer.
// Thread-safety: scripts may be changed while clients run.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

#include "server/core/Server.h"

class ScriptServer {
 public:
  struct Options {
    std::vector<std::string> services = {"AppManager network access"};
    std::string tempDirectory;  // enables the file-transfer facility
    uint64_t maxFileBytes = 256ull << 20;
    uint64_t minFreeBytes = 0;
    int idleTimeoutSeconds = 300;
    int frameTimeoutSeconds = 10;
    size_t maxConnections = 64;
    size_t maxFrameBytes = 0;
  };

  ScriptServer();
  explicit ScriptServer(Options options);
  ~ScriptServer();

  unsigned port() const { return port_; }
  // "127.0.0.1:<port>": a host string that carries its port.
  std::string host() const;
  // The connect string of MangleHostName for this server.
  std::string connectString(const std::string& client = "ch01") const;
  appmgr::server::Server& core() { return *server_; }

  void Stop();
  // Stops (when running) and listens again on the same port; scripts and counts survive.
  void Restart();

  template <class Req, class Resp>
  void On(const appmgr::wire::Op<Req, Resp>& op,
          std::type_identity_t<std::function<void(const Req&, Resp&, appmgr::server::Exchange&)>> fill) {
    Script(RowOf(op.requestId, appmgr::wire::Wire<Req>::schema.size),
           [fill](appmgr::server::Exchange& x) {
             fill(*static_cast<const Req*>(x.record), *static_cast<Resp*>(x.response), x);
           });
  }
  // Answers `op` with these payload bytes (and optionally another id or record length).
  template <class Req, class Resp>
  void Raw(const appmgr::wire::Op<Req, Resp>& op, std::vector<uint8_t> payload,
           uint64_t msgId = 0, uint64_t recordLength = 0) {
    Script(RowOf(op.requestId, appmgr::wire::Wire<Req>::schema.size),
           [payload, msgId, recordLength](appmgr::server::Exchange& x) {
             x.ReplyRaw(payload, msgId, recordLength);
           });
  }
  template <class Req, class Resp>
  void Answer(const appmgr::wire::Op<Req, Resp>& op) {  // the zeroed response, no error
    Script(RowOf(op.requestId, appmgr::wire::Wire<Req>::schema.size), nullptr);
  }

  // Answers the cache-fill request with these prepared request/response pairs (as an
  // App::EnableAppServerCacheResp), whatever job it names.
  struct PreparedPair {
    uint64_t requestId, responseId;
    std::vector<uint8_t> request, response;
  };
  void AnswerCacheFill(std::vector<PreparedPair> pairs);

  void Delay(uint64_t requestId, std::chrono::milliseconds delay);
  // The next `times` requests of this id (all of them when -1) close the connection without an
  // answer, or right after it.
  void DropBeforeAnswer(uint64_t requestId, int times = -1);
  void DropAfterAnswer(uint64_t requestId, int times = -1);
  // Refuses every hello with this reason; an empty reason accepts again.
  void RefuseHello(std::string reason);

  uint64_t Count(uint64_t requestId) const;
  void ResetCounts();

 private:
  struct Behaviour {
    std::chrono::milliseconds delay{0};
    int dropBefore = 0;  // -1: always
    int dropAfter = 0;
  };
  static const appmgr::wire::MessageRow* RowOf(uint32_t id, uint32_t length);
  void Script(const appmgr::wire::MessageRow* row, appmgr::server::BinaryHandler fill);
  void Install(appmgr::server::Server& server);
  void Run(appmgr::server::Exchange& x, const appmgr::server::BinaryHandler& fill);

  Options options_;
  unsigned port_ = 0;
  std::unique_ptr<appmgr::server::Server> server_;
  mutable std::mutex mutex_;
  std::map<const appmgr::wire::MessageRow*, appmgr::server::BinaryHandler> scripts_;
  std::map<uint64_t, Behaviour> behaviours_;
  std::string refuseReason_;
  std::map<uint64_t, uint64_t> pastCounts_;  // of servers stopped before
};
