#include "AVFoundation/MachineSound+Private.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <utility>

#include "AVFoundation/PulseAudio+Private.h"
#include "Dispatch/Queue.h"
#include "Dispatch/WorkerPool.h"
#include "ObjectiveC/Mutex.h"

namespace ios {
namespace {

constexpr std::size_t kFramesPerRead = 512;
// More than that has not been asked for in time, and would only make the sound late.
constexpr std::size_t kMostFrames = 8192;

/// What has been heard and not asked for; shared by the listener and the queue that reads for it.
class Heard {
 public:
  Heard(const pulse::Library& library, void* connection) : library_(library), connection_(connection) {}
  ~Heard() { library_.close(connection_); }
  Heard(const Heard&) = delete;

  void stop() { stopped_ = true; }
  /// Waits for the next sound. False at the end.
  bool listen() {
    std::int16_t samples[kFramesPerRead];
    int error = 0;
    {
      const WorkerPool::BlockedThread blocked;
      if (stopped_ || library_.read(connection_, samples, sizeof samples, &error) < 0) return false;
    }
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
  const pulse::Library& library_;
  void* const connection_;
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
  return pulse::Library::reachable() != nullptr;
}

std::unique_ptr<MicrophoneSource> openMachineSoundInput(std::string& problem) {
  const pulse::Library* library = pulse::Library::reachable();
  const CMAudioFormat format;
  const pulse::SampleSpec spec{pulse::kSigned16LittleEndian, static_cast<std::uint32_t>(format.sampleRate),
                               static_cast<std::uint8_t>(format.channels)};
  using pulse::kDefault;
  const pulse::BufferSizes sizes{kDefault, kDefault, kDefault, kDefault,
                                 kFramesPerRead * sizeof(std::int16_t)};
  int error = 0;
  void* connection = library ? library->open(nullptr, "iOS device", pulse::kRecord, nullptr, "microphone",
                                             &spec, nullptr, &sizes, &error)
                             : nullptr;
  if (!connection) {
    problem = "the machine's sound input cannot be opened (" + std::to_string(error) + ")";
    return nullptr;
  }
  return std::make_unique<MachineSource>(std::make_shared<Heard>(*library, connection));
}

}  // namespace ios
