#include "tests/support/ScriptServer.h"

#include <stdexcept>
#include <thread>

#include "platform/net/MangleHostName.h"
#include "platform/xml/AppMessages.h"
#include "protocol/Messages.h"
#include "protocol/Catalogue.h"

using appmgr::server::Exchange;
using appmgr::server::Server;
using appmgr::server::ServerOptions;

ScriptServer::ScriptServer() : ScriptServer(Options{}) {}

ScriptServer::ScriptServer(Options options) : options_(std::move(options)) { Restart(); }

ScriptServer::~ScriptServer() { Stop(); }

std::string ScriptServer::host() const { return "127.0.0.1:" + std::to_string(port_); }

std::string ScriptServer::connectString(const std::string& client) const {
  return MangleHostName(host(), client, 8400, 8402);
}

const appmgr::wire::MessageRow* ScriptServer::RowOf(uint32_t id, uint32_t length) {
  const auto* row =
      appmgr::wire::Catalogue::Find(id, appmgr::wire::Direction::kRequest, length);
  if (row == nullptr) throw std::logic_error("ScriptServer: request not in the catalogue");
  return row;
}

void ScriptServer::Stop() {
  if (!server_) return;
  server_->Stop();
  std::lock_guard lock(mutex_);
  for (const auto& [id, n] : server_->RequestCounts()) pastCounts_[id] += n;
  server_.reset();
}

void ScriptServer::Restart() {
  Stop();
  ServerOptions o;
  o.address = "127.0.0.1";
  o.port = port_;  // 0 the first time: a free port
  o.services = options_.services;
  o.name = "script-server";
  o.maxConnections = options_.maxConnections;
  o.idleTimeoutSeconds = options_.idleTimeoutSeconds;
  o.frameTimeoutSeconds = options_.frameTimeoutSeconds;
  o.maxFrameBytes = options_.maxFrameBytes;
  o.tempDirectory = options_.tempDirectory;
  o.maxFileBytes = options_.maxFileBytes;
  o.minFreeBytes = options_.minFreeBytes;
  auto server = std::make_unique<Server>(o);
  Install(*server);
  if (CLmError e = server->Start()) throw std::runtime_error("ScriptServer: " + e.AsString());
  port_ = server->port();
  server_ = std::move(server);
}

void ScriptServer::Install(Server& server) {
  server.SetHelloPolicy([this](const appmgr::net::HelloRecord&, std::string* reason) {
    std::lock_guard lock(mutex_);
    if (refuseReason_.empty()) return true;
    *reason = refuseReason_;
    return false;
  });
  std::lock_guard lock(mutex_);
  for (const auto& [row, fill] : scripts_) {
    server.HandleRow(row, [this, fill = fill](Exchange& x) { Run(x, fill); });
  }
}

void ScriptServer::Script(const appmgr::wire::MessageRow* row, appmgr::server::BinaryHandler fill) {
  {
    std::lock_guard lock(mutex_);
    scripts_[row] = fill;
  }
  if (server_) server_->HandleRow(row, [this, fill](Exchange& x) { Run(x, fill); });
}

void ScriptServer::Run(Exchange& x, const appmgr::server::BinaryHandler& fill) {
  Behaviour b;
  {
    std::lock_guard lock(mutex_);
    auto it = behaviours_.find(x.header.msgId);
    if (it != behaviours_.end()) {
      b = it->second;
      if (it->second.dropBefore > 0) --it->second.dropBefore;
      if (it->second.dropAfter > 0) --it->second.dropAfter;
    }
  }
  if (b.delay.count() > 0) std::this_thread::sleep_for(b.delay);
  if (b.dropBefore != 0) {
    x.CloseWithoutReply();
    return;
  }
  if (fill) fill(x);
  if (b.dropAfter != 0) x.CloseAfterReply();
}

void ScriptServer::AnswerCacheFill(std::vector<PreparedPair> pairs) {
  App::EnableAppServerCacheResp xml;
  for (const PreparedPair& p : pairs) {
    App::ServerMessageCacheEntity e;
    e.requestId = static_cast<int64_t>(p.requestId);
    e.responseId = static_cast<int64_t>(p.responseId);
    e.request.assign(p.request.begin(), p.request.end());
    e.response.assign(p.response.begin(), p.response.end());
    xml.AddCacheEntity(e);
  }
  std::string text;
  xml.serialize(text, false);
  On(appmgr::msg::kEnableServerCache,
     [text](const EnableServerCacheReq&, EnableServerCacheResp& resp, appmgr::server::Exchange& x) {
       resp.xmlText = x.Text(text);
     });
}

void ScriptServer::Delay(uint64_t requestId, std::chrono::milliseconds delay) {
  std::lock_guard lock(mutex_);
  behaviours_[requestId].delay = delay;
}

void ScriptServer::DropBeforeAnswer(uint64_t requestId, int times) {
  std::lock_guard lock(mutex_);
  behaviours_[requestId].dropBefore = times;
}

void ScriptServer::DropAfterAnswer(uint64_t requestId, int times) {
  std::lock_guard lock(mutex_);
  behaviours_[requestId].dropAfter = times;
}

void ScriptServer::RefuseHello(std::string reason) {
  std::lock_guard lock(mutex_);
  refuseReason_ = std::move(reason);
}

uint64_t ScriptServer::Count(uint64_t requestId) const {
  std::lock_guard lock(mutex_);
  uint64_t n = 0;
  auto it = pastCounts_.find(requestId);
  if (it != pastCounts_.end()) n = it->second;
  return n + (server_ ? server_->RequestCount(requestId) : 0);
}

void ScriptServer::ResetCounts() {
  std::lock_guard lock(mutex_);
  pastCounts_.clear();
  // The running core keeps counting from where it is: start each id below zero by that much
  // (unsigned arithmetic wraps back to the requests seen from now on).
  if (server_) {
    for (const auto& [id, count] : server_->RequestCounts()) pastCounts_[id] -= count;
  }
}
