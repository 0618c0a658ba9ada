// Shared pieces of the network benchmarks: a server core that answers BS lookups, the sizes of
// those frames, and per-iteration latency collection with a median.
#pragma once

#include <benchmark/benchmark.h>

#include <sys/socket.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/EvDebug.h"
#include "platform/base/KpSettings.h"
#include "platform/net/Frame.h"
#include "platform/net/MangleHostName.h"
#include "platform/net/Socket.h"
#include "platform/net/XdrCodec.h"
#include "protocol/Messages.h"
#include "server/core/Server.h"

// Round-trip times of one benchmark, reported as median and 99th percentile.
class Latencies {
 public:
  Latencies() { samples_.reserve(1 << 20); }
  void Add(std::chrono::steady_clock::time_point start) {
    if (samples_.size() < samples_.capacity()) {
      samples_.push_back(std::chrono::duration<double, std::micro>(
                             std::chrono::steady_clock::now() - start)
                             .count());
    }
  }
  // The median in microseconds, 0 without samples.
  double Median() {
    if (samples_.empty()) return 0;
    std::sort(samples_.begin(), samples_.end());
    return samples_[samples_.size() / 2];
  }
  // Reports "<prefix>median_us" and "<prefix>p99_us", per thread, averaged over the threads.
  void Report(benchmark::State& state, const std::string& prefix = "") {
    if (samples_.empty()) return;
    double median = Median();
    state.counters[prefix + "median_us"] = benchmark::Counter(median, benchmark::Counter::kAvgThreads);
    state.counters[prefix + "p99_us"] =
        benchmark::Counter(samples_[samples_.size() * 99 / 100], benchmark::Counter::kAvgThreads);
  }

 private:
  std::vector<double> samples_;
};

// The lookup answered by the benchmark server.
inline void FillLookup(const GenericLookupReq4& req, GenericLookupResp4& resp) {
  resp.value = static_cast<int64_t>(req.id);
  resp.name = "defaultBackupSet";
  resp.text = "file system backup set";
}

// A server core on a free loopback port answering BS lookups; one per process.
struct LookupServer {
  std::unique_ptr<appmgr::server::Server> server;
  std::string connect;
  static LookupServer& Get() {
    static LookupServer* s = [] {
      auto* ls = new LookupServer;
      appmgr::server::ServerOptions o;
      o.port = 0;
      ls->server = std::make_unique<appmgr::server::Server>(o);
      ls->server->Handle(appmgr::msg::kBsLookup,
                         [](const GenericLookupReq4& req, GenericLookupResp4& resp,
                            appmgr::server::Exchange&) { FillLookup(req, resp); });
      ls->server->Start();
      ls->connect = MangleHostName("127.0.0.1:" + std::to_string(ls->server->port()), "bench",
                                   8400, 8402);
      return ls;
    }();
    return *s;
  }
};

// Frame sizes (header included) of the lookup request and its answer.
inline void LookupFrameSizes(size_t* request, size_t* response) {
  GenericLookupReq4 req;
  req.hdr.version = 2;
  req.hdr.hostName = "benchhost";
  req.id = 42;
  GenericLookupResp4 resp;
  resp.hdr.version = 2;
  FillLookup(req, resp);
  std::vector<uint8_t> a, b;
  appmgr::wire::EncodeRecord(req, a);
  appmgr::wire::EncodeRecord(resp, b);
  *request = appmgr::net::kFrameHeaderBytes + a.size();
  *response = appmgr::net::kFrameHeaderBytes + b.size();
}

