#pragma once

#include <memory>

#include "AVFoundation/Private/MovieTrack.h"
#include "AVFoundation/Private/VideoEncoder.h"

namespace ios {

class VideoTrack : public MovieTrack {
 public:
  explicit VideoTrack(const VideoEncoder::Settings& settings) : settings_(settings) {}
  MediaResult<> open() override;

 protected:
  MediaResult<> take(MovieWriter& writer, const CVPixelBufferRef& buffer, const CMTime& time) override;
  MediaResult<> flush(MovieWriter& writer) override;

 private:
  const VideoEncoder::Settings settings_;
  std::unique_ptr<VideoEncoder> encoder_;
  std::int64_t lastUnits_ = -1;
};

}  // namespace ios
