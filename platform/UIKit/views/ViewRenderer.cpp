#include "UIKit/Private/ViewRenderer.h"

#include <algorithm>

#include "UIKit/Private/UIView.h"
#include "UIKit/UIGraphics.h"

namespace ios {
namespace {

CGRect boundingBox(const CGRect& rect, const CGAffineTransform& transform) {
  const CGPoint corners[] = {CGPointApplyAffineTransform({rect.minX(), rect.minY()}, transform),
                             CGPointApplyAffineTransform({rect.maxX(), rect.minY()}, transform),
                             CGPointApplyAffineTransform({rect.minX(), rect.maxY()}, transform),
                             CGPointApplyAffineTransform({rect.maxX(), rect.maxY()}, transform)};
  CGPoint low = corners[0], high = corners[0];
  for (const CGPoint& corner : corners) {
    low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
    high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
  }
  return {low, {high.x - low.x, high.y - low.y}};
}

CGPath outline(const CGRect& rect, CGFloat radius) {
  return radius > 0 ? CGPath::roundedRect(rect, radius) : CGPath::rect(rect);
}

}  // namespace

void ViewRenderer::draw(UIView& view, const CGRect& visible) {
  const UIView::Shown shown = view.shown();
  if (view.hidden_ || shown.alpha <= 0) return;
  const CGAffineTransform& t = shown.transform;
  if (t.a * t.d - t.b * t.c == 0) return;
  const CGAffineTransform place = CGAffineTransformConcat(
      CGAffineTransformConcat(CGAffineTransformMakeTranslation(-shown.bounds.midX(), -shown.bounds.midY()),
                              t),
      CGAffineTransformMakeTranslation(shown.center.x, shown.center.y));
  const CGRect visibleInside = boundingBox(visible, CGAffineTransformInvert(place));
  if (view.layer_->masksToBounds && !CGRectIntersectsRect(shown.bounds, visibleInside)) return;

  CGContextSaveGState(context_);
  CGContextConcatCTM(context_, place);
  if (shown.alpha < 1) CGContextBeginTransparencyLayer(context_);
  drawContents(view, visibleInside);
  if (shown.alpha < 1) CGContextEndTransparencyLayer(context_, shown.alpha);
  CGContextRestoreGState(context_);
}

void ViewRenderer::drawContents(UIView& view, const CGRect& visible) {
  const CGRect bounds = view.shown().bounds;
  const bool clips = view.layer_->masksToBounds;
  CGRect visibleInside = visible;
  CGContextSaveGState(context_);
  if (clips) {
    visibleInside = CGRectIntersection(visible, bounds);
    if (view.layer_->cornerRadius > 0) {
      CGContextAddPath(context_, outline(bounds, view.layer_->cornerRadius));
      CGContextClip(context_);
    } else {
      CGContextClipToRect(context_, bounds);
    }
  }
  const bool ownIsVisible = CGRectIntersectsRect(bounds, visible);
  if (ownIsVisible) {
    drawBackground(view, bounds);
    drawOwnContent(view, bounds);
  }
  const auto subviews = view.subviews_;  // drawing is the host's code, and may change the tree
  for (const auto& subview : subviews) draw(*subview, visibleInside);
  if (ownIsVisible) {
    view.drawOverSubviews(context_);
    drawBorder(view, bounds);
  }
  CGContextRestoreGState(context_);
}

void ViewRenderer::drawBackground(UIView& view, const CGRect& bounds) {
  if (!view.backgroundColor_) return;
  const CGColor& color = view.backgroundColor_->CGColorValue();
  if (color.alpha <= 0) return;
  CGContextSetFillColorWithColor(context_, color);
  if (view.layer_->cornerRadius > 0) {
    CGContextAddPath(context_, outline(bounds, view.layer_->cornerRadius));
    CGContextFillPath(context_);
  } else {
    CGContextFillRect(context_, bounds);
  }
}

void ViewRenderer::drawOwnContent(UIView& view, const CGRect& bounds) {
  const CGRect own = view.bounds_;
  if (own.size.width <= 0 || own.size.height <= 0) return;
  CGContextSaveGState(context_);
  CGContextClipToRect(context_, bounds);
  // While the size is on its way, the finished content is stretched to it.
  if (bounds != own) {
    CGContextTranslateCTM(context_, bounds.origin.x, bounds.origin.y);
    CGContextScaleCTM(context_, bounds.size.width / own.size.width, bounds.size.height / own.size.height);
    CGContextTranslateCTM(context_, -own.origin.x, -own.origin.y);
  }
  UIGraphicsPushContext(context_);
  view.drawRect(own);
  UIGraphicsPopContext();
  CGContextRestoreGState(context_);
}

void ViewRenderer::drawBorder(UIView& view, const CGRect& bounds) {
  const CALayer& layer = *view.layer_;
  if (layer.borderWidth <= 0 || layer.borderColor.alpha <= 0) return;
  const CGFloat half = layer.borderWidth / 2;
  CGContextSetStrokeColorWithColor(context_, layer.borderColor);
  CGContextSetLineWidth(context_, layer.borderWidth);
  CGContextAddPath(context_,
                   outline(CGRectInset(bounds, half, half), std::max(0.0, layer.cornerRadius - half)));
  CGContextStrokePath(context_);
}

}  // namespace ios
