#pragma once

#include <functional>

#include "CoreGraphics/CGGeometry.h"

namespace ios {

/// The platform's default timing curve: slow, fast, slow. 0 to 1 in, 0 to 1 out.
double easeInEaseOut(double fraction);

/// Calls `step` with a fraction from 0 towards 1 at every refresh of the display for `seconds`, then once
/// with 1 and then `completion`, all on the main thread. Nothing is called before this function returns; an
/// animation of 0 seconds or less ends at the next refresh.
void animateOnDisplay(double seconds, std::function<void(double fraction)> step,
                      std::function<void()> completion);

}  // namespace ios
