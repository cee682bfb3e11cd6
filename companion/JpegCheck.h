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

/// Decodes a JPEG image to its end, to know that it is one. Empty, with `problem` set, when the bytes
/// are none, are damaged or cut off, or hold more than 32 megapixels (which is found out before
/// memory is taken for them).
std::optional<ImageSize> checkJpeg(std::span<const std::uint8_t> bytes, std::string& problem);

}  // namespace companion
