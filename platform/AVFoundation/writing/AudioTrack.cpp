#include "AVFoundation/AudioTrack+Private.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "AVFoundation/MovieWriter+Private.h"

namespace ios {
namespace {

const std::string kAppend = "append to the movie";

// Clocks that stamp buffers are not exact to the frame; less than this is no gap and no overlap.
constexpr double kJitter = 0.005;
constexpr double kLongestGap = 600;
constexpr std::size_t kSilence = 1024;

}  // namespace

MediaFailure AudioTrack::open() {
  return settings_ ? openFor(settings_->format) : std::nullopt;
}

MediaFailure AudioTrack::openFor(const CMAudioFormat& format) {
  MediaFailure failure;
  encoder_ = settings_ ? SoundEncoder::openAAC(*settings_, failure) : SoundEncoder::openPCM(format, failure);
  if (!failure) describe(encoder_->stream());
  return failure;
}

MediaFailure AudioTrack::take(MovieWriter& writer, const CMSampleBufferRef& buffer, const CMTime& time) {
  const CMAudioFormat format = buffer->format();
  if (!format.isUsable()) return MediaError::refusal(kAppend, "the sound's format cannot be used");
  const double rate = format.sampleRate;
  const auto count = static_cast<double>(CMSampleBufferGetNumSamples(buffer));
  const bool first = !CMTIME_IS_VALID(end_);
  const double start = CMTimeGetSeconds(time);
  // How many frames lie between where sound is wanted next and where this begins; negative: have come before.
  const double gap = std::round((start - (first ? 0 : CMTimeGetSeconds(end_))) * rate);
  const double cut = first ? std::max(0.0, -gap) : (gap < -kJitter * rate ? -gap : 0);
  if (cut >= count) return std::nullopt;
  if (!first && gap > kLongestGap * rate)
    return MediaError::refusal(kAppend, "the sound has a gap that is too long");

  if (!encoder_) {
    if (auto failure = openFor(format)) return failure;
  }
  if (first) {
    const CMTime at = cut > 0 ? kCMTimeZero : time;
    encoder_->start(CMTimeConvertScale(at, static_cast<CMTimeScale>(encoder_->format().sampleRate)).value);
    end_ = at;
  } else if (gap > kJitter * rate) {
    if (auto failure = encodeSilence(writer, static_cast<std::int64_t>(gap), format)) return failure;
  }
  const std::span<const std::int16_t> samples(buffer->samples().data(),
                                              static_cast<std::size_t>(count) * format.channels);
  return encode(writer, samples.subspan(static_cast<std::size_t>(cut) * format.channels), format);
}

MediaFailure AudioTrack::encodeSilence(MovieWriter& writer, std::int64_t frames,
                                       const CMAudioFormat& format) {
  const std::vector<std::int16_t> silence(kSilence * format.channels);
  for (; frames > 0; frames -= kSilence) {
    const auto count = std::min<std::size_t>(kSilence, static_cast<std::size_t>(frames));
    if (auto failure = encode(writer, std::span(silence).first(count * format.channels), format))
      return failure;
  }
  return std::nullopt;
}

MediaFailure AudioTrack::encode(MovieWriter& writer, std::span<const std::int16_t> samples,
                                const CMAudioFormat& format) {
  const auto frames = static_cast<CMTimeValue>(samples.size() / format.channels);
  end_ = CMTimeAdd(end_, CMTimeMake(frames, static_cast<CMTimeScale>(format.sampleRate)));
  return encoder_->encode(samples, format, sink(writer));
}

MediaFailure AudioTrack::flush(MovieWriter& writer) {
  const auto encoder = std::move(encoder_);
  return encoder ? encoder->flush(sink(writer)) : std::nullopt;
}

}  // namespace ios
