#pragma once

#include <memory>
#include <vector>

#include "UIKit/UIEvent.h"

namespace ios {

/// Decides who gets the touches of one window.
///
/// A touch is watched, from its beginning to its end, by the recognisers of the view it hit and of that
/// view's ancestors, as they were when it began. They get it before the view does: those of the deepest
/// view first and, within a view, the one added last first. The first to recognise makes those fail that
/// watch the same touches and can be prevented by it, and takes the touches away from the view. Then the
/// view gets what is left.
///
/// Actions and touch operations are the host's code, which may change anything, recognisers and views of the
/// touches under way included. Main thread.
class GestureArbiter {
 public:
  /// `changed` are the window's touches that this event changes.
  void deliver(const UIWindow& window, const UITouches& changed, const std::shared_ptr<UIEvent>& event);
  /// `recognizer` has set its state by itself, between events.
  void stateWasSet(const std::shared_ptr<UIGestureRecognizer>& recognizer, bool wasPossible);

 private:
  using Recognizers = std::vector<std::shared_ptr<UIGestureRecognizer>>;
  struct Watcher {
    std::weak_ptr<UIGestureRecognizer> recognizer;
    unsigned attachment;  // a recogniser that was taken off and put on again meanwhile does not watch
  };
  /// One touch on the glass.
  struct Contact {
    std::shared_ptr<UITouch> touch;
    std::vector<Watcher> watchers;
    bool viewHears;  // until the touch is taken away from the view
    bool watchedBy(const UIGestureRecognizer& recognizer) const;
  };
  using Contacts = std::vector<std::shared_ptr<Contact>>;

  std::shared_ptr<Contact> makeContact(const std::shared_ptr<UITouch>& touch) const;
  static Recognizers recognizersOf(const Contacts& contacts);
  Contacts watchedBy(const UIGestureRecognizer& recognizer) const;
  void offer(const UIWindow& window, const std::shared_ptr<UIGestureRecognizer>& recognizer,
             const Contacts& changed, const std::shared_ptr<UIEvent>& event);
  void settle(const std::shared_ptr<UIGestureRecognizer>& recognizer, bool wasPossible,
              const std::shared_ptr<UIEvent>& event);
  bool mayRecognize(const UIGestureRecognizer& recognizer, const Contacts& watched) const;
  void preventOthers(const UIGestureRecognizer& recognizer, const Contacts& watched);
  void deliverToViews(const UIWindow& window, const Contacts& changed, const std::shared_ptr<UIEvent>& event);
  void resetIfOver(UIGestureRecognizer& recognizer) const;

  Contacts contacts_;
};

}  // namespace ios
