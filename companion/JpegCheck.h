#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace companion {

struct ImageSize {
  int width = 0, height = 0;  // pixels
  bool operator==(const ImageSize&) const = default;
};

/// Decodes a JPEG image to its end, to verify it. Empty, with `problem` set, when the bytes are not a JPEG
/// image, are damaged or truncated, or hold more than 32 megapixels (which is checked before memory is allocated
/// for them).
std::optional<ImageSize> checkJpeg(std::span<const std::uint8_t> bytes, std::string& problem);

}  // namespace companion
