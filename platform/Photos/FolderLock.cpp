#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "Photos/FolderLock+Private.h"

namespace ios::photos {

FolderLock::FolderLock(const std::filesystem::path& folder, Mode mode)
    : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (descriptor_ < 0) return;
  while (::flock(descriptor_, mode == Mode::moving ? LOCK_EX : LOCK_SH) != 0 && errno == EINTR) {
  }
}

FolderLock::~FolderLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace ios::photos
