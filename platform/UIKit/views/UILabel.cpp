#include "UIKit/UILabel.h"

#include <algorithm>
#include <utility>

#include "UIKit/UIGraphics.h"

namespace ios {
namespace {

template <class T>
std::shared_ptr<T> attribute(const NSAttributes& attributes, const std::string& name) {
  const auto found = attributes.find(name);
  return found == attributes.end() ? nullptr : std::dynamic_pointer_cast<T>(found->second);
}

}  // namespace

UILabel::UILabel(CGRect frame)
    : Subclass(frame), font_(UIFont::systemFontOfSize(17)), textColor_(UIColor::blackColor()) {
  setUserInteractionEnabled(false);
}

void UILabel::setText(std::string text) {
  text_ = std::move(text);
  attributedText_ = nullptr;
  contentChanged();
}

void UILabel::setAttributedText(std::shared_ptr<NSAttributedString> text) {
  attributedText_ = std::move(text);
  text_ = attributedText_ ? attributedText_->string() : std::string();
  contentChanged();
}

void UILabel::setFont(std::shared_ptr<UIFont> font) {
  font_ = font ? std::move(font) : UIFont::systemFontOfSize(17);
  contentChanged();
}

void UILabel::setTextColor(std::shared_ptr<UIColor> color) {
  textColor_ = color ? std::move(color) : UIColor::blackColor();
  contentChanged();
}

void UILabel::setTextAlignment(TextAlignment alignment) {
  alignment_ = alignment;
  contentChanged();
}

void UILabel::setNumberOfLines(int lines) {
  numberOfLines_ = std::max(0, lines);
  contentChanged();
}

void UILabel::setMinimumScaleFactor(CGFloat factor) {
  minimumScaleFactor_ = std::clamp(factor, 0.0, 1.0);
  contentChanged();
}

void UILabel::contentChanged() {
  drawn_ = nullptr;
  setNeedsDisplay();
}

std::vector<TextRun> UILabel::runs(CGFloat scale) const {
  std::vector<TextRun> runs;
  const auto add = [&](std::string text, const UIFont& font, const UIColor& color) {
    runs.push_back({std::move(text), font.description(), color.CGColorValue()});
    runs.back().font.size *= scale;
  };
  if (!attributedText_) {
    add(text_, *font_, *textColor_);
    return runs;
  }
  for (const auto& [range, attributes] : attributedText_->runs()) {
    const auto font = attribute<UIFont>(attributes, NSFontAttributeName);
    const auto color = attribute<UIColor>(attributes, NSForegroundColorAttributeName);
    add(text_.substr(range.location, range.length), font ? *font : *font_, color ? *color : *textColor_);
  }
  return runs;
}

CGSize UILabel::sizeThatFits(CGSize size) const {
  if (text_.empty()) return {};
  const CGFloat width = numberOfLines_ == 1 ? 0 : size.width;
  return TextLayout(runs(1), width, alignment_, numberOfLines_).size();
}

std::unique_ptr<TextLayout> UILabel::layout(CGFloat scale) const {
  const CGRect box = bounds();
  auto layout = std::make_unique<TextLayout>(runs(scale), box.width(), alignment_, numberOfLines_);
  // Sizes are rounded up, so a text that overflows by less than a point fits.
  while (layout->lineCount() > 1 && layout->size().height >= box.height() + 1) {
    const CGFloat lineHeight = layout->size().height / layout->lineCount();
    const int fitting =
        std::clamp(static_cast<int>((box.height() + 1) / lineHeight), 1, layout->lineCount() - 1);
    layout = std::make_unique<TextLayout>(runs(scale), box.width(), alignment_, fitting);
  }
  return layout;
}

std::unique_ptr<TextLayout> UILabel::fittingLayout() const {
  auto fitting = layout(1);
  if (minimumScaleFactor_ <= 0 || !fitting->truncated()) return fitting;
  CGFloat tooLarge = 1, scale = minimumScaleFactor_;
  fitting = layout(scale);
  constexpr int kSteps = 5;
  for (int i = 0; i < kSteps && !fitting->truncated(); ++i) {
    const CGFloat middle = (scale + tooLarge) / 2;
    auto larger = layout(middle);
    if (larger->truncated()) {
      tooLarge = middle;
    } else {
      scale = middle;
      fitting = std::move(larger);
    }
  }
  return fitting;
}

void UILabel::drawRect(const CGRect&) {
  const CGRect box = bounds();
  const CGContextRef context = UIGraphicsGetCurrentContext();
  if (!context || text_.empty() || CGRectIsEmpty(box)) return;
  if (!drawn_ || drawnSize_ != box.size) {
    drawn_ = fittingLayout();
    drawnSize_ = box.size;
  }
  drawn_->draw(context, {box.minX(), box.midY() - drawn_->size().height / 2});
}

std::string UILabel::accessibilityLabel() const {
  std::string given = UIView::accessibilityLabel();
  return given.empty() ? text_ : given;
}

}  // namespace ios
