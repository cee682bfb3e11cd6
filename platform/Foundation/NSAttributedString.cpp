#include "Foundation/NSAttributedString.h"

#include <algorithm>

namespace ios {

std::optional<NSRange> rangeOfString(const std::string& text, const std::string& part) {
  const auto found = part.empty() ? std::string::npos : text.find(part);
  if (found == std::string::npos) return std::nullopt;
  return NSRange{found, part.size()};
}

NSAttributedString::NSAttributedString(std::string text, NSAttributes attributes) : text_(std::move(text)) {
  if (!text_.empty()) runs_.push_back({{0, text_.size()}, std::move(attributes)});
}

void NSMutableAttributedString::addAttributes(const NSAttributes& attributes, NSRange range) {
  const std::size_t start = std::min(range.location, text_.size());
  const std::size_t end = start + std::min(range.length, text_.size() - start);
  if (start == end) return;
  std::vector<Run> runs;
  const auto append = [&runs](std::size_t from, std::size_t to, const NSAttributes& attributes) {
    if (from >= to) return;
    if (!runs.empty() && runs.back().attributes == attributes) {
      runs.back().range.length += to - from;
    } else {
      runs.push_back({{from, to - from}, attributes});
    }
  };
  for (const auto& run : runs_) {
    const std::size_t from = run.range.location, to = from + run.range.length;
    const std::size_t innerFrom = std::clamp(start, from, to), innerTo = std::clamp(end, from, to);
    NSAttributes added = attributes;
    added.insert(run.attributes.begin(), run.attributes.end());
    append(from, innerFrom, run.attributes);
    append(innerFrom, innerTo, added);
    append(innerTo, to, run.attributes);
  }
  runs_ = std::move(runs);
}

}  // namespace ios
