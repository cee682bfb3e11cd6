#include "AVFoundation/AVAudioSession.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSNotificationCenter.h"
#include "Photos/PHPhotoLibrary.h"
#include "UIKit/UIControl.h"
#include "platform/UIKit/Support.h"

namespace controllers_test {
namespace {

/// The life of the application, and what came of the questions, in order.
class Witness : public Subclass<Witness, NSObject> {
 public:
  static MethodList methods() { return {{"note:", &Witness::note}, {"tapped", &Witness::tapped}}; }
  void watch() {
    for (const auto& name :
         {UIApplicationWillResignActiveNotification, UIApplicationDidBecomeActiveNotification})
      NSNotificationCenter::defaultCenter()->addObserver(shared_from_this(), "note:", name, nullptr);
  }
  void note(const std::shared_ptr<NSNotification>& notification) {
    const bool active = notification->name() == UIApplicationDidBecomeActiveNotification;
    journal->push_back(active ? "active" : "resigns");
  }
  void tapped() { journal->push_back("tapped"); }
  void askForPhotos() {
    PHPhotoLibrary::requestAuthorization([journal = journal](PHAuthorizationStatus status) {
      EXPECT_FALSE(isMainThread());
      dispatch_async(dispatch_get_main_queue(), [journal, status] {
        journal->push_back("photos " + std::to_string(static_cast<long>(status)));
      });
    });
  }
  void askForTheMicrophone() {
    AVAudioSession::sharedInstance()->requestRecordPermission([journal = journal](bool granted) {
      dispatch_async(dispatch_get_main_queue(),
                     [journal, granted] { journal->push_back(granted ? "may record" : "may not record"); });
    });
  }
  Journal journal = std::make_shared<std::vector<std::string>>();
};

/// A phone whose application is asked for by alerts, with a button over the whole screen.
struct Asking : TestPhone {
  Asking()
      : TestPhone({.info = {{"CFBundleName", "Notes"},
                            {"CFBundleDisplayName", "My Notes"},
                            {"NSPhotoLibraryUsageDescription", "Recordings are kept there."},
                            {"NSMicrophoneUsageDescription", "Recordings have sound."}}}) {
    application().showPermissionAlerts();
    root = plain();
    window = show(root);
    const auto button = std::make_shared<UIControl>();
    button->setFrame(window->bounds());
    button->addTarget(witness, "tapped", UIControlEventTouchUpInside);
    root->view()->addSubview(button);
    witness->watch();
  }
  UIApplication& application() const { return *UIApplication::sharedApplication(); }

  std::shared_ptr<Witness> witness = std::make_shared<Witness>();
  Controller root;
  std::shared_ptr<UIWindow> window;
};

TEST(PermissionAlert, AsksOverTheApplicationAndKeepsTheAnswer) {
  Asking phone;
  const struct {
    const char* service;
    void (Witness::*ask)();
    const char *title, *reason, *button, *told;
    Permission kept;
  } rows[] = {
      {"photos", &Witness::askForPhotos, "\"My Notes\" Would Like to Access Your Photos",
       "Recordings are kept there.", "OK", "photos 3", Permission::authorized},
      {"photos", &Witness::askForPhotos, "\"My Notes\" Would Like to Access Your Photos",
       "Recordings are kept there.", "Don't Allow", "photos 2", Permission::denied},
      {"microphone", &Witness::askForTheMicrophone, "\"My Notes\" Would Like to Access the Microphone",
       "Recordings have sound.", "OK", "may record", Permission::authorized},
      {"microphone", &Witness::askForTheMicrophone, "\"My Notes\" Would Like to Access the Microphone",
       "Recordings have sound.", "Don't Allow", "may not record", Permission::denied},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.title) + " " + row.button);
    phone.device().setPermission(row.service, Permission::notDetermined);
    const auto before = phone.application().displayImage();
    (phone.witness.get()->*row.ask)();
    phone.runFor(1);
    EXPECT_EQ("resigns", taken(phone.witness->journal));
    EXPECT_EQ(UIApplicationState::inactive, phone.application().applicationState());
    EXPECT_TRUE(phone.shows(row.title));
    EXPECT_TRUE(phone.shows(row.reason));
    EXPECT_NE(before, phone.application().displayImage());

