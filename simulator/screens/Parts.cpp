#include "simulator/screens/Parts.h"

#include "CoreGraphics/CGContext.h"
#include "UIKit/UIGraphics.h"
#include "simulator/screens/Screens.h"

namespace simulator {
namespace {

CGColor hex(unsigned rgb) {
  return UIColor::colorWithHex(rgb)->CGColorValue();
}

void fill(const CGContextRef& context, const CGPath& path, CGColor color) {
  CGContextSetFillColorWithColor(context, color);
  CGContextAddPath(context, path);
  CGContextFillPath(context);
}

// Each emblem is drawn in a square of 60 by 60.

void drawCompanion(const CGContextRef& context) {
  CGContextDrawVerticalGradient(context, CGRectMake(0, 0, 60, 60), hex(0x7B5CF0), hex(0x4A2FC4));
  fill(context, CGPath::roundedRect(CGRectMake(11, 14, 38, 26), 9), {1, 1, 1, 1});
  fill(context, CGPath::lines({{20, 38}, {20, 49}, {32, 38}}, true), {1, 1, 1, 1});
  for (int dot = 0; dot < 3; ++dot) {
    fill(context, CGPath::ellipse(CGRectMake(18.5 + dot * 9, 24.5, 5, 5)), hex(0x5B3FD6));
  }
}

void drawNotes(const CGContextRef& context) {
  CGContextSetFillColorWithColor(context, {1, 1, 1, 1});
  CGContextFillRect(context, CGRectMake(0, 0, 60, 60));
  CGContextDrawVerticalGradient(context, CGRectMake(0, 0, 60, 17), hex(0xFACC40), hex(0xF0AE00));
  CGContextSetFillColorWithColor(context, hex(0xD8D4CA));
  for (int y = 27; y < 58; y += 9) CGContextFillRect(context, CGRectMake(0, y, 60, 1));
}

void drawSettings(const CGContextRef& context) {
  CGContextDrawVerticalGradient(context, CGRectMake(0, 0, 60, 60), hex(0xB4B6BB), hex(0x8A8C92));
  constexpr int kTeeth = 10;
  constexpr double kPi = 3.14159265358979323846;
  for (int tooth = 0; tooth < kTeeth; ++tooth) {
    CGContextSaveGState(context);
    CGContextTranslateCTM(context, 30, 30);
    CGContextConcatCTM(context, CGAffineTransformMakeRotation(2 * kPi * tooth / kTeeth));
    fill(context, CGPath::roundedRect(CGRectMake(-3.5, -22, 7, 10), 2), hex(0x3A3B40));
    CGContextRestoreGState(context);
  }
  fill(context, CGPath::ellipse(CGRectMake(13, 13, 34, 34)), hex(0x3A3B40));
  fill(context, CGPath::ellipse(CGRectMake(19, 19, 22, 22)), hex(0xA4A6AC));
  fill(context, CGPath::ellipse(CGRectMake(25, 25, 10, 10)), hex(0x3A3B40));
}

void drawInitial(const CGContextRef& context, const std::string& name) {
  CGContextDrawVerticalGradient(context, CGRectMake(0, 0, 60, 60), hex(0x4FA3E0), hex(0x2C6FB5));
  const std::string initial = name.empty() ? "?" : name.substr(0, 1);
  const TextLayout letter({{initial, UIFont::boldSystemFontOfSize(32)->description(), {1, 1, 1, 1}}}, 60,
                          TextAlignment::center, 1);
  letter.draw(context, {0, (60 - letter.size().height) / 2});
}

}  // namespace

std::shared_ptr<UILabel> makeLabel(const std::string& text, CGRect frame, CGFloat size, int weight,
                                   unsigned color, TextAlignment alignment) {
  auto label = std::make_shared<UILabel>(frame);
  label->setText(text);
  label->setFont(UIFont::systemFontOfSize(size, weight));
  label->setTextColor(UIColor::colorWithHex(color));
  label->setTextAlignment(alignment);
  return label;
}

AppIcon::AppIcon(CGRect frame, std::string bundleIdentifier, std::string name)
    : Subclass(frame), bundleIdentifier_(std::move(bundleIdentifier)), name_(std::move(name)) {
  setUserInteractionEnabled(false);
}

void AppIcon::drawRect(const CGRect&) {
  const CGContextRef context = UIGraphicsGetCurrentContext();
  const CGFloat side = bounds().width();
  CGContextSaveGState(context);
  CGContextScaleCTM(context, side / 60, side / 60);
  CGContextAddPath(context, CGPath::roundedRect(CGRectMake(0, 0, 60, 60), 13.5));
  CGContextClip(context);
  if (bundleIdentifier_ == kCompanionIdentifier) {
    drawCompanion(context);
  } else if (bundleIdentifier_ == kSettingsIdentifier) {
    drawSettings(context);
  } else if (name_ == "Notes") {
    drawNotes(context);
  } else {
    drawInitial(context, name_);
  }
  CGContextRestoreGState(context);
}

IconButton::IconButton(CGRect frame, const std::string& bundleIdentifier, std::string name)
    : Subclass(frame), bundleIdentifier_(bundleIdentifier), name_(std::move(name)) {
  const CGFloat side = 60, width = frame.width();
  addSubview(
      std::make_shared<AppIcon>(CGRectMake((width - side) / 2, 0, side, side), bundleIdentifier, name_));
  auto label = makeLabel(name_, CGRectMake(0, side + 4, width, 16), 12, 400, 0xFFFFFF, TextAlignment::center);
  label->setUserInteractionEnabled(false);
  addSubview(label);
}

void IconButton::setHighlighted(bool highlighted) {
  UIControl::setHighlighted(highlighted);
  setAlpha(highlighted ? 0.6 : 1);
}

Shade::Shade(CGRect frame, unsigned top, unsigned bottom)
    : Subclass(frame), top_(hex(top)), bottom_(hex(bottom)) {
  setUserInteractionEnabled(false);
}

void Shade::drawRect(const CGRect&) {
  CGContextDrawVerticalGradient(UIGraphicsGetCurrentContext(), bounds(), top_, bottom_);
}

}  // namespace simulator
