#pragma once

#include <memory>
#include <string>

#include "UIKit/UIAlertController.h"
#include "UIKit/UIControl.h"

namespace ios {

class UILabel;

/// The place of one action in an alert or sheet. Its text shrinks, then is cut, where it does not fit.
class AlertRow : public Subclass<AlertRow, UIControl> {
 public:
  AlertRow(const std::shared_ptr<UIAlertAction>& action, CGFloat fontSize);
  static MethodList methods() { return {}; }
  const std::shared_ptr<UIAlertAction>& action() const { return action_; }
  bool isCancel() const { return action_->style() == UIAlertActionStyle::cancel; }
  /// What the title takes at its full size, with the space at its sides.
  CGFloat naturalWidth() const;
  void setHighlighted(bool highlighted) override;
  void layoutSubviews() override;
  std::string accessibilityLabel() const override { return action_->title(); }

 private:
  std::shared_ptr<UIAlertAction> action_;
  std::shared_ptr<UILabel> label_;
};

}  // namespace ios
