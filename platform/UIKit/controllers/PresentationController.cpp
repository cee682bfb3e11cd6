#include "UIKit/PresentationController+Private.h"

#include <algorithm>

#include "DeviceClock/Clock.h"
#include "UIKit/Chrome+Private.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIDevice.h"
#include "UIKit/UIPopoverPresentationController.h"
#include "UIKit/UIWindow.h"

namespace ios {

namespace {

constexpr unsigned kFill = UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight;
constexpr CGFloat kDimming = 0.4;
constexpr CGFloat kMargin = 10;

/// Fills the window above what presents, and keeps touches from it.
class PresentationContainer : public Subclass<PresentationContainer, UIView> {
 public:
  PresentationContainer(CGRect frame, const std::shared_ptr<PresentationController>& presentation)
      : Subclass(frame), presentation_(presentation) {}
  static MethodList methods() { return {}; }
  void layoutSubviews() override {
    if (const auto presentation = presentation_.lock()) presentation->layout();
  }
  std::shared_ptr<UIView> hitTest(CGPoint point, const std::shared_ptr<UIEvent>& event) override {
    const auto presentation = presentation_.lock();
    if (presentation && !presentation->inTransition()) return UIView::hitTest(point, event);
    return pointInside(point, event) ? sharedAs<UIView>() : nullptr;
  }

