#include "Foundation/NSLocale.h"

#include <array>
#include <string_view>

#include "Device/Device.h"

namespace ios {

std::vector<std::string> NSLocale::preferredLanguages() {
  return Device::current().languages();
}

bool NSLocale::isRightToLeft(const std::string& language) {
  // A script that is named decides; else the language does.
  for (const char* script : {"-Arab", "-Hebr", "-Syrc", "-Thaa"}) {
    if (language.find(script) != std::string::npos) return true;
  }
  const std::string_view base = std::string_view(language).substr(0, language.find_first_of("-_"));
  if (language.find("-Latn") != std::string::npos || language.find("-Cyrl") != std::string::npos)
    return false;
  constexpr std::array<std::string_view, 11> kRightToLeft = {"ar", "he", "iw", "fa", "ur", "ps",
                                                             "sd", "ug", "yi", "dv", "ckb"};
  for (const auto known : kRightToLeft) {
    if (base == known) return true;
  }
  return false;
}

}  // namespace ios
