#include "Device/Input.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace ios;
using namespace std::chrono_literals;
using Phase = TouchSample::Phase;

struct Heard {
  std::int64_t milliseconds;
  std::vector<TouchSample> samples;
};

class InputTest : public testing::Test {
 protected:
  InputTest() {
    Clock::shared().useVirtualTime();
    input_.setSinks(
        [this](const std::vector<TouchSample>& samples) {
          const auto now =
              std::chrono::floor<std::chrono::milliseconds>(Clock::shared().now().time_since_epoch());
          heard_.push_back({now.count(), samples});
        },
        nullptr);
  }
  Input input_;
  std::vector<Heard> heard_;
};

TEST_F(InputTest, TapsAreHeldAndApartInTimeWithTheirFingersSideBySide) {
  input_.tap({.location = {200, 100}, .count = 2, .fingers = 3, .hold = 50ms, .delay = 100ms});
  ASSERT_EQ(heard_.size(), 4u);
  const std::int64_t times[] = {0, 50, 150, 200};
  std::set<std::int64_t> fingers;
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(heard_[i].milliseconds, times[i]);
    ASSERT_EQ(heard_[i].samples.size(), 3u);
    for (std::size_t finger = 0; finger < 3; ++finger) {
      const TouchSample& sample = heard_[i].samples[finger];
      fingers.insert(sample.finger);
      EXPECT_EQ(sample.phase, i % 2 == 0 ? Phase::began : Phase::ended);
      EXPECT_EQ(sample.location, CGPointMake(160 + 40.0 * static_cast<double>(finger), 100));
    }
  }
  EXPECT_EQ(fingers.size(), 6u) << "a finger that comes again is another touch";
}

TEST_F(InputTest, SwipesMoveWithTheDisplayAndEndWhereTheyShould) {
  input_.swipe({100, 500}, {100, 100}, 400ms);
  ASSERT_EQ(heard_.size(), 26u);  // 24 frames of movement between the two ends
  EXPECT_EQ(heard_.front().samples[0].phase, Phase::began);
  EXPECT_EQ(heard_.front().samples[0].location, CGPointMake(100, 500));
  for (std::size_t i = 1; i < heard_.size(); ++i) {
    EXPECT_LE(heard_[i].samples[0].location.y, heard_[i - 1].samples[0].location.y);
    EXPECT_LE(heard_[i].milliseconds - heard_[i - 1].milliseconds, 17);
  }
  EXPECT_EQ(heard_.back().milliseconds, 400);
  EXPECT_EQ(heard_.back().samples[0].phase, Phase::ended);
  EXPECT_EQ(heard_.back().samples[0].location, CGPointMake(100, 100));
}

}  // namespace
