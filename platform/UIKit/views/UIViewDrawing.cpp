#include "UIKit/Private/BackingStore.h"
#include "UIKit/Private/UIView.h"
#include "UIKit/Private/ViewRenderer.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIWindow.h"

namespace ios {

bool UIView::drawViewHierarchyInRectAfterScreenUpdates(const CGRect& rect, bool afterScreenUpdates) {
  const CGContextRef context = UIGraphicsGetCurrentContext();
  if (!context) return false;
  const auto self = sharedAs<UIView>();
  if (auto* window = dynamic_cast<UIWindow*>(this)) {
    if (auto image = window->backing_->image(*window, afterScreenUpdates))
      CGContextDrawImage(context, rect, image);
    return true;
  }
  if (afterScreenUpdates) layoutIfNeeded();
  const CGRect bounds = shown().bounds;
  if (bounds.size.width <= 0 || bounds.size.height <= 0) return true;
  CGContextSaveGState(context);
  CGContextTranslateCTM(context, rect.origin.x, rect.origin.y);
  CGContextScaleCTM(context, rect.size.width / bounds.size.width, rect.size.height / bounds.size.height);
  CGContextTranslateCTM(context, -bounds.origin.x, -bounds.origin.y);
  CGContextClipToRect(context, bounds);
  ViewRenderer(context).drawContents(*this, bounds);
  CGContextRestoreGState(context);
  return true;
}

void ViewLayer::renderInContext(const CGContextRef& context) {
  if (!view_ || !context) return;
  const auto kept = view_->weak_from_this().lock();
  const CGRect bounds = view_->bounds();
  CGContextSaveGState(context);
  CGContextTranslateCTM(context, -bounds.origin.x, -bounds.origin.y);
  ViewRenderer(context).drawContents(*view_, bounds);
  CGContextRestoreGState(context);
}

}  // namespace ios
