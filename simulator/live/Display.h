#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "Base/Mutex.h"
#include "simulator/live/PixelRect.h"

namespace simulator {

/// What is on the phone's screen, as everybody who watches may read it at any time: BGRA, 8 bits a component.
/// The main thread replaces it, any thread reads.
class Display {
 public:
  struct Shape {
    int width = 0, height = 0;
    int orientation = 1;  // as the device numbers them
    bool operator==(const Shape&) const = default;
  };

  /// `pixels` are all rows of a picture of this shape, without gaps; only `changed` differs from the last one.
  /// A new shape changes all.
  void show(std::span<const std::uint8_t> pixels, Shape shape, PixelRect changed);
  Shape shape() const;

  /// Copies the part of `rect` that is on the screen, row after row without gaps, and tells the shape it has
  /// it from.
  Shape copy(PixelRect& rect, std::vector<std::uint8_t>& pixels) const;
  /// Copies that part of the screen to its place in `picture`, which becomes a whole picture of the shape that is
  /// told; what else is in it stays as it was.
  Shape copyInto(std::vector<std::uint8_t>& picture, PixelRect rect) const;

 private:
  mutable ios::Mutex mutex_;
  Shape shape_ IOS_GUARDED_BY(mutex_);
  std::vector<std::uint8_t> pixels_ IOS_GUARDED_BY(mutex_);
};

}  // namespace simulator
