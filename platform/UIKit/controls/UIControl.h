#pragma once

#include <memory>
#include <string>
#include <vector>

#include "UIKit/UIFont.h"
#include "UIKit/UIImage.h"
#include "UIKit/UIView.h"

namespace ios {

enum UIControlEvents : unsigned {
  UIControlEventTouchDown = 1 << 0,
  UIControlEventTouchUpInside = 1 << 6,
  UIControlEventValueChanged = 1 << 12
};

/// A view that reports what a finger does to it to its targets, which it does not keep alive.
class UIControl : public Subclass<UIControl, UIView> {
 public:
  explicit UIControl(CGRect frame = CGRectZero);
  static MethodList methods() { return {}; }
  /// `action` takes the control or nothing; one that the target lacks stops the process, here.
  void addTarget(const id& target, Selector action, unsigned events);
  void sendActionsForControlEvents(unsigned events);
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled);
  /// While a finger is on it.
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
};

/// A control with a title.
class UIButton : public Subclass<UIButton, UIControl> {
 public:
  explicit UIButton(CGRect frame = CGRectZero);
  static MethodList methods() { return {}; }
  const std::string& title() const { return title_; }
  void setTitle(std::string title);
  void setTitleColor(std::shared_ptr<UIColor> color);
  void setFont(std::shared_ptr<UIFont> font);
  void setTitleAlignment(TextAlignment alignment);
  CGSize sizeThatFits(CGSize size) const override;
  void drawRect(const CGRect& rect) override;
  std::string accessibilityLabel() const override;

 private:
  std::string title_;
  std::shared_ptr<UIColor> titleColor_;
  std::shared_ptr<UIFont> font_;
  TextAlignment alignment_ = TextAlignment::center;
};

}  // namespace ios
