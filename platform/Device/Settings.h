#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CoreFoundation/PropertyList.h"

namespace ios {

/// The user's answer to an application's wish for something guarded; values as the platform numbers them.
enum class Permission : int { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// How large the owner of the device wants texts: the platform's content size categories, in their order.
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

/// What the owner of the device has set; kept in Settings.plist.
struct DeviceSettings {
  std::vector<std::string> languages = {"en-US"};
  std::string osVersion = "10.3.1";
  std::string profile = "iPhone 6";
  /// Device orientation: 1 portrait, 2 upside down, 3 landscape left, 4 landscape right, 5 face up, 6 face
  /// down.
  int orientation = 1;
  TextSize textSize = TextSize::L;
  /// By bundle identifier, then by service: "microphone", "photos".
  std::map<std::string, std::map<std::string, Permission>> permissions = {};
  bool operator==(const DeviceSettings&) const = default;
};

/// Settings.plist's form: "Languages", "OSVersion", "Profile", "Orientation", "TextSize", and "Permissions"
/// by bundle identifier and service, as words ("authorized").
PropertyList settingsPropertyList(const DeviceSettings& settings);
/// Members that are missing have their default. Empty, with `problem` set, when one has no meaning.
std::optional<DeviceSettings> settingsFromPropertyList(const PropertyList& list, std::string& problem);

}  // namespace ios
