#pragma once

#include <functional>

#include "Dispatch/Queue.h"
#include "Tellvane/Platform.h"

namespace tellvane {

/// Runs `closure` on the main thread and returns when it has run: directly when already there, else by
/// waiting for the main queue; the caller must then hold nothing that the main thread waits for. Does nothing
/// for an empty closure. Any thread.
void runOnMainThread(const std::function<void()>& closure);

/// Runs `closure` once on `queue`, `seconds` from now and never inside this call; a negative time counts as
/// zero. Nothing happens without a queue or for a number that is not finite; a time beyond 2^63 ns never
/// comes. Any thread.
void delay(double seconds, const dispatch_queue_t& queue, std::function<void()> closure);

}  // namespace tellvane
