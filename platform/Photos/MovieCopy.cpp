#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Base/FileDescriptor.h"
#include "Photos/Private/Movie.h"

namespace ios::photos {
namespace {

int copyContents(int from, int to) {
  if (::ioctl(to, FICLONE, from) == 0) return 0;
  for (;;) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, kMost, 0);
    if (count > 0) continue;
    if (count == 0) return copyToEnd(from, to);  // at the end; or a file system that says so too early
    if (errno == EINTR) continue;
    if (errno == EFBIG) return ENOSPC;
    if (errno == ENOSPC || errno == EDQUOT || errno == EIO) return errno;
    return copyToEnd(from, to);
  }
}

}  // namespace

Result<void, FileError> copyMovie(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (const auto problem = diskRefusal("read", from)) return failure(*problem);
  // Not blocking: a pipe in the file's place must not hold the library up.
  const FileDescriptor source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!source) return failure(FileError{errno, "read", from});
  struct stat status {};
  if (::fstat(source.number(), &status) != 0) return failure(FileError{errno, "read", from});
  if (!S_ISREG(status.st_mode))
    return failure(FileError{S_ISDIR(status.st_mode) ? EISDIR : EINVAL, "read", from});

  if (const auto problem = diskRefusal("create", to)) return failure(*problem);
  FileDescriptor target(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
  if (!target) return failure(FileError{errno, "create", to});
  const auto write = [&]() -> Result<void, FileError> {
    if (const auto problem = diskRefusal("write", to)) return failure(*problem);
    if (const int code = copyContents(source.number(), target.number()))
      return failure(FileError{code, "write", to});
    if (const auto problem = diskRefusal("write", to)) return failure(*problem);
    if (::fsync(target.number()) != 0) return failure(FileError{errno, "write", to});
    if (const int code = target.close()) return failure(FileError{code, "write", to});
    return {};
  };
  auto written = write();
  if (!written) ::unlink(to.c_str());
  return written;
}

}  // namespace ios::photos
