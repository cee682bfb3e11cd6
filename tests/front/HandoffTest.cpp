#include <gtest/gtest.h>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSNotificationCenter.h"
#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "Tellvane/TLVManager.h"
#include "Tellvane/TLVNotifications.h"
#include "Tellvane/Tellvane.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UIPasteboard.h"
#include "info/TLVConstants.h"
#include "media/CaptureScreenshot.h"
#include "support/TestPhone.h"
#include "triggers/UIApplication+TopViewController.h"

using namespace tellvane;
using testing_support::Console;
using testing_support::TestPhone;

namespace {

constexpr char kCompanion[] = "com.tellvane.companion";

std::vector<UIPasteboardItem> items() {
  return UIPasteboard::generalPasteboard()->items();
}

void captureTheScreen(TestPhone& phone, const char* action = "Capture Screen") {
  phone.device().input().shake();
  phone.runFor(1);
  ASSERT_TRUE(phone.tapText(action));
  while (items().empty()) Clock::shared().advanceFrame();
}

/// A keyed archive as somebody else's reader sees it: "key=value" lines, sorted.
std::string readByPython(const TestPhone& phone, const NSData& archive) {
  const auto file = testing_support::fileWith(phone.folder(), "archive", archive.bytes());
  return testing_support::outputOf("python3 -c \"import plistlib,sys; a=plistlib.load(open('" +
                                   file.string() +
                                   "','rb')); o=a['\\$objects']; r=o[a['\\$top']['root'].data];"
                                   "print(a['\\$archiver'], o[r['\\$class'].data]['\\$classname']);"
                                   "print('\\n'.join(sorted(o[k.data]+'='+o[v.data] for k,v in "
                                   "zip(r['NS.keys'],r['NS.objects']))))\"");
}

void start(TestPhone& phone) {
  phone.show();
  Tellvane::instantiateSDK(true, false);
  phone.runFor(2.5);
}

}  // namespace

TEST(Handoff, OfAnImageIsOneItemThatAnyReaderOfArchivesOpens) {
  TestPhone phone({.languages = {"fr-CA"}});
  start(phone);
  captureTheScreen(phone, "Capturer l’écran");
  ASSERT_EQ(1u, items().size());
  const auto item = items()[0];
  ASSERT_EQ(2u, item.size());
  EXPECT_EQ(CaptureScreenshot::shared()->getSavedScreenshot()->bytes(), item.at("imageData")->bytes());
  EXPECT_EQ(
      "NSKeyedArchiver NSDictionary\n"
      "appName=My Notes\n"
      "appVersion=3.0.12\n"
      "deviceModel=iPhone 6\n"
      "deviceResolution=750.00 x 1334.00\n"
      "language=fr-CA\n"
      "oSFamily=iOS\n"
      "oSVersion=10.3.1\n"
      "screenName=UIViewController\n"
      "sdkId=iOS-" TELLVANE_VERSION "\n",
      readByPython(phone, *item.at("dictionaryInApp")));
}

TEST(Handoff, OfARecordingCarriesItsIdentifier) {
  TestPhone phone;
  start(phone);
  TLVManager::shared()->setCurrentScreen("Drawing");
  Console console;
  TLVSaveRecordingViewController("A1/L0/001", std::nullopt, nullptr).saveVideo(nullptr);
  EXPECT_EQ(1, console.count("<TLV Log> : Saved the recording to TLV"));
  ASSERT_EQ(1u, items().size());
  ASSERT_EQ(1u, items()[0].size());
  const std::string record = readByPython(phone, *items()[0].at("TLVScreenVideoDetails"));
  EXPECT_NE(std::string::npos, record.find("videoInPhotosAlbum=A1/L0/001\nvideoName=Drawing\n")) << record;
  EXPECT_EQ(11, std::count(record.begin(), record.end(), '\n')) << "the archive's class and ten entries";
}

TEST(Handoff, OfARecordingWithoutAStringAsIdentifierIsOnlyLogged) {
  TestPhone phone;
  start(phone);
  const auto center = NSNotificationCenter::defaultCenter();
  Console console;
  center->postNotificationName(TLV_SCREEN_RECORD);
  center->postNotificationName(TLV_SCREEN_RECORD, nullptr, NSDictionary{});
  center->postNotificationName(TLV_SCREEN_RECORD, nullptr, NSDictionary{{"assetId", 7}});
  phone.runFor(5);
  EXPECT_EQ(
      "<TLV Log> : Saved the recording to TLV\n<TLV Log> : Saved the recording to TLV\n"
      "<TLV Log> : Saved the recording to TLV\n",
      console.text());
  EXPECT_TRUE(items().empty());
}

TEST(Handoff, WithTheCompanionLeavesTheHostAndClearsThePasteboardAfterThreeSeconds) {
  TestPhone phone;
  phone.installApplication(kCompanion, "tellvane", "printf %s \"$IOS_OPEN_URL\" > \"$IOS_DEVICE/opened\"");
  start(phone);
  Console console;
  captureTheScreen(phone);
  const double handedOver = phone.now();
  phone.runFor(0.5);
  EXPECT_EQ(std::string("Tellvane://") + kCompanion,
            testing_support::outputOf("cat " + (phone.folder() / "opened").string()));
  EXPECT_EQ(UIApplicationState::background, UIApplication::sharedApplication()->applicationState());
  phone.runFor(handedOver + 2.999 - phone.now());
  EXPECT_EQ(1u, items().size()) << "the companion's time is not over";
  phone.runFor(0.002);
  EXPECT_TRUE(items().empty());
  EXPECT_EQ(1, console.count("<TLV Log> : Redirect to App Store"));
  UIApplication::sharedApplication()->moveToForeground();
  phone.runFor(1);
  EXPECT_FALSE(phone.shows("Install Tellvane"));
}

