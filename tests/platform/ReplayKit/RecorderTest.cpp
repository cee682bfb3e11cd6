#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <cerrno>
#include <fstream>
#include <optional>

#include "AVFoundation/CodecFault.h"
#include "Device/Files.h"
#include "UIKit/UIAlertController.h"
#include "platform/ReplayKit/RecordedPhone.h"
#include "support/ScratchFolder.h"

namespace ios {
namespace {

using testing_support::Colour;
using testing_support::MovieProbe;
using testing_support::RecordedPhone;

/// Fails every call of one operation, from the `after`-th on.
std::function<int(const std::string&)> failing(std::string operation, int code, int after = 0) {
  return [operation = std::move(operation), code, count = std::make_shared<std::atomic<int>>(-after)](
             const std::string& asked) { return asked == operation && (*count)++ >= 0 ? code : 0; };
}
std::function<int(const std::string&, const std::filesystem::path&)> fullDisk() {
  return [](const std::string& operation, const std::filesystem::path&) {
    return operation == "write" || operation == "create" ? ENOSPC : 0;
  };
}
void healAll() {
  setCodecFault(nullptr);
  setDiskFault(nullptr);
}

/// What an interrupted recorder reported.
class Listener : public NSObject, public RPScreenRecorderDelegate {
 public:
  void screenRecorderDidStopRecordingWithError(
      const std::shared_ptr<RPScreenRecorder>&, const std::shared_ptr<NSError>& error,
      const std::shared_ptr<RPPreviewViewController>& previewViewController) override {
    EXPECT_FALSE(isMainThread());
    ends.push_back({previewViewController, error, 1});
  }
  std::vector<RecordedPhone::End> ends;
};

TEST(SystemRecorder, RecordsWhatTheDisplayShowsWithItsAlertsAndTheMicrophone) {
  RecordedPhone phone;
  phone.device().setPermission("microphone", Permission::authorized);
  Microphone::shared().setSound(Microphone::Tone{500});
  ASSERT_FALSE(phone.start(true));
  EXPECT_TRUE(phone.recorder()->isRecording());
  phone.runFor(1);
  phone.paint(0, 0, 1);
  phone.runFor(1);
  phone.window->rootViewController()->presentViewController(
      UIAlertController::alertControllerWithTitle("Hello", std::nullopt, UIAlertControllerStyle::alert),
      true);
  phone.runFor(1);
  const auto end = phone.stop();
  ASSERT_FALSE(end.error);
  phone.window->rootViewController()->dismissViewControllerAnimated(false);
  phone.runFor(1);
  phone.tapOnPreview(end.preview, {"Save"});

  const MovieProbe movie(phone.savedMovie());
  EXPECT_EQ("h264", movie.fact('v', "codec_name"));
  EXPECT_EQ("aac", movie.fact('a', "codec_name"));
  const auto times = movie.times('v');
  EXPECT_NEAR(91, times.size(), 2);
  EXPECT_EQ(0, times.front());
  EXPECT_NEAR(3, times.back(), 0.05);
  EXPECT_NEAR(3, movie.number('a', "duration"), 0.05);
  const auto sound = movie.sound();
  EXPECT_NEAR(0, testing_support::onset(sound), 0.03);
  EXPECT_NEAR(500, testing_support::frequency(sound, 0.5, 2.5), 3);
  const auto pictures = movie.pictures();
  ASSERT_EQ(times.size(), pictures.size());
  EXPECT_EQ(750u, pictures[0].width);
  EXPECT_EQ(1334u, pictures[0].height);
  const Colour red{255, 0, 0}, blue{0, 0, 255}, white{255, 255, 255};
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    if (std::abs(times[i] - 1) < 0.05) continue;
    const Colour corner = pictures[i].at(60, 1000);
    EXPECT_LT(corner.distance(times[i] < 1 ? red : blue), times[i] < 2 ? 12 : 200) << times[i];
  }
  EXPECT_LT(pictures.back().at(375, 640).distance(white), 60) << "the alert's panel";
}

TEST(SystemRecorder, FitsWhatIsShownSidewaysIntoTheSizeItBeganWith) {
  RecordedPhone phone;
  ASSERT_FALSE(phone.start());
  phone.runFor(0.5);
  phone.device().changeSettings([](DeviceSettings& settings) { settings.orientation = 3; });
  phone.runFor(1);
  const auto end = phone.stop();
  ASSERT_FALSE(end.error);
  phone.tapOnPreview(end.preview, {"Save"});
  const auto last = MovieProbe(phone.savedMovie()).pictures().back();
  EXPECT_EQ(750u, last.width);
  EXPECT_EQ(1334u, last.height);
  EXPECT_LT(last.at(375, 100).distance({0, 0, 0}), 12);
  EXPECT_LT(last.at(375, 1200).distance({0, 0, 0}), 12);
  EXPECT_LT(last.at(60, 667).distance({255, 0, 0}), 12);
  EXPECT_LT(last.at(690, 667).distance({255, 0, 0}), 12);
}

struct Refusal {
  const char* name;
  std::function<void(RecordedPhone&)> arrange;
  long code;
  bool available = true;
};
void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.name;
}

