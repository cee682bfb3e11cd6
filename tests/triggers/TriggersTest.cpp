#include <gtest/gtest.h>

#include <random>

#include "DeviceClock/Clock.h"
#include "Foundation/NSNotificationCenter.h"
#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "Tellvane/TLVNotifications.h"
#include "Tellvane/Tellvane.h"
#include "UIKit/UIGestureRecognizer.h"
#include "support/TestPhone.h"
#include "triggers/GestureListeners.h"

using namespace tellvane;
using testing_support::Console;
using testing_support::TestPhone;

namespace {

/// Counts announced triggers.
class Listener : public Subclass<Listener, NSObject> {
 public:
  static MethodList methods() { return {{"heard:", &Listener::heard}}; }
  static std::shared_ptr<Listener> listen() {
    auto listener = std::make_shared<Listener>();
    NSNotificationCenter::defaultCenter()->addObserver(listener, "heard:", TLV_GESTURE_SUCCESS, nullptr);
    return listener;
  }
  int count = 0;

 private:
  void heard(const std::shared_ptr<NSNotification>& notification) {
    EXPECT_FALSE(notification->object());
    EXPECT_FALSE(notification->userInfo());
    ++count;
  }
};

class HostsOwnConfirmation : public TLVSaveRecordingViewController {
 public:
  using TLVSaveRecordingViewController::TLVSaveRecordingViewController;
};

constexpr CGPoint kMiddle{180, 300};

}  // namespace

TEST(Triggers, AreThreeTapsOrThreeFingersOrAShake) {
  TestPhone phone;
  phone.show();
  const auto heard = Listener::listen();
  Tellvane::instantiateSDK(false, false);
  phone.runFor(2.5);
  const struct {
    const char* what;
    std::function<void()> gesture;
    int announced;
  } rows[] = {
      {"three taps", [&] { phone.tap(kMiddle, 3); }, 1},
      {"three fingers", [&] { phone.tap(kMiddle, 1, 3); }, 1},
      {"a shake", [&] { phone.device().input().shake(); }, 1},
      {"two taps", [&] { phone.tap(kMiddle, 2); }, 0},
      {"two fingers", [&] { phone.tap(kMiddle, 1, 2); }, 0},
      {"four fingers", [&] { phone.tap(kMiddle, 1, 4); }, 0},
      {"three slow taps",
       [&] {
         phone.device().input().tap({.location = kMiddle, .count = 3, .delay = std::chrono::seconds(1)});
       },
       0},
      {"a swipe",
       [&] {
         phone.device().input().swipe(kMiddle, {180, 100});
       },
       0},
  };
  for (const auto& row : rows) {
    heard->count = 0;
    row.gesture();
    phone.runFor(2);
    EXPECT_EQ(row.announced, heard->count) << row.what;
  }
}

TEST(Triggers, MayBeUnderWayWhileRecognisersAreReplaced) {
  TestPhone phone;
  phone.show();
  const auto heard = Listener::listen();
  Tellvane::instantiateSDK(false, false);
  double installation = 10;
  for (const int taps : {3, 1}) {
    for (double before = 0.8; before > -0.1; before -= 0.03, installation += 10) {
      phone.runFor(installation - before - phone.now());
      heard->count = 0;
      phone.device().input().tap({.location = kMiddle,
                                  .count = taps,
                                  .fingers = taps == 1 ? 3 : 1,
                                  .delay = std::chrono::milliseconds(250)});
      phone.runFor(2);
      EXPECT_EQ(1, heard->count) << taps << " taps begun " << before << " s before";
    }
  }
}

TEST(Triggers, RecognisersComeTwoSecondsAfterTheStartAndAreReplacedEveryTen) {
  TestPhone phone;
  const auto window = phone.show();
  Tellvane::instantiateSDK(false, false);
  phone.runFor(1.999);
  EXPECT_TRUE(window->gestureRecognizers().empty());
  phone.runFor(0.002);
  ASSERT_EQ(2u, window->gestureRecognizers().size());

  auto pair = window->gestureRecognizers();
  for (const double at : {10.0, 20.0, 30.0}) {
    phone.runFor(at - 0.001 - phone.now());
    EXPECT_EQ(pair, window->gestureRecognizers()) << "just before " << at;
    phone.runFor(0.002);
    ASSERT_EQ(4u, window->gestureRecognizers().size()) << "old pairs pile up";
    EXPECT_NE(pair, window->gestureRecognizers()) << "at " << at;
    pair = window->gestureRecognizers();
  }

  const auto next = phone.show();
  phone.runFor(10);
  EXPECT_EQ(2u, next->gestureRecognizers().size()) << "a new key window";
  phone.runFor(10);
  EXPECT_TRUE(window->gestureRecognizers().empty()) << "the window they were on";
}

