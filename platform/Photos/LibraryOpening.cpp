#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <set>

#include "Base/FileDescriptor.h"
#include "Device/Device.h"
#include "Photos/PHError.h"
#include "Photos/Private/FolderLock.h"
#include "Photos/Private/Library.h"

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
    file_ = FileDescriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    int result = -1;
    while (file_ && (result = ::flock(file_.number(), LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (result != 0) problem_ = FileError{errno, "lock", file};
  }
  const std::optional<FileError>& problem() const { return problem_; }

 private:
  FileDescriptor file_;
  std::optional<FileError> problem_;
};

/// The numbers of the movie files that exist.
Result<std::set<std::int64_t>, FileError> findNumbers(const MediaFolder& folder) {
  std::set<std::int64_t> numbers;
  std::error_code error;
  std::filesystem::directory_iterator entries(folder.movies(), error);
  for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
    if (const auto number = folder.numberOf(entries->path().filename().string())) numbers.insert(*number);
  }
  if (error) return failure(FileError{error.value(), "read", folder.movies()});
  return numbers;
}

/// Where the numbers of a new library's movies begin. Movies that it does not know would count as its strays.
DatabaseResult<std::int64_t> firstNumber(const MediaFolder& folder) {
  constexpr int kInputOutput = 10, kFull = 13;  // SQLite's codes
  const auto refused = diskRefusal("read", folder.movies());
  const auto numbers = refused ? failure(*refused) : findNumbers(folder);
  if (!numbers) {
    const FileError& problem = numbers.error();
    return failure(
        DatabaseFailure{meansNoRoom(problem.code) ? kFull : kInputOutput, kOpen, problem.description()});
  }
  return numbers->empty() ? 1 : *numbers->rbegin() + 1;
}

DatabaseResult<> makeTables(Database& database, const MediaFolder& folder) {
  const std::int64_t first = IOS_TRY(firstNumber(folder));
  const std::int64_t now = Clock::shared().wallTime().time_since_epoch().count();
  IOS_TRY(database.run(kOpen, "BEGIN IMMEDIATE"));
  for (const char* table : kTables) IOS_TRY(database.run(kOpen, table));
  IOS_TRY(database.run(kOpen,
                       "INSERT INTO library (id, created, firstNumber, nextNumber) VALUES (1, ?, ?, ?)",
                       {now, first, first}));
  IOS_TRY(database.run(kOpen, "PRAGMA user_version = 1"));
  IOS_TRY(database.run(kOpen, "COMMIT"));
  return {};
}

tl::unexpected<DatabaseFailure> damage(const std::string& text) {
  constexpr int kCorrupt = 11;  // SQLite's code for it
  return failure(DatabaseFailure{kCorrupt, kOpen, text});
}

/// Checks an existing library.
DatabaseResult<> examine(Database& database) {
  const auto check = IOS_TRY(database.run(kOpen, "PRAGMA quick_check(1)"));
  if (const std::string said = check.empty() ? "" : textAt(check[0], 0); said != "ok") return damage(said);
  const auto counts = database.run(
      kOpen,
      "SELECT (SELECT count(*) FROM library), (SELECT count(uuid) FROM album WHERE id < 0),"
      " (SELECT count(uuid + number + duration + width + height + created) FROM asset WHERE id < 0),"
      " (SELECT count(album + asset) FROM membership WHERE id < 0)");
  constexpr int kNoSuchTable = 1;
  if (!counts && counts.error().code == kNoSuchTable) return damage(counts.error().text);
  if (integerAt(IOS_TRY(counts).at(0), 0) != 1) return damage("it has lost its count of movies");
  return {};
}

