// Shared pieces of the network benchmarks: a server core that answers BS lookups, the sizes of
// those frames, and per-iteration latency collection with a median.
#pragma once

#include <benchmark/benchmark.h>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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
// a thread of this process, or (kProcess) a child process: the fair yardstick for a server that
// runs as a process of its own, since switching between processes costs more than switching
// between threads (on some virtual machines several microseconds a round trip).
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
      std::vector<char> req(in), resp(out, 'r');  // the child allocates nothing
      child_ = ::fork();
      if (child_ == 0) {
        socket_.Close();
        Serve(accepted.fd(), req.data(), resp.data(), in, out);
        ::_exit(0);
      }
      return;  // the parent's copy of the accepted socket closes here
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

 private:
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
