#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "Device/Device.h"
#include "Photos/PHError.h"
#include "Photos/Private/Library.h"
#include "Photos/Private/Movie.h"

namespace ios::photos {
namespace {

constexpr const char* kChange = "change the photo library";
// The main thread may be the one that reads.
constexpr int kReadersPatienceMilliseconds = 200;

long codeOf(const FileError& error) {
  if (meansNoRoom(error.code)) return PHPhotosErrorNotEnoughSpace;
  return error.operation == "read" ? PHPhotosErrorInvalidResource : PHPhotosErrorInternalError;
}

tl::unexpected<std::shared_ptr<NSError>> failed(long code, std::string text) {
  return failure(std::make_shared<NSError>(PHPhotosErrorDomain, code, std::move(text)));
}

double wallTime() {
  return std::chrono::duration<double>(Clock::shared().wallTime().time_since_epoch()).count();
}

}  // namespace

tl::unexpected<std::shared_ptr<NSError>> failed(const FileError& error) {
  return failed(codeOf(error), error.description());
}

tl::unexpected<std::shared_ptr<NSError>> failed(const DatabaseFailure& failure) {
  return failed(failure.isDiskFull() ? PHPhotosErrorNotEnoughSpace : PHPhotosErrorInternalError,
                failure.description());
}

/// A movie on its way into the library: a copy of its own beside the others, which is removed with this object unless
/// it was kept.
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
      const auto opened = made->open();
      if (!opened) deviceLog(opened.error()->localizedDescription());
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

LibraryResult<std::string> Library::newUUID() {
  if (!Clock::shared().isVirtual()) return randomUUID();
  // The same flow gives the same identifiers, so they are counted, in the library that processes share.
  MutexLock lock(mutex_);
  IOS_TRY(open());
  const auto rows =
      IOS_TRY(run(kChange, "UPDATE library SET issued = issued + 1 RETURNING issued, created, firstNumber"));
  const Database::Row& row = rows.front();
  const auto library =
      static_cast<std::uint64_t>(integerAt(row, 1)) + static_cast<std::uint64_t>(integerAt(row, 2));
  return derivedUUID(library, static_cast<std::uint64_t>(integerAt(row, 0)));
}

LibraryResult<Database::Rows> Library::run(const char* operation, const char* statement,
                                           const std::vector<Database::Value>& parameters) {
  auto rows = database_->run(operation, statement, parameters);
  if (rows) return *std::move(rows);
  database_->rollBack();
  if (rows.error().isDamage()) database_.reset();
  return failed(rows.error());
}

LibraryResult<> Library::apply(const Changes& changes) {
  if (changes.failure) return failure(changes.failure);
  if (changes.isEmpty()) return {};
  MutexLock lock(mutex_);
  IOS_TRY(open());
  // Before the transaction, which keeps other processes waiting.
  auto incoming = IOS_TRY(takeIn(changes));

  // Also where memory runs out: a transaction that stayed open would refuse all that follow.
  struct Transaction {
    ~Transaction() {
      if (database) database->rollBack();
    }
    const std::unique_ptr<Database>& database;
  };
  IOS_TRY(run(kChange, "BEGIN IMMEDIATE"));
  std::vector<std::int64_t> removed;
  {
    const Transaction transaction{database_};
    removed = IOS_TRY(write(changes, incoming));
    IOS_TRY(run(kChange, "COMMIT"));
  }
  for (Incoming& kept : incoming) kept.file.clear();
  for (const std::int64_t number : removed) {
    // It is not an asset any more; if the disk refuses, the next opening sweeps it.
    if (const auto problem = removeTree(folder_.movie(number))) deviceLog(problem->description());
  }
  return {};
}

LibraryResult<std::vector<Library::Incoming>> Library::takeIn(const Changes& changes) const {
  std::vector<Incoming> incoming;
  for (const auto& [uuid, source] : changes.newAssets) {
    const std::filesystem::path file = temporaryNameBeside(folder_.movies() / "IMG.MOV");
    if (const auto copied = copyMovie(source, file); !copied) return failed(copied.error());
    Incoming& copy = incoming.emplace_back(uuid, file);
    const auto facts = readMovie(file);
    if (!facts) {
      return failed(PHPhotosErrorInvalidResource,
                    "could not take " + source.filename().string() + " as a movie: " + facts.error());
    }
    copy.facts = *facts;
  }
  return incoming;
}

LibraryResult<std::vector<std::int64_t>> Library::write(const Changes& changes,
                                                        std::vector<Incoming>& incoming) {
  for (const auto& [uuid, title] : changes.newAlbums) {
    IOS_TRY(
        run(kChange, "INSERT INTO album (uuid, title, created) VALUES (?, ?, ?)", {uuid, title, wallTime()}));
  }
  for (Incoming& movie : incoming) IOS_TRY(place(movie));
  for (const auto& addition : changes.additions) IOS_TRY(add(addition));
  std::vector<std::int64_t> removed;
  for (const auto& uuid : changes.deletedAssets) {
    const auto rows = IOS_TRY(run(kChange, "DELETE FROM asset WHERE uuid = ? RETURNING number", {uuid}));
    for (const auto& row : rows) removed.push_back(integerAt(row, 0));
  }
  return removed;
}

LibraryResult<> Library::place(Incoming& movie) {
  std::int64_t number = 0;
  std::error_code none;
  do {
    const auto rows =
        IOS_TRY(run(kChange, "UPDATE library SET nextNumber = nextNumber + 1 RETURNING nextNumber - 1"));
    number = integerAt(rows.front(), 0);
  } while (std::filesystem::exists(std::filesystem::symlink_status(folder_.movie(number), none)));

  const std::filesystem::path file = folder_.movie(number);
  if (const auto problem = renameFile(movie.file, file)) return failed(*problem);
  movie.file = file;
  const MovieFacts& facts = movie.facts;
  IOS_TRY(run(kChange,
              "INSERT INTO asset (uuid, number, duration, width, height, created) VALUES (?, ?, ?, ?, ?, ?)",
              {movie.uuid, number, facts.duration, std::int64_t{facts.width}, std::int64_t{facts.height},
               facts.created.value_or(wallTime())}));
  return {};
}

LibraryResult<> Library::add(const Changes::Addition& addition) {
  const auto rows = IOS_TRY(
      run(kChange, "SELECT album.id, asset.id FROM album, asset WHERE album.uuid = ? AND asset.uuid = ?",
          {addition.album, addition.asset}));
  if (rows.empty()) {
    return failed(PHPhotosErrorIdentifierNotFound,
                  std::string("could not ") + kChange + ": the album or the asset is not there any more");
  }
  IOS_TRY(run(kChange, "INSERT OR IGNORE INTO membership (album, asset) VALUES (?, ?)",
              {integerAt(rows.front(), 0), integerAt(rows.front(), 1)}));
  return {};
}

}  // namespace ios::photos
