#include <algorithm>

#include "UIKit/Private/PopoverBubble.h"
#include "UIKit/UIGraphics.h"

namespace ios {

namespace {

using Arrow = PopoverPlacement::Arrow;
constexpr CGFloat kArrowHeight = 13;
constexpr CGFloat kArrowWidth = 37;
constexpr CGFloat kCorner = 13;
constexpr CGFloat kShadow = 24;
constexpr CGFloat kShadowDensity = 0.015;

CGFloat clampTo(CGFloat value, CGFloat low, CGFloat high) {
  return std::max(low, std::min(value, high));
}

/// Room for content on the side of the anchor to which an arrow of that kind belongs.
CGSize room(Arrow arrow, const CGRect& anchor, const CGRect& area) {
  switch (arrow) {
    case Arrow::up:
      return {area.width(), area.maxY() - anchor.maxY() - kArrowHeight};
    case Arrow::down:
      return {area.width(), anchor.minY() - area.minY() - kArrowHeight};
    case Arrow::left:
      return {area.maxX() - anchor.maxX() - kArrowHeight, area.height()};
    case Arrow::right:
      return {anchor.minX() - area.minX() - kArrowHeight, area.height()};
    case Arrow::none:
      break;
  }
  return area.size;
}

CGPoint tipFor(Arrow arrow, const CGRect& anchor) {
  switch (arrow) {
    case Arrow::up:
      return {anchor.midX(), anchor.maxY()};
    case Arrow::down:
      return {anchor.midX(), anchor.minY()};
    case Arrow::left:
      return {anchor.maxX(), anchor.midY()};
    case Arrow::right:
      return {anchor.minX(), anchor.midY()};
    case Arrow::none:
      break;
  }
  return {anchor.midX(), anchor.midY()};
}

/// The arrow as the platform draws it: two gentle curves that meet in a rounded tip.
CGPath arrowPath(const PopoverPlacement& placement) {
  const Arrow arrow = placement.arrow;
  const CGPoint tip = placement.tip;
  const bool vertical = arrow == Arrow::up || arrow == Arrow::down;
  const CGFloat out = arrow == Arrow::up || arrow == Arrow::left ? -1 : 1;
  const CGFloat half = kArrowWidth / 2;
  // `along` runs beside the content's edge, `away` from the edge towards the tip; one point of
  // overlap hides the seam.
  const auto at = [&](CGFloat along, CGFloat away) {
    const CGFloat depth = out * (away - kArrowHeight);
    return vertical ? CGPoint{tip.x + along, tip.y + depth} : CGPoint{tip.x + depth, tip.y + along};
  };
  CGPath path;
  path.moveTo(at(-half, -1));
  path.lineTo(at(-half, 0));
  path.curveTo(at(-half * .55, 0), at(-half * .35, kArrowHeight), at(0, kArrowHeight));
  path.curveTo(at(half * .35, kArrowHeight), at(half * .55, 0), at(half, 0));
  path.lineTo(at(half, -1));
  path.close();
  return path;
}

}  // namespace

PopoverPlacement placePopover(CGSize size, const CGRect& anchor, const CGRect& area, unsigned permitted) {
  PopoverPlacement placement;
  CGFloat mostShown = -1;
  unsigned bit = 1;
  for (const Arrow arrow : {Arrow::up, Arrow::down, Arrow::left, Arrow::right}) {
    const bool allowed = permitted & bit;
    bit *= 2;
    if (!allowed) continue;
    const CGSize space = room(arrow, anchor, area);
    const CGFloat shown =
        std::max(0.0, std::min(size.width, space.width)) * std::max(0.0, std::min(size.height, space.height));
    if (shown <= mostShown) continue;
    mostShown = shown;
    placement.arrow = arrow;
  }
  const CGSize space = room(placement.arrow, anchor, area);
  size = {clampTo(size.width, 0, space.width), clampTo(size.height, 0, space.height)};
  placement.tip = tipFor(placement.arrow, anchor);
  CGPoint centre = placement.tip;
  switch (placement.arrow) {
    case Arrow::up:
      centre.y += kArrowHeight + size.height / 2;
      break;
    case Arrow::down:
      centre.y -= kArrowHeight + size.height / 2;
      break;
    case Arrow::left:
      centre.x += kArrowHeight + size.width / 2;
      break;
    case Arrow::right:
      centre.x -= kArrowHeight + size.width / 2;
      break;
    case Arrow::none:
      break;
  }
  const auto corner = [](CGFloat middle, CGFloat extent, CGFloat low, CGFloat high) {
    return std::round(clampTo(middle - extent / 2, low, std::max(low, high - extent)));
  };
  placement.content = {{corner(centre.x, size.width, area.minX(), area.maxX()),
                        corner(centre.y, size.height, area.minY(), area.maxY())},
                       size};
  // The arrow keeps clear of the rounded corners.
  const CGFloat inset = kCorner + kArrowWidth / 2;
  const CGRect& content = placement.content;
  if (placement.arrow == Arrow::up || placement.arrow == Arrow::down) {
    placement.tip.x = clampTo(placement.tip.x, content.minX() + inset, content.maxX() - inset);
    placement.tip.y =
        placement.arrow == Arrow::up ? content.minY() - kArrowHeight : content.maxY() + kArrowHeight;
  } else if (placement.arrow != Arrow::none) {
    placement.tip.y = clampTo(placement.tip.y, content.minY() + inset, content.maxY() - inset);
    placement.tip.x =
        placement.arrow == Arrow::left ? content.minX() - kArrowHeight : content.maxX() + kArrowHeight;
  }
  return placement;
}

PopoverBubble::PopoverBubble() : clip_(std::make_shared<UIView>()) {
  clip_->layer()->cornerRadius = kCorner;
  clip_->setClipsToBounds(true);
  addSubview(clip_);
}

void PopoverBubble::setContent(const std::shared_ptr<UIView>& content) {
  clip_->addSubview(content);
}

void PopoverBubble::place(const PopoverPlacement& placement) {
  const CGRect outer = CGRectInset(placement.content, -kShadow, -kShadow);
  setBounds({{0, 0}, outer.size});
  setCenter({outer.midX(), outer.midY()});
  placement_ = placement;
  placement_.content = CGRectOffset(placement.content, -outer.minX(), -outer.minY());
  placement_.tip = {placement.tip.x - outer.minX(), placement.tip.y - outer.minY()};
  clip_->setFrame(placement_.content);
  for (const auto& content : clip_->subviews()) content->setFrame(clip_->bounds());
  setNeedsDisplay();
}

bool PopoverBubble::pointInside(CGPoint point, const std::shared_ptr<UIEvent>&) const {
  return CGRectContainsPoint(placement_.content, point);
}

void PopoverBubble::drawRect(const CGRect&) {
  const auto context = UIGraphicsGetCurrentContext();
  const CGRect& content = placement_.content;
  for (CGFloat spread = kShadow - 4; spread >= 1; spread -= 1) {
    const CGRect ring = CGRectOffset(CGRectInset(content, -spread, -spread), 0, 3);
    CGContextSetFillColorWithColor(context, {0, 0, 0, kShadowDensity * (1 - spread / kShadow)});
    CGContextAddPath(context, CGPath::roundedRect(ring, kCorner + spread));
    CGContextFillPath(context);
  }
  if (placement_.arrow != Arrow::none) {
    CGContextSetStrokeColorWithColor(context, {0, 0, 0, 0.03});
    for (const CGFloat width : {12.0, 8.0, 4.0, 2.0}) {
      CGContextSetLineWidth(context, width);
      CGContextAddPath(context, arrowPath(placement_));
      CGContextStrokePath(context);
    }
  }
  CGContextSetFillColorWithColor(context, {1, 1, 1, 1});
  CGContextAddPath(context, CGPath::roundedRect(content, kCorner));
  CGContextFillPath(context);
  if (placement_.arrow == Arrow::none) return;
  CGContextAddPath(context, arrowPath(placement_));
  CGContextFillPath(context);
}

}  // namespace ios
