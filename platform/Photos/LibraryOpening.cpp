#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <set>

#include "Device/Device.h"
#include "Photos/FolderLock+Private.h"
#include "Photos/Library+Private.h"
#include "Photos/PHError.h"

namespace ios::photos {
namespace {

constexpr const char* kOpen = "open the photo library";
// How long a transaction waits for another process's.
constexpr int kPatienceMilliseconds = 10'000;
constexpr std::int64_t kVersion = 1;

constexpr const char* kTables[] = {
    // Movies are numbered on from `firstNumber`; those before belong to libraries that were set aside.
    "CREATE TABLE library (id INTEGER PRIMARY KEY CHECK (id = 1), created INTEGER NOT NULL,"
    " firstNumber INTEGER NOT NULL, nextNumber INTEGER NOT NULL, issued INTEGER NOT NULL DEFAULT 0)",
    "CREATE TABLE album (id INTEGER PRIMARY KEY, uuid TEXT NOT NULL UNIQUE, title TEXT NOT NULL,"
    " created REAL NOT NULL)",
    "CREATE TABLE asset (id INTEGER PRIMARY KEY, uuid TEXT NOT NULL UNIQUE, number INTEGER NOT NULL UNIQUE,"
    " file TEXT AS (printf('DCIM/100TLVNE/IMG_%04d.MOV', number)), duration REAL NOT NULL,"
    " width INTEGER NOT NULL, height INTEGER NOT NULL, created REAL NOT NULL)",
    "CREATE TABLE membership (id INTEGER PRIMARY KEY,"
    " album INTEGER NOT NULL REFERENCES album ON DELETE CASCADE,"
    " asset INTEGER NOT NULL REFERENCES asset ON DELETE CASCADE, UNIQUE (album, asset))",
    "CREATE INDEX membershipOfAsset ON membership (asset)",
};

/// Keeps other processes from opening the library for changes meanwhile.
class OpeningLock {
 public:
  explicit OpeningLock(const std::filesystem::path& file) {
    problem_ = diskRefusal("create", file);
    if (problem_) return;
    descriptor_ = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    int result = -1;
    while (descriptor_ >= 0 && (result = ::flock(descriptor_, LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (result != 0) problem_ = FileError{errno, "lock", file};
  }
  ~OpeningLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OpeningLock(const OpeningLock&) = delete;
  const std::optional<FileError>& problem() const { return problem_; }

 private:
  int descriptor_ = -1;
  std::optional<FileError> problem_;
};

/// Finds the numbers of the movie files that are there.
std::optional<FileError> findNumbers(const MediaFolder& folder, std::set<std::int64_t>& numbers) {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder.movies(), error);
  for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
    if (const auto number = folder.numberOf(entries->path().filename().string())) numbers.insert(*number);
  }
  if (error) return FileError{error.value(), "read", folder.movies()};
  return std::nullopt;
}

DatabaseResult makeTables(Database& database, const MediaFolder& folder) {
  std::set<std::int64_t> numbers;
  auto problem = diskRefusal("read", folder.movies());
  if (!problem) problem = findNumbers(folder, numbers);
  // Movies that it did not know would be strays of the new library.
  if (problem) {
    constexpr int kInputOutput = 10, kFull = 13;  // SQLite's codes
    return DatabaseFailure{problem->code == ENOSPC ? kFull : kInputOutput, kOpen, problem->description()};
  }
  const std::int64_t first = numbers.empty() ? 1 : *numbers.rbegin() + 1;
  const std::int64_t now = Clock::shared().wallTime().time_since_epoch().count();
  if (auto problem = database.run(kOpen, "BEGIN IMMEDIATE")) return problem;
  for (const char* table : kTables) {
    if (auto problem = database.run(kOpen, table)) return problem;
  }
  if (auto problem = database.run(
          kOpen, "INSERT INTO library (id, created, firstNumber, nextNumber) VALUES (1, ?, ?, ?)",
          {now, first, first}))
    return problem;
  if (auto problem = database.run(kOpen, "PRAGMA user_version = 1")) return problem;
  return database.run(kOpen, "COMMIT");
}

DatabaseFailure damage(const std::string& text) {
  constexpr int kCorrupt = 11;  // SQLite's code for it
  return {kCorrupt, kOpen, text};
}

/// Makes the tables of a new library and looks an old one over.
DatabaseResult prepare(Database& database, const MediaFolder& folder) {
  std::vector<Database::Row> rows;
  if (auto problem = database.run(
          kOpen, "SELECT user_version, (SELECT count(*) FROM sqlite_master) FROM pragma_user_version", {},
          &rows))
    return problem;
  const std::int64_t version = integerAt(rows.at(0), 0);
  const bool isNew = version == 0 && integerAt(rows.at(0), 1) == 0;
  if (version > kVersion)
    return DatabaseFailure{1, kOpen, "it was made by a newer system, version " + std::to_string(version)};
  if (version != kVersion && !isNew) return damage("it is something else");
  // Not earlier: the first of them changes the file.
  for (const char* setting :
       {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL", "PRAGMA foreign_keys = ON"}) {
    if (auto problem = database.run(kOpen, setting)) return problem;
  }
  if (isNew) return makeTables(database, folder);
  rows.clear();
  if (auto problem = database.run(kOpen, "PRAGMA quick_check(1)", {}, &rows)) return problem;
  if (const std::string said = rows.empty() ? "" : textAt(rows[0], 0); said != "ok") return damage(said);
  rows.clear();
  const auto problem = database.run(
      kOpen,
      "SELECT (SELECT count(*) FROM library), (SELECT count(uuid) FROM album WHERE id < 0),"
      " (SELECT count(uuid + number + duration + width + height + created) FROM asset WHERE id < 0),"
      " (SELECT count(album + asset) FROM membership WHERE id < 0)",
      {}, &rows);
  constexpr int kNoSuchTable = 1;
  if (problem && problem->code == kNoSuchTable) return damage(problem->text);
  if (problem) return problem;
  if (integerAt(rows.at(0), 0) != 1) return damage("it has lost its count of movies");
  return std::nullopt;
}

/// Moves a damaged library out of the way, under a name that is free.
std::optional<FileError> setAside(const MediaFolder& folder, const std::string& why) {
  const FolderLock lock(folder.root, FolderLock::Mode::moving);
  const std::string name = folder.database().filename().string();
  std::error_code none;
  std::string aside = name + ".damaged";
  for (int count = 2; std::filesystem::exists(folder.root / aside, none); ++count)
    aside = name + ".damaged-" + std::to_string(count);
  // The database itself last: should this stop halfway, it is still there to be found damaged again.
  for (const char* ending : {"-shm", "-wal", ""}) {
    const std::filesystem::path file = folder.root / (name + ending);
    if (!std::filesystem::exists(file, none)) continue;
    if (auto problem = renameFile(file, folder.root / (aside + ending))) {
      deviceLog("the photo library is damaged (" + why + ") and " + problem->description());
      return problem;
    }
  }
  deviceLog("the photo library is damaged (" + why + "); it was set aside as Media/" + aside +
            ", and its movies stay where they are");
  return std::nullopt;
}

}  // namespace

bool Library::isStillThere() const {
  struct stat status {};
  return ::stat(folder_.database().c_str(), &status) == 0 && status.st_dev == device_ &&
         status.st_ino == inode_;
}

Library::Failure Library::open() {
  if (closed_)
    return std::make_shared<NSError>(PHPhotosErrorDomain, PHPhotosErrorInternalError,
                                     "the process is ending");
  if (database_ && isStillThere()) return nullptr;
  database_.reset();
  if (const auto problem = createFolder(folder_.movies())) return failureOf(*problem);
  const OpeningLock lock(folder_.root / ".Photos.lock");
  if (lock.problem()) return failureOf(*lock.problem());
  if (auto failure = openChecked()) return failure;
  struct stat status {};
  if (::stat(folder_.database().c_str(), &status) == 0) {
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }
  return sweep();
}

Library::Failure Library::openChecked() {
  for (bool first = true;; first = false) {
    DatabaseFailure problem;
    database_ = Database::open(folder_.database(), Database::Mode::change, kPatienceMilliseconds, problem);
    if (database_) {
      auto refusal = prepare(*database_, folder_);
      if (!refusal) return nullptr;
      problem = std::move(*refusal);
      database_.reset();
    }
    if (!problem.isDamage() || !first) return failureOf(problem);
    if (const auto refusal = setAside(folder_, problem.text)) return failureOf(*refusal);
  }
}

/// Removes what killed processes left: copies that were under way, movies whose transaction was not
/// committed, and movies whose asset was deleted.
Library::Failure Library::sweep() {
  sweepTemporaryFiles(folder_.movies());
  // Within a transaction nobody else has one under way.
  if (auto problem = database_->run(kOpen, "BEGIN IMMEDIATE")) return refused(*problem);
  std::vector<Database::Row> library, assets;
  auto problem = database_->run(kOpen, "SELECT firstNumber FROM library", {}, &library);
  if (!problem) problem = database_->run(kOpen, "SELECT number FROM asset", {}, &assets);
  if (problem) return refused(*problem);
  std::set<std::int64_t> onDisk, known;
  const bool listed = !findNumbers(folder_, onDisk);
  for (const auto& row : assets) known.insert(integerAt(row, 0));

  if (listed) {
    for (const std::int64_t number : onDisk) {
      if (number < integerAt(library.at(0), 0) || known.contains(number)) continue;
      // A folder or a link is nobody's copy of a movie.
      std::error_code error;
      if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(folder_.movie(number), error)))
        continue;
      if (const auto refusal = removeTree(folder_.movie(number))) deviceLog(refusal->description());
    }
    for (const std::int64_t number : known) {
      if (onDisk.contains(number)) continue;
      deviceLog(folder_.movie(number).filename().string() + " is missing; its asset was removed");
      problem = database_->run(kOpen, "DELETE FROM asset WHERE number = ?", {number});
      if (problem) return refused(*problem);
    }
  }
  if (auto refusal = database_->run(kOpen, "COMMIT")) return refused(*refusal);
  return nullptr;
}

}  // namespace ios::photos
