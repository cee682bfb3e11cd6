#pragma once

#include <cstdint>
#include <vector>

#include "simulator/live/Display.h"

namespace simulator {

/// What is to be encoded for one viewer.
struct PictureOrder {
  PixelRect rect;      // of the display's own pixels
  bool exact = false;  // PNG instead of JPEG
  /// Room that the viewer has for the whole picture, in its pixels; nothing: unscaled.
  int roomWidth = 0, roomHeight = 0;
  /// The shape that the viewer has on its canvas, which decides whether the picture has to be whole.
  Display::Shape known;
  int knownWidth = 0, knownHeight = 0;
  std::uint32_t sequence = 0;
  std::uint32_t touch = 0;  // the viewer's last one that the display has applied
  std::uint64_t time = 0;   // the phone's, ns
};

struct PictureResult {
  /// 32 bytes of header and the image; empty: there was nothing to show, or it could not be encoded.
  std::vector<std::uint8_t> bytes;
  Display::Shape shape;
  int width = 0, height = 0;  // of the whole picture, scaled
};

/// Copies, scales and encodes a part of what is on the display now. Any thread.
PictureResult encodePicture(const Display& display, const PictureOrder& order);

}  // namespace simulator
