#include "tests/support/AppmgrdProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "platform/net/MangleHostName.h"

#ifndef APPMGRD_PATH
#error "APPMGRD_PATH must name the appmgrd program"
#endif
#ifndef APPMGR_SOURCE_DIR
#error "APPMGR_SOURCE_DIR must name the source tree"
#endif

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::string MakeTempDir(const char* prefix) {
  std::string tmpl = (fs::temp_directory_path() / (std::string(prefix) + "-XXXXXX")).string();
  if (!mkdtemp(tmpl.data())) {
    throw std::runtime_error(std::string("AppmgrdProcess: mkdtemp failed: ") + strerror(errno));
  }
  return tmpl;
}

std::string ReadAll(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::ostringstream ss;
  ss << f.rdbuf();
  return ss.str();
}

std::string CommandLine(const std::vector<std::string>& argv) {
  std::string line;
  for (const std::string& a : argv) line += (line.empty() ? "" : " ") + a;
  return line;
}

// Starts argv[0] with stdin from /dev/null and stdout, stderr into the two files.
pid_t Spawn(const std::vector<std::string>& argv, const std::string& outPath,
            const std::string& errPath) {
  // Everything the child needs is made before fork: between fork and exec a child of a
  // threaded process may only make async-signal-safe calls.
  std::vector<char*> args;
  for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  const char* out = outPath.c_str();
  const char* err = errPath.c_str();
  pid_t parent = ::getpid();
  pid_t pid = ::fork();
  if (pid < 0)
    throw std::runtime_error(std::string("AppmgrdProcess: fork failed: ") + strerror(errno));
  if (pid == 0) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) _exit(127);  // the parent is already gone
    int in = ::open("/dev/null", O_RDONLY);
    int o = ::open(out, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int e = ::open(err, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (in < 0 || o < 0 || e < 0) _exit(126);
    ::dup2(in, 0);
    ::dup2(o, 1);
    ::dup2(e, 2);
    ::execv(args[0], args.data());
    static const char kFailed[] = "AppmgrdProcess: exec failed\n";
    ssize_t ignored = ::write(2, kFailed, sizeof kFailed - 1);
    (void)ignored;
    _exit(127);
  }
  return pid;
}

int StatusOf(int raw) {
  if (WIFEXITED(raw)) return WEXITSTATUS(raw);
  if (WIFSIGNALED(raw)) return 128 + WTERMSIG(raw);
  return -1;
}

// Reaps `pid` if it has ended; true with *status then.
bool Reaped(pid_t pid, int* status) {
  int raw = 0;
  pid_t r;
  do {
    r = ::waitpid(pid, &raw, WNOHANG);
  } while (r < 0 && errno == EINTR);
  if (r == pid) {
    *status = StatusOf(raw);
    return true;
  }
  // ECHILD: someone else reaped it; treat it as ended.
  if (r < 0) {
    *status = -1;
    return true;
  }
  return false;
}

// Waits up to `timeout` for `pid` to end; then SIGKILL and a blocking reap. The exit status.
int WaitOrKill(pid_t pid, std::chrono::milliseconds timeout) {
  int status = -1;
  auto until = Clock::now() + timeout;
  while (Clock::now() < until) {
    if (Reaped(pid, &status)) return status;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ::kill(pid, SIGKILL);
  int raw = 0;
  pid_t r;
  do {
    r = ::waitpid(pid, &raw, 0);
  } while (r < 0 && errno == EINTR);
  return r == pid ? StatusOf(raw) : -1;
}

bool ReadPort(const std::string& path, unsigned* port) {
  std::ifstream f(path);
  unsigned long value = 0;
  if (!(f >> value) || value == 0 || value > 65535) return false;
  *port = static_cast<unsigned>(value);
  return true;
}

}  // namespace

AppmgrdProcess::AppmgrdProcess() : AppmgrdProcess(Options{}) {}

