#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Note.h"
#include "UIKit/UIButton.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIViewController.h"

namespace Notes {

/// Offers templates for a new note, over everything else.
class ComposeViewController : public ios::Subclass<ComposeViewController, ios::UIViewController> {
 public:
  /// Called with the chosen note, before the screen closes.
  std::function<void(Note)> onAdd;

  ComposeViewController();
  static ios::MethodList methods();
  void viewDidLoad() override;
  void viewWillLayoutSubviews() override;

 private:
  void choose(const ios::id& button);
  void cancel();

  std::shared_ptr<ios::UIView> bar_, line_;
  std::shared_ptr<ios::UILabel> heading_, hint_;
  std::shared_ptr<ios::UIButton> cancel_;
  std::vector<std::shared_ptr<ios::UIButton>> choices_;
};

}  // namespace Notes
