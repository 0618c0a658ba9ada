// RawPeer: a loopback listener that hands each accepted socket to a test's function on its own
// thread, for peers that misbehave in ways a real server never would (silence, half frames,
// garbage). Helpers speak just enough of the session protocol to get a client attached.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/net/Frame.h"
#include "platform/net/Socket.h"

class RawPeer {
 public:
  using Behaviour = std::function<void(appmgr::net::Socket& socket)>;
  explicit RawPeer(Behaviour behaviour, int backlog = 16);
  ~RawPeer();

  unsigned port() const { return port_; }
  std::string connectString() const;  // for CKpNetwork::Attach_RemoteService
  int accepted() const { return accepted_.load(); }

  // Reads the client's hello and accepts it, with `trailing` bytes after the accept in the same
  // write (a peer out of step). False when no hello came.
  static bool AcceptHello(appmgr::net::FrameConn& conn, std::string_view trailing = {});
  // Reads one frame and drops it. False on error.
  static bool ReadFrame(appmgr::net::FrameConn& conn, kpsHostProtocolHeader* header = nullptr);

 private:
  Behaviour behaviour_;
  appmgr::net::Socket listener_;
  unsigned port_ = 0;
  std::atomic<bool> stop_{false};
  std::atomic<int> accepted_{0};
  std::thread thread_;
  std::mutex mutex_;
  std::vector<std::thread> workers_;
};
