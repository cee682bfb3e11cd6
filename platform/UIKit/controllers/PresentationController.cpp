#include "UIKit/Private/PresentationController.h"

#include <algorithm>
#include <new>

#include "DeviceClock/Clock.h"
#include "UIKit/UIControl.h"
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

}  // namespace

MethodList PresentationController::methods() {
  return {{"tappedBeside", &PresentationController::tappedBeside}};
}

PresentationController::PresentationController(const std::shared_ptr<UIViewController>& presenter,
                                               const std::shared_ptr<UIViewController>& presented)
    : presenter_(presenter), presented_(presented), style_(presented->presentationStyle()) {}

std::string PresentationController::obstacle(UIViewController& controller) {
  if (controller.presentationStyle() != Style::popover) return "";
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
  try {
    self->begin(animated);
  } catch (...) {
    // Half a presentation could neither be used nor dismissed.
    if (self->state_ != State::ended) {
      abandon(*presenter);
      if (self->coversPresenter()) {
        presenter->beginAppearanceTransition(true, false);
        presenter->endAppearanceTransition();
      }
    }
    throw;
  }
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
  // The host's code in those calls may have ended the presentation.
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
    try {
      beginDismissing(animated);
    } catch (const std::bad_alloc&) {
      // At once, rather than halfway for ever.
      if (state_ != State::dismissing) throw;
      const auto presenter = presenter_.lock();
      if (coversPresenter() && presenter && !presenter->beingDismissed_) restorePresenterView();
      endDismissing(true);
    }
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
  if (superview && !view->superview()) {
    view->setFrame({{0, 0}, superview->bounds().size});
    superview->insertSubviewAtIndex(view, std::min(presenterIndex_, superview->subviews().size()));
  }
  presenterSuperview_.reset();
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
  if (dimming_) dimming_->setAlpha(shown ? 1 : 0);
  switch (style_) {
    case Style::fullScreen:
      return placePanel(view, {{0, 0}, size}, shown ? 0 : size.height);
    case Style::alert: {
      const CGSize panel = presented->presentedSize(size);
      // It shrinks into place, but only fades out.
      const CGFloat scale = shown || state_ == State::dismissing ? 1 : 1.2;
      view->setTransform(CGAffineTransformMakeScale(scale, scale));
      view->setAlpha(shown ? 1 : 0);
      const CGPoint corner{std::round((size.width - panel.width) / 2),
                           std::round((size.height - panel.height) / 2)};
      return placePanel(view, {corner, panel}, 0);
    }
    case Style::actionSheet: {
      const CGSize panel = presented->presentedSize(size);
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
  return placePopover(presented->presentedSize(area.size), anchor_, area, popover->permittedArrowDirections);
}

void PresentationController::tappedBeside() {
  const auto presented = presented_.lock();
  if (presented && state_ == State::shown) presented->tappedBeside();
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