TEST(Triggers, AShakeBeforeTheStartIsLoggedAndPreparesTheRecognisers) {
  TestPhone phone;
  Console console;
  const auto window = phone.show();
  phone.device().input().shake();
  phone.runFor(0);
  EXPECT_EQ("<TLV Log> : Shake Detected\n", console.text());
  phone.runFor(2.1);
  EXPECT_EQ(2u, window->gestureRecognizers().size());
  EXPECT_TRUE(phone.texts().empty()) << "nobody observes yet";
}

int inheritedMotions = 0;

TEST(Triggers, OtherMotionsOnlyGetTheInheritedHandling) {
  // The inherited handling hands a motion on to the next responder, after the window the application.
  const Category next{
      UIApplication::classObject(),
      {{"motionEnded:withEvent:",
        +[](UIApplication&, UIEventSubtype, const std::shared_ptr<UIEvent>&) { ++inheritedMotions; }}}};
  TestPhone phone;
  Console console;
  const auto window = phone.show();
  const auto heard = Listener::listen();
  const auto motion = std::make_shared<UIEvent>(UIEventType::motion, UIEventSubtype::motionShake);
  const auto touches = std::make_shared<UIEvent>(UIEventType::touches, UIEventSubtype::motionShake);
  send(*window, "motionEnded:withEvent:", UIEventSubtype::none, motion);
  send(*window, "motionEnded:withEvent:", UIEventSubtype::motionShake, touches);
  send(*window, "motionEnded:withEvent:", UIEventSubtype::motionShake, std::shared_ptr<UIEvent>());
  EXPECT_EQ(0, heard->count);
  EXPECT_EQ("", console.text());
  send(*window, "motionEnded:withEvent:", UIEventSubtype::motionShake, motion);
  EXPECT_EQ(1, heard->count);
  EXPECT_EQ(4, inheritedMotions);
}

TEST(Triggers, AreAnnouncedWithoutAnyWindowAndWithoutARoot) {
  TestPhone phone;
  const auto heard = Listener::listen();
  GestureListeners::shared()->gestureSuccess();
  phone.runFor(2.1);
  const auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
  window->makeKeyAndVisible();
  GestureListeners::shared()->gestureSuccess();
  EXPECT_EQ(2, heard->count);
}

TEST(Triggers, AreIgnoredOnlyWhileTheConfirmationScreenItselfIsUp) {
  TestPhone phone;
  const auto root = std::make_shared<UIViewController>();
  phone.show(root);
  const auto heard = Listener::listen();
  const auto listeners = GestureListeners::shared();

  const auto confirmation = std::make_shared<TLVSaveRecordingViewController>("id", std::nullopt, nullptr);
  root->presentViewController(confirmation, true);
  listeners->gestureSuccess();
  EXPECT_EQ(0, heard->count) << "on its way in";
  phone.runFor(1);
  const auto above = std::make_shared<UIViewController>();
  confirmation->presentViewController(above, false);
  phone.runFor(1);
  listeners->gestureSuccess();
  EXPECT_EQ(0, heard->count) << "under something it presents";
  confirmation->dismissViewControllerAnimated(false);
  phone.runFor(1);
  confirmation->dismissViewControllerAnimated(false);
  phone.runFor(1);
  listeners->gestureSuccess();
  EXPECT_EQ(1, heard->count) << "gone";

  root->presentViewController(std::make_shared<HostsOwnConfirmation>("id", std::nullopt, nullptr), false);
  phone.runFor(1);
  listeners->gestureSuccess();
  EXPECT_EQ(2, heard->count) << "a class derived from it is the host's";
}

TEST(Triggers, HostPostsTheNotificationItselfOnAnyThreadAndTheMenuOpens) {
  TestPhone phone;
  phone.show();
  Tellvane::instantiateSDK(true, false);
  const auto post = [] {
    NSNotificationCenter::defaultCenter()->postNotificationName("GestureForTellvaneSDK");
  };
  for (const auto& queue : {dispatch_get_main_queue(), dispatch_queue_create("host")}) {
    dispatch_async(queue, post);
    phone.runFor(1);
    EXPECT_TRUE(phone.shows("Options"));
    EXPECT_TRUE(phone.tapText("Cancel"));
    phone.runFor(1);
  }
}
