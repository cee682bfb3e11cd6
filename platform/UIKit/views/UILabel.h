#pragma once

#include <memory>
#include <string>

#include "Foundation/NSAttributedString.h"
#include "UIKit/UIFont.h"
#include "UIKit/UIView.h"

namespace ios {

/// Text in a rectangle; centred vertically, cut with "…" where it does not fit.
class UILabel : public Subclass<UILabel, UIView> {
 public:
  explicit UILabel(CGRect frame = CGRectZero);
  static MethodList methods() { return {}; }
  const std::string& text() const { return text_; }
  void setText(std::string text);
  const std::shared_ptr<NSAttributedString>& attributedText() const { return attributedText_; }
  void setAttributedText(std::shared_ptr<NSAttributedString> text);
  void setFont(std::shared_ptr<UIFont> font);
  const std::shared_ptr<UIFont>& font() const { return font_; }
  void setTextColor(std::shared_ptr<UIColor> color);
  void setTextAlignment(TextAlignment alignment);
  /// 0: as many as fit.
  void setNumberOfLines(int lines);
  /// Smallest share of the font size that text may shrink to before it is cut; 0: it does not shrink.
  void setMinimumScaleFactor(CGFloat factor);
  CGSize sizeThatFits(CGSize size) const override;
  void drawRect(const CGRect& rect) override;
  std::string accessibilityLabel() const override;

 private:
  std::vector<TextRun> runs(CGFloat scale) const;
  /// The text at `scale`, in the bounds, with no more lines than fit there.
  std::unique_ptr<TextLayout> layout(CGFloat scale) const;
  /// The text at the scale it is drawn at.
  std::unique_ptr<TextLayout> fittingLayout() const;
  void contentChanged();
  std::string text_;
  std::shared_ptr<NSAttributedString> attributedText_;
  std::shared_ptr<UIFont> font_;
  std::shared_ptr<UIColor> textColor_;
  TextAlignment alignment_ = TextAlignment::natural;
  int numberOfLines_ = 1;
  CGFloat minimumScaleFactor_ = 0;
  // Shaping text costs far more than drawing it, and a label that is scrolled about stays as it is.
  std::unique_ptr<TextLayout> drawn_;
  CGSize drawnSize_;
};

}  // namespace ios
