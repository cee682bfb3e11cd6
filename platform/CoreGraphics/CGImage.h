#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include "CoreFoundation/PropertyList.h"

namespace ios {

class CGImage;
using CGImageRef = std::shared_ptr<const CGImage>;

/// A bitmap image that never changes: BGRA, 8 bits per component, premultiplied alpha (cairo's layout on a
/// little-endian machine). Safe to read from any thread.
class CGImage {
 public:
  /// The largest number of pixels of a decoded image or an image context.
  static constexpr std::size_t kMaximumPixels = 64'000'000;

  /// Takes the pixels over without copying them. `pixels` holds `height` rows of `bytesPerRow` bytes.
  /// `opaque` promises that every alpha is 255, which lets the image be drawn by copying.
  CGImage(std::shared_ptr<const std::uint8_t[]> pixels, std::size_t width, std::size_t height,
          std::size_t bytesPerRow, bool opaque = false)
      : pixels_(std::move(pixels)),
        width_(width),
        height_(height),
        bytesPerRow_(bytesPerRow),
        opaque_(opaque) {}

  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }
  std::size_t bytesPerRow() const { return bytesPerRow_; }
  const std::uint8_t* pixels() const { return pixels_.get(); }
  /// Whether every pixel is known to be opaque.
  bool isOpaque() const { return opaque_; }

  /// PNG or JPEG, decoded; empty if the bytes are neither, or are damaged, or hold more than 64 megapixels.
  static CGImageRef decode(std::span<const std::uint8_t> bytes);
  static CGImageRef decode(const std::filesystem::path& file);
  /// A PNG file's bytes; the same pixels give the same bytes.
  Bytes png() const;
  /// A JPEG file's bytes, encoded straight from the pixels (alpha is dropped, so clear pixels are
  /// black), at a quality of 0 to 1 that is clamped, 4:2:0 below quality 0.9 and 4:4:4 from there. Empty
  /// when encoding fails.
  std::optional<Bytes> jpeg(double quality) const;

 private:
  std::shared_ptr<const std::uint8_t[]> pixels_;
  std::size_t width_, height_, bytesPerRow_;
  bool opaque_;
};

}  // namespace ios
