#include "Device/Settings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <regex>
#include <utility>

#include "Device/ScreenProfile.h"

namespace ios {
namespace {

constexpr std::array<std::pair<Permission, const char*>, 4> kPermissionWords{{
    {Permission::notDetermined, "notDetermined"},
    {Permission::restricted, "restricted"},
    {Permission::denied, "denied"},
    {Permission::authorized, "authorized"},
}};

constexpr std::array<std::string_view, kTextSizes> kTextSizeNames{
    "XS",
    "S",
    "M",
    "L",
    "XL",
    "XXL",
    "XXXL",
    "AccessibilityM",
    "AccessibilityL",
    "AccessibilityXL",
    "AccessibilityXXL",
    "AccessibilityXXXL",
};

bool readTextSize(const PropertyList& value, TextSize& size) {
  const auto known = value.text() ? textSizeNamed(*value.text()) : std::nullopt;
  if (known) size = *known;
  return known.has_value();
}

bool readLanguages(const PropertyList& value, std::vector<std::string>& languages) {
  if (!value.array()) return false;
  languages.clear();
  for (const auto& language : *value.array()) {
    if (!language.text() || !isLanguageTag(*language.text())) return false;
    languages.push_back(*language.text());
  }
  return true;
}

bool readProfile(const PropertyList& value, std::string& profile) {
  const ScreenProfile* known = value.text() ? ScreenProfile::named(*value.text()) : nullptr;
  if (known) profile = known->name;
  return known != nullptr;
}

bool readPermissions(const PropertyList& value, decltype(DeviceSettings::permissions)& permissions) {
  if (!value.dictionary()) return false;
  for (const auto& [bundle, services] : *value.dictionary()) {
    if (!services.dictionary()) return false;
    for (const auto& [service, answer] : *services.dictionary()) {
      const auto word = std::find_if(
          kPermissionWords.begin(), kPermissionWords.end(),
          [given = answer.text()](const auto& entry) { return given && *given == entry.second; });
      if (word == kPermissionWords.end()) return false;
      permissions[bundle][service] = word->first;
    }
  }
  return true;
}

/// A number of a property list, where a whole one may have lost its point.
std::optional<double> number(const PropertyList* value) {
  if (!value) return std::nullopt;
  if (value->real()) return *value->real();
  return value->integer() ? std::optional(static_cast<double>(*value->integer())) : std::nullopt;
}

bool readLocation(const PropertyList& list, std::optional<Location>& location) {
  const auto *latitude = list.member("Latitude"), *longitude = list.member("Longitude");
  if (!latitude && !longitude) return true;
  const auto north = number(latitude), east = number(longitude);
  if (!north || !east || !(std::abs(*north) <= 90) || !(std::abs(*east) <= 180)) return false;
  location = Location{*north, *east};
  return true;
}

}  // namespace

std::string_view textSizeName(TextSize size) {
  return kTextSizeNames.at(static_cast<std::size_t>(size));
}

std::optional<TextSize> textSizeNamed(std::string_view name) {
  const auto* const found = std::find(kTextSizeNames.begin(), kTextSizeNames.end(), name);
  if (found == kTextSizeNames.end()) return std::nullopt;
  return static_cast<TextSize>(found - kTextSizeNames.begin());
}

bool isLanguageTag(const std::string& text) {
  constexpr std::size_t kLongest = 100;  // the matcher recurses
  // Language and its extensions, script, region, variants, extensions under a letter, and the
  // private-use part.
  static const auto& form = *new std::regex(
      "[a-z]{2,8}(-[a-z]{3}){0,3}(-[a-z]{4})?(-([a-z]{2}|[0-9]{3}))?(-([a-z0-9]{5,8}|[0-9][a-z0-9]{3}))*"
      "(-[a-wyz0-9](-[a-z0-9]{2,8})+)*(-x(-[a-z0-9]{1,8})+)?",
      std::regex::icase | std::regex::optimize);
  return text.size() <= kLongest && std::regex_match(text, form);
}

PropertyList settingsPropertyList(const DeviceSettings& settings) {
  NSDictionary permissions;
  for (const auto& [bundle, services] : settings.permissions) {
    NSDictionary answers;
    for (const auto& [service, answer] : services) {
      answers[service] = kPermissionWords.at(static_cast<std::size_t>(answer)).second;
    }
    permissions[bundle] = answers;
  }
  NSDictionary list{
      {"Languages", NSArray(settings.languages.begin(), settings.languages.end())},
      {"OSVersion", settings.osVersion},
      {"Profile", settings.profile},
      {"Orientation", settings.orientation},
      {"TextSize", std::string(textSizeName(settings.textSize))},
      {"StatusBarTime", settings.statusBarTime},
      {"Permissions", permissions},
  };
  if (settings.location) {
    list["Latitude"] = settings.location->latitude;
    list["Longitude"] = settings.location->longitude;
  }
  if (settings.airplaneMode) list["AirplaneMode"] = true;
  if (settings.volume != DeviceSettings().volume) list["Volume"] = settings.volume;
  return list;
}

std::optional<DeviceSettings> settingsFromPropertyList(const PropertyList& list, std::string& problem) {
  const auto fail = [&problem](const std::string& what) {
    problem = what;
    return std::nullopt;
  };
  if (!list.dictionary()) return fail("is not a dictionary");
  DeviceSettings settings;
  if (const auto* value = list.member("Languages"); value && !readLanguages(*value, settings.languages)) {
    return fail("Languages is not an array of language tags");
  }
  if (const auto* value = list.member("OSVersion")) {
    if (!value->text()) return fail("OSVersion is not a string");
    settings.osVersion = *value->text();
  }
  if (const auto* value = list.member("Profile"); value && !readProfile(*value, settings.profile)) {
    return fail("Profile does not name a known screen profile");
  }
  if (const auto* value = list.member("Orientation")) {
    if (!value->integer() || *value->integer() < 1 || *value->integer() > 6)
      return fail("Orientation is not 1 to 6");
    settings.orientation = static_cast<int>(*value->integer());
  }
  if (const auto* value = list.member("TextSize"); value && !readTextSize(*value, settings.textSize)) {
    return fail("TextSize does not name a known size");
  }
  if (const auto* value = list.member("StatusBarTime")) {
    if (!value->text()) return fail("StatusBarTime is no text");
    settings.statusBarTime = *value->text();
  }
  if (const auto* value = list.member("Permissions");
      value && !readPermissions(*value, settings.permissions)) {
    return fail("Permissions has an answer that is not a known one");
  }
  if (!readLocation(list, settings.location)) return fail("Latitude and Longitude are no place");
  if (const auto* value = list.member("AirplaneMode")) {
    if (!value->boolean()) return fail("AirplaneMode is neither true nor false");
    settings.airplaneMode = *value->boolean();
  }
  if (const auto* value = list.member("Volume")) {
    if (!value->integer() || *value->integer() < 0 || *value->integer() > DeviceSettings::kLoudest)
      return fail("Volume is not 0 to 16");
    settings.volume = static_cast<int>(*value->integer());
  }
  return settings;
}

}  // namespace ios
