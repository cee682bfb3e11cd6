#pragma once

#include <filesystem>

#include "Base/FileDescriptor.h"

namespace ios::photos {

/// Keeps apart readers of the library and whoever moves it away, across all processes and threads. SQLite
/// finds a library's log and shared memory by their names: a reader that has opened the old library and then
/// reads beside the new one's would truncate the memory that the new one's writer works in. A folder that
/// cannot be opened is not locked; nothing in it can be read or moved then.
class FolderLock {
 public:
  enum class Mode { reading, moving };
  /// Waits while the library is being moved or, to move it, while others read. That takes as long as one statement.
  FolderLock(const std::filesystem::path& folder, Mode mode);

 private:
  const FileDescriptor folder_;
};

}  // namespace ios::photos
