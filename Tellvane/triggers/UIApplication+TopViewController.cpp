#include "triggers/UIApplication+TopViewController.h"

#include "Dispatch/Queue.h"
#include "Dispatch/Time.h"
#include "UIKit/UINavigationController.h"
#include "UIKit/UIPopoverPresentationController.h"
#include "UIKit/UISplitViewController.h"
#include "UIKit/UITabBarController.h"

namespace tellvane {
namespace {

std::shared_ptr<UIViewController> topViewControllerOf(UIApplication&,
                                                      const std::shared_ptr<UIViewController>& base) {
  return topViewController(base);
}

const Category kLookup{UIApplication::classObject(), {{"topViewController:", &topViewControllerOf}}};

/// Whether `controller`, or one below it that takes it along, is on its way out.
bool isBeingClosed(const UIViewController& controller) {
  if (controller.isBeingDismissed()) return true;
  const auto parent = controller.parentViewController();
  const auto below = parent ? parent : controller.presentingViewController();
  return below && isBeingClosed(*below);
}

/// A trigger has no place of its own, so a popover points at nothing.
void anchorInTheMiddle(UIViewController& controller, UIViewController& presenter) {
  const auto popover = controller.popoverPresentationController();
  if (!popover) return;
  const CGRect bounds = presenter.view()->bounds();
  popover->sourceView = presenter.view();
  popover->sourceRect = CGRectMake(bounds.midX(), bounds.midY(), 0, 0);
  popover->permittedArrowDirections = UIPopoverArrowDirectionNone;
}

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

void presentOnTop(const std::shared_ptr<UIViewController>& controller, std::function<void()> tried) {
  const auto top = topViewController();
  if (top && isBeingClosed(*top)) {
    // A fraction of the time that closing takes.
    const auto soon = dispatch_time(DISPATCH_TIME_NOW, static_cast<std::int64_t>(NSEC_PER_SEC / 20));
    dispatch_after(soon, dispatch_get_main_queue(),
                   [controller, tried = std::move(tried)] { presentOnTop(controller, tried); });
    return;
  }
  if (top) {
    anchorInTheMiddle(*controller, *top);
    top->presentViewController(controller, true);
  }
  if (tried) tried();
}

}  // namespace tellvane
