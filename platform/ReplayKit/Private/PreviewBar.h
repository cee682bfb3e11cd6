#pragma once

#include <memory>

#include "UIKit/UIButton.h"
#include "UIKit/UIView.h"

namespace ios {

/// The bar over a preview: "Cancel" on one side, "Share" and "Save" on the other.
class PreviewBar : public Subclass<PreviewBar, UIView> {
 public:
  PreviewBar();
  static MethodList methods() { return {}; }
  /// Below the status bar.
  static constexpr CGFloat kHeight = 44;

  const std::shared_ptr<UIButton>& cancel() const { return cancel_; }
  const std::shared_ptr<UIButton>& share() const { return share_; }
  const std::shared_ptr<UIButton>& save() const { return save_; }
  /// "Share" and "Save".
  void setOffersEnabled(bool enabled);
  void layoutSubviews() override;

 private:
  std::shared_ptr<UIButton> cancel_, share_, save_;
  std::shared_ptr<UIView> edge_;
};

}  // namespace ios
