#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <functional>
#include <memory>

#include "AVFoundation/Private/MediaError.h"

namespace ios::ffmpeg {

/// FFmpeg's handles, freed by the functions it has for that, which take the handle's address.
template <auto Free>
struct Release {
  template <class T>
  void operator()(T* handle) const {
    Free(&handle);
  }
};

using Frame = std::unique_ptr<AVFrame, Release<av_frame_free>>;
using Packet = std::unique_ptr<AVPacket, Release<av_packet_free>>;
using CodecContext = std::unique_ptr<AVCodecContext, Release<avcodec_free_context>>;
using CodecParameters = std::unique_ptr<AVCodecParameters, Release<avcodec_parameters_free>>;
using Resampler = std::unique_ptr<SwrContext, Release<swr_free>>;

struct FreeFifo {
  void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};
using AudioFifo = std::unique_ptr<AVAudioFifo, FreeFifo>;

struct FreeFormat {
  void operator()(AVFormatContext* format) const { avformat_free_context(format); }
};
using FormatContext = std::unique_ptr<AVFormatContext, FreeFormat>;

struct FreeIO {
  void operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
  }
};
using IOContext = std::unique_ptr<AVIOContext, FreeIO>;

/// Takes a packet of encoded media; may change it. A failure ends the encoding.
using PacketSink = std::function<MediaResult<>(AVPacket&)>;

/// Sends `frame` (null: the end) to the encoder, and every packet that results to `sink`.
[[nodiscard]] MediaResult<> encode(AVCodecContext& codec, const AVFrame* frame, const std::string& operation,
                                   const PacketSink& sink);

/// Null when FFmpeg was built without it.
const AVCodec* aacEncoder();

/// How a track is described in the file.
struct Stream {
  CodecParameters parameters;
  AVRational timeBase{};
};
/// Empty when out of memory.
Stream streamOf(const AVCodecContext& codec);

/// Turns off FFmpeg's log on standard error: the platform's errors report its failures instead.
void keepQuiet();

}  // namespace ios::ffmpeg
