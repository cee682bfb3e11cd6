#pragma once

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

namespace ios::photos {

/// Where the library lies on the device.
struct MediaFolder {
  std::filesystem::path root;  // <device>/Media

  std::filesystem::path database() const { return root / "Photos.sqlite"; }
  std::filesystem::path movies() const { return root / "DCIM" / "100TLVNE"; }
  /// A movie's file follows from its number alone, so nothing in the database leads elsewhere.
  std::filesystem::path movie(std::int64_t number) const {
    char name[32];
    std::snprintf(name, sizeof name, "IMG_%04lld.MOV", static_cast<long long>(number));
    return movies() / name;
  }
  /// The number of a file that has such a name.
  std::optional<std::int64_t> numberOf(const std::string& name) const {
    constexpr std::size_t kStart = 4, kEnd = 4;
    std::int64_t number = 0;
    if (name.size() <= kStart + kEnd) return std::nullopt;
    std::from_chars(name.data() + kStart, name.data() + name.size() - kEnd, number);
    if (number <= 0 || movie(number).filename() != name) return std::nullopt;
    return number;
  }
};

}  // namespace ios::photos
