#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ObjectiveC/NSObject.h"

namespace ios {

/// Settings of the application. Only the argument domain exists: `-debug YES` on the command line of a launch
/// sets "debug". Read-only; any thread.
class NSUserDefaults : public NSObject {
 public:
  static const std::shared_ptr<NSUserDefaults>& standardUserDefaults();
  std::optional<std::string> stringForKey(const std::string& key) const;
  /// "YES", "true" and non-zero numbers are true; anything else, and a missing key, false.
  bool boolForKey(const std::string& key) const;
};

}  // namespace ios
