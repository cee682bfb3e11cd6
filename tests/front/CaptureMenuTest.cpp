#include <gtest/gtest.h>

#include <random>

#include "Tellvane/TLVManager.h"
#include "Tellvane/Tellvane.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UINavigationController.h"
#include "UIKit/UIPasteboard.h"
#include "UIKit/UIPopoverPresentationController.h"
#include "front/ScreenName.h"
#include "media/CaptureScreenshot.h"
#include "recording/TLVCaptureScreenRecording.h"
#include "support/TestPhone.h"
#include "triggers/UIApplication+TopViewController.h"

using namespace tellvane;
using testing_support::Console;
using testing_support::TestPhone;

namespace Notes {
class ListViewController : public ios::UIViewController {};
}  // namespace Notes

namespace {

constexpr CGPoint kMiddle{180, 300};

std::shared_ptr<UIAlertController> sheetOnTop() {
  return std::dynamic_pointer_cast<UIAlertController>(topViewController());
}

std::shared_ptr<UIWindow> startWith(TestPhone& phone, std::shared_ptr<UIViewController> root) {
  auto window = phone.show(std::move(root));
  Tellvane::instantiateSDK(true, false);
  phone.runFor(2.5);
  return window;
}

}  // namespace

TEST(CaptureMenu, OffersThreeActionsOverAnImageTakenBefore) {
  TestPhone phone;
  startWith(phone,
            UINavigationController::withRootViewController(std::make_shared<Notes::ListViewController>()));
  Console console;
  phone.tap(kMiddle, 3);
  const auto image = CaptureScreenshot::shared()->getSavedScreenshot();
  ASSERT_TRUE(image);
  phone.runFor(1);
  const auto sheet = sheetOnTop();
  ASSERT_TRUE(sheet);
  EXPECT_EQ("Options", sheet->title());
  EXPECT_EQ(std::nullopt, sheet->message());
  EXPECT_EQ(UIAlertControllerStyle::actionSheet, sheet->preferredStyle());
  std::vector<std::pair<std::string, UIAlertActionStyle>> actions;
  for (const auto& action : sheet->actions()) actions.emplace_back(action->title(), action->style());
  EXPECT_EQ((std::vector<std::pair<std::string, UIAlertActionStyle>>{
                {"Capture Screen", UIAlertActionStyle::default_},
                {"Capture Screen Recording", UIAlertActionStyle::default_},
                {"Cancel", UIAlertActionStyle::cancel}}),
            actions);
  EXPECT_EQ("ListViewController", TLVManager::shared()->currentScreen());

  EXPECT_TRUE(phone.tapText("Cancel"));
  phone.runFor(5);
  EXPECT_FALSE(phone.shows("Options"));
  EXPECT_EQ(image, CaptureScreenshot::shared()->getSavedScreenshot());
  EXPECT_TRUE(UIPasteboard::generalPasteboard()->items().empty());
  EXPECT_EQ(console.text().find("<TLV Log>"), std::string::npos) << "choosing Cancel logs nothing";
}

TEST(CaptureMenu, RecordingChoiceStartsARecordingThatTheNextTriggerStops) {
  TestPhone phone;
  startWith(phone, nullptr);
  phone.device().input().shake();
  phone.runFor(1);
  Console console;
  EXPECT_TRUE(phone.tapText("Capture Screen Recording"));
  phone.runFor(1);
  EXPECT_EQ("<TLV Log> : Capture Screen recording selected\n<TLV Log> : Screen recording started\n",
            console.text());
  const auto image = CaptureScreenshot::shared()->getSavedScreenshot();
  phone.device().input().shake();
  phone.runFor(1);
  EXPECT_FALSE(phone.shows("Options"));
  EXPECT_EQ(image, CaptureScreenshot::shared()->getSavedScreenshot());
  EXPECT_EQ(1, console.count("<TLV Log> : Screen recording ended"));
}

