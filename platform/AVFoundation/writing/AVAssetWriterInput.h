#pragma once

#include <atomic>
#include <memory>
#include <optional>

#include "AVFoundation/AVAudioSettings.h"
#include "AVFoundation/AVMediaFormat.h"
#include "AVFoundation/AVVideoSettings.h"
#include "Base/Mutex.h"
#include "CoreFoundation/PropertyList.h"
#include "CoreMedia/CMSampleBuffer.h"
#include "CoreVideo/CVPixelBuffer.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class MovieTrack;

/// One track of a movie that is being written. Appends come from one thread at a time and in order of time.
/// An append that is refused returns false:
///   - before `startWriting` and after the input or the writer has ended, in any way: without further effect;
///   - before the session has started, at a time that is not numeric or not later than the last one, with
///     another kind of media, or when encoding or the disk fails: the writer's status becomes failed. A
///     picture's encoding is still under way when its append returns, so the next append reports its failure.
class AVAssetWriterInput : public NSObject {
 public:
  /// `outputSettings`: AVVideoSettings.h or AVAudioSettings.h. Sound without settings is written as it comes:
  /// PCM in the format of the first buffer (later ones are converted to it). Pictures need settings.
  static std::shared_ptr<AVAssetWriterInput> initWithMediaType(const AVMediaType& mediaType,
                                                               std::optional<NSDictionary> outputSettings);
  AVAssetWriterInput(AVMediaType mediaType, std::optional<NSDictionary> outputSettings);
  ~AVAssetWriterInput() override;

  const AVMediaType& mediaType() const { return mediaType_; }
  const std::optional<NSDictionary>& outputSettings() const { return outputSettings_; }
  bool expectsMediaDataInRealTime() const { return expectsMediaDataInRealTime_; }
  void setExpectsMediaDataInRealTime(bool expects) { expectsMediaDataInRealTime_ = expects; }

  /// Whether an append would be taken now: the input belongs to a writer that is writing, and has not ended.
  /// Any thread; never waits.
  bool isReadyForMoreMediaData() const;
  /// Sound only. Gaps of up to ten minutes are filled with silence, overlaps cut.
  bool appendSampleBuffer(const CMSampleBufferRef& buffer);
  /// No more media; waits for an append that is under way on another thread.
  void markAsFinished();

 private:
  friend class AVAssetWriter;
  friend class AVAssetWriterInputPixelBufferAdaptor;
  std::shared_ptr<MovieTrack> track() const;
  void attach(std::shared_ptr<MovieTrack> track);

  const AVMediaType mediaType_;
  const std::optional<NSDictionary> outputSettings_;
  std::atomic<bool> expectsMediaDataInRealTime_ = false;
  mutable Mutex mutex_;                                       // held only for copying
  std::shared_ptr<MovieTrack> track_ IOS_GUARDED_BY(mutex_);  // set when the input is added to a writer
};

}  // namespace ios
