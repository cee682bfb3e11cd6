#include <gtest/gtest.h>

#include "UIKit/UIButton.h"
#include "platform/UIKit/Screen.h"

namespace ios {
namespace {

using testing_support::TestPhone;

constexpr CGPoint kPoint{100, 300};

struct Pair {
  const char* name;
  unsigned long deepTaps, shallowTaps;
  int tapped;
  int deep, shallow;
};

// Which of two tap recognisers on nested views act.
TEST(Gestures, TheDeeperRecognizerWinsUnlessTheOtherTakesMoreTaps) {
  constexpr Pair kPairs[] = {
      {"one and one", 1, 1, 1, 1, 0},           {"three and three", 3, 3, 3, 1, 0},
      {"one in front of three", 1, 3, 3, 3, 1}, {"three in front of one", 3, 1, 3, 1, 2},
      {"two in front of three", 2, 3, 3, 1, 1}, {"one in front of two, one tap", 1, 2, 1, 1, 0},
  };
  TestPhone phone;
  const auto window = phone.show();
  const auto view = addPlate(window, CGRectMake(50, 250, 200, 200), 0xff0000);
  for (const Pair& pair : kPairs) {
    SCOPED_TRACE(pair.name);
    const auto deep = std::make_shared<Listener>(), shallow = std::make_shared<Listener>();
    const auto deepTap = addTap(view, deep, pair.deepTaps);
    const auto shallowTap = addTap(window, shallow, pair.shallowTaps);
    phone.tap(kPoint, pair.tapped);
    phone.runFor(1);
    EXPECT_EQ(pair.deep, deep->count);
    EXPECT_EQ(pair.shallow, shallow->count);
    view->removeGestureRecognizer(deepTap);
    window->removeGestureRecognizer(shallowTap);
  }
}

TEST(Gestures, OfOneViewTheRecognizerAddedLastWins) {
  TestPhone phone;
  const auto window = phone.show();
  const auto first = std::make_shared<Listener>(), last = std::make_shared<Listener>();
  addTap(window, first, 3);
  addTap(window, last, 3);
  phone.tap(kPoint, 3);
  EXPECT_EQ(0, first->count);
  EXPECT_EQ(1, last->count);
}

TEST(Gestures, AButtonTakesTwoTapsAndLosesTheThirdToATripleTap) {
  TestPhone phone;
  const auto window = phone.show();
  const auto button = std::make_shared<UIButton>(CGRectMake(50, 280, 100, 44));
  window->addSubview(button);
  const auto pressed = std::make_shared<Listener>(), tripled = std::make_shared<Listener>();
  button->addTarget(pressed, "heard", UIControlEventTouchUpInside);
  addTap(window, tripled, 3);
  phone.tap(kPoint, 3);
  EXPECT_EQ(2, pressed->count);
  EXPECT_EQ(1, tripled->count);
  EXPECT_FALSE(button->isHighlighted());
}

TEST(Gestures, AButtonKeepsASingleTapFromTheViewBehindIt) {
  TestPhone phone;
  const auto window = phone.show();
  const auto button = std::make_shared<UIButton>(CGRectMake(50, 280, 100, 44));
  window->addSubview(button);
  const auto pressed = std::make_shared<Listener>(), behind = std::make_shared<Listener>();
  button->addTarget(pressed, "heard", UIControlEventTouchUpInside);
  addTap(window, behind);
  phone.tap(kPoint);
  EXPECT_EQ(1, pressed->count);
  EXPECT_EQ(0, behind->count);
  button->setEnabled(false);
  phone.tap(kPoint);
  EXPECT_EQ(1, pressed->count);
  EXPECT_EQ(1, behind->count);
}

TEST(Gestures, RecognitionTakesTheTouchFromTheViewUnlessToldNotTo) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = std::make_shared<TouchedView>(CGRectMake(50, 250, 200, 200));
  window->addSubview(view);
  const auto listener = std::make_shared<Listener>();
  const auto tap = addTap(window, listener);
  phone.tap(kPoint);
  EXPECT_EQ("began cancelled", std::exchange(view->log, ""));
  tap->setCancelsTouchesInView(false);
  phone.tap(kPoint);
  EXPECT_EQ("began ended", std::exchange(view->log, ""));
  EXPECT_EQ(2, listener->count);
}

TEST(Gestures, OnlyViewsThatWantSeveralFingersHearOfTheSecond) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = std::make_shared<TouchedView>(CGRectMake(50, 250, 200, 200));
  window->addSubview(view);
  const std::vector<Step> twoFingers = {down(0, {{1, kPoint}}), down(10, {{2, {140, 300}}}),
                                        move(20, {{1, {100, 310}}, {2, {140, 310}}}),
                                        up(30, {{2, {140, 310}}}), up(40, {{1, {100, 310}}})};
  play(twoFingers);
  EXPECT_EQ("began moved ended", std::exchange(view->log, ""));
  view->setMultipleTouchEnabled(true);
  play(twoFingers);
  EXPECT_EQ("began began moved×2 ended ended", std::exchange(view->log, ""));
}

