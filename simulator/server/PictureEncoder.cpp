#include "simulator/server/PictureEncoder.h"

#include <libyuv/scale_argb.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "CoreGraphics/CGImage.h"

namespace simulator {
namespace {

constexpr double kQuality = 0.9;
constexpr std::uint8_t kVersion = 1, kJPEG = 1, kPNG = 2, kWhole = 1, kExact = 2;
// JPEG's coder and the scaler's filter reach beyond a rectangle's edge; on this grid neither leaves a seam.
constexpr int kGrid = 8;
constexpr int kFilterReach = 2;  // pixels of the display

class Header {
 public:
  explicit Header(std::string& bytes) : bytes_(bytes) {}
  template <class Integer>
  void put(Integer value) {
    for (std::size_t i = 0; i < sizeof value; ++i)
      bytes_.push_back(static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i)));
  }

 private:
  std::string& bytes_;
};

/// The display's pixels that a part of the scaled picture is made from.
PixelRect sourceOf(const PixelRect& part, const Display::Shape& shape, int width, int height) {
  const double across = static_cast<double>(shape.width) / width,
               down = static_cast<double>(shape.height) / height;
  const int left = static_cast<int>(part.x * across) - kFilterReach,
            top = static_cast<int>(part.y * down) - kFilterReach;
  return {left, top, static_cast<int>(std::ceil(part.right() * across)) + kFilterReach - left,
          static_cast<int>(std::ceil(part.bottom() * down)) + kFilterReach - top};
}

/// The part of the scaled picture in which a change of the display is seen.
PixelRect scaledPart(const PixelRect& rect, const Display::Shape& shape, int width, int height) {
  const double across = static_cast<double>(width) / shape.width,
               down = static_cast<double>(height) / shape.height;
  const int left = static_cast<int>(std::floor((rect.x - kFilterReach) * across));
  const int top = static_cast<int>(std::floor((rect.y - kFilterReach) * down));
  return {left, top, static_cast<int>(std::ceil((rect.right() + kFilterReach) * across)) - left,
          static_cast<int>(std::ceil((rect.bottom() + kFilterReach) * down)) - top};
}

/// Puts a part of the display's picture, as it is when the whole is scaled to a size, into `pixels`. Gives the display's
/// shape; if that is another one, there is nothing in them.
Display::Shape copyScaled(const Display& display, const Display::Shape& shape, const PixelRect& part,
                          int width, int height, std::vector<std::uint8_t>& pixels) {
  pixels.clear();
  // Between two pictures only what is needed for the next one is brought up to date.
  thread_local std::vector<std::uint8_t> picture;
  const Display::Shape found = display.copyInto(picture, sourceOf(part, shape, width, height));
  if (found != shape) return found;
  // The filter writes to where the part lies in the whole.
  thread_local std::vector<std::uint8_t> whole;
  const auto stride = static_cast<std::size_t>(width) * 4, row = static_cast<std::size_t>(part.width) * 4;
  whole.resize(stride * static_cast<std::size_t>(height));
  libyuv::ARGBScaleClip(picture.data(), shape.width * 4, shape.width, shape.height, whole.data(), width * 4,
                        width, height, part.x, part.y, part.width, part.height, libyuv::kFilterBox);
  for (int y = part.y; y < part.bottom(); ++y) {
    const std::uint8_t* from =
        whole.data() + static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(part.x) * 4;
    pixels.insert(pixels.end(), from, from + row);
  }
  return found;
}

ios::Bytes encode(const std::vector<std::uint8_t>& pixels, const PixelRect& rect, bool exact) {
  // The image is gone before the pixels are.
  const std::shared_ptr<const std::uint8_t[]> unowned(std::shared_ptr<void>(), pixels.data());
  const auto width = static_cast<std::size_t>(rect.width), height = static_cast<std::size_t>(rect.height);
  const ios::CGImage image(unowned, width, height, width * 4, /*opaque=*/true);
  return exact ? image.png() : image.jpeg(kQuality).value_or(ios::Bytes{});
}

/// The rectangle with its edges moved out to the grid.
PixelRect onGrid(const PixelRect& rect) {
  const int left = std::max(0, rect.x) / kGrid * kGrid, top = std::max(0, rect.y) / kGrid * kGrid;
  const auto up = [](int value) { return (value + kGrid - 1) / kGrid * kGrid; };
  return {left, top, up(rect.right()) - left, up(rect.bottom()) - top};
}

}  // namespace

Picture encodePicture(const Display& display, const PictureOrder& order) {
  const Display::Shape expected = display.shape();
  double scale = 1;
  if (order.roomWidth > 0 && order.roomHeight > 0 && expected.width > 0 && expected.height > 0) {
    scale = std::min({1.0, static_cast<double>(order.roomWidth) / expected.width,
                      static_cast<double>(order.roomHeight) / expected.height});
  }
  const int width = std::max(1, static_cast<int>(std::lround(expected.width * scale)));
  const int height = std::max(1, static_cast<int>(std::lround(expected.height * scale)));
  const bool fits = order.known == expected && order.knownWidth == width && order.knownHeight == height;
  const PixelRect all{0, 0, width, height};
  const PixelRect changed = scale < 1 ? scaledPart(order.rect, expected, width, height) : order.rect;
  PixelRect rect = fits ? onGrid(changed).intersectedWith(all) : all;

  // Kept: fresh memory costs more than what is copied into it.
  thread_local std::vector<std::uint8_t> pixels;
  const Display::Shape shape = scale < 1 && !rect.isEmpty()
                                   ? copyScaled(display, expected, rect, width, height, pixels)
                                   : display.copy(rect, pixels);
  // The phone was turned since; what tells of that brings the next order.
  if (rect.isEmpty() || shape != expected) return {.shape = shape};
  return {encode(pixels, rect, order.exact), order.exact, shape, rect, width, height};
}

std::string pictureMessage(const Picture& picture, const PictureStamp& stamp) {
  const auto& [image, exact, shape, rect, width, height] = picture;
  const bool whole = rect == PixelRect{0, 0, width, height};
  std::string bytes;
  bytes.reserve(32 + image.size());
  Header header(bytes);
  header.put(kVersion);
  header.put(exact ? kPNG : kJPEG);
  header.put(static_cast<std::uint8_t>((whole ? kWhole : 0) | (exact ? kExact : 0)));
  header.put(static_cast<std::uint8_t>(shape.orientation));
  header.put(stamp.sequence);
  header.put(static_cast<std::uint64_t>(stamp.time.count()));
  header.put(stamp.touch);
  for (const int value : {rect.x, rect.y, rect.width, rect.height, width, height})
    header.put(static_cast<std::uint16_t>(value));
  bytes.append(image.begin(), image.end());
  return bytes;
}

}  // namespace simulator
