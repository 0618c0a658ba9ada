// The process-wide pools and host discovery.
#include "session/AppMgrSessionPool.h"

#include <gtest/gtest.h>

#include "tests/session/SessionFixture.h"

namespace {

constexpr const char* kFullLabel = "AppMgrSessionPoolSingleton::getSessionPoolInstance";
constexpr const char* kLiteLabel = "AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance";

class SessionPoolTest : public SessionFixture {};

TEST_F(SessionPoolTest, PlatformTypeFollowsTheBitsAndChoosesTheControlhostRecord) {
  struct {
    const char* bits;
    int type;
  } cases[] = {{"1", 1}, {"2", 2}, {"3", 1}, {"4", 4}, {"0", 4}, {"8", 4}, {"6", 2}};
  for (const auto& c : cases) {
    Settings(std::string("[Platform]\nnPlatformType = ") + c.bits + "\n");
    EXPECT_EQ(getPlatformType(), c.type) << c.bits;
  }
  // The record asked for the Controlhost's names is the one of the type given, not the machine's.
  Settings("[Platform]\nnPlatformType = 1\nsPhysicalMachine = ch07\nsClientName = ch07client\n");
  std::string server = "stale", client = "stale";
  getAppMgrHostandClientNames(EvEvent("t"), 1, server, client);
  EXPECT_EQ(server + "/" + client, "ch07/ch07client") << "the Controlhost is itself";
  getAppMgrHostandClientNames(EvEvent("t"), 4, server, client);
  EXPECT_EQ(server, "") << "a client with no Controlhost record has no server name";
}

// The full pool is made once; one that cannot be made is tried again, and logged, on every call.
TEST_F(SessionPoolTest, TheFullPoolIsMadeOnceOrLogsWhyNotOnEveryCall) {
  ScriptServer ch;
  Settings(ControlhostAt(ch));
  KpNetworkPool* pool = AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName);
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName), pool);
  EXPECT_EQ(pool->host(), "ch01@127.0.0.1:" + std::to_string(ch.port()) + "," + std::to_string(ch.port()));
  EXPECT_EQ(Logged(kFullLabel, 1, "serverName [" + ch.host() + "], clientName [ch01]."), 1u);
  EXPECT_EQ(Logged(kFullLabel, 4, "Entry (svcName=AppManager network access)"), 2u);
  EXPECT_EQ(Logged(kFullLabel, 4, "Exit (svcName=AppManager network access)"), 2u);

  Reset();
  log_.Clear();
  Settings("[Controlhost]\nsHOSTNAME = ch.example\n");  // no client name
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName), nullptr);
  }
  EXPECT_EQ(Logged(kFullLabel, kError, "Client or server name is empty. Cant create session instance"), 3u);
  EXPECT_EQ(log_.Count("Exit (svcName=AppManager network access)"), 0u);

  // A pool the pool library refuses to initialise (no service named) is destroyed, and the
  // exit line still follows.
  Settings("[Controlhost]\nsHOSTNAME = ch.example\nsCLIENTNAME = chc\n");
  log_.Clear();
  EXPECT_EQ(AppMgrSessionPoolSingleton::getSessionPoolInstance(""), nullptr);
  EXPECT_EQ(Logged(kFullLabel, kError,
                   "Failed to initialize Session Pool to AppManager(platformType[4], serverName(ch.example). "
                   "Error:[initNetworkPool: service and host are required]"),
            1u);
  EXPECT_EQ(Logged(kFullLabel, 4, "Exit (svcName=)"), 1u);
  EXPECT_EQ(AppMgrSessionPoolSingleton::currentFullPool(), nullptr);
}

TEST_F(SessionPoolTest, TheLitePoolIsMadeOnlyWhereConfiguredAndNeverOnTheControlhost) {
  ScriptServer lite;
  struct {
    const char* name;
    std::string ini;
    bool made;
    size_t lines;  // when not made: the entry line, or nothing at all when switched off
  } cases[] = {
      {"a client with both keys", "[Platform]\nnPlatformType = 4\n[Controlhost]\n" + LiteAt(lite), true, 0},
      {"the Controlhost", "[Platform]\nnPlatformType = 3\n[Controlhost]\n" + LiteAt(lite), false, 1},
      {"host only", "[Controlhost]\nsAPPMGRHOSTNAME = " + lite.host() + "\n", false, 1},
      {"client name only", "[Controlhost]\nsAPPMGRCLIENTNAME = l\n", false, 1},
      {"switched off", "[Features]\nAppMgrSvcLiteDisable = 1\n[Controlhost]\n" + LiteAt(lite), false, 0},
  };
  for (const auto& c : cases) {
    Reset();
    Settings(c.ini);
    log_.Clear();
    EXPECT_EQ(AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance() != nullptr, c.made) << c.name;
    if (!c.made) {
      EXPECT_EQ(log_.Records().size(), c.lines) << c.name;
      EXPECT_EQ(Logged(kLiteLabel, 4, "Entry (svcName=AppManager network access)"), c.lines) << c.name;
    }
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

// A call in progress when the pool is cleaned up keeps its session to the end, and gives it
// back to the forgotten pool, which closes it.
TEST_F(SessionPoolTest, CleanUpLeavesABorrowedSessionToItsBorrower) {
  ScriptServer ch;
  ScriptLookup(ch);
  Settings(ControlhostAt(ch));
  KpNetworkPool* forgotten = nullptr;
  {
    ClientSessionWrapper borrower(0x1a000000, false);
    forgotten = AppMgrSessionPoolSingleton::currentFullPool();
    ASSERT_NE(forgotten, nullptr);
    AppMgrSessionPoolSingleton::cleanUpSessionPool();
    EXPECT_EQ(LookupOn(borrower, 3).name, "bs-3");
    EXPECT_EQ(log_.CountContaining("Lost connnection"), 0u) << "the session was not touched";
    EXPECT_EQ(ch.core().ConnectionsAccepted(), 1u);
  }
  EXPECT_EQ(forgotten->stats().lent, 0u);
  EXPECT_EQ(forgotten->stats().open, 0u) << "given back after the clean-up: closed, not kept";
}

}  // namespace
