#pragma once

#include <cmath>
#include <cstdint>

#include "DeviceClock/Clock.h"

namespace ios {

/// `seconds` in the clock's units; beyond its range a time that never comes, and 0 for NaN.
inline Clock::Duration durationFromSeconds(double seconds) {
  // ns: more than a century, and far enough from the end of the range to be added to
  constexpr double kNever = 4e18;
  const double nanoseconds = seconds * 1e9;
  if (std::isnan(nanoseconds)) return Clock::Duration(0);
  if (nanoseconds >= kNever) return Clock::Duration(static_cast<std::int64_t>(kNever));
  if (nanoseconds <= 0) return Clock::Duration(0);
  return Clock::Duration(std::llround(nanoseconds));
}

}  // namespace ios
