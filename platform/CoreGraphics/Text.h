#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoreGraphics/CGContext.h"

namespace ios {

/// The family of the interface's own texts.
inline constexpr const char* kSystemFontFamily = "System";

/// The face, weight and size (points) of text. The platform's families resolve to the machine's fonts:
/// "HelveticaNeue" and "HelveticaNeue-Medium" to a metric-compatible face, the system font to a similar one.
struct FontDescription {
  std::string family = kSystemFontFamily;
  int weight = 400;
  double size = 17;
  bool operator==(const FontDescription&) const = default;
};

struct TextRun {
  std::string text;  // UTF-8; invalid bytes are shown as U+FFFD
  FontDescription font;
  CGColor color;
};

enum class TextAlignment { left, center, right, justified, natural };

/// Text laid out in lines, ready to be measured and drawn. Right-to-left paragraphs are detected from the
/// text itself. Used by one thread at a time.
class TextLayout {
 public:
  /// `width` 0 or less: unlimited. `maximumLines` 0: unlimited; text that does not fit ends in "…".
  TextLayout(const std::vector<TextRun>& runs, CGFloat width, TextAlignment alignment, int maximumLines);
  ~TextLayout();
  TextLayout(const TextLayout&) = delete;

  /// What the text covers, in points, rounded up to whole points.
  CGSize size() const;
  int lineCount() const;
  /// Whether text was cut.
  bool truncated() const;
  /// Draws with the top left of the layout at `origin`, in a context whose y goes downwards.
  void draw(const CGContextRef& context, CGPoint origin) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Whether the machine has a font for the platform's font name ("HelveticaNeue-Medium").
bool fontNamed(const std::string& name, double size, FontDescription& description);

/// The language (a tag, "zh-Hans") whose forms of characters are preferred where languages share characters
/// but write them differently. Applies to layouts made from now on. Any thread.
void setTextLanguage(const std::string& tag);

}  // namespace ios
