#include "server/store/Store.h"

#include <sqlite3.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/base/EvDebug.h"
#include "server/store/Fixture.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

constexpr const char* kOpenLabel = "Store::Open";
constexpr const char* kTxnLabel = "Store::Transaction";

// STRICT tables arrived in 3.37; the schema uses them throughout.
constexpr int kMinimumSqlite = 3037000;

// Runs a PRAGMA that answers with one text row, and returns that text.
CLmError PragmaText(sqlite3* db, const char* sql, const std::string& operation,
                    std::string* value) {
  sqlite3_stmt* stmt = nullptr;
  int rc = sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
  if (rc == SQLITE_OK) rc = sqlite3_step(stmt);
  CLmError e;
  if (rc == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(stmt, 0);
    *value = text ? reinterpret_cast<const char*>(text) : "";
  } else if (rc == SQLITE_DONE) {
    *value = "";
  } else {
    e = SqliteError(db, rc, operation);
  }
  sqlite3_finalize(stmt);
  return e;
}

CLmError Configure(sqlite3* db, const std::string& path, const Store::Options& options) {
  sqlite3_extended_result_codes(db, 1);
  sqlite3_busy_timeout(db, options.busyTimeoutMs);
  std::string value;
  // Foreign keys are off by default, per connection, and silently stay off in a build without
  // them: ask back.
  if (CLmError e = PragmaText(db, "PRAGMA foreign_keys = ON", path, &value)) return e;
  if (CLmError e = PragmaText(db, "PRAGMA foreign_keys", path, &value)) return e;
  if (value != "1") {
    return CLmError(kStoreErrDatabase, path + ": this SQLite cannot enforce foreign keys");
  }
  // Before the first access of the file: in exclusive mode SQLite then keeps the WAL index in
  // memory and takes its file lock once, at the first read, instead of around every transaction.
  if (options.exclusive) {
    if (CLmError e = PragmaText(db, "PRAGMA locking_mode = EXCLUSIVE", path, &value)) return e;
  }
  // The first statement that reads the file: a file that is not a database fails here.
  if (CLmError e = PragmaText(db, "PRAGMA journal_mode = WAL", path, &value)) return e;
  if (value != "wal") {
    return CLmError(
        kStoreErrDatabase,
        path + ": cannot switch to write-ahead logging (journal mode is '" + value + "')");
  }
  if (CLmError e = PragmaText(db, "PRAGMA synchronous = FULL", path, &value)) return e;
  return CLmError();
}

}  // namespace

struct Store::CachedStatement {
  sqlite3_stmt* stmt = nullptr;
  bool inUse = false;
};

CLmError Store::Open(const std::string& path, const Options& options,
                     std::unique_ptr<Store>* store) {
  if (sqlite3_libversion_number() < kMinimumSqlite) {
    return CLmError::Format(kKpErrNotSupported, "%s: the store needs SQLite 3.37 or later, not %s",
                            path.c_str(), sqlite3_libversion());
  }
  sqlite3* db = nullptr;
  // NOMUTEX: the store's own mutex serialises every use of the connection.
  int rc = sqlite3_open_v2(
      path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  CLmError e;
  if (rc != SQLITE_OK) {
    e = SqliteError(db, rc, "opening " + path);
  } else {
    e = Configure(db, path, options);
  }
  int version = 0;
  if (!e) {
    std::span<const Migration> migrations =
        options.migrations.empty() ? ServerMigrations() : options.migrations;
    e = Migrate(db, migrations, path, &version);
  }
  if (e) {
    EvEventWrapper::Error(kOpenLabel, "%s", e.Text().c_str());
    sqlite3_close_v2(db);  // accepts null
    return e;
  }
  EvEventWrapper::DebugLvl(kOpenLabel, 2, "%s opened at schema version %d", path.c_str(), version);
  store->reset(new Store(db, path, version));
  return CLmError();
}

Store::Store(sqlite3* db, std::string path, int schemaVersion)
    : db_(db), path_(std::move(path)), schemaVersion_(schemaVersion) {}

Store::~Store() {
  // No transaction can be running: they borrow the store, which must outlive them.
  for (auto& [sql, cached] : statements_) sqlite3_finalize(cached->stmt);
  for (sqlite3_stmt* stmt : controls_) sqlite3_finalize(stmt);
  int rc = sqlite3_close(db_);
  if (rc != SQLITE_OK) {
    EvEventWrapper::Error("Store::~Store", "%s: closing: %s", path_.c_str(), sqlite3_errstr(rc));
    sqlite3_close_v2(db_);
  }
}

CLmError Store::LoadFixture(const std::string& path) {
  return LoadFixtureFile(*this, path);
}

CLmError Store::CheckIntegrity() {
  Transaction t(*this, "integrity check", Transaction::kRead);
  std::vector<std::string> problems;
  bool row = false;
  Statement integrity = t.Prepare("PRAGMA integrity_check");
  while (true) {
    if (CLmError e = integrity.Step(&row)) return e;
    if (!row) break;
    if (std::string text = integrity.Text(0); text != "ok") problems.push_back(std::move(text));
  }
  Statement keys = t.Prepare("PRAGMA foreign_key_check");
  while (true) {
    if (CLmError e = keys.Step(&row)) return e;
    if (!row) break;
    // The row id is null for a table without row ids.
    std::string which =
        keys.IsNull(1) ? "a row of " : "row " + std::to_string(keys.Int(1)) + " of ";
    problems.push_back(which + keys.Text(0) + " refers to a missing row of " + keys.Text(2));
  }
  if (problems.empty()) return CLmError();
  std::string text = path_ + " failed its integrity check (" + std::to_string(problems.size()) +
                     (problems.size() == 1 ? " problem): " : " problems): ");
  for (size_t i = 0; i < problems.size() && i < 3; ++i) {
    if (i > 0) text += "; ";
    text += problems[i];
  }
  if (problems.size() > 3) text += "; ...";
  return CLmError(kStoreErrDatabase, text);
}

Statement Store::Failed(const char* operation, CLmError error) {
  return Statement(nullptr, nullptr, operation, std::move(error));
}

Statement Store::Prepare(const char* sql, const char* operation) {
  auto it = statements_.find(std::string_view(sql));
  if (it == statements_.end()) it = statements_.emplace(sql, std::make_unique<CachedStatement>()).first;
  std::unique_ptr<CachedStatement>& cached = it->second;
  bool* inUse = nullptr;
  sqlite3_stmt* stmt = nullptr;
  if (cached->stmt != nullptr && !cached->inUse) {
    stmt = cached->stmt;
    inUse = &cached->inUse;
  } else {
    int rc = sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr);
    if (rc != SQLITE_OK) {
      return Failed(operation, SqliteError(db_, rc, operation));
    }
    if (cached->stmt == nullptr) {
      cached->stmt = stmt;
      inUse = &cached->inUse;
    }
    // Otherwise the cached one is busy (the same SQL twice in one transaction): this one is
    // private and finalized when the Statement ends.
  }
  if (inUse != nullptr) *inUse = true;
  return Statement(stmt, inUse, operation, CLmError());
}

