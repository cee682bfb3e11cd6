#include "AVFoundation/VideoEncoder+Private.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "AVFoundation/AVVideoSettings.h"
#include "CoreVideo/CVPixelBuffer+Private.h"

namespace ios {
namespace {

const std::string kOpen = "open the video encoder";
const std::string kEncode = "encode a picture";
const std::string kFlush = "flush the video encoder";

// What the encoder reckons with before it knows the times.
constexpr int kUsualFrameRate = 30;
// A still picture is encoded on a few times at once, and then now and again until it is as fine as that.
constexpr int kRefinements = 3, kRefinementInterval = 10, kFineQuantiser = 20;

ffmpeg::CodecContext makeContext(const AVCodec* codec, const VideoEncoder::Settings& settings) {
  ffmpeg::CodecContext context(avcodec_alloc_context3(codec));
  if (!context) return nullptr;
  const CVPixelSize size = PictureConverter::evenSize(settings.size);
  context->width = static_cast<int>(size.width);
  context->height = static_cast<int>(size.height);
  context->sample_aspect_ratio = {1, 1};
  context->pix_fmt = AV_PIX_FMT_YUV420P;
  context->time_base = {1, VideoEncoder::kTimescale};
  context->framerate = {kUsualFrameRate, 1};
  context->bit_rate = settings.bitRate;
  context->gop_size = settings.keyInterval;
  // One thread: the same pictures give the same bytes, and the host keeps its other cores.
  context->thread_count = 1;
  context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
  // A display's colours, through the matrix that the converter uses; it takes the mean of each four pixels'
  // colour.
  context->color_range = AVCOL_RANGE_MPEG;
  context->colorspace = AVCOL_SPC_SMPTE170M;
  context->color_primaries = AVCOL_PRI_BT709;
  context->color_trc = AVCOL_TRC_IEC61966_2_1;
  context->chroma_sample_location = AVCHROMA_LOC_CENTER;
  av_opt_set(context->priv_data, "preset", "superfast", 0);
  av_opt_set(context->priv_data, "tune", "zerolatency", 0);
  av_opt_set_int(context->priv_data, "forced-idr", 1, 0);
  // The bit rate is one of time, not of pictures: their times are not even. Motion finer than a
  // pixel, parts of blocks and fades would take a fifth of the time for a thousandth of likeness (SSIM).
  av_opt_set(context->priv_data, "x264-params", "force-cfr=0:weightp=0:subme=0:partitions=none", 0);
  return context;
}

}  // namespace

std::optional<VideoEncoder::Settings> VideoEncoder::Settings::from(const NSDictionary& output) {
  const auto codec = output.find(AVVideoCodecKey);
  if (codec == output.end() || !codec->second.text() || *codec->second.text() != AVVideoCodecH264) {
    return std::nullopt;
  }
  const auto size =
      CVPixelSize::rounded(numberAt(output, AVVideoWidthKey, 0), numberAt(output, AVVideoHeightKey, 0));
  if (!size) return std::nullopt;
  NSDictionary compression;
  if (const auto found = output.find(AVVideoCompressionPropertiesKey); found != output.end()) {
    if (!found->second.dictionary()) return std::nullopt;
    compression = *found->second.dictionary();
  }
  const double pixels = static_cast<double>(size->width * size->height);
  const double bitRate = numberAt(compression, AVVideoAverageBitRateKey, 4 * pixels);
  const double interval = numberAt(compression, AVVideoMaxKeyFrameIntervalKey, 250);
  if (!(bitRate >= 1000 && bitRate <= 1e9) || !(interval >= 1 && interval <= 1e6)) return std::nullopt;
  return Settings{*size, std::llround(bitRate), static_cast<int>(interval)};
}

VideoEncoder::VideoEncoder(const Settings& settings, ffmpeg::CodecContext codec)
    : settings_(settings), codec_(std::move(codec)), converter_(settings.size) {}

std::unique_ptr<VideoEncoder> VideoEncoder::open(const Settings& settings, MediaFailure& failure) {
  ffmpeg::keepQuiet();
  if ((failure = codecFault(kOpen))) return nullptr;
  const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
  ffmpeg::CodecContext context = codec ? makeContext(codec, settings) : nullptr;
  const int result = !codec     ? AVERROR_ENCODER_NOT_FOUND
                     : !context ? AVERROR(ENOMEM)
                                : avcodec_open2(context.get(), codec, nullptr);
  if ((failure = failed(kOpen, result))) return nullptr;
  std::unique_ptr<VideoEncoder> encoder(new VideoEncoder(settings, std::move(context)));

  AVCodecContext& opened = *encoder->codec_;
  encoder->repeats_ =
      RepeatedPictures::make({opened.extradata, static_cast<std::size_t>(opened.extradata_size)});
  if (encoder->repeats_) {
    const auto& headers = encoder->repeats_->headers();
    auto* data = static_cast<std::uint8_t*>(av_mallocz(headers.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!data) {
      failure = failed(kOpen, AVERROR(ENOMEM));
      return nullptr;
    }
    std::memcpy(data, headers.data(), headers.size());
    av_free(std::exchange(opened.extradata, data));
    opened.extradata_size = static_cast<int>(headers.size());
  }
  return encoder;
}

bool VideoEncoder::mayRepeat() const {
  if (!repeats_ || unchanged_ <= kRefinements || sinceKey_ >= settings_.keyInterval) return false;
  return quantiser_ <= kFineQuantiser || unchanged_ % kRefinementInterval != 0;
}

MediaFailure VideoEncoder::encode(const CVPixelBufferRef& buffer, std::int64_t time,
                                  const ffmpeg::PacketSink& sink) {
  bool changed = false;
  if (auto failure = converter_.convert(buffer, changed)) return failure;
  if (auto failure = settle(sink)) return failure;
  // Asked for here, where a test may hold the appending up, and met where it would be met.
  const auto fault = codecFault(kEncode);
  unchanged_ = changed ? 0 : unchanged_ + 1;
  if (!changed && mayRepeat()) {
    if (fault) return fault;
    ++sinceKey_;
    queue_.push_back({true, false, time});
    return giveRepeated(sink);
  }
  AVFrame* picture = converter_.current();
  picture->pts = time;
  // The encoder's own count lacks the repeated pictures.
  const bool key = sinceKey_ >= settings_.keyInterval;
  picture->pict_type = key ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
  sinceKey_ = key ? 1 : sinceKey_ + 1;
  queue_.push_back({false, key, time});
  thread_.begin([this, picture, fault] {
    outcome_ = fault;
    if (fault) return;
    outcome_ = ffmpeg::encode(*codec_, picture, kEncode, [this](AVPacket& packet) -> MediaFailure {
      ffmpeg::Packet kept(av_packet_alloc());
      if (!kept) return failed(kEncode, AVERROR(ENOMEM));
      av_packet_move_ref(kept.get(), &packet);
      encoded_.push_back(std::move(kept));
      return std::nullopt;
    });
  });
  return std::nullopt;
}

MediaFailure VideoEncoder::settle(const ffmpeg::PacketSink& sink) {
  thread_.wait();
  const auto encoded = std::exchange(encoded_, {});
  auto failure = std::exchange(outcome_, std::nullopt);
  for (const auto& packet : encoded) {
    if (!failure) failure = take(*packet, sink);
  }
  return failure;
}

MediaFailure VideoEncoder::flush(const ffmpeg::PacketSink& sink) {
  if (auto failure = settle(sink)) return failure;
  if (auto fault = codecFault(kFlush)) return fault;
  return ffmpeg::encode(*codec_, nullptr, kFlush, [&](AVPacket& packet) { return take(packet, sink); });
}

MediaFailure VideoEncoder::take(AVPacket& packet, const ffmpeg::PacketSink& sink) {
  if (queue_.empty() || queue_.front().repeated) return failed(kEncode, AVERROR_BUG);
  const std::int64_t time = queue_.front().time;
  queue_.pop_front();
  const bool newest = std::none_of(queue_.begin(), queue_.end(), [](const Queued& each) { return each.key; });
  if (packet.flags & AV_PKT_FLAG_KEY && newest) sinceKey_ = static_cast<int>(queue_.size()) + 1;

  std::size_t length = 0;
  if (const auto* quality = av_packet_get_side_data(&packet, AV_PKT_DATA_QUALITY_STATS, &length);
      quality && length >= 4) {
    std::uint32_t lambda = 0;
    std::memcpy(&lambda, quality, sizeof lambda);
    quantiser_ = static_cast<int>(lambda / FF_QP2LAMBDA);
  }
  if (repeats_) {
    const auto renumbered = repeats_->renumbered({packet.data, static_cast<std::size_t>(packet.size)});
    if (!renumbered) return failed(kEncode, AVERROR_INVALIDDATA);
    ffmpeg::Packet copy(av_packet_alloc());
    if (!copy || av_new_packet(copy.get(), static_cast<int>(renumbered->size())) < 0) {
      return failed(kEncode, AVERROR(ENOMEM));
    }
    std::memcpy(copy->data, renumbered->data(), renumbered->size());
    copy->flags = packet.flags;
    if (auto failure = give(*copy, time, sink)) return failure;
  } else if (auto failure = give(packet, time, sink)) {
    return failure;
  }
  return giveRepeated(sink);
}

MediaFailure VideoEncoder::giveRepeated(const ffmpeg::PacketSink& sink) {
  while (!queue_.empty() && queue_.front().repeated) {
    const std::vector<std::uint8_t> bytes = repeats_->repeated();
    ffmpeg::Packet packet(av_packet_alloc());
    if (!packet || av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0) {
      return failed(kEncode, AVERROR(ENOMEM));
    }
    std::memcpy(packet->data, bytes.data(), bytes.size());
    const std::int64_t time = queue_.front().time;
    queue_.pop_front();
    if (auto failure = give(*packet, time, sink)) return failure;
  }
  return std::nullopt;
}

MediaFailure VideoEncoder::give(AVPacket& packet, std::int64_t time, const ffmpeg::PacketSink& sink) {
  packet.pts = packet.dts = time;
  // Files take a picture's duration from the next one's time; the last picture has that of the one before.
  packet.duration = lastTime_ < 0 ? kTimescale / kUsualFrameRate : time - lastTime_;
  lastTime_ = time;
  return sink(packet);
}

}  // namespace ios
