#include <gtest/gtest.h>

#include <cerrno>

#include "AVFoundation/CodecFault.h"
#include "Device/Files.h"
#include "Foundation/NSError.h"
#include "Tellvane/CaptureScreenRecording.h"
#include "Tellvane/Tellvane.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UINavigationController.h"
#include "recording/TLVCaptureScreenRecording.h"
#include "support/MovieProbe.h"
#include "support/TestPhone.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

using testing_support::Console;
using testing_support::MovieProbe;
using testing_support::TestPhone;

constexpr char kDone[] = "Recording video succesful!", kAbrupt[] = "Recording ended abruptly!";
constexpr char kLog[] = "<TLV Log> : ";

/// A phone on which the library runs and the host may record with the system's recorder, and may not use the
/// photo library.
class HostPhone : public TestPhone {
 public:
  explicit HostPhone(bool debug = true, const Options& options = {}) : TestPhone(options) {
    device().setPermission("screen", Permission::authorized);
    device().setPermission("photos", Permission::denied);
    show();
    Tellvane::instantiateSDK(debug, false);
    runFor(0.5);
  }
  static CaptureScreenRecording& recording() { return *CaptureScreenRecording::shared(); }
  static std::shared_ptr<UIViewController> root() {
    return UIApplication::sharedApplication()->keyWindow()->rootViewController();
  }
  /// Records for a while, with pictures to encode.
  void record(double seconds) const {
    recording().captureScreenRecording();
    runFor(0.1);
    EXPECT_TRUE(recording().isRecording());
    use(seconds - 0.1);
  }
  void use(double seconds) const {
    for (double end = now() + seconds; now() < end; runFor(0.1)) {
      const double share = now() - std::floor(now());
      root()->view()->setBackgroundColor(UIColor::colorWithRedGreenBlueAlpha(share, 0.4, 0.6, 1));
    }
  }
  static std::shared_ptr<UIAlertController> alert() {
    return std::dynamic_pointer_cast<UIAlertController>(topViewController());
  }
  static std::shared_ptr<RPPreviewViewController> preview() {
    auto top = topViewController();  // the player's, which the preview contains
    while (top && top->parentViewController()) top = top->parentViewController();
    return std::dynamic_pointer_cast<RPPreviewViewController>(top);
  }
  std::filesystem::path movie(int number = 1) const {
    return folder() / ("Media/DCIM/100TLVNE/IMG_000" + std::to_string(number) + ".MOV");
  }
};

std::vector<std::pair<std::string, UIAlertActionStyle>> buttonsOf(const UIAlertController& alert) {
  std::vector<std::pair<std::string, UIAlertActionStyle>> buttons;
  for (const auto& action : alert.actions()) buttons.emplace_back(action->title(), action->style());
  return buttons;
}

void failPictures(int after) {
  setCodecFault([after, count = std::make_shared<std::atomic<int>>(0)](const std::string& operation) {
    return operation == "encode a picture" && ++*count > after ? EIO : 0;
  });
}

TEST(SystemRecording, GoesThroughAlertAndPreviewIntoThePhotoLibrary) {
  HostPhone phone;
  Console console;
  phone.record(2);
  phone.recording().stopRecording();
  EXPECT_FALSE(phone.recording().isRecording());
  phone.runFor(1);
  const auto alert = phone.alert();
  ASSERT_TRUE(alert);
  EXPECT_EQ(UIAlertControllerStyle::alert, alert->preferredStyle());
  EXPECT_EQ(kDone, alert->title());
  EXPECT_EQ("Save the video", alert->message());
  EXPECT_EQ((std::vector<std::pair<std::string, UIAlertActionStyle>>{{"Save", UIAlertActionStyle::default_}}),
            buttonsOf(*alert));
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  ASSERT_TRUE(phone.preview());
  EXPECT_EQ(phone.root(), phone.preview()->presentingViewController());
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  EXPECT_FALSE(phone.preview()) << "dismissed once the user has finished";
  EXPECT_EQ(std::string(kLog) + "com.apple.UIKit.activity.SaveToCameraRoll\n", console.text());
  EXPECT_NEAR(2, MovieProbe(phone.movie()).times('v').back(), 0.15);
}

