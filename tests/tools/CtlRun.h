// Running the built appmgrctl as a child process, for the tests of its commands.
//
// Thread-safety: RunCtl may be called from one test thread at a time (it forks).
#pragma once

#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace appmgr_test {

struct CtlRun {
  int status = -1;  // exit code, or 128 + signal
  std::string out;
  std::string err;
};

// Runs appmgrctl (APPMGRCTL_PATH) with `args` and `input` on stdin, in our environment minus the
// variables the program and its library read, plus `env`; killed after 30 seconds.
CtlRun RunCtl(const std::vector<std::string>& args, const std::string& input = "",
              const std::map<std::string, std::string>& env = {});

// One JSON document per line of `text`.
std::vector<nlohmann::json> JsonLines(const std::string& text);

// The words joined by blanks, to name a command line in a failure.
std::string Describe(const std::vector<std::string>& args);

}  // namespace appmgr_test
