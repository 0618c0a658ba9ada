// The process-wide pools and host discovery.
#include "session/AppMgrSessionPool.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/session/SessionFixture.h"

namespace {

class SessionPoolTest : public SessionFixture {};

TEST_F(SessionPoolTest, PlatformTypeFollowsTheBitsWithTheControlhostWinning) {
  struct {
    const char* bits;
    int type;
  } cases[] = {{"1", 1}, {"2", 2}, {"3", 1}, {"4", 4}, {"0", 4}, {"8", 4}, {"6", 2}};
  for (const auto& c : cases) {
    Settings(std::string("[Platform]\nnPlatformType = ") + c.bits + "\n");
    EXPECT_EQ(getPlatformType(), c.type) << c.bits;
  }
}

TEST_F(SessionPoolTest, NamesComeFromThePlatformRecord) {
  Settings(
      "[Platform]\nnPlatformType = 4\nsPhysicalMachine = agent07\n"
      "[Controlhost]\nsHOSTNAME = ch.example\nsCLIENTNAME = chclient\n"
      "sAPPMGRHOSTNAME = lite.example\nsAPPMGRCLIENTNAME = liteclient\n");
  char name[256];
  memset(name, 'Z', sizeof name);
  getClientName(name, sizeof name);
  EXPECT_STREQ(name, "agent07");
  EvEvent ev("t");
  std::string server, client;
  getAppMgrHostandClientNames(ev, 4, server, client);
  EXPECT_EQ(server, "ch.example");
  EXPECT_EQ(client, "chclient");
  getAppMgrLiteHostNameAndClientName(ev, server, client);
  EXPECT_EQ(server, "lite.example");
  EXPECT_EQ(client, "liteclient");

  // On the Controlhost its own record answers.
  Settings("[Platform]\nnPlatformType = 1\nsPhysicalMachine = ch07\nsClientName = ch07client\n");
  getClientName(name, sizeof name);
  EXPECT_STREQ(name, "ch07client");
  server = client = "stale";
  getAppMgrHostandClientNames(ev, 1, server, client);
  EXPECT_EQ(server, "ch07");
  EXPECT_EQ(client, "ch07client");
  getAppMgrHostandClientNames(ev, 4, server, client);
  EXPECT_EQ(server, "") << "a client with no Controlhost record has no server name";
}

TEST_F(SessionPoolTest, TheFullPoolIsMadeOnceAndLiveConnectionsComeFromIt) {
  ScriptServer ch;
  Settings(ControlhostAt(ch));
  KpNetworkPool* pool = AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName);
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName), pool);
  EXPECT_EQ(pool->host(), "ch01@127.0.0.1:" + std::to_string(ch.port()) + "," + std::to_string(ch.port()));
  EXPECT_EQ(log_.Count("serverName [" + ch.host() + "], clientName [ch01]."), 1u);
}

TEST_F(SessionPoolTest, MissingNamesLogAndFailOnEveryCall) {
  Settings("[Controlhost]\nsHOSTNAME = ch.example\n");  // no client name
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName), nullptr);
  }
  EXPECT_EQ(log_.Count("Client or server name is empty. Cant create session instance"), 3u);
  EXPECT_EQ(log_.Count("Exit (svcName=AppManager network access)"), 0u);
}

TEST_F(SessionPoolTest, TheLitePoolIsNeverMadeOnTheControlhost) {
  ScriptServer lite;
  Settings("[Platform]\nnPlatformType = 3\n[Controlhost]\n" + LiteAt(lite));
  EXPECT_EQ(AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance(), nullptr);
  Settings("[Platform]\nnPlatformType = 4\n[Controlhost]\n" + LiteAt(lite));
  EXPECT_NE(AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance(), nullptr);
}

TEST_F(SessionPoolTest, DisabledLitePoolIsNullWithoutALogLine) {
  ScriptServer lite;
  Settings("[Features]\nAppMgrSvcLiteDisable = 1\n[Controlhost]\n" + LiteAt(lite));
  log_.Clear();
  EXPECT_EQ(AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance(), nullptr);
  EXPECT_TRUE(log_.Records().empty());
}

TEST_F(SessionPoolTest, OneLiteKeyAloneMakesNoPoolAndLogsOnlyTheEntry) {
  ScriptServer lite;
  for (const std::string& key : {"sAPPMGRHOSTNAME = " + lite.host(), std::string("sAPPMGRCLIENTNAME = l")}) {
    Settings("[Controlhost]\n" + key + "\n");
    log_.Clear();
    EXPECT_EQ(AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance(), nullptr);
    auto records = log_.Records();
    ASSERT_EQ(records.size(), 1u) << key;
    EXPECT_EQ(records[0].text, "Entry (svcName=AppManager network access)");
  }
}

TEST_F(SessionPoolTest, CleanUpForgetsThePoolAndTheNextCallMakesANewOne) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  ASSERT_EQ(Lookup(1).name, "bs-1");
  KpNetworkPool* first = AppMgrSessionPoolSingleton::currentFullPool();
  ASSERT_NE(first, nullptr);
  AppMgrSessionPoolSingleton::terminateAllSessions();
  EXPECT_EQ(first->stats().open, 0u);
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool(), first) << "terminate keeps the pool";
  AppMgrSessionPoolSingleton::cleanUpSessionPool();
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool(), nullptr);
  ASSERT_EQ(Lookup(2).name, "bs-2");
  EXPECT_NE(AppMgrSessionPoolSingleton::currentFullPool(), nullptr);
}

TEST_F(SessionPoolTest, AnUnreachableHostIsAPoolThatCannotLend) {
  // Initialising a pool touches no network, so the pool exists; borrowing from it fails.
  Settings("[Controlhost]\nsHOSTNAME = 127.0.0.1:1\nsCLIENTNAME = ch\n");
  KpNetworkPool* pool = AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName);
  ASSERT_NE(pool, nullptr);
  CKpNetwork* s = nullptr;
  EXPECT_TRUE(pool->getSessionObject(s));
}

}  // namespace
