// System calls per operation, counted by the kernel, so that a regression on the hot path shows
// as a number rather than as noise in a latency: BSInterfaceNet::lookup against a real appmgrd
// (its SQLite store, the demo data), once with every call reaching the server and once answered
// from the client-side cache.
//
// Each benchmark runs kCalls look-ups back to back after a warm-up and reports
//   client_syscalls_per_op  system calls the calling thread made per look-up
//   server_syscalls_per_op  system calls all of appmgrd's threads made per look-up
// (the server's accept loop wakes twice a second; over one run that adds well under 0.01).
//
// Counting uses the raw_syscalls:sys_enter tracepoint through perf_event_open: one counter on the
// calling thread, one on each thread of appmgrd. That needs a mounted tracefs and root (or
// kernel.perf_event_paranoid <= -1); without them the benchmarks skip and say why.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <linux/perf_event.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench/BenchSupport.h"
#include "interfaces/BSInterfaceNet.h"
#include "session/ClientSessionWrapper.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

constexpr int kCalls = 2000;

// The id of the raw_syscalls:sys_enter tracepoint; -1 when no tracefs shows it.
long SysEnterTracepoint() {
  for (const char* root : {"/sys/kernel/tracing", "/sys/kernel/debug/tracing"}) {
    std::ifstream f(std::string(root) + "/events/raw_syscalls/sys_enter/id");
    long id = -1;
    if (f >> id) return id;
  }
  return -1;
}

// Counters of system-call entries on a set of threads, read as one sum.
class SyscallCounter {
 public:
  ~SyscallCounter() {
    for (int fd : fds_) ::close(fd);
  }
  // Adds a counter on thread `tid` (0: the calling thread), disabled. False with *why filled.
  bool Add(pid_t tid, std::string* why) {
    static const long id = SysEnterTracepoint();
    if (id < 0) {
      *why = "no raw_syscalls:sys_enter tracepoint (is tracefs mounted?)";
      return false;
    }
    perf_event_attr attr{};
    attr.type = PERF_TYPE_TRACEPOINT;
    attr.size = sizeof attr;
    attr.config = static_cast<unsigned long long>(id);
    attr.disabled = 1;
    long fd = ::syscall(SYS_perf_event_open, &attr, tid, -1, -1, PERF_FLAG_FD_CLOEXEC);
    if (fd < 0) {
      *why = std::string("perf_event_open: ") + std::strerror(errno) +
             " (needs root or kernel.perf_event_paranoid <= -1)";
      return false;
    }
    fds_.push_back(static_cast<int>(fd));
    return true;
  }
  // Every thread of process `pid` as it is now.
  bool AddProcess(pid_t pid, std::string* why) {
    std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(("/proc/" + std::to_string(pid) + "/task").c_str()),
                                            ::closedir);
    if (!dir) {
      *why = "cannot list the threads of appmgrd";
      return false;
    }
    while (dirent* e = ::readdir(dir.get())) {
      if (e->d_name[0] == '.') continue;
      if (!Add(static_cast<pid_t>(std::stol(e->d_name)), why)) return false;
    }
    return true;
  }
  void Enable() {
    for (int fd : fds_) ::ioctl(fd, PERF_EVENT_IOC_ENABLE, 0);
  }
  void Disable() {
    for (int fd : fds_) ::ioctl(fd, PERF_EVENT_IOC_DISABLE, 0);
  }
  uint64_t Sum() const {
    uint64_t total = 0;
    for (int fd : fds_) {
      uint64_t n = 0;
      if (::read(fd, &n, sizeof n) == sizeof n) total += n;
    }
    return total;
  }
  size_t size() const { return fds_.size(); }

 private:
  std::vector<int> fds_;
};

// One appmgrd for the whole run, the library's settings pointing at it.
AppmgrdProcess& Server() {
  static AppmgrdProcess* server = [] {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    o.logLevel = 1;
    auto* p = new AppmgrdProcess(o);
    auto dir = std::filesystem::temp_directory_path() / ("appmgr-syscall-bench-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    std::string path = (dir / "settings.ini").string();
    std::ofstream(path) << "[Controlhost]\nsHOSTNAME = " << p->host()
                        << "\nsCLIENTNAME = controlhost\n[EventManager]\nnDebugLevel = 1\nsLogDirectory = "
                        << (dir / "log").string() << "\n";
    KpSettings::Instance().Load(path);
    EvLog::ConfigureFromSettings();
    return p;
  }();
  return *server;
}

bool Lookup(BSInterfaceNet& bs, std::string& err) {
  std::string name, text;
  long value = 0;
  unsigned long o1, o2, o3, o4 = 0;
  return bs.lookup(102, name, value, o1, o2, o3, text, o4, err, nullptr) == 0;
}

// kCalls look-ups with the cache on or off; the counters per look-up.
void CountLookups(benchmark::State& state, bool cached) {
  AppmgrdProcess& server = Server();
  ClientSessionWrapper::enableMessageCache(cached);
  BSInterfaceNet bs;
  std::string err;
  // Warm-up: the pool's session, appmgrd's connection thread, its prepared statements and, with
  // the cache on, the cached answer all exist before counting starts.
  for (int i = 0; i < 10; ++i) {
    if (!Lookup(bs, err)) {
      state.SkipWithError(err.c_str());
      return;
    }
  }
  SyscallCounter client, appmgrd;
  std::string why;
  if (!client.Add(0, &why) || !appmgrd.AddProcess(server.pid(), &why)) {
    state.SkipWithError(why.c_str());
    return;
  }
  uint64_t clientCalls = 0, serverCalls = 0;
  for (auto _ : state) {
    appmgrd.Enable();
    client.Enable();
    bool ok = true;
    for (int i = 0; i < kCalls && ok; ++i) ok = Lookup(bs, err);
    client.Disable();
    appmgrd.Disable();
    if (!ok) {
      state.SkipWithError(err.c_str());
      return;
    }
    // The client's count includes the ioctl that stopped it.
    clientCalls = client.Sum() - 1;
    serverCalls = appmgrd.Sum();
  }
  state.counters["client_syscalls_per_op"] = double(clientCalls) / kCalls;
  state.counters["server_syscalls_per_op"] = double(serverCalls) / kCalls;
  state.counters["server_threads"] = double(appmgrd.size());
  ClientSessionWrapper::enableMessageCache(true);
}

void BM_SyscallsLookupUncached(benchmark::State& state) { CountLookups(state, false); }
BENCHMARK(BM_SyscallsLookupUncached)->Iterations(1);

void BM_SyscallsLookupCached(benchmark::State& state) { CountLookups(state, true); }
BENCHMARK(BM_SyscallsLookupCached)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
