#include "triggers/GestureListeners.h"

#include <set>
#include <typeindex>

#include "Foundation/NSNotificationCenter.h"
#include "Foundation/NSRunLoop.h"
#include "UIKit/UIApplication.h"
#include "ground/Memory.h"
#include "info/TLVConstants.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

// Long enough for the host to have shown its first window.
constexpr double kFirstInstallationDelay = 2.0;

std::set<std::type_index>& classesWithoutTriggers() {
  static auto& classes = *new std::set<std::type_index>;
  return classes;
}

bool takesNoTriggers(const UIViewController& controller) {
  return classesWithoutTriggers().contains(typeid(controller));
}

void takeOff(const std::shared_ptr<UITapGestureRecognizer>& recognizer) {
  if (!recognizer) return;
  if (auto view = recognizer->view()) view->removeGestureRecognizer(recognizer);
}

}  // namespace

MethodList GestureListeners::methods() {
  return {{"gestureSuccess", &GestureListeners::gestureSuccess},
          {"addTapGesturesToKeyWindow", &GestureListeners::addTapGesturesToKeyWindow}};
}

const std::shared_ptr<GestureListeners>& GestureListeners::shared() {
  static auto& instance = *new std::shared_ptr<GestureListeners>([] {
    auto listeners = std::make_shared<GestureListeners>();
    performSelectorAfterDelay(listeners, "addTapGesturesToKeyWindow", nullptr, kFirstInstallationDelay);
    return listeners;
  }());
  return instance;
}

void GestureListeners::ignoreTriggersOver(const std::type_info& screenClass) {
  classesWithoutTriggers().insert(screenClass);
}

void GestureListeners::setThreeTapsGesture(std::shared_ptr<UITapGestureRecognizer> recognizer) {
  threeTapsGesture_ = std::move(recognizer);
}

void GestureListeners::setTripleTapGesture(std::shared_ptr<UITapGestureRecognizer> recognizer) {
  tripleTapGesture_ = std::move(recognizer);
}

void GestureListeners::addTapGesturesToKeyWindow() {
  unlessMemoryRunsOut([this] { installOnKeyWindow(); });
}

void GestureListeners::installOnKeyWindow() {
  for (const auto& recognizer : outgoing_) takeOff(recognizer);
  outgoing_ = {threeTapsGesture_, tripleTapGesture_};
  threeTapsGesture_ = std::make_shared<UITapGestureRecognizer>(shared(), "gestureSuccess");
  tripleTapGesture_ = std::make_shared<UITapGestureRecognizer>(shared(), "gestureSuccess");
  threeTapsGesture_->setNumberOfTapsRequired(TLV_TAP_COUNT);
  tripleTapGesture_->setNumberOfTouchesRequired(TLV_TAP_COUNT);
  const auto application = UIApplication::sharedApplication();
  if (auto window = application->keyWindow()) window->addGestureRecognizer(threeTapsGesture_);
  if (auto window = application->keyWindow()) window->addGestureRecognizer(tripleTapGesture_);
}

std::shared_ptr<UIViewController> GestureListeners::getParentVc(
    const std::shared_ptr<UIViewController>& controller) const {
  if (!controller) return nullptr;
  const auto parent = controller->parentViewController();
  return parent ? getParentVc(parent) : controller;
}

void GestureListeners::gestureSuccess() {
  unlessMemoryRunsOut([this] { announce(); });
}

void GestureListeners::announce() {
  if (const auto root = getParentVc(topViewController())) {
    if (const auto presenter = root->presentingViewController()) {
      if (takesNoTriggers(*root) || takesNoTriggers(*presenter)) return;
    }
  }
  NSNotificationCenter::defaultCenter()->postNotificationName(TLV_GESTURE_SUCCESS);
}

}  // namespace tellvane
