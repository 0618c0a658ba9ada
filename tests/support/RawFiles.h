// RawFiles: a file-transfer connection to a server on loopback, spoken frame by frame, so that
// names, sizes and cuts no client would make reach the server.
//
//   RawFiles raw(server.port());
//   raw.Begin("cut.bin", 3 << 20); raw.Data(std::string(1 << 20, 'c')); raw.Close();
//
// Thread-safety: one thread.
#pragma once

#include <string>
#include <vector>

#include "platform/net/ControlRecords.h"
#include "platform/net/FileChecksum.h"
#include "platform/net/Frame.h"
#include "platform/net/XdrCodec.h"
#include "tests/support/RawPeer.h"

class RawFiles {
 public:
  explicit RawFiles(unsigned port) {
    using appmgr::net::Deadline;
    appmgr::net::Socket sock;
    appmgr::net::Socket::Connect("127.0.0.1", port, Deadline::After(2000), &sock);
    conn_ = appmgr::net::FrameConn(std::move(sock));
    appmgr::net::HelloRecord hello;
    hello.frameVersion = 1;
    hello.service = "File transfer";
    hello.client = "raw";
    hello.facility = "sLNPATCHUPDATECLIENT";
    hello.entry = "sLPUPDATEPATCHES";
    Send(appmgr::net::FrameKind::kHello, Encode(hello));
    attached_ = RawPeer::ReadFrame(conn_);
  }
  bool attached() const { return attached_; }

  void Begin(const std::string& name, uint64_t size) { Send(appmgr::net::FrameKind::kFileBegin, BeginBytes(name, size)); }
  // The file-begin record as it travels, to send as it is or altered.
  static std::vector<uint8_t> BeginBytes(const std::string& name, uint64_t size) {
    appmgr::net::FileBeginRecord begin;
    begin.fileName = name.c_str();
    begin.overwrite = 1;
    begin.size = size;
    return Encode(begin);
  }
  void Begin(const std::vector<uint8_t>& record) { Send(appmgr::net::FrameKind::kFileBegin, record); }
  void Data(const std::string& bytes) {
    Send(appmgr::net::FrameKind::kFileData, std::vector<uint8_t>(bytes.begin(), bytes.end()));
  }
  void End(const std::string& body) {
    appmgr::net::FileEndRecord end;
    end.size = body.size();
    end.checksumKind = appmgr::net::kChecksumXxh3_64;
    end.checksum = appmgr::net::FileChecksum::Of(body.data(), body.size());
    Send(appmgr::net::FrameKind::kFileEnd, Encode(end));
  }
  // The file-result's status, with its reason; -1 when none came.
  int32_t Result(std::string* reason) {
    kpsHostProtocolHeader h;
    const uint8_t* p = nullptr;
    size_t n = 0;
    if (conn_.Read(&h, &p, &n, appmgr::net::Deadline::After(5000), 65536)) return -1;
    appmgr::net::ReasonRecord r;
    appmgr::wire::Arena arena;
    appmgr::wire::DecodeRecord(p, n, r, arena);
    *reason = r.text ? r.text : "";
    return appmgr::net::StatusOf(h);
  }
  void Close() { conn_.Close(); }

 private:
  template <class Record>
  static std::vector<uint8_t> Encode(const Record& r) {
    std::vector<uint8_t> out;
    appmgr::wire::EncodeRecord(r, out);
    return out;
  }
  void Send(appmgr::net::FrameKind kind, const std::vector<uint8_t>& payload) {
    kpsHostProtocolHeader h;
    h.control = appmgr::net::MakeControl(kind, false);
    conn_.Write(h, payload.data(), payload.size(), appmgr::net::Deadline::After(2000));
  }
  appmgr::net::FrameConn conn_;
  bool attached_ = false;
};