TEST(Handoff, WithoutTheCompanionOffersItsStorePage) {
  TestPhone phone;
  start(phone);
  captureTheScreen(phone);
  phone.runFor(2.9);
  EXPECT_FALSE(phone.shows("Install Tellvane"));
  phone.runFor(1);
  EXPECT_TRUE(items().empty());
  ASSERT_TRUE(phone.shows("Install Tellvane"));
  EXPECT_TRUE(phone.shows("Looks like you don't have Tellvane installed"));
  const auto alert = std::dynamic_pointer_cast<UIAlertController>(topViewController());
  ASSERT_TRUE(alert);
  EXPECT_EQ(UIAlertControllerStyle::alert, alert->preferredStyle());
  ASSERT_EQ(2u, alert->actions().size());
  EXPECT_EQ(UIAlertActionStyle::default_, alert->actions()[0]->style());
  EXPECT_EQ("Cancel", alert->actions()[1]->title());
  EXPECT_EQ(UIAlertActionStyle::destructive, alert->actions()[1]->style());
  EXPECT_TRUE(phone.tapText("Install"));
  phone.runFor(1);
  EXPECT_EQ(TLV_STORE_PAGE, UIApplication::sharedApplication()->front());
}

TEST(Handoff, CountsACoveredHostAsRedirected) {
  TestPhone phone;
  start(phone);
  captureTheScreen(phone);
  UIApplication::sharedApplication()->setCovered(true);
  phone.runFor(4);
  UIApplication::sharedApplication()->setCovered(false);
  phone.runFor(1);
  EXPECT_TRUE(items().empty());
  EXPECT_FALSE(phone.shows("Install Tellvane"));
}

TEST(Handoff, TwiceWithinThreeSecondsIsCheckedTwiceAndTheFirstCheckClearsTheSecondItem) {
  TestPhone phone;
  start(phone);
  Console console;
  const auto center = NSNotificationCenter::defaultCenter();
  center->postNotificationName(TLV_SCREEN_RECORD, nullptr, NSDictionary{{"assetId", "first"}});
  phone.runFor(2);
  // A host may post on any thread.
  dispatch_async(dispatch_queue_create("host"), [center] {
    center->postNotificationName(TLV_SCREEN_RECORD, nullptr, NSDictionary{{"assetId", "second"}});
  });
  phone.runFor(0);
  ASSERT_EQ(1u, items().size());
  EXPECT_NE(std::string::npos, readByPython(phone, *items()[0].at("TLVScreenVideoDetails")).find("second"));
  phone.runFor(1.1);
  EXPECT_TRUE(items().empty());
  EXPECT_EQ(1, console.count("<TLV Log> : Redirect to App Store"));
  phone.runFor(2);
  EXPECT_EQ(2, console.count("<TLV Log> : Redirect to App Store"));
  phone.runFor(1);  // the second one is still coming in
  for (const char* alert : {"second", "first"}) {
    EXPECT_TRUE(phone.shows("Install Tellvane")) << alert;
    EXPECT_TRUE(phone.tapText("Cancel")) << alert;
    phone.runFor(1);
  }
  EXPECT_FALSE(phone.shows("Install Tellvane"));
}

TEST(Handoff, WithNoScreenLeftStillClearsThePasteboard) {
  TestPhone phone;
  start(phone);
  captureTheScreen(phone);
  UIApplication::sharedApplication()->keyWindow()->setRootViewController(nullptr);
  phone.runFor(4);
  EXPECT_TRUE(items().empty());
  EXPECT_TRUE(phone.texts().empty());
}

// The companion would come in front of whatever the user went to.
TEST(Handoff, IsDroppedWhenTheUserLeavesWhileTheSheetCloses) {
  TestPhone phone;
  phone.installApplication(kCompanion, "tellvane", "true");
  start(phone);
  phone.device().input().shake();
  phone.runFor(1);
  ASSERT_TRUE(phone.tapText("Capture Screen"));
  UIApplication::sharedApplication()->moveToBackground("home");
  phone.runFor(5);
  EXPECT_EQ("home", UIApplication::sharedApplication()->front());
  EXPECT_EQ(0, UIPasteboard::generalPasteboard()->changeCount());
}

// The host must outlive a device that cannot be written: the hand-off fails, the alert still comes. What was handed
// over before is removed all the same.
TEST(Handoff, OnAFullDeviceKeepsTheHostAlive) {
  TestPhone phone;
  start(phone);
  captureTheScreen(phone);
  setDiskFault([](const std::string&, const std::filesystem::path&) { return ENOSPC; });
  phone.runFor(4);
  EXPECT_TRUE(items().empty());
  EXPECT_TRUE(phone.tapText("Cancel"));
  phone.runFor(1);
  Console console;
  phone.device().input().shake();
  phone.runFor(1);
  ASSERT_TRUE(phone.tapText("Capture Screen"));
  phone.runFor(5);
  EXPECT_TRUE(items().empty());
  EXPECT_TRUE(phone.shows("Install Tellvane"));
  setDiskFault(nullptr);
}

TEST(Handoff, WithoutAStoredImageCarriesTheRecordAlone) {
  TestPhone phone;
  Tellvane::instantiateSDK(true, false);
  const auto window = phone.show();
  window->setFrame(CGRectMake(0, 0, 0, 0));  // no size, no image
  phone.device().input().shake();
  phone.runFor(0.1);
  window->setFrame(CGRectMake(0, 0, 375, 667));
  phone.runFor(1);
  ASSERT_TRUE(phone.tapText("Capture Screen"));
  phone.runFor(1);
  ASSERT_EQ(1u, items().size());
  EXPECT_EQ(1u, items()[0].size());
  EXPECT_TRUE(items()[0].contains("dictionaryInApp"));
}
