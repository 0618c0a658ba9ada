// Every backup-set operation through the library against the real appmgrd on its demo data:
// its answer, and its server error path. A restart of appmgrd between two calls loses nothing
// that was acknowledged.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "interfaces/BSInterfaceNet.h"
#include "server/store/StoreErrors.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

constexpr unsigned long kMissing = 999;

class EndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }
  void ExpectMissing(int status, const std::string& error) {
    EXPECT_EQ(status, appmgr::server::kStoreErrNotFound);
    EXPECT_EQ(error, "backup set 999 does not exist");
  }
  std::unique_ptr<AppmgrdProcess> server_;
  BSInterfaceNet bs_;
  std::string err_;
};

TEST_F(EndToEnd, LookupAndUpdate) {
  std::string name, text;
  long value = 0;
  unsigned long o1, o2, o3, o4 = 0;
  ASSERT_EQ(bs_.lookup(102, name, value, o1, o2, o3, text, o4, err_, nullptr), 0) << err_;
  EXPECT_EQ(name, "defaultBackupSet");
  EXPECT_EQ(value, 7);
  EXPECT_EQ(text, "Database server file system");
  ExpectMissing(bs_.lookup(kMissing, name, value, o1, o2, o3, text, o4, err_, nullptr), err_);

  long newValue = 8;
  ASSERT_EQ(bs_.update(102, "renamed", newValue, false, 0, 0, 0, "", err_, nullptr), 0) << err_;
  ASSERT_EQ(bs_.lookup(102, name, value, o1, o2, o3, text, o4, err_, nullptr), 0);
  EXPECT_EQ(name, "renamed");
  EXPECT_EQ(value, 8);
  ExpectMissing(bs_.update(kMissing, "x", newValue, false, 0, 0, 0, "", err_, nullptr), err_);
}

TEST_F(EndToEnd, DeleteAndUndeleteAll) {
  EXPECT_EQ(bs_.deleteAll(104, err_, nullptr), 0) << err_;
  EXPECT_EQ(bs_.undeleteAll(104, err_, nullptr), 0) << err_;
  ExpectMissing(bs_.deleteAll(kMissing, err_, nullptr), err_);
  ExpectMissing(bs_.undeleteAll(kMissing, err_, nullptr), err_);
}

struct Props : PropCallBack {
  std::map<std::string, std::string> seen;
  void addProperty(const std::string& n, unsigned long, const std::string& v, long) override { seen[n] = v; }
};

TEST_F(EndToEnd, PropertiesAreReadSetAndRemoved) {
  Props before;
  ASSERT_EQ(bs_.getProperties(102, 0, err_, &before, nullptr), 0) << err_;
  EXPECT_EQ(before.seen, (std::map<std::string, std::string>{{"nRetentionDays", "30"}, {"sScanMode", "journal"}}));

  ApplProperty retention("nRetentionDays", 1, "60"), owner("sOwner", 2, "ops");
  ASSERT_EQ(bs_.setProperties(102, {&retention, &owner}, false, err_, nullptr, nullptr), 0) << err_;
  Props merged;
  bs_.getProperties(102, 0, err_, &merged, nullptr);
  EXPECT_EQ(merged.seen, (std::map<std::string, std::string>{
                             {"nRetentionDays", "60"}, {"sScanMode", "journal"}, {"sOwner", "ops"}}));

  ASSERT_EQ(bs_.removeProperties(102, std::list<std::string>{"sScanMode"}, true, err_, nullptr, nullptr), 0);
  EXPECT_NE(bs_.removeProperties(102, std::list<std::string>{"absent"}, true, err_, nullptr, nullptr), 0)
      << "strict removal of an absent name fails";
  ASSERT_EQ(bs_.removeProperties(102, std::list<const ApplProperty*>{&owner}, false, err_, nullptr, nullptr), 0);
  Props left;
  bs_.getProperties(102, 0, err_, &left, nullptr);
  EXPECT_EQ(left.seen, (std::map<std::string, std::string>{{"nRetentionDays", "60"}}));

  ASSERT_EQ(bs_.setProperties(102, {&owner}, true, err_, nullptr, nullptr), 0) << "replace all";
  Props replaced;
  bs_.getProperties(102, 0, err_, &replaced, nullptr);
  EXPECT_EQ(replaced.seen, (std::map<std::string, std::string>{{"sOwner", "ops"}}));

  Props none;
  ExpectMissing(bs_.getProperties(kMissing, 0, err_, &none, nullptr), err_);
  ExpectMissing(bs_.setProperties(kMissing, {&owner}, false, err_, nullptr, nullptr), err_);
  ExpectMissing(bs_.removeProperties(kMissing, std::list<std::string>{"x"}, false, err_, nullptr, nullptr), err_);
  ExpectMissing(bs_.removeProperties(kMissing, std::list<const ApplProperty*>{&owner}, false, err_, nullptr, nullptr),
                err_);
}

