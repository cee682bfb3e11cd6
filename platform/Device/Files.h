#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace ios {

/// Why a file operation failed: what was tried on what, and the system's code.
struct FileError {
  int code = 0;  // errno
  std::string operation;
  std::filesystem::path path;
  /// "could not write Pasteboard/general.plist: No space left on device"
  std::string description() const;
};

/// Replaces `path` with `bytes`: readers see the old file or the new one, whole. Folders on the way are made. After
/// a failure the old file is as it was and nothing else is left behind.
[[nodiscard]] std::optional<FileError> writeFileAtomically(const std::filesystem::path& path,
                                                           std::span<const std::uint8_t> bytes);
/// The file's bytes; empty with `error` set when it cannot be read or has more than `limit` bytes.
std::optional<std::vector<std::uint8_t>> readFile(const std::filesystem::path& path, FileError* error = nullptr,
                                                  std::uintmax_t limit = UINTMAX_MAX);

/// Tests replace the disk's health here: asked before every write, creation and removal the platform makes on the
/// device's folder; a non-zero errno makes it fail so. Empty again: a healthy disk.
void setDiskFault(std::function<int(const std::string& operation, const std::filesystem::path&)> fault);

}  // namespace ios