TEST(CaptureMenu, WaitsForAScreenThatIsBeingClosed) {
  TestPhone phone;
  const auto root = std::make_shared<UIViewController>();
  startWith(phone, root);
  for (const bool inAContainer : {false, true}) {
    SCOPED_TRACE(inAContainer);
    std::shared_ptr<UIViewController> closing = std::make_shared<Notes::ListViewController>();
    if (inAContainer) closing = UINavigationController::withRootViewController(closing);
    root->presentViewController(closing, true);
    phone.runFor(1);
    root->dismissViewControllerAnimated(true);
    phone.device().input().shake();
    phone.runFor(0.1);
    const auto image = CaptureScreenshot::shared()->getSavedScreenshot();
    phone.device().input().shake();  // the sheet is on its way already
    phone.runFor(1);
    const auto sheet = sheetOnTop();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(root, sheet->presentingViewController());
    EXPECT_EQ(image, CaptureScreenshot::shared()->getSavedScreenshot());
    EXPECT_EQ("ListViewController", TLVManager::shared()->currentScreen()) << "the one that was seen";
    EXPECT_TRUE(phone.tapText("Cancel"));
    phone.runFor(1);
    EXPECT_FALSE(phone.shows("Options"));
  }
}

TEST(CaptureMenu, DoesNothingInProductionMode) {
  TestPhone phone;
  Console console;
  phone.show();
  Tellvane::instantiateSDK(false, false);
  phone.runFor(2.5);
  phone.tap(kMiddle, 3);
  phone.tap(kMiddle, 1, 3);
  phone.device().input().shake();
  phone.runFor(30);
  EXPECT_EQ("", console.text());
  EXPECT_TRUE(phone.texts().empty());
  EXPECT_EQ(nullptr, CaptureScreenshot::shared()->getSavedScreenshot());
}

TEST(CaptureMenu, WithoutAControllerKeepsTheImageAndShowsNothing) {
  TestPhone phone;
  Tellvane::instantiateSDK(true, false);
  const auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
  window->makeKeyAndVisible();
  phone.runFor(2.5);
  phone.tap(kMiddle, 3);
  phone.runFor(1);
  EXPECT_TRUE(CaptureScreenshot::shared()->getSavedScreenshot());
  EXPECT_EQ("App Screen", TLVManager::shared()->currentScreen());
  EXPECT_TRUE(phone.texts().empty());
}

