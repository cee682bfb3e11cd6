#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ios::photos {

enum class Kind { asset, album };

/// Eight, four, four, four and twelve upper-case hexadecimal digits with "-" between, and nothing else.
bool isUUID(std::string_view text);
/// "<UUID>/L0/001" for an asset, "<UUID>/L0/040" for an album.
std::string localIdentifier(Kind kind, const std::string& uuid);
/// The UUID of an identifier of exactly that form; empty for any other text.
std::optional<std::string> uuidOf(Kind kind, std::string_view localIdentifier);

std::string randomUUID();
/// The same numbers give the same UUID; different ones different UUIDs.
std::string derivedUUID(std::uint64_t library, std::uint64_t count);

}  // namespace ios::photos
