#include "UIKit/UIGraphics.h"

#include <cmath>
#include <vector>

#include "UIKit/UIScreen.h"

namespace ios {
namespace {

struct Entry {
  CGContextRef context;
  bool isImage = false;
  CGFloat scale = 1;
};

std::vector<Entry>& stack() {
  thread_local std::vector<Entry> entries;
  return entries;
}

// The number of whole pixels that cover this many points; 0 if there are none, or for NaN.
std::size_t pixels(CGFloat points, CGFloat scale) {
  constexpr CGFloat kRounding = 1e-6;
  const CGFloat count = std::ceil(points * scale - kRounding);
  return count > 0 && count <= static_cast<CGFloat>(CGImage::kMaximumPixels) ? static_cast<std::size_t>(count)
                                                                             : 0;
}

}  // namespace

void UIGraphicsBeginImageContextWithOptions(CGSize size, bool opaque, CGFloat scale) {
  if (!(scale > 0)) scale = UIScreen::mainScreen()->scale();
  Entry entry{nullptr, true, scale};
  const std::size_t width = pixels(size.width, scale), height = pixels(size.height, scale);
  const std::uint32_t alpha = opaque ? kCGImageAlphaNoneSkipFirst : kCGImageAlphaPremultipliedFirst;
  entry.context = CGBitmapContextCreate(nullptr, width, height, 8, 0, CGColorSpaceCreateDeviceRGB(),
                                        alpha | kCGBitmapByteOrder32Little);
  if (entry.context) {
    CGContextTranslateCTM(entry.context, 0, static_cast<CGFloat>(height));
    CGContextScaleCTM(entry.context, scale, -scale);
  }
  stack().push_back(std::move(entry));
}

std::shared_ptr<UIImage> UIGraphicsGetImageFromCurrentImageContext() {
  if (stack().empty() || !stack().back().isImage) return nullptr;
  const Entry& top = stack().back();
  CGImageRef image = CGBitmapContextCreateImage(top.context);
  return image ? std::make_shared<UIImage>(std::move(image), top.scale) : nullptr;
}

void UIGraphicsEndImageContext() {
  if (!stack().empty() && stack().back().isImage) stack().pop_back();
}

CGContextRef UIGraphicsGetCurrentContext() {
  return stack().empty() ? nullptr : stack().back().context;
}

void UIGraphicsPushContext(const CGContextRef& context) {
  stack().push_back({context});
}

void UIGraphicsPopContext() {
  if (!stack().empty() && !stack().back().isImage) stack().pop_back();
}

}  // namespace ios
