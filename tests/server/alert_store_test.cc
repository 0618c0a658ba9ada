// AlertStore: what is kept of an alert, the all-or-nothing rules of storing and acknowledging,
// and what each list filter selects.
#include "server/store/AlertStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

StoredAlert Alert(int64_t client, const std::string& text, int64_t severity = 0) {
  StoredAlert a;
  a.source = StoredAlert::kSourceXml;
  a.receivedAt = 1700000000;
  a.clientId = client;
  a.text = text;
  a.severity = severity;
  return a;
}

std::vector<std::string> Texts(const std::vector<StoredAlert>& alerts) {
  std::vector<std::string> texts;
  for (const StoredAlert& a : alerts) texts.push_back(a.text);
  return texts;
}

class AlertStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kSmallFixture));
  }
  std::vector<StoredAlert> List(AlertFilter filter = {}) {
    std::vector<StoredAlert> out;
    EXPECT_OK(alerts().List(filter, &out));
    return out;
  }
  AlertStore alerts() { return AlertStore(t_.store()); }
  TempStore t_;
};

TEST_F(AlertStoreTest, KeepsEveryFieldAndNamesTheAlertAfterItsClient) {
  StoredAlert full = Alert(3, "backup failed", StoredAlert::kSeverityError);
  full.source = StoredAlert::kSourceRecord;
  full.raisedAt = 1699999990;
  full.alertType = 12;
  full.alertCriteria = -4;
  full.alertStatus = 2;
  full.backupSetId = 7;
  full.jobId = 0xfffffffffffffff0u;  // unsigned bit patterns come back whole
  full.details = R"({"alertType":12,"clientName":""})";
  std::vector<StoredAlert> batch = {full, Alert(0, "no client"), Alert(4, "named", 1)};
  batch[2].clientName = "given name";
  ASSERT_OK(alerts().Add(batch));
  EXPECT_LT(batch[0].id, batch[1].id);
  EXPECT_LT(batch[1].id, batch[2].id);
  EXPECT_EQ(batch[0].clientName, "db01") << "an alert without a name takes its client's";
  EXPECT_EQ(batch[1].clientName, "");
  EXPECT_EQ(batch[2].clientName, "given name");

  std::vector<StoredAlert> stored = List();
  ASSERT_EQ(stored.size(), 3u);
  EXPECT_EQ(stored[0], batch[0]);
  EXPECT_EQ(stored[2], batch[2]);
}

