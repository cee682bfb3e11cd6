#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "AVFoundation/EncodingThread+Private.h"
#include "AVFoundation/FFmpeg+Private.h"
#include "AVFoundation/PictureConverter+Private.h"
#include "AVFoundation/RepeatedPictures+Private.h"
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
    int keyInterval = 250;  // pictures
    /// Empty for settings that cannot be met.
    static std::optional<Settings> from(const NSDictionary& outputSettings);
  };
  /// Units of the times, a second: milliseconds and the usual frame rates are whole numbers of them.
  static constexpr int kTimescale = 90000;

  /// Null, with `failure` set, when the encoder cannot be set up.
  static std::unique_ptr<VideoEncoder> open(const Settings& settings, MediaFailure& failure);

  ffmpeg::Stream stream() const { return ffmpeg::streamOf(*codec_); }
  /// `time` in units of 1 / `kTimescale` s, greater than the last one. What comes of a picture, packets in
  /// their order or a failure, comes out of the next call. Returns when that picture can be encoded: a caller
  /// who is quicker than the encoder waits here, so `buffer` is the only one in use.
  [[nodiscard]] MediaFailure encode(const CVPixelBufferRef& buffer, std::int64_t time,
                                    const ffmpeg::PacketSink& sink);
  /// What is still inside. Nothing can be encoded afterwards.
  [[nodiscard]] MediaFailure flush(const ffmpeg::PacketSink& sink);

 private:
  struct Queued {
    bool repeated = false;
    bool key = false;  // asked for as a key picture; the encoder makes others of its own accord
    std::int64_t time = 0;
  };
  VideoEncoder(const Settings& settings, ffmpeg::CodecContext codec);
  bool mayRepeat() const;
  /// Waits for the picture that is being encoded, and gives out what came of it.
  MediaFailure settle(const ffmpeg::PacketSink& sink);
  MediaFailure take(AVPacket& packet, const ffmpeg::PacketSink& sink);
  /// Gives out the repeated pictures whose turn it is.
  MediaFailure giveRepeated(const ffmpeg::PacketSink& sink);
  MediaFailure give(AVPacket& packet, std::int64_t time, const ffmpeg::PacketSink& sink);

  const Settings settings_;
  ffmpeg::CodecContext codec_;
  PictureConverter converter_;
  std::optional<RepeatedPictures> repeats_;
  std::deque<Queued> queue_;  // pictures not given out yet, in order
  int unchanged_ = 0;         // pictures since the last change
  int sinceKey_ = 0;          // pictures since the last key picture
  int quantiser_ = 51;        // of the last picture that came out; coarsest at first
  std::int64_t lastTime_ = -1;
  std::vector<ffmpeg::Packet>
      encoded_;  // with `outcome_`: written by the thread, read when it has been waited for
  MediaFailure outcome_;
  EncodingThread thread_;  // the first to go: it uses the rest
};

}  // namespace ios
