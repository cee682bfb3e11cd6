#pragma once

#include <memory>
#include <optional>

#include "AVFoundation/AVCaptureInput.h"
#include "AVFoundation/AVMediaFormat.h"
#include "Base/Mutex.h"
#include "CoreFoundation/PropertyList.h"
#include "CoreMedia/CMSampleBuffer.h"
#include "Dispatch/Queue.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class AVCaptureOutput : public NSObject {};

/// The way from a session's input to one of its outputs.
class AVCaptureConnection : public NSObject {
 public:
  AVCaptureConnection(std::shared_ptr<AVCaptureInput> input, std::weak_ptr<AVCaptureOutput> output)
      : input_(std::move(input)), output_(std::move(output)) {}
  const std::shared_ptr<AVCaptureInput>& input() const { return input_; }
  std::shared_ptr<AVCaptureOutput> output() const { return output_.lock(); }

 private:
  const std::shared_ptr<AVCaptureInput> input_;
  const std::weak_ptr<AVCaptureOutput> output_;
};

/// Hands a session's sound to a delegate: its operation
/// "captureOutput:didOutputSampleBuffer:fromConnection:", if it has one, with
/// (std::shared_ptr<AVCaptureOutput>, CMSampleBufferRef, std::shared_ptr<AVCaptureConnection>), on the queue
/// given. Buffers are of 1024 frames, in order.
class AVCaptureAudioDataOutput : public AVCaptureOutput {
 public:
  /// The delegate is not kept alive. `queue` is a serial queue; without one, or without a delegate, nothing
  /// is delivered.
  void setSampleBufferDelegate(const id& delegate, const dispatch_queue_t& queue);
  id sampleBufferDelegate() const;
  dispatch_queue_t sampleBufferCallbackQueue() const;

  /// Settings for a writer's sound input that suit what this output delivers: AAC at its rate and with its channels.
  /// Empty for an unknown file type and while no session connects this output with an input.
  std::optional<NSDictionary> recommendedAudioSettingsForAssetWriterWithOutputFileType(
      const AVFileType& outputFileType) const;

  std::shared_ptr<AVCaptureConnection> connection() const;

 private:
  friend class AVCaptureSession;
  void setConnection(std::shared_ptr<AVCaptureConnection> connection);

  mutable Mutex mutex_;  // held only for copying
  std::weak_ptr<NSObject> delegate_ IOS_GUARDED_BY(mutex_);
  dispatch_queue_t queue_ IOS_GUARDED_BY(mutex_);
  std::shared_ptr<AVCaptureConnection> connection_ IOS_GUARDED_BY(mutex_);
};

}  // namespace ios
