#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "UIKit/UIViewController.h"

namespace ios {

class AlertPanel;

enum class UIAlertControllerStyle : long { actionSheet = 0, alert = 1 };
enum class UIAlertActionStyle : long { default_ = 0, cancel = 1, destructive = 2 };

/// One choice of an alert.
class UIAlertAction : public NSObject {
 public:
  using Handler = std::function<void(const std::shared_ptr<UIAlertAction>&)>;
  static std::shared_ptr<UIAlertAction> actionWithTitle(std::string title, UIAlertActionStyle style,
                                                        Handler handler);
  UIAlertAction(std::string title, UIAlertActionStyle style, Handler handler)
      : title_(std::move(title)), style_(style), handler_(std::move(handler)) {}
  const std::string& title() const { return title_; }
  UIAlertActionStyle style() const { return style_; }
  const Handler& handler() const { return handler_; }

 private:
  std::string title_;
  UIAlertActionStyle style_;
  Handler handler_;
};

/// An alert in the middle of the screen, or an action sheet at its lower edge (a popover on an iPad, which
/// there needs an anchor). A tapped action first dismisses the alert; its handler runs when that has ended.
/// The cancel action stands last, apart; tapping outside an action sheet that has one counts as cancel. In
/// a popover it is not shown; there, tapping outside always closes the popover, and runs the cancel action
/// if there is one.
class UIAlertController : public Subclass<UIAlertController, UIViewController> {
 public:
  static MethodList methods();
  static std::shared_ptr<UIAlertController> alertControllerWithTitle(std::optional<std::string> title,
                                                                     std::optional<std::string> message,
                                                                     UIAlertControllerStyle preferredStyle);
  /// More than one action of cancel style is a programming error.
  void addAction(const std::shared_ptr<UIAlertAction>& action);
  const std::vector<std::shared_ptr<UIAlertAction>>& actions() const { return actions_; }
  const std::optional<std::string>& message() const { return message_; }
  UIAlertControllerStyle preferredStyle() const { return style_; }

  void loadView() override;
  void viewWillAppear(bool animated) override;
  void viewWillLayoutSubviews() override;

  UIAlertController(std::optional<std::string> title, std::optional<std::string> message,
                    UIAlertControllerStyle style);

 private:
  PresentationStyle presentationStyle() const override;
  /// The size of the panel with title, message and actions on a screen, or in a popover, of that size.
  CGSize presentedSize(CGSize available) override;
  void tappedBeside() override;
  std::shared_ptr<AlertPanel> panel();
  void choose(const std::shared_ptr<UIAlertAction>& action);
  void actionTapped(const id& sender);
  std::optional<std::string> alertTitle_, message_;
  UIAlertControllerStyle style_;
  std::vector<std::shared_ptr<UIAlertAction>> actions_;
  bool actionsChanged_ = true;
  bool chosen_ = false;
};

}  // namespace ios
