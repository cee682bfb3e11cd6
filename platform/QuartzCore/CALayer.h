#pragma once

#include "CoreGraphics/CGContext.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// What a view looks like apart from its content: corners, border. Main thread.
class CALayer : public NSObject {
 public:
  CGFloat cornerRadius = 0;
  CGFloat borderWidth = 0;
  CGColor borderColor{0, 0, 0, 1};
  bool masksToBounds = false;

  /// Draws the layer's tree into `context`, the layer's own origin at the context's.
  virtual void renderInContext(const CGContextRef& context) = 0;
};

}  // namespace ios
