#pragma once

#include <memory>

#include "CoreGraphics/CGContext.h"
#include "UIKit/UIImage.h"

namespace ios {

/// The calling thread's stack of drawing contexts. Coordinates of an image context are points, y downwards.

/// Pushes a bitmap context of `size` points at `scale` pixels per point; scale 0 means the main
/// screen's. Clear to start with, or black if `opaque`. An empty size gives no context: the stack gets
/// an entry without one.
void UIGraphicsBeginImageContextWithOptions(CGSize size, bool opaque, CGFloat scale);
/// What was drawn so far; empty without a bitmap context of that kind on top. Taking it does not copy the
/// pixels; drawing on after that does, once.
std::shared_ptr<UIImage> UIGraphicsGetImageFromCurrentImageContext();
void UIGraphicsEndImageContext();

/// The top of the stack; empty if there is none.
CGContextRef UIGraphicsGetCurrentContext();
void UIGraphicsPushContext(const CGContextRef& context);
void UIGraphicsPopContext();

}  // namespace ios
