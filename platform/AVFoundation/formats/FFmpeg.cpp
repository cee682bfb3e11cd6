#include <mutex>

#include "AVFoundation/FFmpeg+Private.h"

namespace ios::ffmpeg {

MediaFailure encode(AVCodecContext& codec, const AVFrame* frame, const std::string& operation,
                    const PacketSink& sink) {
  if (auto failure = failed(operation, avcodec_send_frame(&codec, frame))) return failure;
  Packet packet(av_packet_alloc());
  if (!packet) return failed(operation, AVERROR(ENOMEM));
  for (;;) {
    const int result = avcodec_receive_packet(&codec, packet.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return std::nullopt;
    if (auto failure = failed(operation, result)) return failure;
    if (auto failure = sink(*packet)) return failure;
    av_packet_unref(packet.get());
  }
}

Stream streamOf(const AVCodecContext& codec) {
  CodecParameters parameters(avcodec_parameters_alloc());
  if (!parameters || avcodec_parameters_from_context(parameters.get(), &codec) < 0) return {};
  return {std::move(parameters), codec.time_base};
}

void keepQuiet() {
  static std::once_flag once;
  std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

}  // namespace ios::ffmpeg
