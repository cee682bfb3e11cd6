#include "triggers/UIApplication+TopViewController.h"

#include "UIKit/UINavigationController.h"
#include "UIKit/UISplitViewController.h"
#include "UIKit/UITabBarController.h"

namespace tellvane {
namespace {

std::shared_ptr<UIViewController> topViewControllerOf(UIApplication&,
                                                      const std::shared_ptr<UIViewController>& base) {
  return topViewController(base);
}

const Category kLookup{UIApplication::classObject(), {{"topViewController:", &topViewControllerOf}}};

}  // namespace

std::shared_ptr<UIViewController> topViewController() {
  const auto window = UIApplication::sharedApplication()->keyWindow();
  return topViewController(window ? window->rootViewController() : nullptr);
}

std::shared_ptr<UIViewController> topViewController(const std::shared_ptr<UIViewController>& base) {
  if (!base) return nullptr;
  if (auto navigation = std::dynamic_pointer_cast<UINavigationController>(base)) {
    return topViewController(navigation->visibleViewController());
  }
  if (auto tabs = std::dynamic_pointer_cast<UITabBarController>(base)) {
    const auto more = tabs->moreNavigationController()->topViewController();
    if (more && more->view()->window()) return topViewController(more);
    if (auto selected = tabs->selectedViewController()) return topViewController(selected);
  }
  if (auto presented = base->presentedViewController()) return topViewController(presented);
  if (auto split = std::dynamic_pointer_cast<UISplitViewController>(base)) {
    return split->viewControllers().empty() ? base : topViewController(split->viewControllers().back());
  }
  const auto& children = base->childViewControllers();
  return children.empty() ? base : topViewController(children.back());
}

}  // namespace tellvane
