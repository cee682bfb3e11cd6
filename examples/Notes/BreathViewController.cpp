#include "BreathViewController.h"

#include <cmath>

#include "Foundation/NSRunLoop.h"
#include "Note.h"

namespace Notes {
namespace {

using namespace ios;

constexpr double kBreath = 8;  // seconds, in and out
constexpr CGFloat kSmallest = 90, kLargest = 220;

}  // namespace

BreathViewController::BreathViewController() {
  setTitle("Take a Breath");
}

MethodList BreathViewController::methods() {
  return {{"tick", &BreathViewController::tick}, {"done", &BreathViewController::done}};
}

void BreathViewController::viewDidLoad() {
  view()->setBackgroundColor(UIColor::colorWithHex(0x23364A));
  disc_ = std::make_shared<UIView>();
  disc_->setBackgroundColor(UIColor::colorWithHex(0x7FC4E8));
  view()->addSubview(disc_);
  words_ = std::make_shared<UILabel>();
  words_->setText("Breathe in");
  words_->setFont(UIFont::systemFontOfSize(24));
  words_->setTextColor(UIColor::whiteColor());
  words_->setTextAlignment(TextAlignment::center);
  view()->addSubview(words_);
  done_ = std::make_shared<UIButton>();
  done_->setTitle("Done");
  done_->setTitleColor(UIColor::whiteColor());
  done_->addTarget(weak_from_this().lock(), "done", UIControlEventTouchUpInside);
  view()->addSubview(done_);
}

void BreathViewController::viewDidAppear(bool animated) {
  UIViewController::viewDidAppear(animated);
  link_ = CADisplayLink::displayLinkWithTarget(shared_from_this(), "tick");
  link_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
}

void BreathViewController::viewWillDisappear(bool animated) {
  UIViewController::viewWillDisappear(animated);
  if (link_) link_->invalidate();
  link_ = nullptr;
  begin_ = 0;
}

void BreathViewController::viewWillLayoutSubviews() {
  const CGRect all = view()->bounds();
  words_->setFrame(CGRectMake(20, all.maxY() - 120, all.width() - 40, 40));
  done_->setFrame(CGRectMake(all.width() - 92, 20, 84, 44));
  tick();
}

void BreathViewController::tick() {
  if (link_ && begin_ == 0) begin_ = link_->timestamp();
  constexpr double kTurn = 2 * 3.14159265358979323846;
  const double part = link_ ? std::fmod(link_->timestamp() - begin_, kBreath) / kBreath : 0;
  const CGFloat full = (1 - std::cos(kTurn * part)) / 2;
  const CGFloat side = std::round(kSmallest + (kLargest - kSmallest) * full);
  disc_->setFrame(
      CGRectMake(view()->bounds().midX() - side / 2, view()->bounds().midY() - 20 - side / 2, side, side));
  disc_->layer()->cornerRadius = side / 2;
  words_->setText(part < 0.5 ? "Breathe in" : "Breathe out");
}

void BreathViewController::done() {
  dismissViewControllerAnimated(true);
}

}  // namespace Notes