TEST(Gestures, FingersOnDifferentViewsAreJudgedFromTheDeepestView) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = addPlate(window, CGRectMake(50, 250, 200, 200), 0xff0000);
  const auto oneFinger = std::make_shared<Listener>(), twoFingers = std::make_shared<Listener>();
  addTap(view, oneFinger, 1, 1);
  addTap(window, twoFingers, 1, 2);
  play({down(0, {{1, {20, 20}}, {2, kPoint}}), up(50, {{1, {20, 20}}, {2, kPoint}})});
  EXPECT_EQ(1, oneFinger->count);
  EXPECT_EQ(0, twoFingers->count);
}

/// A gesture that begins with the first movement and says what it hears and what it is asked to do.
class Stroke : public Subclass<Stroke, UIGestureRecognizer> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  CGPoint locationInView(const UIView*) const override { return {}; }
  void set(UIGestureRecognizerState state) { setState(state); }
  std::string heard;

 protected:
  void touchesBegan(const UITouches&, const std::shared_ptr<UIEvent>&) override { heard += 'b'; }
  void touchesMoved(const UITouches&, const std::shared_ptr<UIEvent>&) override {
    heard += 'm';
    setState(state() == UIGestureRecognizerState::possible ? UIGestureRecognizerState::began
                                                           : UIGestureRecognizerState::changed);
  }
  void touchesEnded(const UITouches&, const std::shared_ptr<UIEvent>&) override {
    heard += 'e';
    setState(UIGestureRecognizerState::ended);
  }
  void reset() override { heard += 'r'; }
};

TEST(Gestures, AContinuousGestureActsAtEachChangeAndKeepsOthersOut) {
  TestPhone phone;
  const auto window = phone.show();
  std::shared_ptr<Stroke> stroke;
  std::string states;
  const auto listener =
      std::make_shared<Listener>([&] { states += std::to_string(static_cast<int>(stroke->state())); });
  const auto tapped = std::make_shared<Listener>();
  addTap(window, tapped);
  stroke = std::make_shared<Stroke>(listener, "heard");
  window->addGestureRecognizer(stroke);
  stroke->heard.clear();
  const Step touch = down(0, {{1, kPoint}}), first = move(10, {{1, {100, 302}}}),
             second = move(20, {{1, {100, 304}}});
  const Step last = up(30, {{1, {100, 304}}});

  play({touch, first, second, last});
  EXPECT_EQ("123", std::exchange(states, "")) << "began, changed, ended";
  EXPECT_EQ("bmmer", std::exchange(stroke->heard, ""));
  EXPECT_EQ(0, tapped->count) << "a small stroke would have been a tap";

  play({touch, first});
  stroke->setEnabled(false);
  stroke->setEnabled(true);
  play({second, last});
  EXPECT_EQ("14", std::exchange(states, "")) << "began, cancelled";
  EXPECT_EQ("bmr", std::exchange(stroke->heard, "")) << "deaf to what is left of that touch";

  play({touch});
  stroke->set(UIGestureRecognizerState::began);
  play({last});
  EXPECT_EQ("13", std::exchange(states, "")) << "begun between events, by a timer of its own";
  stroke->set(UIGestureRecognizerState::changed);
  EXPECT_EQ("", states) << "nothing can change before it began";
  phone.tap(kPoint);
  EXPECT_EQ(0, tapped->count);
}

// What a recogniser's own action, or other code, may do to it while the fingers are still down.
TEST(Gestures, ARecognizerMayComeAndGoDuringATouch) {
  TestPhone phone;
  const auto window = phone.show();
  const auto listener = std::make_shared<Listener>();
  const auto touch = [&](const std::function<void()>& meanwhile) {
    listener->count = 0;
    play({down(0, {{1, kPoint}})});
    meanwhile();
    play({up(50, {{1, kPoint}})});
    const int made = listener->count;
    phone.runFor(1);
    return made;
  };
  auto tap = addTap(window, listener);
  EXPECT_EQ(1, touch([] {}));
  EXPECT_EQ(0, touch([&] { window->removeGestureRecognizer(tap); })) << "taken off";
  EXPECT_EQ(0, touch([&] { window->addGestureRecognizer(tap); })) << "put on";
  EXPECT_EQ(1, touch([] {}));
  EXPECT_EQ(0, touch([&] {
              window->removeGestureRecognizer(tap);
              window->addGestureRecognizer(tap);
            }))
      << "taken off and put on again";
  EXPECT_EQ(0, touch([&] { tap->setEnabled(false); })) << "switched off";
  tap->setEnabled(true);
  EXPECT_EQ(1, touch([] {}));
  EXPECT_EQ(0, touch([&] {
              window->removeGestureRecognizer(tap);
              tap.reset();
            }))
      << "destroyed";
}

