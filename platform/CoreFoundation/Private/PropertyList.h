#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "Base/Result.h"
#include "CoreFoundation/PropertyList.h"

namespace ios::plist {

/// What a property list may unfold to; see PropertyList::parse.
inline constexpr std::size_t kMaximumDepth = 512;
inline constexpr std::size_t kMaximumValues = 1'000'000;
inline constexpr std::size_t kMaximumBytes = 256'000'000;
inline const std::string kTooDeep = "nests deeper than 512 levels";
inline const std::string kTooMany = "unfolds to more than 1,000,000 values";
inline const std::string kTooLarge = "unfolds to more than 256 MB of strings and data";

/// What was read, or what is wrong with it: "is a binary property list cut short".
using Parsed = Result<PropertyList, std::string>;

/// Fail when the bytes are damaged or exceed the limits above.
Parsed parseXML(std::span<const std::uint8_t> bytes);
Parsed parseBinary(std::span<const std::uint8_t> bytes);

}  // namespace ios::plist
