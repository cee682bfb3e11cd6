#include "UIKit/Private/GestureArbiter.h"

#include <algorithm>

#include "UIKit/UIGestureRecognizer.h"
#include "UIKit/UIView.h"
#include "UIKit/UIWindow.h"

namespace ios {
namespace {

using State = UIGestureRecognizerState;
using TouchOperation = void (UIResponder::*)(const UITouches&, const std::shared_ptr<UIEvent>&);

bool isOver(State state) {
  return state == State::ended || state == State::failed || state == State::cancelled;
}
bool isUnderWay(State state) {
  return state == State::began || state == State::changed;
}
bool hasLeft(UITouchPhase phase) {
  return phase == UITouchPhase::ended || phase == UITouchPhase::cancelled;
}

int depth(const std::shared_ptr<UIView>& view) {
  int count = 0;
  for (auto ancestor = view; ancestor; ancestor = ancestor->superview()) ++count;
  return count;
}

constexpr UITouchPhase kChangingPhases[] = {UITouchPhase::began, UITouchPhase::moved, UITouchPhase::ended,
                                            UITouchPhase::cancelled};

TouchOperation operationFor(UITouchPhase phase) {
  switch (phase) {
    case UITouchPhase::began:
      return &UIResponder::touchesBegan;
    case UITouchPhase::ended:
      return &UIResponder::touchesEnded;
    case UITouchPhase::cancelled:
      return &UIResponder::touchesCancelled;
    default:
      return &UIResponder::touchesMoved;
  }
}

}  // namespace

bool GestureArbiter::Contact::watchedBy(const UIGestureRecognizer& recognizer) const {
  return std::any_of(watchers.begin(), watchers.end(), [&](const Watcher& watcher) {
    return watcher.attachment == recognizer.attachment_ && watcher.recognizer.lock().get() == &recognizer;
  });
}

std::shared_ptr<GestureArbiter::Contact> GestureArbiter::makeContact(
    const std::shared_ptr<UITouch>& touch) const {
  auto contact = std::make_shared<Contact>();
  contact->touch = touch;
  const auto view = touch->view();
  contact->viewHears = view && (view->isMultipleTouchEnabled() ||
                                std::none_of(contacts_.begin(), contacts_.end(),
                                             [&](const auto& c) { return c->touch->view() == view; }));
  for (auto ancestor = view; ancestor; ancestor = ancestor->superview()) {
    const auto& recognizers = ancestor->gestureRecognizers();
    for (auto r = recognizers.rbegin(); r != recognizers.rend(); ++r) {
      contact->watchers.push_back({*r, (*r)->attachment_});
    }
  }
  return contact;
}

GestureArbiter::Recognizers GestureArbiter::recognizersOf(const Contacts& contacts) {
  std::vector<std::pair<int, std::shared_ptr<UIGestureRecognizer>>> found;
  for (const auto& contact : contacts) {
    for (const Watcher& watcher : contact->watchers) {
      auto recognizer = watcher.recognizer.lock();
      if (!recognizer) continue;
      const bool known =
          std::any_of(found.begin(), found.end(), [&](const auto& f) { return f.second == recognizer; });
      if (!known) found.emplace_back(depth(recognizer->view()), recognizer);
    }
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  Recognizers recognizers;
  for (auto& entry : found) recognizers.push_back(std::move(entry.second));
  return recognizers;
}

GestureArbiter::Contacts GestureArbiter::watchedBy(const UIGestureRecognizer& recognizer) const {
  Contacts watched;
  for (const auto& contact : contacts_) {
    if (contact->watchedBy(recognizer)) watched.push_back(contact);
  }
  return watched;
}

void GestureArbiter::deliver(const UIWindow& window, const UITouches& changed,
                             const std::shared_ptr<UIEvent>& event) {
  Contacts contacts;
  for (const auto& touch : changed) {
    const auto found = std::find_if(contacts_.begin(), contacts_.end(),
                                    [&](const auto& contact) { return contact->touch == touch; });
    if (found != contacts_.end()) {
      contacts.push_back(*found);
    } else if (touch->phase() == UITouchPhase::began) {
      contacts_.push_back(makeContact(touch));
      contacts.push_back(contacts_.back());
    }
  }
  const Recognizers recognizers = recognizersOf(contacts);
  for (const auto& recognizer : recognizers) offer(window, recognizer, contacts, event);
  deliverToViews(window, contacts, event);
  std::erase_if(contacts_, [&](const auto& contact) {
    return hasLeft(contact->touch->phase()) &&
           std::find(contacts.begin(), contacts.end(), contact) != contacts.end();
  });
  for (const auto& recognizer : recognizers) resetIfOver(*recognizer);
}

void GestureArbiter::offer(const UIWindow& window, const std::shared_ptr<UIGestureRecognizer>& recognizer,
                           const Contacts& changed, const std::shared_ptr<UIEvent>& event) {
  const auto view = recognizer->view();
  if (view && view->window().get() != &window) return recognizer->leaveTouches();
  for (const UITouchPhase phase : kChangingPhases) {
    UITouches touches;
    for (const auto& contact : changed) {
      if (contact->touch->phase() == phase && contact->watchedBy(*recognizer))
        touches.push_back(contact->touch);
    }
    if (touches.empty() || !recognizer->view_ || !recognizer->enabled_ || isOver(recognizer->state_))
      continue;
    const bool wasPossible = recognizer->state_ == State::possible;
    recognizer->stateWasSet_ = false;
    recognizer->delivering_ = true;
    switch (phase) {
      case UITouchPhase::began:
        recognizer->touchesBegan(touches, event);
        break;
      case UITouchPhase::ended:
        recognizer->touchesEnded(touches, event);
        break;
      case UITouchPhase::cancelled:
        recognizer->touchesCancelled(touches, event);
        break;
      default:
        recognizer->touchesMoved(touches, event);
        break;
    }
    recognizer->delivering_ = false;
    if (recognizer->stateWasSet_) settle(recognizer, wasPossible, event);
  }
}

void GestureArbiter::stateWasSet(const std::shared_ptr<UIGestureRecognizer>& recognizer, bool wasPossible) {
  settle(recognizer, wasPossible, std::make_shared<UIEvent>(UIEventType::touches, UIEventSubtype::none));
  resetIfOver(*recognizer);
}

void GestureArbiter::settle(const std::shared_ptr<UIGestureRecognizer>& recognizer, bool wasPossible,
                            const std::shared_ptr<UIEvent>& event) {
  const State state = recognizer->state_;
  if (wasPossible && (state == State::failed || state == State::cancelled)) return;
  if (wasPossible) {
    const Contacts watched = watchedBy(*recognizer);
    if (!mayRecognize(*recognizer, watched)) {
      recognizer->state_ = State::failed;
      return;
    }
    preventOthers(*recognizer, watched);
    for (const auto& contact : watched) {
      if (!recognizer->cancelsTouchesInView_ || !contact->viewHears) continue;
      contact->viewHears = false;
      if (auto view = contact->touch->view(); view && contact->touch->phase() != UITouchPhase::began) {
        view->touchesCancelled({contact->touch}, event);
      }
    }
  }
  recognizer->callTargets();
}

bool GestureArbiter::mayRecognize(const UIGestureRecognizer& recognizer, const Contacts& watched) const {
  for (const auto& contact : watched) {
    if (auto view = contact->touch->view(); view && !view->gestureRecognizerShouldBegin(recognizer))
      return false;
  }
  const Recognizers others = recognizersOf(watched);
  return std::none_of(others.begin(), others.end(), [&](const auto& other) {
    return other.get() != &recognizer && isUnderWay(other->state_) &&
           recognizer.canBePreventedByGestureRecognizer(*other);
  });
}

void GestureArbiter::preventOthers(const UIGestureRecognizer& recognizer, const Contacts& watched) {
  for (const auto& other : recognizersOf(watched)) {
    if (other.get() == &recognizer || other->state_ != State::possible) continue;
    if (other->canBePreventedByGestureRecognizer(recognizer)) other->state_ = State::failed;
  }
}

void GestureArbiter::deliverToViews(const UIWindow& window, const Contacts& changed,
                                    const std::shared_ptr<UIEvent>& event) {
  for (const UITouchPhase phase : kChangingPhases) {
    std::vector<std::pair<std::shared_ptr<UIView>, UITouches>> byView;
    for (const auto& contact : changed) {
      if (!contact->viewHears || contact->touch->phase() != phase) continue;
      const auto view = contact->touch->view();
      if (!view) continue;
      auto entry = std::find_if(byView.begin(), byView.end(), [&](const auto& e) { return e.first == view; });
      if (entry == byView.end()) entry = byView.insert(byView.end(), {view, {}});
      entry->second.push_back(contact->touch);
    }
    for (const auto& [view, touches] : byView) {
      TouchOperation operation = operationFor(phase);
      // A view that was taken out of the window under the finger does not act on what the finger does next.
      if (view->window().get() != &window) {
        operation = &UIResponder::touchesCancelled;
        for (const auto& contact : changed)
          contact->viewHears = contact->viewHears && contact->touch->view() != view;
      }
      ((*view).*operation)(touches, event);
    }
  }
}

void GestureArbiter::resetIfOver(UIGestureRecognizer& recognizer) const {
  if (isOver(recognizer.state_) && watchedBy(recognizer).empty()) recognizer.backToPossible();
}

}  // namespace ios
