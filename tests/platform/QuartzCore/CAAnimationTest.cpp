#include "QuartzCore/CAAnimation.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "DeviceClock/Clock.h"

using namespace ios;
using namespace std::chrono_literals;

namespace {

struct Recording {
  std::vector<double> steps;
  int completions = 0;
  void animate(double seconds) {
    animateOnDisplay(
        seconds, [this](double fraction) { steps.push_back(fraction); }, [this] { ++completions; });
  }
};

}  // namespace

TEST(EaseInEaseOut, FollowsThePlatformsCurve) {
  // Of the cubic curve with the handles (0.42, 0) and (0.58, 1), computed elsewhere.
  EXPECT_NEAR(0.0197, easeInEaseOut(0.1), 1e-4);
  EXPECT_NEAR(0.1292, easeInEaseOut(0.25), 1e-4);
  EXPECT_NEAR(0.3319, easeInEaseOut(0.4), 1e-4);
  EXPECT_NEAR(1 - 0.3319, easeInEaseOut(0.6), 1e-4);
  EXPECT_EQ(0, easeInEaseOut(-1));
  EXPECT_EQ(1, easeInEaseOut(1));
  EXPECT_EQ(0, easeInEaseOut(std::numeric_limits<double>::quiet_NaN()));
}

TEST(AnimateOnDisplay, StepsAtEachRefreshAndEndsAtOne) {
  Clock& clock = Clock::shared();
  clock.useVirtualTime();
  Recording recording;
  recording.animate(0.1);
  EXPECT_TRUE(recording.steps.empty());
  clock.runFor(90ms);
  ASSERT_EQ(5u, recording.steps.size());
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(static_cast<double>(i + 1) / 6, recording.steps[i], 1e-6);
  EXPECT_EQ(0, recording.completions);
  clock.runFor(1s);
  ASSERT_EQ(6u, recording.steps.size());
  EXPECT_EQ(1, recording.steps.back());
  EXPECT_EQ(1, recording.completions);
}

TEST(AnimateOnDisplay, EndsAtTheNextRefreshWithoutADuration) {
  Clock::shared().useVirtualTime();
  for (const double seconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    Recording recording;
    recording.animate(seconds);
    EXPECT_TRUE(recording.steps.empty()) << seconds;
    Clock::shared().advanceFrame();
    EXPECT_EQ(std::vector<double>{1}, recording.steps) << seconds;
    EXPECT_EQ(1, recording.completions) << seconds;
  }
  animateOnDisplay(0.05, nullptr, nullptr);
  Clock::shared().runFor(1s);
}

TEST(AnimateOnDisplay, SkipsTheRefreshesThatABusyMainThreadMissed) {
  Clock& clock = Clock::shared();
  clock.useVirtualTime();
  Recording recording;
  recording.animate(0.2);
  clock.moveWithoutRest(100ms);
  clock.runUntilRest();
  ASSERT_EQ(1u, recording.steps.size());
  EXPECT_NEAR(0.5, recording.steps[0], 1e-6);
  clock.moveWithoutRest(10s);
  clock.runUntilRest();
  EXPECT_EQ(2u, recording.steps.size());
  EXPECT_EQ(1, recording.completions);
}
