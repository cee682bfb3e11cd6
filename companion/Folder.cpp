#include "Folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "Base/FileDescriptor.h"

namespace companion {

using ios::FileDescriptor;

namespace {

std::function<int(const std::string&, const std::filesystem::path&)>& faultHook() {
  static std::function<int(const std::string&, const std::filesystem::path&)> hook;
  return hook;
}

/// Opens a file for reading if it is one; a pipe of that name does not make the caller wait.
FileDescriptor openFile(int folder, const std::string& name, struct stat& status) {
  FileDescriptor file(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file && (::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))) file.close();
  return file;
}

}  // namespace

void Folder::setFault(std::function<int(const std::string&, const std::filesystem::path&)> fault) {
  faultHook() = std::move(fault);
}

FileError Folder::failure(const char* operation, const std::string& name, int code) const {
  return {code, operation, name.empty() ? path_ : path_ / name};
}

int Folder::fault(const char* operation, const std::string& name) const {
  return faultHook() ? faultHook()(operation, path_ / name) : 0;
}

std::optional<Folder> Folder::open(const std::filesystem::path& path, FileError& error) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor >= 0) return Folder(descriptor, path);
  error = {errno, "open", path};
  return std::nullopt;
}

std::optional<Folder> Folder::open(const std::string& name, FileError& error) const {
  const int descriptor = ::openat(descriptor_, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor >= 0) return Folder(descriptor, path_ / name);
  error = failure("open", name, errno);
  return std::nullopt;
}

Folder::Folder(Folder&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {}

Folder::~Folder() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::optional<FileError> Folder::lock() const {
  while (::flock(descriptor_, LOCK_EX) != 0) {
    if (errno != EINTR) return failure("lock", "", errno);
  }
  return std::nullopt;
}

std::vector<Folder::Entry> Folder::entries() const {
  std::vector<Entry> entries;
  // A descriptor of its own, since reading moves its position and closing the stream closes it.
  FileDescriptor descriptor(::openat(descriptor_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(descriptor ? ::fdopendir(descriptor.number()) : nullptr,
                                                   ::closedir);
  if (!stream) return entries;
  descriptor.release();
  while (const dirent* found = ::readdir(stream.get())) {
    const std::string name = found->d_name;
    struct stat status;
    if (name == "." || name == ".." ||
        ::fstatat(descriptor_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
      continue;
    const EntryKind kind = S_ISDIR(status.st_mode)   ? EntryKind::folder
                           : S_ISREG(status.st_mode) ? EntryKind::file
                                                     : EntryKind::other;
    entries.push_back({name, kind});
  }
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
  return entries;
}

std::optional<ios::Bytes> Folder::read(const std::string& name, std::size_t limit) const {
  struct stat status;
  const FileDescriptor file = openFile(descriptor_, name, status);
  if (!file || static_cast<std::uintmax_t>(status.st_size) > limit) return std::nullopt;
  ios::Bytes bytes(static_cast<std::size_t>(status.st_size));
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t got = ::read(file.number(), bytes.data() + filled, bytes.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return std::nullopt;
    filled += static_cast<std::size_t>(got);
  }
  return bytes;
}

std::optional<std::uintmax_t> Folder::fileSize(const std::string& name) const {
  struct stat status;
  if (::fstatat(descriptor_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return static_cast<std::uintmax_t>(status.st_size);
}

std::optional<FileError> Folder::make(const std::string& name) const {
  int code = fault("make", name);
  if (code == 0 && ::mkdirat(descriptor_, name.c_str(), 0777) != 0) code = errno;
  if (code != 0) return failure("make", name, code);
  return std::nullopt;
}

std::optional<FileError> Folder::write(const std::string& name, std::span<const std::uint8_t> bytes) const {
  int code = fault("create", name);
  if (code != 0) return failure("create", name, code);
  FileDescriptor file(
      ::openat(descriptor_, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!file) return failure("create", name, errno);
  code = fault("write", name);
  if (code == 0) code = ios::writeAll(file.number(), bytes);
  if (code == 0 && ::fsync(file.number()) != 0) code = errno;
  if (const int late = file.close(); code == 0) code = late;
  if (code == 0) return std::nullopt;
  ::unlinkat(descriptor_, name.c_str(), 0);
  return failure("write", name, code);
}

std::optional<FileError> Folder::copyIn(const std::filesystem::path& source, const std::string& name,
                                        std::uintmax_t& bytes) const {
  struct stat status {};
  const FileDescriptor from = openFile(AT_FDCWD, source.string(), status);
  if (!from) return FileError{ENOENT, "read", source};
  if (const int code = fault("create", name)) return failure("create", name, code);
  FileDescriptor to(
      ::openat(descriptor_, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!to) return failure("create", name, errno);
  int code = fault("write", name);
  if (code == 0 && ::ioctl(to.number(), FICLONE, from.number()) != 0)
    code = ios::copyToEnd(from.number(), to.number());
  if (code == 0 && (::fsync(to.number()) != 0 || ::fstat(to.number(), &status) != 0)) code = errno;
  if (const int late = to.close(); code == 0) code = late;
  bytes = static_cast<std::uintmax_t>(status.st_size);
  if (code == 0) return std::nullopt;
  ::unlinkat(descriptor_, name.c_str(), 0);
  return failure("write", name, code);
}

std::optional<FileError> Folder::replace(const std::string& name, std::span<const std::uint8_t> bytes) const {
  const std::string incoming = incomingName(name);
  if (auto error = remove(incoming)) return error;
  if (auto error = write(incoming, bytes)) return error;
  auto error = rename(incoming, name);
  if (error) ::unlinkat(descriptor_, incoming.c_str(), 0);
  return error;
}

std::optional<FileError> Folder::rename(const std::string& from, const std::string& to) const {
  int code = fault("rename", to);
  if (code == 0 && ::renameat(descriptor_, from.c_str(), descriptor_, to.c_str()) != 0) code = errno;
  if (code != 0) return failure("rename", to, code);
  return std::nullopt;
}

std::optional<FileError> Folder::remove(const std::string& name) const {
  constexpr int kMostLevels = 32;
  return removeTree(name, kMostLevels);
}

std::optional<FileError> Folder::removeTree(const std::string& name, int levels) const {
  struct stat status;
  if (::fstatat(descriptor_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return std::nullopt;
    return failure("remove", name, errno);
  }
  if (const int code = fault("remove", name)) return failure("remove", name, code);
  const bool isFolder = S_ISDIR(status.st_mode);
  if (isFolder) {
    if (levels == 0) return failure("remove", name, ELOOP);
    FileError error;
    const auto inner = open(name, error);
    if (!inner) return error;
    for (const Entry& entry : inner->entries()) {
      if (auto failed = inner->removeTree(entry.name, levels - 1)) return failed;
    }
  }
  if (::unlinkat(descriptor_, name.c_str(), isFolder ? AT_REMOVEDIR : 0) != 0)
    return failure("remove", name, errno);
  return std::nullopt;
}

std::optional<FileError> Folder::sync() const {
  if (::fsync(descriptor_) != 0) return failure("sync", "", errno);
  return std::nullopt;
}

}  // namespace companion
