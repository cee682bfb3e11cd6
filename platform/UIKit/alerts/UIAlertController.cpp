#include "UIKit/UIAlertController.h"

#include <algorithm>

#include "UIKit/Private/AlertPanel.h"
#include "UIKit/UIDevice.h"

namespace ios {

std::shared_ptr<UIAlertAction> UIAlertAction::actionWithTitle(std::string title, UIAlertActionStyle style,
                                                              Handler handler) {
  return std::make_shared<UIAlertAction>(std::move(title), style, std::move(handler));
}

MethodList UIAlertController::methods() {
  return {{"actionTapped:", &UIAlertController::actionTapped}};
}

std::shared_ptr<UIAlertController> UIAlertController::alertControllerWithTitle(
    std::optional<std::string> title, std::optional<std::string> message,
    UIAlertControllerStyle preferredStyle) {
  return std::make_shared<UIAlertController>(std::move(title), std::move(message), preferredStyle);
}

UIAlertController::UIAlertController(std::optional<std::string> title, std::optional<std::string> message,
                                     UIAlertControllerStyle style)
    : alertTitle_(std::move(title)), message_(std::move(message)), style_(style) {
  setTitle(alertTitle_.value_or(""));
}

void UIAlertController::addAction(const std::shared_ptr<UIAlertAction>& action) {
  if (!action) return;
  const auto isCancel = [](const auto& each) { return each->style() == UIAlertActionStyle::cancel; };
  if (isCancel(action) && std::any_of(actions_.begin(), actions_.end(), isCancel)) {
    programmingError("UIAlertController can only have one action with a style of UIAlertActionStyleCancel");
  }
  actions_.push_back(action);
  actionsChanged_ = true;
  if (isViewLoaded()) view()->setNeedsLayout();
}

PresentationStyle UIAlertController::presentationStyle() const {
  if (style_ == UIAlertControllerStyle::alert) return PresentationStyle::alert;
  const bool onPad = UIDevice::currentDevice()->userInterfaceIdiom() == UIUserInterfaceIdiom::pad;
  return onPad ? PresentationStyle::popover : PresentationStyle::actionSheet;
}

void UIAlertController::loadView() {
  setView(std::make_shared<AlertPanel>(presentationStyle(), alertTitle_, message_));
}

std::shared_ptr<AlertPanel> UIAlertController::panel() {
  auto panel = std::dynamic_pointer_cast<AlertPanel>(view());
  if (panel && actionsChanged_) {
    actionsChanged_ = false;
    panel->setActions(actions_, sharedAs<NSObject>(), "actionTapped:");
  }
  return panel;
}

CGSize UIAlertController::presentedSize(CGSize available) {
  return panel() ? panel()->sizeThatFits(available) : available;
}

void UIAlertController::viewWillAppear(bool animated) {
  Subclass::viewWillAppear(animated);
  chosen_ = false;
}

void UIAlertController::viewWillLayoutSubviews() {
  Subclass::viewWillLayoutSubviews();
  panel();
}

void UIAlertController::actionTapped(const id& sender) {
  if (const auto row = std::dynamic_pointer_cast<AlertRow>(sender)) choose(row->action());
}

void UIAlertController::choose(const std::shared_ptr<UIAlertAction>& action) {
  if (chosen_) return;
  chosen_ = true;
  dismissViewControllerAnimated(true, [action] {
    if (action && action->handler()) action->handler()(action);
  });
}

void UIAlertController::tappedBeside() {
  if (style_ != UIAlertControllerStyle::actionSheet) return;
  const auto cancel = std::find_if(actions_.begin(), actions_.end(), [](const auto& action) {
    return action->style() == UIAlertActionStyle::cancel;
  });
  if (cancel != actions_.end()) {
    choose(*cancel);
  } else if (presentationStyle() == PresentationStyle::popover) {
    choose(nullptr);
  }
}

}  // namespace ios
