#include "AVFoundation/Private/SoundEncoder.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ios {
namespace {

const std::string kOpen = "open the audio encoder";
const std::string kConvert = "convert sound";
const std::string kEncode = "encode sound";
const std::string kFlush = "flush the audio encoder";

constexpr int kMostFrames = 1024;

/// The standard layout of this number of channels.
AVChannelLayout layoutOf(const CMAudioFormat& format) {
  AVChannelLayout layout{};
  av_channel_layout_default(&layout, static_cast<int>(format.channels));
  return layout;
}

int rateOf(const CMAudioFormat& format) {
  return static_cast<int>(format.sampleRate);
}

}  // namespace

SoundEncoder::SoundEncoder(const CMAudioFormat& format, AVSampleFormat sampleFormat)
    : format_(format),
      sampleFormat_(sampleFormat),
      queue_(av_audio_fifo_alloc(sampleFormat, static_cast<int>(format.channels), 4 * kMostFrames)) {}

MediaResult<std::unique_ptr<SoundEncoder>> SoundEncoder::openAAC(const SoundSettings& settings) {
  ffmpeg::keepQuiet();
  IOS_TRY(codecFault(kOpen));
  const AVCodec* codec = ffmpeg::aacEncoder();
  ffmpeg::CodecContext context(codec ? avcodec_alloc_context3(codec) : nullptr);
  std::unique_ptr<SoundEncoder> encoder(new SoundEncoder(settings.format, AV_SAMPLE_FMT_FLTP));
  if (!codec || !context || !encoder->queue_) {
    return failed(kOpen, codec ? AVERROR(ENOMEM) : AVERROR_ENCODER_NOT_FOUND);
  }
  context->sample_fmt = AV_SAMPLE_FMT_FLTP;
  context->sample_rate = rateOf(settings.format);
  context->ch_layout = layoutOf(settings.format);
  context->time_base = {1, context->sample_rate};
  context->bit_rate = settings.bitRate;
  context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
  IOS_TRY(checked(kOpen, avcodec_open2(context.get(), codec, nullptr)));
  encoder->codec_ = std::move(context);
  return encoder;
}

MediaResult<std::unique_ptr<SoundEncoder>> SoundEncoder::openPCM(const CMAudioFormat& format) {
  ffmpeg::keepQuiet();
  IOS_TRY(codecFault(kOpen));
  std::unique_ptr<SoundEncoder> encoder(new SoundEncoder(format, AV_SAMPLE_FMT_S16));
  if (!encoder->queue_) {
    return failed(kOpen, AVERROR(ENOMEM));
  }
  return encoder;
}

ffmpeg::Stream SoundEncoder::stream() const {
  if (codec_) return ffmpeg::streamOf(*codec_);
  ffmpeg::CodecParameters parameters(avcodec_parameters_alloc());
  if (!parameters) return {};
  const int channels = static_cast<int>(format_.channels);
  parameters->codec_type = AVMEDIA_TYPE_AUDIO;
  parameters->codec_id = AV_CODEC_ID_PCM_S16LE;
  parameters->format = AV_SAMPLE_FMT_S16;
  parameters->sample_rate = rateOf(format_);
  parameters->ch_layout = layoutOf(format_);
  parameters->bits_per_coded_sample = 16;
  parameters->block_align = 2 * channels;
  parameters->bit_rate = std::int64_t{16} * channels * rateOf(format_);
  return {std::move(parameters), {1, rateOf(format_)}};
}

MediaResult<> SoundEncoder::prepareResampler(const CMAudioFormat& source) {
  if (resampler_ && source == source_) return {};
  if (resampler_) {
    IOS_TRY(resample(nullptr, 0));
  }
  source_ = source;
  AVChannelLayout from = layoutOf(source), to = layoutOf(format_);
  SwrContext* context = nullptr;
  const int result = swr_alloc_set_opts2(&context, &to, sampleFormat_, rateOf(format_), &from,
                                         AV_SAMPLE_FMT_S16, rateOf(source), 0, nullptr);
  resampler_.reset(context);
  IOS_TRY(checked(kConvert, result));
  return checked(kConvert, swr_init(context));
}