AppmgrdProcess::AppmgrdProcess(Options options) : options_(std::move(options)) {
  dir_ = MakeTempDir("appmgrd-test");
  dataDir_ = options_.dataDir.empty() ? dir_ + "/data" : options_.dataDir;
  try {
    Start();
  } catch (...) {
    std::error_code ec;
    fs::remove_all(dir_, ec);
    throw;
  }
}

AppmgrdProcess::~AppmgrdProcess() {
  Stop();
  std::error_code ec;
  fs::remove_all(dir_, ec);
}

std::string AppmgrdProcess::BinaryPath() {
  return APPMGRD_PATH;
}

std::string AppmgrdProcess::DemoFixture() {
  return std::string(APPMGR_SOURCE_DIR) + "/server/fixtures/demo.json";
}

std::string AppmgrdProcess::host() const {
  return "127.0.0.1:" + std::to_string(port_);
}

std::string AppmgrdProcess::connectString(const std::string& client) const {
  return MangleHostName(host(), client, 8400, 8402);
}

std::string AppmgrdProcess::Stdout() const {
  return ReadAll(dir_ + "/stdout");
}
std::string AppmgrdProcess::Stderr() const {
  return ReadAll(dir_ + "/stderr");
}

void AppmgrdProcess::Start() {
  if (running()) return;
  const std::string portFile = dir_ + "/port";
  std::error_code ec;
  fs::remove(portFile, ec);
  std::vector<std::string> argv = {BinaryPath(),
                                   "--listen",
                                   "127.0.0.1",
                                   "--port",
                                   std::to_string(port_),
                                   "--port-file",
                                   portFile,
                                   "--data",
                                   dataDir_,
                                   "--log-dir",
                                   dir_ + "/log",
                                   "--log-level",
                                   std::to_string(options_.logLevel)};
  if (!options_.fixture.empty()) {
    argv.push_back("--fixture");
    argv.push_back(options_.fixture);
  }
  argv.insert(argv.end(), options_.extraArgs.begin(), options_.extraArgs.end());

  pid_ = Spawn(argv, dir_ + "/stdout", dir_ + "/stderr");
  auto until = Clock::now() + options_.startTimeout;
  for (;;) {
    unsigned port = 0;
    if (ReadPort(portFile, &port)) {
      port_ = port;
      return;
    }
    int status = -1;
    if (Reaped(pid_, &status)) {
      pid_ = -1;
      throw std::runtime_error("AppmgrdProcess: `" + CommandLine(argv) + "` exited with status " +
                               std::to_string(status) + " before listening; stderr: " + Stderr());
    }
    if (Clock::now() >= until) {
      int killed = WaitOrKill(pid_, std::chrono::milliseconds(0));
      pid_ = -1;
      throw std::runtime_error(
          "AppmgrdProcess: `" + CommandLine(argv) + "` did not write its port file within " +
          std::to_string(options_.startTimeout.count()) + " ms (killed, status " +
          std::to_string(killed) + "); stderr: " + Stderr());
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

int AppmgrdProcess::Stop(int signal) {
  if (!running()) return -1;
  ::kill(pid_, signal);
  int status = WaitOrKill(pid_, options_.stopTimeout);
  pid_ = -1;
  return status;
}

void AppmgrdProcess::Restart() {
  Stop();
  Start();
}

AppmgrdProcess::RunResult AppmgrdProcess::Run(const std::vector<std::string>& args,
                                              std::chrono::milliseconds timeout) {
  std::string dir = MakeTempDir("appmgrd-run");
  std::vector<std::string> argv = {BinaryPath()};
  argv.insert(argv.end(), args.begin(), args.end());
  RunResult result;
  try {
    pid_t pid = Spawn(argv, dir + "/stdout", dir + "/stderr");
    result.status = WaitOrKill(pid, timeout);
  } catch (...) {
    std::error_code ec;
    fs::remove_all(dir, ec);
    throw;
  }
  result.out = ReadAll(dir + "/stdout");
  result.err = ReadAll(dir + "/stderr");
  std::error_code ec;
  fs::remove_all(dir, ec);
  return result;
}
