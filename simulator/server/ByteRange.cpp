#include "simulator/server/ByteRange.h"

#include <algorithm>
#include <charconv>

namespace simulator {
namespace {

/// A number that takes all of `text`; empty if it is none or too large.
std::optional<std::uint64_t> number(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return value;
}

}  // namespace

RangeAnswer readRange(std::string_view header, std::uint64_t size) {
  using Kind = RangeAnswer::Kind;
  constexpr std::string_view kUnit = "bytes=";
  if (!header.starts_with(kUnit)) return {};
  header.remove_prefix(kUnit.size());
  const std::size_t dash = header.find('-');
  if (dash == std::string_view::npos || header.find(',') != std::string_view::npos) return {};
  const std::string_view from = header.substr(0, dash), to = header.substr(dash + 1);

  if (from.empty()) {  // the last so many
    const auto count = number(to);
    if (!count) return {};
    if (*count == 0 || size == 0) return {Kind::unsatisfiable, {}};
    const std::uint64_t taken = std::min(*count, size);
    return {Kind::part, {size - taken, taken}};
  }
  const auto first = number(from);
  const auto last = to.empty() ? std::optional<std::uint64_t>(UINT64_MAX) : number(to);
  if (!first || !last || *last < *first) return {};
  if (*first >= size) return {Kind::unsatisfiable, {}};
  return {Kind::part, {*first, std::min(*last, size - 1) - *first + 1}};
}

}  // namespace simulator