/// Makes the tables of a new library, or checks an existing one.
DatabaseResult<> prepare(Database& database, const MediaFolder& folder) {
  const auto rows = IOS_TRY(database.run(
      kOpen, "SELECT user_version, (SELECT count(*) FROM sqlite_master) FROM pragma_user_version"));
  const std::int64_t version = integerAt(rows.at(0), 0);
  const bool isNew = version == 0 && integerAt(rows.at(0), 1) == 0;
  if (version > kVersion) {
    return failure(
        DatabaseFailure{1, kOpen, "it was made by a newer system, version " + std::to_string(version)});
  }
  if (version != kVersion && !isNew) return damage("it is something else");
  // Not earlier: the first of them changes the file.
  for (const char* setting :
       {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL", "PRAGMA foreign_keys = ON"}) {
    IOS_TRY(database.run(kOpen, setting));
  }
  return isNew ? makeTables(database, folder) : examine(database);
}

/// Moves a damaged library out of the way, under a name that is free.
LibraryResult<> setAside(const MediaFolder& folder, const std::string& why) {
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
    if (const auto problem = renameFile(file, folder.root / (aside + ending))) {
      deviceLog("the photo library is damaged (" + why + ") and " + problem->description());
      return failed(*problem);
    }
  }
  deviceLog("the photo library is damaged (" + why + "); it was set aside as Media/" + aside +
            ", and its movies stay where they are");
  return {};
}

}  // namespace

bool Library::isStillThere() const {
  struct stat status {};
  return ::stat(folder_.database().c_str(), &status) == 0 && status.st_dev == device_ &&
         status.st_ino == inode_;
}

LibraryResult<> Library::open() {
  if (closed_) {
    return failure(
        std::make_shared<NSError>(PHPhotosErrorDomain, PHPhotosErrorInternalError, "the process is ending"));
  }
  if (database_ && isStillThere()) return {};
  database_.reset();
  if (const auto problem = createFolder(folder_.movies())) return failed(*problem);
  const OpeningLock lock(folder_.root / ".Photos.lock");
  if (lock.problem()) return failed(*lock.problem());
  IOS_TRY(openChecked());
  struct stat status {};
  if (::stat(folder_.database().c_str(), &status) == 0) {
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }
  return sweep();
}

LibraryResult<> Library::openChecked() {
  const auto openOnce = [this]() IOS_REQUIRES(mutex_) -> DatabaseResult<> {
    database_ = IOS_TRY(Database::open(folder_.database(), Database::Mode::change, kPatienceMilliseconds));
    auto prepared = prepare(*database_, folder_);
    if (!prepared) database_.reset();
    return prepared;
  };
  auto opened = openOnce();
  if (!opened && opened.error().isDamage()) {
    IOS_TRY(setAside(folder_, opened.error().text));
    opened = openOnce();
  }
  if (!opened) return failed(opened.error());
  return {};
}

/// Removes what killed processes left: copies that were under way, movies whose transaction was not
/// committed, and movies whose asset was deleted.
LibraryResult<> Library::sweep() {
  sweepTemporaryFiles(folder_.movies());
  // Within a transaction, so that no other process has one in progress.
  IOS_TRY(run(kOpen, "BEGIN IMMEDIATE"));
  const auto library = IOS_TRY(run(kOpen, "SELECT firstNumber FROM library"));
  std::set<std::int64_t> known;
  for (const auto& row : IOS_TRY(run(kOpen, "SELECT number FROM asset"))) known.insert(integerAt(row, 0));

  if (const auto onDisk = findNumbers(folder_)) {
    for (const std::int64_t number : *onDisk) {
      if (number < integerAt(library.at(0), 0) || known.contains(number)) continue;
      // A folder or a link is not a copy that a process left behind.
      std::error_code error;
      if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(folder_.movie(number), error)))
        continue;
      if (const auto refusal = removeTree(folder_.movie(number))) deviceLog(refusal->description());
    }
    for (const std::int64_t number : known) {
      if (onDisk->contains(number)) continue;
      deviceLog(folder_.movie(number).filename().string() + " is missing; its asset was removed");
      IOS_TRY(run(kOpen, "DELETE FROM asset WHERE number = ?", {number}));
    }
  }
  IOS_TRY(run(kOpen, "COMMIT"));
  return {};
}

}  // namespace ios::photos
