#pragma once

#include <memory>

#include "Dispatch/Time.h"

namespace ios {

class DispatchSemaphore;
/// A counting semaphore.
using dispatch_semaphore_t = std::shared_ptr<DispatchSemaphore>;

/// `count` is how many waits succeed before the first signal; at least 0.
dispatch_semaphore_t dispatch_semaphore_create(long count);
/// Takes one, waiting until `timeout` for it. 0 when taken; not 0 when the time was up. With
/// DISPATCH_TIME_NOW it only tries and never waits. Waiters are served in the order in which they came.
long dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore, dispatch_time_t timeout);
/// Gives one back. Not 0 when that woke a waiter.
long dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore);

}  // namespace ios
