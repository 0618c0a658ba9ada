// The client-side message cache: what it keeps, what empties it, when entries expire, who may
// switch it, and the answers the server prepares for a job.
#include "session/MessageCache.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <ctime>
#include <latch>
#include <thread>

#include "platform/net/XdrCodec.h"
#include "tests/session/SessionFixture.h"

namespace {

using appmgr::msg::kBsLookup;
using appmgr::msg::kBsUpdate;

constexpr const char* kCheckLabel = "ClientSessionWrapper::checkMessageInCache";
constexpr const char* kEnableLabel = "ClientSessionWrapper::enableMessageCache";
constexpr const char* kCtorLabel = "ClientSessionWrapper::ClientSessionWrapper";

long g_now = 1700000000;
long TestClock() { return g_now; }

// The encoded key and answer of a look-up as this machine would send it.
ScriptServer::PreparedPair PreparedLookup(uint64_t id, const std::string& name) {
  GenericLookupReq4 req;
  NetMessage msg;
  msg.initRequestHeader(req.hdr);
  req.hdr.pid = 0;
  req.hdr.threadId = 0;
  req.id = id;
  GenericLookupResp4 resp;
  resp.hdr.version = 2;
  resp.value = 99;
  resp.name = name.c_str();
  ScriptServer::PreparedPair p{kBsLookup.requestId, kBsLookup.responseId, {}, {}};
  appmgr::wire::EncodeRecord(req, p.request);
  appmgr::wire::EncodeRecord(resp, p.response);
  return p;
}

class CacheTest : public SessionFixture {
 protected:
  CacheTest() { useCache_ = true; }

  static unsigned long Entries() { return CMessageCacheSingleton::Instance()->GetMessageNumberInCache(); }
  // The server's lookups, as counted so far.
  static uint64_t Sent(const ScriptServer& ch) { return ch.Count(kBsLookup.requestId); }
  // A laptop service on its own clock, starting at g_now.
  void LaptopService(const ScriptServer& ch, const std::string& more = "") {
    KPPI_Focus::setServiceProcess(true);
    CMessageCacheSingleton::SetClockForTesting(TestClock);
    g_now = 1700000000;
    Settings(ControlhostAt(ch) + "[FileSystemAgent]\nnLaptopAgent = 1\n" + more);
  }
};

TEST_F(CacheTest, ARepeatedLookupIsAnsweredFromTheCacheWithTheSameRecord) {
  ScriptServer ch;
  int64_t pidSeen = 0;
  uint64_t threadSeen = 0;
  ch.On(kBsLookup, [&](const GenericLookupReq4& req, GenericLookupResp4& resp, appmgr::server::Exchange& x) {
    pidSeen = req.hdr.pid;
    threadSeen = req.hdr.threadId;
    resp.name = x.Text("bs-" + std::to_string(req.id));
  });
  Settings(ControlhostAt(ch));
  Result first = Lookup(7), second = Lookup(7);
  EXPECT_EQ(pidSeen, getpid()) << "the key blanks the ids, the request sent carries them";
  EXPECT_EQ(threadSeen, static_cast<uint64_t>(pthread_self()));
  EXPECT_EQ(Sent(ch), 1u);
  EXPECT_EQ(second.sendStatus + second.receiveStatus, 0);
  EXPECT_EQ(appmgr::wire::DebugString(appmgr::wire::Wire<GenericLookupResp4>::schema, &first.resp) + first.name,
            appmgr::wire::DebugString(appmgr::wire::Wire<GenericLookupResp4>::schema, &second.resp) + "bs-7");
  EXPECT_EQ(ClientSessionWrapper::m_nSkippedMessageCalls.load(), 1u);
  EXPECT_EQ(Logged(kCheckLabel, 4,
                   "Message found in cache (msgId=872415871(BS_LOOKUP_REQ)), skipping server call "
                   "(total skipped calls [1] out of [2])"),
            1u);
  EXPECT_EQ(Logged("ClientSessionWrapper::getMessageFromCache", 4,
                   "Get message (msgId=872415872(BS_LOOKUP_RESP)) from cache."),
            1u);

  // What the cache holds for that entry: the key and the value, encoded, plus 64 bytes.
  auto& map = CMessageCacheSingleton::m_gMessageCacheMap;
  ASSERT_EQ(map.size(), 1u);
  unsigned long key = map.begin()->first->m_nlength, value = map.begin()->second->m_nlength;
  EXPECT_EQ(CMessageCacheSingleton::Instance()->GetMessageCacheSize(), key + value + 64);
  EXPECT_EQ(ClientSessionWrapper::m_nMaxSendMessageSize.load(), key);

  EXPECT_EQ(Lookup(8).name, "bs-8") << "another id is another key";
  EXPECT_EQ(Sent(ch), 2u);
  EXPECT_EQ(Entries(), 2u);
}

// Both threads are alive at once, so their thread ids differ.
TEST_F(CacheTest, TwoThreadsShareOneEntryBecauseProcessAndThreadAreBlanked) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  std::latch firstDone(1), secondDone(1);
  pthread_t ids[2];
  auto lookup = [&](int i, std::latch& waitFor, std::latch& done) {
    ids[i] = pthread_self();
    if (i == 1) waitFor.wait();
    EXPECT_EQ(Lookup(5).name, "bs-5");
    done.count_down();
    if (i == 0) waitFor.wait();  // alive until the other has looked up
  };
  std::thread a(lookup, 0, std::ref(secondDone), std::ref(firstDone));
  std::thread b(lookup, 1, std::ref(firstDone), std::ref(secondDone));
  a.join();
  b.join();
  ASSERT_FALSE(pthread_equal(ids[0], ids[1]));
  EXPECT_EQ(Sent(ch), 1u);
  EXPECT_EQ(Entries(), 1u);
}

