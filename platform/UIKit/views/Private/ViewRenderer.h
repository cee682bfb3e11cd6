#pragma once

#include "CoreGraphics/CGContext.h"
#include "UIKit/UIView.h"

namespace ios {

/// Draws a tree of views as the display shows it, values on their way included, into a context whose y goes
/// downwards. It lays nothing out. Main thread.
class ViewRenderer {
 public:
  explicit ViewRenderer(CGContextRef context) : context_(std::move(context)) {}

  /// The view's content and subviews, in the view's own coordinates; its place, transform and transparency
  /// are the caller's. Nothing outside of `visible` needs to be drawn.
  void drawContents(UIView& view, const CGRect& visible);
  /// The view where it stands in its superview, in whose coordinates `visible` is.
  void draw(UIView& view, const CGRect& visible);

 private:
  void drawBackground(UIView& view, const CGRect& bounds);
  void drawOwnContent(UIView& view, const CGRect& bounds);
  void drawBorder(UIView& view, const CGRect& bounds);
  CGContextRef context_;
};

}  // namespace ios
