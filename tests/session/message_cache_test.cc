// The client-side message cache: what it keeps, what empties it, when entries expire, and the
// answers the server prepares for a job.
#include "session/MessageCache.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/net/XdrCodec.h"
#include "tests/session/SessionFixture.h"

namespace {

using appmgr::msg::kBsLookup;
using appmgr::msg::kBsUpdate;

long g_now = 1700000000;
long TestClock() { return g_now; }

class CacheTest : public SessionFixture {
 protected:
  CacheTest() { useCache_ = true; }

  // The BS update: a critical message.
  static int Update(uint64_t id) {
    GenericUpdateReq2 req;
    GenericResp resp;
    NetMessage msg;
    ClientSessionWrapper wrapper(0x1a000000, false);
    msg.initRequestHeader(req.hdr);
    req.id = id;
    req.name = "renamed";
    std::string err;
    if (int rc = wrapper.send(kBsUpdate.requestId, &req, sizeof req, err)) return rc;
    if (int rc = wrapper.receive(kBsUpdate.responseId, &resp, sizeof resp, err)) return rc;
    return msg.verifyResponseHeader(resp.hdr);
  }
  static unsigned long Entries() { return CMessageCacheSingleton::Instance()->GetMessageNumberInCache(); }
};

TEST_F(CacheTest, ARepeatedLookupIsAnsweredFromTheCacheWithTheSameRecord) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  Result first = Lookup(7);
  Result second = Lookup(7);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 1u);
  EXPECT_EQ(second.sendStatus, 0);
  EXPECT_EQ(second.receiveStatus, 0);
  EXPECT_EQ(second.name, "bs-7");
  EXPECT_EQ(appmgr::wire::DebugString(appmgr::wire::Wire<GenericLookupResp4>::schema, &first.resp),
            appmgr::wire::DebugString(appmgr::wire::Wire<GenericLookupResp4>::schema, &second.resp));
  EXPECT_EQ(ClientSessionWrapper::m_nSkippedMessageCalls.load(), 1u);
  EXPECT_EQ(log_.Count("Message found in cache (msgId=872415871(BS_LOOKUP_REQ)), skipping server call "
                       "(total skipped calls [1] out of [2])"),
            1u);
  EXPECT_EQ(log_.Count("Get message (msgId=872415872(BS_LOOKUP_RESP)) from cache."), 1u);
  // Another id is another key.
  EXPECT_EQ(Lookup(8).name, "bs-8");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
  EXPECT_EQ(Entries(), 2u);
}

TEST_F(CacheTest, TwoThreadsShareOneEntryBecauseProcessAndThreadAreBlanked) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  std::thread([] { EXPECT_EQ(Lookup(5).name, "bs-5"); }).join();
  std::thread([] { EXPECT_EQ(Lookup(5).name, "bs-5"); }).join();
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 1u);
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
  EXPECT_EQ(log_.Count("Message ID [889192449(UNKNOWN_MESSAGE)] from unknown subsystem [889192448]."), 1u);
  EXPECT_EQ(log_.Count("ATTENTION! Message ID [872416037(UNKNOWN_MESSAGE)] must be added to "
                       "\\trunkqx\\Source\\Controlhoster\\AppMgr\\Net\\CCSession. "
                       "CMessageCacheSingleton::m_nAppMgrMaxMessageNumber or  m_nSCHMaxMessageNumber "
                       "must be updated!"),
            1u);
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
  EXPECT_EQ(log_.Count("Critical message detected (msgId=872415418(BS_UPDATE_REQ)). Existing cache will be cleared."), 1u);
  EXPECT_EQ(log_.Count("Messages in the cache [2], total cache size [0]Kb."), 1u);
  EXPECT_EQ(Update(1), 0);
  EXPECT_EQ(ch.Count(kBsUpdate.requestId), 2u) << "a critical request is always sent";
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 3u) << "after the clear the look-up goes out again";
}

TEST_F(CacheTest, SizeAccountingCountsBothLengthsAndSixtyFourPerEntry) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  Lookup(1);
  // What the cache holds for that entry: the key and the value, encoded.
  unsigned long size = CMessageCacheSingleton::Instance()->GetMessageCacheSize();
  auto& map = CMessageCacheSingleton::m_gMessageCacheMap;
  ASSERT_EQ(map.size(), 1u);
  EXPECT_EQ(size, map.begin()->first->m_nlength + map.begin()->second->m_nlength + 64);
  EXPECT_EQ(ClientSessionWrapper::m_nMaxSendMessageSize.load(), map.begin()->first->m_nlength);
}

