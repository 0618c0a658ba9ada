// SCInterfaceNet content end to end against a real appmgrd: initContent of a subclient holding
// 10,000 paths, and an updateContent adding 1,000 paths to it, each beside a plain TCP ping-pong
// of frames of the same sizes, apart and interleaved (the "_vs_pingpong" counters are ratios of
// medians measured in the same run). The client-side cache is off, so every call reaches the
// server.
#include <benchmark/benchmark.h>

#include <list>
#include <string>
#include <vector>

#include "bench/BenchSupport.h"
#include "interfaces/SCInterfaceNet.h"
#include "session/ClientSessionWrapper.h"
#include "session/NetMessage.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

constexpr unsigned long kSubclient = 71;
constexpr int kStoredPaths = 10000;
constexpr int kAddedPaths = 1000;

std::string StoredPath(int i) { return "/data/projects/p" + std::to_string(i) + "/src"; }

// One appmgrd for the run, its subclient 71 holding kStoredPaths paths, started on the first
// benchmark's thread (which outlives it).
AppmgrdProcess& Server() {
  static AppmgrdProcess* server = [] {
    auto dir = std::filesystem::temp_directory_path() / ("appmgr-sc-bench-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    std::string fixture = (dir / "content.json").string();
    {
      std::ofstream out(fixture);
      out << R"({"format": 1, "appTypes": [{"id": 10, "name": "File System"}],)"
          << R"("clients": [{"id": 3, "name": "db01", "hostName": "db01", "applications": [{"id": 301, "appType": 10}]}],)"
          << R"("instances": [{"id": 12, "client": 3, "appType": 10, "name": "default"}],)"
          << R"("backupSets": [{"id": 7, "instance": 12, "name": "bs", "subclients": [{"id": 71, "name": "big", "content": [)";
      for (int i = 0; i < kStoredPaths; ++i) {
        out << (i ? "," : "") << R"({"entry": ")" << StoredPath(i) << R"(", "type": 1})";
      }
      out << "]}]}]}";
    }
    AppmgrdProcess::Options o;
    o.fixture = fixture;
    o.logLevel = 1;
    auto* p = new AppmgrdProcess(o);
    std::string path = (dir / "settings.ini").string();
    std::ofstream(path) << "[Controlhost]\nsHOSTNAME = " << p->host()
                        << "\nsCLIENTNAME = controlhost\n[EventManager]\nnDebugLevel = 1\nsLogDirectory = "
                        << (dir / "log").string() << "\n";
    KpSettings::Instance().Load(path);
    EvLog::ConfigureFromSettings();
    ClientSessionWrapper::enableMessageCache(false);
    return p;
  }();
  return *server;
}

struct Count : ContentCallBack {
  size_t entries = 0;
  void setFlag(bool) override {}
  void addContent(unsigned long, const std::string& text) override { entries += !text.empty(); }
};

bool ReadContent(benchmark::State& state, SCInterfaceNet& sc) {
  Count c;
  std::string err;
  if (sc.initContent(kSubclient, 0, err, &c, nullptr, false, 0, false) != 0) {
    state.SkipWithError(err.c_str());
    return false;
  }
  if (c.entries != size_t(kStoredPaths)) {
    state.SkipWithError("the content read is not the stored list");
    return false;
  }
  return true;
}

// Frame sizes of one exchange: the request with this machine's host name, the answer as appmgrd
// encodes it.
template <class Req, class Resp>
void FrameSizes(Req& req, Resp& resp, size_t* request, size_t* response) {
  NetMessage header;
  header.initRequestHeader(req.hdr);
  resp.hdr.version = 2;
  std::vector<uint8_t> a, b;
  appmgr::wire::EncodeRecord(req, a);
  appmgr::wire::EncodeRecord(resp, b);
  *request = appmgr::net::kFrameHeaderBytes + a.size();
  *response = appmgr::net::kFrameHeaderBytes + b.size();
}

void ReadFrameSizes(size_t* request, size_t* response) {
  std::vector<std::string> paths;
  for (int i = 0; i < kStoredPaths; ++i) paths.push_back(StoredPath(i));
  std::vector<AppMgrContent> entries(paths.size());
  for (size_t i = 0; i < paths.size(); ++i) entries[i] = {paths[i].c_str(), 1};
  GenericInitContentReq req;
  req.id = kSubclient;
  GenericInitContentResp2 resp;
  resp.count = uint32_t(entries.size());
  resp.entries = entries.data();
  FrameSizes(req, resp, request, response);
}

// The 1,000 paths one update adds: new in every round, so the server stores every one.
struct AddedPaths {
  explicit AddedPaths(long round) {
    for (int i = 0; i < kAddedPaths; ++i) {
      texts.push_back("/data/new/r" + std::to_string(round) + "/d" + std::to_string(i));
    }
    for (std::string& t : texts) pointers.push_back(&t);
  }
  std::vector<std::string> texts;
  std::list<std::string*> pointers;
};

void UpdateFrameSizes(size_t* request, size_t* response) {
  AddedPaths added(0);
  std::vector<AppMgrContent> entries;
  for (const std::string& t : added.texts) entries.push_back({t.c_str(), 1});
  GenericUpdateContentReq req;
  req.id = kSubclient;
  req.count1 = uint32_t(entries.size());
  req.content1 = entries.data();
  GenericResp resp;
  FrameSizes(req, resp, request, response);
}

// Adds the round's paths (timed by the caller) and removes them again (not timed), so every
// round meets the same 10,000-entry list.
bool AddPaths(benchmark::State& state, SCInterfaceNet& sc, const AddedPaths& added) {
  std::string err;
  if (sc.updateContent(kSubclient, 1, added.pointers, {}, false, false, false, err, nullptr, nullptr) != 0) {
    state.SkipWithError(err.c_str());
    return false;
  }
  return true;
}
bool RemovePaths(benchmark::State& state, SCInterfaceNet& sc, const AddedPaths& added) {
  std::string err;
  if (sc.updateContent(kSubclient, 1, {}, added.pointers, false, false, false, err, nullptr, nullptr) != 0) {
    state.SkipWithError(err.c_str());
    return false;
  }
  return true;
}

void BM_InitContent10kEndToEnd(benchmark::State& state) {
  Server();
  SCInterfaceNet sc;
  Latencies lat;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (!ReadContent(state, sc)) break;
    lat.Add(start);
  }
  lat.Report(state);
  state.SetItemsProcessed(state.iterations() * kStoredPaths);
}
BENCHMARK(BM_InitContent10kEndToEnd)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_InitContent10kPingPong(benchmark::State& state) {
  size_t in = 0, out = 0;
  ReadFrameSizes(&in, &out);
  RunPingPong(state, in, out);
}
BENCHMARK(BM_InitContent10kPingPong)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_InitContent10kVsPingPongInterleaved(benchmark::State& state) {
  Server();
  size_t in = 0, out = 0;
  ReadFrameSizes(&in, &out);
  SCInterfaceNet sc;
  Latencies reads, plain;
  {
    PingPong pingPong(in, out);
    for (auto _ : state) {
      auto start = std::chrono::steady_clock::now();
      if (!ReadContent(state, sc)) break;
      reads.Add(start);
      start = std::chrono::steady_clock::now();
      if (!pingPong.RoundTrip()) {
        state.SkipWithError("ping-pong failed");
        break;
      }
      plain.Add(start);
    }
  }
  double read = reads.Median(), ping = plain.Median();
  reads.Report(state, "read_");
  plain.Report(state, "pingpong_");
  if (ping > 0) state.counters["read_vs_pingpong"] = read / ping;
  state.counters["response_bytes"] = double(out);
}
BENCHMARK(BM_InitContent10kVsPingPongInterleaved)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_UpdateContentAdd1kEndToEnd(benchmark::State& state) {
  Server();
  SCInterfaceNet sc;
  Latencies lat;
  long round = 0;
  for (auto _ : state) {
    state.PauseTiming();
    AddedPaths added(++round);
    state.ResumeTiming();
    auto start = std::chrono::steady_clock::now();
    if (!AddPaths(state, sc, added)) break;
    lat.Add(start);
    state.PauseTiming();
    bool removed = RemovePaths(state, sc, added);
    state.ResumeTiming();
    if (!removed) break;
  }
  lat.Report(state);
  state.SetItemsProcessed(state.iterations() * kAddedPaths);
}
BENCHMARK(BM_UpdateContentAdd1kEndToEnd)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_UpdateContentAdd1kPingPong(benchmark::State& state) {
  size_t in = 0, out = 0;
  UpdateFrameSizes(&in, &out);
  RunPingPong(state, in, out);
}
BENCHMARK(BM_UpdateContentAdd1kPingPong)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_UpdateContentAdd1kVsPingPongInterleaved(benchmark::State& state) {
  Server();
  size_t in = 0, out = 0;
  UpdateFrameSizes(&in, &out);
  SCInterfaceNet sc;
  Latencies updates, plain;
  long round = 1000000;
  {
    PingPong pingPong(in, out);
    for (auto _ : state) {
      AddedPaths added(++round);
      auto start = std::chrono::steady_clock::now();
      if (!AddPaths(state, sc, added)) break;
      updates.Add(start);
      if (!RemovePaths(state, sc, added)) break;
      start = std::chrono::steady_clock::now();
      if (!pingPong.RoundTrip()) {
        state.SkipWithError("ping-pong failed");
        break;
      }
      plain.Add(start);
    }
  }
  double update = updates.Median(), ping = plain.Median();
  updates.Report(state, "update_");
  plain.Report(state, "pingpong_");
  if (ping > 0) state.counters["update_vs_pingpong"] = update / ping;
  state.counters["request_bytes"] = double(in);
}
BENCHMARK(BM_UpdateContentAdd1kVsPingPongInterleaved)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