int Store::Run(Control control) {
  static constexpr const char* kSql[kControls] = {"BEGIN DEFERRED", "BEGIN IMMEDIATE", "COMMIT",
                                                   "ROLLBACK"};
  sqlite3_stmt*& stmt = controls_[control];
  if (stmt == nullptr) {
    int rc = sqlite3_prepare_v3(db_, kSql[control], -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr);
    if (rc != SQLITE_OK) return rc;
  }
  int rc = sqlite3_step(stmt);
  sqlite3_reset(stmt);
  return rc == SQLITE_DONE ? SQLITE_OK : rc;
}

Store::Transaction::Transaction(Store& store, const char* operation, Mode mode)
    : store_(store), operation_(operation) {
  if (store_.owner_.load() == std::this_thread::get_id()) {
    status_ = CLmError::Format(kKpErrInternal,
                               "%s: started inside another transaction of the store on this thread",
                               operation_);
    EvEventWrapper::Error(kTxnLabel, "%s", status_.Text().c_str());
    return;
  }
  store_.mu_.Lock();
  locked_ = true;
  store_.owner_.store(std::this_thread::get_id());
  int rc = store_.Run(mode == kWrite ? kBeginWrite : kBeginRead);
  if (rc != SQLITE_OK) {
    status_ = SqliteError(store_.db_, rc, operation_);
    EvEventWrapper::Error(kTxnLabel, "%s", status_.Text().c_str());
    return;
  }
  open_ = true;
}

Store::Transaction::~Transaction() {
  // SQLite ends the transaction by itself after some errors (a full disk, for one); then there
  // is nothing left to roll back.
  if (open_ && !sqlite3_get_autocommit(store_.db_)) {
    int rc = store_.Run(kRollback);
    if (rc != SQLITE_OK) {
      EvEventWrapper::Error(kTxnLabel, "%s: rollback failed: %s", operation_,
                            sqlite3_errmsg(store_.db_));
    }
  }
  if (locked_) {
    store_.owner_.store(std::thread::id());
    store_.mu_.Unlock();
  }
}

CLmError Store::Transaction::NotOpen() const {
  return status_ ? status_
                 : CLmError::Format(kKpErrInternal, "%s: the transaction has ended", operation_);
}

Statement Store::Transaction::Prepare(const char* sql) {
  if (!open_) return Store::Failed(operation_, NotOpen());
  return store_.Prepare(sql, operation_);
}

CLmError Store::Transaction::Exec(const char* sql) {
  if (!open_) return NotOpen();
  int rc = sqlite3_exec(store_.db_, sql, nullptr, nullptr, nullptr);
  return rc == SQLITE_OK ? CLmError() : SqliteError(store_.db_, rc, operation_);
}

CLmError Store::Transaction::Commit() {
  if (!open_) return NotOpen();
  int rc = store_.Run(kCommit);
  if (rc != SQLITE_OK) {
    CLmError e = SqliteError(store_.db_, rc, operation_);
    EvEventWrapper::Error(kTxnLabel, "%s", e.Text().c_str());
    return e;
  }
  open_ = false;
  return CLmError();
}

}  // namespace appmgr::server