TEST_F(CacheTest, MessagesAreClassifiedByIdAndBound) {
  Settings("");
  struct {
    unsigned long id;
    bool critical, noCache;
  } cases[] = {
      {0x3400027f, false, false},  // a look-up
      {0x340000ba, true, true},    // critical (and so never cached)
      {0x340000f0, false, true},   // never cached
      {0x49000068, false, true},
      {0x49000022, true, true},
      {0x34000324, false, false},  // the highest known id
      {0x34000325, true, true},    // above it: unknown, treated as critical
      {0x4900007b, true, true},
      {0x35000001, true, true},    // another subsystem
      {0x34020000, true, true},
  };
  CMessageCacheSingleton* cache = CMessageCacheSingleton::Instance();
  for (const auto& c : cases) {
    bool critical = false, noCache = false;
    cache->CheckMessageType(c.id, critical, noCache);
    EXPECT_EQ(critical, c.critical) << std::hex << c.id;
    EXPECT_EQ(noCache, c.noCache) << std::hex << c.id;
  }
  constexpr const char* kLabel = "CMessageCacheSingleton::CheckMessageType";
  EXPECT_EQ(Logged(kLabel, 4, "Message ID [889192449(UNKNOWN_MESSAGE)] from unknown subsystem [889192448]."), 1u);
  EXPECT_EQ(Logged(kLabel, 4,
                   "ATTENTION! Message ID [872416037(UNKNOWN_MESSAGE)] must be added to "
                   "\\trunkqx\\Source\\Controlhoster\\AppMgr\\Net\\CCSession. "
                   "CMessageCacheSingleton::m_nAppMgrMaxMessageNumber or  m_nSCHMaxMessageNumber "
                   "must be updated!"),
            1u);
  EXPECT_EQ(Logged("CMessageCacheSingleton::Instance", 4, "CMessageCacheSingleton Initialized."), 1u);
}

TEST_F(CacheTest, ACriticalAnswerEmptiesTheCacheAndIsNeverStored) {
  ScriptServer ch;
  ScriptLookup(ch);
  ch.Answer(kBsUpdate);
  Settings(ControlhostAt(ch));
  Lookup(1);
  Lookup(2);
  ASSERT_EQ(Entries(), 2u);
  EXPECT_EQ(Update(1), 0);
  EXPECT_EQ(Entries(), 0u);
  EXPECT_EQ(Logged("ClientSessionWrapper::setMessageInCache", 8,
                   "Critical message detected (msgId=872415418(BS_UPDATE_REQ)). Existing cache will be cleared."),
            1u);
  constexpr const char* kClear = "CMessageCacheSingleton::ClearMessageCache";
  EXPECT_EQ(Logged(kClear, 4, "Messages in the cache [2], total cache size [0]Kb."), 1u);
  EXPECT_EQ(Logged(kClear, 8, "Message cache cleaned."), 1u);
  EXPECT_EQ(Update(1), 0);
  EXPECT_EQ(ch.Count(kBsUpdate.requestId), 2u) << "a critical request is always sent";
  EXPECT_EQ(Logged(kCheckLabel, 4, "No cache message detected (msgId=872415418(BS_UPDATE_REQ)). Skipping cache check."),
            2u);
  Lookup(1);
  EXPECT_EQ(Sent(ch), 3u) << "after the clear the look-up goes out again";
}

