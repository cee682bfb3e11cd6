#pragma once

#include <memory>

#include "Note.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScrollView.h"
#include "UIKit/UIViewController.h"

namespace Notes {

/// One note, to read.
class DetailViewController : public ios::Subclass<DetailViewController, ios::UIViewController> {
 public:
  explicit DetailViewController(Note note);
  static ios::MethodList methods() { return {}; }
  void viewDidLoad() override;
  void viewWillLayoutSubviews() override;

 private:
  Note note_;
  std::shared_ptr<ios::UIScrollView> scroll_;
  std::shared_ptr<ios::UILabel> date_, title_, body_;
  std::shared_ptr<ios::UIView> mark_;
};

}  // namespace Notes
