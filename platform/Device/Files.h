#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ios {

/// Why a file operation failed: the operation, the file and the system's error code.
struct FileError {
  int code = 0;  // errno
  std::string operation;
  std::filesystem::path path;
  std::string reason = {};  // shown in place of the code's text
  /// "could not write Pasteboard/general.plist: No space left on device"; paths outside the device in full.
  std::string description() const;
};
/// Whether that errno means that there is no room: of the disk, of the user's share of it, or of the file.
bool meansNoRoom(int code);

/// Replaces `path` with `bytes`: readers see either the old file or the new one, complete. Missing parent
/// folders are created. After a failure the old file is unchanged and nothing else is left behind.
[[nodiscard]] std::optional<FileError> writeFileAtomically(const std::filesystem::path& path,
                                                           std::span<const std::uint8_t> bytes);
/// The file's bytes; empty with `error` set when it cannot be read or has more than `limit` bytes.
std::optional<std::vector<std::uint8_t>> readFile(const std::filesystem::path& path,
                                                  FileError* error = nullptr,
                                                  std::uintmax_t limit = UINTMAX_MAX);

/// Creates a folder and its missing parents; does nothing if it exists.
[[nodiscard]] std::optional<FileError> createFolder(const std::filesystem::path& path);
/// Removes a file, or a folder with everything in it; succeeds if there is none. Links are
/// removed, not followed.
[[nodiscard]] std::optional<FileError> removeTree(const std::filesystem::path& path);
[[nodiscard]] std::optional<FileError> renameFile(const std::filesystem::path& from,
                                                  const std::filesystem::path& to);
/// Swaps two existing files or folders atomically: neither name is free at any moment.
[[nodiscard]] std::optional<FileError> exchangeFiles(const std::filesystem::path& one,
                                                     const std::filesystem::path& other);
/// Copies a file, or a folder with everything in it, to `to`, which must not exist. Files keep their mode. A
/// link remains a link if it is relative and leads to a place inside `from`; otherwise its target is copied.
[[nodiscard]] std::optional<FileError> copyTree(const std::filesystem::path& from,
                                                const std::filesystem::path& to);

/// What lies in a folder, in no order; empty, with `error` set, when it cannot be read. For sources that must live
/// where memory runs out: the standard library's iterators end the process then.
std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder, FileError* error = nullptr);

/// A name beside `path` for an unfinished file: hidden, and unique to this process.
std::filesystem::path temporaryNameBeside(const std::filesystem::path& path);
/// Removes from `folder` the unfinished files of processes that have ended.
void sweepTemporaryFiles(const std::filesystem::path& folder);

/// Paths below `root` are named relative to it in descriptions.
void nameFilesRelativeTo(const std::filesystem::path& root);

/// For tests: injects disk errors. `fault` is called before every write, creation, renaming and removal the
/// platform makes in the device's folder ("write", "create", "rename", "remove"); a non-zero errno makes the
/// operation fail with it. An empty function ends the fault.
void setDiskFault(std::function<int(const std::string& operation, const std::filesystem::path&)> fault);
/// The injected error for an operation, empty if there is none; for code that writes to the
/// disk by other means.
[[nodiscard]] std::optional<FileError> diskRefusal(const std::string& operation,
                                                   const std::filesystem::path& path);

}  // namespace ios
