// Store: the App Manager's configuration database, one SQLite file.
//
// Open() creates the file when it is missing and brings its schema to the version this server
// knows (Schema.h). Every read and every change runs inside a Store::Transaction; the typed
// stores (BackupSetStore, PropertyStore, PreparedCacheStore) borrow a Store and open one
// transaction per operation.
//
// Durability: the file is in WAL mode with synchronous=FULL. A change is on disk, WAL synced,
// when its Commit returns, so whatever a handler has acknowledged survives a crash of the server
// and a power loss of the machine. NORMAL would survive the first but could lose the last
// commits to the second; configuration changes are rare and small, so one fsync per commit is
// cheap, and readers never wait for it.
//
// Locking: by default the store owns the file while it is open (Options::exclusive), so reads
// take no file locks.
//
// Threading: one connection behind one mutex. A transaction holds the mutex from its start to
// its end, so transactions of different threads run one after another. SQLite lets only one
// writer in at a time anyway, and the store's reads are single-row or short-list lookups, so a
// pool of connections would buy little, while costing a statement cache per connection, lock
// upgrade failures (SQLITE_BUSY) between our own connections, and connections tied to threads
// that the server's core creates and ends. The connection is opened without SQLite's own mutex
// for the same reason. TODO(perf): a small pool of read-only connections if reads are ever seen
// waiting on the mutex.
//
// Ownership: Open hands out the only owner. The Store must outlive every transaction and typed
// store that borrows it.
//
// Thread-safety: every member may be called from any thread. Transactions do not nest: a thread
// that holds a transaction and starts another on the same store gets kKpErrInternal instead of
// deadlocking.
#pragma once

#include <atomic>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>

#include "platform/base/CLmError.h"
#include "platform/base/KpCriticalSection.h"
#include "server/store/Schema.h"
#include "server/store/Statement.h"

struct sqlite3;
struct sqlite3_stmt;

namespace appmgr::server {

class Store {
 public:
  struct Options {
    // How long a statement waits for a lock that another process holds on the same file (an
    // operator's sqlite3 shell, a backup) before it fails with kStoreErrDatabase. Within the
    // server the store's mutex already serialises everything, so this wait is only ever for
    // others; 5 s is long enough for a checkpoint or a short copy, short enough that a request
    // fails before the client's own timeout.
    int busyTimeoutMs = 5000;
    // The store owns the file while it is open (SQLite's exclusive locking mode, the WAL kept,
    // its index in memory): reads take no file locks, so a look-up costs no system call of the
    // store's, but no other process can open the file until the store closes (it gets "database
    // is locked"). False keeps SQLite's shared locking, which lets other programs read and write
    // the file meanwhile at the cost of two file-lock calls per transaction.
    bool exclusive = true;
    // The migrations to bring the file to; empty means the server's own (ServerMigrations()).
    // Tests pass lists of their own.
    std::span<const Migration> migrations;
  };

  // Opens or creates the database at `path` and migrates it. On success *store owns it.
  // Fails with kKpErrNotSupported when the file was written by a newer server (its schema
  // version is above the last migration) and leaves the file as it was; other failures carry
  // SQLite's message and the path.
  static CLmError Open(const std::string& path, const Options& options,
                       std::unique_ptr<Store>* store);

  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  const std::string& path() const { return path_; }
  // The schema version after Open (the number of the last migration applied).
  int schema_version() const { return schemaVersion_; }

  // Inserts the entities a JSON fixture file describes (format in Fixture.h), all in one
  // transaction: on any failure nothing is inserted, and the error names the entry.
  CLmError LoadFixture(const std::string& path);

  // Reads the whole file and checks it (SQLite's integrity_check, then foreign_key_check).
  // A damaged file fails with kStoreErrDatabase naming the first few problems and their
  // number. Costs a read of every page: for a start-up check, not for every request.
  CLmError CheckIntegrity();

  class Transaction;

 private:
  struct CachedStatement;

  Store(sqlite3* db, std::string path, int schemaVersion);

  // REQUIRES: mu_ held.
  Statement Prepare(const char* sql, const char* operation) KP_REQUIRES(mu_);
  // Runs one of the transaction statements, prepared once. REQUIRES: mu_ held.
  enum Control { kBeginRead, kBeginWrite, kCommit, kRollback, kControls };
  int Run(Control control) KP_REQUIRES(mu_);
  // A statement that only reports `error`.
  static Statement Failed(const char* operation, CLmError error);

  sqlite3* const db_;
  const std::string path_;
  const int schemaVersion_;

  KpCriticalSection mu_;
  // The thread inside a transaction, to refuse a nested one instead of deadlocking.
  std::atomic<std::thread::id> owner_{};
  // Prepared statements by SQL text; they live as long as the store. Looked up by the text as
  // given, without building a string each time.
  struct SqlHash {
    using is_transparent = void;
    size_t operator()(std::string_view sql) const { return std::hash<std::string_view>{}(sql); }
  };
  std::unordered_map<std::string, std::unique_ptr<CachedStatement>, SqlHash, std::equal_to<>>
      statements_ KP_GUARDED_BY(mu_);
  sqlite3_stmt* controls_[kControls] KP_GUARDED_BY(mu_) = {};
};

// Store::Transaction: the one way to use the connection. RAII: the constructor takes the
// store's mutex and begins; Commit() makes the changes durable; the destructor rolls back
// whatever was not committed and releases the mutex.
//
// A read transaction (kRead) sees one consistent snapshot across all its statements; a write
// transaction (kWrite) takes SQLite's write lock at its start (BEGIN IMMEDIATE), so it never
// fails half way through for want of the lock.
//
// `operation` names what the transaction does ("backup set update"); every error it or its
// statements build starts with it. It must outlive the transaction (a literal, in practice).
//
// Thread-safety: belongs to the thread that made it; it may not be moved to another.
class Store::Transaction {
 public:
  enum Mode { kRead, kWrite };

  Transaction(Store& store, const char* operation, Mode mode);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  // Failure to begin: every use of the transaction returns it, and nothing is held.
  const CLmError& status() const { return status_; }
  const char* operation() const { return operation_; }

  // A statement for `sql`, from the store's cache. `sql` is the cache key: pass the same text
  // each time, with parameters, never values spliced in.
  Statement Prepare(const char* sql);
  // Runs statements without parameters (one or several), uncached.
  CLmError Exec(const char* sql);
  // Commits. After a failed commit the transaction is still open and the destructor rolls it
  // back. Calling it twice, or after a failure to begin, returns an error.
  CLmError Commit();

 private:
  // The error for a use after a failed begin or after the end.
  CLmError NotOpen() const;

  Store& store_;
  const char* const operation_;
  bool locked_ = false;
  bool open_ = false;
  CLmError status_;
};

}  // namespace appmgr::server
