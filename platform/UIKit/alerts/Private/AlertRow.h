#pragma once

#include <memory>
#include <string>

#include "UIKit/UIAlertController.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIFont.h"

namespace ios {

class UILabel;

/// The place of one action in an alert or sheet. Its text is one line, which shrinks, then is cut, where it
/// does not fit. At the accessibility sizes it has as many lines as it needs, and shrinks where a word would
/// have to be broken.
class AlertRow : public Subclass<AlertRow, UIControl> {
 public:
  /// `font` is that of all rows; a cancel action's is bold.
  AlertRow(const std::shared_ptr<UIAlertAction>& action, const UIFont& font);
  static MethodList methods() { return {}; }
  const std::shared_ptr<UIAlertAction>& action() const { return action_; }
  bool isCancel() const { return action_->style() == UIAlertActionStyle::cancel; }
  /// The width of the title on one line at its full size, with the space at its sides.
  CGFloat naturalWidth() const;
  /// Sizes the title for rows of that width. Returns its height, with the space above and below.
  CGFloat fit(CGFloat width);
  void setHighlighted(bool highlighted) override;
  void layoutSubviews() override;
  std::string accessibilityLabel() const override { return action_->title(); }

 private:
  std::shared_ptr<UIFont> fontOfSize(CGFloat size) const;
  CGFloat longestWord() const;

  std::shared_ptr<UIAlertAction> action_;
  std::shared_ptr<UILabel> label_;
  const CGFloat fullSize_;  // of the font
  // At that size; measured once, as that costs.
  CGSize oneLine_;
  CGFloat longestWord_ = 0;  // 0: the title has one line, whatever its words
};

}  // namespace ios
