#include "tests/tools/CtlRun.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "tests/support/TestSettings.h"

extern char** environ;

namespace appmgr_test {

CtlRun RunCtl(const std::vector<std::string>& args, const std::string& input,
              const std::map<std::string, std::string>& env) {
  namespace fs = std::filesystem;
  std::string dir = (fs::temp_directory_path() / "appmgrctl-run-XXXXXX").string();
  if (!mkdtemp(dir.data())) throw std::runtime_error("mkdtemp failed");
  const std::string in = dir + "/in", out = dir + "/out", err = dir + "/err";
  std::ofstream(in) << input;

  std::vector<std::string> argv = {APPMGRCTL_PATH};
  argv.insert(argv.end(), args.begin(), args.end());
  std::vector<std::string> envp;
  for (char** e = environ; *e; ++e) {
    std::string entry = *e;
    if (entry.starts_with("APPMGR_LIBRARY=") || entry.starts_with("APPMGR_SETTINGS")) continue;
    envp.push_back(entry);
  }
  for (const auto& [key, value] : env) envp.push_back(key + "=" + value);
  std::vector<char*> argvp, envpp;
  for (std::string& a : argv) argvp.push_back(a.data());
  for (std::string& e : envp) envpp.push_back(e.data());
  argvp.push_back(nullptr);
  envpp.push_back(nullptr);

  pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) {
    int i = open(in.c_str(), O_RDONLY);
    int o = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int e = open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (i < 0 || o < 0 || e < 0) _exit(126);
    dup2(i, 0);
    dup2(o, 1);
    dup2(e, 2);
    execve(argvp[0], argvp.data(), envpp.data());
    _exit(127);
  }
  CtlRun run;
  int raw = 0;
  auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (waitpid(pid, &raw, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > until) {
      kill(pid, SIGKILL);
      waitpid(pid, &raw, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
  run.out = ReadFileText(out);
  run.err = ReadFileText(err);
  std::error_code ec;
  fs::remove_all(dir, ec);
  return run;
}

std::vector<nlohmann::json> JsonLines(const std::string& text) {
  std::vector<nlohmann::json> docs;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) docs.push_back(nlohmann::json::parse(line));
  return docs;
}

std::string Describe(const std::vector<std::string>& args) {
  std::string text;
  for (const std::string& a : args) text += (text.empty() ? "" : " ") + a;
  return text;
}

}  // namespace appmgr_test
