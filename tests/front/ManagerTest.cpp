#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

#include "DeviceClock/Clock.h"
#include "Dispatch/Semaphore.h"
#include "Foundation/NSNotificationCenter.h"
#include "Tellvane/TLVManager.h"
#include "Tellvane/Tellvane.h"
#include "support/TestPhone.h"

using namespace tellvane;
using testing_support::Console;
using testing_support::TestPhone;

TEST(Start, SetsBothSwitchesAndLogsInDebugModeOnly) {
  TestPhone phone;
  const auto manager = TLVManager::shared();
  EXPECT_TRUE(manager->isDebugMode());
  EXPECT_FALSE(manager->getRecordWithMicrophoneEnabled());
  EXPECT_EQ("App Screen", manager->currentScreen());

  Console console;
  Tellvane::instantiateSDK(true);
  EXPECT_FALSE(manager->isDebugMode()) << "production unless asked otherwise";
  EXPECT_TRUE(manager->getRecordWithMicrophoneEnabled());
  EXPECT_EQ("", console.text());
  Tellvane::instantiateSDK(true, false);
  EXPECT_TRUE(manager->isDebugMode());
  EXPECT_FALSE(manager->getRecordWithMicrophoneEnabled());
  EXPECT_EQ("<TLV Log> : SDK Instantiated in debug mode\n", console.text());
  EXPECT_EQ("iOS-" TELLVANE_VERSION, Tellvane::getTLVSDKVersion());
}

TEST(Start, ASecondCallDoesNotMakeEveryTriggerCountTwice) {
  TestPhone phone;
  const auto window = phone.show();
  Tellvane::instantiateSDK(true, false);
  phone.runFor(3);
  Tellvane::instantiateSDK(true, false);
  Console console;
  phone.device().input().shake();
  phone.runFor(1);
  EXPECT_TRUE(phone.tapText("Capture Screen"));
  phone.runFor(1);
  EXPECT_EQ(1, console.count("<TLV Log> : Capture Screenshot selected"));
  phone.runFor(10);
  EXPECT_EQ(4u, window->gestureRecognizers().size()) << "the last pair, and the one before it";
}

TEST(Manager, KnowsWhetherTheApplicationIsActive) {
  TestPhone phone;
  phone.show();
  const auto application = UIApplication::sharedApplication();
  EXPECT_TRUE(TLVManager::shared()->checkIfAppIsActive());
  application->setCovered(true);
  EXPECT_FALSE(TLVManager::shared()->checkIfAppIsActive()) << "under a system alert";
  application->setCovered(false);
  EXPECT_TRUE(TLVManager::shared()->checkIfAppIsActive());
  application->moveToBackground("home");
  EXPECT_FALSE(TLVManager::shared()->checkIfAppIsActive());
}

TEST(RunOnMainThread, RunsInlineThereAndWaitsFromElsewhere) {
  TestPhone phone;
  bool queuedFirst = false, ran = false;
  dispatch_async(dispatch_get_main_queue(), [&] { queuedFirst = true; });
  TLVManager::runOnMainThread([&] { ran = !queuedFirst; });
  EXPECT_TRUE(ran) << "not through the queue";
  TLVManager::runOnMainThread(nullptr);

  std::atomic<int> step = 0;
  dispatch_async(dispatch_queue_create("worker"), [&] {
    TLVManager::runOnMainThread([&] {
      EXPECT_TRUE(isMainThread());
      step = 1;
    });
    EXPECT_EQ(1, step) << "returned before the closure had run";
    TLVManager::runOnMainThread(nullptr);
    step = 2;
  });
  phone.runFor(0);
  EXPECT_EQ(2, step);
}

TEST(RunOnMainThread, AndDelayAnswerToTheirSelectors) {
  TestPhone phone;
  std::string ran;
  send(*TLVManager::shared(), "runOnMainThread:", std::function<void()>([&] { ran += "now "; }));
  send(*TLVManager::shared(), "delay:queue:closure:", 1.5, dispatch_get_main_queue(),
       std::function<void()>([&] { ran += std::to_string(phone.now()); }));
  EXPECT_EQ("now ", ran);
  phone.runFor(2);
  EXPECT_EQ("now 1.500000", ran);
}

TEST(Delay, RunsOnceAtItsTimeAndNeverInsideTheCall) {
  TestPhone phone;
  const auto queue = dispatch_queue_create("delayed");
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* what;
    double seconds, firesAfter;  // negative: never
  } rows[] = {
      {"none", 0, 0},
      {"a fraction", 0.25, 0.25},
      {"negative", -5, 0},
      {"far below the range", -1e300, 0},
      {"truncated to nothing", 1e-10, 0},
      {"beyond the range", 9.3e9, -1},
      {"not a number", std::nan(""), -1},
      {"infinite", infinity, -1},
      {"minus infinite", -infinity, -1},
  };
  for (const auto& row : rows) {
    std::atomic<int> ran = 0;
    std::atomic<double> at = -1;
    const double start = phone.now();
    TLVManager::delay(row.seconds, dispatch_get_main_queue(), [&] {
      ++ran;
      at = phone.now();
    });
    EXPECT_EQ(0, ran) << row.what << ": inside the call";
    phone.runFor(1);
    EXPECT_EQ(row.firesAfter < 0 ? 0 : 1, ran) << row.what;
    if (row.firesAfter >= 0) {
      EXPECT_NEAR(start + row.firesAfter, at, 1e-9) << row.what;
    }
  }
  TLVManager::delay(0, nullptr, [] { FAIL() << "without a queue"; });
  TLVManager::delay(0, queue, nullptr);
  phone.runFor(1);
}
