#include "ground/Threading.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "Dispatch/Time.h"

namespace tellvane {

void runOnMainThread(const std::function<void()>& closure) {
  if (!closure) return;
  if (isMainThread()) {
    closure();
  } else {
    dispatch_sync(dispatch_get_main_queue(), closure);
  }
}

void delay(double seconds, const dispatch_queue_t& queue, std::function<void()> closure) {
  if (!queue || !closure || !std::isfinite(seconds)) return;
  const double nanoseconds = seconds * static_cast<double>(NSEC_PER_SEC);
  constexpr double kRange = 9223372036854775808.0;  // 2^63, the first number that does not fit
  if (nanoseconds >= kRange) return;
  const auto delta = nanoseconds < -kRange ? std::numeric_limits<std::int64_t>::min()
                                           : static_cast<std::int64_t>(nanoseconds);
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delta), queue, std::move(closure));
}

}  // namespace tellvane
