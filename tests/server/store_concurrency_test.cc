// Store: many server threads at once. Also run under ThreadSanitizer (label "concurrency").
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "server/store/BackupSetStore.h"
#include "appmgr/records/GenericRecords.h"
#include "server/store/EntityTreeStore.h"
#include "server/store/PropertyStore.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 150;

std::string FourBackupSets() {
  std::string sets;
  for (int i = 0; i < kThreads; ++i) {
    std::string id = std::to_string(100 + i);
    sets += std::string(i ? "," : "") + R"({"id": )" + id + R"(, "instance": 12, "name": "set)" +
            id + R"(", "subclients": [{"id": )" + id + R"(0, "name": "default"}],
            "replicationPairs": [{"id": )" +
            id + R"(, "destinationClient": 3,
                                  "source": "src", "destination": "dst"}]})";
  }
  return R"({"format": 1, "appTypes": [{"id": 10, "name": "File System"}],
    "clients": [{"id": 3, "name": "db01", "hostName": "h",
                 "applications": [{"id": 301, "appType": 10}]}],
    "instances": [{"id": 12, "client": 3, "appType": 10, "name": "default"}],
    "globalParams": [{"name": "x", "value": "0"}, {"name": "y", "value": "0"}],
    "backupSets": [)" +
         sets + "]}";
}

// Reads x and y in one read transaction: a writer changes both in one transaction, so a reader
// must never see them differ.
bool XAndYAgree(Store& store) {
  Store::Transaction txn(store, "test", Store::Transaction::kRead);
  Statement st = txn.Prepare(
      "SELECT (SELECT value FROM global_params WHERE name = 'x') ="
      " (SELECT value FROM global_params WHERE name = 'y')");
  bool row = false;
  return !st.Step(&row) && row && st.Int(0) == 1;
}

CLmError WriteXAndY(Store& store, const std::string& value) {
  Store::Transaction txn(store, "test", Store::Transaction::kWrite);
  for (const char* sql : {"UPDATE global_params SET value = ?1 WHERE name = 'x'",
                          "UPDATE global_params SET value = ?1 WHERE name = 'y'"}) {
    Statement st = txn.Prepare(sql);
    st.BindText(1, value);
    if (CLmError e = st.Run()) return e;
  }
  return txn.Commit();
}

TEST(StoreConcurrency, FourThreadsMixingReadsAndWritesSeeConsistentData) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.Load(FourBackupSets()));
  std::atomic<int> failures{0};
  std::vector<std::string> firstFailure(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      BackupSetStore sets(t.store());
      PropertyStore props(t.store());
      const uint64_t own = 100 + i;
      const uint64_t other = 100 + (i + 1) % kThreads;
      auto check = [&](bool good, const std::string& what) {
        if (good) return;
        failures.fetch_add(1);
        if (firstFailure[i].empty()) firstFailure[i] = what;  // each thread writes its own slot
      };
      for (int k = 0; k < kRounds; ++k) {
        std::string name = "set" + std::to_string(own) + "-" + std::to_string(k);
        CLmError e = sets.Update(own, name, k);
        check(!e, "update: " + e.Text());
        BackupSetInfo info;
        e = sets.Lookup(own, &info);
        check(!e && info.name == name && info.value == k, "read own write: " + e.Text());
        e = sets.Lookup(other, &info);
        check(!e, "lookup other: " + e.Text());
        e = props.Set(EntityKind::kBackupSet, own, {{"round", 0, std::to_string(k)}}, false);
        check(!e, "set property: " + e.Text());
        std::vector<Property> got;
        e = props.Get(EntityKind::kBackupSet, own, 0, &got);
        check(!e && got.size() == 1 && got[0].value == std::to_string(k),
              "get property: " + e.Text());
        e = EntityTreeStore(t.store()).SetSubtreeDeleted(kEntityLevelBackupSet, own, 0, k % 2 == 0);
        check(!e, "delete-all: " + e.Text());
        PairConflict conflict;
        e = sets.CheckPairConflict(other, "src", "elsewhere", &conflict);
        check(!e && conflict.conflict, "pair conflict: " + e.Text());
        e = WriteXAndY(t.store(), std::to_string(i * 1000 + k));
        check(!e, "write x and y: " + e.Text());
        check(XAndYAgree(t.store()), "x and y differ inside one read transaction");
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (int i = 0; i < kThreads; ++i) EXPECT_EQ(firstFailure[i], "") << "thread " << i;
  EXPECT_EQ(failures.load(), 0);
  BackupSetStore sets(t.store());
  for (int i = 0; i < kThreads; ++i) {
    BackupSetInfo info;
    ASSERT_OK(sets.Lookup(100 + i, &info));
    EXPECT_EQ(info.name, "set" + std::to_string(100 + i) + "-" + std::to_string(kRounds - 1));
    EXPECT_EQ(info.value, kRounds - 1);
  }
}

}  // namespace
}  // namespace appmgr::server
