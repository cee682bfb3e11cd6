#pragma once

#include <memory>
#include <string>

#include "UIKit/UIControl.h"
#include "UIKit/UIFont.h"

namespace ios {

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
