#include <sys/stat.h>

#include <utility>

#include "Device/Device.h"
#include "Photos/Private/FolderLock.h"
#include "Photos/Private/LibraryReader.h"

namespace ios::photos {
namespace {

AlbumFacts albumOf(const Database::Row& row) {
  return {textAt(row, 0), textAt(row, 1)};
}
AssetFacts assetOf(const Database::Row& row) {
  return {textAt(row, 0), realAt(row, 1), integerAt(row, 2), integerAt(row, 3)};
}

}  // namespace

DatabaseResult<Database*> LibraryReader::connection() {
  struct stat status {};
  if (::stat(folder_.database().c_str(), &status) != 0) {
    database_.reset();
    return nullptr;
  }
  if (database_ && (status.st_dev != device_ || status.st_ino != inode_)) database_.reset();
  if (!database_) {
    database_ = IOS_TRY(Database::open(folder_.database(), Database::Mode::read, patienceMilliseconds_));
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }
  return database_.get();
}

Database::Rows LibraryReader::rows(const char* statement, const std::vector<Database::Value>& parameters) {
  // Another process has the file, but not made its tables yet.
  constexpr int kNoSuchTable = 1;
  MutexLock lock(mutex_);
  const FolderLock reading(folder_.root, FolderLock::Mode::reading);
  const auto read = [&]() IOS_REQUIRES(mutex_) -> DatabaseResult<Database::Rows> {
    Database* database = IOS_TRY(connection());
    if (!database) return Database::Rows();
    auto found = IOS_TRY(database->run("read the photo library", statement, parameters));
    toldOfFailure_ = false;
    return found;
  };
  auto found = read();
  if (found) return *std::move(found);
  database_.reset();
  if (found.error().code != kNoSuchTable && !std::exchange(toldOfFailure_, true))
    deviceLog(found.error().description());
  return {};
}

std::vector<AlbumFacts> LibraryReader::albums() {
  std::vector<AlbumFacts> albums;
  for (const auto& row : rows("SELECT uuid, title FROM album ORDER BY id")) albums.push_back(albumOf(row));
  return albums;
}

std::vector<AssetFacts> LibraryReader::assets() {
  std::vector<AssetFacts> assets;
  for (const auto& row : rows("SELECT uuid, duration, width, height FROM asset ORDER BY id"))
    assets.push_back(assetOf(row));
  return assets;
}

std::vector<AssetFacts> LibraryReader::assetsOf(const std::string& album) {
  std::vector<AssetFacts> assets;
  for (const auto& row : rows("SELECT asset.uuid, duration, width, height FROM membership"
                              " JOIN album ON album.id = membership.album"
                              " JOIN asset ON asset.id = membership.asset"
                              " WHERE album.uuid = ? ORDER BY membership.id",
                              {album}))
    assets.push_back(assetOf(row));
  return assets;
}

std::optional<AlbumFacts> LibraryReader::album(const std::string& uuid) {
  const auto found = rows("SELECT uuid, title FROM album WHERE uuid = ?", {uuid});
  if (found.empty()) return std::nullopt;
  return albumOf(found.front());
}

std::optional<AssetFacts> LibraryReader::asset(const std::string& uuid) {
  const auto found = rows("SELECT uuid, duration, width, height FROM asset WHERE uuid = ?", {uuid});
  if (found.empty()) return std::nullopt;
  return assetOf(found.front());
}

std::optional<std::filesystem::path> LibraryReader::movie(const std::string& uuid) {
  const auto found = rows("SELECT number FROM asset WHERE uuid = ?", {uuid});
  if (found.empty()) return std::nullopt;
  const std::filesystem::path file = folder_.movie(integerAt(found.front(), 0));
  std::error_code error;
  // A link would lead a reader who trusts the library elsewhere.
  if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(file, error))) return std::nullopt;
  return file;
}

void LibraryReader::close() {
  MutexLock lock(mutex_);
  database_.reset();
}

}  // namespace ios::photos
