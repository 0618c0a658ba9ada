// Cost of a debug line below the configured level (one comparison, never formatted) and of a
// line that is formatted and written to the log file.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/base/EvDebug.h"

namespace {

void Configure(int level) {
  static const std::string dir =
      (std::filesystem::temp_directory_path() / ("appmgr-bench-log-" + std::to_string(getpid())))
          .string();
  EvLogConfig c;
  c.directory = dir;
  c.fileName = "bench.log";
  c.level = level;
  c.maxFileBytes = 64u << 20;
  c.maxFiles = 1;
  EvLog::Configure(c);
}

void BM_DisabledDebugLine(benchmark::State& state) {
  Configure(1);
  EvEvent ev("Bench::disabled");
  unsigned long id = 0x3400027f;
  for (auto _ : state) {
    ev.Debug(4, "Entry(msgId=%d(%s))", static_cast<int>(id), "BS_LOOKUP_REQ");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_DisabledDebugLine);

void BM_DisabledDebugLineGuarded(benchmark::State& state) {
  Configure(1);
  EvEvent ev("Bench::guarded");
  for (auto _ : state) {
    if (EvLog::On(4)) ev.Debug(4, "Entry(msgId=%d(%s))", 1, "X");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_DisabledDebugLineGuarded);

void BM_WrittenDebugLine(benchmark::State& state) {
  Configure(5);
  EvEvent ev("Bench::written");
  unsigned long id = 0x3400027f;
  for (auto _ : state) {
    ev.Debug(4, "Entry(msgId=%d(%s))", static_cast<int>(id), "BS_LOOKUP_REQ");
  }
  std::filesystem::remove_all(std::filesystem::path(EvLog::FilePath()).parent_path());
}
BENCHMARK(BM_WrittenDebugLine);

}  // namespace

BENCHMARK_MAIN();
