#include "RecordingRow.h"

#include "CoreGraphics/CGContext.h"
#include "Note.h"
#include "UIKit/UIGraphics.h"

namespace Notes {
namespace {

using namespace ios;

constexpr CGFloat kMark = 22, kMargin = 16;
constexpr CGColor kRed{0.86, 0.16, 0.13, 1};

}  // namespace

RecordingRow::RecordingRow() : label_(std::make_shared<UILabel>()) {
  setBackgroundColor(UIColor::whiteColor());
  layer()->cornerRadius = 12;
  layer()->borderWidth = 0.5;
  layer()->borderColor = lineColor()->CGColorValue();
  label_->setFont(UIFont::systemFontOfSize(17));
  label_->setTextColor(inkColor());
  label_->setText("Record the Screen");
  addSubview(label_);
}

void RecordingRow::setRecording(bool recording) {
  if (recording == recording_) return;
  recording_ = recording;
  label_->setText(recording ? "Stop Recording" : "Record the Screen");
  label_->setTextColor(recording ? UIColor::colorWithRedGreenBlueAlpha(kRed.red, kRed.green, kRed.blue, 1)
                                 : inkColor());
  setNeedsDisplay();
}

void RecordingRow::layoutSubviews() {
  const CGFloat left = kMargin + kMark + 12;
  label_->setFrame(CGRectMake(left, 0, bounds().width() - left - kMargin, bounds().height()));
}

// A ring with a disc in it, which becomes a square while the screen is recorded.
void RecordingRow::drawRect(const CGRect&) {
  const CGContextRef context = UIGraphicsGetCurrentContext();
  const CGRect ring = CGRectMake(kMargin, (bounds().height() - kMark) / 2, kMark, kMark);
  CGContextSetStrokeColorWithColor(context, kRed);
  CGContextSetFillColorWithColor(context, kRed);
  CGContextSetLineWidth(context, 2);
  CGContextAddPath(context, CGPath::ellipse(CGRectInset(ring, 1, 1)));
  CGContextStrokePath(context);
  CGContextAddPath(context, recording_ ? CGPath::roundedRect(CGRectInset(ring, 6.5, 6.5), 2)
                                       : CGPath::ellipse(CGRectInset(ring, 4.5, 4.5)));
  CGContextFillPath(context);
}

void RecordingRow::setHighlighted(bool highlighted) {
  UIControl::setHighlighted(highlighted);
  setBackgroundColor(highlighted ? UIColor::colorWithHex(0xF3EFE2) : UIColor::whiteColor());
}

}  // namespace Notes
