#include "info/TLVConstants.h"

#include <array>
#include <charconv>
#include <string>

#include "Foundation/NSLocale.h"
#include "Foundation/NSPathUtilities.h"
#include "Foundation/Print.h"
#include "Tellvane/UIDevice+Tellvane.h"
#include "UIKit/UIDevice.h"

namespace tellvane {
namespace {

constexpr char kUnnamed[] = "Tellvane-Dev";
constexpr char kShortVersionKey[] = "CFBundleShortVersionString";
constexpr char kDisplayNameKey[] = "CFBundleDisplayName";

}  // namespace

const char TLV_BUNDLE_IDENTIFIER[] = TELLVANE_BUNDLE_IDENTIFIER;
const char TLV_URL[] = "Tellvane://" TELLVANE_COMPANION_IDENTIFIER;
const char TLV_STORE_PAGE[] = TELLVANE_STORE_PAGE;

const std::shared_ptr<NSBundle>& TLV_BUNDLE() {
  static auto& bundle = *new std::shared_ptr<NSBundle>([] {
    if (auto found = NSBundle::bundleWithIdentifier(TLV_BUNDLE_IDENTIFIER)) return found;
    NSLog(std::string("Tellvane: the bundle ") + TLV_BUNDLE_IDENTIFIER +
          " was not found; texts and versions are missing");
    return std::make_shared<NSBundle>("");
  }());
  return bundle;
}

const std::string& TLV_SCREEN_RECORDING_PATH() {
  static auto& path = *new std::string(NSHomeDirectory() + "/tmp/screenCapture.mp4");
  return path;
}

std::string versionText(const std::optional<NSDictionary>& info, const std::string& prefix) {
  const PropertyList facts = info.value_or(NSDictionary{});
  const std::string* version = facts.text(kShortVersionKey);
  const std::string* build = facts.text(kCFBundleVersionKey);
  return version && build ? prefix + *version + "." + *build : "0";
}

std::string nameText(const std::optional<NSDictionary>& info, const std::vector<std::string>& keys) {
  const PropertyList facts = info.value_or(NSDictionary{});
  for (const auto& key : keys) {
    if (const std::string* name = facts.text(key)) return *name;
  }
  return kUnnamed;
}

std::string resolutionText(double width, double height) {
  // std::to_chars ignores the locale.
  const auto decimal = [](double value) {
    std::array<char, 400> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), value, std::chars_format::fixed, 2).ptr;
    return std::string(digits.begin(), end);
  };
  return decimal(width) + " x " + decimal(height);
}

std::string TLV_SDK_VERSION() {
  return versionText(TLV_BUNDLE()->infoDictionary(), "iOS-");
}

std::string APP_VERSION() {
  return versionText(NSBundle::mainBundle()->infoDictionary(), "");
}

std::string APP_NAME() {
  return nameText(NSBundle::mainBundle()->infoDictionary(), {kDisplayNameKey, kCFBundleNameKey});
}

std::string APP_BUNDLE_NAME() {
  return nameText(NSBundle::mainBundle()->infoDictionary(), {kCFBundleNameKey});
}

std::string OS_VERSION() {
  return UIDevice::currentDevice()->systemVersion();
}

std::string DEVICE_RESOLUTION() {
  const CGSize size = screenResolution(*UIDevice::currentDevice());
  return resolutionText(size.width, size.height);
}

std::string DEVICE_LANGUAGE() {
  const auto languages = NSLocale::preferredLanguages();
  return languages.empty() ? "en-US" : languages.front();
}

std::string DEVICE_MODEL() {
  return deviceModel(*UIDevice::currentDevice());
}

}  // namespace tellvane
