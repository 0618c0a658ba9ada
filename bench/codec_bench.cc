// Encode and decode of a small record (GenericLookupResp4) and of a property list of 50
// entries (GenericGetPropsResp): time per record and bytes per second.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "platform/net/XdrCodec.h"
#include "protocol/Schemas.h"

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

}  // namespace

BENCHMARK_MAIN();
