#pragma once

#include "UIKit/UIView.h"

namespace ios {

/// The place of a popover: its content, and the tip of its arrow if it has one.
struct PopoverPlacement {
  enum class Arrow { none, up, down, left, right };
  CGRect content;
  Arrow arrow = Arrow::none;
  CGPoint tip;
};

/// A place inside `area` for content of `size` that points at `anchor`. Takes the first of the permitted
/// sides (arrow up, down, left, right: bits 1, 2, 4, 8) with enough room, or else the one with the most,
/// and shrinks the content to fit. Without a permitted side, centres it on the anchor. All in one
/// coordinate system.
PopoverPlacement placePopover(CGSize size, const CGRect& anchor, const CGRect& area, unsigned permitted);

/// The white bubble of a popover with its arrow and soft shadow around the content view.
class PopoverBubble : public Subclass<PopoverBubble, UIView> {
 public:
  PopoverBubble();
  static MethodList methods() { return {}; }
  void setContent(const std::shared_ptr<UIView>& content);
  /// In the superview's coordinates.
  void place(const PopoverPlacement& placement);
  bool pointInside(CGPoint point, const std::shared_ptr<UIEvent>& event) const override;
  void drawRect(const CGRect& rect) override;

 private:
  std::shared_ptr<UIView> clip_;  // rounds the content's corners
  PopoverPlacement placement_;    // in the bubble's coordinates
};

}  // namespace ios
