#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "QuartzCore/CALayer.h"
#include "UIKit/UIView.h"

namespace ios {

/// The values of a view that can be animated, as the display has them now.
struct UIView::Shown {
  CGPoint center;
  CGRect bounds;
  CGFloat alpha = 1;
  CGAffineTransform transform;
};

/// Values being animated: where each started, and the run that moves it.
struct UIView::Animation {
  /// One call of `animateWithDuration`.
  struct Run {
    double progress = 0;
    std::vector<std::weak_ptr<UIView>> views;
  };
  template <class T>
  struct Track {
    T from;
    std::shared_ptr<Run> run;
  };
  std::optional<Track<CGPoint>> center;
  std::optional<Track<CGRect>> bounds;
  std::optional<Track<CGFloat>> alpha;
  std::optional<Track<CGAffineTransform>> transform;

  /// The run whose block is being executed; changes made now belong to it.
  static std::shared_ptr<Run> current;
};

/// The layer of a view; may outlive it, and then draws nothing.
class ViewLayer : public CALayer {
 public:
  explicit ViewLayer(UIView* view) : view_(view) {}
  void renderInContext(const CGContextRef& context) override;
  void viewGone() { view_ = nullptr; }

 private:
  UIView* view_;
};

}  // namespace ios
