#pragma once

#include <memory>

#include "Tellvane/Platform.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIViewController.h"

namespace tellvane {

/// The view controller on top of the host's interface: where alerts, sheets and screens are presented. The
/// search starts at the key window's root; empty when there is no key window or it has no root. Main thread.
std::shared_ptr<UIViewController> topViewController();
/// The same, starting at `base`; empty when `base` is. Also an operation of the application
/// object: "topViewController:".
std::shared_ptr<UIViewController> topViewController(const std::shared_ptr<UIViewController>& base);

}  // namespace tellvane
