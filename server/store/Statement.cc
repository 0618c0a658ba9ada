#include "server/store/Statement.h"

#include <sqlite3.h>

#include <string>

#include "server/store/StoreErrors.h"

namespace appmgr::server {

CLmError SqliteError(sqlite3* db, int rc, std::string_view operation) {
  int code = kStoreErrDatabase;
  if ((rc & 0xff) == SQLITE_CONSTRAINT) {
    switch (rc) {
      case SQLITE_CONSTRAINT_UNIQUE:
      case SQLITE_CONSTRAINT_PRIMARYKEY:
      case SQLITE_CONSTRAINT_FOREIGNKEY:
        code = kStoreErrConflict;
        break;
      default:
        code = kStoreErrInvalidArgument;
        break;
    }
  }
  std::string text(operation);
  text += ": ";
  // The connection's message names the table and column of a constraint; the code's text is
  // only the generic phrase. The connection's message is stale when rc did not come from it.
  const char* message =
      db != nullptr && sqlite3_extended_errcode(db) == rc ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
  text += message;
  return CLmError(code, std::move(text));
}

Statement::Statement(sqlite3_stmt* stmt, bool* inUse, const char* operation, CLmError error)
    : stmt_(stmt), inUse_(inUse), operation_(operation), error_(std::move(error)) {}

Statement::Statement(Statement&& other) noexcept
    : stmt_(other.stmt_),
      inUse_(other.inUse_),
      operation_(other.operation_),
      error_(std::move(other.error_)) {
  other.stmt_ = nullptr;
  other.inUse_ = nullptr;
}

Statement::~Statement() {
  if (stmt_ == nullptr) return;
  if (inUse_ != nullptr) {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
    *inUse_ = false;
  } else {
    sqlite3_finalize(stmt_);
  }
}

void Statement::Bound(int rc) {
  if (rc != SQLITE_OK && !error_) error_ = SqliteError(sqlite3_db_handle(stmt_), rc, operation_);
}

Statement& Statement::BindInt(int index, int64_t value) {
  if (!error_) Bound(sqlite3_bind_int64(stmt_, index, value));
  return *this;
}

Statement& Statement::BindU64(int index, uint64_t value) {
  return BindInt(index, static_cast<int64_t>(value));
}

Statement& Statement::BindText(int index, std::string_view text) {
  if (!error_) {
    Bound(
        sqlite3_bind_text64(stmt_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
  }
  return *this;
}

Statement& Statement::BindBlob(int index, const std::vector<uint8_t>& bytes) {
  // A zero-length blob with a null pointer would bind NULL; the columns are NOT NULL.
  static const uint8_t kEmpty = 0;
  if (!error_) {
    Bound(sqlite3_bind_blob64(stmt_, index, bytes.empty() ? &kEmpty : bytes.data(), bytes.size(),
                              SQLITE_TRANSIENT));
  }
  return *this;
}

Statement& Statement::BindNull(int index) {
  if (!error_) Bound(sqlite3_bind_null(stmt_, index));
  return *this;
}

CLmError Statement::Step(bool* row) {
  *row = false;
  if (error_) return error_;
  int rc = sqlite3_step(stmt_);
  if (rc == SQLITE_ROW) {
    *row = true;
    return CLmError();
  }
  if (rc == SQLITE_DONE) return CLmError();
  // Keep the failure: stepping a failed statement again would only restart it.
  error_ = SqliteError(sqlite3_db_handle(stmt_), rc, operation_);
  return error_;
}

CLmError Statement::Run() {
  bool row = true;
  while (row) {
    if (CLmError e = Step(&row)) return e;
  }
  return CLmError();
}

int Statement::Changes() const {
  return stmt_ == nullptr ? 0 : sqlite3_changes(sqlite3_db_handle(stmt_));
}

int64_t Statement::Int(int column) const {
  return sqlite3_column_int64(stmt_, column);
}

uint64_t Statement::U64(int column) const {
  return static_cast<uint64_t>(Int(column));
}

std::string Statement::Text(int column) const {
  const unsigned char* text = sqlite3_column_text(stmt_, column);
  if (text == nullptr) return std::string();
  return std::string(reinterpret_cast<const char*>(text),
                     static_cast<size_t>(sqlite3_column_bytes(stmt_, column)));
}

std::string_view Statement::TextView(int column) const {
  const unsigned char* text = sqlite3_column_text(stmt_, column);
  if (text == nullptr) return std::string_view();
  return std::string_view(reinterpret_cast<const char*>(text),
                          static_cast<size_t>(sqlite3_column_bytes(stmt_, column)));
}

std::vector<uint8_t> Statement::Blob(int column) const {
  const auto* data = static_cast<const uint8_t*>(sqlite3_column_blob(stmt_, column));
  int size = sqlite3_column_bytes(stmt_, column);
  if (data == nullptr || size <= 0) return {};
  return std::vector<uint8_t>(data, data + size);
}

bool Statement::IsNull(int column) const {
  return sqlite3_column_type(stmt_, column) == SQLITE_NULL;
}

}  // namespace appmgr::server