TEST_F(EndToEnd, StoresWildcardsAndDefaultSubclients) {
  std::list<std::string> stores{"existing"};
  ASSERT_EQ(bs_.getStoreList(102, stores, err_, nullptr), 0) << err_;
  EXPECT_EQ(stores, (std::list<std::string>{"existing", "primary", "archive"}));
  std::list<std::string> wild;
  ASSERT_EQ(bs_.getWildcardExpressionList(102, wild, err_, nullptr), 0);
  EXPECT_EQ(wild, (std::list<std::string>{"*.tmp", "~$*", "pagefile.sys"}));
  unsigned long subclient = 0;
  ASSERT_EQ(bs_.getDefaultSubclientForStore(subclient, 102, "archive", err_, nullptr), 0) << err_;
  EXPECT_EQ(subclient, 1022u);
  EXPECT_EQ(bs_.getDefaultSubclientForStore(subclient, 102, "nowhere", err_, nullptr),
            appmgr::server::kStoreErrNotFound);
  EXPECT_EQ(subclient, 1022u);
  ExpectMissing(bs_.getStoreList(kMissing, stores, err_, nullptr), err_);
  ExpectMissing(bs_.getWildcardExpressionList(kMissing, wild, err_, nullptr), err_);
}

TEST_F(EndToEnd, ReplicationQuestions) {
  bool conflict = false;
  DataPairConflict existing, proposed;
  ASSERT_EQ(bs_.doesNewPairConflict(105, conflict, "D:\\Data", "/replica/new", existing, proposed, nullptr), 0);
  EXPECT_TRUE(conflict);
  EXPECT_STREQ(existing.text1, "D:\\Data");
  EXPECT_STREQ(existing.text4, "/replica/db01/Data");
  EXPECT_STREQ(proposed.text4, "/replica/new");
  ASSERT_EQ(bs_.doesNewPairConflict(105, conflict, "E:\\New", "/replica/new", existing, proposed, nullptr), 0);
  EXPECT_FALSE(conflict);
  EXPECT_EQ(bs_.doesNewPairConflict(kMissing, conflict, "a", "b", existing, proposed, nullptr),
            appmgr::server::kStoreErrNotFound);

  unsigned long selector = 1;
  std::string first, second;
  ASSERT_EQ(bs_.getFRdataInterfacePair(105, 1, selector, first, second, err_, nullptr), 0) << err_;
  EXPECT_EQ(first, "192.168.50.13");
  EXPECT_EQ(second, "192.168.50.14");
  ExpectMissing(bs_.getFRdataInterfacePair(kMissing, 1, selector, first, second, err_, nullptr), err_);

  std::list<FLRSystemStateInfo> state;
  ASSERT_EQ(bs_.getFLRSystemStateInfo(105, "db01", state, nullptr), 0);
  ASSERT_EQ(state.size(), 2u);
  EXPECT_EQ(state.front().text1, "Registry");
  EXPECT_EQ(state.front().pairs.size(), 2u);
  EXPECT_EQ(bs_.getFLRSystemStateInfo(kMissing, "db01", state, nullptr), appmgr::server::kStoreErrNotFound);
  EXPECT_EQ(state.size(), 2u);

  unsigned long client = 0;
  ASSERT_EQ(bs_.getClientIdForBackupSet(105, client, err_, nullptr), 0);
  EXPECT_EQ(client, 3u);
  ExpectMissing(bs_.getClientIdForBackupSet(kMissing, client, err_, nullptr), err_);
}

TEST_F(EndToEnd, AnAcknowledgedChangeSurvivesARestartBetweenTwoCalls) {
  long value = 41;
  ASSERT_EQ(bs_.update(103, "kept", value, false, 0, 0, 0, "", err_, nullptr), 0) << err_;
  ApplProperty p("sKept", 2, "yes");
  ASSERT_EQ(bs_.setProperties(103, {&p}, false, err_, nullptr, nullptr), 0) << err_;
  server_->Restart();
  std::string name, text;
  long got = 0;
  unsigned long o1, o2, o3, o4 = 0;
  ASSERT_EQ(bs_.lookup(103, name, got, o1, o2, o3, text, o4, err_, nullptr), 0) << err_;
  EXPECT_EQ(name, "kept");
  EXPECT_EQ(got, 41);
  Props props;
  ASSERT_EQ(bs_.getProperties(103, 0, err_, &props, nullptr), 0);
  EXPECT_EQ(props.seen["sKept"], "yes");
}

// appmgrd killed and started again between two calls: the second call succeeds, its request
// written at most twice (once into the dead connection, once after the one re-attach).
TEST_F(EndToEnd, AKilledAndRestartedServerCostsTheNextCallNothing) {
  std::string name, text;
  long value = 0;
  unsigned long o1, o2, o3, o4 = 0;
  ASSERT_EQ(bs_.lookup(102, name, value, o1, o2, o3, text, o4, err_, nullptr), 0) << err_;
  server_->Stop(SIGKILL);
  server_->Start();
  log_.Clear();
  ASSERT_EQ(bs_.lookup(103, name, value, o1, o2, o3, text, o4, err_, nullptr), 0) << err_;
  EXPECT_LE(log_.Count(" Re-attach succeeded. re-sending request to server."), 1u);
  EXPECT_EQ(log_.CountContaining("msgId=872415871(BS_LOOKUP_REQ)"), 2u) << "one send: entry and exit";
}

}  // namespace
