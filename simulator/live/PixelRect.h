#pragma once

#include <algorithm>

namespace simulator {

/// A part of a picture, in whole pixels from its top left.
struct PixelRect {
  int x = 0, y = 0, width = 0, height = 0;

  bool isEmpty() const { return width <= 0 || height <= 0; }
  int right() const { return x + width; }
  int bottom() const { return y + height; }
  /// The smallest rectangle that has both.
  PixelRect unitedWith(const PixelRect& other) const {
    if (isEmpty()) return other;
    if (other.isEmpty()) return *this;
    const int left = std::min(x, other.x), top = std::min(y, other.y);
    return {left, top, std::max(right(), other.right()) - left, std::max(bottom(), other.bottom()) - top};
  }
  /// Empty if they have nothing in common.
  PixelRect intersectedWith(const PixelRect& other) const {
    const int left = std::max(x, other.x), top = std::max(y, other.y);
    const PixelRect common{left, top, std::min(right(), other.right()) - left,
                           std::min(bottom(), other.bottom()) - top};
    return common.isEmpty() ? PixelRect{} : common;
  }
  bool operator==(const PixelRect&) const = default;
};

}  // namespace simulator
