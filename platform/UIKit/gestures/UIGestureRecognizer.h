#pragma once

#include <memory>
#include <vector>

#include "UIKit/UIEvent.h"
#include "UIKit/UIResponder.h"

namespace ios {

class UIView;

enum class UIGestureRecognizerState : long { possible, began, changed, ended, cancelled, failed };

/// Watches the touches of a view and its subviews for a gesture and calls its targets when it is made.
/// Targets are not kept alive. Of several recognisers that fit, the one of the deeper view, then the one
/// added last, wins; the others fail, as the platform's default rules have it. Main thread.
class UIGestureRecognizer : public Subclass<UIGestureRecognizer, NSObject> {
 public:
  UIGestureRecognizer(const id& target, Selector action);
  static MethodList methods() { return {}; }
  void addTarget(const id& target, Selector action);
  std::shared_ptr<UIView> view() const;
  UIGestureRecognizerState state() const { return state_; }
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled);
  /// Recognition takes the touches away from the view (it gets `touchesCancelled`).
  bool cancelsTouchesInView() const { return cancelsTouchesInView_; }
  void setCancelsTouchesInView(bool cancels) { cancelsTouchesInView_ = cancels; }
  virtual CGPoint locationInView(const UIView* view) const = 0;
  /// Whether recognition of `other`, on the same touches, makes this one fail.
  virtual bool canBePreventedByGestureRecognizer(const UIGestureRecognizer& other) const {
    (void)other;
    return true;
  }

 protected:
  // For subclasses: called with the touches that changed; they answer by setting the state.
  virtual void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) = 0;
  virtual void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) = 0;
  virtual void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) = 0;
  virtual void touchesCancelled(const UITouches& touches, const std::shared_ptr<UIEvent>& event);
  /// Returns to the initial state, after the gesture was recognised or has failed.
  virtual void reset() {}
  /// A change that the current state does not allow is ignored (only `possible` leads to `failed`).
  void setState(UIGestureRecognizerState state);

 private:
  friend class UIView;
  friend class UIWindow;
  friend class GestureArbiter;
  struct TargetAction {
    std::weak_ptr<NSObject> target;
    Action action;
  };
  UIView* view_ = nullptr;  // cleared when that view goes
  std::vector<TargetAction> targets_;
  UIGestureRecognizerState state_ = UIGestureRecognizerState::possible;
  bool enabled_ = true;
  bool cancelsTouchesInView_ = true;
  bool delivering_ = false;   // inside one of the touches operations
  bool stateWasSet_ = false;  // by the one that is being delivered
  unsigned attachment_ = 0;   // counts attachments, to tell them apart

  void attach(UIView* view);
  /// Stops watching the touches under way; a gesture that had begun is cancelled.
  void leaveTouches();
  void callTargets();
  void backToPossible();
};

}  // namespace ios
