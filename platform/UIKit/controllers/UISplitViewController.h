#pragma once

#include <memory>
#include <vector>

#include "UIKit/UIViewController.h"

namespace ios {

/// Two screens side by side on a wide display (a primary column of 320 points and the rest), the last one
/// alone on a narrow one.
class UISplitViewController : public Subclass<UISplitViewController, UIViewController> {
 public:
  UISplitViewController() = default;
  static MethodList methods() { return {}; }
  void setViewControllers(std::vector<std::shared_ptr<UIViewController>> controllers);
  const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return controllers_; }
  void viewWillLayoutSubviews() override;
  void viewDidLoad() override;

 private:
  std::shared_ptr<UIView> divider_;
  std::vector<std::shared_ptr<UIViewController>> controllers_;
};

}  // namespace ios
