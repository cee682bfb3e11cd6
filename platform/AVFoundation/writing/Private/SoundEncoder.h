#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "AVFoundation/Private/FFmpeg.h"
#include "AVFoundation/Private/SoundSettings.h"
#include "CoreMedia/CMSampleBuffer.h"

namespace ios {

/// A movie's sound as AAC or as plain samples, of one format whatever it is fed. Used by
/// one thread at a time.
class SoundEncoder {
 public:
  static MediaResult<std::unique_ptr<SoundEncoder>> openAAC(const SoundSettings& settings);
  static MediaResult<std::unique_ptr<SoundEncoder>> openPCM(const CMAudioFormat& format);

  const CMAudioFormat& format() const { return format_; }
  ffmpeg::Stream stream() const;
  /// Sets the time of the first frame, in frames. To be called before `encode`.
  void start(std::int64_t time) { time_ = time; }
  /// `samples` in `format`, whole frames.
  [[nodiscard]] MediaResult<> encode(std::span<const std::int16_t> samples, const CMAudioFormat& format,
                                     const ffmpeg::PacketSink& sink);
  /// Flushes what is still inside. Nothing can be encoded afterwards.
  [[nodiscard]] MediaResult<> flush(const ffmpeg::PacketSink& sink);

 private:
  SoundEncoder(const CMAudioFormat& format, AVSampleFormat sampleFormat);
  MediaResult<> prepareResampler(const CMAudioFormat& source);
  /// Through the resampler into the queue; null samples drain it.
  MediaResult<> resample(const std::int16_t* samples, int frames);
  MediaResult<> encodeQueued(bool everything, const ffmpeg::PacketSink& sink);
  MediaResult<> encodeFrame(int frames, const ffmpeg::PacketSink& sink);

  const CMAudioFormat format_;
  const AVSampleFormat sampleFormat_;
  ffmpeg::CodecContext codec_;  // null for plain samples
  ffmpeg::AudioFifo queue_;
  CMAudioFormat source_;
  ffmpeg::Resampler resampler_;
  std::int64_t time_ = 0;  // of the first frame in the queue
};

}  // namespace ios
