#include "UIKit/UITabBarController.h"

#include <algorithm>

#include "UIKit/Private/Chrome.h"
#include "UIKit/Private/MoreListController.h"
#include "UIKit/Private/SystemText.h"
#include "UIKit/Private/TabBar.h"
#include "UIKit/UIDevice.h"

namespace ios {

namespace {
constexpr std::size_t kPlacesOnPhone = 5;
}  // namespace

MethodList UITabBarController::methods() {
  return {{"barTapped:", &UITabBarController::barTapped}};
}

std::size_t UITabBarController::placesInBar() const {
  const bool phone = UIDevice::currentDevice()->userInterfaceIdiom() == UIUserInterfaceIdiom::phone;
  return phone && controllers_.size() > kPlacesOnPhone ? kPlacesOnPhone - 1 : controllers_.size();
}

std::shared_ptr<UINavigationController> UITabBarController::moreNavigationController() {
  if (!more_) {
    auto list = std::make_shared<MoreListController>();
    list->setTitle(systemText("More"));
    more_ = UINavigationController::withRootViewController(list);
    more_->setTitle(systemText("More"));
  }
  return more_;
}

void UITabBarController::setViewControllers(std::vector<std::shared_ptr<UIViewController>> controllers) {
  std::erase(controllers, nullptr);
  if (more_) more_->popToRootViewControllerAnimated(false);
  for (const auto& former : controllers_) {
    const bool stays = std::find(controllers.begin(), controllers.end(), former) != controllers.end();
    if (!stays && former->parentViewController().get() == this) former->removeFromParentViewController();
  }
  controllers_ = std::move(controllers);
  adoptControllers();
  const auto places = placesInBar();
  std::dynamic_pointer_cast<MoreListController>(moreNavigationController()->viewControllers().front())
      ->setScreens({controllers_.begin() + static_cast<std::ptrdiff_t>(places), controllers_.end()});
  const auto inBar = controllers_.begin() + static_cast<std::ptrdiff_t>(places);
  const bool keeps = std::find(controllers_.begin(), inBar, selected_) != inBar ||
                     (selected_ && selected_ == more_ && inBar != controllers_.end());
  if (keeps) return rebuildBar();
  show(controllers_.empty() ? nullptr : controllers_.front());
}

void UITabBarController::adoptControllers() {
  for (const auto& controller : controllers_) {
    if (!controller->parentViewController()) addChildViewController(controller);
  }
}

void UITabBarController::setSelectedViewController(const std::shared_ptr<UIViewController>& controller) {
  if (controller && controller == more_) return show(more_);
  const auto found = std::find(controllers_.begin(), controllers_.end(), controller);
  if (found != controllers_.end()) setSelectedIndex(static_cast<std::size_t>(found - controllers_.begin()));
}

void UITabBarController::setSelectedIndex(std::size_t index) {
  if (index >= controllers_.size()) return;
  if (index < placesInBar()) return show(controllers_[index]);
  const auto controller = controllers_[index];
  const auto more = moreNavigationController();
  if (more->topViewController() != controller) {
    more->popToRootViewControllerAnimated(false);
    more->pushViewController(controller, false);
  }
  show(more);
}

void UITabBarController::show(const std::shared_ptr<UIViewController>& controller) {
  const auto old = selected_;
  selected_ = controller;
  // "More" is one of the children from when it is first chosen.
  if (controller && controller == more_ && !more_->parentViewController()) addChildViewController(more_);
  rebuildBar();
  if (old == controller || !isViewLoaded()) return;
  beginExchange(old, controller, false);
  if (selected_ == controller) {
    if (old && old->isViewLoaded() && old->view()->superview() == content_)
      old->view()->removeFromSuperview();
    if (controller) {
      controller->view()->setFrame(content_->bounds());
      content_->addSubview(controller->view());
    }
  }
  endExchange(old, controller);
}

void UITabBarController::barTapped(const id& sender) {
  const auto item = std::dynamic_pointer_cast<UIView>(sender);
  if (!item) return;
  const auto place = static_cast<std::size_t>(item->tag());
  const auto before = selected_;
  show(place < placesInBar() ? controllers_[place] : moreNavigationController());
  // The chosen place once more leads back to the first screen of its stack.
  if (before != selected_) return;
  if (const auto navigation = std::dynamic_pointer_cast<UINavigationController>(selected_)) {
    navigation->popToRootViewControllerAnimated(true);
  }
}

void UITabBarController::loadView() {
  UIViewController::loadView();
  view()->setBackgroundColor(UIColor::whiteColor());
  content_ = std::make_shared<UIView>(view()->bounds());
  content_->setClipsToBounds(true);
  view()->addSubview(content_);
  bar_ = std::make_shared<TabBar>();
  view()->addSubview(bar_);
  if (selected_) content_->addSubview(selected_->view());
  layoutParts();
  rebuildBar();
}

void UITabBarController::viewWillLayoutSubviews() {
  Subclass::viewWillLayoutSubviews();
  layoutParts();
}

void UITabBarController::layoutParts() {
  const CGSize size = view()->bounds().size;
  const CGFloat top = std::max(0.0, size.height - TabBar::kHeight);
  content_->setFrame({{0, 0}, {size.width, top}});
  bar_->setFrame({{0, top}, {size.width, TabBar::kHeight}});
  if (selected_ && selected_->view()->superview() == content_)
    selected_->view()->setFrame(content_->bounds());
}

void UITabBarController::rebuildBar() {
  if (!bar_) return;
  std::vector<std::shared_ptr<TabBarItem>> items;
  const auto add = [&](const std::string& title, TabBarItem::Sign sign, bool selected) {
    auto item = std::make_shared<TabBarItem>(title, sign, selected);
    item->setTag(static_cast<long>(items.size()));
    item->addTarget(sharedAs<NSObject>(), "barTapped:", UIControlEventTouchUpInside);
    items.push_back(std::move(item));
  };
  const auto places = placesInBar();
  for (std::size_t i = 0; i < places; ++i) {
    auto title = controllers_[i]->title();
    if (title.empty()) {
      const auto& inside = controllers_[i]->childViewControllers();
      if (!inside.empty()) title = inside.front()->title();
    }
    add(title, TabBarItem::Sign::initial, controllers_[i] == selected_);
  }
  if (places < controllers_.size())
    add(systemText("More"), TabBarItem::Sign::more, selected_ && selected_ == more_);
  bar_->setItems(std::move(items));
}

}  // namespace ios