class RefusedStart : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedStart, SaysWhyAndLeavesTheRecorderUsable) {
  RecordedPhone phone;
  GetParam().arrange(phone);
  const auto error = phone.start();
  ASSERT_TRUE(error);
  EXPECT_EQ(RPRecordingErrorDomain, error->domain());
  EXPECT_EQ(GetParam().code, error->code());
  EXPECT_NE("", error->localizedDescription());
  EXPECT_EQ(GetParam().available, phone.recorder()->isAvailable());
  EXPECT_EQ(GetParam().code == RPRecordingErrorAttemptToStartInRecordingState,
            phone.recorder()->isRecording());

  healAll();
  phone.device().setPermission("screen", Permission::authorized);
  UIApplication::sharedApplication()->moveToForeground();
  if (!phone.recorder()->isRecording()) {
    EXPECT_FALSE(phone.start());
  }
  EXPECT_TRUE(phone.stop().preview);
}

INSTANTIATE_TEST_SUITE_P(
    , RefusedStart,
    testing::Values(
        Refusal{"Declined",
                [](RecordedPhone& phone) { phone.device().setPermission("screen", Permission::denied); },
                RPRecordingErrorUserDeclined},
        Refusal{"Disabled",
                [](RecordedPhone& phone) { phone.device().setPermission("screen", Permission::restricted); },
                RPRecordingErrorDisabled, false},
        Refusal{"Recording", [](RecordedPhone& phone) { ASSERT_FALSE(phone.start()); },
                RPRecordingErrorAttemptToStartInRecordingState},
        Refusal{"Background",
                [](RecordedPhone&) { UIApplication::sharedApplication()->moveToBackground("home"); },
                RPRecordingErrorFailedToStart},
        Refusal{"NoEncoder", [](RecordedPhone&) { setCodecFault(failing("open the video encoder", EINVAL)); },
                RPRecordingErrorFailedToStart},
        Refusal{"FullDisk", [](RecordedPhone&) { setDiskFault(fullDisk()); },
                RPRecordingErrorInsufficientStorage}),
    [](const auto& info) { return info.param.name; });

TEST(SystemRecorder, AsksTheUserOnceAndRefusesASecondStartMeanwhile) {
  RecordedPhone phone;
  phone.device().setPermission("screen", Permission::notDetermined);
  UIApplication::sharedApplication()->showPermissionAlerts();
  std::vector<long> codes;
  const auto start = [&] {
    phone.recorder()->startRecordingWithMicrophoneEnabled(
        false, [&](const auto& error) { codes.push_back(error ? error->code() : 0); });
    phone.runFor(1);
  };
  start();
  EXPECT_TRUE(phone.shows("\"My Notes\" Would Like to Record the Screen"));
  EXPECT_FALSE(phone.recorder()->isRecording());
  start();
  EXPECT_EQ((std::vector<long>{RPRecordingErrorAttemptToStartInRecordingState}), codes);
  EXPECT_TRUE(phone.tapText("OK"));
  phone.runFor(1);
  EXPECT_EQ(0, codes.back());
  EXPECT_TRUE(phone.recorder()->isRecording());
  phone.stop();
  start();
  EXPECT_FALSE(phone.shows("OK")) << "asked again";
  EXPECT_TRUE(phone.recorder()->isRecording());
}

TEST(SystemRecorder, HasNothingToStopWhenNothingRecords) {
  RecordedPhone phone;
  const auto end = phone.stop();
  EXPECT_FALSE(end.preview);
  ASSERT_TRUE(end.error);
  EXPECT_EQ(RPRecordingErrorAttemptToStopNonRecording, end.error->code());
}

