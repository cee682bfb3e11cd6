#include "simulator/screens/ScreenController.h"

#include "UIKit/UIButton.h"
#include "simulator/screens/Parts.h"

namespace simulator {

MethodList ScreenController::methods() {
  return {{"tapped:", &ScreenController::tapped}};
}

void ScreenController::viewWillLayoutSubviews() {
  const CGSize size = view()->bounds().size;
  if (size == builtFor_) return;
  builtFor_ = size;
  const auto old = view()->subviews();
  for (const auto& part : old) part->removeFromSuperview();
  const auto children = childViewControllers();
  for (const auto& child : children) child->removeFromParentViewController();
  wishes_.clear();
  build(size);
}

void ScreenController::addBackLink(unsigned color) {
  if (backTo_.empty()) return;
  auto back = std::make_shared<UIButton>(CGRectMake(8, kStatusBar, 160, 40));
  back->setTitle("‹ " + backTo_);
  back->setTitleAlignment(TextAlignment::left);
  back->setTitleColor(UIColor::colorWithHex(color));
  back->setFont(UIFont::systemFontOfSize(17));
  onTap(back, {ScreenWish::Kind::back, ""});
  add(back);
}

void ScreenController::onTap(const std::shared_ptr<UIControl>& control, ScreenWish wish) {
  control->addTarget(weak_from_this().lock(), "tapped:", UIControlEventTouchUpInside);
  wishes_.emplace_back(control, std::move(wish));
}

void ScreenController::tapped(const id& control) {
  for (const auto& [each, wish] : wishes_) {
    if (each == control) wish_(wish);
  }
}

}  // namespace simulator
