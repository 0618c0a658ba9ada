// The server's store alone: a backup-set lookup and a property read on the demo data, each one
// read transaction, as appmgrd's handlers make them.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "server/store/BackupSetStore.h"
#include "server/store/PropertyStore.h"
#include "server/store/Store.h"

namespace {

appmgr::server::Store& DemoStore() {
  static appmgr::server::Store* store = [] {
    auto dir = std::filesystem::temp_directory_path() / ("appmgr-store-bench-" + std::to_string(getpid()));
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    std::unique_ptr<appmgr::server::Store> s;
    appmgr::server::Store::Open((dir / "appmgr.db").string(), {}, &s);
    s->LoadFixture(APPMGR_SOURCE_DIR "/server/fixtures/demo.json");
    return s.release();
  }();
  return *store;
}

void BM_StoreBackupSetLookup(benchmark::State& state) {
  appmgr::server::BackupSetStore bs(DemoStore());
  appmgr::server::BackupSetInfo info;
  for (auto _ : state) {
    if (bs.Lookup(102, &info)) state.SkipWithError("lookup failed");
    benchmark::DoNotOptimize(info);
  }
}
BENCHMARK(BM_StoreBackupSetLookup);

void BM_StorePropertyRead(benchmark::State& state) {
  appmgr::server::PropertyStore props(DemoStore());
  std::vector<appmgr::server::Property> out;
  for (auto _ : state) {
    props.Get(appmgr::server::EntityKind::kBackupSet, 102, 0, &out);
    benchmark::DoNotOptimize(out);
  }
}
BENCHMARK(BM_StorePropertyRead);

}  // namespace

BENCHMARK_MAIN();
