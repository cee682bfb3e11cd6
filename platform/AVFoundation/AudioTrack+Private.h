#pragma once

#include <memory>
#include <optional>

#include "AVFoundation/MovieTrack+Private.h"
#include "AVFoundation/SoundEncoder+Private.h"

namespace ios {

class AudioTrack : public MovieTrack {
 public:
  /// Without settings: plain samples in the format of the first buffer.
  explicit AudioTrack(const std::optional<SoundEncoder::Settings>& settings) : settings_(settings) {}
  MediaFailure open() override;

 protected:
  MediaFailure take(MovieWriter& writer, const CMSampleBufferRef& buffer, const CMTime& time) override;
  MediaFailure flush(MovieWriter& writer) override;

 private:
  MediaFailure openFor(const CMAudioFormat& format);
  MediaFailure encodeSilence(MovieWriter& writer, std::int64_t frames, const CMAudioFormat& format);
  MediaFailure encode(MovieWriter& writer, std::span<const std::int16_t> samples,
                      const CMAudioFormat& format);

  const std::optional<SoundEncoder::Settings> settings_;
  std::unique_ptr<SoundEncoder> encoder_;
  CMTime end_ = kCMTimeInvalid;  // where the sound so far ends, from the movie's start
};

}  // namespace ios
