#pragma once

#include <memory>

#include "Tellvane/Platform.h"
#include "UIKit/UIWindow.h"

namespace tellvane {

/// "motionEnded:withEvent:" of every window of the application: the inherited handling first; then a shake
/// counts as a trigger. In force from the moment the library is loaded. Main thread.
void motionEnded(UIWindow& window, UIEventSubtype motion, const std::shared_ptr<UIEvent>& event);

/// Does nothing. Nothing else calls into the file that extends the window, and a linker takes from a static library
/// only the files that something refers to; the start refers to this.
void keepShakeExtension();

}  // namespace tellvane