TEST_F(CacheTest, DisabledBySettingNoWrapperUsesTheCache) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch) + "[EventManager]\nnDisableAppMessageCache = 1\n");
  Lookup(1);
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
  EXPECT_EQ(Entries(), 0u);
  EXPECT_EQ(log_.Count("App message cache disabled as nDisableAppMessageCache set."), 2u);
  EXPECT_FALSE(ClientSessionWrapper::m_gbUseCacheMap.load());
}

TEST_F(CacheTest, AServiceCachesOnlyOnALaptopAndThenForItsMinutes) {
  ScriptServer ch;
  ScriptLookup(ch);
  KPPI_Focus::setServiceProcess(true);
  Settings(ControlhostAt(ch));
  Lookup(1);
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
  EXPECT_EQ(log_.Count("App message cache is disabled as this is a service process and not a laptop."), 1u);

  Reset();
  KPPI_Focus::setServiceProcess(true);
  CMessageCacheSingleton::SetClockForTesting(TestClock);
  Settings(ControlhostAt(ch) + "[FileSystemAgent]\nnLaptopAgent = 1\n");
  ch.ResetCounts();
  g_now = 1700000000;
  Lookup(1);
  EXPECT_EQ(log_.Count("App message cache is enabled with expiration time [5]minutes as this is a "
                       "service process on a laptop."),
            1u);
  g_now += 300;  // five minutes: still alive
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 1u);
  g_now += 1;  // 301 seconds after it was stored
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
  EXPECT_EQ(log_.CountContaining("Clearing message (msgId=872415871(BS_LOOKUP_REQ) populated at "), 1u);
  EXPECT_EQ(log_.CountContaining(") in cache because of expiration time is [5] minutes"), 1u);
}

TEST_F(CacheTest, TheExpirationMinutesComeFromTheSettings) {
  ScriptServer ch;
  ScriptLookup(ch);
  KPPI_Focus::setServiceProcess(true);
  CMessageCacheSingleton::SetClockForTesting(TestClock);
  Settings(ControlhostAt(ch) + "[FileSystemAgent]\nnLaptopAgent = 1\n[EventManager]\n"
           "nServiceCacheExpirationTimeMinutes = 1\n");
  g_now = 1700000000;
  Lookup(1);
  g_now += 61;
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
  EXPECT_EQ(ClientSessionWrapper::m_gnServiceCacheExpirationTime.load(), 1u);
}

TEST_F(CacheTest, SwitchingTheCacheOffEmptiesIt) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  Lookup(1);
  ClientSessionWrapper::enableMessageCache(false);
  EXPECT_EQ(Entries(), 0u);
  EXPECT_EQ(log_.Count("Message cache disabled."), 1u);
  Lookup(1);
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 3u);
  ClientSessionWrapper::enableMessageCache(true);
  Lookup(1);
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 4u);

  // A service that is not on a laptop cannot switch it on.
  KPPI_Focus::setServiceProcess(true);
  ClientSessionWrapper::enableMessageCache(true);
  EXPECT_FALSE(ClientSessionWrapper::m_gbUseCacheMap.load());
  EXPECT_EQ(log_.Count("EnableAppMgrMessageCache is not valid for client service."), 1u);
}

// Until a wrapper has read the settings, the process does not know it runs on a laptop: a
// service that switches the cache on first is refused, and the refusal stands.
TEST_F(CacheTest, ALaptopServiceThatSwitchesTheCacheOnBeforeAnyCallIsRefused) {
  ScriptServer ch;
  ScriptLookup(ch);
  KPPI_Focus::setServiceProcess(true);
  Settings(ControlhostAt(ch) + "[FileSystemAgent]\nnLaptopAgent = 1\n");
  ClientSessionWrapper::enableMessageCache(true);
  EXPECT_EQ(Logged("ClientSessionWrapper::enableMessageCache", 1,
                   "EnableAppMgrMessageCache is not valid for client service."),
            1u);
  Lookup(1);
  Lookup(1);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 2u);
}

// The encoded key and answer of a look-up as this machine would send it.
ScriptServer::PreparedPair PreparedLookup(uint64_t id, const char* name) {
  GenericLookupReq4 req;
  NetMessage msg;
  msg.initRequestHeader(req.hdr);
  req.hdr.pid = 0;
  req.hdr.threadId = 0;
  req.id = id;
  GenericLookupResp4 resp;
  resp.hdr.version = 2;
  resp.value = 99;
  resp.name = name;
  ScriptServer::PreparedPair p{kBsLookup.requestId, kBsLookup.responseId, {}, {}};
  appmgr::wire::EncodeRecord(req, p.request);
  appmgr::wire::EncodeRecord(resp, p.response);
  return p;
}

