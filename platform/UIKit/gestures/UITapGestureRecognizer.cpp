#include "UIKit/UITapGestureRecognizer.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "DeviceClock/Clock.h"

namespace ios {
namespace {

using State = UIGestureRecognizerState;

// From the first finger's contact to the last one's end; longer is a press, not a tap.
constexpr double kLongestTap = 0.75;
// From one tap's end to the next one's beginning: the platform's double-tap interval.
constexpr double kLongestPause = 0.35;
// Within which all fingers of a tap must have come down; as long as the pause between taps.
constexpr double kLongestGathering = 0.35;
// How far a finger may stray during a tap: where a scroll view begins to follow it.
constexpr CGFloat kLargestStray = 10;
// How far a tap may be from the first of its row: about a fingertip's width.
constexpr CGFloat kLargestDistance = 45;

CGFloat distance(CGPoint a, CGPoint b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

}  // namespace

/// How much of the gesture has been made.
struct UITapGestureRecognizer::Progress {
  struct Finger {
    std::shared_ptr<UITouch> touch;
    CGPoint start;
    bool up = false;
  };
  std::vector<Finger> fingers;  // of the current tap, or of the last one
  bool down = false;            // a finger of this tap is on the glass
  bool complete = false;        // all fingers of this tap have come down
  unsigned long taps = 0;
  double tapStart = 0, tapEnd = 0;
  std::optional<CGPoint> firstTap;
  std::optional<Clock::EventId> timeout;

  ~Progress() { stopWaiting(); }
  void stopWaiting() {
    if (timeout) Clock::shared().cancel(*timeout);
    timeout.reset();
  }
  Finger* find(const std::shared_ptr<UITouch>& touch) {
    const auto found = std::find_if(fingers.begin(), fingers.end(),
                                    [&](const Finger& f) { return f.touch == touch && !f.up; });
    return found == fingers.end() ? nullptr : &*found;
  }
};

UITapGestureRecognizer::~UITapGestureRecognizer() = default;

bool UITapGestureRecognizer::canBePreventedByGestureRecognizer(const UIGestureRecognizer& other) const {
  const auto* tap = dynamic_cast<const UITapGestureRecognizer*>(&other);
  return !tap || tap->taps_ >= taps_;
}

CGPoint UITapGestureRecognizer::locationInView(const UIView* view) const {
  CGPoint sum;
  if (!progress_ || progress_->fingers.empty()) return sum;
  for (const auto& finger : progress_->fingers) {
    const CGPoint at = finger.touch->locationInView(view);
    sum = {sum.x + at.x, sum.y + at.y};
  }
  const auto count = static_cast<CGFloat>(progress_->fingers.size());
  return {sum.x / count, sum.y / count};
}

void UITapGestureRecognizer::failAfter(double seconds) {
  progress_->stopWaiting();
  // The instant itself is still in time.
  const auto wait = std::chrono::nanoseconds(std::llround(seconds * 1e9) + 1);
  Clock& clock = Clock::shared();
  const std::weak_ptr<UITapGestureRecognizer> weakSelf = sharedAs<UITapGestureRecognizer>();
  progress_->timeout = clock.schedule(clock.now() + wait, Clock::Lane::main, [weakSelf] {
    auto self = weakSelf.lock();
    if (!self || !self->progress_) return;
    self->progress_->timeout.reset();
    self->setState(State::failed);
  });
}

void UITapGestureRecognizer::touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>&) {
  if (!progress_) progress_ = std::make_shared<Progress>();
  Progress& p = *progress_;
  for (const auto& touch : touches) {
    if (!p.down) {
      if (p.taps > 0 && touch->timestamp() - p.tapEnd > kLongestPause + 1e-9) return setState(State::failed);
      p.fingers.clear();
      p.down = true;
      p.complete = false;
      p.tapStart = touch->timestamp();
      failAfter(touches_ > 1 ? kLongestGathering : kLongestTap);
    }
    p.fingers.push_back({touch, touch->locationInView(nullptr)});
    const bool late = touch->timestamp() - p.tapStart > kLongestGathering + 1e-9;
    if (p.complete || late) return setState(State::failed);
    if (p.fingers.size() < std::max(1ul, touches_)) continue;
    p.complete = true;
    failAfter(kLongestTap - (touch->timestamp() - p.tapStart));
    const CGPoint at = locationInView(nullptr);
    if (!p.firstTap) p.firstTap = at;
    if (distance(at, *p.firstTap) > kLargestDistance) return setState(State::failed);
  }
}

void UITapGestureRecognizer::touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>&) {
  if (!progress_) return;
  for (const auto& touch : touches) {
    const auto* finger = progress_->find(touch);
    if (finger && distance(touch->locationInView(nullptr), finger->start) > kLargestStray) {
      return setState(State::failed);
    }
  }
}

void UITapGestureRecognizer::touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  if (!progress_) return;
  touchesMoved(touches, event);  // a finger may lift somewhere else than where it was last seen
  if (state() != State::possible) return;
  Progress& p = *progress_;
  for (const auto& touch : touches) {
    auto* finger = p.find(touch);
    if (!finger) continue;
    finger->up = true;
    p.tapEnd = touch->timestamp();
    if (!p.complete || p.tapEnd - p.tapStart > kLongestTap + 1e-9) return setState(State::failed);
  }
  if (!p.down || std::any_of(p.fingers.begin(), p.fingers.end(), [](const auto& f) { return !f.up; })) return;
  p.down = false;
  if (++p.taps >= std::max(1ul, taps_)) {
    p.stopWaiting();
    setState(State::ended);
  } else {
    failAfter(kLongestPause);
  }
}

void UITapGestureRecognizer::reset() {
  progress_.reset();
}

}  // namespace ios
