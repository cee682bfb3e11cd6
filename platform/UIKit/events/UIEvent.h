#pragma once

#include <memory>
#include <vector>

#include "CoreGraphics/CGGeometry.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class UIView;
class UIWindow;
class UIGestureRecognizer;

enum class UIEventType : long { touches = 0, motion = 1, remoteControl = 2 };
enum class UIEventSubtype : long { none = 0, motionShake = 1 };
enum class UITouchPhase : long { began, moved, stationary, ended, cancelled };

/// One finger on the glass, from its first contact to its last; the same object throughout.
class UITouch : public NSObject {
 public:
  UITouchPhase phase() const { return phase_; }
  /// Of its last change, in seconds on the device's clock.
  double timestamp() const { return timestamp_; }
  /// In the coordinates of `view`, or of the window when empty.
  CGPoint locationInView(const UIView* view) const;
  std::shared_ptr<UIView> view() const { return view_.lock(); }
  std::shared_ptr<UIWindow> window() const { return window_.lock(); }

 private:
  friend class UIApplication;
  friend class UIWindow;
  UITouchPhase phase_ = UITouchPhase::began;
  double timestamp_ = 0;
  CGPoint location_;  // on the screen
  std::weak_ptr<UIView> view_;
  std::weak_ptr<UIWindow> window_;
};

class UIEvent : public NSObject {
 public:
  UIEvent(UIEventType type, UIEventSubtype subtype) : type_(type), subtype_(subtype) {}
  UIEventType type() const { return type_; }
  UIEventSubtype subtype() const { return subtype_; }
  /// All touches on the glass, changed by this event or not.
  const std::vector<std::shared_ptr<UITouch>>& allTouches() const { return touches_; }

 private:
  friend class UIApplication;
  UIEventType type_;
  UIEventSubtype subtype_;
  std::vector<std::shared_ptr<UITouch>> touches_;
};

using UITouches = std::vector<std::shared_ptr<UITouch>>;

}  // namespace ios
