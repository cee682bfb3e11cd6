#include "NoteRow.h"

namespace Notes {

using namespace ios;

NoteRow::NoteRow(const Note& note)
    : mark_(std::make_shared<UIView>()),
      line_(std::make_shared<UIView>()),
      title_(std::make_shared<UILabel>()),
      snippet_(std::make_shared<UILabel>()),
      date_(std::make_shared<UILabel>()) {
  setBackgroundColor(paperColor());
  mark_->setBackgroundColor(UIColor::colorWithHex(note.color));
  mark_->layer()->cornerRadius = 2;
  line_->setBackgroundColor(lineColor());
  title_->setText(note.title);
  title_->setFont(UIFont::boldSystemFontOfSize(17));
  title_->setTextColor(inkColor());
  snippet_->setText(note.snippet());
  snippet_->setAccessibilityIdentifier("snippet");
  snippet_->setFont(UIFont::systemFontOfSize(15));
  snippet_->setTextColor(faintColor());
  date_->setText(note.date);
  date_->setAccessibilityIdentifier("date");
  date_->setFont(UIFont::systemFontOfSize(14));
  date_->setTextColor(faintColor());
  date_->setTextAlignment(TextAlignment::right);
  for (const std::shared_ptr<UIView>& part :
       {mark_, line_, std::static_pointer_cast<UIView>(title_), std::static_pointer_cast<UIView>(snippet_),
        std::static_pointer_cast<UIView>(date_)}) {
    part->setUserInteractionEnabled(false);
    addSubview(part);
  }
}

void NoteRow::layoutSubviews() {
  const CGFloat width = bounds().width();
  const CGFloat left = 32, right = 16, dateWidth = 96;
  mark_->setFrame(CGRectMake(16, 16, 4, kHeight - 32));
  title_->setFrame(CGRectMake(left, 15, width - left - right - dateWidth - 8, 22));
  date_->setFrame(CGRectMake(width - right - dateWidth, 15, dateWidth, 22));
  snippet_->setFrame(CGRectMake(left, 40, width - left - right, 20));
  line_->setFrame(CGRectMake(left, kHeight - 0.5, width - left, 0.5));
}

void NoteRow::setHighlighted(bool highlighted) {
  UIControl::setHighlighted(highlighted);
  setBackgroundColor(highlighted ? UIColor::colorWithHex(0xF3EFE2) : paperColor());
}

}  // namespace Notes