MediaResult<> SoundEncoder::resample(const std::int16_t* samples, int frames) {
  const int most = swr_get_out_samples(resampler_.get(), frames);
  if (most <= 0) return checked(kConvert, most);
  ffmpeg::Frame out(av_frame_alloc());
  if (!out) return failed(kConvert, AVERROR(ENOMEM));
  out->format = sampleFormat_;
  out->ch_layout = layoutOf(format_);
  out->sample_rate = rateOf(format_);
  out->nb_samples = most;
  IOS_TRY(checked(kConvert, av_frame_get_buffer(out.get(), 0)));
  const auto* input = reinterpret_cast<const std::uint8_t*>(samples);
  const int converted =
      swr_convert(resampler_.get(), out->extended_data, most, samples ? &input : nullptr, frames);
  IOS_TRY(checked(kConvert, converted));
  return checked(kConvert,
                 av_audio_fifo_write(queue_.get(), reinterpret_cast<void**>(out->extended_data), converted));
}

MediaResult<> SoundEncoder::encode(std::span<const std::int16_t> samples, const CMAudioFormat& format,
                                   const ffmpeg::PacketSink& sink) {
  IOS_TRY(codecFault(kEncode));
  IOS_TRY(prepareResampler(format));
  IOS_TRY(resample(samples.data(), static_cast<int>(samples.size() / format.channels)));
  return encodeQueued(false, sink);
}

MediaResult<> SoundEncoder::flush(const ffmpeg::PacketSink& sink) {
  IOS_TRY(codecFault(kFlush));
  if (resampler_) {
    IOS_TRY(resample(nullptr, 0));
  }
  IOS_TRY(encodeQueued(true, sink));
  if (!codec_) return {};
  return ffmpeg::encode(*codec_, nullptr, kFlush, sink);
}

MediaResult<> SoundEncoder::encodeQueued(bool everything, const ffmpeg::PacketSink& sink) {
  // AAC has frames of one size, but for the last; plain samples go as they are.
  const int size = codec_ ? codec_->frame_size : kMostFrames;
  const int least = codec_ && !everything ? size : 1;
  while (av_audio_fifo_size(queue_.get()) >= least) {
    IOS_TRY(encodeFrame(std::min(size, av_audio_fifo_size(queue_.get())), sink));
  }
  return {};
}

MediaResult<> SoundEncoder::encodeFrame(int frames, const ffmpeg::PacketSink& sink) {
  const std::int64_t time = time_;
  time_ += frames;
  if (!codec_) {
    ffmpeg::Packet packet(av_packet_alloc());
    if (!packet || av_new_packet(packet.get(), frames * static_cast<int>(format_.channels) * 2) < 0) {
      return failed(kEncode, AVERROR(ENOMEM));
    }
    void* planes[] = {packet->data};
    IOS_TRY(checked(kEncode, av_audio_fifo_read(queue_.get(), planes, frames)));
    packet->pts = packet->dts = time;
    packet->duration = frames;
    packet->flags |= AV_PKT_FLAG_KEY;
    return sink(*packet);
  }
  ffmpeg::Frame frame(av_frame_alloc());
  if (!frame) return failed(kEncode, AVERROR(ENOMEM));
  frame->format = sampleFormat_;
  frame->ch_layout = layoutOf(format_);
  frame->sample_rate = rateOf(format_);
  frame->nb_samples = frames;
  frame->pts = time;
  IOS_TRY(checked(kEncode, av_frame_get_buffer(frame.get(), 0)));
  IOS_TRY(checked(kEncode,
                  av_audio_fifo_read(queue_.get(), reinterpret_cast<void**>(frame->extended_data), frames)));
  return ffmpeg::encode(*codec_, frame.get(), kEncode, sink);
}

}  // namespace ios
