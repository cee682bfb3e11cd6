#pragma once

#include <memory>

#include "UIKit/UIImage.h"
#include "UIKit/UIView.h"

namespace ios {

enum class UIViewContentMode : long { scaleToFill, scaleAspectFit, scaleAspectFill };

/// Shows an image.
class UIImageView : public Subclass<UIImageView, UIView> {
 public:
  explicit UIImageView(std::shared_ptr<UIImage> image = nullptr);
  static MethodList methods() { return {}; }
  const std::shared_ptr<UIImage>& image() const { return image_; }
  void setImage(std::shared_ptr<UIImage> image);
  void setContentMode(UIViewContentMode mode);
  void drawRect(const CGRect& rect) override;

 private:
  std::shared_ptr<UIImage> image_;
  UIViewContentMode mode_ = UIViewContentMode::scaleToFill;
};

}  // namespace ios
