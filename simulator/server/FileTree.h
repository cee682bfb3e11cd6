#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace simulator {

/// A file that is open for reading, and stays what it was when it was opened.
struct OpenFile {
  int descriptor = -1;
  std::uint64_t size = 0;

  OpenFile() = default;
  OpenFile(int descriptor, std::uint64_t size) : descriptor(descriptor), size(size) {}
  OpenFile(OpenFile&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)), size(other.size) {}
  OpenFile& operator=(OpenFile&& other) noexcept {
    std::swap(descriptor, other.descriptor);
    std::swap(size, other.size);
    return *this;
  }
  ~OpenFile();
  /// Reads up to `count` bytes; fewer when the file has become shorter.
  std::string read(std::uint64_t first, std::uint64_t count) const;
};

/// Opens the regular file at `path` below `root`. No "..", no absolute path and no symbolic link on the way leads
/// anywhere: the kernel resolves the path beneath the root. Empty when there is no such file.
std::optional<OpenFile> openBeneath(const std::filesystem::path& root, const std::string& path);

}  // namespace simulator
