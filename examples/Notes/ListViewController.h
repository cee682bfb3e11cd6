#pragma once

#include <memory>
#include <vector>

#include "NoteRow.h"
#include "NoteStore.h"
#include "UIKit/UIButton.h"
#include "UIKit/UIScrollView.h"
#include "UIKit/UIViewController.h"

namespace Notes {

/// All notes, and the way to a new one.
class ListViewController : public ios::Subclass<ListViewController, ios::UIViewController> {
 public:
  explicit ListViewController(std::shared_ptr<NoteStore> store);
  static ios::MethodList methods();
  void viewDidLoad() override;
  void viewWillAppear(bool animated) override;
  void viewWillLayoutSubviews() override;

 private:
  void rebuild();
  void openNote(const ios::id& row);
  void compose();

  std::shared_ptr<NoteStore> store_;
  std::shared_ptr<ios::UIScrollView> scroll_;
  std::vector<std::shared_ptr<NoteRow>> rows_;
  std::shared_ptr<ios::UIButton> compose_;
};

}  // namespace Notes
