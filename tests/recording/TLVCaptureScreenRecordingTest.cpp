#include "recording/TLVCaptureScreenRecording.h"

#include <gtest/gtest.h>

#include "AVFoundation/Microphone.h"
#include "Device/Files.h"
#include "Device/PermissionPrompt.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Semaphore.h"
#include "Photos/PHPhotoLibrary.h"
#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "Tellvane/Tellvane.h"
#include "UIKit/UIApplication.h"
#include "info/TLVConstants.h"
#include "support/MovieProbe.h"
#include "support/TestPhone.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

using testing_support::Console;
using testing_support::MovieProbe;
using testing_support::TestPhone;

class AnotherScreen : public UIViewController {};

/// A phone on which the library runs in debug mode and may use the photo library.
class SessionPhone : public TestPhone {
 public:
  explicit SessionPhone(bool microphone = false) {
    device().setPermission("photos", Permission::authorized);
    show();
    Tellvane::instantiateSDK(true, microphone);
    runFor(2.5);
  }

  void startThroughTheSheet() const {
    device().input().shake();
    runFor(1);
    EXPECT_TRUE(tapText("Capture Screen Recording"));
    // The choice is acted on when the sheet has gone; the user may have to be asked first.
    static_cast<void>(Clock::shared().runUntil([] { return isRecording(); }, std::chrono::seconds(1)));
  }
  static bool isRecording() { return TLVCaptureScreenRecording::shared()->isRecording(); }
  static std::shared_ptr<TLVSaveRecordingViewController> confirmation() {
    auto top = topViewController();  // the player's, which the screen contains
    while (top && top->parentViewController()) top = top->parentViewController();
    return std::dynamic_pointer_cast<TLVSaveRecordingViewController>(top);
  }
  std::vector<std::filesystem::path> movies() const {
    std::vector<std::filesystem::path> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder() / "Media/DCIM/100TLVNE", error)) {
      if (entry.path().extension() == ".MOV") found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
  }
};

TEST(RecordingSession, GoesFromTriggerToTriggerToTheConfirmationScreen) {
  SessionPhone phone;
  EXPECT_FALSE(phone.isRecording());
  Console console;
  phone.startThroughTheSheet();
  EXPECT_TRUE(phone.isRecording());
  const auto root = UIApplication::sharedApplication()->keyWindow()->rootViewController();
  root->presentViewController(std::make_shared<AnotherScreen>(), true);
  phone.runFor(2);
  phone.tap({180, 300}, 3);
  EXPECT_FALSE(phone.isRecording());
  EXPECT_EQ("UIViewController", TLVManager::shared()->currentScreen()) << "where the recording was begun";
  phone.runFor(1);
  EXPECT_EQ(
      "<TLV Log> : Capture Screen recording selected\n<TLV Log> : Screen recording started\n"
      "<TLV Log> : Screen recording ended\n",
      console.text().substr(console.text().find("<TLV Log> : Capture")));
  ASSERT_TRUE(phone.confirmation());
  ASSERT_EQ(1u, phone.movies().size());
  EXPECT_NEAR(2.25, MovieProbe(phone.movies()[0]).times('v').back(), 0.1) << "the taps take a quarter";

  phone.device().input().shake();
  phone.runFor(1);
  EXPECT_FALSE(phone.shows("Options")) << "no trigger is announced over the confirmation screen";
}

TEST(RecordingSession, AsksOnceTheScreenThatTheHostIsClosingHasGone) {
  SessionPhone phone;
  phone.startThroughTheSheet();
  const auto root = UIApplication::sharedApplication()->keyWindow()->rootViewController();
  root->presentViewController(std::make_shared<UIViewController>(), true);
  phone.runFor(1);
  root->dismissViewControllerAnimated(true);
  phone.device().input().shake();
  phone.runFor(1.5);
  ASSERT_TRUE(phone.confirmation());
  EXPECT_EQ(root, phone.confirmation()->presentingViewController());
}

