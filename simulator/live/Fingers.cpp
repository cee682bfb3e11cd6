#include "simulator/live/Fingers.h"

namespace simulator {

using Phase = ios::TouchSample::Phase;

namespace {

constexpr std::int64_t kFingersOfOne = 16;

}  // namespace

std::vector<ios::TouchSample> Fingers::placed(ViewerId viewer, std::vector<ios::TouchSample> samples) {
  auto& down = down_[viewer];
  std::vector<ios::TouchSample> placed;
  for (ios::TouchSample& sample : samples) {
    const std::int64_t own = sample.finger;
    const bool isDown = down.contains(own);
    if (isDown == (sample.phase == Phase::began)) continue;
    sample.finger = -(static_cast<std::int64_t>(viewer) * kFingersOfOne + own);
    if (sample.phase == Phase::ended || sample.phase == Phase::cancelled) {
      down.erase(own);
    } else {
      down[own] = sample;
    }
    placed.push_back(sample);
  }
  return placed;
}

std::vector<ios::TouchSample> Fingers::lifted(ViewerId viewer) {
  std::vector<ios::TouchSample> lifted;
  for (auto& [own, sample] : down_[viewer]) {
    sample.phase = Phase::cancelled;
    lifted.push_back(sample);
  }
  down_.erase(viewer);
  return lifted;
}

std::vector<ios::TouchSample> Fingers::allLifted() {
  std::vector<ios::TouchSample> all;
  while (!down_.empty()) {
    const auto some = lifted(down_.begin()->first);
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

}  // namespace simulator
