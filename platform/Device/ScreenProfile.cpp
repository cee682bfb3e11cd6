#include "Device/ScreenProfile.h"

#include <strings.h>

namespace ios {

const std::vector<ScreenProfile>& ScreenProfile::all() {
  static const auto& profiles = *new std::vector<ScreenProfile>{
      {"iPhone SE", {320, 568}, 2, "iPhone8,4", "iPhone"},
      {"iPhone 6", {375, 667}, 2, "iPhone7,2", "iPhone"},
      {"iPhone 6 Plus", {414, 736}, 3, "iPhone7,1", "iPhone"},
      {"iPad Air 2", {768, 1024}, 2, "iPad5,3", "iPad"},
  };
  return profiles;
}

const ScreenProfile* ScreenProfile::named(const std::string& name) {
  for (const auto& profile : all()) {
    if (strcasecmp(profile.name.c_str(), name.c_str()) == 0) return &profile;
  }
  return nullptr;
}

}  // namespace ios
