#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "Photos/Movie+Private.h"

namespace ios::photos {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  int number() const { return number_; }
  /// 0, or the errno of closing, where some disks first report a failed write.
  int close() {
    const int number = std::exchange(number_, -1);
    return number >= 0 && ::close(number) != 0 ? errno : 0;
  }

 private:
  int number_;
};

int writeAll(int file, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = ::write(file, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return 0;
}

/// From where both files stand, to the end.
int copyByHand(int from, int to) {
  std::vector<char> buffer(1 << 18);
  for (;;) {
    const ssize_t count = ::read(from, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return 0;
    if (const int code = writeAll(to, buffer.data(), static_cast<std::size_t>(count))) return code;
  }
}

int copyContents(int from, int to) {
  if (::ioctl(to, FICLONE, from) == 0) return 0;
  for (;;) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, kMost, 0);
    if (count > 0) continue;
    if (count == 0) return copyByHand(from, to);  // at the end; or a file system that says so too early
    if (errno == EINTR) continue;
    if (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == EFBIG) return errno;
    return copyByHand(from, to);
  }
}

}  // namespace

std::optional<FileError> copyMovie(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (auto problem = diskRefusal("read", from)) return problem;
  // Not blocking: a pipe in the file's place must not hold the library up.
  Descriptor source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (source.number() < 0) return FileError{errno, "read", from};
  struct stat status {};
  if (::fstat(source.number(), &status) != 0) return FileError{errno, "read", from};
  if (!S_ISREG(status.st_mode)) return FileError{S_ISDIR(status.st_mode) ? EISDIR : EINVAL, "read", from};

  if (auto problem = diskRefusal("create", to)) return problem;
  Descriptor target(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
  if (target.number() < 0) return FileError{errno, "create", to};
  const auto write = [&]() -> std::optional<FileError> {
    if (auto problem = diskRefusal("write", to)) return problem;
    if (const int code = copyContents(source.number(), target.number())) return FileError{code, "write", to};
    if (auto problem = diskRefusal("write", to)) return problem;
    if (::fsync(target.number()) != 0) return FileError{errno, "write", to};
    if (const int code = target.close()) return FileError{code, "write", to};
    return std::nullopt;
  };
  auto problem = write();
  if (problem) ::unlink(to.c_str());
  return problem;
}

}  // namespace ios::photos
