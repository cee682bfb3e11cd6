#pragma once

#include <memory>

#include "UIKit/UIView.h"

namespace ios {

/// A view whose content is larger than itself and is dragged about by a finger, with momentum after the finger has
/// left. A drag of more than 10 points takes the touch away from the subview under it. While a drag lasts, the main
/// run loop is in its tracking mode.
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
  void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesCancelled(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;

 private:
  friend class UIWindow;
  struct Drag;
  CGSize contentSize_;
  bool dragging_ = false;
  std::shared_ptr<Drag> drag_;
};

}  // namespace ios
