#include "ReplayKit/Private/PreviewBar.h"

#include <utility>

#include "Foundation/NSLocale.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIFont.h"
#include "UIKit/UIScreen.h"

namespace ios {
namespace {

constexpr CGFloat kMargin = 16, kGap = 24;
// As the navigation bar has them.
constexpr unsigned kGround = 0xF8F8F8, kEdge = 0xB2B2B2;

std::shared_ptr<UIButton> button(std::string title) {
  auto made = std::make_shared<UIButton>();
  made->setTitle(std::move(title));
  return made;
}

}  // namespace

PreviewBar::PreviewBar()
    : cancel_(button("Cancel")),
      share_(button("Share")),
      save_(button("Save")),
      edge_(std::make_shared<UIView>()) {
  setBackgroundColor(UIColor::colorWithHex(kGround));
  edge_->setBackgroundColor(UIColor::colorWithHex(kEdge));
  save_->setFont(UIFont::boldSystemFontOfSize(17));
  for (const auto& each : {cancel_, share_, save_}) addSubview(each);
  addSubview(edge_);
}

void PreviewBar::setOffersEnabled(bool enabled) {
  for (const auto& each : {share_, save_}) each->setEnabled(enabled);
}

void PreviewBar::layoutSubviews() {
  const CGFloat width = bounds().width(), top = bounds().height() - kHeight;
  const auto languages = NSLocale::preferredLanguages();
  const bool mirror = !languages.empty() && NSLocale::isRightToLeft(languages.front());
  const CGFloat hairline = 1 / UIScreen::mainScreen()->scale();
  edge_->setFrame(CGRectMake(0, bounds().height() - hairline, width, hairline));
  const auto place = [&](UIButton& each, CGFloat x, CGFloat itsWidth) {
    each.setFrame(CGRectMake(mirror ? width - x - itsWidth : x, top, itsWidth, kHeight));
  };
  const auto widthOf = [](const UIButton& each) { return each.sizeThatFits({0, 0}).width; };
  place(*cancel_, kMargin, widthOf(*cancel_));
  const CGFloat save = width - kMargin - widthOf(*save_);
  place(*save_, save, widthOf(*save_));
  place(*share_, save - kGap - widthOf(*share_), widthOf(*share_));
}

}  // namespace ios
