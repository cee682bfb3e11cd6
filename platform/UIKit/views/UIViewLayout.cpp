#include "UIKit/UIView.h"
#include "UIKit/UIWindow.h"

namespace ios {
namespace {

/// One axis of a subview in its superview.
struct Span {
  CGFloat start, length;
};

/// Spreads the superview's growth over the flexible parts in proportion to their sizes, or equally if these
/// are all zero. Without a flexible part the far margin takes it.
Span resized(Span span, CGFloat oldTotal, CGFloat newTotal, bool nearFlexible, bool lengthFlexible,
             bool farFlexible) {
  const CGFloat growth = newTotal - oldTotal;
  const CGFloat farMargin = oldTotal - span.start - span.length;
  const CGFloat flexible =
      (nearFlexible ? span.start : 0) + (lengthFlexible ? span.length : 0) + (farFlexible ? farMargin : 0);
  const int parts = nearFlexible + lengthFlexible + farFlexible;
  const auto share = [&](bool isFlexible, CGFloat part) {
    if (!isFlexible) return 0.0;
    return flexible > 0 ? growth * part / flexible : growth / parts;
  };
  const CGFloat length = span.length + share(lengthFlexible, span.length);
  return {span.start + share(nearFlexible, span.start), length > 0 ? length : 0};
}

}  // namespace

void UIView::autoresizeSubviews(CGSize oldSize) {
  const auto subviews = subviews_;
  for (const auto& view : subviews) view->autoresize(oldSize, bounds_.size);
}

void UIView::autoresize(CGSize oldSuperviewSize, CGSize newSuperviewSize) {
  if (autoresizingMask_ == UIViewAutoresizingNone) return;
  const auto has = [this](unsigned bit) { return (autoresizingMask_ & bit) != 0; };
  const CGRect old = frame();
  const Span x = resized({old.minX(), old.width()}, oldSuperviewSize.width, newSuperviewSize.width,
                         has(UIViewAutoresizingFlexibleLeftMargin), has(UIViewAutoresizingFlexibleWidth),
                         has(UIViewAutoresizingFlexibleRightMargin));
  const Span y = resized({old.minY(), old.height()}, oldSuperviewSize.height, newSuperviewSize.height,
                         has(UIViewAutoresizingFlexibleTopMargin), has(UIViewAutoresizingFlexibleHeight),
                         has(UIViewAutoresizingFlexibleBottomMargin));
  setFrame({{x.start, y.start}, {x.length, y.length}});
}

void UIView::setNeedsLayout() {
  needsLayout_ = true;
  if (auto window = this->window()) {
    window->markDirty();
    window->layoutAtNextRefresh();
  }
}

void UIView::layoutIfNeeded() {
  // Laying out may ask for layout again (a size that depends on the subviews'); what still asks after the
  // second round would ask forever.
  for (int round = 0; needsLayout_ && round < 2; ++round) {
    needsLayout_ = false;
    tellControllerOfLayout();
    layoutSubviews();
  }
  needsLayout_ = false;
  const auto subviews = subviews_;
  for (const auto& view : subviews) view->layoutIfNeeded();
}

void UIView::setNeedsDisplay() {
  if (auto window = this->window()) window->markDirty();
}

}  // namespace ios
