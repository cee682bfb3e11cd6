#pragma once

#include <memory>

#include "CoreGraphics/CGGeometry.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class UIView;

/// Sides on which a popover may show its arrow; a set of bits.
enum UIPopoverArrowDirection : unsigned { UIPopoverArrowDirectionNone = 0, UIPopoverArrowDirectionAny = 15 };

/// Where a popover points.
class UIPopoverPresentationController : public NSObject {
 public:
  std::weak_ptr<UIView> sourceView;
  CGRect sourceRect;  // in the source view's coordinates
  unsigned permittedArrowDirections = UIPopoverArrowDirectionAny;
};

}  // namespace ios
