#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "AVFoundation/Private/FFmpeg.h"
#include "AVFoundation/Private/MediaError.h"

namespace ios {

/// Reads one kind of media of a movie file and decodes it. One thread at a time.
class MovieReader {
 public:
  /// `kind` is AVMEDIA_TYPE_VIDEO or AVMEDIA_TYPE_AUDIO. Fails for a file that is not a movie (of the QuickTime family:
  /// other formats can refer to other files) or has no media of that kind.
  static MediaResult<std::unique_ptr<MovieReader>> open(const std::filesystem::path& path, AVMediaType kind);

  /// Of the whole movie, in seconds.
  double duration() const { return duration_; }
  /// The next frame; null at the end. It is gone after the next call.
  MediaResult<const AVFrame*> next();
  /// When `frame` is to be shown or heard, in seconds.
  double timeOf(const AVFrame& frame) const;
  /// The next frame will be one at or before `seconds`.
  [[nodiscard]] MediaResult<> seek(double seconds);

 private:
  struct CloseInput {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
  };
  MovieReader() = default;
  /// At the end of the file: whether its index has more. One that was cut off between two pictures looks whole otherwise.
  bool breaksOff() const;

  std::unique_ptr<AVFormatContext, CloseInput> input_;
  ffmpeg::CodecContext codec_;
  ffmpeg::Packet packet_;
  ffmpeg::Frame frame_;
  int stream_ = -1;
  bool drained_ = false;
  std::int64_t lastRead_ = AV_NOPTS_VALUE;  // the newest packet's time, since the start or the last seek
  double duration_ = 0;
};

}  // namespace ios