TEST(RecordingSession, EndsWithTheFirstFramePastThirtySeconds) {
  SessionPhone phone;
  phone.startThroughTheSheet();
  const auto session = TLVCaptureScreenRecording::shared();
  EXPECT_NEAR(0.6 * 1048576, session->screenRecorder()->desiredBitRate(), 1e-6);
  send(*session, "stopRecordingAtDesiredTime:", 30.0);
  EXPECT_TRUE(phone.isRecording());
  phone.runFor(29.5);
  EXPECT_TRUE(phone.isRecording());
  phone.runFor(2);
  EXPECT_FALSE(phone.isRecording());
  ASSERT_EQ(1u, phone.movies().size());
  const auto times = MovieProbe(phone.movies()[0]).times('v');
  EXPECT_GE(times.back(), 30.0);
  EXPECT_LE(times.back(), 30.034);
  EXPECT_NEAR(901, times.size(), 1);
  EXPECT_TRUE(phone.confirmation());
}

TEST(RecordingSession, EndsInTheBackgroundAndAsksWhenTheHostIsBack) {
  SessionPhone phone;
  const auto application = UIApplication::sharedApplication();
  TLVCaptureScreenRecording::shared();
  Console console;
  application->moveToBackground("home");
  phone.runFor(1);
  application->moveToForeground();
  phone.runFor(1);
  EXPECT_EQ("<TLV Log> : App went to background\n", console.text());

  phone.startThroughTheSheet();
  phone.runFor(1);
  application->moveToBackground("home");
  EXPECT_FALSE(phone.isRecording());
  phone.runFor(3);
  application->moveToForeground();
  phone.runFor(1);
  EXPECT_TRUE(phone.confirmation());
  EXPECT_EQ(2, console.count("<TLV Log> : App went to background"));
  EXPECT_EQ(1u, phone.movies().size());
}

TEST(RecordingSession, TheNextOneMayStartWhileTheLastIsBeingSaved) {
  SessionPhone phone;
  const auto slow = dispatch_semaphore_create(0);
  std::atomic<bool> held = false;
  setDiskFault([&](const std::string& operation, const std::filesystem::path& path) {
    const bool copies = operation == "write" && path.string().find("DCIM") != std::string::npos;
    if (copies && !held.exchange(true)) dispatch_semaphore_wait(slow, DISPATCH_TIME_FOREVER);
    return 0;
  });
  phone.startThroughTheSheet();
  phone.runFor(1);
  Console console;
  phone.device().input().shake();
  phone.runFor(1);
  ASSERT_TRUE(held);
  phone.startThroughTheSheet();
  EXPECT_TRUE(phone.isRecording());
  phone.runFor(1);
  dispatch_semaphore_signal(slow);
  phone.runFor(1);
  EXPECT_EQ(1, console.count("<TLV Log> : Screen recording ended"));
  EXPECT_TRUE(phone.isRecording()) << "the end of the first is not that of the second";
  EXPECT_TRUE(phone.confirmation());
  TLVCaptureScreenRecording::shared()->stopRecording();
  TLVCaptureScreenRecording::shared()->stopRecording();
  phone.runFor(1);
  setDiskFault(nullptr);
  EXPECT_EQ(2, console.count("<TLV Log> : Screen recording ended"));
  const auto movies = phone.movies();
  ASSERT_EQ(2u, movies.size());
  EXPECT_NEAR(1, MovieProbe(movies[0]).times('v').back(), 0.1);
  EXPECT_NEAR(2, MovieProbe(movies[1]).times('v').back(), 0.1);
}

