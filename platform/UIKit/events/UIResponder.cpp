#include "UIKit/UIResponder.h"

namespace ios {

MethodList UIResponder::methods() {
  return {{"motionBegan:withEvent:", &UIResponder::motionBegan},
          {"motionEnded:withEvent:", &UIResponder::motionEnded}};
}

void UIResponder::touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  if (auto next = nextResponder()) next->touchesBegan(touches, event);
}

void UIResponder::touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  if (auto next = nextResponder()) next->touchesMoved(touches, event);
}

void UIResponder::touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  if (auto next = nextResponder()) next->touchesEnded(touches, event);
}

void UIResponder::touchesCancelled(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  if (auto next = nextResponder()) next->touchesCancelled(touches, event);
}

// By selector, so that a class along the chain that was extended from outside is asked too.
void UIResponder::motionBegan(UIEventSubtype motion, const std::shared_ptr<UIEvent>& event) {
  if (auto next = nextResponder()) send(*next, "motionBegan:withEvent:", motion, event);
}

void UIResponder::motionEnded(UIEventSubtype motion, const std::shared_ptr<UIEvent>& event) {
  if (auto next = nextResponder()) send(*next, "motionEnded:withEvent:", motion, event);
}

}  // namespace ios