TEST(Gestures, ARowOfTapsIsForgottenWhenTheRecognizerIsTakenOff) {
  TestPhone phone;
  const auto window = phone.show();
  const auto listener = std::make_shared<Listener>();
  const auto tap = addTap(window, listener, 3);
  phone.tap(kPoint, 2);
  window->removeGestureRecognizer(tap);
  window->addGestureRecognizer(tap);
  phone.tap(kPoint, 1);
  EXPECT_EQ(0, listener->count);
}

// Actions run in the middle of the delivery of an event, and may pull everything from under it.
TEST(Gestures, AnActionMayDestroyWhatItCameFrom) {
  TestPhone phone;
  const auto below = phone.show();
  const auto kept = std::make_shared<Listener>();
  addTap(below, kept);

  auto window = std::make_shared<UIWindow>(below->frame());
  auto view = std::make_shared<TouchedView>(CGRectMake(50, 250, 200, 200));
  window->addSubview(view);
  std::shared_ptr<UITapGestureRecognizer> tap;
  const auto destroyer = std::make_shared<Listener>([&] {
    view->removeFromSuperview();
    view->removeGestureRecognizer(tap);
    tap.reset();
    view.reset();
    window.reset();
  });
  tap = addTap(view, destroyer);
  addTap(window, destroyer, 2);
  window->makeKeyAndVisible();
  phone.tap(kPoint);
  EXPECT_EQ(1, destroyer->count);
  EXPECT_EQ(below, UIApplication::sharedApplication()->keyWindow());
  phone.tap(kPoint);
  EXPECT_EQ(1, kept->count);
}

TEST(Gestures, AViewThatLeavesUnderTheFingerIsToldThatTheTouchIsOver) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = std::make_shared<TouchedView>(CGRectMake(50, 250, 200, 200));
  window->addSubview(view);
  const auto listener = std::make_shared<Listener>();
  addTap(view, listener);
  play({down(0, {{1, kPoint}})});
  view->removeFromSuperview();
  play({move(10, {{1, {100, 310}}}), up(20, {{1, {100, 310}}})});
  EXPECT_EQ("began cancelled", view->log);
  EXPECT_EQ(0, listener->count);
}

TEST(Gestures, TouchesAreTakenBackWhenTheApplicationLeavesAndIgnoredWhileItIsAway) {
  TestPhone phone;
  const auto application = UIApplication::sharedApplication();
  const auto window = phone.show();
  const auto view = std::make_shared<TouchedView>(CGRectMake(50, 250, 200, 200));
  window->addSubview(view);
  play({down(0, {{1, kPoint}})});
  application->moveToBackground("home");
  EXPECT_EQ("began cancelled", std::exchange(view->log, ""));
  play({up(0, {{1, kPoint}}), down(10, {{2, kPoint}})});
  EXPECT_EQ("", view->log) << "in the background";
  application->moveToForeground();
  phone.tap(kPoint);
  EXPECT_EQ("began ended", view->log);
}

TEST(Controls, AFingerMayLeaveByALittleAndComeBack) {
  struct Row {
    const char* name;
    std::vector<Step> steps;
    int pressed;
  };
  const Row rows[] = {
      {"ends inside", {down(0, {{1, kPoint}}), up(50, {{1, kPoint}})}, 1},
      {"ends a little beside",
       {down(0, {{1, kPoint}}), move(20, {{1, {100, 390}}}), up(50, {{1, {100, 390}}})},
       1},
      {"ends far away", {down(0, {{1, kPoint}}), move(20, {{1, {100, 400}}}), up(50, {{1, {100, 400}}})}, 0},
      {"comes back",
       {down(0, {{1, kPoint}}), move(20, {{1, {100, 500}}}), move(30, {{1, kPoint}}), up(50, {{1, kPoint}})},
       1},
      {"begins outside", {down(0, {{1, {100, 340}}}), move(20, {{1, kPoint}}), up(50, {{1, kPoint}})}, 0},
  };
  TestPhone phone;
  const auto window = phone.show();
  const auto button = std::make_shared<UIButton>(CGRectMake(50, 280, 100, 44));
  window->addSubview(button);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto pressed = std::make_shared<Listener>();
    button->addTarget(pressed, "heard", UIControlEventTouchUpInside);
    play(row.steps);
    EXPECT_EQ(row.pressed, pressed->count);
    EXPECT_FALSE(button->isHighlighted());
  }
}

}  // namespace
}  // namespace ios
