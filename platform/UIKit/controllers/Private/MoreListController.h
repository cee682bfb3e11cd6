#pragma once

#include <memory>
#include <vector>

#include "UIKit/UITabBarController.h"

namespace ios {

class UIScrollView;

/// The list of the screens that have no place in a tab bar; a tapped line leads to its screen.
class MoreListController : public Subclass<MoreListController, UIViewController> {
 public:
  static MethodList methods();
  /// `screens` are held by the tab bar controller; called when they or their titles changed.
  void setScreens(const std::vector<std::shared_ptr<UIViewController>>& screens);
  void loadView() override;
  void viewWillAppear(bool animated) override;
  void viewWillLayoutSubviews() override;

 private:
  void lineTapped(const id& sender);
  void rebuild();
  std::vector<std::weak_ptr<UIViewController>> screens_;
  std::shared_ptr<UIScrollView> list_;
};

}  // namespace ios