// The first movie lies finished in its temporary file until the library has time for it, and neither the
// start nor the end of the second may take it from there.
TEST(RecordingSession, TheNextOneMayStartAndEndWhileTheLastWaitsToBeSaved) {
  SessionPhone phone;
  const auto busy = dispatch_semaphore_create(0);
  PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
      [busy] { dispatch_semaphore_wait(busy, DISPATCH_TIME_FOREVER); }, nullptr);
  for (const double seconds : {1, 2}) {
    TLVCaptureScreenRecording::shared()->captureScreenRecording();
    phone.runFor(seconds);
    TLVCaptureScreenRecording::shared()->stopRecording();
    phone.runFor(1);
  }
  const auto temporary = std::filesystem::path(TLV_SCREEN_RECORDING_PATH()).parent_path();
  EXPECT_FALSE(std::filesystem::is_empty(temporary));
  dispatch_semaphore_signal(busy);
  phone.runFor(1);
  const auto movies = phone.movies();
  ASSERT_EQ(2u, movies.size());
  EXPECT_NEAR(1, MovieProbe(movies[0]).times('v').back(), 0.1);
  EXPECT_NEAR(2, MovieProbe(movies[1]).times('v').back(), 0.1);
  EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

// The end of the first must not take the temporary file of the second.
TEST(RecordingSession, TheNextOneMayEndWhileTheLastIsBeingSaved) {
  SessionPhone phone;
  const auto first = dispatch_semaphore_create(0), second = dispatch_semaphore_create(0);
  std::atomic<int> opened = 0, written = 0;
  const auto temporary = std::filesystem::path(TLV_SCREEN_RECORDING_PATH()).parent_path();
  setDiskFault([&](const std::string& operation, const std::filesystem::path& path) {
    if (path.parent_path() == temporary && operation == "read" && ++opened == 2)
      dispatch_semaphore_wait(second, DISPATCH_TIME_FOREVER);
    const bool copies = operation == "write" && path.string().find("DCIM") != std::string::npos;
    if (copies && ++written == 1) dispatch_semaphore_wait(first, DISPATCH_TIME_FOREVER);
    return 0;
  });
  for (const double seconds : {1, 2}) {
    TLVCaptureScreenRecording::shared()->captureScreenRecording();
    phone.runFor(seconds);
    TLVCaptureScreenRecording::shared()->stopRecording();
    phone.runFor(1);
  }
  ASSERT_EQ(1, written);
  dispatch_semaphore_signal(first);
  phone.runFor(1);
  ASSERT_EQ(1u, phone.movies().size());
  ASSERT_EQ(2, opened) << "the second is about to be copied";
  dispatch_semaphore_signal(second);
  phone.runFor(1);
  setDiskFault(nullptr);
  const auto movies = phone.movies();
  ASSERT_EQ(2u, movies.size());
  EXPECT_NEAR(1, MovieProbe(movies[0]).times('v').back(), 0.1);
  EXPECT_NEAR(2, MovieProbe(movies[1]).times('v').back(), 0.1);
  EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

// Home may come while the sheet closes, or while the user is being asked for the microphone.
TEST(RecordingSession, IsNotStartedWhereNobodySeesIt) {
  std::vector<std::function<void(bool)>> questions;
  setPermissionPresenter([&](const PermissionQuestion&, std::function<void(bool)> answer) {
    questions.push_back(std::move(answer));
  });
  Microphone::shared().setSound(Microphone::Tone{});
  SessionPhone phone(true);
  Console console;
  const auto application = UIApplication::sharedApplication();
  for (const double leavesAfter : {0.0, 1.0}) {
    SCOPED_TRACE(leavesAfter);
    phone.device().input().shake();
    phone.runFor(1);
    EXPECT_TRUE(phone.tapText("Capture Screen Recording"));
    phone.runFor(leavesAfter);
    application->moveToBackground("home");
    phone.runFor(1);
    EXPECT_EQ(leavesAfter > 0, questions.size() == 1);
    for (const auto& answer : questions) answer(true);
    phone.runFor(1);
    EXPECT_FALSE(phone.isRecording());
    EXPECT_EQ(0, console.count("<TLV Log> : Screen recording started"));
    application->moveToForeground();
    phone.runFor(1);
  }
  phone.startThroughTheSheet();
  EXPECT_TRUE(phone.isRecording()) << "the next one is not affected";
}

TEST(RecordingSession, IsStartedOnceWhileTheUserIsAskedForTheMicrophone) {
  std::vector<std::function<void(bool)>> questions;
  setPermissionPresenter([&](const PermissionQuestion&, std::function<void(bool)> answer) {
    questions.push_back(std::move(answer));
  });
  Microphone::shared().setSound(Microphone::Tone{});
  SessionPhone phone(true);
  phone.startThroughTheSheet();
  EXPECT_FALSE(phone.isRecording());
  phone.startThroughTheSheet();
  ASSERT_EQ(1u, questions.size());
  Console console;
  questions[0](true);
  phone.runFor(1);
  EXPECT_EQ(1, console.count("<TLV Log> : Screen recording started"));
  EXPECT_TRUE(phone.isRecording());

  // The switch is read at each start.
  TLVCaptureScreenRecording::shared()->stopRecording();
  phone.runFor(1);
  topViewController()->dismissViewControllerAnimated(false);
  phone.runFor(1);
  Tellvane::instantiateSDK(true, false);
  phone.startThroughTheSheet();
  phone.runFor(1);
  TLVCaptureScreenRecording::shared()->stopRecording();
  phone.runFor(1);
  ASSERT_EQ(2u, phone.movies().size());
  EXPECT_EQ("aac", MovieProbe(phone.movies()[0]).fact('a', "codec_name"));
  EXPECT_EQ("", MovieProbe(phone.movies()[1]).fact('a', "codec_name"));
}

TEST(RecordingSession, TriggersWorkAgainAfterTheConfirmationScreen) {
  SessionPhone phone;
  for (const bool companion : {false, true}) {
    if (companion) phone.installApplication("com.tellvane.companion", "Tellvane", "exit 0");
    for (const char* choice : {"Delete", "Save"}) {
      SCOPED_TRACE(std::string(choice) + (companion ? " with the companion" : ""));
      phone.startThroughTheSheet();
      phone.runFor(1);
      phone.device().input().shake();
      phone.runFor(1);
      ASSERT_TRUE(phone.confirmation());
      ASSERT_TRUE(phone.tapText(choice));
      phone.runFor(1);
      UIApplication::sharedApplication()->moveToForeground();
      phone.runFor(4);
      EXPECT_FALSE(phone.confirmation());
      if (phone.tapText("Cancel")) phone.runFor(1);  // the offer to install the companion
    }
  }
}

TEST(RecordingSession, AsksNothingAboutAMovieThatCouldNotBeSaved) {
  SessionPhone phone;
  phone.startThroughTheSheet();
  phone.runFor(1);
  setDiskFault([](const std::string& operation, const std::filesystem::path&) {
    return operation == "write" ? ENOSPC : 0;
  });
  Console console;
  TLVCaptureScreenRecording::shared()->stopRecording();
  phone.runFor(2);
  setDiskFault(nullptr);
  EXPECT_EQ(1, console.count("<TLV Log> : Screen recording ended"));
  EXPECT_TRUE(phone.movies().empty());
  EXPECT_FALSE(phone.confirmation());
}

TEST(RecordingSession, WithoutAControllerKeepsTheMovieAndShowsNothing) {
  SessionPhone phone;
  phone.startThroughTheSheet();
  phone.runFor(1);
  UIApplication::sharedApplication()->keyWindow()->setRootViewController(nullptr);
  TLVCaptureScreenRecording::shared()->stopRecording();
  phone.runFor(1);
  EXPECT_EQ(1u, phone.movies().size());
  EXPECT_TRUE(phone.texts().empty());
}

// In production mode a trigger has no effect, not even on a recording.
TEST(RecordingSession, IsOutOfReachOfTriggersInProductionMode) {
  SessionPhone phone;
  phone.startThroughTheSheet();
  Tellvane::instantiateSDK(false, false);
  phone.device().input().shake();
  phone.runFor(1);
  EXPECT_TRUE(phone.isRecording());
}

}  // namespace
}  // namespace tellvane
