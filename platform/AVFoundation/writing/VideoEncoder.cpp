#include "AVFoundation/Private/VideoEncoder.h"

#include <cmath>
#include <cstring>
#include <utility>

#include "AVFoundation/AVVideoSettings.h"

namespace ios {
namespace {

const std::string kOpen = "open the video encoder";
const std::string kEncode = "encode a picture";
const std::string kFlush = "flush the video encoder";

constexpr int kUsualFrameRate = 30;
// In pictures: fifteen seconds at that rate. A key picture takes as many bytes as a second of scrolling.
constexpr int kUsualKeyInterval = 450;
// A picture that stays unchanged is encoded finely after this many repetitions, and again after as many more.
constexpr int kRefinementInterval = 10;
// The encoder takes factors from 0 to 51, but quantisers up to 69, where it codes next to nothing: the zone in its
// options, an eighth of the bits for the whole movie, raises its quantisers by this much above the factors.
constexpr double kFactorOffset = 18;

void setQuantiser(AVCodecContext& context, double quantiser) {
  av_opt_set_double(context.priv_data, "crf", quantiser - kFactorOffset, 0);
}

ffmpeg::CodecContext makeContext(const AVCodec* codec, const VideoEncoder::Settings& settings,
                                 double quantiser) {
  ffmpeg::CodecContext context(avcodec_alloc_context3(codec));
  if (!context) return nullptr;
  const CVPixelSize size = PictureConverter::evenSize(settings.size);
  context->width = static_cast<int>(size.width);
  context->height = static_cast<int>(size.height);
  context->sample_aspect_ratio = {1, 1};
  context->pix_fmt = AV_PIX_FMT_YUV420P;
  context->time_base = {1, VideoEncoder::kTimescale};
  context->framerate = {kUsualFrameRate, 1};
  context->gop_size = settings.keyInterval;
  // One thread: the same pictures give the same bytes, and the host keeps its other cores.
  context->thread_count = 1;
  context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
  // A display's colours, through the matrix that the converter uses; it takes the mean of each
  // four pixels' colour.
  context->color_range = AVCOL_RANGE_MPEG;
  context->colorspace = AVCOL_SPC_SMPTE170M;
  context->color_primaries = AVCOL_PRI_BT709;
  context->color_trc = AVCOL_TRC_IEC61966_2_1;
  context->chroma_sample_location = AVCHROMA_LOC_CENTER;
  av_opt_set(context->priv_data, "preset", "superfast", 0);
  av_opt_set(context->priv_data, "tune", "zerolatency", 0);
  av_opt_set_int(context->priv_data, "forced-idr", 1, 0);
  // Every block of a picture has the quantiser that it is given. Motion finer than a pixel, parts of blocks in
  // motion and fades would take a fifth of the time for a thousandth of likeness (SSIM).
  av_opt_set(context->priv_data, "x264-params",
             "qcomp=1:aq-mode=0:zones=0,100000000,b=0.125:weightp=0:subme=0:partitions=i4x4:8x8dct=0", 0);
  setQuantiser(*context, quantiser);
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
  const double interval = numberAt(compression, AVVideoMaxKeyFrameIntervalKey, kUsualKeyInterval);
  if (!(bitRate >= 1000 && bitRate <= 1e9) || !(interval >= 1 && interval <= 1e6)) return std::nullopt;
  return Settings{*size, std::llround(bitRate), static_cast<int>(interval)};
}

VideoEncoder::VideoEncoder(const Settings& settings)
    : settings_(settings), converter_(settings.size), budget_(static_cast<double>(settings.bitRate)) {}

MediaResult<std::unique_ptr<VideoEncoder>> VideoEncoder::open(const Settings& settings) {
  ffmpeg::keepQuiet();
  IOS_TRY(codecFault(kOpen));
  std::unique_ptr<VideoEncoder> encoder(new VideoEncoder(settings));
  IOS_TRY(encoder->openCodec(BitBudget::kSharp));
  return encoder;
}

MediaResult<> VideoEncoder::openCodec(double quantiser) {
  const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
  if (!codec) return failed(kOpen, AVERROR_ENCODER_NOT_FOUND);
  codec_ = makeContext(codec, settings_, quantiser);
  const int result = codec_ ? avcodec_open2(codec_.get(), codec, nullptr) : AVERROR(ENOMEM);
  IOS_TRY(checked(kOpen, result));
  repeats_ = RepeatedPictures::make({codec_->extradata, static_cast<std::size_t>(codec_->extradata_size)});
  if (!repeats_) return {};
  const auto& headers = repeats_->headers();
  auto* data = static_cast<std::uint8_t*>(av_mallocz(headers.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (!data) return failed(kOpen, AVERROR(ENOMEM));
  std::memcpy(data, headers.data(), headers.size());
  av_free(std::exchange(codec_->extradata, data));
  codec_->extradata_size = static_cast<int>(headers.size());
  return {};
}

bool VideoEncoder::mayRepeat() const {
  if (!repeats_ || sinceKey_ >= settings_.keyInterval) return false;
  return fine_ || unchanged_ % kRefinementInterval != 0 || !budget_.affordsRefinement();
}

MediaResult<> VideoEncoder::encode(const CVPixelBufferRef& buffer, std::int64_t time,
                                   const ffmpeg::PacketSink& sink) {
  const bool changed = IOS_TRY(converter_.convert(buffer));
  IOS_TRY(settle(sink));
  // The injected fault is looked up here, where a test may hold up the append, and takes effect where a real one would.
  const auto fault = codecFault(kEncode);
  quantiser_ = budget_.quantiser(static_cast<double>(time) / kTimescale);
  unchanged_ = changed ? 0 : unchanged_ + 1;
  if (!changed && mayRepeat()) {
    IOS_TRY(fault);
    ++sinceKey_;
    return give(repeats_->repeated(), 0, time, sink);
  }
  fine_ = !changed && budget_.affordsRefinement();
  if (fine_) quantiser_ = BitBudget::kFine;
  time_ = time;
  AVFrame* picture = converter_.current();
  picture->pts = time;
  // The encoder's own count lacks the repeated pictures.
  picture->pict_type = sinceKey_ >= settings_.keyInterval ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
  thread_.begin([this, picture, fault] {
    outcome_ = fault ? withinMemory(kEncode, [&] { return encode(picture); }) : fault;
  });
  return {};
}

MediaResult<> VideoEncoder::encode(const AVFrame* picture) {
  const auto keep = [this](AVPacket& packet) -> MediaResult<> {
    encoded_.reset(av_packet_alloc());
    if (!encoded_) return failed(kEncode, AVERROR(ENOMEM));
    av_packet_move_ref(encoded_.get(), &packet);
    return {};
  };
  for (const bool first = lastTime_ < 0;;) {
    setQuantiser(*codec_, quantiser_);
    IOS_TRY(ffmpeg::encode(*codec_, picture, kEncode, keep));
    const auto coarser = first && encoded_
                             ? budget_.coarserStart(static_cast<std::size_t>(encoded_->size), quantiser_)
                             : std::nullopt;
    if (!coarser) return {};
    quantiser_ = *coarser;
    // Opened with this quantiser from the beginning: one that is set before the first picture is ignored.
    IOS_TRY(openCodec(quantiser_));
  }
}

MediaResult<> VideoEncoder::settle(const ffmpeg::PacketSink& sink) {
  thread_.wait();
  const auto encoded = std::exchange(encoded_, nullptr);
  IOS_TRY(std::exchange(outcome_, {}));
  return encoded ? take(*encoded, sink) : MediaResult<>();
}

MediaResult<> VideoEncoder::flush(const ffmpeg::PacketSink& sink) {
  IOS_TRY(settle(sink));
  IOS_TRY(codecFault(kFlush));
  return ffmpeg::encode(*codec_, nullptr, kFlush,
                        [](AVPacket&) -> MediaResult<> { return failed(kFlush, AVERROR_BUG); });
}

MediaResult<> VideoEncoder::take(AVPacket& packet, const ffmpeg::PacketSink& sink) {
  const bool key = (packet.flags & AV_PKT_FLAG_KEY) != 0;
  sinceKey_ = key ? 1 : sinceKey_ + 1;
  budget_.spend(static_cast<std::size_t>(packet.size), key);
  if (!repeats_) return give(packet, time_, sink);
  const auto renumbered = repeats_->renumbered({packet.data, static_cast<std::size_t>(packet.size)});
  if (!renumbered) return failed(kEncode, AVERROR_INVALIDDATA);
  return give(*renumbered, packet.flags, time_, sink);
}

MediaResult<> VideoEncoder::give(const std::vector<std::uint8_t>& bytes, int flags, std::int64_t time,
                                 const ffmpeg::PacketSink& sink) {
  ffmpeg::Packet packet(av_packet_alloc());
  if (!packet || av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0) {
    return failed(kEncode, AVERROR(ENOMEM));
  }
  std::memcpy(packet->data, bytes.data(), bytes.size());
  packet->flags = flags;
  return give(*packet, time, sink);
}

MediaResult<> VideoEncoder::give(AVPacket& packet, std::int64_t time, const ffmpeg::PacketSink& sink) {
  packet.pts = packet.dts = time;
  // Files take a picture's duration from the next one's time; the last picture has that of the one before.
  packet.duration = lastTime_ < 0 ? kTimescale / kUsualFrameRate : time - lastTime_;
  lastTime_ = time;
  return sink(packet);
}

}  // namespace ios
