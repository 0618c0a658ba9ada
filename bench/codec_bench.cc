// Encode and decode of a small record (GenericLookupResp4) and of a property list of 50
// entries (GenericGetPropsResp): time per record and bytes per second. Then a list answer of
// 100,000 clients (GenericListPairResp): its decode alone, and its decode with the copy into a
// caller's lists, with the heap allocations each makes per entry.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <list>
#include <new>
#include <string>
#include <vector>

#include "interfaces/Exchange.h"
#include "platform/net/XdrCodec.h"
#include "protocol/Schemas.h"

// Every heap allocation of the process, counted, so a benchmark can report how many it made.
namespace {
std::atomic<uint64_t> gAllocations{0};
}
// Out of line: inlined into callers, GCC would pair the malloc and free it sees across them and
// warn that they do not match.
__attribute__((noinline)) void* operator new(size_t n) {
  gAllocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(n == 0 ? 1 : n)) return p;
  throw std::bad_alloc();
}
__attribute__((noinline)) void operator delete(void* p) noexcept {
  std::free(p);
}
__attribute__((noinline)) void operator delete(void* p, size_t) noexcept {
  std::free(p);
}

namespace {

using appmgr::wire::Arena;
using appmgr::wire::Wire;

GenericLookupResp4 Lookup() {
  GenericLookupResp4 r;
  r.hdr.version = 2;
  r.value = 42;
  r.name = "defaultBackupSet";
  r.text = "file system backup set of client01";
  return r;
}

struct Props {
  std::vector<std::string> names, values;
  std::vector<AppMgrProps> props;
  GenericGetPropsResp resp;
  Props() {
    for (int i = 0; i < 50; ++i) {
      names.push_back("property" + std::to_string(i));
      values.push_back("value of property " + std::to_string(i));
    }
    for (int i = 0; i < 50; ++i) props.push_back({names[i].c_str(), uint64_t(i), values[i].c_str()});
    resp.hdr.version = 2;
    resp.count = 50;
    resp.props = props.data();
  }
};

template <class T>
void Encode(benchmark::State& state, const T& record) {
  std::vector<uint8_t> out(65536);
  size_t n = 0;
  for (auto _ : state) {
    appmgr::wire::Encode(Wire<T>::schema, &record, out.data(), out.size(), &n, "bench");
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(n));
  state.counters["bytes"] = double(n);
}

template <class T>
void Decode(benchmark::State& state, const T& record) {
  std::vector<uint8_t> bytes;
  appmgr::wire::EncodeRecord(record, bytes);
  Arena arena;
  for (auto _ : state) {
    T out;
    appmgr::wire::DecodeRecord(bytes.data(), bytes.size(), out, arena);
    benchmark::DoNotOptimize(out);
    arena.Reset();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
  state.counters["bytes"] = double(bytes.size());
}

void BM_EncodeLookupResp4(benchmark::State& s) { Encode(s, Lookup()); }
void BM_DecodeLookupResp4(benchmark::State& s) { Decode(s, Lookup()); }
void BM_EncodeGetProps50(benchmark::State& s) {
  Props p;
  Encode(s, p.resp);
}
void BM_DecodeGetProps50(benchmark::State& s) {
  Props p;
  Decode(s, p.resp);
}
BENCHMARK(BM_EncodeLookupResp4);
BENCHMARK(BM_DecodeLookupResp4);
BENCHMARK(BM_EncodeGetProps50);
BENCHMARK(BM_DecodeGetProps50);

// A client list as appmgrd answers it: ids 1..n, names "client-000001", ...
struct ClientList {
  static constexpr uint32_t kEntries = 100000;
  std::vector<uint64_t> ids;
  std::vector<std::string> names;
  std::vector<const char*> pointers;
  GenericListPairResp resp;
  std::vector<uint8_t> bytes;
  ClientList() {
    char name[32];
    for (uint32_t i = 1; i <= kEntries; ++i) {
      ids.push_back(i);
      std::snprintf(name, sizeof name, "client-%06u", i);
      names.emplace_back(name);
    }
    for (const std::string& n : names) pointers.push_back(n.c_str());
    resp.hdr.version = 2;
    resp.idCount = resp.nameCount = kEntries;
    resp.ids = ids.data();
    resp.names = pointers.data();
    appmgr::wire::EncodeRecord(resp, bytes);
  }
};

void ReportList(benchmark::State& state, const ClientList& list, uint64_t allocations) {
  const double entries = double(state.iterations()) * ClientList::kEntries;
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(list.bytes.size()));
  state.SetItemsProcessed(int64_t(entries));
  state.counters["bytes"] = double(list.bytes.size());
  state.counters["allocs_per_entry"] = double(allocations) / entries;
}

// The decode alone: into a zeroed record, texts and arrays in the receive arena (kept between
// messages, as a session keeps it).
void BM_DecodeClientList100k(benchmark::State& state) {
  ClientList list;
  Arena arena;
  uint64_t allocations = 0;
  for (auto _ : state) {
    GenericListPairResp out;
    uint64_t before = gAllocations.load(std::memory_order_relaxed);
    appmgr::wire::DecodeRecord(list.bytes.data(), list.bytes.size(), out, arena);
    allocations += gAllocations.load(std::memory_order_relaxed) - before;
    benchmark::DoNotOptimize(out);
    arena.Reset();
  }
  ReportList(state, list, allocations);
}
BENCHMARK(BM_DecodeClientList100k)->Unit(benchmark::kMillisecond);

// Decode and the walk of getClientList: each id and name appended to the caller's lists. The
// lists' nodes and any name too long to sit inside its string are the caller's own
// allocations; the names here fit inside.
void BM_DecodeAndCopyClientList100k(benchmark::State& state) {
  ClientList list;
  Arena arena;
  uint64_t allocations = 0;
  for (auto _ : state) {
    std::list<unsigned long> ids;
    std::list<std::string> names;
    GenericListPairResp out;
    uint64_t before = gAllocations.load(std::memory_order_relaxed);
    appmgr::wire::DecodeRecord(list.bytes.data(), list.bytes.size(), out, arena);
    appmgr::iface::AppendPairs(out, ids, names);
    allocations += gAllocations.load(std::memory_order_relaxed) - before;
    benchmark::DoNotOptimize(names);
    arena.Reset();
    state.PauseTiming();
    ids.clear();
    names.clear();
    state.ResumeTiming();
  }
  ReportList(state, list, allocations);
}
BENCHMARK(BM_DecodeAndCopyClientList100k)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
