// Store: opening, migrations, transactions and durability.
#include "server/store/Store.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <ostream>

#include "platform/base/EvDebug.h"
#include "server/store/BackupSetStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

// Reads one integer with a connection of its own, as an outside tool would.
int64_t QueryInt(const std::string& path, const char* sql) {
  sqlite3* db = nullptr;
  EXPECT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  sqlite3_stmt* stmt = nullptr;
  int64_t value = -1;
  if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK &&
      sqlite3_step(stmt) == SQLITE_ROW) {
    value = sqlite3_column_int64(stmt, 0);
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return value;
}

void ExecOutside(const std::string& path, const char* sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  sqlite3_close(db);
}

const int kLatest = static_cast<int>(ServerMigrations().size());

TEST(StoreOpen, CreatesTheWholeSchemaInANewFile) {
  TempStore t;
  ASSERT_OK(t.Open());
  EXPECT_EQ(t.store().schema_version(), kLatest);
  t.Close();  // the store holds the file alone while it is open
  EXPECT_EQ(QueryInt(t.path(), "PRAGMA user_version"), kLatest);
  for (const char* table : {"domain",
                            "clients",
                            "client_platforms",
                            "client_groups",
                            "client_group_members",
                            "app_types",
                            "client_app_types",
                            "instances",
                            "backup_sets",
                            "subclients",
                            "subclient_content",
                            "backup_set_stores",
                            "backup_set_wildcards",
                            "replication_pairs",
                            "fr_interface_pairs",
                            "flr_system_states",
                            "flr_system_state_pairs",
                            "app_ids",
                            "global_params",
                            "app_properties",
                            "properties",
                            "snapshots",
                            "mailbox_delegates",
                            "alerts",
                            "server_cache_entries"}) {
    std::string sql = std::string("SELECT count(*) FROM sqlite_schema WHERE name = '") + table +
                      "' AND type = 'table'";
    EXPECT_EQ(QueryInt(t.path(), sql.c_str()), 1) << table;
  }
  // WAL is a property of the file: an outside connection sees it too.
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(t.path().c_str(), &db), SQLITE_OK);
  sqlite3_stmt* stmt = nullptr;
  ASSERT_EQ(sqlite3_prepare_v2(db, "PRAGMA journal_mode", -1, &stmt, nullptr), SQLITE_OK);
  ASSERT_EQ(sqlite3_step(stmt), SQLITE_ROW);
  EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)), "wal");
  sqlite3_finalize(stmt);
  sqlite3_close(db);
}

TEST(StoreOpen, ReopeningKeepsDataAndDoesNotMigrateAgain) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.Load(kSmallFixture));
  EvLogCapture log;
  ASSERT_OK(t.Reopen());
  EXPECT_EQ(log.CountContaining("schema migrated"), 0u);
  EXPECT_EQ(t.store().schema_version(), kLatest);
  BackupSetInfo info;
  ASSERT_OK(BackupSetStore(t.store()).Lookup(7, &info));
  EXPECT_EQ(info.name, "defaultBackupSet");
}

constexpr Migration kV1[] = {{1, "table t", "CREATE TABLE t (a INTEGER NOT NULL) STRICT;"}};
constexpr Migration kV2[] = {{1, "table t", "CREATE TABLE t (a INTEGER NOT NULL) STRICT;"},
                             {2, "column b",
                              "ALTER TABLE t ADD COLUMN b TEXT NOT NULL DEFAULT 'x';"
                              "CREATE TABLE u (c INTEGER) STRICT;"}};
// The second step of migration 2 fails after its first step has run.
constexpr Migration kV2Broken[] = {{1, "table t", "CREATE TABLE t (a INTEGER NOT NULL) STRICT;"},
                                   {2, "broken",
                                    "CREATE TABLE u (c INTEGER) STRICT;"
                                    "INSERT INTO missing_table VALUES (1);"}};

TEST(StoreMigrate, AppliesOnlyTheMigrationsAFileHasNotSeen) {
  TempStore t;
  t.options().migrations = kV1;
  ASSERT_OK(t.Open());
  t.Close();
  ExecOutside(t.path(), "INSERT INTO t (a) VALUES (42)");
  t.options().migrations = kV2;
  ASSERT_OK(t.Open());
  EXPECT_EQ(t.store().schema_version(), 2);
  t.Close();
  EXPECT_EQ(QueryInt(t.path(), "SELECT a FROM t WHERE b = 'x'"), 42);
  EXPECT_EQ(QueryInt(t.path(), "SELECT count(*) FROM u"), 0);
}

