#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ios {

/// Bits from the most significant one of the first byte on, with the variable-length numbers of H.264.
class BitReader {
 public:
  explicit BitReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  std::uint32_t bits(int count);
  /// ue(v): a number written with a run of zeros for its length.
  std::uint32_t unsignedNumber();
  std::size_t position() const { return position_; }
  /// Whether reading went past the end; bits beyond it read as 0.
  bool overrun() const { return position_ > bytes_.size() * 8; }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
};

class BitWriter {
 public:
  void bits(std::uint32_t value, int count);
  void unsignedNumber(std::uint32_t value);
  /// A one, and zeros to the end of the byte: the end of an H.264 unit's content.
  void finish();
  const std::vector<std::uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
  int free_ = 0;  // unused bits of the last byte
};

/// Replaces `count` bits at `position`.
void replaceBits(std::span<std::uint8_t> bytes, std::size_t position, std::uint32_t value, int count);

}  // namespace ios
