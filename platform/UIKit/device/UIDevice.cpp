#include "UIKit/UIDevice.h"

#include "Device/Device.h"

namespace ios {

MethodList UIDevice::methods() {
  return {};
}

const std::shared_ptr<UIDevice>& UIDevice::currentDevice() {
  static const auto& device = *new std::shared_ptr<UIDevice>(std::make_shared<UIDevice>());
  return device;
}

std::string UIDevice::systemVersion() const {
  return Device::current().osVersion();
}

std::string UIDevice::model() const {
  return Device::current().profile().model;
}

UIDeviceOrientation UIDevice::orientation() const {
  const int orientation = Device::current().settings().orientation;
  const bool known = orientation >= static_cast<int>(UIDeviceOrientation::portrait) &&
                     orientation <= static_cast<int>(UIDeviceOrientation::faceDown);
  return known ? static_cast<UIDeviceOrientation>(orientation) : UIDeviceOrientation::unknown;
}

UIUserInterfaceIdiom UIDevice::userInterfaceIdiom() const {
  return Device::current().profile().isPad() ? UIUserInterfaceIdiom::pad : UIUserInterfaceIdiom::phone;
}

}  // namespace ios
