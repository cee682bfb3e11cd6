#pragma once

#include <memory>
#include <string>

#include "Foundation/NSError.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// Files of the device. Any thread.
class NSFileManager : public NSObject {
 public:
  static const std::shared_ptr<NSFileManager>& defaultManager();
  bool fileExistsAtPath(const std::string& path) const;
  /// Removes a file, or a folder with all in it. False, with `error` set, when it could not.
  bool removeItemAtPath(const std::string& path, std::shared_ptr<NSError>& error) const;
};

}  // namespace ios
