#include "UIKit/UISplitViewController.h"

#include <algorithm>

#include "UIKit/Private/Chrome.h"

namespace ios {

namespace {
constexpr CGFloat kPrimaryWidth = 320;
constexpr CGFloat kWideDisplay = 700;
}  // namespace

void UISplitViewController::setViewControllers(std::vector<std::shared_ptr<UIViewController>> controllers) {
  std::erase(controllers, nullptr);
  if (controllers.size() > 2) controllers.resize(2);
  for (const auto& former : controllers_) {
    if (std::find(controllers.begin(), controllers.end(), former) != controllers.end()) continue;
    beginExchange(former, nullptr, false);
    if (former->isViewLoaded()) former->view()->removeFromSuperview();
    endExchange(former, nullptr);
    former->removeFromParentViewController();
  }
  controllers_ = std::move(controllers);
  // Removed first, so that the children stand in the order of the screens.
  for (const auto& controller : controllers_) addChildViewController(controller);
  if (isViewLoaded()) view()->setNeedsLayout();
}

void UISplitViewController::viewDidLoad() {
  Subclass::viewDidLoad();
  view()->setBackgroundColor(UIColor::whiteColor());
  divider_ = chrome::plate(chrome::kBarEdge);
  view()->addSubview(divider_);
  viewWillLayoutSubviews();
}

void UISplitViewController::viewWillLayoutSubviews() {
  Subclass::viewWillLayoutSubviews();
  const CGSize size = view()->bounds().size;
  const bool both = controllers_.size() == 2 && size.width >= kWideDisplay;
  const bool mirror = chrome::isMirrored();
  const CGFloat primary = both ? kPrimaryWidth : 0;
  const CGFloat gap = both ? chrome::hairline() : 0;
  divider_->setHidden(!both);
  divider_->setFrame(chrome::mirrored({{primary, 0}, {gap, size.height}}, size.width, mirror));
  for (const auto& controller : std::vector(controllers_)) {
    const bool last = controller == controllers_.back();
    const bool shown = last || both;
    const bool wasShown = controller->isViewLoaded() && controller->view()->superview() == view();
    if (shown) {
      const CGFloat x = last ? primary + gap : 0;
      const CGFloat width = last ? size.width - x : primary;
      if (!wasShown) beginExchange(nullptr, controller, false);
      controller->view()->setFrame(chrome::mirrored({{x, 0}, {width, size.height}}, size.width, mirror));
      if (!wasShown) view()->addSubview(controller->view());
      if (!wasShown) endExchange(nullptr, controller);
    } else if (wasShown) {
      beginExchange(controller, nullptr, false);
      controller->view()->removeFromSuperview();
      endExchange(controller, nullptr);
    }
  }
}

}  // namespace ios
