#include <gtest/gtest.h>

#include <vector>

#include "AVFoundation/AVAudioSession.h"
#include "Device/Device.h"
#include "Device/PermissionPrompt.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "platform/AVFoundation/Studio.h"

namespace ios {
namespace {

using namespace testing_support;
using namespace std::chrono_literals;

/// Answers as they arrive, each off the main thread.
class Answers {
 public:
  void ask(const std::string& service = "microphone") {
    requestPermission({service, ""}, [this](bool granted) { keep(granted); });
  }
  void askToRecord() {
    AVAudioSession::sharedInstance()->requestRecordPermission([this](bool granted) { keep(granted); });
  }
  std::vector<bool> got;

 private:
  void keep(bool granted) {
    EXPECT_FALSE(isMainThread());
    dispatch_async(dispatch_get_main_queue(), [this, granted] { got.push_back(granted); });
  }
};

/// A user who is shown questions and answers when the test says so.
struct User {
  std::vector<PermissionQuestion> questions;
  std::vector<std::function<void(bool)>> answers;
  User() {
    setPermissionPresenter([this](const PermissionQuestion& question, std::function<void(bool)> answer) {
      EXPECT_TRUE(isMainThread());
      questions.push_back(question);
      answers.push_back(std::move(answer));
    });
  }
};

using Got = std::vector<bool>;

TEST(RecordPermission, AnEarlierAnswerHoldsAndNobodyIsAsked) {
  Studio studio;
  User user;
  struct Row {
    Permission known;
    bool granted;
  };
  for (const Row& row : {Row{Permission::authorized, true}, Row{Permission::denied, false},
                         Row{Permission::restricted, false}}) {
    Device::current().setPermission("microphone", row.known);
    Answers answers;
    answers.askToRecord();
    Clock::shared().runUntilRest();
    EXPECT_EQ(answers.got, Got{row.granted});
    EXPECT_EQ(Device::current().permission("microphone"), row.known);
  }
  EXPECT_TRUE(user.questions.empty());
}

TEST(RecordPermission, WithoutAnybodyToAskTheAnswerIsNoForThisTime) {
  Studio studio;
  Answers answers;
  answers.askToRecord();
  Clock::shared().runUntilRest();
  EXPECT_EQ(answers.got, Got{false});
  EXPECT_EQ(Device::current().permission("microphone"), Permission::notDetermined);
}

TEST(RecordPermission, TheUserIsAskedOnceAndTheAnswerIsKept) {
  for (const bool granted : {true, false}) {
    static Studio studio;
    Device::current().setPermission("microphone", Permission::notDetermined);
    User user;
    Answers answers;
    answers.askToRecord();
    answers.askToRecord();
    Clock::shared().runFor(60s);  // thinking it over; time goes on meanwhile
    EXPECT_TRUE(answers.got.empty());
    ASSERT_EQ(user.questions.size(), 1u);
    EXPECT_EQ(user.questions[0].service, "microphone");
    dispatch_async(dispatch_queue_create("user"), [&] {
      user.answers[0](granted);
      user.answers[0](!granted);  // too late
    });
    Clock::shared().runUntilRest();
    EXPECT_EQ(answers.got, (Got{granted, granted}));
    EXPECT_EQ(Device::current().permission("microphone"),
              granted ? Permission::authorized : Permission::denied);
    answers.askToRecord();
    Clock::shared().runUntilRest();
    EXPECT_EQ(answers.got, (Got{granted, granted, granted}));
    EXPECT_EQ(user.questions.size(), 1u);
  }
}

TEST(RecordPermission, QuestionsComeOneAfterAnother) {
  Studio studio;
  User user;
  Answers answers;
  answers.ask("microphone");
  answers.ask("photos");
  answers.ask("camera");
  Clock::shared().runUntilRest();
  ASSERT_EQ(user.questions.size(), 1u);
  Device::current().setPermission("photos", Permission::denied);  // in the settings, meanwhile
  user.answers[0](true);
  Clock::shared().runUntilRest();
  EXPECT_EQ(answers.got, (Got{true, false}));
  ASSERT_EQ(user.questions.size(), 2u);
  EXPECT_EQ(user.questions[1].service, "camera");
}

}  // namespace
}  // namespace ios
