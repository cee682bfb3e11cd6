#pragma once

#include <memory>
#include <optional>

#include "UIKit/UIGestureRecognizer.h"
#include "UIKit/UIScrollView.h"

namespace ios {

/// One finger that has begun to move the content.
class UIScrollView::DragRecognizer : public Subclass<UIScrollView::DragRecognizer, UIGestureRecognizer> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  CGPoint locationInView(const UIView* view) const override;
  /// How far the finger has come since the drag began, in points of the window.
  CGPoint translation() const;
  /// Of the finger, over its last tenth of a second, in points a second; zero if it has rested since.
  CGPoint velocity() const;

 protected:
  void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesCancelled(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void reset() override;

 private:
  struct Sample {
    double time;
    CGPoint location;
  };
  void note(const UITouch& touch);
  std::shared_ptr<UITouch> finger_;
  CGPoint start_;
  std::vector<Sample> samples_;
};

/// A movement of the content that goes on by itself.
struct UIScrollView::Motion {
  bool stopped = false;
};

}  // namespace ios