TEST(StoreMigrate, AFailedMigrationLeavesTheFileAtItsVersion) {
  TempStore t;
  t.options().migrations = kV1;
  ASSERT_OK(t.Open());
  t.Close();
  t.options().migrations = kV2Broken;
  CLmError e = t.Open();
  ASSERT_TRUE(e);
  EXPECT_EQ(e.GetErrorCode(), kStoreErrDatabase);
  EXPECT_NE(e.Text().find("migration 2 (broken)"), std::string::npos) << e.Text();
  EXPECT_NE(e.Text().find("missing_table"), std::string::npos) << e.Text();
  EXPECT_EQ(QueryInt(t.path(), "PRAGMA user_version"), 1);
  EXPECT_EQ(QueryInt(t.path(), "SELECT count(*) FROM sqlite_schema WHERE name = 'u'"), 0);
}

struct RefusalCase {
  const char* name;
  std::function<void(TempStore&)> prepare;
  int code;
  const char* fragment;
};
void PrintTo(const RefusalCase& c, std::ostream* os) {
  *os << c.name;
}

class StoreOpenRefuses : public testing::TestWithParam<RefusalCase> {};

TEST_P(StoreOpenRefuses, WithAClearError) {
  const RefusalCase& c = GetParam();
  TempStore t;
  c.prepare(t);
  CLmError e = t.Open();
  ASSERT_TRUE(e);
  EXPECT_FALSE(t.open());
  EXPECT_EQ(e.GetErrorCode(), c.code) << e.Text();
  EXPECT_NE(e.Text().find(c.fragment), std::string::npos) << e.Text();
}

const Migration kGap[] = {{1, "a", "SELECT 1;"}, {3, "c", "SELECT 1;"}};

INSTANTIATE_TEST_SUITE_P(
    Cases, StoreOpenRefuses,
    testing::Values(
        RefusalCase{"file_from_a_newer_server",
                    [](TempStore& t) {
                      ASSERT_OK(t.Open());
                      t.Close();
                      std::string sql = "PRAGMA user_version = " + std::to_string(kLatest + 1);
                      ExecOutside(t.path(), sql.c_str());
                    },
                    kKpErrNotSupported, "written by a newer server"},
        RefusalCase{"file_that_is_not_a_database",
                    [](TempStore& t) { std::ofstream(t.path()) << std::string(8192, 'x'); },
                    kStoreErrDatabase, "not a database"},
        RefusalCase{"folder_that_does_not_exist",
                    [](TempStore& t) { t.set_path(t.dir() + "/missing/appmgr.db"); },
                    kStoreErrDatabase, "unable to open"},
        RefusalCase{"migrations_with_a_gap", [](TempStore& t) { t.options().migrations = kGap; },
                    kKpErrInternal, "numbered 3 at place 2"}),
    [](const testing::TestParamInfo<RefusalCase>& i) { return std::string(i.param.name); });

TEST(StoreOpenRefuses, LeavesANewerFileUntouched) {
  TempStore t;
  ASSERT_OK(t.Open());
  t.Close();
  ExecOutside(t.path(), "PRAGMA user_version = 99");
  ASSERT_TRUE(t.Open());
  EXPECT_EQ(QueryInt(t.path(), "PRAGMA user_version"), 99);
}

TEST(StoreTransaction, RollsBackWhatWasNotCommitted) {
  TempStore t;
  ASSERT_OK(t.Open());
  {
    Store::Transaction txn(t.store(), "test", Store::Transaction::kWrite);
    ASSERT_OK(txn.status());
    ASSERT_OK(txn.Exec("INSERT INTO global_params VALUES ('dropped', '1')"));
  }
  {
    Store::Transaction txn(t.store(), "test", Store::Transaction::kWrite);
    ASSERT_OK(txn.Exec("INSERT INTO global_params VALUES ('kept', '1')"));
    ASSERT_OK(txn.Commit());
    CLmError again = txn.Commit();
    EXPECT_EQ(again.GetErrorCode(), kKpErrInternal);
  }
  Store::Transaction read(t.store(), "test", Store::Transaction::kRead);
  Statement st = read.Prepare("SELECT group_concat(name) FROM global_params");
  bool row = false;
  ASSERT_OK(st.Step(&row));
  ASSERT_TRUE(row);
  EXPECT_EQ(st.Text(0), "kept");
}

