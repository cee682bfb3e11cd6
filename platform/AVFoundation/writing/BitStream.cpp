#include "AVFoundation/Private/BitStream.h"

namespace ios {

std::uint32_t BitReader::bits(int count) {
  std::uint32_t value = 0;
  for (; count > 0; --count, ++position_) {
    const std::size_t byte = position_ / 8;
    const std::uint32_t bit = byte < bytes_.size() ? bytes_[byte] >> (7 - position_ % 8) & 1u : 0u;
    value = value << 1 | bit;
  }
  return value;
}

std::uint32_t BitReader::unsignedNumber() {
  int zeros = 0;
  while (zeros < 32 && !overrun() && bits(1) == 0) ++zeros;
  if (zeros >= 32) return UINT32_MAX;
  return (1u << zeros) - 1 + bits(zeros);
}

void BitWriter::bits(std::uint32_t value, int count) {
  while (count-- > 0) {
    if (free_ == 0) {
      bytes_.push_back(0);
      free_ = 8;
    }
    bytes_.back() |= static_cast<std::uint8_t>((value >> count & 1u) << --free_);
  }
}

void BitWriter::unsignedNumber(std::uint32_t value) {
  int length = 0;
  while ((value + 1) >> length > 1) ++length;
  bits(0, length);
  bits(value + 1, length + 1);
}

void BitWriter::finish() {
  bits(1, 1);
  bits(0, free_);
}

void replaceBits(std::span<std::uint8_t> bytes, std::size_t position, std::uint32_t value, int count) {
  for (; count > 0; ++position) {
    const auto mask = static_cast<std::uint8_t>(0x80u >> position % 8);
    std::uint8_t& byte = bytes[position / 8];
    byte = static_cast<std::uint8_t>(value >> --count & 1u ? byte | mask : byte & ~mask);
  }
}

}  // namespace ios
