#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "CoreMedia/CMTime.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// How sound is laid out: linear PCM of 16-bit signed samples in the machine's byte
/// order, channels interleaved.
struct CMAudioFormat {
  double sampleRate = 44100;  // frames per second
  std::uint32_t channels = 1;
  bool operator==(const CMAudioFormat&) const = default;
  /// Whether the format is supported: 1 to 8 channels, a whole rate of 1000 to 384000 frames per second.
  bool isUsable() const;
};

/// A stretch of sound with the time of its first frame. Never changes; safe to share between threads.
class CMSampleBuffer : public NSObject {
 public:
  CMSampleBuffer(const CMAudioFormat& format, std::vector<std::int16_t> samples,
                 const CMTime& presentationTime)
      : format_(format), samples_(std::move(samples)), presentationTime_(presentationTime) {}
  const CMAudioFormat& format() const { return format_; }
  /// Channels interleaved.
  const std::vector<std::int16_t>& samples() const { return samples_; }
  const CMTime& presentationTime() const { return presentationTime_; }

 private:
  const CMAudioFormat format_;
  const std::vector<std::int16_t> samples_;
  const CMTime presentationTime_;
};

using CMSampleBufferRef = std::shared_ptr<CMSampleBuffer>;

/// The time of the first frame; invalid for no buffer.
CMTime CMSampleBufferGetPresentationTimeStamp(const CMSampleBufferRef& buffer);
/// How many whole frames (one sample per channel) it holds; an incomplete last frame does not count.
std::size_t CMSampleBufferGetNumSamples(const CMSampleBufferRef& buffer);
/// Frames over the sample rate; invalid for no buffer and for an unsupported format.
CMTime CMSampleBufferGetDuration(const CMSampleBufferRef& buffer);

}  // namespace ios
