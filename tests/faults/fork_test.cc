// fork() from a process whose threads are in the middle of calls: the child finds every lock of
// the library free (the message cache, the pools, the log, the settings) and makes a call of its
// own, on a session of its own.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "tests/session/SessionFixture.h"

namespace {

class ForkTest : public SessionFixture {
 protected:
  ForkTest() { useCache_ = true; }
};

// The child's exit status, or -1 when it was still running after `seconds` and was killed.
int WaitBounded(pid_t pid, int seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  int raw = 0;
  while (::waitpid(pid, &raw, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, &raw, 0);
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
}

TEST_F(ForkTest, AChildOfABusyProcessFindsEveryLockFreeAndMakesACallOfItsOwn) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));        // debug level 10: every call writes log lines
  ASSERT_EQ(Lookup(1).name, "bs-1");  // the pool and the cache exist

  // Four threads call all along: cache hits and misses, pool lends and returns, log lines.
  std::atomic<bool> stop{false};
  std::vector<std::thread> callers;
  for (uint64_t t = 1; t <= 4; ++t) {
    callers.emplace_back([&stop, t] {
      for (uint64_t i = 0; !stop; ++i) Lookup(t * 1000000 + i % 64);
    });
  }
  constexpr int kChildren = 40;
  int hung = 0, failed = 0;
  const auto budget = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (int c = 0; c < kChildren && std::chrono::steady_clock::now() < budget; ++c) {
    std::this_thread::sleep_for(std::chrono::milliseconds(c % 7));  // fork at varied moments
    const uint64_t id = 900000 + uint64_t(c);
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      // Not in the cache: the child reaches the server, on a session it attaches itself.
      Result r = Lookup(id);
      ::_exit(r.name == "bs-" + std::to_string(id) ? 0 : 1);
    }
    int status = WaitBounded(pid, 5);
    hung += status == -1 ? 1 : 0;
    failed += status > 0 ? 1 : 0;
  }
  stop = true;
  for (auto& th : callers) th.join();
  EXPECT_EQ(hung, 0) << "children that waited for a lock held at the fork";
  EXPECT_EQ(failed, 0) << "children whose own call failed";
}

}  // namespace
