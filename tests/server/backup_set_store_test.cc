// BackupSetStore and PreparedCacheStore: each operation on the small fixture.
#include "server/store/BackupSetStore.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "server/store/PreparedCacheStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

class BackupSetStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_OK(t_.Open());
    ASSERT_OK(t_.Load(kSmallFixture));
  }

  // contents_deleted of a backup set or subclient, read directly.
  int64_t Deleted(const char* table, uint64_t id) {
    std::string sql = std::string("SELECT contents_deleted FROM ") + table + " WHERE id = ?1";
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kRead);
    Statement st = txn.Prepare(sql.c_str());
    st.BindU64(1, id);
    bool row = false;
    EXPECT_OK(st.Step(&row));
    return row ? st.Int(0) : -1;
  }

  // A BackupSetStore only borrows the store, so each use makes one.
  BackupSetStore sets() { return BackupSetStore(t_.store()); }

  TempStore t_;
};

struct MissingCase {
  const char* name;
  std::function<CLmError(BackupSetStore&, uint64_t)> call;
};
void PrintTo(const MissingCase& c, std::ostream* os) {
  *os << c.name;
}

class BackupSetMissing : public BackupSetStoreTest,
                         public testing::WithParamInterface<MissingCase> {};

TEST_P(BackupSetMissing, IsNotFoundNamingTheBackupSet) {
  BackupSetStore sets(t_.store());
  CLmError e = GetParam().call(sets, 42);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "backup set 42 does not exist");
}

INSTANTIATE_TEST_SUITE_P(
    EveryOperation, BackupSetMissing,
    testing::Values(
        MissingCase{"Lookup",
                    [](BackupSetStore& s, uint64_t id) {
                      BackupSetInfo info;
                      return s.Lookup(id, &info);
                    }},
        MissingCase{"Update", [](BackupSetStore& s, uint64_t id) { return s.Update(id, "x", 1); }},
        MissingCase{"DefaultSubclientForStore",
                    [](BackupSetStore& s, uint64_t id) {
                      uint64_t sc = 0;
                      return s.DefaultSubclientForStore(id, "primary", &sc);
                    }},
        MissingCase{"StoreList",
                    [](BackupSetStore& s, uint64_t id) {
                      std::vector<std::string> v;
                      return s.StoreList(id, &v);
                    }},
        MissingCase{"WildcardExpressions",
                    [](BackupSetStore& s, uint64_t id) {
                      std::vector<std::string> v;
                      return s.WildcardExpressions(id, &v);
                    }},
        MissingCase{"ClientIdForBackupSet",
                    [](BackupSetStore& s, uint64_t id) {
                      uint64_t c = 0;
                      return s.ClientIdForBackupSet(id, &c);
                    }},
        MissingCase{"CheckPairConflict",
                    [](BackupSetStore& s, uint64_t id) {
                      PairConflict c;
                      return s.CheckPairConflict(id, "a", "b", &c);
                    }},
        MissingCase{"DataInterfacePair",
                    [](BackupSetStore& s, uint64_t id) {
                      InterfacePair p;
                      return s.DataInterfacePair(id, 1, 0, &p);
                    }},
        MissingCase{"FlrSystemStateInfo",
                    [](BackupSetStore& s, uint64_t id) {
                      std::vector<FlrSystemState> v;
                      return s.FlrSystemStateInfo(id, "db01", &v);
                    }}),
    [](const testing::TestParamInfo<MissingCase>& i) { return std::string(i.param.name); });

TEST_F(BackupSetStoreTest, LookupReturnsNameValueAndDescription) {
  BackupSetInfo info;
  ASSERT_OK(sets().Lookup(7, &info));
  EXPECT_EQ(info.name, "defaultBackupSet");
  EXPECT_EQ(info.value, -5);
  EXPECT_EQ(info.description, "files");
}

TEST_F(BackupSetStoreTest, UpdateRenamesAndSetsTheValueOfThatBackupSetOnly) {
  ASSERT_OK(sets().Update(7, "nightly", INT64_MIN));
  BackupSetInfo info;
  ASSERT_OK(sets().Lookup(7, &info));
  EXPECT_EQ(info.name, "nightly");
  EXPECT_EQ(info.value, INT64_MIN);
  EXPECT_EQ(info.description, "files");
  ASSERT_OK(sets().Lookup(8, &info));
  EXPECT_EQ(info.name, "second");
}

TEST_F(BackupSetStoreTest, UpdateRefusesASiblingsNameAndAnEmptyName) {
  CLmError e = sets().Update(7, "second", 1);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict);
  EXPECT_NE(e.Text().find("'second'"), std::string::npos) << e.Text();
  EXPECT_EQ(sets().Update(7, "", 1).GetErrorCode(), kStoreErrInvalidArgument);
  BackupSetInfo info;
  ASSERT_OK(sets().Lookup(7, &info));
  EXPECT_EQ(info.name, "defaultBackupSet");
  EXPECT_EQ(info.value, -5);
}

