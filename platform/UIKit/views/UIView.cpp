#include "UIKit/UIView.h"

#include <algorithm>

#include "UIKit/Private/UIView.h"
#include "UIKit/UIWindow.h"

namespace ios {

UIView::UIView(CGRect frame) : layer_(std::make_shared<ViewLayer>(this)) {
  bounds_.size = {std::max(0.0, frame.size.width), std::max(0.0, frame.size.height)};
  center_ = {frame.origin.x + bounds_.size.width / 2, frame.origin.y + bounds_.size.height / 2};
}

UIView::~UIView() {
  static_cast<ViewLayer&>(*layer_).viewGone();
  for (const auto& view : subviews_) view->superview_ = nullptr;
  detachGestureRecognizers();
}

MethodList UIView::methods() {
  return {{"setNeedsLayout", &UIView::setNeedsLayout},
          {"setNeedsDisplay", &UIView::setNeedsDisplay},
          {"layoutIfNeeded", &UIView::layoutIfNeeded},
          {"drawViewHierarchyInRect:afterScreenUpdates:", &UIView::drawViewHierarchyInRectAfterScreenUpdates},
          {"removeFromSuperview", &UIView::removeFromSuperview}};
}

void UIView::addSubview(const std::shared_ptr<UIView>& view) {
  insertSubviewAtIndex(view, subviews_.size());
}

void UIView::insertSubviewAtIndex(const std::shared_ptr<UIView>& view, std::size_t index) {
  if (!view) return;
  if (isDescendantOfView(*view))
    programmingError("a view cannot be a subview of itself or of its own subviews");
  const std::shared_ptr<UIView> kept =
      view;  // `view` may be the element of `subviews_` that is about to move
  const std::shared_ptr<UIWindow> oldWindow = kept->window();
  const bool moved = kept->superview_ != this;
  kept->detach();
  kept->superview_ = this;
  subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(std::min(index, subviews_.size())), kept);
  setNeedsLayout();
  if (kept->window() != oldWindow) kept->movedToWindow();
  if (moved) kept->didMoveToSuperview();
}

void UIView::bringSubviewToFront(const std::shared_ptr<UIView>& view) {
  const auto found = std::find(subviews_.begin(), subviews_.end(), view);
  if (found == subviews_.end()) return;
  std::rotate(found, found + 1, subviews_.end());
  setNeedsDisplay();
}

void UIView::removeFromSuperview() {
  if (!superview_) return;
  const auto self = sharedAs<UIView>();
  const bool wasInWindow = window() != nullptr;
  detach();
  if (wasInWindow) movedToWindow();
  didMoveToSuperview();
}

void UIView::detach() {
  if (!superview_) return;
  superview_->setNeedsLayout();
  std::erase_if(superview_->subviews_, [this](const auto& view) { return view.get() == this; });
  superview_ = nullptr;
}

void UIView::movedToWindow() {
  tellControllerOfWindow();
  didMoveToWindow();
  const auto subviews = subviews_;
  for (const auto& view : subviews) view->movedToWindow();
}

std::shared_ptr<UIWindow> UIView::window() const {
  return superview_ ? superview_->window() : nullptr;
}

std::shared_ptr<UIView> UIView::superview() const {
  return superview_ ? superview_->sharedAs<UIView>() : nullptr;
}

bool UIView::isDescendantOfView(const UIView& view) const {
  const UIView* ancestor = this;
  while (ancestor && ancestor != &view) ancestor = ancestor->superview_;
  return ancestor != nullptr;
}

void UIView::setBackgroundColor(std::shared_ptr<UIColor> color) {
  backgroundColor_ = std::move(color);
  setNeedsDisplay();
}

void UIView::setAlpha(CGFloat alpha) {
  alpha = alpha > 0 ? std::min(alpha, 1.0) : 0;
  if (alpha == alpha_) return;
  willChange(Animatable::alpha);
  alpha_ = alpha;
  setNeedsDisplay();
}

void UIView::setHidden(bool hidden) {
  if (hidden == hidden_) return;
  hidden_ = hidden;
  setNeedsDisplay();
}

void UIView::setClipsToBounds(bool clips) {
  layer_->masksToBounds = clips;
  setNeedsDisplay();
}

}  // namespace ios
