#include "UIKit/Private/AlertPanel.h"

#include <algorithm>

#include "UIKit/Private/Chrome.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScrollView.h"

namespace ios {

namespace {

constexpr CGFloat kCorner = 13;
constexpr CGFloat kCancelGap = 8;
constexpr CGFloat kScreenMargin = 10;
constexpr CGFloat kAlertMargin = 24;
constexpr CGFloat kLargestWidth = 400;  // of a panel that is widened for large texts
constexpr CGFloat kUnlimited = 100'000;
// Shares of a row at the lower edge of a list that scrolls: one that shows less, or nearly all, would look like the end.
constexpr CGFloat kCutLeast = 0.4, kCutMost = 0.8;

std::shared_ptr<UIView> roundedGroup() {
  auto group = std::make_shared<UIView>();
  group->setBackgroundColor(UIColor::whiteColor());
  group->layer()->cornerRadius = kCorner;
  group->setClipsToBounds(true);
  return group;
}

std::shared_ptr<UILabel> wrappingLabel(const std::optional<std::string>& text,
                                       const std::shared_ptr<UIFont>& font,
                                       const std::shared_ptr<UIColor>& color) {
  if (!text || text->empty()) return nullptr;
  auto label = std::make_shared<UILabel>();
  label->setText(*text);
  label->setFont(font);
  label->setTextColor(color);
  label->setTextAlignment(TextAlignment::center);
  label->setNumberOfLines(0);
  return label;
}

}  // namespace

struct AlertPanel::Metrics {
  CGFloat width;      // of the panel; 0: as wide as the screen's shorter side allows
  CGFloat rowHeight;  // at least
  UIFontTextStyle rowFont;
  CGFloat top, bottom, side, gap;  // around and between the texts
};

/// How the height is shared out between texts, rows and cancel action.
struct AlertPanel::Plan {
  CGFloat width = 0;
  CGFloat textHeight = 0, rowsHeight = 0;  // whole
  CGFloat textShown = 0, rowsShown = 0;    // what is visible at once
  CGFloat cancelHeight = 0;                // with the gap above it
  CGFloat total() const { return textShown + rowsShown + cancelHeight; }
};

const AlertPanel::Metrics& AlertPanel::metrics() const {
  static const Metrics kAlert{270, 44, UIFontTextStyle::body, 20, 20, 16, 4};
  static const Metrics kSheet{0, 57, UIFontTextStyle::title3, 14, 15, 16, 8};
  static const Metrics kPopover{304, 57, UIFontTextStyle::title3, 14, 15, 16, 8};
  return style_ == Style::alert ? kAlert : style_ == Style::actionSheet ? kSheet : kPopover;
}

AlertPanel::AlertPanel(Style style, const std::optional<std::string>& title,
                       const std::optional<std::string>& message)
    : style_(style),
      group_(roundedGroup()),
      cancelGroup_(roundedGroup()),
      texts_(std::make_shared<UIScrollView>()),
      list_(std::make_shared<UIScrollView>()) {
  const auto footnote = UIFont::preferredFontForTextStyle(UIFontTextStyle::footnote);
  if (style == Style::alert) {
    title_ = wrappingLabel(title, UIFont::preferredFontForTextStyle(UIFontTextStyle::headline),
                           UIColor::blackColor());
    message_ = wrappingLabel(message, footnote, UIColor::blackColor());
  } else {
    const auto gray = UIColor::colorWithHex(chrome::kGray);
    title_ = wrappingLabel(title, UIFont::boldSystemFontOfSize(footnote->pointSize()), gray);
    message_ = wrappingLabel(message, footnote, gray);
  }
  for (const auto& label : {title_, message_}) {
    if (label) texts_->addSubview(label);
  }
  group_->addSubview(texts_);
  group_->addSubview(list_);
  addSubview(group_);
  addSubview(cancelGroup_);
}

void AlertPanel::setActions(const std::vector<std::shared_ptr<UIAlertAction>>& actions, const id& target,
                            Selector tapped) {
  for (const auto& row : rows_) row->removeFromSuperview();
  if (cancel_) cancel_->removeFromSuperview();
  rows_.clear();
  cancel_.reset();
  std::shared_ptr<AlertRow> cancel;
  const auto font = UIFont::preferredFontForTextStyle(metrics().rowFont);
  for (const auto& action : actions) {
    auto row = std::make_shared<AlertRow>(action, *font);
    row->addTarget(target, tapped, UIControlEventTouchUpInside);
    (row->isCancel() ? cancel : rows_.emplace_back()) = row;
  }
  if (cancel && style_ == Style::actionSheet) cancel_ = cancel;
  // Cancel comes last when actions are stacked, but first of two side by side; `layoutRows` reverses those.
  if (cancel && style_ == Style::alert) rows_.push_back(cancel);
  for (const auto& row : rows_) list_->addSubview(row);
  if (cancel_) cancelGroup_->addSubview(cancel_);
  cancelGroup_->setHidden(!cancel_);
  setNeedsLayout();
}

bool AlertPanel::sideBySide(CGFloat width) const {
  return style_ == Style::alert && rows_.size() == 2 &&
         std::all_of(rows_.begin(), rows_.end(),
                     [&](const auto& row) { return row->naturalWidth() <= width / 2; });
}

CGFloat AlertPanel::rowHeight(AlertRow& row, CGFloat width) const {
  return std::max(metrics().rowHeight, row.fit(width));
}

CGFloat AlertPanel::rowsHeight(CGFloat width) const {
  CGFloat height = 0;
  for (const auto& row : rows_) {
    if (sideBySide(width)) {
      height = std::max(height, rowHeight(*row, width / 2));
    } else {
      height += rowHeight(*row, width);
    }
  }
  return height;
}

CGFloat AlertPanel::textHeight(CGFloat width) const {
  const Metrics& m = metrics();
  const CGSize room{width - 2 * m.side, kUnlimited};
  CGFloat height = 0;
  for (const auto& label : {title_, message_}) {
    if (label) height += (height > 0 ? m.gap : 0) + label->sizeThatFits(room).height;
  }
  return height > 0 ? m.top + std::ceil(height) + m.bottom : 0;
}

AlertPanel::Plan AlertPanel::plan(CGFloat width, CGFloat height) const {
  Plan plan;
  plan.width = width;
  plan.textHeight = textHeight(width);
  plan.rowsHeight = rowsHeight(width);
  if (cancel_)
    plan.cancelHeight = rowHeight(*cancel_, width) + (plan.textHeight + plan.rowsHeight > 0 ? kCancelGap : 0);
  const CGFloat room = std::max(0.0, height - plan.cancelHeight);
  // Long texts leave the rows half of the room; rows take what the texts do not need.
  plan.rowsShown = std::min(plan.rowsHeight, std::max(room / 2, room - plan.textHeight));
  plan.textShown = std::min(plan.textHeight, room - plan.rowsShown);
  cutARow(plan);
  return plan;
}

void AlertPanel::cutARow(Plan& plan) const {
  if (plan.rowsShown >= plan.rowsHeight || sideBySide(plan.width)) return;
  CGFloat top = 0;
  for (const auto& row : rows_) {
    const CGFloat height = rowHeight(*row, plan.width);
    const CGFloat least = top + kCutLeast * height, most = top + kCutMost * height;
    if (top > 0 && plan.rowsShown < most) {
      // More of it at the cost of the texts, which scroll as well.
      const CGFloat more = std::min(std::max(0.0, least - plan.rowsShown), plan.textShown / 2);
      plan.rowsShown += more;
      plan.textShown -= more;
      return;
    }
    top += height;
    if (plan.rowsShown < top) {
      plan.rowsShown = std::min(plan.rowsShown, std::max(most, 0.0));
      return;
    }
  }
}

CGSize AlertPanel::sizeThatFits(CGSize available) const {
  CGFloat width = metrics().width;
  CGFloat height = available.height;
  if (chrome::isAccessibilityTextSize()) {
    width = std::min(std::min(available.width, available.height) - 2 * kScreenMargin, kLargestWidth);
  }
  if (style_ == Style::alert) height -= 2 * kAlertMargin;
  if (style_ == Style::actionSheet) {
    width = std::min(available.width, available.height) - 2 * kScreenMargin;
    height -= chrome::kStatusBar + 2 * kScreenMargin;
  }
  width = std::min(width, available.width);
  return {width, plan(width, height).total()};
}

void AlertPanel::layoutSubviews() {
  const Plan plan = this->plan(bounds().width(), bounds().height());
  for (const auto& line : separators_) line->removeFromSuperview();
  separators_.clear();
  group_->setFrame({{0, 0}, {plan.width, plan.textShown + plan.rowsShown}});
  layoutTexts(plan);
  layoutRows(plan);
  if (!cancel_) return;
  const CGFloat height = rowHeight(*cancel_, plan.width);
  cancelGroup_->setFrame({{0, plan.total() - height}, {plan.width, height}});
  cancel_->setFrame(cancelGroup_->bounds());
}

void AlertPanel::layoutTexts(const Plan& plan) {
  const Metrics& m = metrics();
  texts_->setFrame({{0, 0}, {plan.width, plan.textShown}});
  texts_->setContentSize({plan.width, plan.textHeight});
  texts_->setUserInteractionEnabled(plan.textHeight > plan.textShown);
  CGFloat y = m.top;
  for (const auto& label : {title_, message_}) {
    if (!label) continue;
    const CGFloat width = plan.width - 2 * m.side;
    const CGFloat height = label->sizeThatFits({width, kUnlimited}).height;
    label->setFrame({{m.side, y}, {width, height}});
    y += height + m.gap;
  }
}

void AlertPanel::layoutRows(const Plan& plan) {
  const CGFloat thin = chrome::hairline();
  list_->setFrame({{0, plan.textShown}, {plan.width, plan.rowsShown}});
  list_->setContentSize({plan.width, plan.rowsHeight});
  if (plan.textShown > 0 && !rows_.empty()) addSeparator(group_, {{0, plan.textShown}, {plan.width, thin}});
  if (sideBySide(plan.width)) {
    const bool swapped = rows_.back()->isCancel() != chrome::isMirrored();
    const CGFloat half = plan.width / 2, height = plan.rowsHeight;
    rows_[0]->setFrame({{swapped ? half : 0, 0}, {half, height}});
    rows_[1]->setFrame({{swapped ? 0 : half, 0}, {half, height}});
    addSeparator(list_, {{half, 0}, {thin, height}});
    return;
  }
  CGFloat y = 0;
  for (const auto& row : rows_) {
    const CGFloat height = rowHeight(*row, plan.width);
    row->setFrame({{0, y}, {plan.width, height}});
    if (y > 0) addSeparator(list_, {{0, y}, {plan.width, thin}});
    y += height;
  }
}

void AlertPanel::addSeparator(const std::shared_ptr<UIView>& superview, const CGRect& frame) {
  auto line = chrome::plate(chrome::kSeparator);
  line->setFrame(frame);
  superview->addSubview(line);
  separators_.push_back(std::move(line));
}

}  // namespace ios
