#include "UIKit/UIEvent.h"

#include "UIKit/UIView.h"
#include "UIKit/UIWindow.h"

namespace ios {

CGPoint UITouch::locationInView(const UIView* view) const {
  const std::shared_ptr<UIWindow> touched = window();
  const std::shared_ptr<UIWindow> asked = view ? view->window() : nullptr;
  const std::shared_ptr<UIWindow>& window = asked ? asked : touched;
  if (!window) return location_;
  const CGPoint inWindow = window->pointFromSuperview(location_);
  return view ? view->convertPointFromView(inWindow, window.get()) : inWindow;
}

}  // namespace ios