TEST_F(CacheTest, ARequestWithoutARecordSkipsTheCacheAndIsNotSent) {
  ScriptServer ch;
  Settings(ControlhostAt(ch));
  ClientSessionWrapper wrapper(0x1a000000, false);
  std::string err;
  EXPECT_EQ(wrapper.send(kBsLookup.requestId, nullptr, sizeof(GenericLookupReq4), err), kKpErrBadArgument);
  EXPECT_EQ(Logged(kCheckLabel, 0,
                   "Message (msgId=872415871(BS_LOOKUP_REQ)) doesn't pass request data. Please validate "
                   "code with that message. Skipping cache check."),
            1u);
  EXPECT_EQ(err, "[ClientSessionWrapper::send] Request not sent. [SendXDRMessage: no record to send]");
  EXPECT_EQ(Sent(ch), 0u);
}

// The setting turns the cache off everywhere; a service keeps it only on a laptop.
TEST_F(CacheTest, WrappersSettleWhoUsesTheCache) {
  ScriptServer ch;
  ScriptLookup(ch);
  struct {
    const char* name;
    bool service;
    std::string ini;
    uint64_t sent;  // of two equal look-ups
    const char* logged;
    size_t times;  // by the two wrappers
  } cases[] = {
      {"a tool", false, "", 1, "", 0},
      {"switched off", false, "[EventManager]\nnDisableAppMessageCache = 1\n", 2,
       "App message cache disabled as nDisableAppMessageCache set.", 2},
      {"a service", true, "", 2, "App message cache is disabled as this is a service process and not a laptop.", 1},
      {"a service on a laptop", true, "[FileSystemAgent]\nnLaptopAgent = 1\n", 1,
       "App message cache is enabled with expiration time [5]minutes as this is a service process on a laptop.", 2},
  };
  for (const auto& c : cases) {
    Reset();
    ch.ResetCounts();
    log_.Clear();
    KPPI_Focus::setServiceProcess(c.service);
    Settings(ControlhostAt(ch) + c.ini);
    Lookup(1);
    Lookup(1);
    EXPECT_EQ(Sent(ch), c.sent) << c.name;
    EXPECT_EQ(ClientSessionWrapper::m_gbUseCacheMap.load(), c.sent == 1) << c.name;
    EXPECT_EQ(Logged(kCtorLabel, 4, c.logged), c.times) << c.name;
  }
}

// Entries the server prepared carry the time stamp 0: already expired at their first look-up.
TEST_F(CacheTest, InALaptopServiceEntriesLiveForTheConfiguredMinutes) {
  ScriptServer ch;
  ScriptLookup(ch);
  ch.AnswerCacheFill({PreparedLookup(11, "prepared-11")});
  char stored[81] = {};  // when the entry was made, as the expiry line shows it
  time_t t = 1700000000;  // the clock LaptopService sets
  struct tm local {};
  strftime(stored, sizeof stored, "%m/%d %X", localtime_r(&t, &local));
  for (unsigned long minutes : {5ul, 1ul}) {
    Reset();
    ch.ResetCounts();
    log_.Clear();
    LaptopService(ch, minutes == 5 ? "" : "[EventManager]\nnServiceCacheExpirationTimeMinutes = 1\n");
    Lookup(1);
    g_now += long(minutes) * 60;  // exactly the life of an entry: still alive
    Lookup(1);
    EXPECT_EQ(Sent(ch), 1u) << minutes;
    g_now += 1;  // one second more
    Lookup(1);
    EXPECT_EQ(Sent(ch), 2u) << minutes;
    std::string expiry = "Clearing message (msgId=872415871(BS_LOOKUP_REQ) populated at ";
    expiry.append(stored).append(") in cache because of expiration time is [");
    expiry.append(std::to_string(minutes)).append("] minutes");
    EXPECT_EQ(Logged("CMessageCacheSingleton::CheckMessage", 4, expiry), 1u) << minutes;
  }
  ClientSessionWrapper wrapper(0x1a000000, false);
  EXPECT_TRUE(wrapper.enableServerMessageCache(1));
  EXPECT_EQ(Lookup(11).name, "bs-11");
}

TEST_F(CacheTest, SwitchingTheCacheOffEmptiesIt) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  auto twice = [] { Lookup(1), Lookup(1); };
  Lookup(1);
  ClientSessionWrapper::enableMessageCache(false);
  EXPECT_EQ(Entries(), 0u);
  EXPECT_EQ(Logged(kEnableLabel, 1, "Message cache disabled."), 1u);
  twice();
  EXPECT_EQ(Sent(ch), 3u);
  ClientSessionWrapper::enableMessageCache(true);
  EXPECT_EQ(Logged(kEnableLabel, 1, "Message cache enabled."), 1u);
  twice();
  EXPECT_EQ(Sent(ch), 4u);

  // A service that is not on a laptop cannot switch it on.
  KPPI_Focus::setServiceProcess(true);
  ClientSessionWrapper::enableMessageCache(true);
  EXPECT_FALSE(ClientSessionWrapper::m_gbUseCacheMap.load());
  EXPECT_EQ(Logged(kEnableLabel, 1, "EnableAppMgrMessageCache is not valid for client service."), 1u);

  // Until a wrapper has read the settings, a process does not know it runs on a laptop: a
  // laptop service that switches the cache on first is refused, and the refusal stands.
  Reset();
  ch.ResetCounts();
  LaptopService(ch);
  ClientSessionWrapper::enableMessageCache(true);
  EXPECT_EQ(Logged(kEnableLabel, 1, "EnableAppMgrMessageCache is not valid for client service."), 2u);
  twice();
  EXPECT_EQ(Sent(ch), 2u);
}

