#pragma once

#include <cstdint>

#include "Dispatch/Queue.h"

namespace ios {

/// A deadline: nanoseconds on the device's clock, or one of the two constants.
using dispatch_time_t = std::uint64_t;
inline constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;
inline constexpr dispatch_time_t DISPATCH_TIME_FOREVER = ~0ull;

inline constexpr std::uint64_t NSEC_PER_SEC = 1'000'000'000;

/// `delta` nanoseconds after `when`. Before the clock's start: its start. Beyond
/// its range: DISPATCH_TIME_FOREVER.
dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta);

/// Queues `block` on `queue` at `when`, never before this call has returned. At
/// DISPATCH_TIME_FOREVER it never runs.
void dispatch_after(dispatch_time_t when, const dispatch_queue_t& queue, dispatch_block_t block);

}  // namespace ios