TEST_F(BackupSetStoreTest, DefaultSubclientForStore) {
  uint64_t subclient = 0;
  ASSERT_OK(sets().DefaultSubclientForStore(7, "archive", &subclient));
  EXPECT_EQ(subclient, 72u);

  subclient = 5;
  CLmError e = sets().DefaultSubclientForStore(7, "Archive", &subclient);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "backup set 7 has no store named 'Archive'");
  e = sets().DefaultSubclientForStore(7, "standby", &subclient);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "store 'standby' of backup set 7 has no default subclient");
  EXPECT_EQ(subclient, 5u);  // untouched on failure
}

TEST_F(BackupSetStoreTest, ListsFollowTheStoredPositionsNotTheInsertionOrder) {
  {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kWrite);
    ASSERT_OK(txn.Exec(
        "INSERT INTO backup_set_wildcards VALUES (8, 5, 'last'), (8, 1, 'first'), (8, 3, 'mid');"
        "INSERT INTO backup_set_stores VALUES (8, 9, 'z', NULL), (8, 2, 'a', 81);"));
    ASSERT_OK(txn.Commit());
  }
  std::vector<std::string> list = {"stale"};
  ASSERT_OK(sets().WildcardExpressions(8, &list));
  EXPECT_EQ(list, (std::vector<std::string>{"first", "mid", "last"}));
  ASSERT_OK(sets().StoreList(8, &list));
  EXPECT_EQ(list, (std::vector<std::string>{"a", "z"}));
  ASSERT_OK(sets().StoreList(7, &list));
  EXPECT_EQ(list, (std::vector<std::string>{"primary", "archive", "standby"}));
}

TEST_F(BackupSetStoreTest, ABackupSetWithoutStoresHasAnEmptyList) {
  {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kWrite);
    ASSERT_OK(txn.Exec("DELETE FROM backup_set_stores WHERE backup_set_id = 7"));
    ASSERT_OK(txn.Commit());
  }
  std::vector<std::string> list = {"stale"};
  ASSERT_OK(sets().StoreList(7, &list));
  EXPECT_TRUE(list.empty());
}

TEST_F(BackupSetStoreTest, ClientIdForBackupSetFollowsTheInstance) {
  uint64_t client = 0;
  ASSERT_OK(sets().ClientIdForBackupSet(8, &client));
  EXPECT_EQ(client, 3u);
}

struct ConflictCase {
  const char* name;
  uint64_t backupSet;
  std::string source;
  std::string destination;
  int code;               // 0: success
  uint64_t existingPair;  // 0: no conflict
};
void PrintTo(const ConflictCase& c, std::ostream* os) {
  *os << c.name;
}

class PairConflictCheck : public BackupSetStoreTest,
                          public testing::WithParamInterface<ConflictCase> {};

TEST_P(PairConflictCheck, FindsTheExistingPairThatSharesAnEnd) {
  const ConflictCase& c = GetParam();
  PairConflict out;
  CLmError e = sets().CheckPairConflict(c.backupSet, c.source, c.destination, &out);
  ASSERT_EQ(e.GetErrorCode(), c.code) << e.Text();
  if (c.code != 0) return;
  EXPECT_EQ(out.conflict, c.existingPair != 0);
  EXPECT_EQ(out.existing.pairId, c.existingPair);
  EXPECT_EQ(out.proposed, (DataPair{0, c.backupSet, 3, 0, c.source, "", "", c.destination, 0}));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PairConflictCheck,
    testing::Values(ConflictCase{"no_shared_end", 7, "F:\\", "/replica/F", 0, 0},
                    ConflictCase{"same_source", 7, "D:\\Logs", "/elsewhere", 0, 2},
                    ConflictCase{"same_destination", 7, "F:\\", "/replica/Data", 0, 1},
                    ConflictCase{"both_ends_of_different_pairs_gives_the_lowest", 7, "D:\\Logs",
                                 "/replica/Data", 0, 1},
                    ConflictCase{"comparison_is_exact", 7, "d:\\logs", "/replica/data", 0, 0},
                    ConflictCase{"pairs_of_another_backup_set_do_not_count", 8, "D:\\Data",
                                 "/replica/Data", 0, 0},
                    ConflictCase{"source_at_its_limit", 7, std::string(254, 's'), "/d", 0, 0},
                    ConflictCase{"source_one_past_its_limit", 7, std::string(255, 's'), "/d",
                                 kStoreErrInvalidArgument, 0},
                    ConflictCase{"destination_at_its_limit", 7, "s", std::string(1023, 'd'), 0, 0},
                    ConflictCase{"destination_one_past_its_limit", 7, "s", std::string(1024, 'd'),
                                 kStoreErrInvalidArgument, 0},
                    ConflictCase{"empty_source", 7, "", "/d", kStoreErrInvalidArgument, 0},
                    ConflictCase{"empty_destination", 7, "s", "", kStoreErrInvalidArgument, 0}),
    [](const testing::TestParamInfo<ConflictCase>& i) { return std::string(i.param.name); });