TEST(CaptureMenu, ScreenNamesLoseTheModuleOfTheHost) {
  const struct {
    const char *description, *bundle, *name;
  } rows[] = {
      {"Notes.ListViewController", "Notes", "ListViewController"},
      {"UINavigationController", "Notes", "UINavigationController"},
      {"Notes.Inner.Screen", "Notes", "Inner.Screen"},
      {"Notes.Notes.Screen", "Notes", "Screen"},
      {"Other.Screen", "Notes", "Other.Screen"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.name, screenName(row.description, row.bundle));
}

TEST(CaptureMenu, SpeaksTheUsersLanguage) {
  TestPhone phone({.languages = {"de-AT"}});
  startWith(phone, nullptr);
  phone.device().input().shake();
  phone.runFor(1);
  for (const char* text : {"Optionen", "Bildschirm aufnehmen", "Abbrechen"})
    EXPECT_TRUE(phone.shows(text)) << text;
}

TEST(CaptureMenu, IsAPopoverWithoutArrowInTheMiddleOfAnIPad) {
  TestPhone phone({.profile = "iPad Air 2"});
  startWith(phone, nullptr);
  phone.device().input().shake();
  phone.runFor(1);
  const auto sheet = sheetOnTop();
  ASSERT_TRUE(sheet);
  const auto popover = sheet->popoverPresentationController();
  ASSERT_TRUE(popover);
  EXPECT_EQ(0u, popover->permittedArrowDirections);
  EXPECT_EQ(CGRectMake(384, 512, 0, 0), popover->sourceRect);
  EXPECT_TRUE(phone.tapText("Capture Screen"));
  phone.runFor(1);
  EXPECT_EQ(1u, UIPasteboard::generalPasteboard()->items().size());
}

// However triggers are mixed and timed, there is one sheet, and the image in it is of the screen without one.
TEST(CaptureMenu, AnyStormOfTriggersOpensOneSheet) {
  TestPhone phone;
  startWith(phone, nullptr);
  std::mt19937 random(20240607);
  for (int round = 0; round < 12; ++round) {
    Console console;
    const int count = 2 + static_cast<int>(random() % 8);
    for (int i = 0; i < count; ++i) {
      switch (random() % 3) {
        case 0:
          phone.tap(kMiddle, 3);
          break;
        case 1:
          phone.tap(kMiddle, 1, 3);
          break;
        default:
          phone.device().input().shake();
      }
      phone.runFor(static_cast<double>(random() % 500) / 1000);
    }
    phone.runFor(1);
    // Taps beside the sheet cancel it, so after a storm one sheet or none is up, and never two.
    int sheets = 0;
    for (const auto& text : phone.texts()) sheets += text == "Options";
    EXPECT_LE(sheets, 1) << "round " << round;
    if (sheetOnTop()) {
      EXPECT_FALSE(sheetOnTop()->presentedViewController());
      EXPECT_TRUE(phone.tapText("Cancel"));
    }
    phone.runFor(1);
    EXPECT_FALSE(phone.shows("Options")) << "round " << round;
  }
}

// A host may change windows under the sheet and keep the old one.
TEST(CaptureMenu, OpensOnANewWindowWhenTheOldOneWasPutAwayWithItsSheet) {
  TestPhone phone;
  const auto old = startWith(phone, nullptr);
  phone.tap(kMiddle, 3);
  phone.runFor(1);
  const auto first = sheetOnTop();
  ASSERT_TRUE(first);
  const auto next = phone.show();
  old->setHidden(true);
  phone.runFor(10);
  phone.tap(kMiddle, 3);
  phone.runFor(1);
  ASSERT_TRUE(sheetOnTop());
  EXPECT_NE(first, sheetOnTop());
  EXPECT_EQ(next, sheetOnTop()->view()->window());
}

// Only the sheet counts as the library's own screen: its alerts are captured as any screen is.
TEST(CaptureMenu, OpensOverTheLibrarysAlerts) {
  const struct {
    const char *choice, *title;
  } rows[] = {{"Capture Screen", "Install Tellvane"}, {"Capture Screen Recording", "Access to Photos"}};
  TestPhone phone;
  phone.device().setPermission("photos", Permission::denied);
  const auto root = std::make_shared<UIViewController>();
  startWith(phone, root);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    phone.device().input().shake();
    phone.runFor(1);
    EXPECT_TRUE(phone.tapText(row.choice));
    phone.runFor(1);
    if (TLVCaptureScreenRecording::shared()->isRecording()) phone.device().input().shake();
    phone.runFor(4);
    ASSERT_TRUE(phone.shows(row.title));
    const auto alert = sheetOnTop();
    const auto image = CaptureScreenshot::shared()->getSavedScreenshot();
    phone.device().input().shake();
    phone.runFor(1);
    ASSERT_TRUE(phone.shows("Options"));
    EXPECT_EQ(alert, sheetOnTop()->presentingViewController());
    EXPECT_NE(image, CaptureScreenshot::shared()->getSavedScreenshot());
    EXPECT_EQ("UIAlertController", TLVManager::shared()->currentScreen());
    root->dismissViewControllerAnimated(false);
    phone.runFor(1);
  }
}

TEST(CaptureMenu, OpensWhileTheHostIsMidAnimation) {
  TestPhone phone;
  const auto root = std::make_shared<UIViewController>();
  startWith(phone, root);
  const auto modal = std::make_shared<Notes::ListViewController>();
  root->presentViewController(modal, true);
  phone.runFor(0.1);
  phone.device().input().shake();
  phone.runFor(1);
  EXPECT_TRUE(CaptureScreenshot::shared()->getSavedScreenshot());
  EXPECT_TRUE(modal->presentingViewController()) << "the host's own transition went through";
  phone.device().input().shake();
  phone.runFor(1);
  EXPECT_TRUE(phone.shows("Options"));
}
