#include <chrono>
#include <cmath>
#include <cstdio>

#include "CoreGraphics/Text.h"
#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "UIKit/Private/BackingStore.h"
#include "UIKit/Private/Chrome.h"
#include "UIKit/Private/UIView.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIFont.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIScreen.h"

namespace ios {
namespace {

constexpr CGColor kStatusBarInk{0, 0, 0, 1};

/// Hours and minutes as the status bar has them: "9:41".
std::string clockText() {
  if (const std::string& set = Device::current().settings().statusBarTime; !set.empty()) return set;
  const auto wall = std::chrono::floor<std::chrono::minutes>(Clock::shared().wallTime());
  const auto minutes = (wall - std::chrono::floor<std::chrono::days>(wall)).count();
  char text[16];
  std::snprintf(text, sizeof text, "%d:%02d", static_cast<int>(minutes / 60), static_cast<int>(minutes % 60));
  return text;
}

void drawSignal(const CGContextRef& context, CGFloat x) {
  constexpr CGFloat kDot = 5.5, kPitch = 7;
  CGContextSetFillColorWithColor(context, kStatusBarInk);
  for (int dot = 0; dot < 5; ++dot) {
    CGContextAddPath(
        context, CGPath::ellipse(CGRectMake(x + dot * kPitch, (chrome::kStatusBar - kDot) / 2, kDot, kDot)));
  }
  CGContextFillPath(context);
}

void drawBattery(const CGContextRef& context, CGFloat right) {
  const CGRect body = CGRectMake(right - 24.5, 5.25, 21.5, 9.5);
  CGContextSetStrokeColorWithColor(context, kStatusBarInk);
  CGContextSetFillColorWithColor(context, kStatusBarInk);
  CGContextSetLineWidth(context, 1);
  CGContextAddPath(context, CGPath::roundedRect(CGRectInset(body, 0.5, 0.5), 2));
  CGContextStrokePath(context);
  CGContextAddPath(context, CGPath::roundedRect(CGRectInset(body, 1.75, 1.75), 1));
  CGContextAddPath(context,
                   CGPath::roundedRect(CGRectMake(body.maxX() + 0.75, body.midY() - 2, 1.5, 4), 0.75));
  CGContextFillPath(context);
}

void drawStatusBar(const CGContextRef& context, CGFloat width, const std::string& time) {
  const auto font = UIFont::systemFontOfSize(12, 600);
  const TextLayout text({TextRun{time, font->description(), kStatusBarInk}}, width, TextAlignment::center, 1);
  text.draw(context, {0, std::floor((chrome::kStatusBar - text.size().height) / 2)});
  drawSignal(context, 6.5);
  drawBattery(context, width - 5);
}

}  // namespace

/// The last picture and what it was made of.
struct UIApplication::DisplayCache {
  struct Part {
    CGImageRef image;
    CGPoint center;
    CGRect bounds;
    CGFloat alpha;
    CGAffineTransform transform;
    bool operator==(const Part&) const = default;
  };
  std::vector<Part> parts;
  CGSize size;
  CGFloat scale = 0;
  std::string time;
  bool operator==(const DisplayCache&) const = default;
};

std::shared_ptr<UIImage> UIApplication::displayImage() {
  const auto screen = UIScreen::mainScreen();
  DisplayCache next;
  next.size = screen->bounds().size;
  next.scale = screen->scale();
  next.time = clockText();
  for (const auto& window : windowsOnScreen()) {
    const UIView::Shown shown = window->shown();
    if (auto image = window->backing_->image(*window, true)) {
      next.parts.push_back({std::move(image), shown.center, shown.bounds, shown.alpha, shown.transform});
    }
  }
  if (displayed_ && displayCache_ && *displayCache_ == next) return displayed_;

  UIGraphicsBeginImageContextWithOptions(next.size, true, next.scale);
  const CGContextRef context = UIGraphicsGetCurrentContext();
  for (const auto& part : next.parts) {
    if (!context || part.alpha <= 0) continue;
    CGContextSaveGState(context);
    CGContextTranslateCTM(context, part.center.x, part.center.y);
    CGContextConcatCTM(context, part.transform);
    if (part.alpha < 1) CGContextBeginTransparencyLayer(context);
    CGContextDrawImage(context,
                       CGRectMake(-part.bounds.width() / 2, -part.bounds.height() / 2, part.bounds.width(),
                                  part.bounds.height()),
                       part.image);
    if (part.alpha < 1) CGContextEndTransparencyLayer(context, part.alpha);
    CGContextRestoreGState(context);
  }
  if (context) drawStatusBar(context, next.size.width, next.time);
  displayed_ = UIGraphicsGetImageFromCurrentImageContext();
  UIGraphicsEndImageContext();
  displayCache_ = std::make_shared<DisplayCache>(std::move(next));
  return displayed_;
}

}  // namespace ios
