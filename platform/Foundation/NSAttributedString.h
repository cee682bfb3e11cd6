#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ObjectiveC/NSObject.h"

namespace ios {

/// A range of bytes of a UTF-8 text.
struct NSRange {
  std::size_t location = 0, length = 0;
  bool operator==(const NSRange&) const = default;
};
/// The first occurrence of `part`; empty when there is none, and for an empty `part`.
std::optional<NSRange> rangeOfString(const std::string& text, const std::string& part);

/// Attribute names; each value is an object of the class that the name stands for (a UIFont, a UIColor).
inline const std::string NSFontAttributeName = "NSFont";
inline const std::string NSForegroundColorAttributeName = "NSColor";
using NSAttributes = std::map<std::string, id>;

/// A text whose ranges carry attributes.
class NSAttributedString : public NSObject {
 public:
  explicit NSAttributedString(std::string text, NSAttributes attributes = {});
  const std::string& string() const { return text_; }
  struct Run {
    NSRange range;
    NSAttributes attributes;
  };
  /// The whole text in order, in runs of equal attributes.
  const std::vector<Run>& runs() const { return runs_; }

 protected:
  std::string text_;
  std::vector<Run> runs_;
};

class NSMutableAttributedString : public NSAttributedString {
 public:
  using NSAttributedString::NSAttributedString;
  /// Sets attributes over `range`, which is cut down to the text; others stay.
  void addAttributes(const NSAttributes& attributes, NSRange range);
};

}  // namespace ios
