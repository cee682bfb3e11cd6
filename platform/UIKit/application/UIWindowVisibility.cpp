#include "UIKit/Private/BackingStore.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIViewController.h"
#include "UIKit/UIWindow.h"

namespace ios {

UIWindow::~UIWindow() {
  if (!isHidden()) UIApplication::sharedApplication()->windowGone(*this);
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

std::shared_ptr<UIResponder> UIWindow::nextResponder() {
  return UIApplication::sharedApplication();
}

}  // namespace ios
