#include "AboutViewController.h"

#include <Tellvane/Tellvane.h>

#include <algorithm>
#include <cstdlib>

#include "BreathViewController.h"
#include "CoreGraphics/CGContext.h"
#include "Foundation/NSBundle.h"
#include "Note.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UIGraphics.h"

namespace Notes {
namespace {

using namespace ios;

/// The application's emblem: a sheet of a writing pad.
class Pad : public Subclass<Pad, UIView> {
 public:
  static MethodList methods() { return {}; }
  void drawRect(const CGRect&) override {
    const CGContextRef context = UIGraphicsGetCurrentContext();
    const CGRect all = bounds();
    CGContextAddPath(context, CGPath::roundedRect(all, 20));
    CGContextClip(context);
    CGContextSetFillColorWithColor(context, {1, 1, 1, 1});
    CGContextFillRect(context, all);
    CGContextDrawVerticalGradient(context, CGRectMake(0, 0, all.width(), 26), {0.98, 0.80, 0.25, 1},
                                  {0.94, 0.68, 0, 1});
    CGContextSetFillColorWithColor(context, {0.85, 0.83, 0.78, 1});
    for (CGFloat y = 44; y < all.height() - 8; y += 16)
      CGContextFillRect(context, CGRectMake(0, y, all.width(), 1));
  }
};

std::string versionLine() {
  const auto& info = NSBundle::mainBundle()->infoDictionary();
  if (!info) return "";
  const PropertyList all(*info);
  const std::string* version = all.text("CFBundleShortVersionString");
  const std::string* build = all.text(kCFBundleVersionKey);
  return version && build ? "Version " + *version + " (" + *build + ")" : "";
}

}  // namespace

MethodList AboutViewController::methods() {
  return {{"startOrStopRecording", &AboutViewController::startOrStopRecording},
          {"followRecording", &AboutViewController::followRecording},
          {"breathe", &AboutViewController::breathe},
          {"warnOfCrash", &AboutViewController::warnOfCrash}};
}

AboutViewController::AboutViewController() {
  setTitle("About");
}

void AboutViewController::viewDidLoad() {
  view()->setBackgroundColor(paperColor());
  pad_ = std::make_shared<Pad>();
  pad_->layer()->cornerRadius = 20;
  pad_->layer()->borderWidth = 0.5;
  pad_->layer()->borderColor = lineColor()->CGColorValue();
  view()->addSubview(pad_);
  const auto label = [this](const std::string& text, std::shared_ptr<UIFont> font,
                            std::shared_ptr<UIColor> color) {
    auto made = std::make_shared<UILabel>();
    made->setText(text);
    made->setFont(std::move(font));
    made->setTextColor(std::move(color));
    made->setTextAlignment(TextAlignment::center);
    made->setNumberOfLines(0);
    view()->addSubview(made);
    return made;
  };
  name_ = label("Notes", UIFont::boldSystemFontOfSize(28), inkColor());
  version_ = label(versionLine(), UIFont::systemFontOfSize(15), faintColor());
  hint_ = label("Something not right? Tap the screen three times, and tell us.", UIFont::systemFontOfSize(17),
                inkColor());
  recording_ = std::make_shared<RecordingRow>();
  recording_->addTarget(shared_from_this(), "startOrStopRecording", UIControlEventTouchUpInside);
  view()->addSubview(recording_);
  const auto row = [this](const std::string& title, std::shared_ptr<UIColor> color, const char* action) {
    auto made = std::make_shared<UIButton>();
    made->setTitle(title);
    made->setTitleColor(std::move(color));
    made->setFont(UIFont::systemFontOfSize(17));
    made->setBackgroundColor(UIColor::whiteColor());
    made->layer()->cornerRadius = 12;
    made->layer()->borderWidth = 0.5;
    made->layer()->borderColor = lineColor()->CGColorValue();
    made->addTarget(shared_from_this(), action, UIControlEventTouchUpInside);
    view()->addSubview(made);
    return made;
  };
  breath_ = row("Take a Breath", inkColor(), "breathe");
  crash_ = row("Crash on Purpose…", UIColor::colorWithHex(0xC0271C), "warnOfCrash");
}

void AboutViewController::viewDidAppear(bool animated) {
  UIViewController::viewDidAppear(animated);
  followRecording();
  following_ =
      NSTimer::scheduledTimerWithTimeInterval(0.25, shared_from_this(), "followRecording", nullptr, true);
}

void AboutViewController::viewWillDisappear(bool animated) {
  UIViewController::viewWillDisappear(animated);
  if (following_) following_->invalidate();
}

void AboutViewController::followRecording() {
  recording_->setRecording(tellvane::CaptureScreenRecording::shared()->isRecording());
}

void AboutViewController::startOrStopRecording() {
  const auto& recording = tellvane::CaptureScreenRecording::shared();
  if (recording->isRecording()) {
    recording->stopRecording();
  } else {
    recording->captureScreenRecording();
  }
  followRecording();
}

void AboutViewController::breathe() {
  presentViewController(std::make_shared<BreathViewController>(), true);
}

void AboutViewController::warnOfCrash() {
  const auto warning = UIAlertController::alertControllerWithTitle(
      "Crash Notes?", "Notes ends at once, as after a programming error. Nothing that you wrote is kept.",
      UIAlertControllerStyle::alert);
  warning->addAction(UIAlertAction::actionWithTitle("Cancel", UIAlertActionStyle::cancel, {}));
  warning->addAction(UIAlertAction::actionWithTitle("Crash", UIAlertActionStyle::destructive,
                                                    [](const auto&) { std::abort(); }));
  presentViewController(warning, true);
}

void AboutViewController::viewWillLayoutSubviews() {
  const CGSize size = view()->bounds().size;
  // The hint and the rows go below, or to the right where there is no room for that.
  const bool upright = size.height > size.width;
  const CGFloat width = upright ? size.width : size.width / 2;
  const CGFloat top = upright ? std::max(30.0, size.height / 2 - 250) : size.height / 2 - 89;
  pad_->setFrame(CGRectMake(width / 2 - 50, top, 100, 100));
  name_->setFrame(CGRectMake(20, top + 118, width - 40, 36));
  version_->setFrame(CGRectMake(20, top + 156, width - 40, 22));
  constexpr CGFloat kBetween = RecordingRow::kHeight + 10;
  const CGFloat right = std::max(24.0, size.height / 2 - 118);  // the top of what is there
  hint_->setFrame(upright ? CGRectMake(40, top + 192, width - 80, 66)
                          : CGRectMake(width, right, width - 40, 66));
  const CGFloat middle = upright ? width / 2 : width + (width - 40) / 2;
  CGFloat y = upright ? top + 274 : right + 72;
  for (const std::shared_ptr<UIView>& row :
       {std::static_pointer_cast<UIView>(recording_), std::static_pointer_cast<UIView>(breath_),
        std::static_pointer_cast<UIView>(crash_)}) {
    row->setFrame(
        CGRectMake(middle - RecordingRow::kWidth / 2, y, RecordingRow::kWidth, RecordingRow::kHeight));
    y += kBetween;
  }
}

}  // namespace Notes
