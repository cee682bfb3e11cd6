#include "AVFoundation/Private/AudioTrack.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "AVFoundation/Private/MovieWriter.h"

namespace ios {
namespace {

const std::string kAppend = "append to the movie";

// Clocks that stamp buffers are not exact to the frame; less than this is neither a gap nor an overlap.
constexpr double kJitter = 0.005;
constexpr double kLongestGap = 600;
constexpr std::size_t kSilence = 1024;

}  // namespace

MediaResult<> AudioTrack::open() {
  if (!settings_) return {};
  return openFor(settings_->format);
}

MediaResult<> AudioTrack::openFor(const CMAudioFormat& format) {
  encoder_ = IOS_TRY(settings_ ? SoundEncoder::openAAC(*settings_) : SoundEncoder::openPCM(format));
  describe(encoder_->stream());
  return {};
}

MediaResult<> AudioTrack::take(MovieWriter& writer, const CMSampleBufferRef& buffer, const CMTime& time) {
  const CMAudioFormat format = buffer->format();
  if (!format.isUsable()) return refused(kAppend, "the sound's format cannot be used");
  const double rate = format.sampleRate;
  const auto count = static_cast<double>(CMSampleBufferGetNumSamples(buffer));
  const bool first = !CMTIME_IS_VALID(end_);
  const double start = CMTimeGetSeconds(time);
  // How many frames lie between the end of the sound so far and the start of this buffer; negative if they overlap.
  const double gap = std::round((start - (first ? 0 : CMTimeGetSeconds(end_))) * rate);
  const double cut = first ? std::max(0.0, -gap) : (gap < -kJitter * rate ? -gap : 0);
  if (cut >= count) return {};
  if (!first && gap > kLongestGap * rate) return refused(kAppend, "the sound has a gap that is too long");

  if (!encoder_) {
    IOS_TRY(openFor(format));
  }
  if (first) {
    const CMTime at = cut > 0 ? kCMTimeZero : time;
    encoder_->start(CMTimeConvertScale(at, static_cast<CMTimeScale>(encoder_->format().sampleRate)).value);
    end_ = at;
  } else if (gap > kJitter * rate) {
    IOS_TRY(encodeSilence(writer, static_cast<std::int64_t>(gap), format));
  }
  const std::span<const std::int16_t> samples(buffer->samples().data(),
                                              static_cast<std::size_t>(count) * format.channels);
  return encode(writer, samples.subspan(static_cast<std::size_t>(cut) * format.channels), format);
}

MediaResult<> AudioTrack::encodeSilence(MovieWriter& writer, std::int64_t frames,
                                        const CMAudioFormat& format) {
  const std::vector<std::int16_t> silence(kSilence * format.channels);
  for (; frames > 0; frames -= kSilence) {
    const auto count = std::min<std::size_t>(kSilence, static_cast<std::size_t>(frames));
    IOS_TRY(encode(writer, std::span(silence).first(count * format.channels), format));
  }
  return {};
}

MediaResult<> AudioTrack::encode(MovieWriter& writer, std::span<const std::int16_t> samples,
                                 const CMAudioFormat& format) {
  const auto frames = static_cast<CMTimeValue>(samples.size() / format.channels);
  end_ = CMTimeAdd(end_, CMTimeMake(frames, static_cast<CMTimeScale>(format.sampleRate)));
  return encoder_->encode(samples, format, sink(writer));
}

MediaResult<> AudioTrack::flush(MovieWriter& writer) {
  const auto encoder = std::move(encoder_);
  if (!encoder) return {};
  return encoder->flush(sink(writer));
}

}  // namespace ios
