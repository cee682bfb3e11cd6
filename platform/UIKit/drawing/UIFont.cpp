#include "UIKit/UIFont.h"

#include <array>

#include "Device/Device.h"

namespace ios {
namespace {

// The platform's published sizes in points, from XS to AccessibilityXXXL.
using Sizes = std::array<CGFloat, kTextSizes>;
constexpr Sizes kTitle3{17, 18, 19, 20, 22, 24, 26, 31, 37, 43, 49, 55};
constexpr Sizes kBody{14, 15, 16, 17, 19, 21, 23, 28, 33, 40, 47, 53};
constexpr Sizes kFootnote{12, 12, 12, 13, 15, 17, 19, 23, 27, 33, 38, 44};

const Sizes& sizes(UIFontTextStyle style) {
  switch (style) {
    case UIFontTextStyle::title3:
      return kTitle3;
    case UIFontTextStyle::footnote:
      return kFootnote;
    case UIFontTextStyle::headline:
    case UIFontTextStyle::body:
      break;
  }
  return kBody;
}

}  // namespace

std::shared_ptr<UIFont> UIFont::fontWithNameSize(const std::string& name, CGFloat size) {
  FontDescription description;
  return fontNamed(name, size, description) ? std::make_shared<UIFont>(description) : nullptr;
}

std::shared_ptr<UIFont> UIFont::systemFontOfSize(CGFloat size, int weight) {
  return std::make_shared<UIFont>(FontDescription{kSystemFontFamily, weight, size});
}

std::shared_ptr<UIFont> UIFont::preferredFontForTextStyle(UIFontTextStyle style) {
  const CGFloat size = sizes(style).at(static_cast<std::size_t>(Device::current().textSize()));
  return style == UIFontTextStyle::headline ? boldSystemFontOfSize(size) : systemFontOfSize(size);
}

}  // namespace ios
