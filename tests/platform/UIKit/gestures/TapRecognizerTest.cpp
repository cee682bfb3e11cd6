#include <gtest/gtest.h>

#include "platform/UIKit/Screen.h"

namespace ios {
namespace {

using testing_support::TestPhone;

constexpr CGPoint kA{100, 300}, kB{140, 300}, kC{180, 300}, kD{220, 300};

std::vector<Step> taps(int count, int hold, int pause, CGPoint at = kA) {
  std::vector<Step> steps;
  for (int i = 0; i < count; ++i) {
    steps.push_back(down(i * (hold + pause), {{1, at}}));
    steps.push_back(up(i * (hold + pause) + hold, {{1, at}}));
  }
  return steps;
}

struct Row {
  const char* name;
  unsigned long taps, touches;
  std::vector<Step> steps;
  int made;
};

const std::vector<Row> kRows = {
    {"a short tap", 1, 1, taps(1, 50, 0), 1},
    {"held as long as a tap may be", 1, 1, taps(1, 750, 0), 1},
    {"held longer: a press", 1, 1, taps(1, 751, 0), 0},
    {"strays as far as it may",
     1,
     1,
     {down(0, {{1, kA}}), move(20, {{1, {110, 300}}}), up(40, {{1, {110, 300}}})},
     1},
    {"strays further: a drag",
     1,
     1,
     {down(0, {{1, kA}}), move(20, {{1, {111, 300}}}), up(40, {{1, {111, 300}}})},
     0},
    {"strays and comes back",
     1,
     1,
     {down(0, {{1, kA}}), move(20, {{1, {100, 340}}}), move(30, {{1, kA}}), up(40, {{1, kA}})},
     0},
    {"strays in its last moment", 1, 1, {down(0, {{1, kA}}), up(40, {{1, {100, 320}}})}, 0},
    {"a second finger joins",
     1,
     1,
     {down(0, {{1, kA}}), down(20, {{2, kB}}), up(40, {{1, kA}}), up(60, {{2, kB}})},
     0},
    {"taken away by the system", 1, 1, {down(0, {{1, kA}}), lost(40, {{1, kA}})}, 0},

    {"three taps", 3, 1, taps(3, 50, 100), 1},
    {"three with the longest pauses", 3, 1, taps(3, 50, 350), 1},
    {"three with longer pauses", 3, 1, taps(3, 50, 351), 0},
    {"only two", 3, 1, taps(2, 50, 100), 0},
    {"four in a row", 3, 1, taps(4, 50, 100), 1},
    {"six in a row", 3, 1, taps(6, 50, 100), 2},
    {"the middle one is a press",
     3,
     1,
     {down(0, {{1, kA}}), up(50, {{1, kA}}), down(100, {{1, kA}}), up(900, {{1, kA}}), down(950, {{1, kA}}),
      up(990, {{1, kA}})},
     0},
    {"the last one near the first",
     3,
     1,
     {down(0, {{1, kA}}), up(50, {{1, kA}}), down(150, {{1, {120, 300}}}), up(200, {{1, {120, 300}}}),
      down(300, {{1, {145, 300}}}), up(350, {{1, {145, 300}}})},
     1},
    {"the last one too far from the first",
     3,
     1,
     {down(0, {{1, kA}}), up(50, {{1, kA}}), down(150, {{1, {120, 300}}}), up(200, {{1, {120, 300}}}),
      down(300, {{1, {146, 300}}}), up(350, {{1, {146, 300}}})},
     0},
    {"two fingers in the middle",
     3,
     1,
     {down(0, {{1, kA}}), up(50, {{1, kA}}), down(150, {{1, kA}, {2, kB}}), up(200, {{1, kA}, {2, kB}}),
      down(300, {{1, kA}}), up(350, {{1, kA}})},
     0},

    {"three fingers at once",
     1,
     3,
     {down(0, {{1, kA}, {2, kB}, {3, kC}}), up(50, {{1, kA}, {2, kB}, {3, kC}})},
     1},
    {"three fingers, one after another",
     1,
     3,
     {down(0, {{1, kA}}), down(100, {{2, kB}}), down(350, {{3, kC}}), up(400, {{2, kB}}), up(500, {{3, kC}}),
      up(750, {{1, kA}})},
     1},
    {"the third finger late",
     1,
     3,
     {down(0, {{1, kA}}), down(100, {{2, kB}}), down(351, {{3, kC}}), up(400, {{1, kA}, {2, kB}, {3, kC}})},
     0},
    {"the last finger stays",
     1,
     3,
     {down(0, {{1, kA}, {2, kB}, {3, kC}}), up(50, {{1, kA}, {2, kB}}), up(751, {{3, kC}})},
     0},
    {"two fingers", 1, 3, {down(0, {{1, kA}, {2, kB}}), up(50, {{1, kA}, {2, kB}})}, 0},
    {"four fingers",
     1,
     3,
     {down(0, {{1, kA}, {2, kB}, {3, kC}, {4, kD}}), up(50, {{1, kA}, {2, kB}, {3, kC}, {4, kD}})},
     0},
    {"one leaves before the third comes",
     1,
     3,
     {down(0, {{1, kA}, {2, kB}}), up(50, {{1, kA}}), down(60, {{3, kC}}), up(90, {{2, kB}, {3, kC}})},
     0},
    {"one of three strays",
     1,
     3,
     {down(0, {{1, kA}, {2, kB}, {3, kC}}), move(20, {{2, {140, 330}}}),
      up(50, {{1, kA}, {2, {140, 330}}, {3, kC}})},
     0},
    {"two taps of two fingers",
     2,
     2,
     {down(0, {{1, kA}, {2, kB}}), up(50, {{1, kA}, {2, kB}}), down(150, {{1, kA}, {2, kB}}),
      up(200, {{1, kA}, {2, kB}})},
     1},
    {"a finger lost between taps of two",
     2,
     2,
     {down(0, {{1, kA}, {2, kB}}), up(50, {{1, kA}, {2, kB}}), down(150, {{1, kA}}), up(200, {{1, kA}})},
     0},
};

// After each gesture, made or not, the recogniser must be ready again without another event: one that stays
// failed is deaf for the rest of the process.
TEST(TapRecognizer, MakesOrRefusesAndIsReadyAgain) {
  TestPhone phone;
  const auto window = phone.show();
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const auto listener = std::make_shared<Listener>();
    const auto tap = addTap(window, listener, row.taps, row.touches);
    play(row.steps);
    EXPECT_EQ(row.made, listener->count);

    phone.runFor(1);
    EXPECT_EQ(UIGestureRecognizerState::possible, tap->state());
    phone.tap({187, 400}, static_cast<int>(row.taps), static_cast<int>(row.touches));
    EXPECT_EQ(row.made + 1, listener->count);
    window->removeGestureRecognizer(tap);
  }
}

TEST(TapRecognizer, SaysWhereItWasTapped) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = addPlate(window, CGRectMake(50, 100, 200, 200), 0xff0000);
  std::shared_ptr<UITapGestureRecognizer> tap;
  CGPoint where;
  const auto listener = std::make_shared<Listener>([&] { where = tap->locationInView(view.get()); });
  tap = addTap(view, listener, 1, 2);
  play({down(0, {{1, {60, 120}}, {2, {100, 160}}}), up(50, {{1, {60, 120}}, {2, {100, 160}}})});
  EXPECT_EQ((CGPoint{30, 40}), where);
}

}  // namespace
}  // namespace ios
