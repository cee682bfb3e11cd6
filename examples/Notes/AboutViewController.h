#pragma once

#include <memory>

#include "Foundation/NSTimer.h"
#include "RecordingRow.h"
#include "UIKit/UIButton.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIViewController.h"

namespace Notes {

/// Tells what the application is, and how to give feedback on it.
class AboutViewController : public ios::Subclass<AboutViewController, ios::UIViewController> {
 public:
  AboutViewController();
  static ios::MethodList methods();
  void viewDidLoad() override;
  void viewDidAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;
  void viewWillLayoutSubviews() override;

 private:
  void startOrStopRecording();
  void breathe();
  void warnOfCrash();
  /// A recording begins when the user has allowed it, and may end by itself.
  void followRecording();

  std::shared_ptr<ios::UIView> pad_;
  std::shared_ptr<ios::UILabel> name_, version_, hint_;
  std::shared_ptr<RecordingRow> recording_;
  std::shared_ptr<ios::UIButton> breath_, crash_;
  std::shared_ptr<ios::NSTimer> following_;  // while the screen is visible
};

}  // namespace Notes
