#pragma once

#include <cstdint>
#include <span>
#include <utility>

namespace ios {

/// An open file descriptor and its owner.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  /// Takes over `number`; a negative one holds nothing.
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor() { close(); }

  int number() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  int release() { return std::exchange(number_, -1); }
  /// 0, or the errno of closing, where some disks first report a failed write.
  int close();

 private:
  int number_ = -1;
};

/// Writes all bytes; 0, or the errno that ended it.
[[nodiscard]] int writeAll(int descriptor, std::span<const std::uint8_t> bytes);

/// Copies what follows `from`'s position to `to`, up to the end; 0, or the errno that ended it.
[[nodiscard]] int copyToEnd(int from, int to);

}  // namespace ios
