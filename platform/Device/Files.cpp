#include "Device/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "Base/FileDescriptor.h"
#include "Base/Mutex.h"

namespace ios {
namespace {

namespace fs = std::filesystem;
using Fault = std::function<int(const std::string&, const fs::path&)>;

struct Disk {
  Mutex mutex;
  Fault fault IOS_GUARDED_BY(mutex);
  fs::path root IOS_GUARDED_BY(mutex);

  static Disk& shared() {
    static auto& disk = *new Disk;
    return disk;
  }
};

int writeNewFile(const fs::path& path, std::span<const std::uint8_t> bytes) {
  FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
  if (file.number() < 0) return errno;
  if (const int code = writeAll(file.number(), bytes)) return code;
  if (::fsync(file.number()) != 0) return errno;
  return file.close();
}

/// Makes the renaming of a file in `folder` survive a power loss. File systems that cannot do so
/// are not an error.
void syncFolder(const fs::path& folder) {
  FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.number() >= 0) ::fsync(descriptor.number());
}

std::optional<FileError> createFolderAndTell(const fs::path& path, std::vector<fs::path>& made) {
  std::error_code error;
  if (fs::is_directory(path, error)) return std::nullopt;
  if (path.has_relative_path() && path.parent_path() != path) {
    if (auto problem = createFolderAndTell(path.parent_path(), made)) return problem;
  }
  if (auto problem = diskRefusal("create", path)) return problem;
  if (::mkdir(path.c_str(), 0755) == 0) {
    made.push_back(path);
  } else if (const int code = errno; code != EEXIST || !fs::is_directory(path, error)) {
    return FileError{code, "create", path};
  }
  return std::nullopt;
}

/// Not fs::copy_file, which reports a full disk as an input/output error.
std::optional<FileError> copyFile(const fs::path& from, const fs::path& to) {
  if (auto problem = diskRefusal("write", to)) return problem;
  FileDescriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!source || ::fstat(source.number(), &status) != 0) return FileError{errno, "read", from};
  FileDescriptor copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!copy) return FileError{errno, "write", to};
  int code = copyToEnd(source.number(), copy.number());
  if (code == 0 && ::fchmod(copy.number(), status.st_mode & 07777) != 0) code = errno;
  if (code == 0) code = copy.close();
  if (code != 0) return FileError{code, "write", to};
  return std::nullopt;
}

/// Whether the link at `link` may remain a link in a copy of `top`.
bool leadsInside(const fs::path& link, const fs::path& top) {
  std::error_code error;
  const fs::path target = fs::read_symlink(link, error);
  if (error || target.is_absolute()) return false;
  const fs::path inside =
      (link.parent_path() / target).lexically_normal().lexically_relative(top.lexically_normal());
  return !inside.empty() && *inside.begin() != "..";
}

std::optional<FileError> copyInto(const fs::path& from, const fs::path& to, const fs::path& top,
                                  std::set<fs::path>& open) {
  std::error_code error;
  if (fs::is_symlink(from, error) && from != top && leadsInside(from, top)) {
    if (auto problem = diskRefusal("create", to)) return problem;
    fs::copy_symlink(from, to, error);
    if (error) return FileError{error.value(), "create", to};
    return std::nullopt;
  }
  const auto status = fs::status(from, error);
  if (fs::is_regular_file(status)) return copyFile(from, to);
  if (!fs::is_directory(status)) return FileError{error ? error.value() : EINVAL, "read", from};

  const fs::path real = fs::canonical(from, error);
  if (error || !open.insert(real).second) return FileError{error ? error.value() : ELOOP, "read", from};
  if (auto problem = createFolder(to)) return problem;
  fs::directory_iterator entries(from, error);
  for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
    if (auto problem = copyInto(entries->path(), to / entries->path().filename(), top, open)) return problem;
  }
  open.erase(real);
  if (error) return FileError{error.value(), "read", from};
  return std::nullopt;
}

}  // namespace

bool meansNoRoom(int code) {
  return code == ENOSPC || code == EDQUOT || code == EFBIG;
}

std::string FileError::description() const {
  fs::path shown = path;
  {
    Disk& disk = Disk::shared();
    MutexLock lock(disk.mutex);
    const fs::path inside = disk.root.empty() ? fs::path() : path.lexically_relative(disk.root);
    if (!inside.empty() && *inside.begin() != ".." && inside != ".") shown = inside;
  }
  return "could not " + operation + " " + shown.string() + ": " +
         (reason.empty() ? std::generic_category().message(code) : reason);
}

void nameFilesRelativeTo(const fs::path& root) {
  Disk& disk = Disk::shared();
  MutexLock lock(disk.mutex);
  disk.root = root;
}

void setDiskFault(Fault fault) {
  Disk& disk = Disk::shared();
  MutexLock lock(disk.mutex);
  disk.fault = std::move(fault);
}

