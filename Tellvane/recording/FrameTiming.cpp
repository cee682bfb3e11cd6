#include "recording/FrameTiming.h"

#include <algorithm>

namespace tellvane {
namespace {

constexpr long kRefreshesPerSecond = 60;
constexpr CMTimeScale kMilliseconds = 1000;

}  // namespace

long usableFrameRate(long framesPerSecond) {
  return std::clamp(framesPerSecond, 1L, kRefreshesPerSecond);
}

long displayLinkInterval(long framesPerSecond) {
  return kRefreshesPerSecond / usableFrameRate(framesPerSecond);
}

double elapsedTime(double timestamp, double firstTimeStamp, const std::vector<double>& pauseResumeTimes,
                   long framesPerSecond) {
  double elapsed = timestamp - firstTimeStamp;
  if (pauseResumeTimes.empty()) return elapsed;
  for (std::size_t i = 1; i < pauseResumeTimes.size(); i += 2) {
    elapsed -= pauseResumeTimes[i] - pauseResumeTimes[i - 1];
  }
  return elapsed + 1.0 / static_cast<double>(usableFrameRate(framesPerSecond));
}

CMTime presentationTime(const CMTime& origin, double elapsed) {
  return CMTimeAdd(origin, CMTimeMakeWithSeconds(elapsed, kMilliseconds));
}

}  // namespace tellvane
