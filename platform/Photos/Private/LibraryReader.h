#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Mutex.h"
#include "Photos/Private/Database.h"
#include "Photos/Private/MediaFolder.h"

namespace ios::photos {

struct AlbumFacts {
  std::string uuid, title;
};
struct AssetFacts {
  std::string uuid;
  double duration = 0;  // seconds
  std::int64_t width = 0, height = 0;
};

/// Reads the library and never changes it. Any thread; a writer does not hold it up. A missing library counts as empty;
/// so does one that cannot be read, with one line on standard error.
class LibraryReader {
 public:
  /// `patience`: how long a reader waits while another process holds the library, which happens only while it
  /// puts the library in order or is the last to close it.
  LibraryReader(MediaFolder folder, int patienceMilliseconds)
      : folder_(std::move(folder)), patienceMilliseconds_(patienceMilliseconds) {}

  /// In the order in which they were added.
  std::vector<AlbumFacts> albums();
  std::vector<AssetFacts> assets();
  std::vector<AssetFacts> assetsOf(const std::string& album);
  std::optional<AlbumFacts> album(const std::string& uuid);
  std::optional<AssetFacts> asset(const std::string& uuid);
  /// The asset's file, if it is there.
  std::optional<std::filesystem::path> movie(const std::string& uuid);

  void close();

 private:
  Database::Rows rows(const char* statement, const std::vector<Database::Value>& parameters = {});
  /// The connection, reopened when another file has taken the library's place; null without a library.
  DatabaseResult<Database*> connection() IOS_REQUIRES(mutex_);

  const MediaFolder folder_;
  const int patienceMilliseconds_;
  Mutex mutex_;
  std::unique_ptr<Database> database_ IOS_GUARDED_BY(mutex_);
  dev_t device_ IOS_GUARDED_BY(mutex_) = 0;
  ino_t inode_ IOS_GUARDED_BY(mutex_) = 0;
  bool toldOfFailure_ IOS_GUARDED_BY(mutex_) = false;
};

}  // namespace ios::photos
