#include "Studio.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"

namespace testing_support {

using namespace ios;

Studio::Studio() {
  Clock::shared().useVirtualTime(Clock::Instant(std::chrono::seconds(5)));
  Device::start(
      {.root = folder_.path() / "device", .mainBundle = {}, .bundleIdentifier = "com.test", .settings = {}});
  std::filesystem::create_directories(folder_.path() / "movies");
}

std::vector<std::string> Studio::files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path() / "movies")) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

NSDictionary pictureSettings(double width, double height, double bitRate) {
  return {{AVVideoCodecKey, AVVideoCodecH264},
          {AVVideoWidthKey, width},
          {AVVideoHeightKey, height},
          {AVVideoCompressionPropertiesKey, NSDictionary{{AVVideoAverageBitRateKey, bitRate}}}};
}

NSDictionary aacSettings(double rate, int channels) {
  return {{AVFormatIDKey, kAudioFormatMPEG4AAC}, {AVSampleRateKey, rate}, {AVNumberOfChannelsKey, channels}};
}

Movie::Movie(const Studio& studio, const MovieOptions& options) : start_(options.start) {
  std::shared_ptr<NSError> error;
  writer = AVAssetWriter::initWithURL(NSURL::fileURLWithPath(studio.path(options.name)),
                                      AVFileTypeQuickTimeMovie, error);
  EXPECT_EQ(error, nullptr);
  pictures = AVAssetWriterInput::initWithMediaType(
      AVMediaTypeVideo, pictureSettings(options.width, options.height, options.bitRate));
  adaptor = AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(pictures, std::nullopt);
  sound = AVAssetWriterInput::initWithMediaType(AVMediaTypeAudio, options.soundSettings);
  if (options.pictures) writer->addInput(pictures);
  if (options.sound) writer->addInput(sound);
  if (!options.started) return;
  EXPECT_TRUE(writer->startWriting()) << problem();
  writer->startSessionAtSourceTime(options.start);
}

bool Movie::append(const CVPixelBufferRef& picture, double seconds) const {
  return adaptor->appendPixelBuffer(picture,
                                    CMTimeAdd(start_, CMTimeMake(std::llround(seconds * 1000), 1000)));
}

bool Movie::append(std::vector<std::int16_t> samples, const CMTime& time, const CMAudioFormat& format) const {
  return sound->appendSampleBuffer(std::make_shared<CMSampleBuffer>(format, std::move(samples), time));
}

int Movie::finish() const {
  int calls = 0;
  writer->finishWritingWithCompletionHandler([&calls] {
    EXPECT_FALSE(isMainThread());
    dispatch_async(dispatch_get_main_queue(), [&calls] { ++calls; });
  });
  const auto finished = Clock::shared().runUntil([&calls] { return calls > 0; }, std::chrono::seconds(1));
  EXPECT_TRUE(finished) << finished.pending;
  Clock::shared().runUntilRest();
  return calls;
}

std::string Movie::problem() const {
  return writer->error() ? writer->error()->localizedDescription() : "";
}

CVPixelBufferRef picture(std::size_t width, std::size_t height,
                         const std::function<Colour(std::size_t x, std::size_t y)>& paint) {
  CVPixelBufferRef buffer;
  EXPECT_EQ(CVPixelBufferCreate(width, height, kCVPixelFormatType_32BGRA, {}, buffer), kCVReturnSuccess);
  CVPixelBufferLockBaseAddress(buffer, 0);
  auto* pixels = static_cast<std::uint8_t*>(CVPixelBufferGetBaseAddress(buffer));
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const Colour colour = paint(x, y);
      std::uint8_t* pixel = pixels + y * CVPixelBufferGetBytesPerRow(buffer) + 4 * x;
      pixel[0] = static_cast<std::uint8_t>(colour.blue);
      pixel[1] = static_cast<std::uint8_t>(colour.green);
      pixel[2] = static_cast<std::uint8_t>(colour.red);
      pixel[3] = 255;
    }
  }
  CVPixelBufferUnlockBaseAddress(buffer, 0);
  return buffer;
}

CVPixelBufferRef plain(std::size_t width, std::size_t height, const Colour& colour) {
  return picture(width, height, [&](std::size_t, std::size_t) { return colour; });
}

std::vector<std::int16_t> tone(double hertz, std::size_t frames, std::size_t position, int rate,
                               int channels) {
  std::vector<std::int16_t> samples;
  for (std::size_t i = position; i < position + frames; ++i) {
    const double phase = 2 * std::numbers::pi * hertz * static_cast<double>(i) / rate;
    samples.insert(samples.end(), static_cast<std::size_t>(channels),
                   static_cast<std::int16_t>(16000 * std::sin(phase)));
  }
  return samples;
}

}  // namespace testing_support
