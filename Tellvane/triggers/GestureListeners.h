#pragma once

#include <memory>
#include <typeinfo>
#include <vector>

#include "Tellvane/Platform.h"
#include "UIKit/UITapGestureRecognizer.h"
#include "UIKit/UIViewController.h"

namespace tellvane {

/// The tap triggers: three taps of one finger, one tap of three. Keeps their recognisers on the key window
/// and decides whether a trigger, a shake included, is announced. Main thread.
class GestureListeners : public Subclass<GestureListeners, NSObject> {
 public:
  /// The one instance. Making it schedules the first installation, 2.0 seconds later on the current run loop.
  static const std::shared_ptr<GestureListeners>& shared();
  static MethodList methods();

  /// No trigger is announced while a screen of exactly the class `screenClass` is presented, or presents what
  /// is on top. Derived classes do not count: a screen that the host derives is the host's.
  static void ignoreTriggersOver(const std::type_info& screenClass);

  /// The recognisers of the last installation; empty before the first.
  virtual const std::shared_ptr<UITapGestureRecognizer>& threeTapsGesture() const {
    return threeTapsGesture_;
  }
  virtual void setThreeTapsGesture(std::shared_ptr<UITapGestureRecognizer> recognizer);
  virtual const std::shared_ptr<UITapGestureRecognizer>& tripleTapGesture() const {
    return tripleTapGesture_;
  }
  virtual void setTripleTapGesture(std::shared_ptr<UITapGestureRecognizer> recognizer);

  /// A trigger was made: announces it with the notification TLV_GESTURE_SUCCESS, unless a screen
  /// without triggers, or something that it presents, is on top. Observers run before this returns.
  virtual void gestureSuccess();
  /// Puts a new pair of recognisers on the key window of this moment. The last pair stays where it is, for
  /// taps that are being made just now; the one before it is taken off. Without a key window the pair is made
  /// and kept, and the next installation tries again.
  virtual void addTapGesturesToKeyWindow();

 private:
  void announce();
  void installOnKeyWindow();
  /// The outermost container of `controller`; empty for an empty one.
  virtual std::shared_ptr<UIViewController> getParentVc(
      const std::shared_ptr<UIViewController>& controller) const;

  std::shared_ptr<UITapGestureRecognizer> threeTapsGesture_;
  std::shared_ptr<UITapGestureRecognizer> tripleTapGesture_;
  /// The pair of the installation before the last one.
  std::vector<std::shared_ptr<UITapGestureRecognizer>> outgoing_;
};

}  // namespace tellvane
