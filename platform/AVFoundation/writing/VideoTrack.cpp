#include "AVFoundation/Private/VideoTrack.h"

#include <algorithm>
#include <utility>

#include "AVFoundation/Private/MovieWriter.h"

namespace ios {
namespace {

// Files count the units from one picture to the next in 32 bits.
constexpr std::int64_t kLongestPicture = std::int64_t{40000} * VideoEncoder::kTimescale;

}  // namespace

MediaResult<> VideoTrack::open() {
  encoder_ = IOS_TRY(VideoEncoder::open(settings_));
  return {};
}

MediaResult<> VideoTrack::take(MovieWriter& writer, const CVPixelBufferRef& buffer, const CMTime& time) {
  if (CMTimeCompare(time, kCMTimeZero) < 0) return {};
  const std::int64_t units = CMTimeConvertScale(time, VideoEncoder::kTimescale).value;
  if (lastUnits_ >= 0 && units - lastUnits_ > kLongestPicture) {
    return refused("append to the movie", "there was no picture for too long a time");
  }
  // Times closer to each other than a unit stay apart.
  lastUnits_ = std::max(units, lastUnits_ + 1);
  return encoder_->encode(buffer, lastUnits_, sink(writer));
}

MediaResult<> VideoTrack::flush(MovieWriter& writer) {
  // Frees the encoder's memory now: the application may keep the input after it finished the movie.
  const auto encoder = std::move(encoder_);
  if (!encoder) return {};
  auto flushed = encoder->flush(sink(writer));
  describe(encoder->stream());
  return flushed;
}

}  // namespace ios
