#pragma once

#include <memory>

#include "CoreGraphics/CGGeometry.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class UIScreen : public NSObject {
 public:
  static const std::shared_ptr<UIScreen>& mainScreen();
  /// In points, as the device is held now.
  CGRect bounds() const;
  CGFloat scale() const;
};

}  // namespace ios
