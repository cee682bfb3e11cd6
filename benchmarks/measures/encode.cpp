// The pictures of a list, or of noise: raw on standard output, or as a movie through the platform's writer, with
// the processor time that converting, encoding and writing them took.
//   measure_encode raw|movie scroll|still|noise PROFILE COUNT [MOVIE]
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"
#include "BenchmarkPhone.h"
#include "CoreVideo/CVPixelBufferPool.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "ScrolledList.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIScreen.h"
#include "recording/WriterSettings.h"

using namespace ios;

namespace {

constexpr double kBitRate = 0.6 * 1024 * 1024;

double secondsOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The screen of a phone, frame by frame.
class Screen {
 public:
  Screen(const std::string& kind, const std::string& profile)
      : kind_(kind),
        phone_(BenchmarkPhone::Time::virtual_, profile),
        list_(std::make_shared<ScrolledList>(phone_.window())) {}

  CGSize pixels() const {
    const CGFloat scale = UIScreen::mainScreen()->scale();
    const CGSize size = phone_.window()->bounds().size;
    return {size.width * scale, size.height * scale};
  }

  /// Into a buffer of that size, as a recorder does.
  void draw(const CVPixelBufferRef& buffer, int frame) {
    auto* pixels = static_cast<std::uint8_t*>(CVPixelBufferGetBaseAddress(buffer));
    const std::size_t width = CVPixelBufferGetWidth(buffer), height = CVPixelBufferGetHeight(buffer);
    if (kind_ == "noise") {
      for (std::size_t at = 0; at < width * height * 4; at += 4) {
        const std::uint32_t value = random_() * 2;  // 31 bits
        for (int channel = 0; channel < 3; ++channel) pixels[at + channel] = value >> (24 - 8 * channel);
      }
      return;
    }
    if (kind_ == "scroll") list_->moveTo(frame / 30.0);
    const auto context =
        CGBitmapContextCreate(pixels, width, height, 8, width * 4, CGColorSpaceCreateDeviceRGB(),
                              kCGBitmapByteOrder32Little | kCGImageAlphaPremultipliedFirst);
    const CGFloat scale = UIScreen::mainScreen()->scale();
    CGContextScaleCTM(context, scale, scale);
    CGContextConcatCTM(context, {1, 0, 0, -1, 0, phone_.window()->bounds().size.height});
    UIGraphicsPushContext(context);
    phone_.window()->drawViewHierarchyInRectAfterScreenUpdates(phone_.window()->bounds(), true);
    UIGraphicsPopContext();
  }

 private:
  const std::string kind_;
  BenchmarkPhone phone_;
  const std::shared_ptr<ScrolledList> list_;
  std::minstd_rand random_;
};

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(1);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 5) fail("reading the arguments");
  const bool movie = std::string(arguments[1]) == "movie";
  const int frames = std::atoi(arguments[4]);
  Screen screen(arguments[2], arguments[3]);

  std::shared_ptr<AVAssetWriter> writer;
  std::shared_ptr<AVAssetWriterInput> input;
  std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor;
  // A picture is encoded while the next one is drawn, so the total less the drawing is counted.
  const double before = secondsOf(CLOCK_PROCESS_CPUTIME_ID);
  double drawing = 0;
  if (movie) {
    std::shared_ptr<NSError> error;
    writer =
        AVAssetWriter::initWithURL(NSURL::fileURLWithPath(arguments[5]), AVFileTypeQuickTimeMovie, error);
    input = AVAssetWriterInput::initWithMediaType(AVMediaTypeVideo,
                                                  tellvane::videoOutputSettings(screen.pixels(), kBitRate));
    adaptor = AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(input, std::nullopt);
    writer->addInput(input);
    if (!writer->startWriting()) fail("starting the movie");
    writer->startSessionAtSourceTime(kCMTimeZero);
  }

  CVPixelBufferPoolRef pool;
  CVPixelBufferPoolCreate(nullptr, tellvane::pixelBufferAttributes(screen.pixels()), pool);
  for (int frame = 0; frame < frames; ++frame) {
    CVPixelBufferRef buffer;
    CVPixelBufferPoolCreatePixelBuffer(pool, buffer);
    CVPixelBufferLockBaseAddress(buffer, 0);
    const double drawn = secondsOf(CLOCK_THREAD_CPUTIME_ID);
    screen.draw(buffer, frame);
    drawing += secondsOf(CLOCK_THREAD_CPUTIME_ID) - drawn;
    if (movie) {
      if (!adaptor->appendPixelBuffer(buffer, CMTimeMake(frame * 1000 / 30, 1000))) fail("appending");
    } else if (std::fwrite(CVPixelBufferGetBaseAddress(buffer), CVPixelBufferGetBytesPerRow(buffer),
                           CVPixelBufferGetHeight(buffer), stdout) != CVPixelBufferGetHeight(buffer)) {
      fail("writing");
    }
    CVPixelBufferUnlockBaseAddress(buffer, 0);
  }
  if (!movie) return 0;
  bool finished = false;
  input->markAsFinished();
  writer->finishWritingWithCompletionHandler(
      [&] { dispatch_async(dispatch_get_main_queue(), [&] { finished = true; }); });
  if (!Clock::shared().runUntil([&] { return finished; }, std::chrono::seconds(1))) fail("finishing");
  if (writer->status() != AVAssetWriterStatusCompleted) fail("completing");
  const double spent = secondsOf(CLOCK_PROCESS_CPUTIME_ID) - before - drawing;
  std::fprintf(stderr, "microseconds_per_frame %f\n", spent / frames * 1e6);
}