TEST(SystemRecording, EndsThirtySecondsAfterItBeganAndSoDoesTheNextWithinThem) {
  HostPhone phone;
  phone.record(29.8);
  EXPECT_TRUE(phone.recording().isRecording());
  phone.runFor(0.4);
  EXPECT_FALSE(phone.recording().isRecording());
  phone.runFor(1);
  EXPECT_TRUE(phone.shows(kDone));
  phone.root()->dismissViewControllerAnimated(false);
  phone.runFor(1);

  phone.record(10);
  phone.recording().stopRecording();
  phone.runFor(1);
  phone.root()->dismissViewControllerAnimated(false);
  phone.runFor(1);
  phone.record(17.8);
  EXPECT_TRUE(phone.recording().isRecording()) << "29.8 seconds after the first began";
  phone.runFor(0.4);
  EXPECT_FALSE(phone.recording().isRecording()) << "the first one's timer is not cancelled";
}

TEST(SystemRecording, LogsAStartThatFailsAndSetsNoTimer) {
  HostPhone phone;
  Console console;
  phone.device().setPermission("screen", Permission::denied);
  phone.recording().captureScreenRecording();
  phone.runFor(20);
  EXPECT_EQ(std::string(kLog) + "Start recording Error: The user declined application recording\n",
            console.text());
  phone.device().setPermission("screen", Permission::authorized);
  phone.record(5);
  phone.recording().captureScreenRecording();
  phone.runFor(15);
  EXPECT_TRUE(phone.recording().isRecording()) << "40 seconds after the start that failed";
  EXPECT_EQ(1, console.count(std::string(kLog) + "Start recording Error: A recording is under way already"));
  phone.runFor(10.2);
  EXPECT_FALSE(phone.recording().isRecording());
}

TEST(SystemRecording, OffersThePartialMovieOfOneThatEndsAbruptly) {
  HostPhone phone;
  Console console;
  failPictures(8);
  phone.record(2);
  setCodecFault(nullptr);
  EXPECT_FALSE(phone.recording().isRecording());
  EXPECT_EQ(std::string(kLog) + "Stopped recording with error: Recording failed\n", console.text());
  const auto alert = phone.alert();
  ASSERT_TRUE(alert);
  EXPECT_EQ(kAbrupt, alert->title());
  EXPECT_EQ("Save the video", alert->message());
  EXPECT_EQ((std::vector<std::pair<std::string, UIAlertActionStyle>>{{"Save", UIAlertActionStyle::default_},
                                                                     {"Cancel", UIAlertActionStyle::cancel}}),
            buttonsOf(*alert));
  EXPECT_TRUE(phone.tapText("Cancel"));
  phone.runFor(1);
  EXPECT_EQ(phone.root(), topViewController()) << "Cancel only closes the alert";

  failPictures(8);
  phone.record(2);
  setCodecFault(nullptr);
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  EXPECT_EQ(8u, MovieProbe(phone.movie()).pictures().size()) << "all that the encoder took";
  EXPECT_FALSE(std::filesystem::exists(phone.movie(2)));
}

TEST(SystemRecording, OnlyLogsAFailureThatLeavesNoMovie) {
  HostPhone phone;
  Console console;
  phone.recording().captureScreenRecording();
  phone.use(0.5);
  setDiskFault([](const std::string& operation, const std::filesystem::path&) {
    return operation == "write" ? ENOSPC : 0;
  });
  phone.use(8);
  setDiskFault(nullptr);
  EXPECT_FALSE(phone.recording().isRecording());
  EXPECT_EQ(
      std::string(kLog) + "Stopped recording with error: There is not enough storage for the recording\n",
      console.text());
  EXPECT_EQ(phone.root(), topViewController());
}

TEST(SystemRecording, LogsAStopThatFailsAndShowsNoAlertWhateverIsLeft) {
  HostPhone phone;
  Console console;
  phone.record(1);
  setCodecFault(
      [](const std::string& operation) { return operation == "flush the video encoder" ? EIO : 0; });
  phone.recording().stopRecording();
  phone.runFor(1);
  setCodecFault(nullptr);
  EXPECT_EQ(std::string(kLog) + "Error stopping recording: Recording failed\n", console.text());
  EXPECT_EQ(phone.root(), topViewController());
}

