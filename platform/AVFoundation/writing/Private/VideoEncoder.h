#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "AVFoundation/Private/BitBudget.h"
#include "AVFoundation/Private/EncodingThread.h"
#include "AVFoundation/Private/FFmpeg.h"
#include "AVFoundation/Private/PictureConverter.h"
#include "AVFoundation/Private/RepeatedPictures.h"
#include "CoreFoundation/PropertyList.h"

namespace ios {

/// H.264 of a movie's pictures. A picture is converted by who appends it and encoded on a thread of its own
/// while the next one is drawn. Pictures that equal the one before cost next to nothing, once the encoder has
/// brought the still picture to good quality. Used by one thread at a time.
class VideoEncoder {
 public:
  struct Settings {
    CVPixelSize size;
    std::int64_t bitRate = 0;
    int keyInterval = 0;  // pictures
    /// Empty for settings that cannot be met.
    static std::optional<Settings> from(const NSDictionary& outputSettings);
  };
  /// Units of the times, a second: milliseconds and the usual frame rates are whole numbers of them.
  static constexpr int kTimescale = 90000;

  static MediaResult<std::unique_ptr<VideoEncoder>> open(const Settings& settings);

  /// Final when all pictures have been encoded.
  ffmpeg::Stream stream() const { return ffmpeg::streamOf(*codec_); }
  /// `time` in units of 1 / `kTimescale` s, greater than the last one. The result of a picture, packets in order or a
  /// failure, is delivered by the next call. Returns when the encoder is free for this picture: a caller that is faster
  /// than the encoder waits here, so `buffer` is the only one in use.
  [[nodiscard]] MediaResult<> encode(const CVPixelBufferRef& buffer, std::int64_t time,
                                     const ffmpeg::PacketSink& sink);
  /// Flushes what is still inside. Nothing can be encoded afterwards.
  [[nodiscard]] MediaResult<> flush(const ffmpeg::PacketSink& sink);

 private:
  explicit VideoEncoder(const Settings& settings);
  MediaResult<> openCodec(double quantiser);
  bool mayRepeat() const;
  /// On the thread. A first picture that turns out too large is encoded once more by a codec opened anew, as if nothing
  /// had been encoded before.
  MediaResult<> encode(const AVFrame* picture);
  /// Waits for the picture that is being encoded, and hands out the result.
  MediaResult<> settle(const ffmpeg::PacketSink& sink);
  MediaResult<> take(AVPacket& packet, const ffmpeg::PacketSink& sink);
  MediaResult<> give(const std::vector<std::uint8_t>& bytes, int flags, std::int64_t time,
                     const ffmpeg::PacketSink& sink);
  MediaResult<> give(AVPacket& packet, std::int64_t time, const ffmpeg::PacketSink& sink);

  const Settings settings_;
  PictureConverter converter_;
  BitBudget budget_;
  std::optional<RepeatedPictures> repeats_;
  bool fine_ = false;           // whether the last picture is as fine as it gets
  int unchanged_ = 0;           // pictures since the last change
  int sinceKey_ = 0;            // pictures since the last key picture
  std::int64_t time_ = 0;       // of the picture that is being encoded
  std::int64_t lastTime_ = -1;  // of the last one that was given out
  // Owned by the thread from the beginning of its work until that has been waited for.
  ffmpeg::CodecContext codec_;
  double quantiser_ = BitBudget::kSharp;  // of the picture
  ffmpeg::Packet encoded_;
  MediaResult<> outcome_;
  EncodingThread thread_;  // destroyed first: it uses the rest
};

}  // namespace ios
