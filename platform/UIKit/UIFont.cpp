#include "UIKit/UIFont.h"

namespace ios {

std::shared_ptr<UIFont> UIFont::fontWithNameSize(const std::string& name, CGFloat size) {
  FontDescription description;
  return fontNamed(name, size, description) ? std::make_shared<UIFont>(description) : nullptr;
}

std::shared_ptr<UIFont> UIFont::systemFontOfSize(CGFloat size, int weight) {
  return std::make_shared<UIFont>(FontDescription{kSystemFontFamily, weight, size});
}

}  // namespace ios
