#pragma once

#include <functional>
#include <memory>

#include "UIKit/UIView.h"

namespace ios {

/// A view whose content is larger than itself and is dragged about by a finger, with momentum after the
/// finger has left. A drag of more than 10 points takes the touch away from the subview under it. While a
/// drag lasts, the main run loop is in its tracking mode.
class UIScrollView : public Subclass<UIScrollView, UIView> {
 public:
  explicit UIScrollView(CGRect frame = CGRectZero);
  ~UIScrollView() override;
  static MethodList methods();
  CGSize contentSize() const { return contentSize_; }
  void setContentSize(CGSize size);
  CGPoint contentOffset() const { return bounds().origin; }
  void setContentOffset(CGPoint offset, bool animated = false);
  bool isDragging() const { return dragging_; }

 protected:
  void drawOverSubviews(const CGContextRef& context) const override;
  void didMoveToWindow() override;

 private:
  class DragRecognizer;
  struct Motion;
  CGPoint clamped(CGPoint offset) const;
  bool canScroll(CGPoint direction) const;
  void dragChanged(const id& sender);
  void glide(CGPoint velocity);
  void moveTo(double seconds, std::function<CGPoint(double fraction)> offset);
  void stopMoving();
  void setDragging(bool dragging);

  CGSize contentSize_;
  bool dragging_ = false;
  CGPoint dragStart_;  // the offset when the drag began
  std::shared_ptr<DragRecognizer> drag_;
  std::shared_ptr<Motion> motion_;  // momentum, or an animated change of the offset
};

}  // namespace ios
