#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ios {

/// Puts pictures that equal the one before them into an encoder's H.264, without the encoder: each is a
/// slice in which every block is skipped, a few bytes long. The encoder's own pictures are renumbered to
/// make room.
///
/// Streams are byte streams with start codes. It understands what the platform's encoder makes: progressive
/// pictures in display order, every one a reference, one slice each.
class RepeatedPictures {
 public:
  /// `headers` are the encoder's parameter sets. Empty for a stream of another kind.
  static std::optional<RepeatedPictures> make(std::span<const std::uint8_t> headers);

  /// The encoder's parameter sets and the one that repeated pictures refer to.
  const std::vector<std::uint8_t>& headers() const { return headers_; }
  /// The encoder's next picture with the number it has here. Empty if it is not one that this understands.
  std::optional<std::vector<std::uint8_t>> renumbered(std::span<const std::uint8_t> picture);
  /// A picture equal to the last one.
  std::vector<std::uint8_t> repeated();

 private:
  RepeatedPictures() = default;
  std::optional<std::vector<std::uint8_t>> renumberedUnit(std::span<const std::uint8_t> unit);

  std::vector<std::uint8_t> headers_;
  std::uint32_t blocks_ = 0;
  int numberBits_ = 0;
  std::uint32_t lastNumber_ = 0;
  std::uint32_t inserted_ = 0;  // since the last key picture, where the numbers start again
};

}  // namespace ios
