#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CoreFoundation/PropertyList.h"

namespace ios {

/// The user's answer to an application's request for access; the platform's values.
enum class Permission : int { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// The text size that the device's owner has chosen: the platform's content size categories, in order.
enum class TextSize : int {
  XS,
  S,
  M,
  L,
  XL,
  XXL,
  XXXL,
  AccessibilityM,
  AccessibilityL,
  AccessibilityXL,
  AccessibilityXXL,
  AccessibilityXXXL,
};
inline constexpr int kTextSizes = 12;
/// "AccessibilityM"
std::string_view textSizeName(TextSize size);
std::optional<TextSize> textSizeNamed(std::string_view name);

/// Whether `text` has the form of a language tag: "de", "de-AT", "zh-Hant-TW" (BCP 47).
bool isLanguageTag(const std::string& text);

struct Location {
  double latitude = 0, longitude = 0;  // degrees
  bool operator==(const Location&) const = default;
};

/// What the owner of the device has set; kept in Settings.plist.
struct DeviceSettings {
  std::vector<std::string> languages = {"en-US"};  // language tags, most preferred first
  std::string osVersion = "10.3.1";
  std::string profile = "iPhone 6";
  /// Device orientation: 1 portrait, 2 upside down, 3 landscape left, 4 landscape right, 5
  /// face up, 6 face down.
  int orientation = 1;
  TextSize textSize = TextSize::L;
  std::string statusBarTime = {};  // stands in the status bar instead of the time of day; empty: that does
  /// By bundle identifier, then by service: "microphone", "photos".
  std::map<std::string, std::map<std::string, Permission>> permissions = {};
  // Nothing of the platform depends on these yet.
  std::optional<Location> location = std::nullopt;
  bool airplaneMode = false;
  static constexpr int kLoudest = 16;
  int volume = kLoudest / 2;
  bool operator==(const DeviceSettings&) const = default;
};

/// Settings.plist's form: "Languages", "OSVersion", "Profile", "Orientation", "TextSize", "StatusBarTime", "Permissions"
/// by bundle identifier and service, as words ("authorized"), and, unless they are as at first, "Latitude" and
/// "Longitude", "AirplaneMode", "Volume".
PropertyList settingsPropertyList(const DeviceSettings& settings);
/// Missing members get their default. Empty, with `problem` set, when a member's value is invalid.
std::optional<DeviceSettings> settingsFromPropertyList(const PropertyList& list, std::string& problem);

}  // namespace ios
