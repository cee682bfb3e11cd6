#include "Foundation/NSRunLoop.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIGraphics.h"
#include "ground/Memory.h"
#include "info/printTLV.h"
#include "recording/FrameTiming.h"
#include "recording/TLVScreenRecorder.h"

namespace tellvane {

void TLVScreenRecorder::writeVideoFrame() {
  if (!isRecording_ && videoWriter_ && videoWriter_->status() == AVAssetWriterStatusFailed) {
    // The start failed, so nobody will stop this recorder; it would tick, and live, for ever.
    displayLink_->removeFromRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
    return;
  }
  if (dispatch_semaphore_wait(frameRenderingSemaphore_, DISPATCH_TIME_NOW) != 0) return;
  const bool queued = unlessMemoryRunsOut([this] {
    dispatch_async(render_queue_, [self = sharedAs<TLVScreenRecorder>()] {
      unlessMemoryRunsOut([&] { self->renderFrame(); });
      dispatch_semaphore_signal(self->frameRenderingSemaphore_);
    });
  });
  if (!queued) dispatch_semaphore_signal(frameRenderingSemaphore_);
}

void TLVScreenRecorder::renderFrame() {
  if (!videoWriterInput_ || !videoWriterInput_->isReadyForMoreMediaData()) return;

  const double timestamp = displayLink_->timestamp();  // once: the next tick may be on its way
  std::vector<double> pauses;
  CMTime origin;
  {
    MutexLock lock(sharedFields_);
    if (pauseResumeTimeRanges_.size() % 2 != 0) pauseResumeTimeRanges_.push_back(timestamp);
    pauses = pauseResumeTimeRanges_;
    origin = firstAudioTimeStamp_;
  }
  if (!firstTimeStamp_) firstTimeStamp_ = timestamp;
  const double elapsed = elapsedTime(timestamp, *firstTimeStamp_, pauses, desiredFPS_);
  const CMTime time = presentationTime(origin, elapsed);

  CVPixelBufferRef pixelBuffer;
  const CGContextRef context = createPixelBufferAndBitmapContext(pixelBuffer);
  if (!pixelBuffer) return;
  // Until the frame has been appended, or given up.
  const std::shared_ptr<void> locked(
      nullptr, [pixelBuffer](void*) { CVPixelBufferUnlockBaseAddress(pixelBuffer, 0); });
  if (!context) return;
  callDelegate(context, elapsed);
  bool drawn = false;
  dispatch_sync(dispatch_get_main_queue(),
                [&] { drawn = unlessMemoryRunsOut([&] { drawWindows(context); }); });
  if (!drawn) return;

  if (dispatch_semaphore_wait(pixelAppendSemaphore_, DISPATCH_TIME_NOW) != 0) return;
  const bool queued = unlessMemoryRunsOut([&] {
    dispatch_async(append_pixelBuffer_queue_,
                   [self = sharedAs<TLVScreenRecorder>(), locked, pixelBuffer, time] {
                     unlessMemoryRunsOut([&] { self->appendFrame(pixelBuffer, time); });
                     dispatch_semaphore_signal(self->pixelAppendSemaphore_);
                   });
  });
  if (!queued) dispatch_semaphore_signal(pixelAppendSemaphore_);
}

CGContextRef TLVScreenRecorder::createPixelBufferAndBitmapContext(CVPixelBufferRef& pixelBuffer) {
  if (!outputBufferPool_) return nullptr;
  CVPixelBufferPoolCreatePixelBuffer(outputBufferPool_, pixelBuffer);
  if (!pixelBuffer) return nullptr;
  CVPixelBufferLockBaseAddress(pixelBuffer, 0);
  const auto context =
      CGBitmapContextCreate(CVPixelBufferGetBaseAddress(pixelBuffer), CVPixelBufferGetWidth(pixelBuffer),
                            CVPixelBufferGetHeight(pixelBuffer), 8, CVPixelBufferGetBytesPerRow(pixelBuffer),
                            *rgbColorSpace_, kCGBitmapByteOrder32Little | kCGImageAlphaPremultipliedFirst);
  if (!context) return nullptr;
  CGContextScaleCTM(context, scale_, scale_);
  CGContextConcatCTM(context, {1, 0, 0, -1, 0, viewSize_.height});
  // The buffer has an earlier frame in it, which would show wherever no window covers the screen.
  CGContextClearRect(context, CGRectMake(0, 0, viewSize_.width, viewSize_.height));
  return context;
}

void TLVScreenRecorder::callDelegate(const CGContextRef& context, double elapsed) {
  if (!delegate_) return;
  if (delegate_->respondsToSelector("writeBackgroundFrame:"))
    send(*delegate_, "writeBackgroundFrame:", context);
  if (delegate_->respondsToSelector("stopRecordingAtDesiredTime:")) {
    send(*delegate_, "stopRecordingAtDesiredTime:", elapsed);
  }
}

void TLVScreenRecorder::drawWindows(const CGContextRef& context) {
  struct Pushed {
    explicit Pushed(const CGContextRef& context) { UIGraphicsPushContext(context); }
    ~Pushed() { UIGraphicsPopContext(); }
  } pushed(context);
  const CGRect screen = CGRectMake(0, 0, viewSize_.width, viewSize_.height);
  for (const auto& window : UIApplication::sharedApplication()->windows()) {
    window->drawViewHierarchyInRectAfterScreenUpdates(screen, false);
  }
}

void TLVScreenRecorder::appendFrame(const CVPixelBufferRef& pixelBuffer, const CMTime& time) {
  // The first frame after a second pause has the same time as the last one before it, and would
  // make the writer fail.
  const bool follows = !lastAppended_ || CMTimeCompare(*lastAppended_, time) < 0;
  if (!follows) return;
  lastAppended_ = time;
  if (!avAdaptor_->appendPixelBuffer(pixelBuffer, time)) {
    printTLV("TLVScreen Recording: Unable to write buffer to video : " + logText(videoWriter_->error()));
  }
}

}  // namespace tellvane
