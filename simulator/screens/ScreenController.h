#pragma once

#include <memory>
#include <string>

#include "UIKit/UIControl.h"
#include "UIKit/UIViewController.h"
#include "simulator/screens/Screens.h"

namespace simulator {

/// A screen of the phone's own: builds its views for its size, and again when that changes.
class ScreenController : public ios::Subclass<ScreenController, ios::UIViewController> {
 public:
  ScreenController(std::string backTo, WishSink wish) : backTo_(std::move(backTo)), wish_(std::move(wish)) {}
  static ios::MethodList methods();
  void viewWillLayoutSubviews() override;

 protected:
  static constexpr ios::CGFloat kStatusBar = 20;
  /// Adds the views; `size` is the screen's.
  virtual void build(ios::CGSize size) = 0;
  void add(const std::shared_ptr<ios::UIView>& part) { view()->addSubview(part); }
  /// "‹ Notes" at the top left, if an application led here.
  void addBackLink(unsigned color);
  /// Makes a tap on `control` a wish.
  void onTap(const std::shared_ptr<ios::UIControl>& control, ScreenWish wish);

 private:
  void tapped(const ios::id& control);
  std::string backTo_;
  WishSink wish_;
  ios::CGSize builtFor_;
  std::vector<std::pair<std::shared_ptr<ios::UIControl>, ScreenWish>> wishes_;
};

}  // namespace simulator
