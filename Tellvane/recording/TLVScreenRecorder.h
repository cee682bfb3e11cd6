#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"
#include "AVFoundation/AVCaptureInput.h"
#include "AVFoundation/AVCaptureOutput.h"
#include "AVFoundation/AVCaptureSession.h"
#include "Base/Mutex.h"
#include "CoreGraphics/CGContext.h"
#include "CoreMedia/CMSampleBuffer.h"
#include "CoreVideo/CVPixelBufferPool.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "QuartzCore/CADisplayLink.h"
#include "Tellvane/Platform.h"
#include "recording/TemporaryMovie.h"

namespace tellvane {

/// Records the application's own screen into a movie, with the microphone if wanted. One recording each:
/// construct, set the delegate, start, stop once.
///
/// A frame takes three steps. The tick of a display link, on the main thread, only tries a semaphore and
/// queues. The render step, on "TLVScreenRecorder.render_queue", finds the frame's time and fills a pooled
/// pixel buffer, into which the main thread draws the windows. The append step, on
/// "TLVScreenRecorder.append_queue", gives it to the writer, which encodes it on a thread of its own while
/// the next one is drawn. At most one frame is in each of the last two; one that would have to wait is
/// dropped, so nothing ever backs up.
///
/// The delegate may have either of two operations, both called on the render queue, once per rendered frame
/// and before the windows are drawn into it:
///   - "writeBackgroundFrame:" with the frame's CGContextRef: what it draws lies beneath the windows;
///   - "stopRecordingAtDesiredTime:" with a double: the frame's offset in seconds, pauses left out.
class TLVScreenRecorder : public Subclass<TLVScreenRecorder, NSObject> {
 public:
  /// 0.5 megabits (of 1,048,576 bits) and 60 frames per second, no sound. Screen size and scale are read
  /// here and never again. Any thread.
  TLVScreenRecorder();
  /// `bitRate` in megabits of 1,048,576 bits per second.
  TLVScreenRecorder(double bitRate, long fps, bool recordWithMicrophoneEnabled);
  static MethodList methods();

  /// From a successful start to the stop request. Any thread.
  bool isRecording() const { return isRecording_; }
  void setIsRecording(bool recording) { isRecording_ = recording; }
  /// Kept alive as long as the recorder. To be set before the start, by the thread that starts.
  const id& delegate() const { return delegate_; }
  void setDelegate(id delegate) { delegate_ = std::move(delegate); }

  /// Starts, from any thread that the main thread does not wait for; `completion` (may be empty) is told on
  /// the main thread whether frames are being recorded. Without the microphone that happens inside this call
  /// when it is made on the main thread; with it, after the user's answer. Nothing is started while the
  /// application is in the background.
  void startTLVScreenRecording(std::function<void(bool success)> completion);

  /// Stops and returns at once. Main thread or render queue. Frames on their way still reach the movie, which
  /// is finished and saved; `completion` gets the saved movie's identifier in the photo library, or none. It
  /// is never called when nothing was being recorded.
  void stopTLVRecordingWithCompletion(
      std::function<void(std::optional<std::string> localIdentifier)> completion);

  /// Pause and resume of the frame clock; sound goes on. Main thread.
  void handleAppBecameInActive() { pauseRecording(); }
  void handleAppBecameActive() { resumeRecording(); }

  /// Average bits of picture per second. Fixed by the constructor, like the frame rate: any thread.
  double desiredBitRate() const { return desiredBitRate_; }
  long desiredFPS() const { return desiredFPS_; }
  /// Where the frames' buffers come from; empty before the start. Main thread.
  const CVPixelBufferPoolRef& outputBufferPool() const { return outputBufferPool_; }

 private:
  // Start: TLVScreenRecorder.cpp.
  void startOnMainThread(bool microphoneGranted, const std::function<void(bool)>& completion);
  void setUpRecording();
  void setUpWriter();
  void giveUpStart();
  CGSize pixelSize() const { return {viewSize_.width * scale_, viewSize_.height * scale_}; }

  // Frames: TLVScreenRecorderFrames.cpp.
  void writeVideoFrame();
  void renderFrame();
  CGContextRef createPixelBufferAndBitmapContext(CVPixelBufferRef& pixelBuffer);
  void callDelegate(const CGContextRef& context, double elapsed);
  void drawWindows(const CGContextRef& context);
  void appendFrame(const CVPixelBufferRef& pixelBuffer, const CMTime& time);

  // Pause and sound: TLVScreenRecorderSound.cpp.
  void pauseRecording();
  void resumeRecording();
  void setUpAudioCapture();
  void captureOutputDidOutputSampleBuffer(const std::shared_ptr<AVCaptureOutput>& output,
                                          const CMSampleBufferRef& sampleBuffer,
                                          const std::shared_ptr<AVCaptureConnection>& connection);

  // End: TLVScreenRecorderCompletion.cpp.
  struct Ending;
  void completeRecordingSession(const std::shared_ptr<Ending>& ending);
  void finishMovie(const std::shared_ptr<Ending>& ending);
  void saveMovie(const std::shared_ptr<Ending>& ending);

  std::atomic<bool> isRecording_ = false;
  // A recorder stops once, whoever comes first: a trigger on the main thread, or the frame past the limit.
  std::atomic<bool> stopRequested_ = false;
  id delegate_;
  bool shouldRecordAudio_ = false;
  std::shared_ptr<TemporaryMovie> movie_;  // from a successful start to the stop request
  std::shared_ptr<AVAssetWriter> videoWriter_;
  std::shared_ptr<AVAssetWriterInput> videoWriterInput_;
  std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> avAdaptor_;
  std::shared_ptr<CADisplayLink> displayLink_;
  std::optional<double> firstTimeStamp_;  // render queue
  std::optional<CMTime> lastAppended_;    // append queue
  std::vector<double> pauseResumeTimeRanges_ IOS_GUARDED_BY(sharedFields_);
  std::shared_ptr<AVCaptureDeviceInput> audioCaptureInput_;
  std::shared_ptr<AVAssetWriterInput> audioInput_ IOS_GUARDED_BY(sharedFields_);
  std::shared_ptr<AVCaptureAudioDataOutput> audioCaptureOutput_ IOS_GUARDED_BY(sharedFields_);
  std::shared_ptr<AVCaptureSession> captureSession_ IOS_GUARDED_BY(sharedFields_);
  std::optional<NSDictionary> audioSettings_;
  CMTime firstAudioTimeStamp_ IOS_GUARDED_BY(sharedFields_) = kCMTimeZero;
  dispatch_queue_t render_queue_;
  dispatch_queue_t append_pixelBuffer_queue_;
  dispatch_semaphore_t frameRenderingSemaphore_;
  dispatch_semaphore_t pixelAppendSemaphore_;
  CGSize viewSize_;
  CGFloat scale_ = 1;
  std::optional<CGColorSpace> rgbColorSpace_;
  CVPixelBufferPoolRef outputBufferPool_;
  double desiredBitRate_;
  long desiredFPS_;

  /// Held only for copying: guards what the main thread, the render queue and the audio queue share and is too wide for
  /// an atomic.
  Mutex sharedFields_;
};

/// Deletes the file at `path`, if there is one; a failure is logged.
void removeTempFilePath(const std::string& path);

}  // namespace tellvane
