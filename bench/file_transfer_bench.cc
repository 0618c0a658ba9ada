// A 1 GiB file put over loopback into a real appmgrd, beside a plain TCP copy of the same file in
// the same run, each end of each a process of its own so that its peak memory can be told.
//
// Per iteration, one of each, in turn (each first every other iteration):
//   - the copy: a sink process (this program, --tcp-sink) listens, receives the size and the
//     bytes in 1 MiB reads, writes them to a file beside the final name, fsyncs, renames, fsyncs
//     the folder and answers one byte; a source process (--tcp-source) reads the file in 1 MiB
//     chunks and sends them. Timed from starting the source to its exit;
//   - the put: a client process (--put-client) attaches to appmgrd's file-transfer facility and
//     puts the file with CKpNetwork::PutFileRequest (checksum, the server's checks, fsync and
//     rename included). Timed from starting the client to its exit.
// Counters: put_MBps and tcp_MBps (10^6 bytes per second), put_vs_tcp_pct (the put's rate as a
// share of the copy's; the target is at least 80), and the peak resident memory in MiB of the
// put's client and server and of the copy's source and sink (ru_maxrss of each child process,
// VmHWM of appmgrd, which includes its start-up and demo data).
//
// The file is made at run time under the system's temporary folder (APPMGR_BENCH_DIR overrides)
// and removed at the end, with everything the run received. 1 GiB unless APPMGR_BENCH_FILE_MB
// says otherwise.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/net/CKpNetwork.h"
#include "platform/net/MangleHostName.h"
#include "platform/net/Socket.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
constexpr size_t kChunk = 1u << 20;

// ---- The child processes ----

bool WriteAll(int fd, const char* p, size_t n) {
  while (n > 0) {
    ssize_t w = ::write(fd, p, n);
    if (w < 0 && errno == EINTR) continue;
    if (w <= 0) return false;
    p += w;
    n -= size_t(w);
  }
  return true;
}

bool SendAll(int fd, const char* p, size_t n) {
  while (n > 0) {
    ssize_t w = ::send(fd, p, n, MSG_NOSIGNAL);
    if (w < 0 && errno == EINTR) continue;
    if (w <= 0) return false;
    p += w;
    n -= size_t(w);
  }
  return true;
}

bool RecvAll(int fd, char* p, size_t n) {
  while (n > 0) {
    ssize_t r = ::recv(fd, p, n, 0);
    if (r < 0 && errno == EINTR) continue;
    if (r <= 0) return false;
    p += r;
    n -= size_t(r);
  }
  return true;
}

// --tcp-sink PORTFILE DEST
int TcpSink(const std::string& portFile, const std::string& dest) {
  appmgr::net::Socket listener, conn;
  unsigned port = 0;
  if (appmgr::net::Socket::Listen("127.0.0.1", 0, 1, &listener, &port)) return 2;
  {
    std::ofstream(portFile + ".tmp") << port << "\n";
    fs::rename(portFile + ".tmp", portFile);
  }
  if (listener.Accept(appmgr::net::Deadline::After(60000), &conn, nullptr)) return 3;
  uint64_t size = 0;
  if (!RecvAll(conn.fd(), reinterpret_cast<char*>(&size), sizeof size)) return 4;
  std::string part = dest + ".part";
  int fd = ::open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return 5;
  std::vector<char> buffer(kChunk);
  for (uint64_t got = 0; got < size;) {
    ssize_t r = ::recv(conn.fd(), buffer.data(), std::min<uint64_t>(kChunk, size - got), 0);
    if (r <= 0) return 6;
    if (!WriteAll(fd, buffer.data(), size_t(r))) return 7;
    got += uint64_t(r);
  }
  if (::fsync(fd) != 0 || ::close(fd) != 0) return 8;
  if (::rename(part.c_str(), dest.c_str()) != 0) return 9;
  int dir = ::open(fs::path(dest).parent_path().c_str(), O_RDONLY | O_DIRECTORY);
  if (dir >= 0) {
    ::fsync(dir);
    ::close(dir);
  }
  char ack = 1;
  return SendAll(conn.fd(), &ack, 1) ? 0 : 10;
}

// --tcp-source PORT FILE
int TcpSource(unsigned port, const std::string& path) {
  appmgr::net::Socket conn;
  if (appmgr::net::Socket::Connect("127.0.0.1", port, appmgr::net::Deadline::After(10000), &conn)) return 2;
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat st {};
  if (fd < 0 || ::fstat(fd, &st) != 0) return 3;
  ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
  uint64_t size = uint64_t(st.st_size);
  if (!SendAll(conn.fd(), reinterpret_cast<const char*>(&size), sizeof size)) return 4;
  std::vector<char> buffer(kChunk);
  for (uint64_t sent = 0; sent < size;) {
    ssize_t r = ::read(fd, buffer.data(), kChunk);
    if (r <= 0) return 5;
    if (!SendAll(conn.fd(), buffer.data(), size_t(r))) return 6;
    sent += uint64_t(r);
  }
  char ack = 0;
  return RecvAll(conn.fd(), &ack, 1) && ack == 1 ? 0 : 7;
}

