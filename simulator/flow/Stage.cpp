#include "simulator/flow/Stage.h"

namespace simulator {

std::optional<ios::VisibleElement> Stage::find(const TextPattern& text) {
  std::optional<ios::VisibleElement> best;
  int bestWorth = 0;
  for (auto& element : phone_.elements()) {
    const bool exactly = text.isExactly(element.text);
    if (!exactly && !text.matches(element.text)) continue;
    const int worth = (exactly ? 2 : 0) + (element.control ? 1 : 0);
    if (best && worth < bestWorth) continue;
    best = std::move(element);
    bestWorth = worth;
  }
  return best;
}

bool Stage::await(ios::Clock::Duration patience, const std::function<bool()>& condition) {
  constexpr ios::Clock::Duration kFrame = std::chrono::nanoseconds(1'000'000'000 / 60);
  const ios::Clock& clock = ios::Clock::shared();
  const ios::Clock::Instant end = clock.now() + patience;
  while (!condition()) {
    if (clock.now() >= end || phone_.wasInterrupted()) return false;
    phone_.runFor(kFrame);
  }
  return true;
}

}  // namespace simulator