// Points this process's settings at `server` as its Controlhost, with logging at level 1 into a
// scratch folder, so wrappers borrow from a pool connected to it.
inline void PointSettingsAt(const LookupServer& server) {
  static bool done = false;
  if (done) return;
  done = true;
  auto dir = std::filesystem::temp_directory_path() / ("appmgr-bench-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  std::string path = (dir / "settings.ini").string();
  std::ofstream(path) << "[Controlhost]\nsHOSTNAME = 127.0.0.1:" << server.server->port()
                      << "\nsCLIENTNAME = bench\n[EventManager]\nnDebugLevel = 1\nsLogDirectory = "
                      << (dir / "log").string() << "\n";
  KpSettings::Instance().Load(path);
  EvLog::ConfigureFromSettings();
}

// A plain TCP ping-pong on loopback: `in` bytes to a peer that reads them all and answers `out`
// bytes, with no framing, encoding or dispatch. One connection and peer per object. The peer is
// a thread of this process, or (kProcess) a small process of its own: the fair yardstick for a
// server that runs as a process, since switching between processes costs more than switching
// between threads (on some virtual machines several microseconds a round trip). That process is
// this program started afresh (a forked copy would carry this process's whole memory map) with
// the connection on descriptor 3 and APPMGR_PINGPONG_PEER="<in> <out>": it serves before main()
// and never reaches the benchmarks.
class PingPong {
 public:
  enum Peer { kThread, kProcess };
  PingPong(size_t in, size_t out, Peer peer = kThread)
      : in_(in), out_(out), request_(in, 'q'), response_(out) {
    using appmgr::net::Deadline;
    appmgr::net::Socket listener;
    unsigned port = 0;
    appmgr::net::Socket::Listen("127.0.0.1", 0, 4, &listener, &port);
    appmgr::net::Socket::Connect("127.0.0.1", port, Deadline::After(5000), &socket_);
    appmgr::net::Socket accepted;
    listener.Accept(Deadline::After(10000), &accepted, nullptr);
    if (peer == kProcess) {
      child_ = SpawnPeer(accepted.fd(), in, out);
      return;  // our copy of the peer's end closes here
    }
    peer_ = std::thread([s = std::move(accepted), in, out]() mutable {
      std::vector<char> req(in), resp(out, 'r');
      Serve(s.fd(), req.data(), resp.data(), in, out);
    });
  }
  ~PingPong() {
    socket_.Close();  // the peer reads end of stream and returns
    if (peer_.joinable()) peer_.join();
    if (child_ > 0) ::waitpid(child_, nullptr, 0);
  }
  PingPong(const PingPong&) = delete;
  PingPong& operator=(const PingPong&) = delete;

  // One round trip; false when the connection failed.
  bool RoundTrip() {
    if (::send(socket_.fd(), request_.data(), in_, MSG_NOSIGNAL) != ssize_t(in_)) return false;
    size_t got = 0;
    while (got < out_) {
      ssize_t n = ::recv(socket_.fd(), response_.data() + got, out_ - got, 0);
      if (n <= 0) return false;
      got += size_t(n);
    }
    return true;
  }

  // In a peer process (see the class comment): serves descriptor 3 and ends the process.
  static bool ServeIfPeer() {
    const char* sizes = std::getenv("APPMGR_PINGPONG_PEER");
    if (sizes == nullptr) return false;
    size_t in = 0, out = 0;
    if (std::sscanf(sizes, "%zu %zu", &in, &out) == 2) {
      std::vector<char> req(in), resp(out, 'r');
      Serve(3, req.data(), resp.data(), in, out);
    }
    std::_Exit(0);
  }

 private:
  static pid_t SpawnPeer(int fd, size_t in, size_t out) {
    // Our sockets are close-on-exec; the peer's end goes to descriptor 3 (by way of a high
    // number, so that dup2 never meets itself and keeps the flag).
    int high = ::fcntl(fd, F_DUPFD_CLOEXEC, 64);
    std::string var = "APPMGR_PINGPONG_PEER=" + std::to_string(in) + " " + std::to_string(out);
    std::vector<char*> env;
    for (char** e = environ; *e; ++e) env.push_back(*e);
    env.push_back(var.data());
    env.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, high, 3);
    char self[] = "/proc/self/exe";
    char* argv[] = {self, nullptr};
    pid_t pid = -1;
    if (::posix_spawn(&pid, self, &actions, nullptr, argv, env.data()) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(high);
    return pid;
  }

  static void Serve(int fd, char* req, const char* resp, size_t in, size_t out) {
    for (;;) {
      size_t got = 0;
      while (got < in) {
        ssize_t n = ::recv(fd, req + got, in - got, 0);
        if (n <= 0) return;
        got += size_t(n);
      }
      if (::send(fd, resp, out, MSG_NOSIGNAL) != ssize_t(out)) return;
    }
  }

  size_t in_, out_;
  std::vector<char> request_, response_;
  appmgr::net::Socket socket_;
  std::thread peer_;
  pid_t child_ = -1;
};

// The ping-pong as a benchmark, one round trip per iteration; each benchmark thread has its own.
inline void RunPingPong(benchmark::State& state, size_t in, size_t out) {
  Latencies lat;
  {
    PingPong pp(in, out);
    for (auto _ : state) {
      auto start = std::chrono::steady_clock::now();
      if (!pp.RoundTrip()) {
        state.SkipWithError("ping-pong connection failed");
        break;
      }
      lat.Add(start);
    }
  }
  lat.Report(state);
  state.SetItemsProcessed(state.iterations());
  state.counters["request_bytes"] = benchmark::Counter(double(in), benchmark::Counter::kAvgThreads);
  state.counters["response_bytes"] = benchmark::Counter(double(out), benchmark::Counter::kAvgThreads);
}

// A ping-pong peer process does its work here, before main().
inline const bool kServedAsPingPongPeer = PingPong::ServeIfPeer();
