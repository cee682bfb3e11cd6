#pragma once

#include <memory>

#include "QuartzCore/CADisplayLink.h"
#include "UIKit/UIButton.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIViewController.h"

namespace Notes {

/// A disc that grows and shrinks as slowly as one should breathe: a screen that never stands still.
class BreathViewController : public ios::Subclass<BreathViewController, ios::UIViewController> {
 public:
  BreathViewController();
  static ios::MethodList methods();
  void viewDidLoad() override;
  void viewDidAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;
  void viewWillLayoutSubviews() override;

 private:
  void tick();
  void done();

  std::shared_ptr<ios::UIView> disc_;
  std::shared_ptr<ios::UILabel> words_;
  std::shared_ptr<ios::UIButton> done_;
  std::shared_ptr<ios::CADisplayLink> link_;  // while the screen is visible
  double begin_ = 0;                          // timestamp of the first tick
};

}  // namespace Notes
