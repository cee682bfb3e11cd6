#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ios {

/// One element of an interface file, with those inside it; texts between elements carry nothing there.
struct NibElement {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<NibElement> children;

  /// An attribute's value; null when there is none.
  const std::string* find(std::string_view attribute) const;
  /// The same, empty when there is none.
  std::string text(std::string_view attribute) const;
  /// Whether the attribute is "YES".
  bool yes(std::string_view attribute) const { return text(attribute) == "YES"; }
  /// A finite number of at most `kLargestNumber` either way; empty when it is missing or is
  /// not such a number.
  std::optional<double> number(std::string_view attribute) const;
  /// The first element of that name inside; null when there is none.
  const NibElement* child(std::string_view childName) const;

  static constexpr double kLargestNumber = 100'000;
};

inline constexpr std::size_t kLargestNib = 1 << 20;  // bytes

/// Reads the whole of an interface file: its `<document>`. Empty, with `problem` set, when it is not an
/// interface file, or is deeper or larger than `UINib` accepts.
std::optional<NibElement> readNibDocument(std::span<const std::uint8_t> bytes, std::string& problem);

}  // namespace ios
