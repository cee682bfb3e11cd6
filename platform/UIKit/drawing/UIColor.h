#pragma once

#include <memory>

#include "CoreGraphics/CGColor.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class UIColor : public NSObject {
 public:
  explicit UIColor(CGColor color) : color_(color) {}
  static std::shared_ptr<UIColor> colorWithRedGreenBlueAlpha(double red, double green, double blue,
                                                             double alpha);
  static std::shared_ptr<UIColor> colorWithWhiteAlpha(double white, double alpha);
  /// 0xRRGGBB, opaque.
  static std::shared_ptr<UIColor> colorWithHex(unsigned rgb);
  static std::shared_ptr<UIColor> clearColor();
  static std::shared_ptr<UIColor> whiteColor();
  static std::shared_ptr<UIColor> blackColor();
  const CGColor& CGColorValue() const { return color_; }

 private:
  CGColor color_;
};

}  // namespace ios