TEST_F(CacheTest, ServerPreparedAnswersAreServedWithoutARequest) {
  ScriptServer ch;
  ScriptLookup(ch);
  ch.AnswerCacheFill({PreparedLookup(11, "prepared-11"), PreparedLookup(12, "prepared-12")});
  Settings(ControlhostAt(ch));
  {
    ClientSessionWrapper wrapper(0x1a000000, false);
    EXPECT_TRUE(wrapper.enableServerMessageCache(4242));
  }
  EXPECT_EQ(ClientSessionWrapper::m_nJobId.load(), 4242);
  EXPECT_EQ(log_.Count("Message [872415871(BS_LOOKUP_REQ)][872415872(BS_LOOKUP_RESP)] inserted successfully in the cache."), 2u);
  EXPECT_EQ(log_.Count("Message cache enabled and populated successfully."), 1u);
  Result r = Lookup(12);
  EXPECT_EQ(r.name, "prepared-12");
  EXPECT_EQ(r.resp.value, 99);
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 0u);
  EXPECT_EQ(Lookup(13).name, "bs-13");
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 1u);
}

TEST_F(CacheTest, ServerPreparedAnswersAreAlreadyExpiredInALaptopService) {
  ScriptServer ch;
  ScriptLookup(ch);
  ch.AnswerCacheFill({PreparedLookup(11, "prepared-11")});
  KPPI_Focus::setServiceProcess(true);
  Settings(ControlhostAt(ch) + "[FileSystemAgent]\nnLaptopAgent = 1\n");
  {
    ClientSessionWrapper wrapper(0x1a000000, false);
    EXPECT_TRUE(wrapper.enableServerMessageCache(1));
  }
  EXPECT_EQ(Lookup(11).name, "bs-11") << "an entry stamped 0 is expired at its first look-up";
  EXPECT_EQ(ch.Count(kBsLookup.requestId), 1u);
}

TEST_F(CacheTest, AnAnswerTheCacheCannotDecodeFailsTheReceive) {
  ScriptServer ch;
  ScriptLookup(ch);
  ScriptServer::PreparedPair broken = PreparedLookup(11, "x");
  broken.response.resize(8);  // not a GenericLookupResp4
  ch.AnswerCacheFill({broken});
  Settings(ControlhostAt(ch));
  {
    ClientSessionWrapper wrapper(0x1a000000, false);
    ASSERT_TRUE(wrapper.enableServerMessageCache(1));
  }
  Result r = Lookup(11);
  EXPECT_EQ(r.sendStatus, 0);
  EXPECT_EQ(r.receiveStatus, -1);
  EXPECT_EQ(r.error, "[ClientSessionWrapper::receive] Failed to get message from cache.");
  EXPECT_EQ(log_.CountContaining("Warning. Failed to convert message [872415871(BS_LOOKUP_REQ)] from cache. "
                                 "newlength = [8], pOutputMessage->m_nlength = [8], recvBuffer.len = [56]."),
            1u);
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
  EXPECT_EQ(log_.Count("Failed to unserialize App::EnableAppServerCacheResp."), 1u);
  EXPECT_EQ(log_.Count("Failed to Enable Server Message Cache."), 1u);

  ClientSessionWrapper::enableMessageCache(false);
  ClientSessionWrapper wrapper(0x1a000000, false);
  EXPECT_FALSE(wrapper.enableServerMessageCache(1)) << "a cache that is off is not filled";
}

TEST(MessageData, KeysCompareByIdThenLengthThenBytes) {
  auto key = [](unsigned long id, std::string bytes) {
    return std::make_shared<CMessageData>(id, bytes.data(), bytes.size(), 0);
  };
  CCompareMessageData less;
  EXPECT_TRUE(less(key(1, "zzzz"), key(2, "a")));
  EXPECT_TRUE(less(key(2, "zz"), key(2, "aaa")));
  EXPECT_TRUE(less(key(2, "aab"), key(2, "aac")));
  EXPECT_FALSE(less(key(2, "aac"), key(2, "aac")));
  auto stamped = std::make_shared<CMessageData>(2, "aac", 3, 12345);
  EXPECT_FALSE(less(key(2, "aac"), stamped)) << "the time stamp is not part of the key";
  EXPECT_FALSE(less(stamped, key(2, "aac")));
  CMessageData empty(5, nullptr, 0, 0);
  EXPECT_EQ(empty.m_pData, nullptr);
  CMessageData copy(*key(2, "abc"));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(copy.m_pData.get()), 3), "abc");
}

}  // namespace
