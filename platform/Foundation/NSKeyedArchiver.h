#pragma once

#include <memory>

#include "CoreFoundation/PropertyList.h"
#include "Foundation/NSData.h"

namespace ios {

/// Writes objects as a keyed archive: a binary property list with "$archiver", "$objects", "$top" and
/// "$version", as any reader of that form expects it.
class NSKeyedArchiver {
 public:
  /// `root` is property-list data without UIDs. The same value gives the same bytes.
  static std::shared_ptr<NSData> archivedDataWithRootObject(const PropertyList& root);
};

}  // namespace ios