 private:
  std::weak_ptr<PresentationController> presentation_;
};

bool onPad() {
  return UIDevice::currentDevice()->userInterfaceIdiom() == UIUserInterfaceIdiom::pad;
}

}  // namespace

MethodList PresentationController::methods() {
  return {{"tappedBeside", &PresentationController::tappedBeside}};
}

PresentationController::PresentationController(const std::shared_ptr<UIViewController>& presenter,
                                               const std::shared_ptr<UIViewController>& presented)
    : presenter_(presenter), presented_(presented), style_(styleFor(*presented)) {}

PresentationController::Style PresentationController::styleFor(UIViewController& controller) {
  if (const auto* alert = dynamic_cast<UIAlertController*>(&controller)) {
    if (alert->preferredStyle() == UIAlertControllerStyle::alert) return Style::alert;
    return onPad() ? Style::popover : Style::actionSheet;
  }
  if (!onPad()) return Style::fullScreen;
  switch (controller.modalPresentationStyle()) {
    case UIModalPresentationStyle::pageSheet:
      return Style::pageSheet;
    case UIModalPresentationStyle::formSheet:
      return Style::formSheet;
    case UIModalPresentationStyle::popover:
      return Style::popover;
    case UIModalPresentationStyle::fullScreen:
      break;
  }
  return Style::fullScreen;
}

std::string PresentationController::obstacle(UIViewController& controller) {
  if (styleFor(controller) != Style::popover) return "";
  const auto popover = controller.popoverPresentationController();
  const auto source = popover ? popover->sourceView.lock() : nullptr;
  if (source && source->window()) return "";
  return "without an anchor: its popoverPresentationController needs a sourceView that is in a window";
}

void PresentationController::present(const std::shared_ptr<UIViewController>& presenter,
                                     const std::shared_ptr<UIViewController>& presented, bool animated,
                                     std::function<void()> completion) {
  const auto self = std::make_shared<PresentationController>(presenter, presented);
  if (completion) self->presentCompletions_.push_back(std::move(completion));
  presenter->presented_ = presented;
  presented->presenting_ = presenter;
  presented->presentation_ = self;
  presented->beingPresented_ = true;
  self->begin(animated);
}

double PresentationController::duration() const {
  return style_ == Style::alert || style_ == Style::popover ? 0.25 : 0.4;
}

void PresentationController::begin(bool animated) {
  const auto self = sharedAs<PresentationController>();
  const auto presenter = presenter_.lock();
  const auto presented = presented_.lock();
  if (coversPresenter()) presenter->beginAppearanceTransition(false, animated);
  presented->beginAppearanceTransition(true, animated);
  // What the host did in there may have ended everything.
  if (state_ != State::presenting) return;
  build();
  if (!animated || !container_) {
    place(true);
    endPresenting(true);
    return;
  }
  place(false);
  container_->layoutIfNeeded();
  UIView::animateWithDuration(
      duration(), [&] { place(true); }, [self] { self->endPresenting(false); });
}

void PresentationController::build() {
  const auto presenter = presenter_.lock();
  const auto presented = presented_.lock();
  const auto window = presenter->isViewLoaded() ? presenter->view()->window() : nullptr;
  if (!window) return;
  const CGRect bounds{{0, 0}, window->bounds().size};
  container_ = std::make_shared<PresentationContainer>(bounds, sharedAs<PresentationController>());
  container_->setAutoresizingMask(kFill);
  if (!coversPresenter()) {
    dimming_ = std::make_shared<UIControl>(bounds);
    dimming_->setAutoresizingMask(kFill);
    if (style_ != Style::popover) dimming_->setBackgroundColor(UIColor::colorWithWhiteAlpha(0, kDimming));
    dimming_->addTarget(sharedAs<PresentationController>(), "tappedBeside", UIControlEventTouchUpInside);
    container_->addSubview(dimming_);
  }
  if (style_ == Style::popover) {
    bubble_ = std::make_shared<PopoverBubble>();
    bubble_->setContent(presented->view());
    container_->addSubview(bubble_);
  } else {
    container_->addSubview(presented->view());
  }
  window->addSubview(container_);
}

void PresentationController::endPresenting(bool nextTurn) {
  if (state_ != State::presenting) return;
  const auto self = sharedAs<PresentationController>();
  const auto presenter = presenter_.lock();
  const auto presented = presented_.lock();
  state_ = State::shown;
  if (coversPresenter() && presenter && container_) removePresenterView();
  if (presented) presented->endAppearanceTransition();
  if (coversPresenter() && presenter) presenter->endAppearanceTransition();
  if (presented) presented->beingPresented_ = false;
  run(std::move(presentCompletions_), nextTurn);
  if (dismissalWaits_ && state_ == State::shown) beginDismissing(true);
}

void PresentationController::dismiss(bool animated, std::function<void()> completion) {
  const auto self = sharedAs<PresentationController>();
  if (state_ == State::ended) return run({std::move(completion)}, true);
  dismissCompletions_.push_back(std::move(completion));
  if (state_ == State::presenting) {
    dismissalWaits_ = animated;
    if (!animated) endPresenting(true);
  }
  if (state_ == State::shown) {
    beginDismissing(animated);
  } else if (state_ == State::dismissing && !animated) {
    endDismissing(true);
  }
}

void PresentationController::beginDismissing(bool animated) {
  const auto self = sharedAs<PresentationController>();
  const auto presenter = presenter_.lock();
  const auto presented = presented_.lock();
  state_ = State::dismissing;
  if (!presented) return endDismissing(true);
  presented->beingDismissed_ = true;
  if (const auto upper = above()) {
    if (upper->state_ == State::presenting) upper->endPresenting(true);
    if (upper->state_ == State::shown) upper->beginDismissing(animated);
  }
  presented->beginAppearanceTransition(false, animated);
  if (coversPresenter() && presenter && !presenter->beingDismissed_) {
    restorePresenterView();
    presenter->beginAppearanceTransition(true, animated);
  }
  if (state_ != State::dismissing) return;
  if (!animated || !container_) return endDismissing(true);
  UIView::animateWithDuration(
      duration(), [&] { place(false); }, [self] { self->endDismissing(false); });
}

void PresentationController::endDismissing(bool nextTurn) {
  if (state_ != State::dismissing) return;
  const auto self = sharedAs<PresentationController>();
  const auto presenter = presenter_.lock();
  const auto presented = presented_.lock();
  if (const auto upper = above()) upper->endDismissing(nextTurn);
  if (state_ != State::dismissing) return;
  takeDown();
  // From here on the presenter is free: what appears again may present at once.
  if (coversPresenter() && presenter && !presenter->beingDismissed_) presenter->endAppearanceTransition();
  if (presented) {
    presented->endAppearanceTransition();
    presented->beingDismissed_ = false;
  }
  run(std::move(dismissCompletions_), nextTurn);
}

void PresentationController::takeDown() {
  state_ = State::ended;
  const auto presenter = presenter_.lock();
  const auto presented = presented_.lock();
  if (container_) container_->removeFromSuperview();
  if (presented) {
    if (presented->isViewLoaded()) {
      presented->view()->removeFromSuperview();
      presented->view()->setTransform(CGAffineTransformIdentity);
      presented->view()->setAlpha(1);
    }
    presented->presenting_.reset();
    presented->presentation_.reset();
  }
  if (presenter && presenter->presented_ == presented) presenter->presented_.reset();
}

void PresentationController::abandon(UIViewController& root) {
  const auto presented = root.presented_;
  if (!presented || !presented->presentation_) return;
  const auto presentation = presented->presentation_;
  abandon(*presented);
  presentation->takeDown();
  presented->beginAppearanceTransition(false, false);
  presented->endAppearanceTransition();
  presented->beingPresented_ = presented->beingDismissed_ = false;
}

void PresentationController::removePresenterView() {
  const auto view = presenter_.lock()->view();
  const auto superview = view->superview();
  if (!superview) return;
  const auto& siblings = superview->subviews();
  presenterIndex_ =
      static_cast<std::size_t>(std::find(siblings.begin(), siblings.end(), view) - siblings.begin());
  presenterSuperview_ = superview;
  view->removeFromSuperview();
}

void PresentationController::restorePresenterView() {
  const auto superview = presenterSuperview_.lock();
  const auto view = presenter_.lock()->view();
  presenterSuperview_.reset();
  if (!superview || view->superview()) return;
  view->setFrame({{0, 0}, superview->bounds().size});
  superview->insertSubviewAtIndex(view, std::min(presenterIndex_, superview->subviews().size()));
  view->layoutIfNeeded();
}

std::shared_ptr<PresentationController> PresentationController::above() const {
  const auto presented = presented_.lock();
  return presented && presented->presented_ ? presented->presented_->presentation_ : nullptr;
}

void PresentationController::layout() {
  if (state_ != State::ended) place(placedShown_);
}

void PresentationController::place(bool shown) {
  placedShown_ = shown;
  const auto presented = presented_.lock();
  if (!container_ || !presented || !presented->isViewLoaded()) return;
  const CGSize size = container_->bounds().size;
  const auto& view = presented->view();
  auto* alert = dynamic_cast<UIAlertController*>(presented.get());
  if (dimming_) dimming_->setAlpha(shown ? 1 : 0);
  switch (style_) {
    case Style::fullScreen:
      return placePanel(view, {{0, 0}, size}, shown ? 0 : size.height);
    case Style::pageSheet:
    case Style::formSheet: {
      const CGSize wanted =
          style_ == Style::formSheet ? CGSize{540, 620} : CGSize{768, size.height - chrome::kStatusBar};
      const CGSize panel{std::min(wanted.width, size.width), std::min(wanted.height, size.height)};
      const CGPoint corner{(size.width - panel.width) / 2, style_ == Style::formSheet
                                                               ? (size.height - panel.height) / 2
                                                               : size.height - panel.height};
      return placePanel(view, {corner, panel}, shown ? 0 : size.height - corner.y);
    }
    case Style::alert: {
      const CGSize panel = alert->panelSize(size);
      // It grows smaller into place, but only fades on its way out.
      const CGFloat scale = shown || state_ == State::dismissing ? 1 : 1.2;
      view->setTransform(CGAffineTransformMakeScale(scale, scale));
      view->setAlpha(shown ? 1 : 0);
      const CGPoint corner{std::round((size.width - panel.width) / 2),
                           std::round((size.height - panel.height) / 2)};
      return placePanel(view, {corner, panel}, 0);
    }
    case Style::actionSheet: {
      const CGSize panel = alert->panelSize(size);
      const CGPoint corner{std::round((size.width - panel.width) / 2), size.height - panel.height - kMargin};
      return placePanel(view, {corner, panel}, shown ? 0 : panel.height + kMargin);
    }
    case Style::popover:
      bubble_->setAlpha(shown ? 1 : 0);
      return bubble_->place(popoverPlacement());
  }
}

void PresentationController::placePanel(const std::shared_ptr<UIView>& view, const CGRect& frame,
                                        CGFloat shift) {
  view->setBounds({view->bounds().origin, frame.size});
  view->setCenter({frame.midX(), frame.midY() + shift});
}

PopoverPlacement PresentationController::popoverPlacement() {
  const auto presented = presented_.lock();
  const auto popover = presented->popover_;
  if (const auto source = popover->sourceView.lock(); source && source->window()) {
    anchor_ = source->convertRectToView(popover->sourceRect, container_.get());
  }
  CGRect area = CGRectInset({{0, 0}, container_->bounds().size}, kMargin, kMargin);
  area.origin.y += kMargin;
  area.size.height -= kMargin;
  auto* alert = dynamic_cast<UIAlertController*>(presented.get());
  const CGSize size = alert ? alert->panelSize(area.size) : CGSize{320, 480};
  return placePopover(size, anchor_, area, popover->permittedArrowDirections);
}

void PresentationController::tappedBeside() {
  const auto presented = presented_.lock();
  if (!presented || state_ != State::shown) return;
  if (auto* alert = dynamic_cast<UIAlertController*>(presented.get())) {
    alert->tappedOutside();
  } else if (style_ == Style::popover) {
    dismiss(true, nullptr);
  }
}

void PresentationController::run(Completions completions, bool nextTurn) {
  for (auto& completion : completions) {
    if (!completion) continue;
    if (nextTurn) {
      Clock::shared().postToMain(std::move(completion));
    } else {
      completion();
    }
  }
}

}  // namespace ios
