#include "AVFoundation/Private/MovieReader.h"

#include <algorithm>
#include <cmath>

#include "CoreGraphics/CGImage.h"

namespace ios {
namespace {

const std::string kOpen = "open the movie";
const std::string kRead = "read the movie";
const std::string kDecode = "decode the movie";

}  // namespace

MediaResult<std::unique_ptr<MovieReader>> MovieReader::open(const std::filesystem::path& path,
                                                            AVMediaType kind) {
  ffmpeg::keepQuiet();
  // A pipe would keep the queue waiting for whoever writes to it, for ever.
  std::error_code ignored;
  if (const auto status = std::filesystem::status(path, ignored);
      std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    return refused(kOpen, "it is not a file");
  }
  std::unique_ptr<MovieReader> reader(new MovieReader);
  AVFormatContext* input = nullptr;
  AVDictionary* options = nullptr;
  av_dict_set(&options, "protocol_whitelist", "file", 0);
  const int opened =
      avformat_open_input(&input, ("file:" + path.string()).c_str(), av_find_input_format("mov"), &options);
  av_dict_free(&options);
  IOS_TRY(checked(kOpen, opened));
  reader->input_.reset(input);

  const AVCodec* codec = nullptr;
  reader->stream_ = av_find_best_stream(input, kind, -1, -1, &codec, 0);
  IOS_TRY(checked(kOpen, reader->stream_));
  for (unsigned i = 0; i < input->nb_streams; ++i) {
    input->streams[i]->discard = static_cast<int>(i) == reader->stream_ ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
  }
  const AVStream& stream = *input->streams[reader->stream_];
  reader->codec_.reset(avcodec_alloc_context3(codec));
  reader->packet_.reset(av_packet_alloc());
  reader->frame_.reset(av_frame_alloc());
  if (!reader->codec_ || !reader->packet_ || !reader->frame_) return failed(kOpen, AVERROR(ENOMEM));
  reader->codec_->pkt_timebase = stream.time_base;
  reader->codec_->thread_count = 1;
  reader->codec_->max_pixels = CGImage::kMaximumPixels;  // refused before memory is allocated for it
  IOS_TRY(checked(kOpen, avcodec_parameters_to_context(reader->codec_.get(), stream.codecpar)));
  IOS_TRY(checked(kOpen, avcodec_open2(reader->codec_.get(), codec, nullptr)));
  if (stream.duration > 0)
    reader->duration_ = static_cast<double>(stream.duration) * av_q2d(stream.time_base);
  if (input->duration > 0) {
    reader->duration_ = std::max(reader->duration_, static_cast<double>(input->duration) / AV_TIME_BASE);
  }
  return reader;
}

MediaResult<const AVFrame*> MovieReader::next() {
  for (;;) {
    const int received = avcodec_receive_frame(codec_.get(), frame_.get());
    if (received == 0) return frame_.get();
    if (received == AVERROR_EOF) {
      if (breaksOff()) return failed(kRead, AVERROR_INVALIDDATA);
      return nullptr;
    }
    if (received != AVERROR(EAGAIN)) return failed(kDecode, received);
    const int read = av_read_frame(input_.get(), packet_.get());
    int sent = 0;
    if (read == AVERROR_EOF) {
      if (!drained_) sent = avcodec_send_packet(codec_.get(), nullptr);
      drained_ = true;
    } else if (read < 0) {
      return failed(kRead, read);
    } else {
      if (packet_->stream_index == stream_) {
        lastRead_ = packet_->dts;
        sent = avcodec_send_packet(codec_.get(), packet_.get());
      }
      av_packet_unref(packet_.get());
    }
    IOS_TRY(checked(kDecode, sent));
  }
}

bool MovieReader::breaksOff() const {
  AVStream* stream = input_->streams[stream_];
  const int count = avformat_index_get_entries_count(stream);
  const AVIndexEntry* last = count > 0 ? avformat_index_get_entry(stream, count - 1) : nullptr;
  return last && lastRead_ != AV_NOPTS_VALUE && lastRead_ < last->timestamp;
}

double MovieReader::timeOf(const AVFrame& frame) const {
  const std::int64_t time = frame.best_effort_timestamp;
  return time == AV_NOPTS_VALUE ? 0 : static_cast<double>(time) * av_q2d(input_->streams[stream_]->time_base);
}

MediaResult<> MovieReader::seek(double seconds) {
  const AVRational base = input_->streams[stream_]->time_base;
  const auto time = static_cast<std::int64_t>(std::floor(std::max(0.0, seconds) / av_q2d(base)));
  IOS_TRY(checked(kRead, av_seek_frame(input_.get(), stream_, time, AVSEEK_FLAG_BACKWARD)));
  avcodec_flush_buffers(codec_.get());
  drained_ = false;
  lastRead_ = AV_NOPTS_VALUE;
  return {};
}

}  // namespace ios
