#include "recording/TLVScreenRecorder.h"

#include "AVFoundation/AVAudioSession.h"
#include "Foundation/NSFileManager.h"
#include "Foundation/NSRunLoop.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIScreen.h"
#include "ground/Memory.h"
#include "ground/Threading.h"
#include "info/printTLV.h"
#include "recording/FrameTiming.h"
#include "recording/WriterSettings.h"

namespace tellvane {
namespace {

constexpr double kMegabit = 1024.0 * 1024.0;
constexpr double kDefaultBitRate = 0.5;
constexpr long kDefaultFPS = 60;

}  // namespace

MethodList TLVScreenRecorder::methods() {
  return {{"writeVideoFrame", &TLVScreenRecorder::writeVideoFrame},
          {"handleAppBecameActive", &TLVScreenRecorder::handleAppBecameActive},
          {"handleAppBecameInActive", &TLVScreenRecorder::handleAppBecameInActive},
          {"captureOutput:didOutputSampleBuffer:fromConnection:",
           &TLVScreenRecorder::captureOutputDidOutputSampleBuffer}};
}

TLVScreenRecorder::TLVScreenRecorder() : TLVScreenRecorder(kDefaultBitRate, kDefaultFPS, false) {}

TLVScreenRecorder::TLVScreenRecorder(double bitRate, long fps, bool recordWithMicrophoneEnabled)
    : shouldRecordAudio_(recordWithMicrophoneEnabled),
      render_queue_(dispatch_queue_create("TLVScreenRecorder.render_queue")),
      append_pixelBuffer_queue_(dispatch_queue_create("TLVScreenRecorder.append_queue")),
      frameRenderingSemaphore_(dispatch_semaphore_create(1)),
      pixelAppendSemaphore_(dispatch_semaphore_create(1)),
      viewSize_(UIScreen::mainScreen()->bounds().size),
      scale_(UIScreen::mainScreen()->scale()),
      desiredBitRate_(bitRate * kMegabit),
      desiredFPS_(fps) {
  dispatch_set_target_queue(render_queue_, dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_HIGH, 0));
}

void TLVScreenRecorder::startTLVScreenRecording(std::function<void(bool)> completion) {
  const auto reached = unlessMemoryRunsOut([&] {
    const auto self = sharedAs<TLVScreenRecorder>();
    const auto startWith = [self, completion](bool granted) {
      const bool reached = unlessMemoryRunsOut(
          [&] { runOnMainThread([&] { self->startOnMainThread(granted, completion); }); });
      if (!reached && completion) completion(false);
    };
    if (shouldRecordAudio_) {
      AVAudioSession::sharedInstance()->requestRecordPermission(startWith);
    } else {
      startWith(false);
    }
  });
  if (!reached && completion) completion(false);
}

void TLVScreenRecorder::startOnMainThread(bool microphoneGranted,
                                          const std::function<void(bool)>& completion) {
  // The user may have left while being asked for the microphone; nobody would see what is recorded.
  if (UIApplication::sharedApplication()->applicationState() == UIApplicationState::background) {
    if (completion) completion(isRecording_);
    return;
  }
  const bool prepared = unlessMemoryRunsOut([&] {
    if (microphoneGranted) setUpAudioCapture();
    if (!isRecording_) setUpRecording();
  });
  if (!prepared && !isRecording_) giveUpStart();
  if (completion) completion(isRecording_);
}

void TLVScreenRecorder::setUpRecording() {
  setUpWriter();
  const bool writes = videoWriter_ && videoWriter_->status() == AVAssetWriterStatusWriting;
  if (!writes) movie_ = nullptr;
  if (!videoWriter_) return;
  displayLink_ = CADisplayLink::displayLinkWithTarget(shared_from_this(), "writeVideoFrame");
  displayLink_->setFrameInterval(displayLinkInterval(desiredFPS_));
  displayLink_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
  isRecording_ = writes;
}

void TLVScreenRecorder::giveUpStart() {
  std::shared_ptr<AVCaptureSession> session;
  {
    MutexLock lock(sharedFields_);
    session = std::move(captureSession_);
    audioCaptureOutput_ = nullptr;
  }
  if (session) session->stopRunning();
  if (displayLink_) displayLink_->invalidate();
  if (videoWriter_) videoWriter_->cancelWriting();
  videoWriter_ = nullptr;
  videoWriterInput_ = nullptr;
  movie_ = nullptr;
  unlessMemoryRunsOut([] { printTLV("Could not create video writer: there is not enough memory"); });
}

void TLVScreenRecorder::setUpWriter() {
  rgbColorSpace_ = CGColorSpaceCreateDeviceRGB();
  outputBufferPool_ = nullptr;
  CVPixelBufferPoolCreate(nullptr, pixelBufferAttributes(pixelSize()), outputBufferPool_);

  movie_ = std::make_shared<TemporaryMovie>();
  removeTempFilePath(movie_->path());
  std::shared_ptr<NSError> error;
  const auto writer =
      AVAssetWriter::initWithURL(NSURL::fileURLWithPath(movie_->path()), AVFileTypeQuickTimeMovie, error);
  if (!writer) {
    printTLV("Could not create video writer: " + (error ? error->localizedDescription() : std::string()));
    return;
  }
  videoWriter_ = writer;
  videoWriterInput_ = AVAssetWriterInput::initWithMediaType(
      AVMediaTypeVideo, videoOutputSettings(pixelSize(), desiredBitRate_));
  videoWriterInput_->setExpectsMediaDataInRealTime(true);
  avAdaptor_ =
      AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(videoWriterInput_, std::nullopt);
  videoWriter_->addInput(videoWriterInput_);

  std::shared_ptr<AVAssetWriterInput> sound;
  if (shouldRecordAudio_) {
    sound = AVAssetWriterInput::initWithMediaType(AVMediaTypeAudio, audioSettings_);
    sound->setExpectsMediaDataInRealTime(true);
    if (videoWriter_->canAddInput(sound)) videoWriter_->addInput(sound);
  }
  CMTime start;
  {
    MutexLock lock(sharedFields_);
    audioInput_ = sound;
    start = firstAudioTimeStamp_;
  }
  videoWriter_->startWriting();
  videoWriter_->startSessionAtSourceTime(start);
}

void removeTempFilePath(const std::string& path) {
  const auto files = NSFileManager::defaultManager();
  if (!files->fileExistsAtPath(path)) return;
  std::shared_ptr<NSError> error;
  if (files->removeItemAtPath(path, error)) return;
  printTLV("Could not delete old recording: " + (error ? error->localizedDescription() : std::string()));
}

}  // namespace tellvane
