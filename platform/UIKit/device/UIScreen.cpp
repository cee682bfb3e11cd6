#include "UIKit/UIScreen.h"

#include "Device/Device.h"

namespace ios {

const std::shared_ptr<UIScreen>& UIScreen::mainScreen() {
  static const auto& screen = *new std::shared_ptr<UIScreen>(std::make_shared<UIScreen>());
  return screen;
}

CGRect UIScreen::bounds() const {
  return {{0, 0}, Device::current().screenSize()};
}

CGFloat UIScreen::scale() const {
  return Device::current().profile().scale;
}

}  // namespace ios