TEST(StoreTransaction, RefusesToNestOnOneThreadInsteadOfDeadlocking) {
  TempStore t;
  ASSERT_OK(t.Open());
  Store::Transaction outer(t.store(), "outer", Store::Transaction::kWrite);
  Store::Transaction inner(t.store(), "inner", Store::Transaction::kRead);
  EXPECT_EQ(inner.status().GetErrorCode(), kKpErrInternal);
  Statement st = inner.Prepare("SELECT 1");
  bool row = true;
  EXPECT_EQ(st.Step(&row).GetErrorCode(), kKpErrInternal);
  EXPECT_FALSE(row);
  EXPECT_OK(outer.Exec("SELECT 1"));  // the outer one is unharmed
}

TEST(StoreTransaction, TheSameStatementTwiceAtOnceGetsTwoCursors) {
  TempStore t;
  ASSERT_OK(t.Open());
  Store::Transaction txn(t.store(), "test", Store::Transaction::kWrite);
  ASSERT_OK(txn.Exec("INSERT INTO global_params VALUES ('a', '1'), ('b', '2')"));
  const char* sql = "SELECT name FROM global_params ORDER BY name";
  Statement outer = txn.Prepare(sql);
  bool row = false;
  ASSERT_OK(outer.Step(&row));
  ASSERT_TRUE(row);
  {
    Statement inner = txn.Prepare(sql);
    ASSERT_OK(inner.Step(&row));
    EXPECT_EQ(inner.Text(0), "a");
  }
  ASSERT_OK(outer.Step(&row));
  ASSERT_TRUE(row);
  EXPECT_EQ(outer.Text(0), "b");  // the inner cursor did not reset the outer one
}

TEST(StoreTransaction, AConstraintFailureKeepsItsCodeAndNamesTheColumn) {
  TempStore t;
  ASSERT_OK(t.Open());
  Store::Transaction txn(t.store(), "adding a parameter", Store::Transaction::kWrite);
  ASSERT_OK(txn.Exec("INSERT INTO global_params VALUES ('a', '1')"));
  Statement st = txn.Prepare("INSERT INTO global_params VALUES (?1, ?2)");
  st.BindText(1, "a").BindText(2, "2");
  CLmError e = st.Run();
  EXPECT_EQ(e.GetErrorCode(), kStoreErrConflict);
  EXPECT_EQ(e.Text(), "adding a parameter: UNIQUE constraint failed: global_params.name");
  Statement check = txn.Prepare("INSERT INTO global_params VALUES ('', '1')");
  EXPECT_EQ(check.Run().GetErrorCode(), kStoreErrInvalidArgument);
}

// By default the store holds the file alone while it is open; shared, another program can read
// it meanwhile, and sees what the store committed.
TEST(StoreOpen, HoldsTheFileAloneUnlessShared) {
  for (bool exclusive : {true, false}) {
    TempStore t;
    t.options().exclusive = exclusive;
    ASSERT_OK(t.Open());
    ASSERT_OK(t.Load(kSmallFixture));
    BackupSetInfo info;
    ASSERT_OK(BackupSetStore(t.store()).Lookup(7, &info));
    EXPECT_EQ(QueryInt(t.path(), "SELECT count(*) FROM backup_sets"), exclusive ? -1 : 2) << exclusive;
    t.Close();
    EXPECT_EQ(QueryInt(t.path(), "SELECT count(*) FROM backup_sets"), 2) << exclusive;
  }
}

TEST(StoreDurability, ACommittedChangeSurvivesClosingAndReopening) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.Load(kSmallFixture));
  ASSERT_OK(BackupSetStore(t.store()).Update(7, "renamed", 99));
  ASSERT_OK(t.Reopen());
  BackupSetInfo info;
  ASSERT_OK(BackupSetStore(t.store()).Lookup(7, &info));
  EXPECT_EQ(info.name, "renamed");
  EXPECT_EQ(info.value, 99);
}

// The server is killed right after acknowledging a change: no close, no checkpoint. The next
// start finds the change in the write-ahead log.
TEST(StoreDurability, ACommittedChangeSurvivesTheServerBeingKilled) {
  TempStore t;
  ASSERT_OK(t.Open());
  ASSERT_OK(t.Load(kSmallFixture));
  t.Close();
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    std::unique_ptr<Store> store;
    bool ok = !Store::Open(t.path(), {}, &store) &&
              !BackupSetStore(*store).Update(7, "acknowledged", 1234);
    if (ok) kill(getpid(), SIGKILL);
    _exit(1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the child failed to update";
  ASSERT_OK(t.Open());
  BackupSetInfo info;
  ASSERT_OK(BackupSetStore(t.store()).Lookup(7, &info));
  EXPECT_EQ(info.name, "acknowledged");
  EXPECT_EQ(info.value, 1234);
}

}  // namespace
}  // namespace appmgr::server
