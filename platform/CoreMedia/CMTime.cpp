#include "CoreMedia/CMTime.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace ios {
namespace {

// Wide enough for any value over any product of two timescales.
__extension__ using Wide = __int128;

bool isNumber(const CMTime& time) {
  return CMTIME_IS_NUMERIC(time) && time.timescale > 0;
}
bool isInvalid(const CMTime& time) {
  return !CMTIME_IS_VALID(time) || (CMTIME_IS_NUMERIC(time) && time.timescale <= 0);
}

CMTime infinity(bool negative) {
  return negative ? kCMTimeNegativeInfinity : kCMTimePositiveInfinity;
}

/// -1 or 1 for an infinity's direction, else 0.
int infinityOf(const CMTime& time) {
  if (time.flags & kCMTimeFlags_PositiveInfinity) return 1;
  return time.flags & kCMTimeFlags_NegativeInfinity ? -1 : 0;
}

/// numerator / denominator seconds in the largest timescale that holds it, starting at
/// `timescale` and halving.
CMTime rounded(Wide numerator, std::int64_t denominator, CMTimeScale timescale, CMTimeEpoch epoch) {
  for (;; timescale /= 2) {
    const Wide scaled = numerator * timescale;
    const Wide half = denominator / 2;
    // An odd denominator has no half to round at, so the quotient of the shifted numerator
    // is right for it too.
    const Wide value = (scaled < 0 ? scaled - half : scaled + half) / denominator;
    if (value >= std::numeric_limits<CMTimeValue>::min() &&
        value <= std::numeric_limits<CMTimeValue>::max()) {
      const bool exact = value * denominator == scaled;
      return {static_cast<CMTimeValue>(value), timescale,
              kCMTimeFlags_Valid | (exact ? 0u : kCMTimeFlags_HasBeenRounded), epoch};
    }
    if (timescale == 1) return infinity(numerator < 0);
  }
}

CMTime sum(const CMTime& a, const CMTime& b, int sign) {
  if (isInvalid(a) || isInvalid(b)) return kCMTimeInvalid;
  const int infiniteA = infinityOf(a), infiniteB = infinityOf(b) * sign;
  if (infiniteA && infiniteB && infiniteA != infiniteB) return kCMTimeInvalid;
  if (infiniteA || infiniteB) return infinity(infiniteA + infiniteB < 0);
  if (!isNumber(a) || !isNumber(b)) return kCMTimeIndefinite;
  if (a.epoch != b.epoch && a.epoch != 0 && b.epoch != 0) return kCMTimeInvalid;

  const std::int64_t common = std::lcm(std::int64_t{a.timescale}, std::int64_t{b.timescale});
  const Wide numerator =
      Wide{a.value} * (common / a.timescale) + Wide{b.value} * (common / b.timescale) * sign;
  const CMTimeEpoch epoch = sign < 0 && a.epoch == b.epoch ? 0 : (a.epoch ? a.epoch : b.epoch);
  CMTime result =
      rounded(numerator, common,
              static_cast<CMTimeScale>(std::min<std::int64_t>(common, kCMTimeMaxTimescale)), epoch);
  result.flags |= (a.flags | b.flags) & kCMTimeFlags_HasBeenRounded;
  return result;
}

/// The rank of a time among those that are not numbers.
int rank(const CMTime& time) {
  if (isInvalid(time)) return 3;
  if (time.flags & kCMTimeFlags_Indefinite) return 2;
  return infinityOf(time);
}

}  // namespace

CMTime CMTimeMake(CMTimeValue value, CMTimeScale timescale) {
  if (timescale <= 0) return kCMTimeInvalid;
  return {value, timescale, kCMTimeFlags_Valid, 0};
}

CMTime CMTimeMakeWithSeconds(double seconds, CMTimeScale preferredTimescale) {
  if (preferredTimescale <= 0) return kCMTimeInvalid;
  if (std::isnan(seconds)) return kCMTimeIndefinite;
  if (std::isinf(seconds)) return infinity(seconds < 0);
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  for (CMTimeScale timescale = preferredTimescale;; timescale /= 2) {
    const double units = seconds * timescale;
    if (units >= -kLimit && units < kLimit) {
      const double whole = std::trunc(units);
      return {static_cast<CMTimeValue>(whole), timescale,
              kCMTimeFlags_Valid | (whole == units ? 0u : kCMTimeFlags_HasBeenRounded), 0};
    }
    if (timescale == 1) return infinity(seconds < 0);
  }
}

double CMTimeGetSeconds(const CMTime& time) {
  if (const int direction = isInvalid(time) ? 0 : infinityOf(time)) {
    return direction * std::numeric_limits<double>::infinity();
  }
  if (!isNumber(time)) return std::numeric_limits<double>::quiet_NaN();
  return static_cast<double>(time.value) / time.timescale;
}

CMTime CMTimeConvertScale(const CMTime& time, CMTimeScale timescale) {
  if (timescale <= 0 || isInvalid(time)) return kCMTimeInvalid;
  if (!isNumber(time)) return time;
  CMTime result = rounded(time.value, time.timescale, timescale, time.epoch);
  if (isNumber(result) && result.timescale != timescale) return infinity(time.value < 0);
  result.flags |= time.flags & kCMTimeFlags_HasBeenRounded;
  return result;
}

CMTime CMTimeAdd(const CMTime& a, const CMTime& b) {
  return sum(a, b, 1);
}
CMTime CMTimeSubtract(const CMTime& a, const CMTime& b) {
  return sum(a, b, -1);
}

std::int32_t CMTimeCompare(const CMTime& a, const CMTime& b) {
  if (!isNumber(a) || !isNumber(b)) return (rank(a) > rank(b)) - (rank(a) < rank(b));
  if (a.epoch != b.epoch) return a.epoch < b.epoch ? -1 : 1;
  const Wide left = Wide{a.value} * b.timescale, right = Wide{b.value} * a.timescale;
  return (left > right) - (left < right);
}

}  // namespace ios
