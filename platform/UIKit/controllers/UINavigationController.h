#pragma once

#include <memory>
#include <vector>

#include "UIKit/UIViewController.h"

namespace ios {

class NavigationBar;

/// A stack of screens under a bar with the title and a way back. The stack changes with the call; a new call
/// ends a slide that is still running. When one navigation controller is on top of another, only the upper
/// one's bar shows.
class UINavigationController : public Subclass<UINavigationController, UIViewController> {
 public:
  UINavigationController() = default;
  static MethodList methods();
  static std::shared_ptr<UINavigationController> withRootViewController(
      const std::shared_ptr<UIViewController>& root);

  void pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated);
  /// Does nothing on the last screen.
  void popViewControllerAnimated(bool animated);
  void popToRootViewControllerAnimated(bool animated);
  const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const {
    return childViewControllers();
  }
  /// Top of the stack; empty for an empty stack.
  std::shared_ptr<UIViewController> topViewController() const;
  /// What this controller or the top of its stack presents, else the top of the stack.
  std::shared_ptr<UIViewController> visibleViewController() const;

  void loadView() override;
  void viewWillLayoutSubviews() override;

 protected:
  void childTitleDidChange() override { updateBar(); }

 private:
  struct Slide;
  /// The screen that "back" leads to; empty on the first one.
  std::shared_ptr<UIViewController> previous() const;
  void backTapped();
  void popTo(std::size_t count, bool animated);
  void updateBar();
  void layoutParts();
  void showTop(bool animated, bool pushing, const std::shared_ptr<UIViewController>& old);
  void endSlide();
  std::shared_ptr<NavigationBar> bar_;
  std::shared_ptr<UIView> content_;
  std::shared_ptr<Slide> slide_;  // under way
};

}  // namespace ios
