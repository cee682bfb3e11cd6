#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "UIKit/Private/AlertRow.h"
#include "UIKit/Private/PresentationStyle.h"
#include "UIKit/UIView.h"

namespace ios {

class UILabel;
class UIScrollView;

/// The drawn alert: texts above, actions below, in one rounded group; a sheet's cancel action
/// in a group of its own.
class AlertPanel : public Subclass<AlertPanel, UIView> {
 public:
  using Style = PresentationStyle;
  /// `style` must not be one that covers the screen.
  AlertPanel(Style style, const std::optional<std::string>& title, const std::optional<std::string>& message);
  static MethodList methods() { return {}; }

  /// Replaces the rows. A popover shows no cancel action.
  void setActions(const std::vector<std::shared_ptr<UIAlertAction>>& actions, const id& target,
                  Selector tapped);
  /// The panel's size on a screen, or in a popover, of size `available`. Content that does not fit scrolls.
  CGSize sizeThatFits(CGSize available) const override;
  void layoutSubviews() override;

 private:
  struct Plan;
  struct Metrics;
  const Metrics& metrics() const;
  CGFloat textHeight(CGFloat width) const;
  Plan plan(CGFloat width, CGFloat height) const;
  /// Ends a list that has to scroll inside of a row: what is cut off tells that there is more.
  void cutARow(Plan& plan) const;
  bool sideBySide(CGFloat width) const;
  CGFloat rowHeight(AlertRow& row, CGFloat width) const;
  CGFloat rowsHeight(CGFloat width) const;
  void layoutTexts(const Plan& plan);
  void layoutRows(const Plan& plan);
  void addSeparator(const std::shared_ptr<UIView>& superview, const CGRect& frame);

  const Style style_;
  std::shared_ptr<UIView> group_, cancelGroup_;
  std::shared_ptr<UIScrollView> texts_, list_;
  std::shared_ptr<UILabel> title_, message_;
  std::vector<std::shared_ptr<AlertRow>> rows_;  // from top to bottom
  std::shared_ptr<AlertRow> cancel_;             // of a sheet; apart
  std::vector<std::shared_ptr<UIView>> separators_;
};

}  // namespace ios
