#include "AVFoundation/Private/MachineSound.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <utility>

#include "AVFoundation/Private/PulseAudio.h"
#include "Base/Mutex.h"
#include "Dispatch/Queue.h"

namespace ios {
namespace {

constexpr std::size_t kFramesPerRead = 512;
// Anything beyond this was not collected in time and would only delay the sound.
constexpr std::size_t kMostFrames = 8192;

/// Sound that was heard but not yet asked for; shared by the listener and the queue that reads for it.
class Heard {
 public:
  explicit Heard(std::unique_ptr<PulseAudio::Stream> stream) : stream_(std::move(stream)) {}

  void stop() { stopped_ = true; }
  /// Waits for the next sound. False at the end.
  bool listen() {
    std::int16_t samples[kFramesPerRead];
    if (stopped_ || !stream_->read(samples, sizeof samples)) return false;
    MutexLock lock(mutex_);
    samples_.insert(samples_.end(), std::begin(samples), std::end(samples));
    if (samples_.size() > kMostFrames) samples_.erase(samples_.begin(), samples_.end() - kMostFrames);
    return true;
  }
  std::vector<std::int16_t> take(std::size_t frames) {
    std::vector<std::int16_t> taken(frames);
    MutexLock lock(mutex_);
    if (samples_.size() < frames) return taken;
    std::copy_n(samples_.begin(), frames, taken.begin());
    samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(frames));
    return taken;
  }

 private:
  const std::unique_ptr<PulseAudio::Stream> stream_;
  std::atomic<bool> stopped_ = false;
  Mutex mutex_;
  std::deque<std::int16_t> samples_ IOS_GUARDED_BY(mutex_);
};

void listenOn(const dispatch_queue_t& queue, const std::shared_ptr<Heard>& heard) {
  dispatch_async(queue, [queue, heard] {
    if (heard->listen()) listenOn(queue, heard);
  });
}

class MachineSource : public MicrophoneSource {
 public:
  explicit MachineSource(std::shared_ptr<Heard> heard) : heard_(std::move(heard)) {
    listenOn(dispatch_queue_create("machine sound input"), heard_);
  }
  ~MachineSource() override { heard_->stop(); }
  CMAudioFormat format() const override { return {}; }
  std::vector<std::int16_t> read(std::uint64_t, std::size_t frames) override { return heard_->take(frames); }

 private:
  const std::shared_ptr<Heard> heard_;
};

}  // namespace

bool machineHasSoundInput() {
  return PulseAudio::reachable() != nullptr;
}

Result<std::unique_ptr<MicrophoneSource>, std::string> openMachineSoundInput() {
  const PulseAudio* server = PulseAudio::reachable();
  if (!server) return failure(std::string("the machine has no sound input"));
  const CMAudioFormat format;
  const PulseAudio::BufferSizes sizes{.fragment = kFramesPerRead * sizeof(std::int16_t)};
  auto stream = IOS_TRY(server->open(PA_STREAM_RECORD, "microphone", static_cast<int>(format.sampleRate),
                                     static_cast<int>(format.channels), sizes));
  return std::make_unique<MachineSource>(std::make_shared<Heard>(std::move(stream)));
}

}  // namespace ios
