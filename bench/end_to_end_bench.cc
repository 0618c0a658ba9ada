// BSInterfaceNet::lookup end to end: the library's operation against a real appmgrd (its
// SQLite store, the demo data), with 1 and 2 caller threads, beside a plain TCP ping-pong of
// frames of the same sizes with as many threads, apart and interleaved. Calls per second are
// items_per_second; "median_us" is the median round trip per thread. The client-side cache is
// off, so every call reaches the server.
//
// Then AdaptersInterfaceNet::getClientList of 10,000 clients, against a second appmgrd whose
// store holds them, beside the ping-pong of its frame sizes, apart and interleaved.
#include <benchmark/benchmark.h>

#include <list>
#include <memory>
#include <string>

#include "adapters/AdaptersInterfaceNet.h"
#include "bench/BenchSupport.h"
#include "interfaces/BSInterfaceNet.h"
#include "session/AppMgrSessionPool.h"
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

// ---- A list of 10,000 clients ----

constexpr int kListClients = 10000;

// The second appmgrd, its store filled from a generated fixture of kListClients clients
// ("client-00001", ...), and this process's settings pointed at it. Started on the first list
// benchmark's thread, after the lookups are done with the first server.
AppmgrdProcess& ListServer() {
  static AppmgrdProcess* server = [] {
    auto dir =
        std::filesystem::temp_directory_path() / ("appmgr-list-bench-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    std::string fixture = (dir / "clients.json").string();
    {
      std::ofstream out(fixture);
      out << "{\"format\": 1, \"clients\": [";
      char name[32];
      for (int i = 1; i <= kListClients; ++i) {
        std::snprintf(name, sizeof name, "client-%05d", i);
        out << (i > 1 ? "," : "") << "{\"id\": " << i << ", \"name\": \"" << name
            << "\", \"hostName\": \"" << name << ".lab\"}";
      }
      out << "]}";
    }
    AppmgrdProcess::Options o;
    o.fixture = fixture;
    o.logLevel = 1;
    auto* p = new AppmgrdProcess(o);
    std::string path = (dir / "settings.ini").string();
    std::ofstream(path)
        << "[Controlhost]\nsHOSTNAME = " << p->host()
        << "\nsCLIENTNAME = controlhost\n[EventManager]\nnDebugLevel = 1\nsLogDirectory = "
        << (dir / "log").string() << "\n";
    KpSettings::Instance().Load(path);
    EvLog::ConfigureFromSettings();
    // The pool still points at the first server: forget it, so the next call attaches here.
    AppMgrSessionPoolSingleton::cleanUpSessionPool();
    ClientSessionWrapper::enableMessageCache(false);
    return p;
  }();
  return *server;
}

// One getClientList of every client; false (and the benchmark skipped) on failure.
bool ListClients(benchmark::State& state, AdaptersInterfaceNet& adapters) {
  std::list<unsigned long> ids;
  std::list<std::string> names;
  std::string err;
  if (adapters.getClientList(ids, names, err, 0, nullptr, 0) != 0) {
    state.SkipWithError(err.c_str());
    return false;
  }
  if (ids.size() != size_t(kListClients)) {
    state.SkipWithError("the list is not the whole store");
    return false;
  }
  benchmark::DoNotOptimize(names);
  return true;
}

// The frame sizes of that list: the request with this machine's host name, the answer as
// appmgrd encodes it.
void ListFrameSizes(size_t* request, size_t* response) {
  GenericListPairReq req;
  NetMessage header;
  header.initRequestHeader(req.hdr);
  GenericListPairResp resp;
  resp.hdr.version = 2;
  std::vector<uint64_t> ids;
  std::vector<std::string> names;
  std::vector<const char*> pointers;
  char name[32];
  for (int i = 1; i <= kListClients; ++i) {
    ids.push_back(uint64_t(i));
    std::snprintf(name, sizeof name, "client-%05d", i);
    names.emplace_back(name);
  }
  for (const std::string& n : names) pointers.push_back(n.c_str());
  resp.idCount = resp.nameCount = uint32_t(kListClients);
  resp.ids = ids.data();
  resp.names = pointers.data();
  std::vector<uint8_t> a, b;
  appmgr::wire::EncodeRecord(req, a);
  appmgr::wire::EncodeRecord(resp, b);
  *request = appmgr::net::kFrameHeaderBytes + a.size();
  *response = appmgr::net::kFrameHeaderBytes + b.size();
}

void BM_ClientList10kEndToEnd(benchmark::State& state) {
  ListServer();
  AdaptersInterfaceNet adapters;
  Latencies lat;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (!ListClients(state, adapters)) break;
    lat.Add(start);
  }
  lat.Report(state);
  state.SetItemsProcessed(state.iterations() * kListClients);
}
BENCHMARK(BM_ClientList10kEndToEnd)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_ClientList10kPingPong(benchmark::State& state) {
  size_t in = 0, out = 0;
  ListFrameSizes(&in, &out);
  RunPingPong(state, in, out);
}
BENCHMARK(BM_ClientList10kPingPong)->UseRealTime()->Unit(benchmark::kMillisecond);

// The list and the ping-pong in turn; "list_vs_pingpong" is the ratio of the medians.
void BM_ClientList10kVsPingPongInterleaved(benchmark::State& state) {
  ListServer();
  size_t in = 0, out = 0;
  ListFrameSizes(&in, &out);
  AdaptersInterfaceNet adapters;
  Latencies lists, plain;
  {
    PingPong pingPong(in, out);
    for (auto _ : state) {
      auto start = std::chrono::steady_clock::now();
      if (!ListClients(state, adapters)) break;
      lists.Add(start);
      start = std::chrono::steady_clock::now();
      if (!pingPong.RoundTrip()) {
        state.SkipWithError("ping-pong failed");
        break;
      }
      plain.Add(start);
    }
  }
  double list = lists.Median(), ping = plain.Median();
  lists.Report(state, "list_");
  plain.Report(state, "pingpong_");
  if (ping > 0) state.counters["list_vs_pingpong"] = list / ping;
  state.counters["response_bytes"] = double(out);
}
BENCHMARK(BM_ClientList10kVsPingPongInterleaved)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  Server();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
