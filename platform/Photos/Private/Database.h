#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "Base/Result.h"

struct sqlite3;

namespace ios::photos {

/// Why the library's database refused.
struct DatabaseFailure {
  int code = 0;  // SQLite's, extended
  std::string operation, text;
  bool isDamage() const;
  bool isDiskFull() const;
  /// "could not write the photo library: database or disk is full (13)"
  std::string description() const;
};
template <class Value = void>
using DatabaseResult = Result<Value, DatabaseFailure>;

/// A connection to the library's file; one thread at a time.
class Database {
 public:
  enum class Mode { read, change };
  /// For changes the file is made if there is none. `patience`: how long a statement waits
  /// for another process.
  static DatabaseResult<std::unique_ptr<Database>> open(const std::filesystem::path& file, Mode mode,
                                                        int patienceMilliseconds);
  ~Database();
  Database(const Database&) = delete;

  using Value = std::variant<std::int64_t, double, std::string>;
  /// Values of the result; NULL and data read as 0.
  using Row = std::vector<Value>;
  using Rows = std::vector<Row>;

  /// Runs one statement with its parameters; `operation` is what a failure says could not be done.
  [[nodiscard]] DatabaseResult<Rows> run(const char* operation, const char* statement,
                                         const std::vector<Value>& parameters = {});
  /// Ends a transaction that failed; whatever state it is in.
  void rollBack();

 private:
  explicit Database(sqlite3* handle) : handle_(handle) {}
  tl::unexpected<DatabaseFailure> failed(const char* operation) const;
  sqlite3* handle_;
};

/// A column of a row; 0 or empty when it is of another kind.
std::int64_t integerAt(const Database::Row& row, std::size_t column);
double realAt(const Database::Row& row, std::size_t column);
std::string textAt(const Database::Row& row, std::size_t column);

/// The name under which SQLite reaches the device's disk, so that its faults reach SQLite.
const char* deviceDisk();

}  // namespace ios::photos
