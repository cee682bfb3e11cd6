#include "Base/FileDescriptor.h"

#include <unistd.h>

#include <cerrno>
#include <vector>

namespace ios {

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    number_ = other.release();
  }
  return *this;
}

int FileDescriptor::close() {
  const int number = release();
  return number >= 0 && ::close(number) != 0 ? errno : 0;
}

int writeAll(int descriptor, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    // A limit on the size of files is how a full disk is played.
    if (written < 0) return errno == EFBIG ? ENOSPC : errno;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return 0;
}

int copyToEnd(int from, int to) {
  std::vector<std::uint8_t> piece(1 << 18);
  for (;;) {
    const ssize_t count = ::read(from, piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count < 0 ? errno : 0;
    if (const int code = writeAll(to, {piece.data(), static_cast<std::size_t>(count)})) return code;
  }
}

}  // namespace ios
