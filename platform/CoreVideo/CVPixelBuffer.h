#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "CoreVideo/CVReturn.h"

namespace ios {

using OSType = std::uint32_t;
/// The characters BGRA.
inline constexpr OSType kCVPixelFormatType_32BGRA = 0x42475241;

// What a pixel buffer shall be like; values are integers, doubles or Booleans of a property list.
inline const std::string kCVPixelBufferPixelFormatTypeKey = "PixelFormatType";
inline const std::string kCVPixelBufferCGBitmapContextCompatibilityKey = "CGBitmapContextCompatibility";
inline const std::string kCVPixelBufferWidthKey = "Width";
inline const std::string kCVPixelBufferHeightKey = "Height";
inline const std::string kCVPixelBufferBytesPerRowAlignmentKey = "BytesPerRowAlignment";

/// Pixels in memory: 32-bit BGRA, rows from top to bottom. The object may be handed between threads; one at a
/// time touches the pixels, between a lock and its unlock.
class CVPixelBuffer;
using CVPixelBufferRef = std::shared_ptr<CVPixelBuffer>;

using CVPixelBufferLockFlags = std::uint64_t;

/// The size that a width and a height, which may be fractional, give: each to the nearest whole
/// number of pixels. Empty unless both come out between 1 and 16384. Pixel buffers and movies of the
/// same numbers agree.
struct CVPixelSize {
  std::size_t width = 0, height = 0;
  static std::optional<CVPixelSize> rounded(double width, double height);
  bool operator==(const CVPixelSize&) const = default;
};

/// A buffer of black, fully transparent pixels. `attributes` may ask for a row alignment: a row's length is
/// then the smallest multiple of it (any positive number, itself rounded up to whole pixels) that holds the
/// row. `buffer` is empty after a failure.
CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType pixelFormat,
                             const NSDictionary& attributes, CVPixelBufferRef& buffer);

/// Makes the pixels reachable; locks count, and the last unlock ends it. `flags` are 0, or 1
/// for reading only.
CVReturn CVPixelBufferLockBaseAddress(const CVPixelBufferRef& buffer, CVPixelBufferLockFlags flags);
/// An unlock without a lock is refused.
CVReturn CVPixelBufferUnlockBaseAddress(const CVPixelBufferRef& buffer, CVPixelBufferLockFlags flags);
/// The first pixel of the top row; null while the buffer is not locked.
void* CVPixelBufferGetBaseAddress(const CVPixelBufferRef& buffer);
std::size_t CVPixelBufferGetWidth(const CVPixelBufferRef& buffer);
std::size_t CVPixelBufferGetHeight(const CVPixelBufferRef& buffer);
std::size_t CVPixelBufferGetBytesPerRow(const CVPixelBufferRef& buffer);

}  // namespace ios
