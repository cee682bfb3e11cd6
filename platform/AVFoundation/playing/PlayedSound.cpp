#include "AVFoundation/Private/PlayedSound.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>
#include <vector>

#include "AVFoundation/Private/MovieReader.h"
#include "AVFoundation/Private/PulseAudio.h"
#include "Dispatch/Queue.h"

namespace ios {
namespace {

constexpr int kRate = 44100, kChannels = 2;
constexpr double kFarthest = 60;  // seconds of silence before a movie's sound, at most
// How much the sound server buffers: still heard after a pause.
constexpr std::uint32_t kBuffered = kRate / 10 * kChannels * sizeof(std::int16_t);

}  // namespace

/// What the queue works with; its blocks keep it alive.
class PlayedSound::Output : public std::enable_shared_from_this<Output> {
 public:
  Output(const PulseAudio& server, std::function<std::optional<std::filesystem::path>()> find, double from)
      : server_(server), find_(std::move(find)), from_(from) {}

  /// The last reference is released on the queue: closing a connection may wait for the server.
  static void stop(std::shared_ptr<Output> output) {
    output->stopped_ = true;
    const dispatch_queue_t queue = output->queue_;
    dispatch_async(queue, [output = std::move(output)] {});
  }
  void goOn() {
    dispatch_async(queue_, [self = shared_from_this()] {
      if (!self->stopped_ && (self->stream_ || self->open()) && self->playSome()) self->goOn();
    });
  }

 private:
  struct Kind {
    int format = 0, rate = 0, channels = 0;
    bool operator==(const Kind&) const = default;
  };

  bool open() {
    const auto path = find_();
    if (!path) return false;
    auto opened = MovieReader::open(*path, AVMEDIA_TYPE_AUDIO);
    if (!opened || !(*opened)->seek(from_)) return false;
    reader_ = std::move(*opened);
    auto stream = server_.open(PA_STREAM_PLAYBACK, "movie", kRate, kChannels, {.target = kBuffered});
    if (stream) stream_ = std::move(*stream);
    return stream_ != nullptr;
  }

  /// Decodes a frame and hands it to the server, which waits until there is room. False at the end.
  bool playSome() {
    const AVFrame* frame = reader_->next().value_or(nullptr);
    if (!frame || !prepare(*frame)) return false;
    const int most = swr_get_out_samples(resampler_.get(), frame->nb_samples);
    if (most < 0) return false;
    std::vector<std::int16_t> samples(static_cast<std::size_t>(most) * kChannels);
    auto* out = reinterpret_cast<std::uint8_t*>(samples.data());
    const int got = swr_convert(resampler_.get(), &out, most,
                                const_cast<const std::uint8_t**>(frame->extended_data), frame->nb_samples);
    if (got < 0) return false;
    samples.resize(static_cast<std::size_t>(got) * kChannels);
    align(samples, reader_->timeOf(*frame));
    return samples.empty() || stream_->write(samples.data(), samples.size() * sizeof(std::int16_t));
  }

  /// Sound may change its format in the middle of a movie; the resampler reads as many channels as it
  /// was made for.
  bool prepare(const AVFrame& frame) {
    const Kind kind{frame.format, frame.sample_rate, frame.ch_layout.nb_channels};
    if (resampler_ && kind == kind_) return true;
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO, own = frame.ch_layout;
    SwrContext* resampler = nullptr;
    if (swr_alloc_set_opts2(&resampler, &stereo, AV_SAMPLE_FMT_S16, kRate, &own,
                            static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr) < 0) {
      return false;
    }
    resampler_.reset(resampler);
    kind_ = kind;
    return swr_init(resampler) >= 0;
  }

  /// The first sound begins where the picture does: what is earlier is cut, what is missing is silence.
  void align(std::vector<std::int16_t>& samples, double time) {
    if (aligned_) return;
    // A damaged movie can have any time stamps.
    const long missing = std::lround(std::clamp(time - from_, -kFarthest, kFarthest) * kRate) * kChannels;
    if (missing >= 0) {
      samples.insert(samples.begin(), static_cast<std::size_t>(missing), 0);
      aligned_ = true;
    } else if (static_cast<std::size_t>(-missing) < samples.size()) {
      samples.erase(samples.begin(), samples.begin() - missing);
      aligned_ = true;
    } else {
      samples.clear();
    }
  }

  const PulseAudio& server_;
  const std::function<std::optional<std::filesystem::path>()> find_;
  const double from_;
  const dispatch_queue_t queue_ = dispatch_queue_create("AVPlayer.sound");
  std::atomic<bool> stopped_ = false;
  std::unique_ptr<PulseAudio::Stream> stream_;
  std::unique_ptr<MovieReader> reader_;
  ffmpeg::Resampler resampler_;
  Kind kind_;  // of sound that the resampler takes
  bool aligned_ = false;
};

std::unique_ptr<PlayedSound> PlayedSound::start(std::function<std::optional<std::filesystem::path>()> find,
                                                double fromSeconds) {
  const PulseAudio* server = PulseAudio::reachable();
  if (!server) return nullptr;
  auto output = std::make_shared<Output>(*server, std::move(find), fromSeconds);
  output->goOn();
  return std::unique_ptr<PlayedSound>(new PlayedSound(std::move(output)));
}

PlayedSound::PlayedSound(std::shared_ptr<Output> output) : output_(std::move(output)) {}

PlayedSound::~PlayedSound() {
  Output::stop(std::move(output_));
}

}  // namespace ios
