#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "UIKit/Private/PresentationController.h"
#include "UIKit/UIPopoverPresentationController.h"
#include "UIKit/UIViewController.h"
#include "UIKit/UIWindow.h"

namespace ios {

std::shared_ptr<UIViewController> UIViewController::outermost() {
  auto controller = sharedAs<UIViewController>();
  while (auto parent = controller->parentViewController()) controller = std::move(parent);
  return controller;
}

std::shared_ptr<UIViewController> UIViewController::presentedViewController() const {
  if (presented_) return presented_;
  const auto parent = parent_.lock();
  return parent ? parent->presentedViewController() : nullptr;
}

std::shared_ptr<UIViewController> UIViewController::presentingViewController() const {
  if (auto presenter = presenting_.lock()) return presenter;
  const auto parent = parent_.lock();
  return parent ? parent->presentingViewController() : nullptr;
}

std::string UIViewController::refusal(const std::shared_ptr<UIViewController>& controller) {
  if (!controller) return "without anything to present";
  const bool shown = controller->isViewLoaded() && controller->view()->window();
  if (controller->presentation_ || controller->parent_.lock() || shown) return "while it is shown already";
  if (const auto presented = presentedViewController()) {
    return "which is already presenting <" + presented->className() + ">";
  }
  for (auto below = outermost(); below; below = below->presenting_.lock()) {
    if (below->beingDismissed_) return "which is being dismissed";
  }
  if (!isViewLoaded() || !view_->window()) return "whose view is not in the window hierarchy";
  return PresentationController::obstacle(*controller);
}

void UIViewController::presentViewController(const std::shared_ptr<UIViewController>& controller,
                                             bool animated, std::function<void()> completion) {
  assertMainThread("presentViewController:animated:completion:");
  if (const auto reason = refusal(controller); !reason.empty()) {
    deviceLog("Attempt to present <" + (controller ? controller->className() : "nil") + "> on <" +
              className() + "> " + reason);
    return;
  }
  PresentationController::present(outermost(), controller, animated, std::move(completion));
}

void UIViewController::dismissViewControllerAnimated(bool animated, std::function<void()> completion) {
  assertMainThread("dismissViewControllerAnimated:completion:");
  auto dismissed = presentedViewController();
  if (!dismissed && presentingViewController()) dismissed = outermost();
  if (dismissed && dismissed->presentation_) {
    std::shared_ptr(dismissed->presentation_)->dismiss(animated, std::move(completion));
  } else if (completion) {
    Clock::shared().postToMain(std::move(completion));
  }
}

PresentationStyle UIViewController::presentationStyle() const {
  return PresentationStyle::fullScreen;
}

std::shared_ptr<UIPopoverPresentationController> UIViewController::popoverPresentationController() {
  if (presentationStyle() != PresentationStyle::popover) return nullptr;
  if (!popover_) popover_ = std::make_shared<UIPopoverPresentationController>();
  return popover_;
}

}  // namespace ios
