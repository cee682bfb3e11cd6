#include "UIKit/UINavigationController.h"

#include <algorithm>

#include "UIKit/Private/Chrome.h"
#include "UIKit/Private/NavigationBar.h"
#include "UIKit/UILabel.h"

namespace ios {

namespace {

constexpr double kSlideSeconds = 0.35;
/// How far the lower screen moves, as a share of the width.
constexpr CGFloat kParallax = 0.3;

}  // namespace

struct UINavigationController::Slide {
  std::shared_ptr<UIViewController> old, shown;
};

MethodList UINavigationController::methods() {
  return {{"backTapped", &UINavigationController::backTapped}};
}

std::shared_ptr<UINavigationController> UINavigationController::withRootViewController(
    const std::shared_ptr<UIViewController>& root) {
  auto controller = std::make_shared<UINavigationController>();
  controller->pushViewController(root, false);
  return controller;
}

std::shared_ptr<UIViewController> UINavigationController::topViewController() const {
  return childViewControllers().empty() ? nullptr : childViewControllers().back();
}

std::shared_ptr<UIViewController> UINavigationController::visibleViewController() const {
  const auto presented = presentedViewController();
  return presented ? presented : topViewController();
}

std::shared_ptr<UIViewController> UINavigationController::previous() const {
  const auto& stack = viewControllers();
  if (stack.size() > 1) return stack[stack.size() - 2];
  // On top of another stack, whose bar is hidden, the first screen leads back there.
  const auto outer = navigationController();
  return outer ? outer->previous() : nullptr;
}

void UINavigationController::pushViewController(const std::shared_ptr<UIViewController>& controller,
                                                bool animated) {
  const auto& stack = viewControllers();
  if (!controller || std::find(stack.begin(), stack.end(), controller) != stack.end()) return;
  const auto old = topViewController();
  endSlide();
  addChildViewController(controller);
  showTop(animated && old, true, old);
}

void UINavigationController::popViewControllerAnimated(bool animated) {
  if (viewControllers().size() > 1) popTo(viewControllers().size() - 1, animated);
}

void UINavigationController::popToRootViewControllerAnimated(bool animated) {
  popTo(1, animated);
}

void UINavigationController::popTo(std::size_t count, bool animated) {
  if (viewControllers().size() <= count) return;
  endSlide();
  const auto old = topViewController();
  while (viewControllers().size() > count) topViewController()->removeFromParentViewController();
  showTop(animated, false, old);
}

void UINavigationController::backTapped() {
  if (viewControllers().size() > 1) {
    popViewControllerAnimated(true);
  } else if (const auto outer = navigationController()) {
    outer->popViewControllerAnimated(true);
  }
}

void UINavigationController::loadView() {
  UIViewController::loadView();
  view()->setBackgroundColor(UIColor::whiteColor());
  content_ = std::make_shared<UIView>(view()->bounds());
  content_->setClipsToBounds(true);
  view()->addSubview(content_);
  bar_ = std::make_shared<NavigationBar>();
  view()->addSubview(bar_);
  bar_->backButton()->addTarget(sharedAs<NSObject>(), "backTapped", UIControlEventTouchUpInside);
  if (const auto top = topViewController()) content_->addSubview(top->view());
  layoutParts();
}

void UINavigationController::viewWillLayoutSubviews() {
  Subclass::viewWillLayoutSubviews();
  layoutParts();
}

void UINavigationController::layoutParts() {
  const CGSize size = view()->bounds().size;
  const auto top = topViewController();
  const bool barHidden = std::dynamic_pointer_cast<UINavigationController>(top) != nullptr;
  const CGFloat barHeight = NavigationBar::kHeight + chrome::kStatusBar;
  const CGFloat y = barHidden ? 0 : barHeight;
  bar_->setHidden(barHidden);
  bar_->setFrame({{0, 0}, {size.width, barHeight}});
  content_->setFrame({{0, y}, {size.width, std::max(0.0, size.height - y)}});
  if (top && !slide_ && top->view()->superview() == content_) top->view()->setFrame(content_->bounds());
  updateBar();
}

void UINavigationController::updateBar() {
  if (!bar_) return;
  const auto top = topViewController();
  const auto back = previous();
  bar_->setTitle(top ? top->title() : "");
  bar_->setBackTitle(back ? std::optional(back->title()) : std::nullopt);
}

void UINavigationController::showTop(bool animated, bool pushing,
                                     const std::shared_ptr<UIViewController>& old) {
  if (!isViewLoaded()) return;
  const auto top = topViewController();
  animated = animated && view()->window();
  const auto slide = slide_ = std::make_shared<Slide>(Slide{old, top});
  beginExchange(old, top, animated);
  if (slide_ != slide) return;  // an appearance call moved on
  layoutParts();
  const auto& shownView = top->view();
  shownView->setFrame(content_->bounds());
  content_->insertSubviewAtIndex(shownView, pushing ? content_->subviews().size() : 0);
  if (!animated) return endSlide();

  const auto& upper = pushing ? shownView : old->view();
  const auto& lower = pushing ? old->view() : shownView;
  const CGSize size = content_->bounds().size;
  const CGFloat away = chrome::isMirrored() ? -size.width : size.width;
  const auto place = [&](bool covered) {
    const CGFloat middle = size.width / 2;
    upper->setCenter({middle + (covered ? 0 : away), upper->center().y});
    lower->setCenter({middle - (covered ? away * kParallax : 0), lower->center().y});
  };
  place(!pushing);
  shownView->layoutIfNeeded();
  bar_->layoutIfNeeded();
  bar_->titleLabel()->setAlpha(0);
  view()->setUserInteractionEnabled(false);
  const std::weak_ptr<UINavigationController> self = sharedAs<UINavigationController>();
  UIView::animateWithDuration(
      kSlideSeconds,
      [&] {
        place(pushing);
        bar_->titleLabel()->setAlpha(1);
      },
      [self, slide] {
        const auto controller = self.lock();
        if (controller && controller->slide_ == slide) controller->endSlide();
      });
}

void UINavigationController::endSlide() {
  if (!slide_) return;
  const auto slide = std::move(slide_);
  slide_.reset();
  view()->setUserInteractionEnabled(true);
  if (slide->old && slide->old->isViewLoaded() && slide->old->view()->superview() == content_) {
    slide->old->view()->removeFromSuperview();
  }
  slide->shown->view()->setFrame(content_->bounds());
  endExchange(slide->old, slide->shown);
}

}  // namespace ios
