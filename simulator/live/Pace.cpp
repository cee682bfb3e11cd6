#include "simulator/live/Pace.h"

#include <algorithm>

namespace simulator {

using std::chrono::duration_cast;

Pace::Duration Pace::due(Wall wall, Instant phone, std::optional<Instant> nextEvent) {
  if (paused_) return Duration::zero();
  const auto passed = std::chrono::duration<double, std::nano>(wall - wall_) * speed_;
  const Instant target = phone_ + duration_cast<Duration>(passed);
  const Duration wanted = std::chrono::floor<std::chrono::milliseconds>(target) - phone;
  if (wanted <= Duration::zero()) return Duration::zero();
  // Up to the next event there is nothing to do but to let the time pass.
  const Duration idle = nextEvent ? std::max(*nextEvent - phone, Duration::zero()) : wanted;
  const Instant longest = std::chrono::ceil<std::chrono::milliseconds>(phone + std::max(kLongestStep, idle));
  const Duration step = std::min(wanted, longest - phone);
  behind_ = wanted - step > kLongestStep;
  if (behind_) begin(wall, phone + step);
  return step;
}

std::optional<Pace::Wall> Pace::wallTimeOf(Instant event) const {
  if (paused_) return std::nullopt;
  const std::chrono::duration<double, std::nano> ahead =
      std::chrono::ceil<std::chrono::milliseconds>(event) - phone_;
  return wall_ + duration_cast<Wall::duration>(ahead / speed_);
}

void Pace::begin(Wall wall, Instant phone) {
  wall_ = wall;
  phone_ = phone;
}

void Pace::pause(Wall wall, Instant phone) {
  begin(wall, phone);
  paused_ = true;
  behind_ = false;
}

void Pace::resume(Wall wall, Instant phone) {
  begin(wall, phone);
  paused_ = false;
}

void Pace::setSpeed(double factor, Wall wall, Instant phone) {
  begin(wall, phone);
  speed_ = factor;
}

}  // namespace simulator
