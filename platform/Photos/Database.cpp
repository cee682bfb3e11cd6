#include <sqlite3.h>

#include <utility>

#include "Photos/Private/Database.h"

namespace ios::photos {
namespace {

constexpr const char* kOpen = "open the photo library";

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

int bind(sqlite3_stmt* statement, int index, const Database::Value& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value))
    return sqlite3_bind_int64(statement, index, *integer);
  if (const auto* real = std::get_if<double>(&value)) return sqlite3_bind_double(statement, index, *real);
  const auto& text = std::get<std::string>(value);
  return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

Database::Value column(sqlite3_stmt* statement, int index) {
  switch (sqlite3_column_type(statement, index)) {
    case SQLITE_INTEGER:
      return std::int64_t{sqlite3_column_int64(statement, index)};
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement, index);
    case SQLITE_TEXT: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, index));
      return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, index)));
    }
    default:
      return std::int64_t{0};
  }
}

Database::Row rowOf(sqlite3_stmt* statement) {
  Database::Row row;
  for (int index = 0; index < sqlite3_column_count(statement); ++index)
    row.push_back(column(statement, index));
  return row;
}

}  // namespace

bool DatabaseFailure::isDamage() const {
  return (code & 0xFF) == SQLITE_CORRUPT || (code & 0xFF) == SQLITE_NOTADB;
}

bool DatabaseFailure::isDiskFull() const {
  return (code & 0xFF) == SQLITE_FULL;
}

std::string DatabaseFailure::description() const {
  return "could not " + operation + ": " + text + " (" + std::to_string(code) + ")";
}

tl::unexpected<DatabaseFailure> Database::failed(const char* operation) const {
  return failure(DatabaseFailure{sqlite3_extended_errcode(handle_), operation, sqlite3_errmsg(handle_)});
}

DatabaseResult<std::unique_ptr<Database>> Database::open(const std::filesystem::path& file, Mode mode,
                                                         int patienceMilliseconds) {
  const int access = mode == Mode::change ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
  sqlite3* handle = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &handle,
                                     access | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, deviceDisk());
  if (!handle) return failure(DatabaseFailure{result, kOpen, sqlite3_errstr(result)});
  std::unique_ptr<Database> database(new Database(handle));
  if (result != SQLITE_OK) return database->failed(kOpen);
  sqlite3_busy_timeout(handle, patienceMilliseconds);
  return database;
}

Database::~Database() {
  sqlite3_close(handle_);
}

DatabaseResult<Database::Rows> Database::run(const char* operation, const char* text,
                                             const std::vector<Value>& parameters) {
  sqlite3_stmt* prepared = nullptr;
  if (sqlite3_prepare_v2(handle_, text, -1, &prepared, nullptr) != SQLITE_OK) return failed(operation);
  const Statement statement(prepared);
  int index = 0;
  for (const Value& value : parameters) {
    if (bind(prepared, ++index, value) != SQLITE_OK) return failed(operation);
  }
  int step = SQLITE_ROW;
  Rows rows;
  while ((step = sqlite3_step(prepared)) == SQLITE_ROW) rows.push_back(rowOf(prepared));
  if (step != SQLITE_DONE) return failed(operation);
  return rows;
}

void Database::rollBack() {
  // Some failures end the transaction by themselves.
  if (sqlite3_get_autocommit(handle_) == 0) sqlite3_exec(handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

std::int64_t integerAt(const Database::Row& row, std::size_t column) {
  const auto* value = column < row.size() ? std::get_if<std::int64_t>(&row[column]) : nullptr;
  return value ? *value : 0;
}

double realAt(const Database::Row& row, std::size_t column) {
  const auto* value = column < row.size() ? std::get_if<double>(&row[column]) : nullptr;
  return value ? *value : static_cast<double>(integerAt(row, column));
}

std::string textAt(const Database::Row& row, std::size_t column) {
  const auto* value = column < row.size() ? std::get_if<std::string>(&row[column]) : nullptr;
  return value ? *value : std::string();
}

}  // namespace ios::photos
