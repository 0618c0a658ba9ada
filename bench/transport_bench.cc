// One GenericLookupReq4/GenericLookupResp4 round trip through CKpNetwork against the server
// core, beside a plain TCP ping-pong of frames of exactly the same sizes on loopback: the
// difference is what the session layer (encode, frame, decode, dispatch) costs.
// Each benchmark reports the median round trip in microseconds ("median_us").
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "bench/BenchSupport.h"
#include "platform/net/CKpNetwork.h"
#include "platform/net/Socket.h"
#include "platform/net/XdrCodec.h"
#include "protocol/Messages.h"
#include "server/core/Server.h"
#include "session/ClientSessionWrapper.h"
#include "session/MessageCache.h"
#include "session/NetMessage.h"

namespace {

using appmgr::msg::kBsLookup;
using appmgr::net::Deadline;

void BM_SessionRoundTrip(benchmark::State& state) {
  LookupServer& server = LookupServer::Get();
  CKpNetwork session;
  bool t = false;
  if (session.Attach_RemoteService(server.connect, "AppManager network access", "bench", 10, t)) {
    state.SkipWithError("attach failed");
    return;
  }
  GenericLookupReq4 req;
  req.hdr.version = 2;
  req.hdr.hostName = "benchhost";
  req.id = 42;
  GenericLookupResp4 resp;
  kpsDatabuf_v2 out, in;
  out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
  in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
  Latencies lat;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    session.SendXDRMessage(kBsLookup.requestId, &out, 0, -1, t);
    unsigned long id = kBsLookup.responseId;
    if (session.ReceiveXDRMessage(&id, &in, nullptr, 0, -1, t)) {
      state.SkipWithError("receive failed");
      break;
    }
    session.FreeReceivedMessage(id, &in);
    lat.Add(start);
  }
  lat.Report(state);
}
BENCHMARK(BM_SessionRoundTrip)->UseRealTime();

// One lookup as an interface operation makes it: NetMessage, a ClientSessionWrapper that
// borrows from the process pool, send, receive, header check. Non-zero on failure.
int LookupOperation(uint64_t id, std::string& err) {
  GenericLookupReq4 req;
  GenericLookupResp4 resp;
  NetMessage msg;
  ClientSessionWrapper wrapper(0x1a000000, false);
  msg.initRequestHeader(req.hdr);
  req.id = id;
  if (int rc = wrapper.send(kBsLookup.requestId, &req, sizeof req, err)) return rc;
  if (int rc = wrapper.receive(kBsLookup.responseId, &resp, sizeof resp, err)) return rc;
  benchmark::DoNotOptimize(resp.value);
  return msg.verifyResponseHeader(resp.hdr);
}

// The lookup as an operation, every call reaching the server.
void BM_WrapperRoundTrip(benchmark::State& state) {
  LookupServer& server = LookupServer::Get();
  PointSettingsAt(server);
  static uint64_t nextId = 1;
  ClientSessionWrapper::enableMessageCache(false);  // every call goes to the server
  Latencies lat;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    std::string err;
    if (LookupOperation(nextId++, err)) {  // never the same look-up twice
      state.SkipWithError(err.c_str());
      break;
    }
    lat.Add(start);
  }
  lat.Report(state);
  ClientSessionWrapper::enableMessageCache(true);
}
BENCHMARK(BM_WrapperRoundTrip)->UseRealTime();

// Fills the client-side cache with `n` look-ups (ids 1000000..), once.
void FillCache(int n) {
  static bool filled = false;
  if (filled) return;
  filled = true;
  for (int i = 0; i < n; ++i) {
    std::string err;
    LookupOperation(1000000 + uint64_t(i), err);
  }
}

// A look-up answered from the cache, 10,000 entries in it: send and receive on one wrapper.
void BM_CacheHitSendReceive(benchmark::State& state) {
  LookupServer& server = LookupServer::Get();
  PointSettingsAt(server);
  FillCache(10000);
  ClientSessionWrapper wrapper(0x1a000000, false);
  GenericLookupReq4 req;
  NetMessage msg;
  msg.initRequestHeader(req.hdr);
  req.id = 1000000 + 4321;
  uint64_t before = ClientSessionWrapper::m_nSkippedMessageCalls;
  Latencies lat;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    GenericLookupResp4 resp;
    std::string err;
    wrapper.send(kBsLookup.requestId, &req, sizeof req, err);
    wrapper.receive(kBsLookup.responseId, &resp, sizeof resp, err);
    benchmark::DoNotOptimize(resp.value);
    lat.Add(start);
  }
  lat.Report(state);
  if (ClientSessionWrapper::m_nSkippedMessageCalls - before < uint64_t(state.iterations())) {
    state.SkipWithError("not answered from the cache");
  }
  state.counters["entries"] = double(CMessageCacheSingleton::Instance()->GetMessageNumberInCache());
}
BENCHMARK(BM_CacheHitSendReceive)->UseRealTime();

// The same hit as a whole operation: wrapper (pool lend and return), header, send, receive.
void BM_CacheHitOperation(benchmark::State& state) {
  LookupServer& server = LookupServer::Get();
  PointSettingsAt(server);
  FillCache(10000);
  Latencies lat;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    std::string err;
    LookupOperation(1000000 + 4321, err);
    lat.Add(start);
  }
  lat.Report(state);
}
BENCHMARK(BM_CacheHitOperation)->UseRealTime();

void BM_PlainTcpPingPong(benchmark::State& state) {
  size_t in = 0, out = 0;
  LookupFrameSizes(&in, &out);
  RunPingPong(state, in, out);
}
BENCHMARK(BM_PlainTcpPingPong)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
