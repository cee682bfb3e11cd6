// One recording of a list by the library's recorder: what it takes of the main thread, of time and of memory.
//   measure_recording virtual|real scroll|still SECONDS
#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "AllocationCount.h"
#include "BenchmarkPhone.h"
#include "CoreVideo/CVPixelBufferPool.h"
#include "DeviceClock/Clock.h"
#include "ScrolledList.h"
#include "UIKit/UIGraphics.h"
#include "recording/TLVScreenRecorder.h"

using namespace ios;
using std::chrono::duration;
using std::chrono::steady_clock;

namespace {

constexpr std::size_t kFrameBytes = 750 * 1334 * 4;
// More than the caches of any machine this runs on.
constexpr std::size_t kCaches = std::size_t{128} << 20;

double threadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Resident memory in bytes.
double resident() {
  std::ifstream status("/proc/self/statm");
  double total = 0, pages = 0;
  status >> total >> pages;
  return pages * 4096;
}

/// Counts the frames that were drawn.
class Frames : public Subclass<Frames, NSObject> {
 public:
  static MethodList methods() { return {{"stopRecordingAtDesiredTime:", &Frames::drawn}}; }
  std::atomic<long> count = 0;

 private:
  void drawn(double) { ++count; }
};

template <class Work>
double secondsOf(int repetitions, Work&& work) {
  const double before = threadSeconds();
  for (int i = 0; i < repetitions; ++i) work();
  return (threadSeconds() - before) / repetitions;
}

/// The main thread's time for `work`, the median of many runs. Between two frames of a recording an encoder
/// has filled the caches with its own data, so what `work` reads and writes comes from memory here too.
template <class Work>
double secondsFromMemory(Work&& work) {
  std::vector<char> other(kCaches);
  std::vector<double> times;
  for (int i = 0; i < 151; ++i) {
    std::memset(other.data(), i, other.size());
    times.push_back(secondsOf(1, work));
  }
  std::nth_element(times.begin(), times.begin() + 75, times.end());
  return times[75];
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) return 2;
  const bool real = std::string(arguments[1]) == "real", scrolls = std::string(arguments[2]) == "scroll";
  const double seconds = std::atof(arguments[3]);
  const auto span = std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
  BenchmarkPhone phone(real ? BenchmarkPhone::Time::real : BenchmarkPhone::Time::virtual_);
  Clock& clock = Clock::shared();
  const auto list = std::make_shared<ScrolledList>(phone.window());
  list->setScrolling(scrolls);
  clock.runFor(std::chrono::seconds(1));

  // What the main thread does without a recording.
  const double idle = real ? 0 : secondsOf(1, [&] { clock.runFor(span); });
  const auto recorder = std::make_shared<tellvane::TLVScreenRecorder>(0.6, 30, false);
  const auto frames = std::make_shared<Frames>();
  recorder->setDelegate(frames);
  bool started = false;
  recorder->startTLVScreenRecording([&](bool success) { started = success; });
  if (!started) return 1;
  clock.runFor(std::chrono::seconds(1));
  countAllocationsOf(kFrameBytes);
  // Lets caches fill and the allocator reach its size.
  clock.runFor(std::min<std::chrono::nanoseconds>(span / 4, std::chrono::minutes(5)));
  const long warm = frames->count;
  const double memoryBefore = resident();
  const double begin = clock.secondsNow();
  const auto wallBefore = steady_clock::now();
  const double mainBefore = threadSeconds();
  clock.runFor(span);
  const double mainSpent = threadSeconds() - mainBefore;
  const double wall = duration<double>(steady_clock::now() - wallBefore).count();
  const long large = countedAllocations();
  const double growth = resident() - memoryBefore;
  const long recorded = frames->count - warm;

  const auto stopBefore = steady_clock::now();
  bool done = false;
  recorder->stopTLVRecordingWithCompletion([&](std::optional<std::string>) { done = true; });
  while (!done) {
    if (!clock.runUntil([&] { return done; }, std::chrono::seconds(5))) return 1;
  }
  const double stop = duration<double>(steady_clock::now() - stopBefore).count();
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto use = CVPixelBufferPoolGetUse(recorder->outputBufferPool());

  // The baselines come last: they take memory of their own. The list scrolls the same way again.
  list->setScrolling(false);
  std::vector<char> from(kFrameBytes, 1), to(kFrameBytes, 2);
  const double copy = secondsFromMemory([&] {
    std::memcpy(to.data(), from.data(), kFrameBytes);
    asm volatile("" ::"r"(to.data()) : "memory");
  });
  UIGraphicsBeginImageContextWithOptions(phone.window()->bounds().size, true, 0);
  const double redraw = secondsFromMemory([&, at = begin]() mutable {
    if (scrolls) list->moveTo(at += 1 / 30.0);
    phone.window()->drawViewHierarchyInRectAfterScreenUpdates(phone.window()->bounds(), true);
  });
  UIGraphicsEndImageContext();
  std::fprintf(stderr,
               "frames_per_second %f\nmain_us_per_frame %f\ncopy_us %f\nredraw_us %f\nwall_seconds %f\n"
               "stop_ms %f\nlarge_allocations %ld\ngrowth_bytes %f\npeak_mib %f\nbuffers %zu\n",
               static_cast<double>(recorded) / seconds,
               (mainSpent - idle) / static_cast<double>(recorded) * 1e6, copy * 1e6, redraw * 1e6, wall,
               stop * 1e3, large, growth, static_cast<double>(usage.ru_maxrss) / 1024, use.mostInUse);
}
