#include "UIKit/UIWindow.h"

#include "DeviceClock/Clock.h"
#include "UIKit/BackingStore+Private.h"
#include "UIKit/GestureArbiter+Private.h"
#include "UIKit/PresentationController+Private.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIViewController.h"

namespace ios {

UIWindow::UIWindow(CGRect frame)
    : Subclass(frame),
      backing_(std::make_unique<BackingStore>()),
      arbiter_(std::make_unique<GestureArbiter>()) {
  UIView::setHidden(true);
}

UIWindow::~UIWindow() {
  if (!isHidden()) UIApplication::sharedApplication()->windowGone(*this);
}

MethodList UIWindow::methods() {
  return {{"makeKeyAndVisible", &UIWindow::makeKeyAndVisible}};
}

void UIWindow::setRootViewController(std::shared_ptr<UIViewController> controller) {
  if (controller == root_) return;
  const auto old = std::exchange(root_, controller);
  const bool shows = !isHidden();
  if (old) {
    PresentationController::abandon(*old);
    if (shows) old->beginAppearanceTransition(false, false);
    if (old->isViewLoaded()) old->view()->removeFromSuperview();
    if (shows) old->endAppearanceTransition();
  }
  if (!controller) return;
  const auto view = controller->view();
  view->setAutoresizingMask(UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight);
  view->setFrame(bounds());
  if (shows) controller->beginAppearanceTransition(true, false);
  insertSubviewAtIndex(view, 0);
  if (shows) controller->endAppearanceTransition();
}

void UIWindow::makeKeyAndVisible() {
  const auto self = sharedAs<UIWindow>();
  const auto application = UIApplication::sharedApplication();
  application->windowShown(self);
  application->keyWindow_ = self;
  setHidden(false);
}

void UIWindow::setHidden(bool hidden) {
  if (hidden == isHidden()) return;
  const auto root = root_;
  if (root) root->beginAppearanceTransition(!hidden, false);
  UIView::setHidden(hidden);
  if (hidden) {
    UIApplication::sharedApplication()->windowGone(*this);
  } else {
    UIApplication::sharedApplication()->windowShown(sharedAs<UIWindow>());
    setNeedsLayout();
  }
  if (root) root->endAppearanceTransition();
}

bool UIWindow::isKeyWindow() const {
  return UIApplication::sharedApplication()->keyWindow().get() == this;
}

void UIWindow::setWindowLevel(CGFloat level) {
  level_ = level;
}

std::shared_ptr<UIWindow> UIWindow::window() const {
  return std::dynamic_pointer_cast<UIWindow>(std::const_pointer_cast<NSObject>(weak_from_this().lock()));
}

std::shared_ptr<UIResponder> UIWindow::nextResponder() {
  return UIApplication::sharedApplication();
}

void UIWindow::sendEvent(const std::shared_ptr<UIEvent>& event) {
  if (!event || event->type() != UIEventType::touches) return;
  const auto self = sharedAs<UIWindow>();
  UITouches changed;
  for (const auto& touch : event->allTouches()) {
    if (touch->window() == self && touch->phase() != UITouchPhase::stationary) changed.push_back(touch);
  }
  if (!changed.empty()) arbiter_->deliver(*this, changed, event);
}

void UIWindow::markDirty() {
  backing_->markDirty();
}

void UIWindow::layoutAtNextRefresh() {
  if (layoutIsScheduled_ || isHidden()) return;
  layoutIsScheduled_ = true;
  Clock& clock = Clock::shared();
  const std::weak_ptr<UIWindow> weakSelf = window();
  clock.schedule(Clock::nextRefresh(clock.now()), Clock::Lane::main, [weakSelf] {
    auto self = weakSelf.lock();
    if (!self) return;
    self->layoutIsScheduled_ = false;
    self->layoutIfNeeded();
  });
}

}  // namespace ios
