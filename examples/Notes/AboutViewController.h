#pragma once

#include <memory>

#include "UIKit/UILabel.h"
#include "UIKit/UIViewController.h"

namespace Notes {

/// What the application is, and how to say what one thinks of it.
class AboutViewController : public ios::Subclass<AboutViewController, ios::UIViewController> {
 public:
  AboutViewController();
  static ios::MethodList methods() { return {}; }
  void viewDidLoad() override;
  void viewWillLayoutSubviews() override;

 private:
  std::shared_ptr<ios::UIView> pad_;
  std::shared_ptr<ios::UILabel> name_, version_, hint_;
};

}  // namespace Notes
