#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "Photos/Private/FolderLock.h"

namespace ios::photos {

FolderLock::FolderLock(const std::filesystem::path& folder, Mode mode)
    : folder_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (!folder_) return;
  while (::flock(folder_.number(), mode == Mode::moving ? LOCK_EX : LOCK_SH) != 0 && errno == EINTR) {
  }
}

}  // namespace ios::photos
