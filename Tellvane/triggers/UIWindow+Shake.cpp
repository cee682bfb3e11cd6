#include "triggers/UIWindow+Shake.h"

#include "ground/Memory.h"
#include "info/printTLV.h"
#include "triggers/GestureListeners.h"

namespace tellvane {
namespace {

const Category kShake{UIWindow::classObject(), {{"motionEnded:withEvent:", &motionEnded}}};

}  // namespace

void motionEnded(UIWindow& window, UIEventSubtype motion, const std::shared_ptr<UIEvent>& event) {
  unlessMemoryRunsOut([&] {
    sendSuper(window, UIWindow::classObject(), "motionEnded:withEvent:", motion, event);
    if (!event || motion != UIEventSubtype::motionShake || event->type() != UIEventType::motion) return;
    printTLV("Shake Detected");
    GestureListeners::shared()->gestureSuccess();
  });
}

void keepShakeExtension() {}

}  // namespace tellvane
