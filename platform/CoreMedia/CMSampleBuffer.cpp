#include "CoreMedia/CMSampleBuffer.h"

#include <cmath>

namespace ios {

bool CMAudioFormat::isUsable() const {
  return channels >= 1 && channels <= 8 && sampleRate >= 1000 && sampleRate <= 384000 &&
         sampleRate == std::trunc(sampleRate);
}

CMTime CMSampleBufferGetPresentationTimeStamp(const CMSampleBufferRef& buffer) {
  return buffer ? buffer->presentationTime() : kCMTimeInvalid;
}

std::size_t CMSampleBufferGetNumSamples(const CMSampleBufferRef& buffer) {
  if (!buffer || buffer->format().channels == 0) return 0;
  return buffer->samples().size() / buffer->format().channels;
}

CMTime CMSampleBufferGetDuration(const CMSampleBufferRef& buffer) {
  if (!buffer || !buffer->format().isUsable()) return kCMTimeInvalid;
  return CMTimeMake(static_cast<CMTimeValue>(CMSampleBufferGetNumSamples(buffer)),
                    static_cast<CMTimeScale>(buffer->format().sampleRate));
}

}  // namespace ios
