#pragma once

#include <memory>
#include <string>

#include "UIKit/UIControl.h"

namespace ios {

class UILabel;

/// "‹ Notes": the arrow and the title of the screen it leads to.
class BackButton : public Subclass<BackButton, UIControl> {
 public:
  BackButton();
  static MethodList methods() { return {}; }
  void setTitle(const std::string& title);
  CGFloat naturalWidth() const;
  void setHighlighted(bool highlighted) override;
  void layoutSubviews() override;
  void drawRect(const CGRect& rect) override;
  std::string accessibilityLabel() const override;

 private:
  std::shared_ptr<UILabel> label_;
};

/// The bar above a stack of screens, with the status bar's room at its top.
class NavigationBar : public Subclass<NavigationBar, UIView> {
 public:
  NavigationBar();
  static MethodList methods() { return {}; }
  static constexpr CGFloat kHeight = 44;
  void setTitle(const std::string& title);
  /// Empty: no way back.
  void setBackTitle(const std::optional<std::string>& title);
  const std::shared_ptr<BackButton>& backButton() const { return back_; }
  const std::shared_ptr<UILabel>& titleLabel() const { return title_; }
  void layoutSubviews() override;

 private:
  std::shared_ptr<UILabel> title_;
  std::shared_ptr<BackButton> back_;
  std::shared_ptr<UIView> edge_;
  std::string backTitle_;
};

}  // namespace ios
