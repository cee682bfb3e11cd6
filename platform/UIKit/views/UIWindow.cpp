#include "UIKit/UIWindow.h"

#include "DeviceClock/Clock.h"
#include "UIKit/Private/BackingStore.h"

namespace ios {

UIWindow::UIWindow(CGRect frame) : Subclass(frame), backing_(std::make_unique<BackingStore>()) {
  UIView::setHidden(true);
}

MethodList UIWindow::methods() {
  return {{"makeKeyAndVisible", &UIWindow::makeKeyAndVisible}};
}

void UIWindow::setWindowLevel(CGFloat level) {
  level_ = level;
}

std::shared_ptr<UIWindow> UIWindow::window() const {
  return std::dynamic_pointer_cast<UIWindow>(std::const_pointer_cast<NSObject>(weak_from_this().lock()));
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
