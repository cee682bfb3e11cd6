#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>

#include "UIKit/UIGraphics.h"

/// What was drawn, as an image with one pixel per point, whose pixels read as 0xAARRGGBB.
struct Picture {
  std::shared_ptr<ios::UIImage> image;

  static Picture of(ios::CGSize size, const std::function<void()>& draw) {
    ios::UIGraphicsBeginImageContextWithOptions(size, false, 1);
    draw();
    Picture picture{ios::UIGraphicsGetImageFromCurrentImageContext()};
    ios::UIGraphicsEndImageContext();
    return picture;
  }

  std::size_t width() const { return image->CGImageValue()->width(); }
  std::size_t height() const { return image->CGImageValue()->height(); }
  std::uint32_t at(std::size_t x, std::size_t y) const {
    const ios::CGImage& pixels = *image->CGImageValue();
    std::uint32_t value;
    std::memcpy(&value, pixels.pixels() + y * pixels.bytesPerRow() + x * 4, 4);
    return value;
  }

  /// The smallest rectangle that holds every pixel for which `counts`; zero if there is none.
  ios::CGRect extent(const std::function<bool(std::uint32_t)>& counts) const {
    std::size_t left = width(), right = 0, top = height(), bottom = 0;
    for (std::size_t i = 0; i < width() * height(); ++i) {
      const std::size_t x = i % width(), y = i / width();
      if (!counts(at(x, y))) continue;
      left = std::min(left, x), right = std::max(right, x + 1);
      top = std::min(top, y), bottom = std::max(bottom, y + 1);
    }
    if (left >= right) return {};
    return ios::CGRectMake(static_cast<double>(left), static_cast<double>(top),
                           static_cast<double>(right - left), static_cast<double>(bottom - top));
  }
  ios::CGRect ink() const {
    return extent([](std::uint32_t pixel) { return pixel >> 24 > 40; });
  }
};