struct Interruption {
  const char* name;
  std::function<void()> strike;
  long code;
  std::optional<double> left;  // seconds of movie
};
void PrintTo(const Interruption& interruption, std::ostream* out) {
  *out << interruption.name;
}

class InterruptedRecording : public testing::TestWithParam<Interruption> {};

TEST_P(InterruptedRecording, ReachesTheDelegateWithAPreviewOfThePartialMovie) {
  RecordedPhone phone;
  const auto listener = std::make_shared<Listener>();
  phone.recorder()->setDelegate(listener);
  ASSERT_FALSE(phone.start());
  for (int step = 0; step < 40; ++step) {  // pictures to encode
    phone.paint(step % 2, 0.5, 0);
    phone.runFor(0.05);
  }
  GetParam().strike();
  for (int step = 0; step < 40; ++step) {
    phone.paint(0, step % 2, 0.5);
    phone.runFor(0.05);
  }
  healAll();
  ASSERT_EQ(1u, listener->ends.size());
  EXPECT_FALSE(phone.recorder()->isRecording());
  ASSERT_TRUE(listener->ends[0].error);
  EXPECT_EQ(RPRecordingErrorDomain, listener->ends[0].error->domain());
  EXPECT_EQ(GetParam().code, listener->ends[0].error->code());
  EXPECT_EQ((std::vector<std::string>{}), RecordedPhone::namesOfRecordings(phone.folder()));
  UIApplication::sharedApplication()->moveToForeground();
  phone.runFor(1);
  ASSERT_EQ(GetParam().left.has_value(), listener->ends[0].preview != nullptr);
  if (GetParam().left) {
    phone.tapOnPreview(listener->ends[0].preview, {"Save"});
    const MovieProbe movie(phone.savedMovie());
    EXPECT_NEAR(*GetParam().left, movie.times('v').back(), 0.15);
    EXPECT_EQ(movie.times('v').size(), movie.pictures().size());
  }
  EXPECT_FALSE(phone.start());
  EXPECT_TRUE(phone.stop().preview);
}

INSTANTIATE_TEST_SUITE_P(
    , InterruptedRecording,
    testing::Values(
        Interruption{"Background", [] { UIApplication::sharedApplication()->moveToBackground("home"); },
                     RPRecordingErrorInterrupted, 2.0},
        Interruption{"Encoder", [] { setCodecFault(failing("encode a picture", EIO, 15)); },
                     RPRecordingErrorFailed, 2.5},
        // Encoded media are assembled into a movie at the end, and there is no room for that either.
        Interruption{"FullDisk", [] { setDiskFault(fullDisk()); }, RPRecordingErrorInsufficientStorage,
                     std::nullopt}),
    [](const auto& info) { return info.param.name; });

TEST(SystemRecorder, LeavesNothingWhenTheProcessIsKilled) {
  constexpr const char* kNote = "RECORDER_TEST_NOTE";
  const testing_support::ScratchFolder folder;
  // The child runs this test from its beginning, in the parent's environment.
  setenv(kNote, (folder.path() / "device").c_str(), 0);
  const std::filesystem::path note = getenv(kNote);
  EXPECT_EXIT(
      {
        RecordedPhone phone;
        phone.start();
        phone.runFor(1);
        const auto first = phone.stop();
        phone.start();
        phone.runFor(1);
        std::ofstream(note) << phone.folder().string() << "\n" << (first.preview && !phone.start() ? 0 : 1);
        raise(SIGKILL);
      },
      testing::KilledBySignal(SIGKILL), "");
  std::ifstream stream(note);
  std::string device;
  int recording = 0;
  stream >> device >> recording;
  EXPECT_EQ(1, recording) << "a movie was previewed and another recorded";
  EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(device) / "ReplayKit"));
  EXPECT_EQ((std::vector<std::string>{}), RecordedPhone::namesOfRecordings(device));
  std::filesystem::remove_all(device);
}

TEST(SystemRecorder, RemovesTheLeftoversOfAProcessKilledWhileItCompletedAMovie) {
  RecordedPhone phone;
  const auto folder = phone.folder() / "ReplayKit";
  std::filesystem::create_directory(folder);
  std::ofstream(folder / ".Recording.mov.99999999.1.tmp") << "half a movie";
  EXPECT_FALSE(phone.recorder()->isRecording());
  EXPECT_EQ((std::vector<std::string>{}), RecordedPhone::namesOfRecordings(phone.folder()));
}

}  // namespace
}  // namespace ios
