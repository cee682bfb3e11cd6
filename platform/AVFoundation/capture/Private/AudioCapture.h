#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "AVFoundation/AVCaptureOutput.h"
#include "AVFoundation/Microphone.h"
#include "Base/Mutex.h"
#include "DeviceClock/Clock.h"

namespace ios {

/// A session's sound while it runs: takes buffers from the microphone in step with the clock and hands them
/// to the outputs' delegates. Any thread.
class AudioCapture : public std::enable_shared_from_this<AudioCapture> {
 public:
  static constexpr std::size_t kFramesPerBuffer = 1024;

  AudioCapture(std::unique_ptr<MicrophoneSource> source,
               std::vector<std::shared_ptr<AVCaptureAudioDataOutput>> outputs);
  /// The first buffer comes after `delay`; without a delay it has been delivered when this returns.
  void start(Clock::Duration delay);
  void stop();

 private:
  using Outputs = std::vector<std::shared_ptr<AVCaptureAudioDataOutput>>;
  enum class Wait { no, yes };

  Clock::Duration duration(std::int64_t frames) const;
  void scheduleNext() IOS_REQUIRES(mutex_);
  void fire();
  CMSampleBufferRef nextBuffer() IOS_REQUIRES(mutex_);
  void deliver(const CMSampleBufferRef& buffer, Wait wait);
  void handOver(const AVCaptureAudioDataOutput& output, const CMSampleBufferRef& buffer) const;

  const CMAudioFormat format_;
  const Outputs outputs_;
  std::atomic<bool> running_ = true;

  Mutex mutex_;
  const std::unique_ptr<MicrophoneSource> source_ IOS_GUARDED_BY(mutex_);
  Clock::Instant start_ IOS_GUARDED_BY(mutex_);
  std::int64_t firstTime_ IOS_GUARDED_BY(mutex_) = 0;  // of the first frame, in frames of the device's clock
  std::int64_t position_ IOS_GUARDED_BY(mutex_) = 0;   // of the next frame, since the start
  Clock::EventId event_ IOS_GUARDED_BY(mutex_) = 0;
};

}  // namespace ios
