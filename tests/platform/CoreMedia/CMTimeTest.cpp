#include "CoreMedia/CMTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>

namespace ios {

void PrintTo(const CMTime& time, std::ostream* out) {
  *out << time.value << "/" << time.timescale << " flags " << time.flags << " epoch " << time.epoch;
}

namespace {

constexpr std::uint32_t kExact = kCMTimeFlags_Valid;
constexpr std::uint32_t kRounded = kCMTimeFlags_Valid | kCMTimeFlags_HasBeenRounded;
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

CMTime at(std::int64_t value, std::int32_t timescale, CMTimeEpoch epoch = 0) {
  return {value, timescale, kExact, epoch};
}
CMTime near(std::int64_t value, std::int32_t timescale) {
  return {value, timescale, kRounded, 0};
}

bool same(const CMTime& a, const CMTime& b) {
  return a.value == b.value && a.timescale == b.timescale && a.flags == b.flags && a.epoch == b.epoch;
}

TEST(CMTime, SecondsAreCutToWholeUnits) {
  struct Row {
    double seconds;
    std::int32_t timescale;
    CMTime expected;
  };
  const Row rows[] = {
      {5.0 + 0.5 + 1.0 / 30, 1000, near(5533, 1000)},  // rounding would hide that fractions are cut off
      {0.0339999, 1000, near(33, 1000)},
      {-0.0339999, 1000, near(-33, 1000)},
      {2.5, 1000, at(2500, 1000)},
      {0.3, 1000, at(300, 1000)},  // 0.3 is a hair less than three tenths; the product is not
      {0, 1000, at(0, 1000)},
      {1e12, 90000, at(90'000'000'000'000'000, 90000)},
      {1e15, 90000, at(5'625'000'000'000'000'000, 5625)},  // halved until it fits
      {1e19, 1000, kCMTimePositiveInfinity},
      {-1e19, 1000, kCMTimeNegativeInfinity},
      {INFINITY, 1000, kCMTimePositiveInfinity},
      {NAN, 1000, kCMTimeIndefinite},
      {1, 0, kCMTimeInvalid},
      {1, -1000, kCMTimeInvalid},
  };
  for (const Row& row : rows) {
    const CMTime made = CMTimeMakeWithSeconds(row.seconds, row.timescale);
    EXPECT_TRUE(same(made, row.expected)) << row.seconds << ": " << testing::PrintToString(made);
  }
}

TEST(CMTime, SumsAndDifferencesKeepWhatBothScalesCanSay) {
  struct Row {
    CMTime a, b, sum, difference;
  };
  const CMTime plus = kCMTimePositiveInfinity, minus = kCMTimeNegativeInfinity, none = kCMTimeInvalid;
  const Row rows[] = {
      {at(5, 1000), at(7, 1000), at(12, 1000), at(-2, 1000)},
      {at(44100, 44100), at(33, 1000), at(455553, 441000), at(426447, 441000)},
      {at(0, 1), at(5533, 1000), at(5533, 1000), at(-5533, 1000)},
      {near(1, 3), at(1, 2), near(5, 6), near(-1, 6)},
      // No common timescale fits: nearest unit of the largest one.
      {at(1, 2147483647), at(1, 2147483629), near(2, 2147483647), near(0, 2147483647)},
      // The value does not fit: coarser units.
      {at(kLargest, 4), at(kLargest, 4), at(kLargest, 2), at(0, 4)},
      {at(kLargest, 4), at(1, 4), at(std::int64_t{1} << 62, 2), at(kLargest - 1, 4)},
      {at(kLargest, 1), at(kLargest, 1), plus, at(0, 1)},
      {at(kSmallest, 1), at(1, 1), at(kSmallest + 1, 1), minus},
      {at(0, 1), at(kSmallest, 1), at(kSmallest, 1), plus},
      {plus, at(1, 1), plus, plus},
      {at(1, 1), plus, plus, minus},
      {plus, plus, plus, none},
      {plus, minus, none, plus},
      {plus, kCMTimeIndefinite, plus, plus},
      {kCMTimeIndefinite, at(1, 1), kCMTimeIndefinite, kCMTimeIndefinite},
      {none, at(1, 1), none, none},
      {CMTime{1, 0, kExact, 0}, at(1, 1), none, none},
      {at(3, 1, 2), at(1, 1, 2), at(4, 1, 2), at(2, 1)},
      {at(3, 1, 2), at(1, 1), at(4, 1, 2), at(2, 1, 2)},
      {at(3, 1, 2), at(1, 1, 3), none, none},
  };
  for (const Row& row : rows) {
    const CMTime sum = CMTimeAdd(row.a, row.b), difference = CMTimeSubtract(row.a, row.b);
    EXPECT_TRUE(same(sum, row.sum)) << testing::PrintToString(row.a) << " + " << testing::PrintToString(row.b)
                                    << " = " << testing::PrintToString(sum);
    EXPECT_TRUE(same(difference, row.difference))
        << testing::PrintToString(row.a) << " - " << testing::PrintToString(row.b) << " = "
        << testing::PrintToString(difference);
  }
}

TEST(CMTime, ComparesExactlyAcrossScales) {
  // In order; each is before all that follow. Those of scale 2147483647 are equal as doubles; a later epoch
  // is later whatever its value.
  const CMTime order[] = {kCMTimeNegativeInfinity,
                          at(kSmallest, 1),
                          at(-1, 3),
                          at(0, 7),
                          at(333, 1000),
                          at(1, 3),
                          at(kLargest - 1, 2147483647),
                          at(kLargest, 2147483647),
                          at(kLargest, 1),
                          at(-5, 1, 1),
                          kCMTimePositiveInfinity,
                          kCMTimeIndefinite,
                          kCMTimeInvalid};
  for (std::size_t i = 0; i < std::size(order); ++i) {
    for (std::size_t j = 0; j < std::size(order); ++j) {
      EXPECT_EQ(CMTimeCompare(order[i], order[j]), (i > j) - (i < j)) << i << " against " << j;
    }
  }
  EXPECT_EQ(CMTimeCompare(at(1, 2), at(500, 1000)), 0);
  EXPECT_EQ(CMTimeCompare(kCMTimeZero, at(0, 44100)), 0);
}

TEST(CMTime, ConvertsToTheNearestUnit) {
  struct Row {
    CMTime time;
    std::int32_t timescale;
    CMTime expected;
  };
  const Row rows[] = {
      {at(33, 1000), 90000, at(2970, 90000)},
      {at(5, 10), 1, near(1, 1)},
      {at(-5, 10), 1, near(-1, 1)},
      {at(49, 100), 1, near(0, 1)},
      {near(1, 2), 4, near(2, 4)},
      {at(kLargest, 1), 1000, kCMTimePositiveInfinity},
      {at(1, 1), 0, kCMTimeInvalid},
      {kCMTimeIndefinite, 5, kCMTimeIndefinite},
      {at(1024, 44100), 48000, near(1115, 48000)},
  };
  for (const Row& row : rows) {
    const CMTime converted = CMTimeConvertScale(row.time, row.timescale);
    EXPECT_TRUE(same(converted, row.expected)) << testing::PrintToString(row.time) << " in " << row.timescale
                                               << ": " << testing::PrintToString(converted);
  }
  EXPECT_DOUBLE_EQ(CMTimeGetSeconds(at(5533, 1000)), 5.533);
  EXPECT_EQ(CMTimeGetSeconds(kCMTimeNegativeInfinity), -INFINITY);
  EXPECT_TRUE(std::isnan(CMTimeGetSeconds(kCMTimeInvalid)) &&
              std::isnan(CMTimeGetSeconds(kCMTimeIndefinite)));
}

}  // namespace
}  // namespace ios