std::optional<FileError> diskRefusal(const std::string& operation, const fs::path& path) {
  Fault fault;
  {
    Disk& disk = Disk::shared();
    MutexLock lock(disk.mutex);
    fault = disk.fault;
  }
  const int code = fault ? fault(operation, path) : 0;
  if (code == 0) return std::nullopt;
  return FileError{code, operation, path};
}

fs::path temporaryNameBeside(const fs::path& path) {
  static std::atomic<unsigned> count = 0;
  return path.parent_path() / ("." + path.filename().string() + "." + std::to_string(::getpid()) + "." +
                               std::to_string(++count) + ".tmp");
}

std::vector<fs::path> filesIn(const fs::path& folder, FileError* error) {
  struct Close {
    void operator()(DIR* opened) const { ::closedir(opened); }
  };
  const std::unique_ptr<DIR, Close> opened(::opendir(folder.c_str()));
  std::vector<fs::path> files;
  errno = opened ? 0 : errno;
  while (const dirent* entry = opened ? ::readdir(opened.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") files.push_back(folder / name);
    errno = 0;
  }
  if (errno != 0) {
    if (error) *error = {errno, "read", folder};
    files.clear();
  }
  return files;
}

void sweepTemporaryFiles(const fs::path& folder) {
  std::vector<fs::path> strays;
  for (const fs::path& file : filesIn(folder)) {
    // ".<name>.<process>.<count>.tmp"
    const std::string name = file.filename().string();
    if (!name.starts_with('.') || !name.ends_with(".tmp")) continue;
    const std::string start = name.substr(0, name.size() - 4);
    const std::string withoutCount = start.substr(0, start.rfind('.'));
    const long process = std::strtol(withoutCount.c_str() + withoutCount.rfind('.') + 1, nullptr, 10);
    if (process > 0 && ::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH) strays.push_back(file);
  }
  // A file that cannot be removed does no harm; the next start tries again.
  for (const auto& stray : strays) static_cast<void>(removeTree(stray));
}

std::optional<FileError> createFolder(const fs::path& path) {
  std::vector<fs::path> made;
  return createFolderAndTell(path, made);
}

std::optional<FileError> removeTree(const fs::path& path) {
  if (auto problem = diskRefusal("remove", path)) return problem;
  std::error_code error;
  fs::remove_all(path, error);
  if (error) return FileError{error.value(), "remove", path};
  return std::nullopt;
}

std::optional<FileError> renameFile(const fs::path& from, const fs::path& to) {
  if (auto problem = diskRefusal("rename", to)) return problem;
  if (::rename(from.c_str(), to.c_str()) != 0) return FileError{errno, "rename", to};
  syncFolder(to.parent_path());
  return std::nullopt;
}

std::optional<FileError> exchangeFiles(const fs::path& one, const fs::path& other) {
  if (auto problem = diskRefusal("rename", other)) return problem;
  if (::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) != 0) {
    return FileError{errno, "rename", other};
  }
  syncFolder(other.parent_path());
  return std::nullopt;
}

std::optional<FileError> copyTree(const fs::path& from, const fs::path& to) {
  std::set<fs::path> open;
  return copyInto(from, to, from, open);
}

std::optional<FileError> writeFileAtomically(const fs::path& path, std::span<const std::uint8_t> bytes) {
  std::vector<fs::path> made;
  const fs::path temporary = temporaryNameBeside(path);
  const auto write = [&]() -> std::optional<FileError> {
    if (auto problem = createFolderAndTell(path.parent_path(), made)) return problem;
    if (auto problem = diskRefusal("write", path)) return problem;
    if (const int code = writeNewFile(temporary, bytes)) return FileError{code, "write", path};
    if (auto problem = diskRefusal("rename", path)) return problem;
    if (::rename(temporary.c_str(), path.c_str()) != 0) return FileError{errno, "write", path};
    return std::nullopt;
  };
  auto problem = write();
  if (problem) {
    ::unlink(temporary.c_str());
    // Only folders that are still empty are removed.
    for (auto folder = made.rbegin(); folder != made.rend(); ++folder) ::rmdir(folder->c_str());
  } else {
    syncFolder(path.parent_path());
  }
  return problem;
}

std::optional<std::vector<std::uint8_t>> readFile(const fs::path& path, FileError* error,
                                                  std::uintmax_t limit) {
  const auto fail = [&](int code) {
    if (error) *error = FileError{code, "read", path};
    return std::nullopt;
  };
  // Not blocking: a pipe in the file's place must not hold the reader up.
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.number() < 0) return fail(errno);
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) return fail(errno);
  if (!S_ISREG(status.st_mode)) return fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
  if (static_cast<std::uintmax_t>(status.st_size) > limit) return fail(EFBIG);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
  std::size_t length = 0;
  while (length < bytes.size()) {
    const ssize_t count = ::read(file.number(), bytes.data() + length, bytes.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return fail(errno);
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  bytes.resize(length);
  return bytes;
}

}  // namespace ios
