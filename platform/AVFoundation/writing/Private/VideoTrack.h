#pragma once

#include <memory>

#include "AVFoundation/MovieTrack+Private.h"
#include "AVFoundation/VideoEncoder+Private.h"

namespace ios {

class VideoTrack : public MovieTrack {
 public:
  explicit VideoTrack(const VideoEncoder::Settings& settings) : settings_(settings) {}
  MediaFailure open() override;

 protected:
  MediaFailure take(MovieWriter& writer, const CVPixelBufferRef& buffer, const CMTime& time) override;
  MediaFailure flush(MovieWriter& writer) override;

 private:
  const VideoEncoder::Settings settings_;
  std::unique_ptr<VideoEncoder> encoder_;
  std::int64_t lastUnits_ = -1;
};

}  // namespace ios
