#pragma once

#include <memory>
#include <vector>

#include "UIKit/UIView.h"

namespace ios {

enum UIControlEvents : unsigned {
  UIControlEventTouchDown = 1 << 0,
  UIControlEventTouchUpInside = 1 << 6,
  UIControlEventValueChanged = 1 << 12
};

/// A view that reports a finger's actions on it to its targets, which it does not keep alive.
class UIControl : public Subclass<UIControl, UIView> {
 public:
  explicit UIControl(CGRect frame = CGRectZero);
  static MethodList methods() { return {}; }
  /// `action` takes the control or nothing; one that the target lacks stops the process in this call.
  void addTarget(const id& target, Selector action, unsigned events);
  void sendActionsForControlEvents(unsigned events);
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled);
  /// The selected one of several, such as the tab that is shown.
  bool isSelected() const { return selected_; }
  virtual void setSelected(bool selected);
  /// Whether a finger is on it.
  bool isHighlighted() const { return highlighted_; }
  virtual void setHighlighted(bool highlighted);
  /// A finger that taps a control means the control, not a single-tap recogniser of a view behind it.
  bool gestureRecognizerShouldBegin(const UIGestureRecognizer& recognizer) const override;
  void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesCancelled(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;

 private:
  struct TargetAction {
    std::weak_ptr<NSObject> target;
    Action action;
    unsigned events;
  };
  std::vector<TargetAction> targets_;
  bool enabled_ = true;
  bool highlighted_ = false;
  bool selected_ = false;
};

}  // namespace ios
