#pragma once

#include <memory>

#include "ObjectiveC/NSObject.h"
#include "UIKit/UIEvent.h"

namespace ios {

/// Receives events. What it does not handle goes to the next responder: a view's superview or controller, the
/// window, the application. Main thread.
///
/// Motion events are sent by selector ("motionBegan:withEvent:", "motionEnded:withEvent:"), so that a class
/// can be extended to take them; the operations here pass them on.
class UIResponder : public Subclass<UIResponder, NSObject> {
 public:
  static MethodList methods();
  virtual std::shared_ptr<UIResponder> nextResponder() { return nullptr; }
  virtual void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event);
  virtual void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event);
  virtual void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event);
  virtual void touchesCancelled(const UITouches& touches, const std::shared_ptr<UIEvent>& event);

 private:
  void motionBegan(UIEventSubtype motion, const std::shared_ptr<UIEvent>& event);
  void motionEnded(UIEventSubtype motion, const std::shared_ptr<UIEvent>& event);
};

}  // namespace ios
