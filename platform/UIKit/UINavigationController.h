#pragma once

#include <memory>
#include <vector>

#include "UIKit/UIViewController.h"

namespace ios {

/// A stack of screens under a bar with the title and a way back.
class UINavigationController : public Subclass<UINavigationController, UIViewController> {
 public:
  UINavigationController() = default;
  static MethodList methods() { return {}; }
  static std::shared_ptr<UINavigationController> withRootViewController(const std::shared_ptr<UIViewController>& root);

  void pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated);
  /// Does nothing on the last screen.
  void popViewControllerAnimated(bool animated);
  const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return childViewControllers(); }
  /// Top of the stack; empty for an empty stack.
  std::shared_ptr<UIViewController> topViewController() const;
  /// What this controller or the top of its stack presents, else the top of the stack.
  std::shared_ptr<UIViewController> visibleViewController() const;

  void loadView() override;
  void viewWillLayoutSubviews() override;

 private:
  struct Bar;
  std::shared_ptr<Bar> bar_;
  void updateBar();
  void showTop(bool animated, bool pushing, const std::shared_ptr<UIViewController>& old);
};

}  // namespace ios
