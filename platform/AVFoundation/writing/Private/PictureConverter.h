#pragma once

#include "AVFoundation/Private/FFmpeg.h"
#include "CoreVideo/CVPixelBuffer.h"

namespace ios {

/// Turns pixel buffers into the pictures that an encoder takes: limited-range BT.601, 4:2:0, with even
/// sides. Used by one thread at a time.
class PictureConverter {
 public:
  /// `size` is the movie's, as requested.
  explicit PictureConverter(const CVPixelSize& size) : size_(size) {}

  /// `size` with odd sides made even.
  static CVPixelSize evenSize(const CVPixelSize& size);

  /// Makes `buffer` the current picture. True if it differs from the one before.
  MediaResult<bool> convert(const CVPixelBufferRef& buffer);
  /// Of the size `evenSize`; null before the first.
  AVFrame* current() const { return current_.get(); }

 private:
  MediaResult<> prepareSpare();
  MediaResult<> fillSpare(const CVPixelBufferRef& buffer);
  bool spareEqualsCurrent() const;

  const CVPixelSize size_;
  ffmpeg::Frame current_, spare_;
  std::vector<std::uint8_t> stretched_;
};

}  // namespace ios