// --put-client CONNECT DIR NAME
int PutClient(const std::string& connect, const std::string& dir, const std::string& name) {
  CKpNetwork session;
  kpsExecuteRemoteDllType facility;
  facility.facility = "sLNPATCHUPDATECLIENT";
  facility.entry = "sLPUPDATEPATCHES";
  bool aborted = false;
  if (CLmError e = session.Attach_RemoteDLL(connect, &facility, "bench", 120, aborted)) {
    std::fprintf(stderr, "attach: %s\n", e.AsString().c_str());
    return 2;
  }
  kpsFilexferRequest request;
  std::snprintf(request.sourceFileName, sizeof request.sourceFileName, "%s", name.c_str());
  std::snprintf(request.destinationDirectory, sizeof request.destinationDirectory, "Temp/");
  request.overwrite = request.binary = 1;
  if (CLmError e = session.PutFileRequest(dir, &request, -1, aborted)) {
    std::fprintf(stderr, "put: %s\n", e.AsString().c_str());
    return 3;
  }
  session.Disconnect(10, aborted);
  return 0;
}

// ---- The benchmark ----

struct Child {
  int status = -1;
  double seconds = 0;
  double peakMiB = 0;
  double cpuSeconds = 0;  // user and system
};

pid_t Spawn(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  static std::string self = fs::read_symlink("/proc/self/exe").string();
  argv.push_back(self.data());
  std::vector<std::string> copy = args;
  for (std::string& a : copy) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid = ::fork();
  if (pid == 0) {
    ::execv(self.c_str(), argv.data());
    ::_exit(127);
  }
  return pid;
}

Child Wait(pid_t pid, Clock::time_point start) {
  Child c;
  int raw = 0;
  struct rusage ru {};
  if (::wait4(pid, &raw, 0, &ru) == pid) {
    c.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    c.peakMiB = double(ru.ru_maxrss) / 1024.0;  // KiB
    c.cpuSeconds = double(ru.ru_utime.tv_sec + ru.ru_stime.tv_sec) +
                   double(ru.ru_utime.tv_usec + ru.ru_stime.tv_usec) / 1e6;
  }
  c.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  return c;
}

// User and system time of a running process so far, in seconds.
double CpuSecondsOf(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
  std::string text((std::istreambuf_iterator<char>(in)), {});
  size_t close = text.rfind(')');
  if (close == std::string::npos) return 0;
  std::istringstream fields(text.substr(close + 2));
  std::string skip;
  for (int i = 3; i < 14; ++i) fields >> skip;  // state .. cmajflt
  unsigned long long utime = 0, stime = 0;
  fields >> utime >> stime;
  return double(utime + stime) / double(::sysconf(_SC_CLK_TCK));
}

// VmHWM of a running process, in MiB.
double PeakMiBOf(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::atof(line.c_str() + 6) / 1024.0;
  }
  return 0;
}

struct Setup {
  fs::path dir;
  fs::path file;
  uint64_t size = 0;
  std::unique_ptr<AppmgrdProcess> server;

  Setup() {
    const char* base = std::getenv("APPMGR_BENCH_DIR");
    dir = fs::path(base ? base : fs::temp_directory_path().string()) /
          ("appmgr-file-bench-" + std::to_string(::getpid()));
    fs::create_directories(dir / "local");
    fs::create_directories(dir / "sink");
    const char* mb = std::getenv("APPMGR_BENCH_FILE_MB");
    size = uint64_t(mb ? std::atoll(mb) : 1024) << 20;
    file = dir / "local" / "payload.bin";
    // Random bytes, so nothing on the way can make the data smaller.
    std::ofstream out(file, std::ios::binary);
    std::mt19937_64 random(42);
    std::vector<uint64_t> chunk(kChunk / 8);
    for (uint64_t written = 0; written < size; written += kChunk) {
      for (uint64_t& w : chunk) w = random();
      out.write(reinterpret_cast<const char*>(chunk.data()), std::streamsize(std::min<uint64_t>(kChunk, size - written)));
    }
    out.close();
    // On disk before the first iteration, so neither side pays for its write-back.
    int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
      ::fsync(fd);
      ::close(fd);
    }
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    o.logLevel = 1;
    o.extraArgs = {"--install-dir", (dir / "server").string(), "--max-file-mb",
                   std::to_string((size >> 20) + 1), "--min-free-mb", "0"};
    server = std::make_unique<AppmgrdProcess>(o);
  }
  ~Setup() {
    server.reset();
    std::error_code ec;
    fs::remove_all(dir, ec);
  }
};

