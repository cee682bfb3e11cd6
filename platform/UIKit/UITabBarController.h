#pragma once

#include <memory>
#include <vector>

#include "UIKit/UINavigationController.h"

namespace ios {

/// Screens side by side, chosen by a bar at the bottom. More than five on a phone: the last place of the bar is
/// "More", a navigation controller whose list leads to the rest.
class UITabBarController : public Subclass<UITabBarController, UIViewController> {
 public:
  UITabBarController() = default;
  static MethodList methods();

  void setViewControllers(std::vector<std::shared_ptr<UIViewController>> controllers);
  const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return controllers_; }
  /// The chosen screen, or the "More" controller; empty when there are no screens.
  std::shared_ptr<UIViewController> selectedViewController() const { return selected_; }
  void setSelectedViewController(const std::shared_ptr<UIViewController>& controller);
  void setSelectedIndex(std::size_t index);
  /// Always there; its view is in a window only while "More" is chosen.
  std::shared_ptr<UINavigationController> moreNavigationController();

  void loadView() override;
  void viewWillLayoutSubviews() override;

 private:
  struct Bar;
  void rebuildBar();
  void barTapped(const id& sender);
  std::vector<std::shared_ptr<UIViewController>> controllers_;
  std::shared_ptr<UIViewController> selected_;
  std::shared_ptr<UINavigationController> more_;
  std::shared_ptr<Bar> bar_;
};

}  // namespace ios
