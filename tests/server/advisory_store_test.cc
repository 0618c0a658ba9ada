// AdvisoryStore: syncs replace whole sets (and keep the state of what stays), control actions
// reach the advisories they name or fail as a whole, and types follow a client's advisories.
#include "server/store/AdvisoryStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// "client:advisory:state" for each advisory, in the store's order.
std::vector<std::string> States(const std::vector<StoredAdvisory>& list) {
  std::vector<std::string> out;
  for (const StoredAdvisory& a : list) {
    out.push_back(std::to_string(a.clientId) + ":" + std::to_string(a.id) + ":" +
                  std::to_string(a.state));
  }
  return out;
}

class AdvisoryStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kSmallFixture));
    ASSERT_OK(t_.Load(R"json({"format": 1, "advisoryTypes": [
        {"id": 1, "name": "critical", "description": "patch now"},
        {"id": 2, "name": "moderate"}, {"id": 3, "name": "low"}]})json"));
    ASSERT_OK(store().SyncClient(3, {{10, 1, "openssl"}, {11, 2, "zlib"}}));
    ASSERT_OK(store().SyncClient(4, {{10, 1, "openssl"}}));
  }
  std::vector<std::string> Clients(uint64_t client = 0) {
    std::vector<StoredAdvisory> out;
    EXPECT_OK(store().ForClients(client, &out));
    return States(out);
  }
  AdvisoryStore store() { return AdvisoryStore(t_.store()); }
  TempStore t_;
};

TEST_F(AdvisoryStoreTest, AClientSyncReplacesTheSetAndKeepsTheStateOfWhatStays) {
  ASSERT_OK(store().Control(static_cast<int64_t>(AdvisoryAction::kAcknowledge), {{10, 3}}));
  ASSERT_OK(store().SyncClient(3, {{12, 3, "new"}, {10, 2, "openssl, revised"}}));
  EXPECT_EQ(Clients(3), (std::vector<std::string>{"3:10:3", "3:12:1"}));
  std::vector<StoredAdvisory> out;
  ASSERT_OK(store().ForClients(3, &out));
  EXPECT_EQ(out[0].title, "openssl, revised");
  EXPECT_EQ(out[0].type, 2);
  EXPECT_EQ(Clients(4), (std::vector<std::string>{"4:10:1"})) << "another client is untouched";

  ASSERT_OK(store().SyncClient(3, {}));
  EXPECT_TRUE(Clients(3).empty());

  EXPECT_EQ(store().SyncClient(9, {}).Text(), "client 9 does not exist");
  CLmError twice = store().SyncClient(4, {{1, 1, "a"}, {1, 1, "b"}});
  EXPECT_EQ(twice.GetErrorCode(), kStoreErrInvalidArgument);
  EXPECT_EQ(twice.Text(), "advisory 1 is listed twice");
  EXPECT_EQ(Clients(4), (std::vector<std::string>{"4:10:1"}));
}

TEST_F(AdvisoryStoreTest, ASourceSyncReplacesItsListInOrderAndOwnsItsIds) {
  ASSERT_OK(store().SyncSource("feed-a", {{5, 1, "five"}, {3, 2, "three"}}));
  ASSERT_OK(store().SyncSource("feed-a", {{7, 1, "seven"}, {5, 1, "five again"}}));
  std::vector<StoredAdvisory> a;
  ASSERT_OK(store().ForSource("feed-a", &a));
  ASSERT_EQ(a.size(), 2u);
  EXPECT_EQ(a[0].id, 7);
  EXPECT_EQ(a[1].title, "five again");
  EXPECT_EQ(a[1].source, "feed-a");

  CLmError taken = store().SyncSource("feed-b", {{8, 1, "eight"}, {7, 1, "mine"}});
  EXPECT_EQ(taken.GetErrorCode(), kStoreErrConflict);
  EXPECT_EQ(taken.Text(), "advisory 7 is published by source 'feed-a', not 'feed-b'");
  std::vector<StoredAdvisory> b;
  ASSERT_OK(store().ForSource("feed-b", &b));
  EXPECT_TRUE(b.empty()) << "nothing of the refused sync is kept";

  EXPECT_EQ(store().SyncSource("", {}).GetErrorCode(), kStoreErrInvalidArgument);
  // Emptying a source frees its ids for another.
  ASSERT_OK(store().SyncSource("feed-a", {}));
  EXPECT_OK(store().SyncSource("feed-b", {{7, 1, "mine"}}));
}

TEST_F(AdvisoryStoreTest, ControlReachesOneClientOrAllAndFailsAsAWhole) {
  auto act = [&](AdvisoryAction action, std::vector<AdvisoryTarget> targets) {
    return store().Control(static_cast<int64_t>(action), targets);
  };
  ASSERT_OK(act(AdvisoryAction::kDisable, {{10, 0}}));
  EXPECT_EQ(Clients(), (std::vector<std::string>{"3:10:2", "3:11:1", "4:10:2"}));
  ASSERT_OK(act(AdvisoryAction::kEnable, {{10, 4}}));
  EXPECT_EQ(Clients(), (std::vector<std::string>{"3:10:2", "3:11:1", "4:10:1"}));

  struct Case {
    const char* name;
    int64_t action;
    std::vector<AdvisoryTarget> targets;
    int code;
    const char* text;
  };
  const Case cases[] = {
      {"unknown advisory",
       3,
       {{11, 3}, {99, 0}},
       kStoreErrNotFound,
       "advisory 99 applies to no client"},
      {"not on that client",
       3,
       {{11, 3}, {11, 4}},
       kStoreErrNotFound,
       "advisory 11 does not apply to client 4"},
      {"unknown client", 3, {{11, 3}, {11, 9}}, kStoreErrNotFound, "client 9 does not exist"},
      {"no targets", 3, {}, kStoreErrInvalidArgument, "the control names no advisory"},
      {"unknown action",
       5,
       {{11, 3}},
       kStoreErrInvalidArgument,
       "action 5 is not one of 1 enable, 2 disable, 3 acknowledge, 4 remove"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CLmError e = store().Control(c.action, c.targets);
    EXPECT_EQ(e.GetErrorCode(), c.code);
    EXPECT_EQ(e.Text(), c.text);
    EXPECT_EQ(Clients(), (std::vector<std::string>{"3:10:2", "3:11:1", "4:10:1"}));
  }

  ASSERT_OK(act(AdvisoryAction::kRemove, {{10, 0}}));
  EXPECT_EQ(Clients(), (std::vector<std::string>{"3:11:1"}));
}

TEST_F(AdvisoryStoreTest, TypesAreThoseOfAClientsAdvisoriesOrAllKnownOnes) {
  auto names = [&](uint64_t client) {
    std::vector<AdvisoryType> types;
    EXPECT_OK(store().Types(client, &types));
    std::vector<std::string> out;
    for (const AdvisoryType& t : types) out.push_back(t.name);
    return out;
  };
  EXPECT_EQ(names(0), (std::vector<std::string>{"critical", "moderate", "low"}));
  EXPECT_EQ(names(3), (std::vector<std::string>{"critical", "moderate"}));
  EXPECT_EQ(names(4), (std::vector<std::string>{"critical"}));
  ASSERT_OK(store().SyncClient(4, {{20, 42, "of a type nobody described"}}));
  EXPECT_TRUE(names(4).empty());
  std::vector<AdvisoryType> none;
  EXPECT_EQ(store().Types(9, &none).GetErrorCode(), kStoreErrNotFound);
}

}  // namespace
}  // namespace appmgr::server
