#include "ReplayKit/Private/DisplayRecording.h"

#include <algorithm>
#include <new>
#include <utility>

#include "AVFoundation/AVCaptureDevice.h"
#include "AVFoundation/AVCaptureInput.h"
#include "AVFoundation/AVVideoSettings.h"
#include "CoreGraphics/CGContext.h"
#include "CoreMedia/CMTime.h"
#include "Device/Device.h"
#include "Foundation/NSRunLoop.h"
#include "ReplayKit/Private/RecordingError.h"
#include "UIKit/UIApplication.h"

namespace ios {
namespace {

constexpr long kRefreshesPerPicture = 2;
constexpr double kBitsPerSecond = 4e6;
constexpr CMTimeScale kTimescale = 1'000'000;

CMTime mediaTime(double seconds) {
  return CMTimeMakeWithSeconds(seconds, kTimescale);
}

CGImageRef displayedPicture() {
  const auto image = UIApplication::sharedApplication()->displayImage();
  return image ? image->CGImageValue() : nullptr;
}

NSDictionary pictureSettings(const CGImage& picture) {
  return {{AVVideoCodecKey, AVVideoCodecH264},
          {AVVideoWidthKey, static_cast<double>(picture.width())},
          {AVVideoHeightKey, static_cast<double>(picture.height())},
          {AVVideoCompressionPropertiesKey, NSDictionary{{AVVideoAverageBitRateKey, kBitsPerSecond}}}};
}

}  // namespace

std::filesystem::path DisplayRecording::folder() {
  return Device::current().root() / "ReplayKit";
}

MethodList DisplayRecording::methods() {
  return {{"tick", &DisplayRecording::tick},
          {"captureOutput:didOutputSampleBuffer:fromConnection:",
           &DisplayRecording::captureOutputDidOutputSampleBuffer}};
}

std::shared_ptr<DisplayRecording> DisplayRecording::begin(bool microphone, std::function<void()> failed,
                                                          std::shared_ptr<NSError>& error) {
  const auto recording = std::make_shared<DisplayRecording>();
  recording->failed_ = std::move(failed);
  if (!recording->prepare(microphone, error)) return nullptr;
  // One clock for the display and the microphone: what comes first is the movie's beginning.
  const double now = Clock::shared().secondsNow();
  recording->writer_->startSessionAtSourceTime(mediaTime(now));
  recording->takePicture(now);
  if (recording->session_) recording->session_->startRunning();
  recording->link_ = CADisplayLink::displayLinkWithTarget(recording, "tick");
  recording->link_->setFrameInterval(kRefreshesPerPicture);
  recording->link_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
  return recording;
}

bool DisplayRecording::prepare(bool microphone, std::shared_ptr<NSError>& error) {
  const auto picture = displayedPicture();
  const auto refused = createFolder(folder());
  if (!picture || refused) {
    const bool full = refused && meansNoRoom(refused->code);
    error = recordingError(full ? RPRecordingErrorInsufficientStorage : RPRecordingErrorFailedToStart);
    return false;
  }
  path_ = temporaryNameBeside(folder() / "Recording.mov");

  if (microphone) setUpMicrophone();
  pictures_ = AVAssetWriterInput::initWithMediaType(AVMediaTypeVideo, pictureSettings(*picture));
  pictures_->setExpectsMediaDataInRealTime(true);
  adaptor_ = AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(pictures_, std::nullopt);
  CVPixelBufferCreate(picture->width(), picture->height(), kCVPixelFormatType_32BGRA, {}, buffer_);
  writer_ = AVAssetWriter::initWithURL(NSURL::fileURLWithPath(path_), AVFileTypeQuickTimeMovie, error);
  if (writer_ && buffer_) {
    writer_->setMovieFragmentInterval(mediaTime(1));
    writer_->addInput(pictures_);
    if (sound_) writer_->addInput(sound_);
    if (writer_->startWriting()) return true;
    error = writer_->error();
  }
  error = error ? recordingError(*error, RPRecordingErrorFailedToStart)
                : recordingError(RPRecordingErrorFailedToStart);
  return false;
}

void DisplayRecording::setUpMicrophone() {
  const auto device = AVCaptureDevice::defaultDeviceWithMediaType(AVMediaTypeAudio);
  std::shared_ptr<NSError> problem;
  const auto input = device ? AVCaptureDeviceInput::initWithDevice(device, problem) : nullptr;
  const auto session = std::make_shared<AVCaptureSession>();
  const auto output = std::make_shared<AVCaptureAudioDataOutput>();
  if (!input || !session->canAddInput(input)) return;
  session->addInput(input);
  session->addOutput(output);
  const auto settings =
      output->recommendedAudioSettingsForAssetWriterWithOutputFileType(AVFileTypeQuickTimeMovie);
  if (!settings) return;
  output->setSampleBufferDelegate(shared_from_this(), queue_);
  microphone_ = output;
  session_ = session;
  sound_ = AVAssetWriterInput::initWithMediaType(AVMediaTypeAudio, settings);
  sound_->setExpectsMediaDataInRealTime(true);
}

void DisplayRecording::tick() {
  takePicture(link_->timestamp());
}

void DisplayRecording::takePicture(double time) {
  if (time <= lastTime_ || busy_.exchange(true)) return;
  lastTime_ = time;
  try {
    dispatch_async(queue_, [self = sharedAs<DisplayRecording>(), image = displayedPicture(), time] {
      try {
        self->appendPicture(image, time);
      } catch (const std::bad_alloc&) {
        self->drawn_ = nullptr;  // half drawn
      }
      self->busy_ = false;
    });
  } catch (const std::bad_alloc&) {
    busy_ = false;  // without memory there is no picture
  }
}

void DisplayRecording::appendPicture(const CGImageRef& image, double time) {
  if (image && image != drawn_) draw(image);
  // The movie has its own copy of an encoded picture by then, so one buffer serves every picture.
  adaptor_->appendPixelBuffer(buffer_, mediaTime(time));
  lookAtWriter();
}

void DisplayRecording::draw(const CGImageRef& image) {
  drawn_ = image;
  CVPixelBufferLockBaseAddress(buffer_, 0);
  const auto width = static_cast<CGFloat>(CVPixelBufferGetWidth(buffer_));
  const auto height = static_cast<CGFloat>(CVPixelBufferGetHeight(buffer_));
  const auto context = CGBitmapContextCreate(
      CVPixelBufferGetBaseAddress(buffer_), CVPixelBufferGetWidth(buffer_), CVPixelBufferGetHeight(buffer_),
      8, CVPixelBufferGetBytesPerRow(buffer_), CGColorSpaceCreateDeviceRGB(),
      kCGBitmapByteOrder32Little | kCGImageAlphaPremultipliedFirst);
  CGContextTranslateCTM(context, 0, height);
  CGContextScaleCTM(context, 1, -1);
  const auto imageWidth = static_cast<CGFloat>(image->width());
  const auto imageHeight = static_cast<CGFloat>(image->height());
  const CGFloat scale = std::min(width / imageWidth, height / imageHeight);
  if (imageWidth != width || imageHeight != height) {
    CGContextSetFillColorWithColor(context, {0, 0, 0, 1});
    CGContextFillRect(context, CGRectMake(0, 0, width, height));
  }
  CGContextDrawImage(context,
                     CGRectMake((width - imageWidth * scale) / 2, (height - imageHeight * scale) / 2,
                                imageWidth * scale, imageHeight * scale),
                     image);
  CVPixelBufferUnlockBaseAddress(buffer_, 0);
}

void DisplayRecording::captureOutputDidOutputSampleBuffer(const std::shared_ptr<AVCaptureOutput>&,
                                                          const CMSampleBufferRef& sampleBuffer,
                                                          const std::shared_ptr<AVCaptureConnection>&) {
  sound_->appendSampleBuffer(sampleBuffer);
  lookAtWriter();
}

void DisplayRecording::lookAtWriter() {
  if (writer_->status() != AVAssetWriterStatusFailed || std::exchange(toldFailure_, true)) return;
  dispatch_async(dispatch_get_main_queue(), [self = sharedAs<DisplayRecording>()] {
    if (const auto failed = std::exchange(self->failed_, nullptr)) failed();
  });
}

void DisplayRecording::end(Ended ended) {
  failed_ = nullptr;
  link_->invalidate();
  if (session_) session_->stopRunning();
  dispatch_async(queue_, [self = sharedAs<DisplayRecording>(), ended = std::move(ended)] {
    self->writer_->finishWritingWithCompletionHandler([self, ended] {
      const auto movie = RecordedMovie::take(self->path_);
      std::shared_ptr<NSError> error;
      if (const auto reason = self->writer_->error()) {
        error = recordingError(*reason, RPRecordingErrorFailed);
      } else if (!movie) {
        error = recordingError(RPRecordingErrorFailed);
      }
      dispatch_async(dispatch_get_main_queue(), [ended, movie, error] { ended(movie, error); });
    });
  });
}

}  // namespace ios
