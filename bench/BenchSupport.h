// Shared pieces of the network benchmarks: a server core that answers BS lookups, the sizes of
// those frames, and per-iteration latency collection with a median.
#pragma once

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/EvDebug.h"
#include "platform/base/KpSettings.h"
#include "platform/net/Frame.h"
#include "platform/net/MangleHostName.h"
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
  void Report(benchmark::State& state) {
    if (samples_.empty()) return;
    std::sort(samples_.begin(), samples_.end());
    state.counters["median_us"] = samples_[samples_.size() / 2];
    state.counters["p99_us"] = samples_[samples_.size() * 99 / 100];
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
