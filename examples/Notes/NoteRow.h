#pragma once

#include <memory>

#include "Note.h"
#include "UIKit/UIControl.h"
#include "UIKit/UILabel.h"

namespace Notes {

/// One note in the list.
class NoteRow : public ios::Subclass<NoteRow, ios::UIControl> {
 public:
  static constexpr ios::CGFloat kHeight = 78;
  explicit NoteRow(const Note& note);
  static ios::MethodList methods() { return {}; }
  void layoutSubviews() override;
  void setHighlighted(bool highlighted) override;
  std::string accessibilityLabel() const override { return title_->text(); }

 private:
  std::shared_ptr<ios::UIView> mark_, line_;
  std::shared_ptr<ios::UILabel> title_, snippet_, date_;
};

}  // namespace Notes
