#include "simulator/live/Display.h"

#include <cstring>

namespace simulator {
namespace {

constexpr std::size_t kPixel = 4;

struct Rows {
  const std::uint8_t* from;
  std::size_t fromStride;
  std::uint8_t* to;
  std::size_t toStride;
};

void copyRows(const Rows& rows, std::size_t bytes, int count) {
  for (int row = 0; row < count; ++row) {
    std::memcpy(rows.to + static_cast<std::size_t>(row) * rows.toStride,
                rows.from + static_cast<std::size_t>(row) * rows.fromStride, bytes);
  }
}

std::size_t offset(const PixelRect& rect, std::size_t stride) {
  return static_cast<std::size_t>(rect.y) * stride + static_cast<std::size_t>(rect.x) * kPixel;
}

}  // namespace

void Display::show(std::span<const std::uint8_t> pixels, Shape shape, PixelRect changed) {
  const std::size_t stride = static_cast<std::size_t>(shape.width) * kPixel;
  const std::size_t size = stride * static_cast<std::size_t>(shape.height);
  if (pixels.size() < size) return;
  const PixelRect whole{0, 0, shape.width, shape.height};
  ios::MutexLock lock(mutex_);
  if (pixels_.size() != size || shape != shape_) changed = whole;
  shape_ = shape;
  pixels_.resize(size);
  changed = changed.intersectedWith(whole);
  if (changed.isEmpty()) return;
  const std::size_t start = offset(changed, stride);
  copyRows({pixels.data() + start, stride, pixels_.data() + start, stride},
           static_cast<std::size_t>(changed.width) * kPixel, changed.height);
}

Display::Shape Display::shape() const {
  ios::MutexLock lock(mutex_);
  return shape_;
}

Display::Shape Display::copy(PixelRect& rect, std::vector<std::uint8_t>& pixels) const {
  ios::MutexLock lock(mutex_);
  rect = rect.intersectedWith({0, 0, shape_.width, shape_.height});
  const std::size_t stride = static_cast<std::size_t>(shape_.width) * kPixel;
  const std::size_t rowBytes = static_cast<std::size_t>(rect.width) * kPixel;
  pixels.resize(rowBytes * static_cast<std::size_t>(rect.height));
  if (!rect.isEmpty())
    copyRows({pixels_.data() + offset(rect, stride), stride, pixels.data(), rowBytes}, rowBytes, rect.height);
  return shape_;
}

Display::Shape Display::copyInto(std::vector<std::uint8_t>& picture, PixelRect rect) const {
  ios::MutexLock lock(mutex_);
  picture.resize(pixels_.size());
  rect = rect.intersectedWith({0, 0, shape_.width, shape_.height});
  const std::size_t stride = static_cast<std::size_t>(shape_.width) * kPixel;
  const std::size_t start = offset(rect, stride);
  copyRows({pixels_.data() + start, stride, picture.data() + start, stride},
           static_cast<std::size_t>(rect.width) * kPixel, rect.height);
  return shape_;
}

}  // namespace simulator
