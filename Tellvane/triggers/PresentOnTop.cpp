#include "triggers/PresentOnTop.h"

#include "Dispatch/Queue.h"
#include "Dispatch/Time.h"
#include "UIKit/UIPopoverPresentationController.h"
#include "ground/Memory.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

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

void presentOnTop(const std::shared_ptr<UIViewController>& controller,
                  std::function<void(const std::shared_ptr<UIViewController>&)> tried) {
  const auto top = topViewController();
  if (top && isBeingClosed(*top)) {
    // A fraction of the time that closing takes.
    const auto soon = dispatch_time(DISPATCH_TIME_NOW, static_cast<std::int64_t>(NSEC_PER_SEC / 20));
    dispatch_after(soon, dispatch_get_main_queue(), [controller, tried = std::move(tried)] {
      const bool told = unlessMemoryRunsOut([&] { presentOnTop(controller, tried); });
      if (!told && tried) tried(nullptr);
    });
    return;
  }
  if (top) {
    anchorInTheMiddle(*controller, *top);
    top->presentViewController(controller, true);
  }
  if (tried) tried(top);
}

}  // namespace tellvane
