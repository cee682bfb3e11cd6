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

class Header {
 public:
  explicit Header(std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}
  template <class Integer>
  void put(Integer value) {
    for (std::size_t i = 0; i < sizeof value; ++i)
      bytes_.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i)));
  }

 private:
  std::vector<std::uint8_t>& bytes_;
};

struct Bitmap {
  std::vector<std::uint8_t> pixels;
  int width = 0, height = 0;
};

Bitmap scaled(Bitmap from, int width, int height) {
  if (from.width == width && from.height == height) return from;
  Bitmap to{std::vector<std::uint8_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4),
            width, height};
  libyuv::ARGBScale(from.pixels.data(), from.width * 4, from.width, from.height, to.pixels.data(), width * 4,
                    width, height, libyuv::kFilterBox);
  return to;
}

ios::Bytes encode(Bitmap bitmap, bool exact) {
  const auto memory = std::make_shared<std::vector<std::uint8_t>>(std::move(bitmap.pixels));
  const std::shared_ptr<const std::uint8_t[]> pixels(memory, memory->data());
  const auto width = static_cast<std::size_t>(bitmap.width), height = static_cast<std::size_t>(bitmap.height);
  const ios::CGImage image(pixels, width, height, width * 4, /*opaque=*/true);
  return exact ? image.png() : image.jpeg(kQuality).value_or(ios::Bytes{});
}

/// The rectangle with its edges moved out to the grid.
PixelRect onGrid(const PixelRect& rect) {
  const int left = rect.x / kGrid * kGrid, top = rect.y / kGrid * kGrid;
  const auto up = [](int value) { return (value + kGrid - 1) / kGrid * kGrid; };
  return {left, top, up(rect.right()) - left, up(rect.bottom()) - top};
}

}  // namespace

PictureResult encodePicture(const Display& display, const PictureOrder& order) {
  const Display::Shape expected = display.shape();
  double scale = 1;
  if (order.roomWidth > 0 && order.roomHeight > 0 && expected.width > 0 && expected.height > 0) {
    scale = std::min({1.0, static_cast<double>(order.roomWidth) / expected.width,
                      static_cast<double>(order.roomHeight) / expected.height});
  }
  const int width = std::max(1, static_cast<int>(std::lround(expected.width * scale)));
  const int height = std::max(1, static_cast<int>(std::lround(expected.height * scale)));
  const bool fits = order.known == expected && order.knownWidth == width && order.knownHeight == height;
  const PixelRect all{0, 0, expected.width, expected.height};
  // A part of a scaled picture would not fall on whole pixels.
  PixelRect rect = fits && scale == 1 ? onGrid(order.rect) : all;

  Bitmap bitmap;
  const Display::Shape shape = display.copy(rect, bitmap.pixels);
  // The phone was turned since; what tells of that brings the next order.
  if (rect.isEmpty() || shape != expected) return {{}, shape, 0, 0};
  bitmap.width = rect.width;
  bitmap.height = rect.height;
  if (scale < 1) {
    bitmap = scaled(std::move(bitmap), width, height);
    rect = {0, 0, width, height};
  }
  const bool whole = rect == PixelRect{0, 0, width, height};
  const ios::Bytes image = encode(std::move(bitmap), order.exact);
  if (image.empty()) return {{}, shape, 0, 0};

  PictureResult result{{}, shape, width, height};
  result.bytes.reserve(32 + image.size());
  Header header(result.bytes);
  header.put(kVersion);
  header.put(order.exact ? kPNG : kJPEG);
  header.put(static_cast<std::uint8_t>((whole ? kWhole : 0) | (order.exact ? kExact : 0)));
  header.put(static_cast<std::uint8_t>(shape.orientation));
  header.put(order.sequence);
  header.put(order.time);
  header.put(order.touch);
  for (const int value : {rect.x, rect.y, rect.width, rect.height, width, height})
    header.put(static_cast<std::uint16_t>(value));
  result.bytes.insert(result.bytes.end(), image.begin(), image.end());
  return result;
}

}  // namespace simulator
