#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/live/Display.h"

namespace simulator {

/// What is to be encoded. Viewers whose orders are equal get the same picture.
struct PictureOrder {
  PixelRect rect;      // of the display's own pixels
  bool exact = false;  // PNG instead of JPEG
  /// Room that the viewer has for the whole picture, in its pixels; nothing: unscaled.
  int roomWidth = 0, roomHeight = 0;
  /// The shape that the viewer has on its canvas, which decides whether the picture has to be whole.
  Display::Shape known = {};
  int knownWidth = 0, knownHeight = 0;
  bool operator==(const PictureOrder&) const = default;
};

struct Picture {
  /// JPEG, or PNG if it was to be exact; empty: there was nothing to show, or it could not be encoded.
  std::vector<std::uint8_t> image = {};
  bool exact = false;
  Display::Shape shape = {};
  PixelRect rect = {};        // of the scaled picture
  int width = 0, height = 0;  // of the whole picture, scaled
};

/// Copies, scales and encodes a part of what is on the display now. Any thread.
Picture encodePicture(const Display& display, const PictureOrder& order);

/// How one viewer gets it: `touch` is the viewer's last one that the display had applied when the picture was ordered.
struct PictureStamp {
  std::uint32_t sequence = 0;
  std::uint32_t touch = 0;
  std::chrono::nanoseconds time{};  // the phone's
};
/// 32 bytes of header, and the image.
std::string pictureMessage(const Picture& picture, const PictureStamp& stamp);

}  // namespace simulator
