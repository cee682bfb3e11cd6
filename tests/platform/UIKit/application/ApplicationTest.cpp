#include <gtest/gtest.h>
#include <malloc.h>

#include "Foundation/NSNotificationCenter.h"
#include "UIKit/UIDevice.h"
#include "UIKit/UIScreen.h"
#include "platform/UIKit/Screen.h"

namespace ios {
namespace {

using testing_support::TestPhone;

/// Writes down what it is told, as a delegate and as an observer, and the state at that moment.
class Diary : public Subclass<Diary, UIApplicationDelegate> {
 public:
  static MethodList methods() { return {{"noticed:", &Diary::noticed}}; }
  bool applicationDidFinishLaunching(UIApplication& a) override { return note("launched", a), true; }
  void applicationDidBecomeActive(UIApplication& a) override { note("active", a); }
  void applicationWillResignActive(UIApplication& a) override { note("resign", a); }
  void applicationDidEnterBackground(UIApplication& a) override { note("background", a); }
  void applicationWillEnterForeground(UIApplication& a) override { note("foreground", a); }
  void applicationWillTerminate(UIApplication& a) override { note("terminate", a); }
  bool applicationOpenURL(UIApplication& a, const NSURL& url) override {
    return note("open " + url.absoluteString(), a), true;
  }
  void observe(const std::shared_ptr<Diary>& self) {
    NSNotificationCenter::defaultCenter()->addObserver(self, "noticed:", std::nullopt, nullptr);
  }
  std::vector<std::string> lines;
  std::vector<std::string> take() { return std::exchange(lines, {}); }

 private:
  void noticed(const std::shared_ptr<NSNotification>& notification) {
    note(notification->name(), *UIApplication::sharedApplication());
  }
  void note(const std::string& what, const UIApplication& application) {
    constexpr const char* kStates[] = {"active", "inactive", "background"};
    lines.push_back(what + " (" + kStates[static_cast<int>(application.applicationState())] + ")");
  }
};

using Lines = std::vector<std::string>;

const Lines kLeaving = {"resign (active)", "UIApplicationWillResignActiveNotification (active)",
                        "background (background)",
                        "UIApplicationDidEnterBackgroundNotification (background)"};
const Lines kComing = {"foreground (background)", "UIApplicationWillEnterForegroundNotification (background)",
                       "active (active)", "UIApplicationDidBecomeActiveNotification (active)"};

struct Started {
  TestPhone phone{{.launched = false}};
  std::shared_ptr<UIApplication> application = UIApplication::sharedApplication();
  std::shared_ptr<Diary> diary = std::make_shared<Diary>();
  Started() {
    diary->observe(diary);
    application->launch(diary);
  }
  bool open(const std::string& url) const { return application->openURL(*NSURL::URLWithString(url)); }
};

TEST(Application, TellsItsLifeInThePlatformsOrder) {
  Started s;
  EXPECT_EQ(
      (Lines{"launched (inactive)", "active (active)", "UIApplicationDidBecomeActiveNotification (active)"}),
      s.diary->take());
  s.application->moveToBackground("home");
  EXPECT_EQ(kLeaving, s.diary->take());
  s.application->moveToBackground("elsewhere");
  EXPECT_EQ(Lines{}, s.diary->take()) << "it is there already";
  EXPECT_EQ("elsewhere", s.application->front());
  s.application->moveToForeground();
  s.application->moveToForeground();
  EXPECT_EQ(kComing, s.diary->take());
  EXPECT_EQ("com.example.host", s.application->front());

  s.application->setCovered(true);
  EXPECT_EQ((Lines{kLeaving.begin(), kLeaving.begin() + 2}), s.diary->take());
  EXPECT_EQ(UIApplicationState::inactive, s.application->applicationState());
  s.application->setCovered(false);
  EXPECT_EQ((Lines{kComing.begin() + 2, kComing.end()}), s.diary->take());
  s.application->terminate();
  s.application->terminate();
  EXPECT_EQ((Lines{"terminate (active)", "UIApplicationWillTerminateNotification (active)"}),
            s.diary->take());
}

TEST(Application, OpensAnotherApplicationAfterItHasGoneToTheBackground) {
  Started s;
  const auto proof = s.phone.folder() / "opened";
  s.phone.installApplication("com.example.other", "Other",
                             "printf %s \"$IOS_OPEN_URL\" > '" + proof.string() + "'");
  s.diary->take();
  EXPECT_TRUE(s.open("other:report?x=1")) << "schemes ignore case";
  EXPECT_EQ(UIApplicationState::active, s.application->applicationState()) << "the call returns first";
  EXPECT_EQ(Lines{}, s.diary->take());
  Clock::shared().runUntilRest();
  EXPECT_EQ(kLeaving, s.diary->take());
  EXPECT_EQ("com.example.other", s.application->front());
  EXPECT_EQ("other:report?x=1", testing_support::outputOf("cat '" + proof.string() + "'"));
}

TEST(Application, ComesBackWithAPlainLineWhenTheOtherDoesNotStart) {
  Started s;
  s.phone.installApplication("com.example.other", "Other", "exit 0");
  std::filesystem::remove(s.phone.folder() / "Applications/com.example.other/run");
  s.diary->take();
  testing::internal::CaptureStderr();
  EXPECT_TRUE(s.open("Other:"));
  Clock::shared().runUntilRest();
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, said.find("com.example.other")) << said;
  Lines expected = kLeaving;
  expected.insert(expected.end(), kComing.begin(), kComing.end());
  EXPECT_EQ(expected, s.diary->take());
}

TEST(Application, OpensPagesSettingsAndItselfAndNothingElse) {
  Started s;
  struct Row {
    const char* url;
    bool opens;
    const char* front;
  };
  for (const Row& row :
       {Row{"https://store.example/app/x", true, "https://store.example/app/x"},
        Row{"HTTP://store.example/", true, "HTTP://store.example/"}, Row{"app-settings:", true, "settings"},
        Row{"unknown:thing", false, "com.example.host"}, Row{"/just/a/path", false, "com.example.host"}}) {
    SCOPED_TRACE(row.url);
    EXPECT_EQ(row.opens, s.application->canOpenURL(*NSURL::URLWithString(row.url)));
    EXPECT_EQ(row.opens, s.open(row.url));
    Clock::shared().runUntilRest();
    EXPECT_EQ(row.front, s.application->front());
    EXPECT_EQ(row.opens, s.application->applicationState() == UIApplicationState::background);
    s.application->moveToForeground();
  }
}

Lines heard;

void shaken(UIWindow& window, UIEventSubtype motion, const std::shared_ptr<UIEvent>& event) {
  heard.push_back(
      "window " + std::to_string(static_cast<int>(window.windowLevel())) +
      (motion == UIEventSubtype::motionShake && event && event->type() == UIEventType::motion ? "" : "?"));
  sendSuper(window, UIWindow::classObject(), "motionEnded:withEvent:", motion, event);
}
const Category kShake{UIWindow::classObject(), {{"motionEnded:withEvent:", &shaken}}};

/// A host's own window class; its operation comes before what extends every window.
class HostWindow : public Subclass<HostWindow, UIWindow> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {{"motionBegan:withEvent:", &HostWindow::began}}; }

 private:
  void began(UIEventSubtype, const std::shared_ptr<UIEvent>&) { heard.push_back("began"); }
};