TEST_F(AlertStoreTest, ABadAlertStoresNothingOfItsBatch) {
  struct Case {
    const char* name;
    StoredAlert bad;
    int code;
    const char* text;
  };
  StoredAlert notJson = Alert(3, "x");
  notJson.details = "[1, 2]";
  const Case cases[] = {
      {"unknown client", Alert(9, "x"), kStoreErrNotFound, "alert 2 of 3: client 9 does not exist"},
      {"narrowed client id", Alert(-2147483648LL, "x"), kStoreErrNotFound,
       "alert 2 of 3: client -2147483648 does not exist"},
      {"severity", Alert(3, "x", 5), kStoreErrInvalidArgument,
       "alert 2 of 3: severity 5 is not one of 0 none, 1 info, 2 warning, 3 error, 4 critical"},
      {"details", notJson, kStoreErrInvalidArgument,
       "alert 2 of 3: the details are not a JSON object"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<StoredAlert> batch = {Alert(3, "good"), c.bad, Alert(4, "good too")};
    CLmError e = alerts().Add(batch);
    EXPECT_EQ(e.GetErrorCode(), c.code);
    EXPECT_EQ(e.Text(), c.text);
    EXPECT_TRUE(List().empty());
    EXPECT_EQ(batch[0].id, 0u) << "ids are set only when stored";
  }
  std::vector<StoredAlert> one = {Alert(9, "alone")};
  EXPECT_EQ(alerts().Add(one).Text(), "client 9 does not exist") << "one alert: no position";
}

TEST_F(AlertStoreTest, ListsFilterByClientAndAcknowledgementAndKeepTheMostRecent) {
  std::vector<StoredAlert> batch;
  for (int i = 1; i <= 5; ++i) batch.push_back(Alert(i % 2 ? 3 : 4, "a" + std::to_string(i)));
  ASSERT_OK(alerts().Add(batch));
  ASSERT_OK(alerts().Acknowledge({batch[0].id, batch[1].id, batch[3].id}, "admin", 1700000100));

  struct Case {
    const char* name;
    AlertFilter filter;
    std::vector<std::string> texts;
  };
  const Case cases[] = {
      {"all, oldest first", {}, {"a1", "a2", "a3", "a4", "a5"}},
      {"one client", {3, false, 0}, {"a1", "a3", "a5"}},
      {"unacknowledged", {0, true, 0}, {"a3", "a5"}},
      {"the two most recent", {0, false, 2}, {"a4", "a5"}},
      {"all three filters", {3, true, 1}, {"a5"}},
      {"nothing unacknowledged of that client", {4, true, 0}, {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Texts(List(c.filter)), c.texts) << c.name;
  }
  std::vector<StoredAlert> none;
  CLmError e = alerts().List({9, false, 0}, &none);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "client 9 does not exist");
  std::vector<StoredAlert> all = List();
  EXPECT_EQ(all[0].acknowledgedAt, 1700000100);
  EXPECT_EQ(all[0].acknowledgedBy, "admin");
  EXPECT_EQ(all[2].acknowledgedAt, 0);
}

TEST_F(AlertStoreTest, AcknowledgingIsAllOrNothingAndKeepsTheFirstAcknowledgement) {
  std::vector<StoredAlert> batch = {Alert(3, "a"), Alert(3, "b")};
  ASSERT_OK(alerts().Add(batch));
  const uint64_t a = batch[0].id, b = batch[1].id;

  CLmError e = alerts().Acknowledge({a, b + 100}, "admin", 10);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "alert " + std::to_string(b + 100) + " does not exist");
  EXPECT_EQ(List({0, true, 0}).size(), 2u) << "the first id was not acknowledged either";

  EXPECT_EQ(alerts().Acknowledge({}, "admin", 10).GetErrorCode(), kStoreErrInvalidArgument);

  ASSERT_OK(alerts().Acknowledge({a, a}, "first", 10));
  ASSERT_OK(alerts().Acknowledge({a, b}, "second", 20));
  std::vector<StoredAlert> all = List();
  EXPECT_EQ(all[0].acknowledgedBy, "first");
  EXPECT_EQ(all[0].acknowledgedAt, 10);
  EXPECT_EQ(all[1].acknowledgedBy, "second");
}

TEST_F(AlertStoreTest, FixtureAlertsAreStoredAsXmlEntries) {
  ASSERT_OK(t_.Load(R"json({"format": 1, "alerts": [
      {"time": 100, "clientId": 4, "severity": 2, "type": 7, "text": "low space"},
      {"time": 200, "text": "acknowledged", "acknowledgedAt": 250, "acknowledgedBy": "ops"}]})json"));
  std::vector<StoredAlert> all = List();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].source, StoredAlert::kSourceXml);
  EXPECT_EQ(all[0].clientName, "fs02");
  EXPECT_EQ(all[0].raisedAt, 100);
  EXPECT_EQ(all[0].alertType, 7);
  EXPECT_EQ(all[1].acknowledgedAt, 250);
  EXPECT_EQ(all[1].acknowledgedBy, "ops");

  EXPECT_EQ(t_.Load(R"json({"format": 1, "alerts": [{"clientId": 9}]})json").GetErrorCode(),
            kStoreErrNotFound);
  EXPECT_EQ(t_.Load(R"json({"format": 1, "alerts": [{"severity": 5}]})json").GetErrorCode(),
            kStoreErrInvalidArgument);
}

TEST(AlertStoreMigration, AlertsOfAnOlderFileAreListedAfterTheUpgrade) {
  TempStore t;
  t.options().migrations = ServerMigrations().first(2);
  ASSERT_OK(t.Open());
  {
    Store::Transaction txn(t.store(), "an alert of the older schema", Store::Transaction::kWrite);
    ASSERT_OK(
        txn.Exec("INSERT INTO alerts (received_at, alert_type, client_id, details)"
                 " VALUES (50, 4, 0, '{\"alertType\": 4}')"));
    ASSERT_OK(txn.Commit());
  }
  t.options().migrations = {};
  ASSERT_OK(t.Reopen());
  std::vector<StoredAlert> all;
  ASSERT_OK(AlertStore(t.store()).List({}, &all));
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].source, StoredAlert::kSourceRecord);
  EXPECT_EQ(all[0].alertType, 4);
  EXPECT_EQ(all[0].receivedAt, 50);
  EXPECT_EQ(all[0].acknowledgedAt, 0);
  EXPECT_EQ(all[0].details, R"({"alertType": 4})");
}

}  // namespace
}  // namespace appmgr::server
