#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "Device/Device.h"
#include "Photos/Library+Private.h"
#include "Photos/Movie+Private.h"
#include "Photos/PHError.h"

namespace ios::photos {
namespace {

constexpr const char* kChange = "change the photo library";
// The main thread may be the one that reads.
constexpr int kReadersPatienceMilliseconds = 200;

long codeOf(const FileError& error) {
  if (error.code == ENOSPC || error.code == EDQUOT) return PHPhotosErrorNotEnoughSpace;
  return error.operation == "read" ? PHPhotosErrorInvalidResource : PHPhotosErrorInternalError;
}

std::shared_ptr<NSError> error(long code, std::string text) {
  return std::make_shared<NSError>(PHPhotosErrorDomain, code, std::move(text));
}

}  // namespace

Library::Failure failureOf(const FileError& error) {
  return photos::error(codeOf(error), error.description());
}

Library::Failure failureOf(const DatabaseFailure& failure) {
  return error(failure.isDiskFull() ? PHPhotosErrorNotEnoughSpace : PHPhotosErrorInternalError,
               failure.description());
}

/// A movie on its way into the library: a copy of its own beside the others, that goes with this object
/// unless it was kept.
struct Library::Incoming {
  Incoming(std::string uuid, std::filesystem::path file) : uuid(std::move(uuid)), file(std::move(file)) {}
  Incoming(Incoming&& other) noexcept
      : uuid(std::move(other.uuid)), file(std::exchange(other.file, {})), facts(other.facts) {}
  ~Incoming() {
    if (!file.empty()) ::unlink(file.c_str());
  }
  std::string uuid;
  std::filesystem::path file;
  MovieFacts facts;
};

Library& Library::shared() {
  // Never destroyed: queues may outlive static objects. The connections are closed at the end all the same,
  // so that the whole library is in its one file then.
  static auto& library = *[] {
    static auto* made = new Library(MediaFolder{Device::current().root() / "Media"});
    std::atexit([] { made->close(); });
    dispatch_async(made->queue_, [] {
      MutexLock lock(made->mutex_);
      std::error_code none;
      if (!std::filesystem::exists(made->folder_.root, none)) return;
      if (const auto failure = made->open()) deviceLog(failure->localizedDescription());
    });
    return made;
  }();
  return library;
}

Library::Library(MediaFolder folder)
    : folder_(std::move(folder)),
      queue_(dispatch_queue_create("PHPhotoLibrary")),
      completionQueue_(dispatch_queue_create("PHPhotoLibrary.completions")),
      reader_(folder_, kReadersPatienceMilliseconds) {}

void Library::close() {
  // The last to close folds the write-ahead log into the file, which a reader cannot.
  reader_.close();
  MutexLock lock(mutex_);
  closed_ = true;
  database_.reset();
}

std::string Library::newUUID(Failure& failure) {
  if (!Clock::shared().isVirtual()) return randomUUID();
  // The same flow gives the same identifiers, so they are counted, in the library that processes share.
  MutexLock lock(mutex_);
  failure = open();
  if (failure) return {};
  std::vector<Database::Row> rows;
  if (auto problem = database_->run(
          kChange, "UPDATE library SET issued = issued + 1 RETURNING issued, created, firstNumber", {},
          &rows)) {
    failure = refused(*problem);
    return {};
  }
  const Database::Row& row = rows.front();
  const auto library =
      static_cast<std::uint64_t>(integerAt(row, 1)) + static_cast<std::uint64_t>(integerAt(row, 2));
  return derivedUUID(library, static_cast<std::uint64_t>(integerAt(row, 0)));
}

Library::Failure Library::refused(const DatabaseFailure& failure) {
  database_->rollBack();
  if (failure.isDamage()) database_.reset();
  return failureOf(failure);
}

Library::Failure Library::apply(const Changes& changes) {
  if (changes.failure) return changes.failure;
  if (changes.isEmpty()) return nullptr;
  MutexLock lock(mutex_);
  if (auto failure = open()) return failure;
  // Before the transaction, which keeps other processes waiting.
  std::vector<Incoming> incoming;
  if (auto failure = takeIn(changes, incoming)) return failure;

  if (auto problem = database_->run(kChange, "BEGIN IMMEDIATE")) return refused(*problem);
  std::vector<std::int64_t> removed;
  if (auto failure = write(changes, incoming, removed)) {
    if (database_) database_->rollBack();
    return failure;
  }
  if (auto problem = database_->run(kChange, "COMMIT")) return refused(*problem);
  for (Incoming& kept : incoming) kept.file.clear();
  for (const std::int64_t number : removed) {
    // It is no asset any more; if the disk refuses, the next opening sweeps it.
    if (const auto problem = removeTree(folder_.movie(number))) deviceLog(problem->description());
  }
  return nullptr;
}

Library::Failure Library::takeIn(const Changes& changes, std::vector<Incoming>& incoming) const {
  for (const auto& [uuid, source] : changes.newAssets) {
    const std::filesystem::path file = temporaryNameBeside(folder_.movies() / "IMG.MOV");
    if (const auto problem = copyMovie(source, file)) return failureOf(*problem);
    Incoming& copy = incoming.emplace_back(uuid, file);
    std::string problem;
    const auto facts = readMovie(file, problem);
    if (!facts) {
      return error(PHPhotosErrorInvalidResource,
                   "could not take " + source.filename().string() + " as a movie: " + problem);
    }
    copy.facts = *facts;
  }
  return nullptr;
}

Library::Failure Library::write(const Changes& changes, std::vector<Incoming>& incoming,
                                std::vector<std::int64_t>& removed) {
  const double now = std::chrono::duration<double>(Clock::shared().wallTime().time_since_epoch()).count();
  for (const auto& [uuid, title] : changes.newAlbums) {
    if (auto problem = database_->run(kChange, "INSERT INTO album (uuid, title, created) VALUES (?, ?, ?)",
                                      {uuid, title, now}))
      return refused(*problem);
  }
  for (Incoming& movie : incoming) {
    if (auto failure = place(movie)) return failure;
  }
  for (const auto& addition : changes.additions) {
    if (auto failure = add(addition)) return failure;
  }
  for (const auto& uuid : changes.deletedAssets) {
    std::vector<Database::Row> rows;
    if (auto problem =
            database_->run(kChange, "DELETE FROM asset WHERE uuid = ? RETURNING number", {uuid}, &rows))
      return refused(*problem);
    for (const auto& row : rows) removed.push_back(integerAt(row, 0));
  }
  return nullptr;
}

Library::Failure Library::place(Incoming& movie) {
  std::int64_t number = 0;
  std::error_code none;
  do {
    std::vector<Database::Row> rows;
    if (auto problem = database_->run(
            kChange, "UPDATE library SET nextNumber = nextNumber + 1 RETURNING nextNumber - 1", {}, &rows))
      return refused(*problem);
    number = integerAt(rows.front(), 0);
  } while (std::filesystem::exists(std::filesystem::symlink_status(folder_.movie(number), none)));

  const std::filesystem::path file = folder_.movie(number);
  if (const auto problem = renameFile(movie.file, file)) return failureOf(*problem);
  movie.file = file;
  const double now = std::chrono::duration<double>(Clock::shared().wallTime().time_since_epoch()).count();
  const MovieFacts& facts = movie.facts;
  if (auto problem = database_->run(kChange,
                                    "INSERT INTO asset (uuid, number, duration, width, height, created)"
                                    " VALUES (?, ?, ?, ?, ?, ?)",
                                    {movie.uuid, number, facts.duration, std::int64_t{facts.width},
                                     std::int64_t{facts.height}, facts.created.value_or(now)}))
    return refused(*problem);
  return nullptr;
}

Library::Failure Library::add(const Changes::Addition& addition) {
  std::vector<Database::Row> rows;
  if (auto problem = database_->run(kChange,
                                    "SELECT album.id, asset.id FROM album, asset"
                                    " WHERE album.uuid = ? AND asset.uuid = ?",
                                    {addition.album, addition.asset}, &rows))
    return refused(*problem);
  if (rows.empty()) {
    return error(PHPhotosErrorIdentifierNotFound,
                 std::string("could not ") + kChange + ": the album or the asset is not there any more");
  }
  if (auto problem = database_->run(kChange, "INSERT OR IGNORE INTO membership (album, asset) VALUES (?, ?)",
                                    {integerAt(rows.front(), 0), integerAt(rows.front(), 1)}))
    return refused(*problem);
  return nullptr;
}

}  // namespace ios::photos
