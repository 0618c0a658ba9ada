// AppmgrdProcess: the real appmgrd program as a child process, for end-to-end tests.
//
//   AppmgrdProcess::Options o;
//   o.fixture = AppmgrdProcess::DemoFixture();
//   AppmgrdProcess server(o);              // listening on return, or it threw
//   CKpNetwork s; s.Attach_RemoteService(server.connectString(), ...);
//   server.Restart();                      // stop, start again: same data folder, same port
//   EXPECT_EQ(server.Stop(), 0);           // SIGTERM; the exit status
//
// Each object owns a private temporary folder holding the data folder (unless Options names
// one), the log folder, the port file and the child's stdout and stderr; the destructor stops
// the child and removes the folder. Start runs appmgrd with --port 0 (or the port of the last
// run, after a Restart) and --port-file, and waits, bounded, for the port file; when the child
// exits or the time runs out first, it is killed and reaped, and Start throws
// std::runtime_error with the command line, the exit status and what the child wrote on stderr.
//
// No leaked children: Stop sends SIGTERM, waits (bounded), then sends SIGKILL and reaps; the
// destructor calls Stop. The child is also sent SIGKILL by the kernel when the thread that
// started it ends (PR_SET_PDEATHSIG), so a test that crashes leaves no server behind. Start and
// Restart therefore belong on a thread that outlives the child (a test's own thread).
//
// Thread-safety: none; one test thread drives it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

class AppmgrdProcess {
 public:
  struct Options {
    std::string fixture;  // --fixture; empty: none
    std::string dataDir;  // empty: a fresh folder inside the private folder
    int logLevel = 4;
    std::vector<std::string> extraArgs;  // appended to the command line
    std::chrono::milliseconds startTimeout{10000};
    std::chrono::milliseconds stopTimeout{10000};
  };

  // Starts appmgrd; throws std::runtime_error when it does not come up.
  explicit AppmgrdProcess(Options options);
  AppmgrdProcess();
  ~AppmgrdProcess();
  AppmgrdProcess(const AppmgrdProcess&) = delete;
  AppmgrdProcess& operator=(const AppmgrdProcess&) = delete;

  unsigned port() const { return port_; }
  // "127.0.0.1:<port>": a host string that carries its port.
  std::string host() const;
  // The connect string of MangleHostName for this server.
  std::string connectString(const std::string& client = "ch01") const;
  const std::string& dataDir() const { return dataDir_; }
  std::string logPath() const { return dir_ + "/log/appmgrd.log"; }
  // What the child wrote on stdout and stderr so far.
  std::string Stdout() const;
  std::string Stderr() const;
  bool running() const { return pid_ > 0; }
  pid_t pid() const { return pid_; }

  // Starts the program when it is not running; throws std::runtime_error on failure.
  void Start();
  // Stops the program (SIGTERM, then SIGKILL after stopTimeout) and returns its exit status:
  // the exit code, or 128 + the signal that ended it; -1 when it was not running.
  int Stop(int signal = SIGTERM);
  // Stop, then Start on the same data folder and the same port.
  void Restart();

  // The appmgrd program these tests run.
  static std::string BinaryPath();
  // The demo fixture of the source tree.
  static std::string DemoFixture();

  // Runs appmgrd with `args` to its end (killed after `timeout`) and returns what it did.
  struct RunResult {
    int status = -1;  // as Stop returns it
    std::string out;
    std::string err;
  };
  static RunResult Run(const std::vector<std::string>& args,
                       std::chrono::milliseconds timeout = std::chrono::milliseconds(10000));

 private:
  Options options_;
  std::string dir_;  // private folder
  std::string dataDir_;
  pid_t pid_ = -1;
  unsigned port_ = 0;
};
