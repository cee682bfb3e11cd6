#pragma once

#include <string>
#include <vector>

namespace ios {

class NSLocale {
 public:
  /// The user's languages, most preferred first: "de-AT", "en-US". May be empty. Any thread.
  static std::vector<std::string> preferredLanguages();
  /// Whether text of this language runs from right to left.
  static bool isRightToLeft(const std::string& language);
};

}  // namespace ios
