#include "Dispatch/Time.h"

#include <algorithm>
#include <limits>

#include "DeviceClock/Clock.h"

namespace ios {
namespace {
constexpr auto kLatest = static_cast<dispatch_time_t>(std::numeric_limits<std::int64_t>::max());
}

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta) {
  if (when >= kLatest) return DISPATCH_TIME_FOREVER;
  if (when == DISPATCH_TIME_NOW)
    when = static_cast<dispatch_time_t>(Clock::shared().now().time_since_epoch().count());
  if (delta < 0) {
    const auto back = static_cast<std::uint64_t>(-(delta + 1)) + 1;
    return back >= when ? 1 : when - back;
  }
  const dispatch_time_t sum = when + static_cast<std::uint64_t>(delta);
  if (sum >= kLatest) return DISPATCH_TIME_FOREVER;
  return std::max<dispatch_time_t>(sum, 1);  // 0 would read as DISPATCH_TIME_NOW
}

void dispatch_after(dispatch_time_t when, const dispatch_queue_t& queue, dispatch_block_t block) {
  if (when >= kLatest) return;
  Clock& clock = Clock::shared();
  const Clock::Instant deadline(Clock::Duration(static_cast<std::int64_t>(when)));
  if (deadline <= clock.now()) {
    dispatch_async(queue, std::move(block));
    return;
  }
  // Moved on, not copied: what the block holds must be destroyed on the thread that ran it.
  clock.schedule(deadline, Clock::Lane::any,
                 [queue, block = std::move(block)]() mutable { dispatch_async(queue, std::move(block)); });
}

}  // namespace ios
