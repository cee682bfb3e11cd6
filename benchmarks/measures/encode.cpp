// The pictures of a list: raw on standard output, or as a movie through the platform's writer, with the
// processor time that converting, encoding and writing them took.
//   measure_encode raw|movie scroll|still COUNT [MOVIE]
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"
#include "BenchmarkPhone.h"
#include "CoreVideo/CVPixelBufferPool.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "ScrolledList.h"
#include "UIKit/UIGraphics.h"
#include "recording/WriterSettings.h"

using namespace ios;

namespace {

constexpr std::size_t kWidth = 750, kHeight = 1334;
constexpr double kBitRate = 0.6 * 1024 * 1024;

double secondsOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Draws the window into `pixels`, as a recorder does.
void drawWindow(UIWindow& window, void* pixels) {
  const auto context =
      CGBitmapContextCreate(pixels, kWidth, kHeight, 8, kWidth * 4, CGColorSpaceCreateDeviceRGB(),
                            kCGBitmapByteOrder32Little | kCGImageAlphaPremultipliedFirst);
  CGContextScaleCTM(context, 2, 2);
  CGContextConcatCTM(context, {1, 0, 0, -1, 0, kHeight / 2.0});
  UIGraphicsPushContext(context);
  window.drawViewHierarchyInRectAfterScreenUpdates(window.bounds(), true);
  UIGraphicsPopContext();
}

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(1);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) fail("reading the arguments");
  const bool movie = std::string(arguments[1]) == "movie", scrolls = std::string(arguments[2]) == "scroll";
  const int frames = std::atoi(arguments[3]);
  BenchmarkPhone phone;
  const auto list = std::make_shared<ScrolledList>(phone.window());

  std::shared_ptr<AVAssetWriter> writer;
  std::shared_ptr<AVAssetWriterInput> input;
  std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor;
  // A picture is encoded beside the drawing of the next: all that is spent counts, less the drawing.
  const double before = secondsOf(CLOCK_PROCESS_CPUTIME_ID);
  double drawing = 0;
  if (movie) {
    std::shared_ptr<NSError> error;
    writer =
        AVAssetWriter::initWithURL(NSURL::fileURLWithPath(arguments[4]), AVFileTypeQuickTimeMovie, error);
    input = AVAssetWriterInput::initWithMediaType(AVMediaTypeVideo,
                                                  tellvane::videoOutputSettings({kWidth, kHeight}, kBitRate));
    adaptor = AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(input, std::nullopt);
    writer->addInput(input);
    if (!writer->startWriting()) fail("starting the movie");
    writer->startSessionAtSourceTime(kCMTimeZero);
  }

  CVPixelBufferPoolRef pool;
  CVPixelBufferPoolCreate(nullptr, tellvane::pixelBufferAttributes({kWidth, kHeight}), pool);
  for (int frame = 0; frame < frames; ++frame) {
    CVPixelBufferRef buffer;
    CVPixelBufferPoolCreatePixelBuffer(pool, buffer);
    CVPixelBufferLockBaseAddress(buffer, 0);
    const double drawn = secondsOf(CLOCK_THREAD_CPUTIME_ID);
    if (scrolls) list->moveTo(frame / 30.0);
    drawWindow(*phone.window(), CVPixelBufferGetBaseAddress(buffer));
    drawing += secondsOf(CLOCK_THREAD_CPUTIME_ID) - drawn;
    if (movie) {
      if (!adaptor->appendPixelBuffer(buffer, CMTimeMake(frame * 1000 / 30, 1000))) fail("appending");
    } else if (std::fwrite(CVPixelBufferGetBaseAddress(buffer), kWidth * 4, kHeight, stdout) != kHeight) {
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
