// BSInterfaceNet::lookup end to end: the library's operation against a real appmgrd (its
// SQLite store, the demo data), with 1 and 2 caller threads, beside a plain TCP ping-pong of
// frames of the same sizes with as many threads, apart and interleaved. Calls per second are
// items_per_second; "median_us" is the median round trip per thread. The client-side cache is
// off, so every call reaches the server.
#include <benchmark/benchmark.h>

#include <memory>

#include "bench/BenchSupport.h"
#include "interfaces/BSInterfaceNet.h"
#include "session/ClientSessionWrapper.h"
#include "session/NetMessage.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

// One appmgrd for the whole run, started by main() before any benchmark: appmgrd dies with the
// thread that started it, and a benchmark's second thread ends with the benchmark.
AppmgrdProcess& Server() {
  static AppmgrdProcess* server = [] {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    o.logLevel = 1;
    auto* p = new AppmgrdProcess(o);
    auto dir = std::filesystem::temp_directory_path() / ("appmgr-e2e-bench-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
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

void BM_LookupEndToEnd(benchmark::State& state) {
  BSInterfaceNet bs;
  Latencies lat;
  std::string name, text, err;
  long value = 0;
  unsigned long o1, o2, o3, o4 = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (bs.lookup(102, name, value, o1, o2, o3, text, o4, err, nullptr) != 0) {
      state.SkipWithError(err.c_str());
      break;
    }
    lat.Add(start);
  }
  lat.Report(state);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LookupEndToEnd)->Threads(1)->Threads(2)->UseRealTime();

// The frame sizes of that lookup: the request with this machine's host name, the demo answer.
void LookupFrameSizes(size_t* request, size_t* response) {
  GenericLookupReq4 req;
  NetMessage header;  // holds the host name req.hdr points at
  header.initRequestHeader(req.hdr);
  req.id = 102;
  GenericLookupResp4 resp;
  resp.hdr.version = 2;
  resp.value = 7;
  resp.name = "defaultBackupSet";
  resp.text = "Database server file system";
  std::vector<uint8_t> a, b;
  appmgr::wire::EncodeRecord(req, a);
  appmgr::wire::EncodeRecord(resp, b);
  *request = appmgr::net::kFrameHeaderBytes + a.size();
  *response = appmgr::net::kFrameHeaderBytes + b.size();
}

void BM_PlainTcpPingPong(benchmark::State& state) {
  size_t in = 0, out = 0;
  LookupFrameSizes(&in, &out);
  RunPingPong(state, in, out);
}
BENCHMARK(BM_PlainTcpPingPong)->Threads(1)->Threads(2)->UseRealTime();

// The lookup and the ping-pongs taken in turn by each thread, one of each per iteration, so all
// meet the same moments of a noisy machine. "lookup_vs_pingpong" is the ratio of the medians
// with a peer thread; "lookup_vs_process_pingpong" with a peer process, which pays for switching
// between processes as the look-up does (appmgrd is a process of its own).
void BM_LookupVsPingPongInterleaved(benchmark::State& state) {
  size_t in = 0, out = 0;
  LookupFrameSizes(&in, &out);
  BSInterfaceNet bs;
  Latencies lookups, plain, process;
  std::string name, text, err;
  long value = 0;
  unsigned long o1, o2, o3, o4 = 0;
  {
    PingPong pingPong(in, out), processPingPong(in, out, PingPong::kProcess);
    for (auto _ : state) {
      auto start = std::chrono::steady_clock::now();
      if (bs.lookup(102, name, value, o1, o2, o3, text, o4, err, nullptr) != 0) {
        state.SkipWithError(err.c_str());
        break;
      }
      lookups.Add(start);
      start = std::chrono::steady_clock::now();
      if (!pingPong.RoundTrip()) {
        state.SkipWithError("ping-pong failed");
        break;
      }
      plain.Add(start);
      start = std::chrono::steady_clock::now();
      if (!processPingPong.RoundTrip()) {
        state.SkipWithError("ping-pong with a peer process failed");
        break;
      }
      process.Add(start);
    }
  }
  double lookup = lookups.Median(), ping = plain.Median(), processPing = process.Median();
  lookups.Report(state, "lookup_");
  plain.Report(state, "pingpong_");
  process.Report(state, "process_pingpong_");
  if (ping > 0 && processPing > 0) {
    state.counters["lookup_vs_pingpong"] = benchmark::Counter(lookup / ping, benchmark::Counter::kAvgThreads);
    state.counters["lookup_vs_process_pingpong"] =
        benchmark::Counter(lookup / processPing, benchmark::Counter::kAvgThreads);
  }
}
BENCHMARK(BM_LookupVsPingPongInterleaved)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  Server();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
