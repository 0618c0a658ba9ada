// Every client and application-id operation through the library against the real appmgrd on its
// demo data: its answer and its server error path. A created client and a created application
// id survive a restart of appmgrd.
#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "interfaces/AppIdInterfaceNet.h"
#include "interfaces/ClientInterfaceNet.h"
#include "server/store/StoreErrors.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

using appmgr::server::kStoreErrConflict;
using appmgr::server::kStoreErrInvalidArgument;
using appmgr::server::kStoreErrNotFound;

class ClientEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }
  void ExpectMissingClient(int status) {
    EXPECT_EQ(status, kStoreErrNotFound);
    EXPECT_EQ(err_, "client 42 does not exist");
  }

  std::unique_ptr<AppmgrdProcess> server_;
  ClientInterfaceNet clients_;
  AppIdInterfaceNet appIds_;
  std::string err_;
};

struct Props : PropCallBack {
  std::map<std::string, std::string> seen;
  void addProperty(const std::string& n, unsigned long, const std::string& v, long) override { seen[n] = v; }
};

TEST_F(ClientEndToEnd, ClientsAreCreatedReadChangedQueriedAndRemoved) {
  _AppClientInfo info;
  info.clientName = "web01";
  info.hostName = "web01.lab.example.net";
  info.platformType = 1;
  info.integer5 = -3;
  info.text3 = "Web server";
  ClientPlatformInfo platforms[3] = {{1, "ignored by create"}, {0, ""}, {0, ""}};
  ASSERT_EQ(clients_.create(info, platforms, err_, nullptr), 0) << err_;
  const unsigned long id = info.clientId;
  EXPECT_EQ(id, 5u);
  EXPECT_EQ(info.integer5, -3);
  EXPECT_EQ(platforms[0].value, 1u);
  EXPECT_EQ(platforms[0].text, "") << "a create sends no platform texts";
  _AppClientInfo duplicate = info;
  duplicate.clientId = 0;
  duplicate.clientName = "WEB01";
  EXPECT_EQ(clients_.create(duplicate, platforms, err_, nullptr), kStoreErrConflict);
  EXPECT_EQ(err_, "a client named 'WEB01' already exists (client 5)");
  EXPECT_EQ(duplicate.clientId, 0u);

  info.text4 = "rack 9";
  platforms[0].text = "Linux x86-64";
  ASSERT_EQ(clients_.modify(info, platforms, err_, nullptr), 0) << err_;
  _AppClientInfo read;
  read.clientId = id;
  ClientPlatformInfo readPlatforms[3];
  ASSERT_EQ(clients_.lookup(read, readPlatforms, err_, nullptr), 0) << err_;
  EXPECT_EQ(read.clientName, "web01");
  EXPECT_EQ(read.text3, "Web server");
  EXPECT_EQ(read.text4, "rack 9");
  EXPECT_EQ(readPlatforms[0].text, "Linux x86-64");
  _AppClientInfo missing;
  missing.clientId = 42;
  missing.clientName = "x";
  ExpectMissingClient(clients_.lookup(missing, readPlatforms, err_, nullptr));
  ExpectMissingClient(clients_.modify(missing, readPlatforms, err_, nullptr));

  ApplProperty role("sRole", 2, "web"), site("sSite", 2, "rack 9");
  ASSERT_EQ(clients_.setProperties(id, {&role, &site}, false, err_, nullptr, nullptr), 0) << err_;
  std::list<_AppClientInfo> withRole;
  ASSERT_EQ(clients_.getClientInfoWithProperty(withRole, "sRole", "web", err_, nullptr), 0) << err_;
  ASSERT_EQ(withRole.size(), 1u);
  EXPECT_EQ(withRole.front().clientId, id);
  EXPECT_EQ(withRole.front().hostName, "web01.lab.example.net");
  ASSERT_EQ(clients_.removeProperties(id, std::list<std::string>{"sSite"}, true, err_, nullptr, nullptr), 0);
  ASSERT_EQ(clients_.removeProperties(id, {&role}, false, err_, nullptr, nullptr), 0) << err_;
  Props props;
  ASSERT_EQ(clients_.getProperties(id, 0, err_, &props, nullptr), 0) << err_;
  EXPECT_TRUE(props.seen.empty());
  ExpectMissingClient(clients_.getProperties(42, 0, err_, &props, nullptr));
  ExpectMissingClient(clients_.setProperties(42, {&role}, false, err_, nullptr, nullptr));
  ExpectMissingClient(clients_.removeProperties(42, {&role}, false, err_, nullptr, nullptr));
  ExpectMissingClient(clients_.removeProperties(42, std::list<std::string>{"x"}, false, err_, nullptr, nullptr));
  EXPECT_EQ(clients_.getClientInfoWithProperty(withRole, "", "web", err_, nullptr), kStoreErrInvalidArgument);

  ASSERT_EQ(clients_.setClientFSNodeData(static_cast<unsigned>(id), "nodes=2", 2, true, err_, nullptr), 0)
      << err_;
  ExpectMissingClient(clients_.setClientFSNodeData(42, "nodes=2", 2, true, err_, nullptr));

  // A client that owns nothing is removed; one that owns application types is not.
  EXPECT_EQ(clients_.remove(3, err_, nullptr), kStoreErrConflict);
  EXPECT_NE(err_.find("it still has 3 application types"), std::string::npos) << err_;
  ASSERT_EQ(clients_.remove(id, err_, nullptr), 0) << err_;
  EXPECT_EQ(clients_.lookup(read, readPlatforms, err_, nullptr), kStoreErrNotFound);
  ExpectMissingClient(clients_.remove(42, err_, nullptr));
}

