#pragma once

#include <functional>
#include <memory>

#include "Tellvane/Platform.h"
#include "UIKit/UIViewController.h"

namespace tellvane {

/// Presents `controller` on the top view controller, animated; without a top view controller nothing is shown.
/// While the top view controller is being closed it cannot present: then this waits until it is gone, and
/// presents on whatever is on top by then. A popover is put into the middle of the presenter's view. `tried`,
/// which may be empty, is called once with the controller that was asked to present, empty when there is none.
/// Main thread.
void presentOnTop(const std::shared_ptr<UIViewController>& controller,
                  std::function<void(const std::shared_ptr<UIViewController>& presenter)> tried = nullptr);

}  // namespace tellvane