TEST_F(BackupSetStoreTest, AConflictReportsEveryFieldOfTheExistingPair) {
  PairConflict out;
  ASSERT_OK(sets().CheckPairConflict(7, "D:\\Data", "/new", &out));
  ASSERT_TRUE(out.conflict);
  EXPECT_EQ(out.existing, (DataPair{1, 7, 3, 4, "D:\\Data", "{s1}", "{d1}", "/replica/Data", 1}));
}

TEST_F(BackupSetStoreTest, DataInterfacePairBySelector) {
  InterfacePair pair;
  ASSERT_OK(sets().DataInterfacePair(7, 1, 1, &pair));
  EXPECT_EQ(pair.first, "eth1");
  EXPECT_EQ(pair.second, "eth2");
  CLmError e = sets().DataInterfacePair(7, 1, 2, &pair);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "backup set 7 has no interface pair for pair 1 under selector 2");
}

TEST_F(BackupSetStoreTest, FlrSystemStateInfoKeepsRecordAndPairOrder) {
  std::vector<FlrSystemState> out(3);  // replaced, not appended to
  ASSERT_OK(sets().FlrSystemStateInfo(7, "db01", &out));
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0].id, 5u);
  EXPECT_EQ(out[0].value, 2u);
  EXPECT_EQ(out[0].text1, "Registry");
  EXPECT_EQ(out[0].text2, "HKLM");
  EXPECT_EQ(out[0].pairs, (std::vector<FlrPair>{{1, "SYSTEM"}, {2, "SOFTWARE"}}));
  EXPECT_EQ(out[1].id, 4u);
  EXPECT_TRUE(out[1].pairs.empty());
  ASSERT_OK(sets().FlrSystemStateInfo(7, "nobody", &out));
  EXPECT_TRUE(out.empty());
}

TEST_F(BackupSetStoreTest, DeletingABackupSetTakesEverythingItOwns) {
  {
    Store::Transaction txn(t_.store(), "test", Store::Transaction::kWrite);
    ASSERT_OK(txn.Exec("DELETE FROM backup_sets WHERE id = 7"));
    ASSERT_OK(txn.Commit());
  }
  Store::Transaction txn(t_.store(), "test", Store::Transaction::kRead);
  Statement st = txn.Prepare(
      "SELECT (SELECT count(*) FROM subclients WHERE backup_set_id = 7)"
      " + (SELECT count(*) FROM backup_set_stores WHERE backup_set_id = 7)"
      " + (SELECT count(*) FROM replication_pairs WHERE backup_set_id = 7)"
      " + (SELECT count(*) FROM fr_interface_pairs WHERE backup_set_id = 7)"
      " + (SELECT count(*) FROM flr_system_state_pairs)");
  bool row = false;
  ASSERT_OK(st.Step(&row));
  EXPECT_EQ(st.Int(0), 0);
}

TEST_F(BackupSetStoreTest, ASubclientThatIsAStoresDefaultCannotBeDeletedAlone) {
  Store::Transaction txn(t_.store(), "test", Store::Transaction::kWrite);
  EXPECT_EQ(txn.Exec("DELETE FROM subclients WHERE id = 71").GetErrorCode(), kStoreErrConflict);
}

TEST(PreparedCacheStore, EntriesComeBackPerJobInOrderWithTheirBytes) {
  TempStore t;
  ASSERT_OK(t.Open());
  PreparedCacheStore cache(t.store());
  std::vector<PreparedCacheEntry> first = {
      {0x3400027f, 0x34000280, {0x00, 0x01, 0xff}, {}},
      {0x34000259, 0x34000260, {0xab}, {0x00, 0x00}},
  };
  ASSERT_OK(cache.Append(9, first));
  ASSERT_OK(cache.Append(10, {{0x34000093, 0x34000094, {1}, {2}}}));
  ASSERT_OK(cache.Append(9, {{0x340000d0, 0x340000d1, {3}, {4}}}));
  std::vector<PreparedCacheEntry> out;
  ASSERT_OK(cache.Entries(9, &out));
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[0], first[0]);
  EXPECT_EQ(out[1], first[1]);
  EXPECT_EQ(out[2].requestId, 0x340000d0u);
  ASSERT_OK(cache.Entries(11, &out));
  EXPECT_TRUE(out.empty());
}

}  // namespace
}  // namespace appmgr::server
