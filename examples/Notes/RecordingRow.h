#pragma once

#include <memory>

#include "UIKit/UIControl.h"
#include "UIKit/UILabel.h"

namespace Notes {

/// Starts and stops a recording of the screen; while it runs, the row is red and its mark a square.
class RecordingRow : public ios::Subclass<RecordingRow, ios::UIControl> {
 public:
  static constexpr ios::CGFloat kWidth = 240, kHeight = 46;
  RecordingRow();
  static ios::MethodList methods() { return {}; }
  void setRecording(bool recording);
  void layoutSubviews() override;
  void drawRect(const ios::CGRect& rect) override;
  void setHighlighted(bool highlighted) override;
  std::string accessibilityLabel() const override { return label_->text(); }

 private:
  std::shared_ptr<ios::UILabel> label_;
  bool recording_ = false;
};

}  // namespace Notes
