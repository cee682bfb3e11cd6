#include "AVFoundation/Private/AudioCapture.h"

#include <algorithm>
#include <new>
#include <utility>

#include "Dispatch/Queue.h"

namespace ios {
namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr const char* kDidOutput = "captureOutput:didOutputSampleBuffer:fromConnection:";

// Sound that a machine missed while it slept is skipped.
constexpr Clock::Duration kMostLate = std::chrono::seconds(1);

}  // namespace

AudioCapture::AudioCapture(std::unique_ptr<MicrophoneSource> source, Outputs outputs)
    : format_(source->format()), outputs_(std::move(outputs)), source_(std::move(source)) {}

Clock::Duration AudioCapture::duration(std::int64_t frames) const {
  // In two steps: the product would not fit after some days.
  const auto rate = static_cast<std::int64_t>(format_.sampleRate);
  return Clock::Duration(frames / rate * kNanoseconds + frames % rate * kNanoseconds / rate);
}

void AudioCapture::start(Clock::Duration delay) {
  CMSampleBufferRef first;
  {
    MutexLock lock(mutex_);
    start_ = Clock::shared().now() + delay;
    const std::int64_t since = start_.time_since_epoch().count();
    const auto rate = static_cast<std::int64_t>(format_.sampleRate);
    // Never zero: callers take zero for the time of a buffer that has not come yet.
    firstTime_ =
        std::max<std::int64_t>(since / kNanoseconds * rate + since % kNanoseconds * rate / kNanoseconds, 1);
    if (delay <= Clock::Duration::zero()) first = nextBuffer();
    scheduleNext();
  }
  if (first) deliver(first, Wait::yes);
}

void AudioCapture::stop() {
  running_ = false;
  MutexLock lock(mutex_);
  Clock::shared().cancel(event_);
}

void AudioCapture::scheduleNext() {
  event_ =
      Clock::shared().schedule(start_ + duration(position_), Clock::Lane::any, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->fire();
      });
}

void AudioCapture::fire() {
  CMSampleBufferRef buffer;
  {
    MutexLock lock(mutex_);
    if (!running_) return;
    const Clock::Duration late = Clock::shared().now() - (start_ + duration(position_));
    if (late > kMostLate) {
      position_ +=
          late.count() / duration(kFramesPerBuffer).count() * static_cast<std::int64_t>(kFramesPerBuffer);
    }
    buffer = nextBuffer();
    scheduleNext();
  }
  deliver(buffer, Wait::no);
}

CMSampleBufferRef AudioCapture::nextBuffer() {
  auto samples = source_->read(static_cast<std::uint64_t>(position_), kFramesPerBuffer);
  const CMTime time = CMTimeMake(firstTime_ + position_, static_cast<CMTimeScale>(format_.sampleRate));
  position_ += kFramesPerBuffer;
  return std::make_shared<CMSampleBuffer>(format_, std::move(samples), time);
}

void AudioCapture::deliver(const CMSampleBufferRef& buffer, Wait wait) {
  for (const auto& output : outputs_) {
    const auto queue = output->sampleBufferCallbackQueue();
    if (!queue) continue;
    auto hand = [self = shared_from_this(), output, buffer] { self->handOver(*output, buffer); };
    if (wait == Wait::yes && !isOnQueue(queue)) {
      dispatch_sync(queue, hand);
    } else {
      dispatch_async(queue, std::move(hand));
    }
  }
}

void AudioCapture::handOver(const AVCaptureAudioDataOutput& output, const CMSampleBufferRef& buffer) const {
  if (!running_) return;
  try {
    const auto delegate = output.sampleBufferDelegate();
    const auto connection = output.connection();
    if (!delegate || !connection || !delegate->respondsToSelector(kDidOutput)) return;
    send(*delegate, kDidOutput, connection->output(), buffer, connection);
  } catch (const std::bad_alloc&) {
    // This buffer is lost; the next one leaves a gap, which the movie fills with silence.
  }
}

}  // namespace ios
