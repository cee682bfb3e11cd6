#pragma once

#include <memory>
#include <string>
#include <vector>

#include "UIKit/UIControl.h"

namespace ios {

class UILabel;

/// One place of a tab bar: a drawn sign above a title.
class TabBarItem : public Subclass<TabBarItem, UIControl> {
 public:
  enum class Sign { initial, more };
  TabBarItem(const std::string& title, Sign sign, bool selected);
  static MethodList methods() { return {}; }
  void layoutSubviews() override;
  void drawRect(const CGRect& rect) override;
  std::string accessibilityLabel() const override;

 private:
  CGRect signFrame() const;
  const Sign sign_;
  std::shared_ptr<UILabel> title_, initial_;
};

/// The bar below a tab bar controller's screens.
class TabBar : public Subclass<TabBar, UIView> {
 public:
  TabBar();
  static MethodList methods() { return {}; }
  static constexpr CGFloat kHeight = 49;
  /// Their tags are their places, from 0.
  void setItems(std::vector<std::shared_ptr<TabBarItem>> items);
  void layoutSubviews() override;

 private:
  std::vector<std::shared_ptr<TabBarItem>> items_;
  std::shared_ptr<UIView> edge_;
};

}  // namespace ios
