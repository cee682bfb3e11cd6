#include "UIKit/UIView.h"
#include "UIKit/UIViewController.h"

namespace ios {

std::shared_ptr<UIResponder> UIView::nextResponder() {
  if (auto controller = controller_.lock()) return controller;
  return superview();
}

void UIView::tellControllerOfWindow() {
  if (auto controller = controller_.lock()) controller->viewMovedToWindow();
}

void UIView::tellControllerOfLayout() {
  if (auto controller = controller_.lock()) controller->viewWillLayoutSubviews();
}

}  // namespace ios
