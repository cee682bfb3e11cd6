#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "AVFoundation/AVCaptureSession.h"
#include "AVFoundation/Microphone.h"
#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "platform/AVFoundation/Studio.h"

namespace ios {
namespace {

using namespace testing_support;
using namespace std::chrono_literals;

/// Keeps what a capture delivers.
class Listener : public Subclass<Listener, NSObject> {
 public:
  static MethodList methods() {
    return {{"captureOutput:didOutputSampleBuffer:fromConnection:", &Listener::didOutput}};
  }
  void didOutput(const std::shared_ptr<AVCaptureOutput>& output, const CMSampleBufferRef& buffer,
                 const std::shared_ptr<AVCaptureConnection>& connection) {
    dispatch_assert_queue(queue);
    EXPECT_EQ(connection->output(), output);
    buffers.push_back(buffer);
    if (onBuffer) onBuffer(buffer);
  }
  dispatch_queue_t queue = dispatch_queue_create("listener");
  std::vector<CMSampleBufferRef> buffers;  // read between verbs
  std::function<void(const CMSampleBufferRef&)> onBuffer;

  std::vector<std::int16_t> sound() const {
    std::vector<std::int16_t> all;
    for (const auto& buffer : buffers)
      all.insert(all.end(), buffer->samples().begin(), buffer->samples().end());
    return all;
  }
};

/// A capture as an application sets one up.
struct Capture {
  explicit Capture(std::shared_ptr<Listener> delegate = std::make_shared<Listener>())
      : listener(std::move(delegate)) {
    std::shared_ptr<NSError> error;
    input = AVCaptureDeviceInput::initWithDevice(
        AVCaptureDevice::defaultDeviceWithMediaType(AVMediaTypeAudio), error);
    EXPECT_NE(input, nullptr) << (error ? error->description() : "");
    output->setSampleBufferDelegate(listener, listener->queue);
    session->setSessionPreset(AVCaptureSessionPresetMedium);
    EXPECT_TRUE(session->canAddInput(input) && session->canAddOutput(output));
    session->addInput(input);
    session->addOutput(output);
  }
  std::shared_ptr<Listener> listener;
  std::shared_ptr<AVCaptureDeviceInput> input;
  std::shared_ptr<AVCaptureAudioDataOutput> output = std::make_shared<AVCaptureAudioDataOutput>();
  std::shared_ptr<AVCaptureSession> session = std::make_shared<AVCaptureSession>();
};

class CaptureTest : public testing::Test {
 protected:
  CaptureTest() { Device::current().setPermission("microphone", Permission::authorized); }
  Studio studio_;
};

/// A WAV file's bytes.
std::string wave(int rate, int channels, const std::vector<std::int16_t>& samples, int bits = 16,
                 int kind = 1) {
  const auto number = [](std::uint32_t value, int bytes) {
    std::string text;
    for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value & 255);
    return text;
  };
  std::string data(reinterpret_cast<const char*>(samples.data()), 2 * samples.size());
  const auto size = static_cast<std::uint32_t>(data.size());
  return "RIFF" + number(44 + size, 4) + "WAVE" + "LIST" + number(3, 4) + "odd" + std::string(1, '\0') +
         "fmt " + number(16, 4) + number(static_cast<std::uint32_t>(kind), 2) +
         number(static_cast<std::uint32_t>(channels), 2) + number(static_cast<std::uint32_t>(rate), 4) +
         number(static_cast<std::uint32_t>(rate * channels * 2), 4) +
         number(static_cast<std::uint32_t>(channels * 2), 2) + number(static_cast<std::uint32_t>(bits), 2) +
         "data" + number(size, 4) + data;
}

TEST_F(CaptureTest, TheFirstBufferIsThereWhenTheSessionRunsAndTheRestFollowsTheClock) {
  Microphone::shared().setSound(Microphone::Tone{.hertz = 440});
  Clock::shared().runFor(1234567890ns);
  Capture capture;
  const double start = Clock::shared().secondsNow();
  capture.session->startRunning();
  ASSERT_EQ(capture.listener->buffers.size(), 1u);
  EXPECT_NEAR(CMTimeGetSeconds(capture.listener->buffers[0]->presentationTime()), start, 1.0 / 44100);

  Clock::shared().runFor(10s);
  const auto& buffers = capture.listener->buffers;
  EXPECT_EQ(buffers.size(), 1u + 441000 / 1024);
  for (std::size_t i = 1; i < buffers.size(); ++i) {
    EXPECT_EQ(
        CMTimeCompare(buffers[i]->presentationTime(), CMTimeAdd(buffers[i - 1]->presentationTime(),
                                                                CMSampleBufferGetDuration(buffers[i - 1]))),
        0)
        << "a gap before buffer " << i;
  }
  EXPECT_NEAR(frequency(capture.listener->sound(), 0, 10), 440, 0.5);

  capture.session->stopRunning();
  const std::size_t heard = buffers.size();
  Clock::shared().runFor(1s);
  EXPECT_EQ(buffers.size(), heard);
}

TEST_F(CaptureTest, TimeZeroIsNeverABuffersTime) {
  // Callers take it for "no buffer yet". The studio's clock starts later, so a microphone of the first
  // instant is played by one that hears before it.
  Capture capture;
  capture.session->startRunning();
  EXPECT_GT(CMTimeCompare(capture.listener->buffers.at(0)->presentationTime(), kCMTimeZero), 0);
}

TEST_F(CaptureTest, ALateMicrophoneDeliversAfterItsDelay) {
  Microphone::shared().setDelay(300ms);
  Capture capture;
  const double start = Clock::shared().secondsNow();
  capture.session->startRunning();
  Clock::shared().runFor(299ms);
  EXPECT_TRUE(capture.listener->buffers.empty());
  Clock::shared().runFor(2ms);
  ASSERT_EQ(capture.listener->buffers.size(), 1u);
  EXPECT_NEAR(CMTimeGetSeconds(capture.listener->buffers[0]->presentationTime()), start + 0.3, 1.0 / 44100);
}

TEST_F(CaptureTest, NoBufferComesAfterTheEndHoweverItCame) {
  struct Row {
    const char* name;
    std::function<void(Capture&)> end;
  };
  const Row rows[] = {
      {"stopped", [](Capture& capture) { capture.session->stopRunning(); }},
      {"dropped", [](Capture& capture) { capture.session = nullptr; }},
      {"delegate gone", [](Capture& capture) { capture.output->setSampleBufferDelegate(nullptr, nullptr); }},
  };
  for (const Row& row : rows) {
    Capture capture;
    capture.session->startRunning();
    Clock::shared().runFor(100ms);
    const std::size_t heard = capture.listener->buffers.size();
    row.end(capture);
    Clock::shared().runFor(1s);
    EXPECT_EQ(capture.listener->buffers.size(), heard) << row.name;
    EXPECT_GT(heard, 1u) << row.name;
  }
  // From inside the delegate, on its own queue.
  Capture capture;
  capture.listener->onBuffer = [&](const auto&) { capture.session->stopRunning(); };
  capture.session->startRunning();
  Clock::shared().runFor(1s);
  EXPECT_EQ(capture.listener->buffers.size(), 1u);
}

TEST_F(CaptureTest, ADelegateOnTheStartingQueueGetsItsFirstBufferAfterwards) {
  auto listener = std::make_shared<Listener>();
  listener->queue = dispatch_get_main_queue();
  Capture capture(listener);
  capture.session->startRunning();
  EXPECT_TRUE(listener->buffers.empty());
  Clock::shared().runUntilRest();
  EXPECT_EQ(listener->buffers.size(), 1u);
}

TEST_F(CaptureTest, TwoSessionsHearTheSameMicrophone) {
  Capture first, second;
  first.session->startRunning();
  second.session->startRunning();
  first.session->startRunning();  // running already
  Clock::shared().runFor(1s);
  EXPECT_EQ(first.listener->buffers.size(), 44u);
  EXPECT_EQ(second.listener->buffers.size(), 44u);
}

TEST_F(CaptureTest, AnEmptySessionRunsAndDeliversNothing) {
  auto listener = std::make_shared<Listener>();
  AVCaptureSession session;
  auto output = std::make_shared<AVCaptureAudioDataOutput>();
  output->setSampleBufferDelegate(listener, listener->queue);
  session.addOutput(output);
  EXPECT_FALSE(session.canAddOutput(output)) << "twice the same";
  EXPECT_FALSE(session.canAddOutput(std::make_shared<AVCaptureOutput>())) << "takes no sound";
  session.startRunning();
  EXPECT_TRUE(session.isRunning());
  Clock::shared().runFor(1s);
  EXPECT_TRUE(listener->buffers.empty());
  EXPECT_EQ(output->recommendedAudioSettingsForAssetWriterWithOutputFileType(AVFileTypeMPEG4), std::nullopt);
}

TEST_F(CaptureTest, AMicrophoneThatCannotBeUsedSaysWhy) {
  struct Row {
    const char* name;
    std::function<void()> arrange;
    bool device, input, session;
    long code;
  };
  Microphone& microphone = Microphone::shared();
  const auto permit = [](Permission answer) { Device::current().setPermission("microphone", answer); };
  const Row rows[] = {
      {"there is none", [&] { microphone.setSound(Microphone::Absent{}); }, false, false, false,
       AVErrorDeviceNotConnected},
      {"pulled out", [&] { microphone.setConnected(false); }, true, false, false, AVErrorDeviceNotConnected},
      {"not permitted", [&] { permit(Permission::denied); }, true, false, false,
       AVErrorApplicationIsNotAuthorizedToUseDevice},
      {"not asked", [&] { permit(Permission::notDetermined); }, true, false, false,
       AVErrorApplicationIsNotAuthorizedToUseDevice},
      {"no such file", [&] { microphone.setSound(Microphone::File{"/no/such.wav"}); }, true, false, false,
       AVErrorUnknown},
      {"the machine's, in virtual time", [&] { microphone.setSound(Microphone::Machine{}); }, true, false,
       false, AVErrorDeviceNotConnected},
      {"held by another application", [&] { microphone.setHeldElsewhere(true); }, true, true, false, 0},
      {"as usual", [] {}, true, true, true, 0},
  };
  for (const Row& row : rows) {
    row.arrange();
    const auto device = AVCaptureDevice::defaultDeviceWithMediaType(AVMediaTypeAudio);
    EXPECT_EQ(device != nullptr, row.device) << row.name;
    std::shared_ptr<NSError> error;
    const auto input = AVCaptureDeviceInput::initWithDevice(device, error);
    EXPECT_EQ(input != nullptr, row.input) << row.name;
    EXPECT_EQ(error ? error->code() : 0, row.code) << row.name;
    EXPECT_EQ(std::make_shared<AVCaptureSession>()->canAddInput(input), row.session) << row.name;
    microphone.setSound(Microphone::Silence{});
    microphone.setConnected(true);
    microphone.setHeldElsewhere(false);
    permit(Permission::authorized);
  }
  EXPECT_EQ(AVCaptureDevice::defaultDeviceWithMediaType(AVMediaTypeVideo), nullptr);
}

TEST_F(CaptureTest, AFileIsPlayedAgainAndAgain) {
  const std::vector<std::int16_t> samples = {1, -1, 2, -2, 30000, -30000};  // three frames of two channels
  Microphone::shared().setSound(
      Microphone::File{studio_.folder().write("sound.wav", wave(8000, 2, samples))});
  Capture capture;
  capture.session->startRunning();
  Clock::shared().runFor(1s);
  EXPECT_EQ(capture.listener->buffers.size(), 8u);
  EXPECT_EQ(capture.listener->buffers[0]->format(), (CMAudioFormat{8000, 2}));
  const auto sound = capture.listener->sound();
  for (std::size_t i = 0; i < sound.size(); ++i) ASSERT_EQ(sound[i], samples[i % 6]) << "sample " << i;
}

TEST_F(CaptureTest, FilesWithoutUsableSoundAreRefusedWithAReason) {
  const std::string good = wave(8000, 1, {1, 2, 3});
  struct Row {
    const char* name;
    std::string bytes;
    bool opens;
  };
  const Row rows[] = {
      {"good", good, true},
      {"empty", "", false},
      {"text", "this is no sound, and long enough to have chunks", false},
      {"without samples", wave(8000, 1, {}), false},
      {"of 24 bits", wave(8000, 1, {1, 2, 3}, 24), false},
      {"of floats", wave(8000, 1, {1, 2, 3}, 16, 3), false},
      {"without channels", wave(8000, 0, {1, 2, 3}), false},
      {"without a rate", wave(0, 1, {1, 2, 3}), false},
      {"a length that lies",
       good.substr(0, good.size() - 10) + "\xff\xff\xff\xff" + good.substr(good.size() - 6), true},
  };
  for (const Row& row : rows) {
    Microphone::shared().setSound(Microphone::File{studio_.folder().write("sound.wav", row.bytes)});
    std::string problem;
    EXPECT_EQ(Microphone::shared().open(problem) != nullptr, row.opens) << row.name << ": " << problem;
    EXPECT_EQ(problem.empty(), row.opens) << row.name;
  }
  for (std::size_t length = 0; length < good.size(); ++length) {
    Microphone::shared().setSound(
        Microphone::File{studio_.folder().write("sound.wav", good.substr(0, length))});
    std::string problem;
    EXPECT_EQ(Microphone::shared().open(problem) != nullptr, length >= good.size() - 4) << length << " bytes";
  }
}

TEST_F(CaptureTest, RecommendedSettingsMakeATrackOfWhatWasHeard) {
  struct Row {
    const char* name;
    Microphone::Sound sound;
    double rate;
    int channels;
  };
  const auto file = [&](const char* name, int rate, int channels) {
    return Microphone::File{
        studio_.folder().write(name, wave(rate, channels, tone(440, 4410, 0, rate, channels)))};
  };
  const Row rows[] = {{"the device's", Microphone::Tone{}, 44100, 1},
                      {"stereo", file("a.wav", 48000, 2), 48000, 2},
                      {"a rate AAC does not know", file("b.wav", 10000, 1), 44100, 1}};
  for (const Row& row : rows) {
    Microphone::shared().setSound(row.sound);
    Capture capture;
    const auto settings =
        capture.output->recommendedAudioSettingsForAssetWriterWithOutputFileType(AVFileTypeMPEG4);
    ASSERT_TRUE(settings) << row.name;
    EXPECT_EQ(*settings, aacSettings(row.rate, row.channels)) << row.name;
    EXPECT_EQ(capture.output->recommendedAudioSettingsForAssetWriterWithOutputFileType("public.avi"),
              std::nullopt);

    capture.session->startRunning();
    const Movie movie(studio_, {.pictures = false,
                                .sound = true,
                                .soundSettings = settings,
                                .start = capture.listener->buffers.at(0)->presentationTime()});
    capture.listener->onBuffer = [&](const auto& buffer) {
      EXPECT_TRUE(movie.sound->appendSampleBuffer(buffer));
    };
    Clock::shared().runFor(1s);
    capture.session->stopRunning();
    movie.finish();
    EXPECT_NEAR(frequency(movie.probe().sound(), 0.3, 0.9), 440, 8) << row.name;
    std::filesystem::remove(studio_.path());
  }
}

TEST(CaptureEnvironment, ChoosesTheMicrophone) {
  setenv("IOS_MICROPHONE", "tone:880", 1);
  Studio studio;
  Device::current().setPermission("microphone", Permission::authorized);
  Capture capture;
  capture.session->startRunning();
  Clock::shared().runFor(1s);
  EXPECT_NEAR(frequency(capture.listener->sound(), 0, 1), 880, 1);
}

}  // namespace
}  // namespace ios