// The answers the server prepared are served without a request; one under another id than the
// one asked for, or one that does not decode, fails the receive that was to take it.
TEST_F(CacheTest, ServerPreparedAnswersAreServedWithoutARequest) {
  ScriptServer ch;
  ScriptLookup(ch);
  // The longer answer is larger than any request: the fill measures answers.
  ScriptServer::PreparedPair longer = PreparedLookup(12, std::string(300, 'p')), broken = PreparedLookup(13, "x");
  broken.response.resize(8);  // not a GenericLookupResp4
  ch.AnswerCacheFill({PreparedLookup(11, "prepared-11"), longer, broken});
  Settings(ControlhostAt(ch));
  {
    ClientSessionWrapper wrapper(0x1a000000, false);
    EXPECT_TRUE(wrapper.enableServerMessageCache(4242));
  }
  EXPECT_EQ(ClientSessionWrapper::m_nJobId.load(), 4242);
  EXPECT_EQ(ClientSessionWrapper::m_nMaxSendMessageSize.load(), longer.response.size());
  constexpr const char* kLabel = "ClientSessionWrapper::enableServerMessageCache";
  EXPECT_EQ(Logged(kLabel, 4, "Message [872415871(BS_LOOKUP_REQ)][872415872(BS_LOOKUP_RESP)] inserted successfully in the cache."),
            3u);
  EXPECT_EQ(Logged(kLabel, 4, "Message cache enabled and populated successfully."), 1u);
  Result r = Lookup(11);
  EXPECT_EQ(r.name + std::to_string(r.resp.value), "prepared-1199");
  EXPECT_EQ(Lookup(14).name, "bs-14");
  EXPECT_EQ(Sent(ch), 1u);

  struct {
    uint64_t id;
    unsigned long askedFor;
    const char* logged;
  } cases[] = {
      {13, kBsLookup.responseId,
       "Warning. Failed to convert message [872415871(BS_LOOKUP_REQ)] from cache. newlength = [8], "
       "pOutputMessage->m_nlength = [8], recvBuffer.len = [56]."},
      {11, kBsLookup.requestId,
       "Incorrect message id [872415872(BS_LOOKUP_RESP)] found in the cache for requested message "
       "[872415871(BS_LOOKUP_REQ)]."},
  };
  for (const auto& c : cases) {
    ClientSessionWrapper wrapper(0x1a000000, false);
    r = LookupOn(wrapper, c.id, c.askedFor);
    EXPECT_EQ(r.sendStatus, 0);
    EXPECT_EQ(r.receiveStatus, -1);
    EXPECT_EQ(r.error, "[ClientSessionWrapper::receive] Failed to get message from cache.");
    EXPECT_EQ(Logged("ClientSessionWrapper::getMessageFromCache", 1, c.logged), 1u) << c.logged;
  }
  EXPECT_EQ(Sent(ch), 1u);
}

TEST_F(CacheTest, AServerFillThatFailsSaysWhyAndAnswersFalse) {
  ScriptServer ch;
  Settings(ControlhostAt(ch));
  ch.On(appmgr::msg::kEnableServerCache,
        [](const EnableServerCacheReq&, EnableServerCacheResp& resp, appmgr::server::Exchange& x) {
          resp.xmlText = x.Text("<not a message>");
        });
  {
    ClientSessionWrapper wrapper(0x1a000000, false);
    EXPECT_FALSE(wrapper.enableServerMessageCache(1));
  }
  constexpr const char* kLabel = "ClientSessionWrapper::enableServerMessageCache";
  EXPECT_EQ(Logged(kLabel, kError, "Failed to unserialize App::EnableAppServerCacheResp."), 1u);
  EXPECT_EQ(Logged(kLabel, kError, "Failed to Enable Server Message Cache."), 1u);

  ClientSessionWrapper::enableMessageCache(false);
  ClientSessionWrapper wrapper(0x1a000000, false);
  EXPECT_FALSE(wrapper.enableServerMessageCache(1)) << "a cache that is off is not filled";
}

}  // namespace
