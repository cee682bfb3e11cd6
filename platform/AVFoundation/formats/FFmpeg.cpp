#include <mutex>

#include "AVFoundation/Private/FFmpeg.h"

namespace ios::ffmpeg {

MediaResult<> encode(AVCodecContext& codec, const AVFrame* frame, const std::string& operation,
                     const PacketSink& sink) {
  IOS_TRY(checked(operation, avcodec_send_frame(&codec, frame)));
  Packet packet(av_packet_alloc());
  if (!packet) return failed(operation, AVERROR(ENOMEM));
  for (;;) {
    const int result = avcodec_receive_packet(&codec, packet.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return {};
    IOS_TRY(checked(operation, result));
    IOS_TRY(sink(*packet));
    av_packet_unref(packet.get());
  }
}

Stream streamOf(const AVCodecContext& codec) {
  CodecParameters parameters(avcodec_parameters_alloc());
  if (!parameters || avcodec_parameters_from_context(parameters.get(), &codec) < 0) return {};
  return {std::move(parameters), codec.time_base};
}

const AVCodec* aacEncoder() {
  return avcodec_find_encoder_by_name("aac");
}

void keepQuiet() {
  static std::once_flag once;
  std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

}  // namespace ios::ffmpeg