TEST(SystemRecording, ShowsNothingWhenThereIsNoViewControllerToShowItOn) {
  HostPhone phone;
  Console console;
  const auto window = UIApplication::sharedApplication()->keyWindow();
  phone.record(1);
  window->setRootViewController(UINavigationController::withRootViewController(nullptr));
  phone.recording().stopRecording();
  phone.runFor(1);
  EXPECT_FALSE(phone.shows(kDone));
  phone.recording().captureScreenRecording();
  phone.runFor(1);
  UIApplication::sharedApplication()->moveToBackground("home");
  phone.runFor(1);
  UIApplication::sharedApplication()->moveToForeground();
  window->setRootViewController(std::make_shared<UIViewController>());
  phone.runFor(1);
  EXPECT_FALSE(phone.shows(kAbrupt));
  EXPECT_EQ(1,
            console.count(std::string(kLog) +
                          "Stopped recording with error: Recording was interrupted as the application left "
                          "the foreground"));
}

TEST(SystemRecording, WaitsForAScreenThatIsBeingClosedAndPresentsThePreviewWhereTheAlertWas) {
  HostPhone phone;
  phone.record(1);
  phone.root()->presentViewController(std::make_shared<UIViewController>(), true);
  phone.runFor(1);
  phone.root()->dismissViewControllerAnimated(true);
  phone.recording().stopRecording();
  phone.runFor(1.5);
  ASSERT_TRUE(phone.shows(kDone));
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  ASSERT_TRUE(phone.preview());
  EXPECT_EQ(phone.root(), phone.preview()->presentingViewController());
}

TEST(SystemRecording, LogsActivitiesInTheOrderOfTheirSetAndNothingInProductionMode) {
  HostPhone phone;
  const std::set<std::string> activities{"B", "A"};
  {
    Console console;
    phone.recording().stopRecording();  // nothing records
    phone.runFor(0.1);
    phone.recording().previewControllerDidFinishWithActivityTypes(nullptr, activities);
    std::string expected;
    for (const auto& activity : activities) expected += kLog + activity + "\n";
    EXPECT_EQ(expected, console.text());
  }
  Tellvane::instantiateSDK(false, false);
  Console console;
  phone.recording().previewControllerDidFinishWithActivityTypes(nullptr, activities);
  failPictures(8);
  phone.record(2);
  setCodecFault(nullptr);
  EXPECT_TRUE(phone.shows(kAbrupt)) << "alerts come in either mode";
  EXPECT_EQ("", console.text());
}

TEST(SystemRecording, IsReachedBySelectorsAndSpeaksTheLanguageOfTheUser) {
  HostPhone phone(true, {.languages = {"de-AT"}});
  const std::shared_ptr<NSObject> recording = CaptureScreenRecording::shared();
  send(*recording, "captureScreenRecording");
  phone.runFor(1);
  EXPECT_TRUE(send<bool>(*recording, "isRecording"));
  send(*recording, "stopRecording");
  phone.runFor(1);
  EXPECT_TRUE(phone.shows("Videoaufnahme erfolgreich!"));
  EXPECT_TRUE(phone.shows("Video sichern"));
  EXPECT_TRUE(phone.shows("Sichern"));
}

TEST(SystemRecording, RunsBesideTheLibrarysOwnAndEachHasItsMovie) {
  HostPhone phone;
  phone.device().setPermission("photos", Permission::authorized);
  TLVCaptureScreenRecording::shared()->captureScreenRecording();
  phone.runFor(1);
  phone.record(2);
  TLVCaptureScreenRecording::shared()->stopRecording();
  phone.runFor(1);
  EXPECT_TRUE(phone.recording().isRecording());
  phone.root()->dismissViewControllerAnimated(false);
  phone.runFor(1);
  phone.recording().stopRecording();
  phone.runFor(1);
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  EXPECT_NEAR(3, MovieProbe(phone.movie(1)).times('v').back(), 0.15);
  EXPECT_NEAR(4, MovieProbe(phone.movie(2)).times('v').back(), 0.2);
}

}  // namespace
}  // namespace tellvane
