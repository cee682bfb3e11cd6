#include "AVFoundation/MachineSound+Private.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <utility>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/WorkerPool.h"
#include "ObjectiveC/Mutex.h"

namespace ios {
namespace {

// The sound server's library is looked for while the program runs: a machine without one is a device without
// a microphone. What of its interface is used, as libpulse-simple declares it.
struct SampleSpec {
  int format;
  std::uint32_t rate;
  std::uint8_t channels;
};
struct BufferSizes {
  std::uint32_t longest, target, before, least, fragment;
};
constexpr int kSigned16LittleEndian = 3;
constexpr int kRecord = 2;
constexpr std::uint32_t kDefault = UINT32_MAX;

struct Library {
  void* (*open)(const char* server, const char* name, int direction, const char* device, const char* stream,
                const SampleSpec* spec, const void* map, const BufferSizes* sizes, int* error) = nullptr;
  int (*read)(void* connection, void* bytes, std::size_t count, int* error) = nullptr;
  void (*close)(void* connection) = nullptr;

  /// Null when the machine has none.
  static const Library* shared() {
    static const Library library;
    return library.close ? &library : nullptr;
  }

 private:
  Library() {
    void* image = ::dlopen("libpulse-simple.so.0", RTLD_NOW | RTLD_LOCAL);
    if (!image) return;
    open = reinterpret_cast<decltype(open)>(::dlsym(image, "pa_simple_new"));
    read = reinterpret_cast<decltype(read)>(::dlsym(image, "pa_simple_read"));
    close = open && read ? reinterpret_cast<decltype(close)>(::dlsym(image, "pa_simple_free")) : nullptr;
  }
};

constexpr std::size_t kFramesPerRead = 512;
// More than that has not been asked for in time, and would only make the sound late.
constexpr std::size_t kMostFrames = 8192;

/// What has been heard and not asked for; shared by the listener and the queue that reads for it.
class Heard {
 public:
  explicit Heard(void* connection) : connection_(connection) {}
  ~Heard() { Library::shared()->close(connection_); }
  Heard(const Heard&) = delete;

  void stop() { stopped_ = true; }
  /// Waits for the next sound. False at the end.
  bool listen() {
    std::int16_t samples[kFramesPerRead];
    int error = 0;
    {
      const WorkerPool::BlockedThread blocked;
      if (stopped_ || Library::shared()->read(connection_, samples, sizeof samples, &error) < 0) return false;
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
  if (Clock::shared().isVirtual() || !Library::shared()) return false;
  if (std::getenv("PULSE_SERVER")) return true;
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const std::filesystem::path folder = runtime ? runtime : "/run/user/" + std::to_string(::getuid());
  std::error_code error;
  return std::filesystem::exists(folder / "pulse" / "native", error);
}

std::unique_ptr<MicrophoneSource> openMachineSoundInput(std::string& problem) {
  const Library* library = machineHasSoundInput() ? Library::shared() : nullptr;
  const CMAudioFormat format;
  const SampleSpec spec{kSigned16LittleEndian, static_cast<std::uint32_t>(format.sampleRate),
                        static_cast<std::uint8_t>(format.channels)};
  const BufferSizes sizes{kDefault, kDefault, kDefault, kDefault, kFramesPerRead * sizeof(std::int16_t)};
  int error = 0;
  void* connection = library ? library->open(nullptr, "iOS device", kRecord, nullptr, "microphone", &spec,
                                             nullptr, &sizes, &error)
                             : nullptr;
  if (!connection) {
    problem = "the machine's sound input cannot be opened (" + std::to_string(error) + ")";
    return nullptr;
  }
  return std::make_unique<MachineSource>(std::make_shared<Heard>(connection));
}

}  // namespace ios
