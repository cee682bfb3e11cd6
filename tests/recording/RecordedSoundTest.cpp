#include <gtest/gtest.h>

#include "AVFoundation/AVCaptureOutput.h"
#include "AVFoundation/Microphone.h"
#include "CoreMedia/CMSampleBuffer.h"
#include "DeviceClock/Clock.h"
#include "RecordingPhone.h"

namespace tellvane {
namespace {

using namespace testing_support;
using namespace std::chrono_literals;

constexpr double kHertz = 700;

RecordingPhone::Options withMicrophone() {
  Microphone::shared().setSound(Microphone::Tone{.hertz = kHertz});
  return {.microphone = true};
}

TEST(RecordedSound, BeginsWithThePicture) {
  RecordingPhone phone(withMicrophone());
  Console console;
  ASSERT_TRUE(phone.start());
  phone.runFor(2);
  EXPECT_EQ(1, phone.stop());
  const auto next = Clock::shared().nextEvent();
  EXPECT_TRUE(!next || *next > Clock::shared().now() + 1s) << "the microphone is still on";
  EXPECT_EQ(console.text().find("<TLV Log> : Device : "), 0u) << console.text();

  const MovieProbe movie = phone.movie();
  EXPECT_EQ("aac", movie.fact('a', "codec_name"));
  const auto pictures = movie.times('v');
  ASSERT_FALSE(pictures.empty());
  EXPECT_EQ(0, pictures.front()) << "the writer's time begins with the sound's first buffer";
  EXPECT_NEAR(60, pictures.size(), 1);
  const auto sound = movie.sound();
  EXPECT_NEAR(2, sound.size() / 44100.0, 0.1);
  EXPECT_LT(onset(sound), 0.05);
  EXPECT_NEAR(kHertz, frequency(sound, 0.2, 1.8), 5);
}

// Sound is not retimed: after a pause it is longer than the picture.
TEST(RecordedSound, GoesOnThroughAPause) {
  RecordingPhone phone(withMicrophone());
  ASSERT_TRUE(phone.start());
  phone.runFor(1);
  send(*phone.recorder(), "handleAppBecameInActive");
  phone.runFor(1.5);
  send(*phone.recorder(), "handleAppBecameActive");
  phone.runFor(1);
  EXPECT_EQ(1, phone.stop());
  const MovieProbe movie = phone.movie();
  EXPECT_NEAR(2, movie.times('v').back(), 0.1);
  const auto sound = movie.sound();
  EXPECT_NEAR(3.5, sound.size() / 44100.0, 0.1);
  EXPECT_NEAR(kHertz, frequency(sound, 0.2, 3.3), 5);
}

TEST(RecordedSound, ThatComesLateLeavesAPlayableMovie) {
  RecordingPhone phone(withMicrophone());
  Microphone::shared().setDelay(500ms);
  ASSERT_TRUE(phone.start());
  const double arrival = phone.now() + 0.5;
  phone.runFor(2);
  EXPECT_EQ(1, phone.stop());
  ASSERT_TRUE(phone.savedAs());
  const auto times = phone.movie().times('v');
  ASSERT_NEAR(60, times.size(), 1);
  EXPECT_EQ(0, times.front()) << "timed from zero until the sound has come";
  EXPECT_NEAR(arrival + 2, times.back(), 0.1) << "and from the sound's time afterwards";
  for (std::size_t i = 1; i < times.size(); ++i) EXPECT_LT(times[i - 1], times[i]) << i;
}

struct Obstacle {
  const char* name;
  Permission permission;
  std::function<void()> arrange;
  const char* line;
};

class RecordingWithoutSound : public testing::TestWithParam<Obstacle> {};

TEST_P(RecordingWithoutSound, HasItsPicture) {
  auto options = withMicrophone();
  options.microphonePermission = GetParam().permission;
  RecordingPhone phone(options);
  if (GetParam().arrange) GetParam().arrange();
  Console console;
  ASSERT_TRUE(phone.start());
  phone.runFor(1);
  EXPECT_EQ(1, phone.stop());
  EXPECT_NE((console.text() + "\n").find(GetParam().line), std::string::npos) << console.text();
  const MovieProbe movie = phone.movie();
  EXPECT_EQ("", movie.fact('a', "codec_name"));
  EXPECT_NEAR(30, movie.times('v').size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    When, RecordingWithoutSound,
    testing::Values(Obstacle{"TheUserRefuses", Permission::denied, nullptr, "\n"},
                    Obstacle{"ThereIsNoMicrophone", Permission::authorized,
                             [] { Microphone::shared().setSound(Microphone::Absent{}); },
                             "<TLV Log> : AVCaptureDevice Failed\n"},
                    Obstacle{"ItIsNotPluggedIn", Permission::authorized,
                             [] { Microphone::shared().setConnected(false); },
                             "<TLV Log> : AVCaptureDevice Failed\n"},
                    Obstacle{"ItCannotBeOpened", Permission::authorized,
                             [] { Microphone::shared().setSound(Microphone::File{"no such file.wav"}); },
                             "<TLV Log> : AVCaptureDeviceInput Failed : "},
                    Obstacle{"AnotherApplicationHoldsIt", Permission::authorized,
                             [] { Microphone::shared().setHeldElsewhere(true); },
                             "<TLV Log> : Failed to add input/output device to capture session\n"}),
    [](const auto& row) { return row.param.name; });

TEST(RecordedSound, FromOtherOutputsIsIgnored) {
  auto options = withMicrophone();
  options.microphonePermission = Permission::denied;
  RecordingPhone phone(options);
  ASSERT_TRUE(phone.start());
  const std::shared_ptr<AVCaptureOutput> stranger = std::make_shared<AVCaptureAudioDataOutput>();
  const auto buffer =
      std::make_shared<CMSampleBuffer>(CMAudioFormat{}, std::vector<std::int16_t>(1024), CMTimeMake(1000, 1));
  for (const auto& output : {stranger, std::shared_ptr<AVCaptureOutput>()}) {
    send(*phone.recorder(), "captureOutput:didOutputSampleBuffer:fromConnection:", output, buffer,
         std::shared_ptr<AVCaptureConnection>());
  }
  phone.runFor(1);
  EXPECT_EQ(1, phone.stop());
  EXPECT_EQ("", phone.movie().fact('a', "codec_name"));
  EXPECT_NEAR(1, phone.movie().times('v').back(), 0.1) << "another output's sound must not set the origin";
}

TEST(RecordedSound, ASecondStartListensAnew) {
  RecordingPhone phone(withMicrophone());
  Console console;
  ASSERT_TRUE(phone.start());
  phone.runFor(0.5);
  EXPECT_TRUE(phone.start());
  phone.runFor(1);
  EXPECT_EQ(1, phone.stop());
  EXPECT_TRUE(phone.savedAs());
  const std::string lines = console.text(), device = "<TLV Log> : Device : ";
  EXPECT_NE(lines.find(device), lines.rfind(device));
  const MovieProbe movie = phone.movie();
  EXPECT_NEAR(45, movie.times('v').size(), 2);
  EXPECT_NEAR(kHertz, frequency(movie.sound(), 0.7, 1.4), 5);
}

}  // namespace
}  // namespace tellvane
