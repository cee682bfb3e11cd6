#include "UIKit/UIColor.h"

namespace ios {

std::shared_ptr<UIColor> UIColor::colorWithRedGreenBlueAlpha(double red, double green, double blue,
                                                             double alpha) {
  return std::make_shared<UIColor>(CGColor{red, green, blue, alpha});
}

std::shared_ptr<UIColor> UIColor::colorWithWhiteAlpha(double white, double alpha) {
  return colorWithRedGreenBlueAlpha(white, white, white, alpha);
}

std::shared_ptr<UIColor> UIColor::colorWithHex(unsigned rgb) {
  return colorWithRedGreenBlueAlpha((rgb >> 16 & 255) / 255.0, (rgb >> 8 & 255) / 255.0, (rgb & 255) / 255.0,
                                    1);
}

std::shared_ptr<UIColor> UIColor::clearColor() {
  return colorWithWhiteAlpha(0, 0);
}

std::shared_ptr<UIColor> UIColor::whiteColor() {
  return colorWithWhiteAlpha(1, 1);
}

std::shared_ptr<UIColor> UIColor::blackColor() {
  return colorWithWhiteAlpha(0, 1);
}

}  // namespace ios
