#include "ScrolledList.h"

#include <cmath>
#include <numbers>
#include <string>

#include "UIKit/UIColor.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIViewController.h"

using namespace ios;

namespace {
constexpr int kRows = 200;
constexpr CGFloat kRowHeight = 62;
}  // namespace

ScrolledList::ScrolledList(const std::shared_ptr<UIWindow>& window)
    : list_(std::make_shared<UIScrollView>(window->bounds())) {
  const CGFloat width = window->bounds().size.width;
  list_->setBackgroundColor(UIColor::whiteColor());
  list_->setContentSize({width, kRows * kRowHeight});
  for (int row = 0; row < kRows; ++row) {
    const auto title = std::make_shared<UILabel>(CGRectMake(16, row * kRowHeight + 8, width - 32, 24));
    title->setText("Note " + std::to_string(row) + ", written on the way to the coast");
    const auto text = std::make_shared<UILabel>(CGRectMake(16, row * kRowHeight + 32, width - 32, 20));
    text->setText("Leave before seven, bring the blue bag, call about the tickets");
    text->setFont(UIFont::systemFontOfSize(14));
    text->setTextColor(UIColor::colorWithRedGreenBlueAlpha(0.4, 0.4, 0.45, 1));
    const auto line = std::make_shared<UIView>(CGRectMake(16, (row + 1) * kRowHeight - 0.5, width - 16, 0.5));
    line->setBackgroundColor(UIColor::colorWithRedGreenBlueAlpha(0.8, 0.8, 0.82, 1));
    for (const std::shared_ptr<UIView>& view :
         {std::static_pointer_cast<UIView>(title), std::static_pointer_cast<UIView>(text), line}) {
      list_->addSubview(view);
    }
  }
  window->rootViewController()->view()->addSubview(list_);
}

void ScrolledList::moveTo(double seconds) {
  // At reading pace: resting at the turns, some four hundred points a second between them.
  constexpr double kWay = 600, kPeriod = 10;
  list_->setContentOffset({0, kWay * (1 - std::cos(2 * std::numbers::pi * seconds / kPeriod))});
}

void ScrolledList::setScrolling(bool scrolling) {
  if (link_) link_->invalidate();
  link_ = nullptr;
  if (!scrolling) return;
  link_ = CADisplayLink::displayLinkWithTarget(shared_from_this(), "refresh");
  link_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
}

void ScrolledList::refresh() {
  moveTo(link_->timestamp());
}
