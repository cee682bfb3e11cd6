#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "Device/Files.h"

namespace companion {

using ios::FileError;

/// A folder held open. What is in it is reached by name relative to it and never through a symbolic link, so
/// that a link which somebody planted leads nowhere: nothing is read or written outside. Names are single
/// path components.
class Folder {
 public:
  enum class EntryKind { file, folder, other };
  struct Entry {
    std::string name;
    EntryKind kind = EntryKind::other;
  };

  /// `path` itself may go through links: it is the caller's to trust. Empty, with `error`
  /// set, when there is none.
  static std::optional<Folder> open(const std::filesystem::path& path, FileError& error);
  std::optional<Folder> open(const std::string& name, FileError& error) const;

  Folder(Folder&& other) noexcept;
  Folder& operator=(Folder&&) = delete;
  ~Folder();

  /// Holds off every other process that locks the folder, until this object is gone; waits
  /// while another has it.
  [[nodiscard]] std::optional<FileError> lock() const;
  /// Ordered by name, without "." and "..". Entries that cannot be listed are left out.
  std::vector<Entry> entries() const;
  /// The bytes of a file; empty when there is none of at most `limit` bytes.
  std::optional<ios::Bytes> read(const std::string& name, std::size_t limit) const;
  /// Size of a file in bytes; empty when there is no such file.
  std::optional<std::uintmax_t> fileSize(const std::string& name) const;

  /// The new folder's name must not be taken.
  [[nodiscard]] std::optional<FileError> make(const std::string& name) const;
  /// A new file, synced; its name must not be taken. After a failure there is none.
  [[nodiscard]] std::optional<FileError> write(const std::string& name,
                                               std::span<const std::uint8_t> bytes) const;
  /// Copies `source`, which is a file and no link to one, to a new file, synced, sharing its blocks where the disk can;
  /// the new name must not be taken. After a failure there is none; its operation is "read" when `source` cannot be
  /// read. `bytes` is the number of bytes.
  [[nodiscard]] std::optional<FileError> copyIn(const std::filesystem::path& source, const std::string& name,
                                                std::uintmax_t& bytes) const;
  /// Readers see either the old file or the new one, complete.
  [[nodiscard]] std::optional<FileError> replace(const std::string& name,
                                                 std::span<const std::uint8_t> bytes) const;
  /// Fails if `to` is taken by anything but an empty folder.
  [[nodiscard]] std::optional<FileError> rename(const std::string& from, const std::string& to) const;
  /// A file, a link (not what it leads to), or a folder with all in it. No such entry: nothing happens.
  [[nodiscard]] std::optional<FileError> remove(const std::string& name) const;
  [[nodiscard]] std::optional<FileError> sync() const;

  /// Name of the file in which `replace` prepares the new `name`; a killed process leaves it behind.
  static std::string incomingName(const std::string& name) { return ".incoming-" + name; }

  /// Tests inject disk errors here: called before every change; a non-zero errno makes it fail with that.
  static void setFault(std::function<int(const std::string& operation, const std::filesystem::path&)> fault);

 private:
  Folder(int descriptor, std::filesystem::path path) : descriptor_(descriptor), path_(std::move(path)) {}
  std::optional<FileError> removeTree(const std::string& name, int levels) const;
  FileError failure(const char* operation, const std::string& name, int code) const;
  int fault(const char* operation, const std::string& name) const;

  int descriptor_;
  std::filesystem::path path_;  // for messages
};

}  // namespace companion
