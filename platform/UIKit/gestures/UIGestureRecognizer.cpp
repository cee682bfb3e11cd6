#include "UIKit/UIGestureRecognizer.h"

#include "UIKit/Private/GestureArbiter.h"
#include "UIKit/UIWindow.h"

namespace ios {

using State = UIGestureRecognizerState;

UIGestureRecognizer::UIGestureRecognizer(const id& target, Selector action) {
  addTarget(target, action);
}

void UIGestureRecognizer::addTarget(const id& target, Selector action) {
  targets_.push_back({target, Action(target, action)});
}

std::shared_ptr<UIView> UIGestureRecognizer::view() const {
  return view_ ? view_->sharedAs<UIView>() : nullptr;
}

void UIGestureRecognizer::setEnabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  if (!enabled) leaveTouches();
}

void UIGestureRecognizer::leaveTouches() {
  const auto self = weak_from_this().lock();
  ++attachment_;
  if (state_ == State::began || state_ == State::changed) {
    state_ = State::cancelled;
    callTargets();
  }
  backToPossible();
}

void UIGestureRecognizer::attach(UIView* view) {
  view_ = view;
  ++attachment_;
  backToPossible();
}

void UIGestureRecognizer::touchesCancelled(const UITouches&, const std::shared_ptr<UIEvent>&) {
  setState(state_ == State::possible ? State::failed : State::cancelled);
}

void UIGestureRecognizer::setState(State state) {
  const State old = state_;
  const bool underWay = old == State::began || old == State::changed;
  const bool allowed =
      old == State::possible
          ? state == State::began || state == State::ended || state == State::failed ||
                state == State::cancelled
          : underWay && (state == State::changed || state == State::ended || state == State::cancelled);
  if (!allowed) return;
  state_ = state;
  stateWasSet_ = true;
  if (delivering_) return;  // the delivering code checks the state next
  const auto window = view_ ? view_->window() : nullptr;
  const auto self = sharedAs<UIGestureRecognizer>();
  if (window && self) {
    window->arbiter().stateWasSet(self, old == State::possible);
  } else if (state != State::began && state != State::changed) {
    backToPossible();
  }
}

void UIGestureRecognizer::callTargets() {
  const auto self = sharedAs<UIGestureRecognizer>();
  const auto targets = targets_;
  for (const TargetAction& entry : targets) {
    if (auto target = entry.target.lock()) entry.action.perform(*target, self);
  }
}

void UIGestureRecognizer::backToPossible() {
  state_ = State::possible;
  reset();
}

}  // namespace ios
