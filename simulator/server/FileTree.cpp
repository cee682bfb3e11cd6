#include "simulator/server/FileTree.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace simulator {

OpenFile::~OpenFile() {
  if (descriptor >= 0) ::close(descriptor);
}

std::string OpenFile::read(std::uint64_t first, std::uint64_t count) const {
  std::string bytes(count, '\0');
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t got =
        ::pread(descriptor, bytes.data() + filled, bytes.size() - filled, static_cast<off_t>(first + filled));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  bytes.resize(filled);
  return bytes;
}

std::optional<OpenFile> openBeneath(const std::filesystem::path& root, const std::string& path) {
  if (path.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  const OpenFile folder(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC), 0);
  if (folder.descriptor < 0) return std::nullopt;
  open_how how{};
  // Not blocking: a named pipe that lies there would never open.
  how.flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  OpenFile file(static_cast<int>(::syscall(SYS_openat2, folder.descriptor, path.c_str(), &how, sizeof how)),
                0);
  struct stat facts {};
  if (file.descriptor < 0 || ::fstat(file.descriptor, &facts) != 0 || !S_ISREG(facts.st_mode))
    return std::nullopt;
  file.size = static_cast<std::uint64_t>(facts.st_size);
  return file;
}

}  // namespace simulator