TEST(Application, AShakeGoesToTheKeyWindowElseToAnyVisibleOne) {
  Started s;
  const auto shake = [&] {
    s.phone.device().input().shake();
    return std::exchange(heard, {});
  };
  EXPECT_EQ(Lines{}, shake()) << "no window at all";
  const auto back = s.phone.show();
  auto front = std::make_shared<HostWindow>(back->frame());
  front->setWindowLevel(1);
  front->makeKeyAndVisible();
  EXPECT_EQ((Lines{"began", "window 1"}), shake());
  back->makeKeyAndVisible();
  EXPECT_EQ(Lines{"window 0"}, shake()) << "key, though behind";
  back->setHidden(true);
  EXPECT_EQ(front, s.application->keyWindow());
  front.reset();
  EXPECT_EQ(nullptr, s.application->keyWindow());
  EXPECT_EQ(Lines{}, shake());
  back->setHidden(false);
  EXPECT_EQ(nullptr, s.application->keyWindow()) << "shown, but nobody made it key";
  EXPECT_EQ(Lines{"window 0"}, shake());
  s.application->moveToBackground("home");
  EXPECT_EQ(Lines{}, shake());
}

TEST(Application, TurningTheDeviceTurnsTheWindowsThatFillTheScreen) {
  Started s;
  const auto full = s.phone.show();
  const auto small = std::make_shared<UIWindow>(CGRectMake(0, 0, 100, 100));
  small->makeKeyAndVisible();
  s.diary->take();
  const auto turn = [&](int orientation) {
    s.phone.device().changeSettings([&](DeviceSettings& settings) { settings.orientation = orientation; });
    return s.diary->take();
  };
  EXPECT_EQ(Lines{"UIDeviceOrientationDidChangeNotification (active)"}, turn(3));
  EXPECT_EQ(CGRectMake(0, 0, 667, 375), UIScreen::mainScreen()->bounds());
  EXPECT_EQ(UIScreen::mainScreen()->bounds(), full->frame());
  EXPECT_EQ(UIScreen::mainScreen()->bounds(), full->rootViewController()->view()->frame());
  EXPECT_EQ(CGRectMake(0, 0, 100, 100), small->frame());
  EXPECT_EQ(UIDeviceOrientation::landscapeLeft, UIDevice::currentDevice()->orientation());
  EXPECT_EQ((CGSize{667, 375}), s.application->displayImage()->size());
  EXPECT_EQ(Lines{}, turn(3));
}

// Reinstalled recognisers, unfinished taps and display reads must not make the heap grow.
TEST(Application, AnHourOfIdlingLeavesTheHeapAsItWas) {
  TestPhone phone;
  const auto window = phone.show();
  const auto listener = std::make_shared<Listener>();
  std::shared_ptr<UITapGestureRecognizer> triple;
  const auto minutes = [&](int count) {
    for (int i = 0; i < count * 6; ++i) {
      if (triple) window->removeGestureRecognizer(triple);
      triple = addTap(window, listener, 3);
      phone.tap({100, 300}, 2);
      phone.runFor(10);
      if (i % 6 == 0) UIApplication::sharedApplication()->displayImage();
    }
    return mallinfo2().uordblks;
  };
  minutes(10);
  const auto before = minutes(1);
  EXPECT_LE(minutes(60), before + 4096);
  EXPECT_EQ(0, listener->count);
}

}  // namespace
}  // namespace ios
