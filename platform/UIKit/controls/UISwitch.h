#pragma once

#include "UIKit/UIControl.h"

namespace ios {

/// A control that is on or off. A tap changes that and sends UIControlEventValueChanged. Its size is its own.
class UISwitch : public Subclass<UISwitch, UIControl> {
 public:
  static constexpr CGSize kSize{51, 31};
  explicit UISwitch(CGRect frame = CGRectZero);
  static MethodList methods();
  bool isOn() const { return on_; }
  /// Sends nothing.
  void setOn(bool on, bool animated = false);
  CGSize sizeThatFits(CGSize) const override { return kSize; }
  void drawRect(const CGRect& rect) override;
  void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;

 private:
  bool on_ = false;
};

}  // namespace ios
