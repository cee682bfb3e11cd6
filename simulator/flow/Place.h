#pragma once

#include <string>

#include "CoreGraphics/CGGeometry.h"

namespace simulator {

/// A place on the screen or on an element, each coordinate in points or in percent of its size.
struct Place {
  struct Coordinate {
    double value = 0;
    bool percent = false;
  };
  Coordinate x, y;
  ios::CGPoint on(ios::CGSize area) const;
  std::string description() const;  // "50%,120"
};

}  // namespace simulator
