#include "QuartzCore/CAAnimation.h"
#include "UIKit/Private/UIView.h"

namespace ios {
namespace {

CGFloat between(CGFloat from, CGFloat to, double progress) {
  return from + (to - from) * progress;
}
CGPoint between(CGPoint from, CGPoint to, double p) {
  return {between(from.x, to.x, p), between(from.y, to.y, p)};
}
CGRect between(const CGRect& from, const CGRect& to, double p) {
  return {between(from.origin, to.origin, p),
          {between(from.size.width, to.size.width, p), between(from.size.height, to.size.height, p)}};
}
CGAffineTransform between(const CGAffineTransform& from, const CGAffineTransform& to, double p) {
  return {between(from.a, to.a, p), between(from.b, to.b, p),   between(from.c, to.c, p),
          between(from.d, to.d, p), between(from.tx, to.tx, p), between(from.ty, to.ty, p)};
}

template <class Track, class T>
T shownValue(const std::optional<Track>& track, const T& value) {
  return track ? between(track->from, value, track->run->progress) : value;
}

}  // namespace

std::shared_ptr<UIView::Animation::Run> UIView::Animation::current;

UIView::Shown UIView::shown() const {
  if (!animation_) return {center_, bounds_, alpha_, transform_};
  return {shownValue(animation_->center, center_), shownValue(animation_->bounds, bounds_),
          shownValue(animation_->alpha, alpha_), shownValue(animation_->transform, transform_)};
}

void UIView::willChange(Animatable property) {
  const std::shared_ptr<UIView> self = sharedAs<UIView>();
  // Outside of an animation a new value shows at once, and ends the animation towards the old one.
  const auto run = self ? Animation::current : nullptr;
  if (!run && !animation_) return;
  if (!animation_) animation_ = std::make_unique<Animation>();
  const auto start = [&run](auto& track, const auto& from) {
    if (run) {
      if (!track || track->run != run) track = {from, run};
    } else {
      track.reset();
    }
  };
  const Shown now = shown();
  switch (property) {
    case Animatable::center:
      start(animation_->center, now.center);
      break;
    case Animatable::bounds:
      start(animation_->bounds, now.bounds);
      break;
    case Animatable::alpha:
      start(animation_->alpha, now.alpha);
      break;
    case Animatable::transform:
      start(animation_->transform, now.transform);
      break;
  }
  if (run) run->views.push_back(self);
}

void UIView::animateWithDuration(double duration, const std::function<void()>& animations,
                                 std::function<void()> completion) {
  const bool moves = duration > 0;
  auto run = moves ? std::make_shared<Animation::Run>() : nullptr;
  {
    struct Inside {
      explicit Inside(std::shared_ptr<Animation::Run> run)
          : outer(std::exchange(Animation::current, std::move(run))) {}
      ~Inside() { Animation::current = outer; }
      const std::shared_ptr<Animation::Run> outer;
    } inside(run);
    if (animations) animations();
  }
  if (!moves)
    return animateOnDisplay(
        0, [](double) {}, std::move(completion));

  animateOnDisplay(
      duration,
      [run](double fraction) {
        run->progress = easeInEaseOut(fraction);
        for (const auto& reference : run->views) {
          if (auto view = reference.lock()) view->setNeedsDisplay();
        }
      },
      [run, completion = std::move(completion)] {
        const auto finish = [&run](auto& track) {
          if (track && track->run == run) track.reset();
        };
        for (const auto& reference : run->views) {
          auto view = reference.lock();
          if (!view || !view->animation_) continue;
          finish(view->animation_->center);
          finish(view->animation_->bounds);
          finish(view->animation_->alpha);
          finish(view->animation_->transform);
          view->setNeedsDisplay();
        }
        if (completion) completion();
      });
}

}  // namespace ios
