#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "AVFoundation/FFmpeg+Private.h"
#include "AVFoundation/MediaError+Private.h"

namespace ios {

/// Reads one kind of media of a movie file and decodes it. One thread at a time.
class MovieReader {
 public:
  /// `kind` is AVMEDIA_TYPE_VIDEO or AVMEDIA_TYPE_AUDIO. Null, with `failure` set, for a file that is no
  /// movie (of the QuickTime kinds: others could lead to other files) or has none of it.
  static std::unique_ptr<MovieReader> open(const std::filesystem::path& path, AVMediaType kind,
                                           MediaFailure& failure);

  /// Of the whole movie, in seconds.
  double duration() const { return duration_; }
  /// The next frame; null at the end, and when `failure` is set. It is gone after the next call.
  const AVFrame* next(MediaFailure& failure);
  /// When `frame` is to be shown or heard, in seconds.
  double timeOf(const AVFrame& frame) const;
  /// The next frame will be one at or before `seconds`.
  [[nodiscard]] MediaFailure seek(double seconds);

 private:
  struct CloseInput {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
  };
  MovieReader() = default;

  std::unique_ptr<AVFormatContext, CloseInput> input_;
  ffmpeg::CodecContext codec_;
  ffmpeg::Packet packet_;
  ffmpeg::Frame frame_;
  int stream_ = -1;
  bool drained_ = false;
  double duration_ = 0;
};

}  // namespace ios
