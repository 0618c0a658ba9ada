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

// An attached CKpNetwork session that looks up one backup set per round trip.
class SessionLookup {
 public:
  explicit SessionLookup(const LookupServer& server) {
    bool t = false;
    attached_ = !session_.Attach_RemoteService(server.connect, "AppManager network access", "bench", 10, t).IsError();
    req_.hdr.version = 2;
    req_.hdr.hostName = "benchhost";
    req_.id = 42;
    out_.setExternalBuffer(reinterpret_cast<char*>(&req_), sizeof req_);
    in_.setExternalBuffer(reinterpret_cast<char*>(&resp_), sizeof resp_);
  }
  bool attached() const { return attached_; }
  // False when the exchange failed.
  bool RoundTrip() {
    bool t = false;
    if (session_.SendXDRMessage(kBsLookup.requestId, &out_, 0, -1, t).IsError()) return false;
    unsigned long id = kBsLookup.responseId;
    if (session_.ReceiveXDRMessage(&id, &in_, nullptr, 0, -1, t).IsError()) return false;
    session_.FreeReceivedMessage(id, &in_);
    return true;
  }

 private:
  CKpNetwork session_;
  bool attached_ = false;
  GenericLookupReq4 req_;
  GenericLookupResp4 resp_;
  kpsDatabuf_v2 out_, in_;
};

void BM_SessionRoundTrip(benchmark::State& state) {
  SessionLookup session(LookupServer::Get());
  if (!session.attached()) {
    state.SkipWithError("attach failed");
    return;
  }
  Latencies lat;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (!session.RoundTrip()) {
      state.SkipWithError("round trip failed");
      break;
    }
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

// The bare session, the wrapper operation and the plain ping-pong taken in turn, one of each per
// iteration, so that all three meet the same moments of a noisy machine. The ratios of the
// medians are the figures to compare: "session_vs_pingpong" and "wrapper_vs_session".
void BM_RoundTripsInterleaved(benchmark::State& state) {
  LookupServer& server = LookupServer::Get();
  PointSettingsAt(server);
  SessionLookup session(server);
  if (!session.attached()) {
    state.SkipWithError("attach failed");
    return;
  }
  size_t in = 0, out = 0;
  LookupFrameSizes(&in, &out);
  PingPong pingPong(in, out);
  ClientSessionWrapper::enableMessageCache(false);
  static uint64_t nextId = uint64_t{1} << 40;
  Latencies bare, wrapped, plain;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (!session.RoundTrip()) {
      state.SkipWithError("session round trip failed");
      break;
    }
    bare.Add(start);
    start = std::chrono::steady_clock::now();
    std::string err;
    if (LookupOperation(nextId++, err)) {
      state.SkipWithError(err.c_str());
      break;
    }
    wrapped.Add(start);
    start = std::chrono::steady_clock::now();
    if (!pingPong.RoundTrip()) {
      state.SkipWithError("ping-pong failed");
      break;
    }
    plain.Add(start);
  }
  ClientSessionWrapper::enableMessageCache(true);
  double sessionUs = bare.Median(), wrapperUs = wrapped.Median(), pingUs = plain.Median();
  bare.Report(state, "session_");
  wrapped.Report(state, "wrapper_");
  plain.Report(state, "pingpong_");
  if (pingUs > 0 && sessionUs > 0) {
    state.counters["session_vs_pingpong"] = sessionUs / pingUs;
    state.counters["wrapper_vs_session"] = wrapperUs / sessionUs;
  }
}
BENCHMARK(BM_RoundTripsInterleaved)->UseRealTime();

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
