#pragma once

#include <algorithm>
#include <cstdlib>

namespace testing_support {

/// A colour with components from 0 to 255, for pictures that went through a lossy encoder.
struct Colour {
  int red = 0, green = 0, blue = 0;
  /// The largest difference of a component.
  int distance(const Colour& other) const {
    return std::max({std::abs(red - other.red), std::abs(green - other.green), std::abs(blue - other.blue)});
  }
};

}  // namespace testing_support
