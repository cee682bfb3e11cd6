extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <chrono>
#include <cstdio>
#include <memory>

#include "Photos/Private/Movie.h"

namespace ios::photos {
namespace {

struct CloseInput {
  void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
};
struct FreePacket {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Input = std::unique_ptr<AVFormatContext, CloseInput>;
using Packet = std::unique_ptr<AVPacket, FreePacket>;

std::string errorText(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof text);
  return text;
}

Result<Input, std::string> open(const std::filesystem::path& file) {
  AVFormatContext* input = nullptr;
  AVDictionary* options = nullptr;
  av_dict_set(&options, "protocol_whitelist", "file", 0);
  // Only this format: others follow references to other files.
  const auto* format = av_find_input_format("mov");
  const int result = avformat_open_input(&input, ("file:" + file.string()).c_str(), format, &options);
  av_dict_free(&options);
  if (result < 0) return failure(errorText(result));
  return Input(input);
}

/// Whether every sample that the movie lists lies within its file.
bool isWhole(const AVFormatContext& input, std::int64_t size) {
  for (unsigned index = 0; index < input.nb_streams; ++index) {
    AVStream* stream = input.streams[index];
    const int count = avformat_index_get_entries_count(stream);
    for (int at = 0; at < count; ++at) {
      const AVIndexEntry* entry = avformat_index_get_entry(stream, at);
      if (entry->pos < 0 || entry->pos > size - entry->size) return false;
    }
  }
  return true;
}

bool hasReadablePicture(AVFormatContext& input, int stream) {
  const Packet packet(av_packet_alloc());
  while (packet && av_read_frame(&input, packet.get()) >= 0) {
    const bool found = packet->stream_index == stream && packet->size > 0;
    av_packet_unref(packet.get());
    if (found) return true;
  }
  return false;
}

double durationOf(const AVFormatContext& input, const AVStream& pictures) {
  if (input.duration != AV_NOPTS_VALUE) return static_cast<double>(input.duration) / AV_TIME_BASE;
  if (pictures.duration == AV_NOPTS_VALUE) return 0;
  return static_cast<double>(pictures.duration) * av_q2d(pictures.time_base);
}

std::optional<double> creationOf(const AVFormatContext& input) {
  const AVDictionaryEntry* entry = av_dict_get(input.metadata, "creation_time", nullptr, 0);
  if (!entry) return std::nullopt;
  int year = 0, month = 0, day = 0, hour = 0, minute = 0;
  double second = 0;
  if (std::sscanf(entry->value, "%d-%d-%dT%d:%d:%lfZ", &year, &month, &day, &hour, &minute, &second) != 6)
    return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                         std::chrono::day(day)};
  if (!date.ok()) return std::nullopt;
  const auto days = std::chrono::sys_days(date).time_since_epoch().count();
  return static_cast<double>(days) * 86400 + hour * 3600 + minute * 60 + second;
}

}  // namespace

Result<MovieFacts, std::string> readMovie(const std::filesystem::path& file) {
  av_log_set_level(AV_LOG_QUIET);
  const Input input = IOS_TRY(open(file));
  const int stream = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (stream < 0) return failure(std::string("it has no pictures"));
  const AVStream& pictures = *input->streams[stream];
  const AVCodecParameters& format = *pictures.codecpar;
  if (format.width <= 0 || format.height <= 0 || !avcodec_find_decoder(format.codec_id)) {
    return failure(std::string("its pictures are of an unknown kind"));
  }
  if (!isWhole(*input, avio_size(input->pb)) || !hasReadablePicture(*input, stream)) {
    return failure(std::string("it is incomplete"));
  }
  return MovieFacts{durationOf(*input, pictures), format.width, format.height, creationOf(*input)};
}

}  // namespace ios::photos
