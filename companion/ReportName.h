#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace companion {

/// Name of a report's folder: when it came, in UTC, and a number that tells the reports of one second apart:
/// "2026-01-05T09-41-07Z-1". Ordered from old to new.
struct ReportName {
  std::chrono::sys_seconds received;
  unsigned number = 1;

  std::string text() const;
  /// Empty if `text` is anything other than what `text()` gives.
  static std::optional<ReportName> parse(std::string_view text);

  std::string date() const;       // "Monday, 5 January 2026"
  std::string time() const;       // "09:41:07 UTC"
  std::string timestamp() const;  // "2026-01-05T09:41:07Z"

  auto operator<=>(const ReportName&) const = default;
};

}  // namespace companion
