#pragma once

#include <memory>
#include <vector>

#include "UIKit/UINavigationController.h"

namespace ios {

class TabBar;

/// Screens side by side, chosen by a bar at the bottom. More than five on a phone: the last place of the bar
/// is "More", a navigation controller whose list leads to the rest.
class UITabBarController : public Subclass<UITabBarController, UIViewController> {
 public:
  UITabBarController() = default;
  static MethodList methods();

  void setViewControllers(std::vector<std::shared_ptr<UIViewController>> controllers);
  const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return controllers_; }
  /// The chosen screen, or the "More" controller; empty when there are no screens.
  std::shared_ptr<UIViewController> selectedViewController() const { return selected_; }
  /// One of the screens, or the "More" controller; any other is ignored. A screen without a place in the bar
  /// is shown on top of "More".
  void setSelectedViewController(const std::shared_ptr<UIViewController>& controller);
  /// Beyond the last screen: ignored.
  void setSelectedIndex(std::size_t index);
  /// Always there; its view is in a window only while "More" is chosen.
  std::shared_ptr<UINavigationController> moreNavigationController();

  void loadView() override;
  void viewWillLayoutSubviews() override;

 protected:
  void childTitleDidChange() override { rebuildBar(); }

 private:
  friend class MoreListController;
  /// How many screens have a place of their own in the bar.
  std::size_t placesInBar() const;
  void adoptControllers();
  void rebuildBar();
  void layoutParts();
  void show(const std::shared_ptr<UIViewController>& controller);
  void barTapped(const id& sender);
  std::vector<std::shared_ptr<UIViewController>> controllers_;
  std::shared_ptr<UIViewController> selected_;
  std::shared_ptr<UINavigationController> more_;
  std::shared_ptr<TabBar> bar_;
  std::shared_ptr<UIView> content_;
};

}  // namespace ios
