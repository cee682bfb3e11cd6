#pragma once

namespace ios {

/// A colour in device RGB, components 0 to 1, not premultiplied.
struct CGColor {
  double red = 0, green = 0, blue = 0, alpha = 1;
  bool operator==(const CGColor&) const = default;
};

/// The device's RGB colour space, the only one supported.
struct CGColorSpace {};
inline CGColorSpace CGColorSpaceCreateDeviceRGB() {
  return {};
}

}  // namespace ios
