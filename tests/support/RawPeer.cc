#include "tests/support/RawPeer.h"

#include <sys/socket.h>

#include <stdexcept>

#include "platform/net/ControlRecords.h"
#include "platform/net/MangleHostName.h"
#include "platform/net/XdrCodec.h"

using appmgr::net::Deadline;
using appmgr::net::FrameConn;
using appmgr::net::FrameKind;
using appmgr::net::Socket;

RawPeer::RawPeer(Behaviour behaviour, int backlog) : behaviour_(std::move(behaviour)) {
  if (Socket::Listen("127.0.0.1", 0, backlog, &listener_, &port_)) {
    throw std::runtime_error("RawPeer: cannot listen");
  }
  thread_ = std::thread([this] {
    while (!stop_) {
      Socket s;
      if (listener_.Accept(Deadline::After(100), &s, nullptr)) continue;
      ++accepted_;
      std::lock_guard lock(mutex_);
      workers_.emplace_back([this, sock = std::move(s)]() mutable { behaviour_(sock); });
    }
  });
}

RawPeer::~RawPeer() {
  stop_ = true;
  thread_.join();
  std::lock_guard lock(mutex_);
  for (std::thread& t : workers_) t.join();
}

std::string RawPeer::connectString() const {
  return MangleHostName("127.0.0.1:" + std::to_string(port_), "raw", 8400, 8402);
}

bool RawPeer::ReadFrame(FrameConn& conn, kpsHostProtocolHeader* header) {
  kpsHostProtocolHeader h;
  const uint8_t* p = nullptr;
  size_t n = 0;
  if (conn.Read(&h, &p, &n, Deadline::After(5000), appmgr::net::MaxFramePayload())) return false;
  if (header) *header = h;
  return true;
}

bool RawPeer::AcceptHello(FrameConn& conn, std::string_view trailing) {
  kpsHostProtocolHeader h;
  if (!ReadFrame(conn, &h) || appmgr::net::KindOf(h) != FrameKind::kHello) return false;
  appmgr::net::HelloAcceptRecord accept;
  accept.server = "raw";
  std::vector<uint8_t> out;
  appmgr::wire::EncodeRecord(accept, out);
  kpsHostProtocolHeader a;
  a.control = appmgr::net::MakeControl(FrameKind::kHelloAccept, true);
  if (trailing.empty()) return !conn.Write(a, out.data(), out.size(), Deadline::After(5000));
  a.payloadLength = out.size();
  std::vector<uint8_t> bytes(appmgr::net::kFrameHeaderBytes);
  appmgr::net::EncodeFrameHeader(a, bytes.data());
  bytes.insert(bytes.end(), out.begin(), out.end());
  bytes.insert(bytes.end(), trailing.begin(), trailing.end());
  return !conn.socket().SendAll(bytes.data(), bytes.size(), Deadline::After(5000), "accept");
}
