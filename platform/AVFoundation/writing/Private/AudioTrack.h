#pragma once

#include <memory>
#include <optional>

#include "AVFoundation/Private/MovieTrack.h"
#include "AVFoundation/Private/SoundEncoder.h"

namespace ios {

class AudioTrack : public MovieTrack {
 public:
  /// Without settings: plain samples in the format of the first buffer.
  explicit AudioTrack(const std::optional<SoundSettings>& settings) : settings_(settings) {}
  MediaResult<> open() override;

 protected:
  MediaResult<> take(MovieWriter& writer, const CMSampleBufferRef& buffer, const CMTime& time) override;
  MediaResult<> flush(MovieWriter& writer) override;

 private:
  MediaResult<> openFor(const CMAudioFormat& format);
  MediaResult<> encodeSilence(MovieWriter& writer, std::int64_t frames, const CMAudioFormat& format);
  MediaResult<> encode(MovieWriter& writer, std::span<const std::int16_t> samples,
                       const CMAudioFormat& format);

  const std::optional<SoundSettings> settings_;
  std::unique_ptr<SoundEncoder> encoder_;
  CMTime end_ = kCMTimeInvalid;  // where the sound so far ends, from the movie's start
};

}  // namespace ios
