// The server's store alone: a backup-set lookup and a property read on the demo data, each one
// read transaction, as appmgrd's handlers make them; and the list of 10,000 clients into a sink
// that only touches each row, the store's share of the list's end-to-end time.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "server/store/BackupSetStore.h"
#include "server/store/ListStore.h"
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

// A store of 10,000 clients ("client-00001", ...), made once.
appmgr::server::Store& ClientsStore() {
  static appmgr::server::Store* store = [] {
    auto dir = std::filesystem::temp_directory_path() /
               ("appmgr-list-store-bench-" + std::to_string(getpid()));
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    std::unique_ptr<appmgr::server::Store> s;
    appmgr::server::Store::Open((dir / "appmgr.db").string(), {}, &s);
    appmgr::server::Store::Transaction txn(*s, "bench", appmgr::server::Store::Transaction::kWrite);
    txn.Exec(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 10000)"
        " INSERT INTO clients (id, name, host_name) SELECT i, printf('client-%05d', i),"
        " printf('client-%05d.lab', i) FROM n");
    txn.Commit();
    return s.release();
  }();
  return *store;
}

class TouchEachRow : public appmgr::server::ListSink {
 public:
  CLmError Begin(size_t rows) override {
    rows_ = rows;
    return CLmError();
  }
  void Row(const appmgr::server::ListRow& row) override { bytes_ += row.name.size() + row.id; }
  size_t rows_ = 0, bytes_ = 0;
};

void BM_StoreClientList10k(benchmark::State& state) {
  appmgr::server::ListStore lists(ClientsStore());
  for (auto _ : state) {
    TouchEachRow sink;
    if (lists.Clients({}, sink)) state.SkipWithError("list failed");
    benchmark::DoNotOptimize(sink);
  }
  state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_StoreClientList10k)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
