#pragma once

#include <memory>
#include <string>

#include "CoreGraphics/Text.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// The role of a text; the user's choice of text size decides how large it is.
enum class UIFontTextStyle { title3, headline, body, footnote };

class UIFont : public NSObject {
 public:
  explicit UIFont(FontDescription description) : description_(std::move(description)) {}
  /// Empty when the system has no font of that name.
  static std::shared_ptr<UIFont> fontWithNameSize(const std::string& name, CGFloat size);
  static std::shared_ptr<UIFont> systemFontOfSize(CGFloat size, int weight = 400);
  static std::shared_ptr<UIFont> boldSystemFontOfSize(CGFloat size) { return systemFontOfSize(size, 600); }
  /// At the size that the user chose, as it is now. Any thread.
  static std::shared_ptr<UIFont> preferredFontForTextStyle(UIFontTextStyle style);
  CGFloat pointSize() const { return description_.size; }
  const FontDescription& description() const { return description_; }

 private:
  FontDescription description_;
};

}  // namespace ios
