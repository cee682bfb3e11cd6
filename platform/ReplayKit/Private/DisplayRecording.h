#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"
#include "AVFoundation/AVCaptureOutput.h"
#include "AVFoundation/AVCaptureSession.h"
#include "CoreGraphics/CGImage.h"
#include "CoreVideo/CVPixelBuffer.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSError.h"
#include "ObjectiveC/NSObject.h"
#include "QuartzCore/CADisplayLink.h"
#include "ReplayKit/Private/RecordedMovie.h"

namespace ios {

/// One recording of what the display shows, at the size it has at the start: later pictures of another size are
/// fitted into it. A tick takes the display's picture on the main thread; drawing and encoding, and the
/// microphone's buffers, are on a queue of the recording's own. A tick is skipped while the last one's picture is
/// still being encoded.
class DisplayRecording : public Subclass<DisplayRecording, NSObject> {
 public:
  static MethodList methods();

  /// Where movies are completed: beside the applications' containers, so none of them sees it.
  static std::filesystem::path folder();
  /// Begins, with the display's picture of this moment; empty, with `error` set, when that fails. Without a microphone
  /// that can be used the movie has no sound. `failed` comes once on the main thread when the movie can no longer be
  /// written; `end` must still be called. Main thread.
  static std::shared_ptr<DisplayRecording> begin(bool microphone, std::function<void()> failed,
                                                 std::shared_ptr<NSError>& error);

  /// `movie` is what was recorded, empty if nothing; `error` says why it is incomplete.
  using Ended = std::function<void(std::shared_ptr<RecordedMovie> movie, std::shared_ptr<NSError> error)>;
  /// To be called once. `ended` comes on the main thread. Main thread.
  void end(Ended ended);

 private:
  bool prepare(bool microphone, std::shared_ptr<NSError>& error);
  void setUpMicrophone();
  void tick();
  void takePicture(double time);
  void appendPicture(const CGImageRef& image, double time);
  void draw(const CGImageRef& image);
  void captureOutputDidOutputSampleBuffer(const std::shared_ptr<AVCaptureOutput>& output,
                                          const CMSampleBufferRef& sampleBuffer,
                                          const std::shared_ptr<AVCaptureConnection>& connection);
  void lookAtWriter();

  std::function<void()> failed_;
  std::filesystem::path path_;
  std::shared_ptr<CADisplayLink> link_;
  std::shared_ptr<AVCaptureSession> session_;
  std::shared_ptr<AVCaptureAudioDataOutput> microphone_;
  std::shared_ptr<AVAssetWriter> writer_;
  std::shared_ptr<AVAssetWriterInput> pictures_, sound_;
  std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor_;
  CVPixelBufferRef buffer_;  // filled on queue_ once there is a queue
  const dispatch_queue_t queue_ = dispatch_queue_create("RPScreenRecorder.movie");
  CGImageRef drawn_;                // what buffer_ shows; queue_
  double lastTime_ = -1;            // main thread
  std::atomic<bool> busy_ = false;  // a picture is on its way to the movie
  bool toldFailure_ = false;        // queue_
};

}  // namespace ios
