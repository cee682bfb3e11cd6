#include "Tellvane/UIDevice+Tellvane.h"

#include <algorithm>
#include <array>
#include <initializer_list>

#include "Darwin/utsname.h"
#include "UIKit/UIScreen.h"

namespace tellvane {
namespace {

struct Model {
  std::initializer_list<std::string_view> codes;
  std::string_view name;
};

const Model kModels[] = {
    {{"iPod1,1"}, "iPod Touch 1G"},
    {{"iPod2,1"}, "iPod Touch 2G"},
    {{"iPod3,1"}, "iPod Touch 3G"},
    {{"iPod4,1"}, "iPod Touch 4G"},
    {{"iPod5,1"}, "iPod Touch 5G"},
    {{"iPod7,1"}, "iPod Touch 6G"},
    {{"iPhone1,1"}, "iPhone 2G"},
    {{"iPhone1,2"}, "iPhone 3G"},
    {{"iPhone2,1"}, "iPhone 3GS"},
    {{"iPhone3,1", "iPhone3,2", "iPhone3,3"}, "iPhone 4"},
    {{"iPhone4,1"}, "iPhone 4S"},
    {{"iPhone5,1", "iPhone5,2"}, "iPhone 5"},
    {{"iPhone5,3", "iPhone5,4"}, "iPhone 5C"},
    {{"iPhone6,1", "iPhone6,2"}, "iPhone 5S"},
    {{"iPhone7,2"}, "iPhone 6"},
    {{"iPhone7,1"}, "iPhone 6 Plus"},
    {{"iPhone8,1"}, "iPhone 6S"},
    {{"iPhone8,2"}, "iPhone 6S Plus"},
    {{"iPhone8,4"}, "iPhone SE"},
    {{"iPhone9,1", "iPhone9,3"}, "iPhone 7"},
    {{"iPhone9,2", "iPhone9,4"}, "iPhone 7 Plus"},
    {{"iPad1,1"}, "iPad 1"},
    {{"iPad2,1", "iPad2,2", "iPad2,3", "iPad2,4"}, "iPad 2"},
    {{"iPad3,1", "iPad3,2", "iPad3,3"}, "iPad 3"},
    {{"iPad3,4", "iPad3,5", "iPad3,6"}, "iPad 4"},
    {{"iPad4,1", "iPad4,2", "iPad4,3"}, "iPad Air"},
    {{"iPad5,3", "iPad5,4"}, "iPad Air 2"},
    {{"iPad2,5", "iPad2,6", "iPad2,7"}, "iPad Mini"},
    {{"iPad4,4", "iPad4,5", "iPad4,6"}, "iPad Mini 2"},
    {{"iPad4,7", "iPad4,8", "iPad4,9"}, "iPad Mini 3"},
    {{"iPad5,1", "iPad5,2"}, "iPad Mini 4"},
    {{"iPad6,7", "iPad6,8"}, "iPad Pro (12.9 inch)"},
    {{"iPad6,3", "iPad6,4"}, "iPad Pro (9.7 inch)"},
    {{"i386", "x86_64"}, "Simulator"},
};

constexpr std::array<std::string_view, 7> kOrientations = {
    "Unknown", "Portrait", "Portrait Upside Down", "Landscape Left", "Landscape Right",
    "Face Up", "Face Down"};

// A category's operations take the object they are called on; these only read it.
template <auto Property>
auto property(UIDevice& device) {
  return Property(device);
}

const Category kProperties{UIDevice::classObject(),
                           {{"screenResolution", &property<&screenResolution>},
                            {"deviceCode", &property<&deviceCode>},
                            {"deviceFamily", &property<&deviceFamily>},
                            {"deviceModel", &property<&deviceModel>},
                            {"deviceOrientationString", &property<&deviceOrientationString>}}};

}  // namespace

std::string modelName(std::string_view deviceCode) {
  for (const Model& model : kModels) {
    if (std::find(model.codes.begin(), model.codes.end(), deviceCode) != model.codes.end()) {
      return std::string(model.name);
    }
  }
  return std::string(deviceCode);
}

std::string orientationName(long orientation) {
  if (orientation < 0 || orientation >= static_cast<long>(kOrientations.size())) return "Portrait";
  return std::string(kOrientations[static_cast<std::size_t>(orientation)]);
}

CGSize screenResolution(const UIDevice&) {
  const CGRect bounds = UIScreen::mainScreen()->bounds();
  const CGFloat scale = UIScreen::mainScreen()->scale();
  return {bounds.size.width * scale, bounds.size.height * scale};
}

std::string deviceCode(const UIDevice&) {
  utsname record{};
  uname(&record);  // a record that was not filled stays zero, and the code empty
  const std::string_view machine(record.machine, sizeof record.machine);
  return std::string(machine.substr(0, machine.find('\0')));
}

std::string deviceFamily(const UIDevice&) {
  return UIDevice::currentDevice()->model();
}

std::string deviceModel(const UIDevice&) {
  return modelName(deviceCode(UIDevice()));
}

std::string deviceOrientationString(const UIDevice&) {
  return orientationName(static_cast<long>(UIDevice::currentDevice()->orientation()));
}

}  // namespace tellvane
