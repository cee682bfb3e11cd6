#include "UIKit/UIImageView.h"

#include <utility>

#include "UIKit/UIGraphics.h"

namespace ios {

UIImageView::UIImageView(std::shared_ptr<UIImage> image)
    : Subclass(CGRect{{}, image ? image->size() : CGSize{}}), image_(std::move(image)) {
  setUserInteractionEnabled(false);
}

void UIImageView::setImage(std::shared_ptr<UIImage> image) {
  image_ = std::move(image);
  setNeedsDisplay();
}

void UIImageView::setContentMode(UIViewContentMode mode) {
  mode_ = mode;
  setNeedsDisplay();
}

void UIImageView::drawRect(const CGRect&) {
  const CGSize size = image_ ? image_->size() : CGSize{};
  const CGRect box = bounds();
  if (CGRectIsEmpty({{}, size}) || CGRectIsEmpty(box)) return;
  CGRect target = box;
  if (mode_ != UIViewContentMode::scaleToFill) {
    const CGFloat across = box.width() / size.width, down = box.height() / size.height;
    const bool whole = mode_ == UIViewContentMode::scaleAspectFit;
    const CGFloat factor = whole ? std::min(across, down) : std::max(across, down);
    target.size = {size.width * factor, size.height * factor};
    target.origin = {box.midX() - target.width() / 2, box.midY() - target.height() / 2};
  }
  CGContextDrawImage(UIGraphicsGetCurrentContext(), target, image_->CGImageValue());
}

}  // namespace ios
