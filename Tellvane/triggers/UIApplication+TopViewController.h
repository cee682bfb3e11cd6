#pragma once

#include <functional>
#include <memory>

#include "Platform.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIViewController.h"

namespace tellvane {

/// The view controller on top of the host's interface: where alerts, sheets and screens are presented. The
/// search starts at the key window's root; empty when there is no key window or it has no root. Main thread.
std::shared_ptr<UIViewController> topViewController();
/// The same from `base`; empty for none. Also an operation of the application object: "topViewController:".
std::shared_ptr<UIViewController> topViewController(const std::shared_ptr<UIViewController>& base);

/// Presents `controller` on the top view controller, animated; nothing is shown when there is none. One that
/// is being closed takes no presentations: then this waits for its end, and what is on top by then presents.
/// A popover is put into the middle of the presenter's view. `tried`, which may be empty, is called once,
/// when it was presented or cannot be. Main thread.
void presentOnTop(const std::shared_ptr<UIViewController>& controller, std::function<void()> tried = nullptr);

}  // namespace tellvane
