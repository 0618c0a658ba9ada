// Statement: one prepared SQL statement, borrowed for the life of a Store::Transaction.
//
// Obtained only from Store::Transaction::Prepare. Usually it is a statement from the store's
// cache, which this object resets and unbinds on destruction so the next user starts clean;
// when the cached one is already in use (the same SQL twice in one transaction) it is a private
// statement that this object finalizes.
//
// Errors are sticky, as on a failed connection: a failure to prepare or bind is kept and
// returned by the next Step or Run, so a call site binds everything and checks once. Parameters
// are numbered from 1 and columns from 0, as SQLite numbers them.
//
// Unsigned 64-bit values (ids, property and content types) live in SQLite's signed INTEGER as
// their two's complement bit pattern: BindU64 and U64 convert both ways without loss.
//
// Thread-safety: none of its own. Only the thread that holds its transaction uses it, and it
// must not outlive that transaction.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/CLmError.h"

struct sqlite3;
struct sqlite3_stmt;

namespace appmgr::server {

class Statement {
 public:
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&&) = delete;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  Statement& BindInt(int index, int64_t value);
  Statement& BindU64(int index, uint64_t value);
  Statement& BindText(int index, std::string_view text);
  Statement& BindBlob(int index, const std::vector<uint8_t>& bytes);
  Statement& BindNull(int index);

  // Advances by one row: *row is true when a result row is ready, false when the statement is
  // done. A failure leaves *row false.
  CLmError Step(bool* row);
  // Steps to the end, ignoring any rows: for INSERT, UPDATE and DELETE.
  CLmError Run();
  // Rows inserted, changed or deleted by the last completed Run.
  int Changes() const;

  // Column readers; valid after Step reported a row.
  int64_t Int(int column) const;
  uint64_t U64(int column) const;
  std::string Text(int column) const;  // NULL reads as ""
  // The text without a copy: valid until the next Step, reset or end of the statement. For
  // long lists, whose texts go straight into an answer.
  std::string_view TextView(int column) const;
  std::vector<uint8_t> Blob(int column) const;
  bool IsNull(int column) const;

 private:
  friend class Store;
  // `inUse` is the cache entry's flag (cleared on destruction); null means this object owns
  // `stmt` and finalizes it. `error` is a failure from preparing, reported by the first Step.
  Statement(sqlite3_stmt* stmt, bool* inUse, const char* operation, CLmError error);
  void Bound(int rc);

  sqlite3_stmt* stmt_;
  bool* inUse_;
  const char* operation_;
  CLmError error_;
};

// A failed SQLite call as a CLmError: "<operation>: <SQLite's message>". Constraint failures
// become kStoreErrConflict (unique key, foreign key) or kStoreErrInvalidArgument (CHECK, NOT
// NULL); everything else kStoreErrDatabase. `db` may be null (then only the code's text is used).
CLmError SqliteError(sqlite3* db, int rc, std::string_view operation);

}  // namespace appmgr::server