    // The application does not know of it, and gets nothing.
    EXPECT_EQ(std::vector{phone.window}, phone.application().windows());
    EXPECT_EQ(phone.window, phone.application().keyWindow());
    EXPECT_EQ(nullptr, phone.root->presentedViewController());
    phone.tap({20, 40});
    phone.runFor(30);
    EXPECT_EQ("", taken(phone.witness->journal));

    ASSERT_TRUE(phone.tapText(row.button));
    phone.runFor(1);
    EXPECT_EQ(std::string("active, ") + row.told, taken(phone.witness->journal));
    EXPECT_EQ(row.kept, phone.device().permission(row.service));
    EXPECT_FALSE(phone.shows(row.title));
    phone.tap({20, 40});
    phone.runFor(1);
    EXPECT_EQ("tapped", taken(phone.witness->journal));

    (phone.witness.get()->*row.ask)();
    phone.runFor(1);
    EXPECT_EQ(row.told, taken(phone.witness->journal)) << "nobody is asked twice";
  }
}

TEST(PermissionAlert, OneQuestionFollowsTheOtherWithTheApplicationInactiveThroughout) {
  Asking phone;
  phone.witness->askForPhotos();
  phone.witness->askForTheMicrophone();
  phone.witness->askForPhotos();
  phone.runFor(1);
  ASSERT_TRUE(phone.tapText("OK"));
  phone.runFor(1);
  EXPECT_TRUE(phone.shows("Recordings have sound."));
  EXPECT_EQ("resigns, photos 3, photos 3", taken(phone.witness->journal));
  ASSERT_TRUE(phone.tapText("Don't Allow"));
  phone.runFor(1);
  EXPECT_EQ("active, may not record", taken(phone.witness->journal));
}

TEST(PermissionAlert, NoTouchReachesAnApplicationThatTheSystemCoversOtherwise) {
  Asking phone;
  phone.application().setCovered(true);
  taken(phone.witness->journal);
  phone.tap({20, 40});
  phone.runFor(1);
  EXPECT_EQ("", taken(phone.witness->journal));
}

TEST(PermissionAlert, SpeaksTheLanguageOfTheUser) {
  const struct {
    const char *language, *title, *refusal;
  } rows[] = {{"de-AT", "„My Notes“ möchte auf deine Fotos zugreifen", "Nicht erlauben"},
              {"pt-BR", "\"My Notes\" Deseja Acessar Suas Fotos", "Não Permitir"},
              {"ja", "“My Notes”が写真へのアクセスを求めています", "許可しない"},
              {"nb-NO", "\"My Notes\" Would Like to Access Your Photos", "Don't Allow"}};
  Asking phone;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.language);
    phone.device().changeSettings([&](DeviceSettings& settings) { settings.languages = {row.language}; });
    phone.device().setPermission("photos", Permission::notDetermined);
    phone.witness->askForPhotos();
    phone.runFor(1);
    EXPECT_TRUE(phone.shows(row.title));
    EXPECT_TRUE(phone.tapText(row.refusal));
    phone.runFor(1);
  }
}

TEST(PermissionAlert, StaysUpWhileTheUserIsElsewhere) {
  Asking phone;
  phone.application().moveToBackground("home");
  phone.witness->askForPhotos();
  phone.runFor(1);
  phone.application().moveToForeground();
  phone.runFor(1);
  EXPECT_EQ(UIApplicationState::inactive, phone.application().applicationState());
  phone.application().moveToBackground("home");
  phone.application().moveToForeground();
  ASSERT_TRUE(phone.tapText("OK"));
  phone.runFor(1);
  EXPECT_EQ(UIApplicationState::active, phone.application().applicationState());
  EXPECT_EQ(Permission::authorized, phone.device().permission("photos"));
}

}  // namespace
}  // namespace controllers_test
