#pragma once

#include <cstdint>

namespace ios {

using CMTimeValue = std::int64_t;
using CMTimeScale = std::int32_t;
using CMTimeEpoch = std::int64_t;

enum CMTimeFlags : std::uint32_t {
  kCMTimeFlags_Valid = 1 << 0,
  kCMTimeFlags_HasBeenRounded = 1 << 1,
  kCMTimeFlags_PositiveInfinity = 1 << 2,
  kCMTimeFlags_NegativeInfinity = 1 << 3,
  kCMTimeFlags_Indefinite = 1 << 4,
  kCMTimeFlags_ImpliedValueFlagsMask =
      kCMTimeFlags_PositiveInfinity | kCMTimeFlags_NegativeInfinity | kCMTimeFlags_Indefinite
};

/// A time or a duration: `value` / `timescale` seconds. A plain value. Invalid unless its valid flag is set;
/// the infinities and "indefinite" are valid and hold no number.
struct CMTime {
  CMTimeValue value = 0;
  CMTimeScale timescale = 0;
  std::uint32_t flags = 0;
  CMTimeEpoch epoch = 0;
};

inline constexpr CMTimeScale kCMTimeMaxTimescale = 0x7fffffff;
inline constexpr CMTime kCMTimeInvalid{};
inline constexpr CMTime kCMTimeZero{0, 1, kCMTimeFlags_Valid, 0};
inline constexpr CMTime kCMTimePositiveInfinity{0, 0, kCMTimeFlags_Valid | kCMTimeFlags_PositiveInfinity, 0};
inline constexpr CMTime kCMTimeNegativeInfinity{0, 0, kCMTimeFlags_Valid | kCMTimeFlags_NegativeInfinity, 0};
inline constexpr CMTime kCMTimeIndefinite{0, 0, kCMTimeFlags_Valid | kCMTimeFlags_Indefinite, 0};

inline constexpr bool CMTIME_IS_VALID(const CMTime& time) {
  return time.flags & kCMTimeFlags_Valid;
}
inline constexpr bool CMTIME_IS_NUMERIC(const CMTime& time) {
  return (time.flags & (kCMTimeFlags_Valid | kCMTimeFlags_ImpliedValueFlagsMask)) == kCMTimeFlags_Valid;
}

/// `value` / `timescale` seconds; invalid if `timescale` is not positive.
CMTime CMTimeMake(CMTimeValue value, CMTimeScale timescale);

/// `seconds` in units of 1 / `preferredTimescale`, truncated towards zero, and marked as rounded if that
/// lost a fraction. When the value would not fit, the timescale is halved until it does; seconds that fit
/// no timescale, and infinite ones, give an infinity. Invalid if the timescale is not positive,
/// indefinite for NaN.
CMTime CMTimeMakeWithSeconds(double seconds, CMTimeScale preferredTimescale);

/// In seconds; NaN for invalid and indefinite times, infinite for infinities.
double CMTimeGetSeconds(const CMTime& time);

/// The same time in units of 1 / `timescale`, to the nearest unit, halves away from zero; marked as
/// rounded if it is not exact. An infinity in its direction if it does not fit; times that hold no
/// number stay as they are.
CMTime CMTimeConvertScale(const CMTime& time, CMTimeScale timescale);

/// Sum and difference. Their timescale is the least common multiple of both; where that exceeds
/// `kCMTimeMaxTimescale`, or the value would not fit, the result is rounded to the nearest unit (halves
/// away from zero) of the largest timescale that holds it, and marked; one that fits no timescale is an
/// infinity. An invalid operand gives an invalid time, and so do opposing infinities, and numbers of two
/// different epochs that are both non-zero. Any other infinity gives itself; otherwise an indefinite
/// operand gives an indefinite time. A sum has its operands' epoch; a difference of two times of one epoch
/// is a duration, with epoch 0.
CMTime CMTimeAdd(const CMTime& a, const CMTime& b);
CMTime CMTimeSubtract(const CMTime& a, const CMTime& b);

/// -1, 0 or 1 as `a` is before, at or after `b`, exactly, whatever their timescales. A greater epoch is
/// later. Negative infinity < numbers < positive infinity < indefinite < invalid.
std::int32_t CMTimeCompare(const CMTime& a, const CMTime& b);

}  // namespace ios
