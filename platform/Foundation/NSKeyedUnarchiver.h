#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "CoreFoundation/PropertyList.h"

namespace ios {

/// Reads keyed archives of property-list data. Input may come from strangers: whatever the bytes, it returns.
class NSKeyedUnarchiver {
 public:
  /// The root object; empty when the bytes are not a keyed archive, refer to themselves, nest deeper than 128 levels,
  /// hold other classes than dictionaries, arrays, strings, data and numbers, or unfold to more than 100,000 values or
  /// 256 MB of strings and data. `problem`, if given, says which.
  static std::optional<PropertyList> unarchiveObjectWithData(std::span<const std::uint8_t> data,
                                                             std::string* problem = nullptr);
};

}  // namespace ios