TEST_F(ClientEndToEnd, TheReplicationAndInstanceQueriesAnswerFromTheDemoData) {
  std::string guid = "{b2c3d4e5-f6a7-4b8c-9d0e-1f2a3b4c5d01}";
  std::list<unsigned long> pairs;
  ASSERT_EQ(clients_.getFLRpairListForDestinationVolumeGUID(guid, pairs, err_, 0, nullptr), 0) << err_;
  EXPECT_EQ(pairs, (std::list<unsigned long>{1}));
  EXPECT_EQ(clients_.getFLRpairListForDestinationVolumeGUID(guid, pairs, err_, -1, nullptr),
            kStoreErrInvalidArgument);
  EXPECT_EQ(pairs.size(), 1u);

  std::list<unsigned long> sets, owners, setPairs;
  ASSERT_EQ(clients_.GetFRsetsWithDestClientId(4, sets, owners, setPairs, err_, nullptr), 0) << err_;
  EXPECT_EQ(sets, (std::list<unsigned long>{105}));
  EXPECT_EQ(owners, (std::list<unsigned long>{3}));
  EXPECT_EQ(setPairs, (std::list<unsigned long>{1, 2}));
  ExpectMissingClient(clients_.GetFRsetsWithDestClientId(42, sets, owners, setPairs, err_, nullptr));

  std::list<unsigned long> asmIds;
  ASSERT_EQ(clients_.GetASMInstanceList(3, 0, asmIds, err_, nullptr), 0) << err_;
  EXPECT_EQ(asmIds, (std::list<unsigned long>{15}));
  ExpectMissingClient(clients_.GetASMInstanceList(42, 0, asmIds, err_, nullptr));

  std::list<_AppClientInfo> throttled;
  ASSERT_EQ(clients_.getClientInfoWithProperty(throttled, "sNetworkThrottle", "0", err_, nullptr), 0);
  EXPECT_EQ(throttled.size(), 2u);
}

TEST_F(ClientEndToEnd, ApplicationIdsAndACreatedClientSurviveARestart) {
  AppIdInfo id;
  id.number[3] = 4;
  id.number[4] = 10;
  id.number[5] = 14;
  id.number[6] = 104;
  id.number[7] = 1041;
  id.text[0] = "/srv/shares";
  ASSERT_EQ(appIds_.createApplicationId(id, err_, nullptr, nullptr), 0) << err_;
  EXPECT_EQ(id.number[0], 3u);
  AppIdInfo again = id;
  again.number[0] = 0;
  EXPECT_EQ(appIds_.createApplicationId(again, err_, nullptr, nullptr), kStoreErrConflict);
  EXPECT_EQ(err_, "application id 3 already stands for (4, 10, 14, 104, 1041, 0, '/srv/shares', '', '')");
  ASSERT_EQ(appIds_.updateArchiveGroups(3, 40, 41, err_, nullptr, nullptr), 0) << err_;
  EXPECT_EQ(appIds_.updateArchiveGroups(42, 40, 41, err_, nullptr, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "application id 42 does not exist");

  _AppClientInfo client;
  client.clientName = "kept01";
  ClientPlatformInfo platforms[3];
  ASSERT_EQ(clients_.create(client, platforms, err_, nullptr), 0) << err_;

  server_->Restart();

  AppIdInfo found;
  found.number[0] = 3;
  ASSERT_EQ(appIds_.getApplicationId(found, err_, nullptr), 0) << err_;
  EXPECT_EQ(found.number[7], 1041u);
  EXPECT_EQ(found.text[0], "/srv/shares");
  unsigned long incr = 0;
  ASSERT_EQ(appIds_.getIncrArchiveGroup(incr, 3, err_, nullptr), 0) << err_;
  EXPECT_EQ(incr, 41u);
  EXPECT_EQ(appIds_.getIncrArchiveGroup(incr, 42, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(incr, 41u);

  _AppClientInfo byName;
  byName.clientName = "KEPT01";
  ASSERT_EQ(clients_.lookup(byName, platforms, err_, nullptr), 0) << err_;
  EXPECT_EQ(byName.clientId, client.clientId);

  ASSERT_EQ(appIds_.removeApplicationId(again, err_, nullptr), 0) << err_;  // by its object
  EXPECT_EQ(appIds_.getApplicationId(found, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "application id 3 does not exist");
  EXPECT_EQ(appIds_.removeApplicationId(found, err_, nullptr), kStoreErrNotFound);
}

}  // namespace
