#include "AVFoundation/VideoTrack+Private.h"

#include <algorithm>
#include <utility>

#include "AVFoundation/MovieWriter+Private.h"

namespace ios {
namespace {

// Files count the units from one picture to the next in 32 bits.
constexpr std::int64_t kLongestPicture = std::int64_t{40000} * VideoEncoder::kTimescale;

}  // namespace

MediaFailure VideoTrack::open() {
  MediaFailure failure;
  encoder_ = VideoEncoder::open(settings_, failure);
  if (!failure) describe(encoder_->stream());
  return failure;
}

MediaFailure VideoTrack::take(MovieWriter& writer, const CVPixelBufferRef& buffer, const CMTime& time) {
  if (CMTimeCompare(time, kCMTimeZero) < 0) return std::nullopt;
  const std::int64_t units = CMTimeConvertScale(time, VideoEncoder::kTimescale).value;
  if (lastUnits_ >= 0 && units - lastUnits_ > kLongestPicture) {
    return MediaError::refusal("append to the movie", "there was no picture for too long a time");
  }
  // Times closer to each other than a unit stay apart.
  lastUnits_ = std::max(units, lastUnits_ + 1);
  return encoder_->encode(buffer, lastUnits_, sink(writer));
}

MediaFailure VideoTrack::flush(MovieWriter& writer) {
  // The encoder's memory goes now: who finished the movie may keep the input.
  const auto encoder = std::move(encoder_);
  return encoder->flush(sink(writer));
}

}  // namespace ios
