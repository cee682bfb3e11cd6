#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "CoreGraphics/CGContext.h"

/// A pixel as it lies in memory, premultiplied, read as 0xAARRGGBB.
struct Pixel {
  std::uint32_t argb;
  bool operator==(const Pixel&) const = default;
};
std::ostream& operator<<(std::ostream& stream, Pixel pixel);

inline constexpr Pixel kClear{0}, kBlack{0xFF000000}, kWhite{0xFFFFFFFF}, kRed{0xFFFF0000},
    kGreen{0xFF00FF00}, kBlue{0xFF0000FF};
ios::CGColor colorOf(Pixel opaque);

/// A bitmap and a context on it. Flipped: points with y downwards, `scale` pixels each; else as it comes.
class Canvas {
 public:
  Canvas(std::size_t width, std::size_t height, bool flipped = true, double scale = 1,
         std::size_t padding = 0);
  Pixel at(std::size_t x, std::size_t y) const;
  void fill(const ios::CGRect& rect, Pixel color) const;
  /// Rows from the top that have a pixel other than `background`, as pairs of first and last.
  std::vector<std::pair<std::size_t, std::size_t>> bands(Pixel background) const;
  /// First and last column that have one; {1, 0} if none has.
  std::pair<std::size_t, std::size_t> columns(Pixel background) const;
  /// The pixels now, as an image with memory of its own.
  ios::CGImageRef image(bool opaque) const;
  const std::vector<std::uint32_t>& pixels() const { return pixels_; }

  const std::size_t width, height;
  ios::CGContextRef context;

 private:
  std::size_t stride_;
  std::vector<std::uint32_t> pixels_;
};