void BM_FilePutVsTcpCopy(benchmark::State& state) {
  Setup setup;
  std::string connect =
      MangleHostName(setup.server->host(), "controlhost", 8400, 8402);
  double putSeconds = 0, tcpSeconds = 0;
  double putClientPeak = 0, sourcePeak = 0, sinkPeak = 0;
  double putClientCpu = 0, putServerCpu = 0, sourceCpu = 0, sinkCpu = 0;
  bool putFirst = false;
  for (auto _ : state) {
    // The plain copy.
    auto copy = [&](Child* source, Child* sunk) {
      fs::path portFile = setup.dir / "sink.port";
      fs::remove(portFile);
      pid_t sink = Spawn({"--tcp-sink", portFile.string(), (setup.dir / "sink" / "payload.bin").string()});
      Clock::time_point sinkStart = Clock::now();
      while (!fs::exists(portFile) && Clock::now() - sinkStart < std::chrono::seconds(10)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      }
      std::string port;
      std::ifstream(portFile) >> port;
      Clock::time_point start = Clock::now();
      *source = Wait(Spawn({"--tcp-source", port, setup.file.string()}), start);
      *sunk = Wait(sink, sinkStart);
      fs::remove(setup.dir / "sink" / "payload.bin");
    };
    // The put.
    auto put = [&](Child* client) {
      double serverCpuBefore = CpuSecondsOf(setup.server->pid());
      Clock::time_point start = Clock::now();
      *client = Wait(Spawn({"--put-client", connect, setup.file.parent_path().string(), "payload.bin"}), start);
      putServerCpu += CpuSecondsOf(setup.server->pid()) - serverCpuBefore;
      fs::remove(setup.dir / "server" / "Temp" / "payload.bin");
    };
    // In turn, each one first every other iteration, so that neither always follows the other's
    // disk work.
    Child source, sunk, client;
    if (putFirst) {
      put(&client);
      copy(&source, &sunk);
    } else {
      copy(&source, &sunk);
      put(&client);
    }
    putFirst = !putFirst;
    if (source.status != 0 || sunk.status != 0) {
      state.SkipWithError(("plain copy failed: source " + std::to_string(source.status) + ", sink " +
                           std::to_string(sunk.status)).c_str());
      break;
    }
    if (client.status != 0) {
      state.SkipWithError(("put failed: " + std::to_string(client.status)).c_str());
      break;
    }
    state.SetIterationTime(client.seconds);
    putSeconds += client.seconds;
    tcpSeconds += source.seconds;
    putClientPeak = std::max(putClientPeak, client.peakMiB);
    sourcePeak = std::max(sourcePeak, source.peakMiB);
    sinkPeak = std::max(sinkPeak, sunk.peakMiB);
    putClientCpu += client.cpuSeconds;
    sourceCpu += source.cpuSeconds;
    sinkCpu += sunk.cpuSeconds;
  }
  double n = double(state.iterations());
  if (n == 0 || putSeconds == 0) return;
  double putRate = double(setup.size) * n / putSeconds / 1e6;
  double tcpRate = double(setup.size) * n / tcpSeconds / 1e6;
  state.counters["put_MBps"] = putRate;
  state.counters["tcp_MBps"] = tcpRate;
  state.counters["put_vs_tcp_pct"] = 100.0 * putRate / tcpRate;
  state.counters["put_client_peak_MiB"] = putClientPeak;
  state.counters["put_server_peak_MiB"] = PeakMiBOf(setup.server->pid());
  state.counters["tcp_source_peak_MiB"] = sourcePeak;
  state.counters["tcp_sink_peak_MiB"] = sinkPeak;
  state.counters["file_MiB"] = double(setup.size >> 20);
  // CPU seconds per GiB moved, at each end.
  double gib = double(setup.size) * n / double(1u << 30);
  state.counters["put_client_cpu_s_per_GiB"] = putClientCpu / gib;
  state.counters["put_server_cpu_s_per_GiB"] = putServerCpu / gib;
  state.counters["tcp_source_cpu_s_per_GiB"] = sourceCpu / gib;
  state.counters["tcp_sink_cpu_s_per_GiB"] = sinkCpu / gib;
  state.SetBytesProcessed(int64_t(setup.size) * state.iterations());
}
BENCHMARK(BM_FilePutVsTcpCopy)->Iterations(4)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::strcmp(argv[1], "--tcp-sink") == 0) return TcpSink(argv[2], argv[3]);
  if (argc == 4 && std::strcmp(argv[1], "--tcp-source") == 0) {
    return TcpSource(unsigned(std::atoi(argv[2])), argv[3]);
  }
  if (argc == 5 && std::strcmp(argv[1], "--put-client") == 0) return PutClient(argv[2], argv[3], argv[4]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
