#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ios {

/// Why a file operation failed: what was tried on what, and the system's code.
struct FileError {
  int code = 0;  // errno
  std::string operation;
  std::filesystem::path path;
  /// "could not write Pasteboard/general.plist: No space left on device"; paths outside the device in full.
  std::string description() const;
};

/// Replaces `path` with `bytes`: readers see the old file or the new one, whole. Folders on the way are made.
/// After a failure the old file is as it was and nothing else is left behind.
[[nodiscard]] std::optional<FileError> writeFileAtomically(const std::filesystem::path& path,
                                                           std::span<const std::uint8_t> bytes);
/// The file's bytes; empty with `error` set when it cannot be read or has more than `limit` bytes.
std::optional<std::vector<std::uint8_t>> readFile(const std::filesystem::path& path,
                                                  FileError* error = nullptr,
                                                  std::uintmax_t limit = UINTMAX_MAX);

/// Makes a folder and those on the way to it; one that exists is left alone.
[[nodiscard]] std::optional<FileError> createFolder(const std::filesystem::path& path);
/// Removes a file, or a folder with all in it, whatever of it is there. Links are removed, not followed.
[[nodiscard]] std::optional<FileError> removeTree(const std::filesystem::path& path);
[[nodiscard]] std::optional<FileError> renameFile(const std::filesystem::path& from,
                                                  const std::filesystem::path& to);
/// Swaps two that exist, so that no moment is left in which either name is free.
[[nodiscard]] std::optional<FileError> exchangeFiles(const std::filesystem::path& one,
                                                     const std::filesystem::path& other);
/// Copies a file, or a folder with all in it, to `to`, which must not exist. Files keep their mode. A link
/// stays one if it is relative and leads to inside of `from`, else what it leads to is copied.
[[nodiscard]] std::optional<FileError> copyTree(const std::filesystem::path& from,
                                                const std::filesystem::path& to);

/// A name beside `path` for a file in the making, hidden and of this process alone.
std::filesystem::path temporaryNameBeside(const std::filesystem::path& path);
/// Removes from `folder` what processes that have ended left in the making.
void sweepTemporaryFiles(const std::filesystem::path& folder);

/// Paths below `root` are named relative to it in descriptions.
void nameFilesRelativeTo(const std::filesystem::path& root);

/// Tests replace the disk's health here: asked before every write, creation, renaming and removal the
/// platform makes on the device's folder ("write", "create", "rename", "remove"); a non-zero errno makes it
/// fail so. Empty again: a healthy disk.
void setDiskFault(std::function<int(const std::string& operation, const std::filesystem::path&)> fault);
/// What that makes of an operation, empty on a healthy disk; for those who write to the disk on their own.
[[nodiscard]] std::optional<FileError> diskRefusal(const std::string& operation,
                                                   const std::filesystem::path& path);

}  // namespace ios
