#include "Canvas.h"

#include <cstring>
#include <iomanip>

using namespace ios;

std::ostream& operator<<(std::ostream& stream, Pixel pixel) {
  return stream << "0x" << std::hex << std::setw(8) << std::setfill('0') << pixel.argb;
}

CGColor colorOf(Pixel p) {
  return {(p.argb >> 16 & 255) / 255.0, (p.argb >> 8 & 255) / 255.0, (p.argb & 255) / 255.0, 1};
}

Canvas::Canvas(std::size_t width, std::size_t height, bool flipped, double scale, std::size_t padding)
    : width(width), height(height), stride_(width + padding), pixels_(stride_ * height) {
  context =
      CGBitmapContextCreate(pixels_.data(), width, height, 8, stride_ * 4, CGColorSpaceCreateDeviceRGB(),
                            kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Little);
  if (!flipped) return;
  CGContextTranslateCTM(context, 0, static_cast<CGFloat>(height));
  CGContextScaleCTM(context, scale, -scale);
}

Pixel Canvas::at(std::size_t x, std::size_t y) const {
  return {pixels_.at(y * stride_ + x)};
}

void Canvas::fill(const CGRect& rect, Pixel color) const {
  CGContextSetFillColorWithColor(context, colorOf(color));
  CGContextFillRect(context, rect);
}

std::vector<std::pair<std::size_t, std::size_t>> Canvas::bands(Pixel background) const {
  std::vector<std::pair<std::size_t, std::size_t>> found;
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      if (at(x, y) == background) continue;
      if (!found.empty() && found.back().second + 1 == y) {
        found.back().second = y;
      } else {
        found.emplace_back(y, y);
      }
      break;
    }
  }
  return found;
}

std::pair<std::size_t, std::size_t> Canvas::columns(Pixel background) const {
  std::pair<std::size_t, std::size_t> range{width, 0};
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      if (at(x, y) != background) range = {std::min(range.first, x), std::max(range.second, x)};
    }
  }
  return range.first == width ? std::pair<std::size_t, std::size_t>{1, 0} : range;
}

CGImageRef Canvas::image(bool opaque) const {
  std::shared_ptr<std::uint8_t[]> copy(new std::uint8_t[pixels_.size() * 4]);
  std::memcpy(copy.get(), pixels_.data(), pixels_.size() * 4);
  return std::make_shared<const CGImage>(std::move(copy), width, height, stride_ * 4, opaque);
}
