#include "front/Categories.h"

#include "Platform.h"
#include "UIKit/UIApplication.h"
#include "info/UIDevice+Tellvane.h"
#include "triggers/UIApplication+TopViewController.h"
#include "triggers/UIWindow+Shake.h"

namespace tellvane {
namespace {

std::shared_ptr<UIViewController> topViewControllerOf(UIApplication&,
                                                      const std::shared_ptr<UIViewController>& base) {
  return topViewController(base);
}

// A category's operations take the object they are called on; those of the device only read it.
template <auto Property>
auto property(UIDevice& device) {
  return Property(device);
}

const Category kWindow{UIWindow::classObject(), {{"motionEnded:withEvent:", &motionEnded}}};

const Category kApplication{UIApplication::classObject(), {{"topViewController:", &topViewControllerOf}}};

const Category kDevice{UIDevice::classObject(),
                       {{"screenResolution", &property<&screenResolution>},
                        {"deviceCode", &property<&deviceCode>},
                        {"deviceFamily", &property<&deviceFamily>},
                        {"deviceModel", &property<&deviceModel>},
                        {"deviceOrientationString", &property<&deviceOrientationString>}}};

}  // namespace

void keepCategories() {}

}  // namespace tellvane
