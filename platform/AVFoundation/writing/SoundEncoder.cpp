#include "AVFoundation/SoundEncoder+Private.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "AVFoundation/AVAudioSettings.h"
#include "CoreVideo/CVPixelBuffer+Private.h"

namespace ios {
namespace {

const std::string kOpen = "open the audio encoder";
const std::string kConvert = "convert sound";
const std::string kEncode = "encode sound";
const std::string kFlush = "flush the audio encoder";

constexpr int kMostFrames = 1024;

const AVCodec* aacCodec() {
  return avcodec_find_encoder_by_name("aac");
}

bool supportsRate(const AVCodec& codec, double rate) {
  for (const int* supported = codec.supported_samplerates; supported && *supported; ++supported) {
    if (*supported == rate) return true;
  }
  return false;
}

/// The standard arrangement of so many loudspeakers.
AVChannelLayout layoutOf(const CMAudioFormat& format) {
  AVChannelLayout layout{};
  av_channel_layout_default(&layout, static_cast<int>(format.channels));
  return layout;
}

int rateOf(const CMAudioFormat& format) {
  return static_cast<int>(format.sampleRate);
}

}  // namespace

std::optional<SoundEncoder::Settings> SoundEncoder::Settings::from(const NSDictionary& output) {
  const AVCodec* codec = aacCodec();
  Settings settings;
  settings.format.sampleRate = numberAt(output, AVSampleRateKey, 0);
  const double channels = numberAt(output, AVNumberOfChannelsKey, 0);
  if (numberAt(output, AVFormatIDKey, 0) != static_cast<double>(kAudioFormatMPEG4AAC) ||
      (channels != 1 && channels != 2)) {
    return std::nullopt;
  }
  if (codec && !supportsRate(*codec, settings.format.sampleRate)) return std::nullopt;
  settings.format.channels = static_cast<std::uint32_t>(channels);
  const double bitRate = numberAt(output, AVEncoderBitRateKey, 64000 * channels);
  if (!(bitRate >= 1000 && bitRate <= 1e6)) return std::nullopt;
  settings.bitRate = std::llround(bitRate);
  return settings;
}

SoundEncoder::SoundEncoder(const CMAudioFormat& format, AVSampleFormat sampleFormat)
    : format_(format),
      sampleFormat_(sampleFormat),
      queue_(av_audio_fifo_alloc(sampleFormat, static_cast<int>(format.channels), 4 * kMostFrames)) {}

std::unique_ptr<SoundEncoder> SoundEncoder::openAAC(const Settings& settings, MediaFailure& failure) {
  ffmpeg::keepQuiet();
  if ((failure = codecFault(kOpen))) return nullptr;
  const AVCodec* codec = aacCodec();
  ffmpeg::CodecContext context(codec ? avcodec_alloc_context3(codec) : nullptr);
  std::unique_ptr<SoundEncoder> encoder(new SoundEncoder(settings.format, AV_SAMPLE_FMT_FLTP));
  if (!codec || !context || !encoder->queue_) {
    failure = failed(kOpen, codec ? AVERROR(ENOMEM) : AVERROR_ENCODER_NOT_FOUND);
    return nullptr;
  }
  context->sample_fmt = AV_SAMPLE_FMT_FLTP;
  context->sample_rate = rateOf(settings.format);
  context->ch_layout = layoutOf(settings.format);
  context->time_base = {1, context->sample_rate};
  context->bit_rate = settings.bitRate;
  context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
  if ((failure = failed(kOpen, avcodec_open2(context.get(), codec, nullptr)))) return nullptr;
  encoder->codec_ = std::move(context);
  return encoder;
}

std::unique_ptr<SoundEncoder> SoundEncoder::openPCM(const CMAudioFormat& format, MediaFailure& failure) {
  ffmpeg::keepQuiet();
  if ((failure = codecFault(kOpen))) return nullptr;
  std::unique_ptr<SoundEncoder> encoder(new SoundEncoder(format, AV_SAMPLE_FMT_S16));
  if (!encoder->queue_) {
    failure = failed(kOpen, AVERROR(ENOMEM));
    return nullptr;
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

MediaFailure SoundEncoder::prepareResampler(const CMAudioFormat& source) {
  if (resampler_ && source == source_) return std::nullopt;
  if (resampler_) {
    if (auto failure = resample(nullptr, 0)) return failure;
  }
  source_ = source;
  AVChannelLayout from = layoutOf(source), to = layoutOf(format_);
  SwrContext* context = nullptr;
  const int result = swr_alloc_set_opts2(&context, &to, sampleFormat_, rateOf(format_), &from,
                                         AV_SAMPLE_FMT_S16, rateOf(source), 0, nullptr);
  resampler_.reset(context);
  if (auto failure = failed(kConvert, result)) return failure;
  return failed(kConvert, swr_init(context));
}

MediaFailure SoundEncoder::resample(const std::int16_t* samples, int frames) {
  const int most = swr_get_out_samples(resampler_.get(), frames);
  if (most <= 0) return failed(kConvert, most);
  ffmpeg::Frame out(av_frame_alloc());
  if (!out) return failed(kConvert, AVERROR(ENOMEM));
  out->format = sampleFormat_;
  out->ch_layout = layoutOf(format_);
  out->sample_rate = rateOf(format_);
  out->nb_samples = most;
  if (auto failure = failed(kConvert, av_frame_get_buffer(out.get(), 0))) return failure;
  const auto* input = reinterpret_cast<const std::uint8_t*>(samples);
  const int converted =
      swr_convert(resampler_.get(), out->extended_data, most, samples ? &input : nullptr, frames);
  if (auto failure = failed(kConvert, converted)) return failure;
  return failed(kConvert,
                av_audio_fifo_write(queue_.get(), reinterpret_cast<void**>(out->extended_data), converted));
}

MediaFailure SoundEncoder::encode(std::span<const std::int16_t> samples, const CMAudioFormat& format,
                                  const ffmpeg::PacketSink& sink) {
  if (auto fault = codecFault(kEncode)) return fault;
  if (auto failure = prepareResampler(format)) return failure;
  if (auto failure = resample(samples.data(), static_cast<int>(samples.size() / format.channels)))
    return failure;
  return encodeQueued(false, sink);
}

MediaFailure SoundEncoder::flush(const ffmpeg::PacketSink& sink) {
  if (auto fault = codecFault(kFlush)) return fault;
  if (resampler_) {
    if (auto failure = resample(nullptr, 0)) return failure;
  }
  if (auto failure = encodeQueued(true, sink)) return failure;
  return codec_ ? ffmpeg::encode(*codec_, nullptr, kFlush, sink) : std::nullopt;
}

MediaFailure SoundEncoder::encodeQueued(bool everything, const ffmpeg::PacketSink& sink) {
  // AAC has frames of one size, but for the last; plain samples go as they are.
  const int size = codec_ ? codec_->frame_size : kMostFrames;
  const int least = codec_ && !everything ? size : 1;
  while (av_audio_fifo_size(queue_.get()) >= least) {
    if (auto failure = encodeFrame(std::min(size, av_audio_fifo_size(queue_.get())), sink)) return failure;
  }
  return std::nullopt;
}

MediaFailure SoundEncoder::encodeFrame(int frames, const ffmpeg::PacketSink& sink) {
  const std::int64_t time = time_;
  time_ += frames;
  if (!codec_) {
    ffmpeg::Packet packet(av_packet_alloc());
    if (!packet || av_new_packet(packet.get(), frames * static_cast<int>(format_.channels) * 2) < 0) {
      return failed(kEncode, AVERROR(ENOMEM));
    }
    void* planes[] = {packet->data};
    if (auto failure = failed(kEncode, av_audio_fifo_read(queue_.get(), planes, frames))) return failure;
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
  if (auto failure = failed(kEncode, av_frame_get_buffer(frame.get(), 0))) return failure;
  if (auto failure =
          failed(kEncode,
                 av_audio_fifo_read(queue_.get(), reinterpret_cast<void**>(frame->extended_data), frames))) {
    return failure;
  }
  return ffmpeg::encode(*codec_, frame.get(), kEncode, sink);
}

}  // namespace ios
