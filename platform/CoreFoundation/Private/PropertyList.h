#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "CoreFoundation/PropertyList.h"

namespace ios::plist {

/// What a property list may unfold to; see PropertyList::parse.
inline constexpr std::size_t kMaximumDepth = 512;
inline constexpr std::size_t kMaximumValues = 1'000'000;
inline constexpr std::size_t kMaximumBytes = 256'000'000;
inline const std::string kTooDeep = "nests deeper than 512 levels";
inline const std::string kTooMany = "unfolds to more than 1,000,000 values";
inline const std::string kTooLarge = "unfolds to more than 256 MB of texts and data";

/// Empty, with `problem` set, when the bytes are damaged or exceed the limits above.
std::optional<PropertyList> parseXML(std::span<const std::uint8_t> bytes, std::string& problem);
std::optional<PropertyList> parseBinary(std::span<const std::uint8_t> bytes, std::string& problem);

}  // namespace ios::plist
