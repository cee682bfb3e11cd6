#include "simulator/flow/Stage.h"

namespace simulator {

std::optional<ios::VisibleElement> Stage::find(const Selector& selector) {
  const auto elements = phone_.elements();
  const auto found = elementsThatFit(selector, elements);
  if (found.empty()) return std::nullopt;
  return *found.front();
}

std::optional<ios::VisibleElement> Stage::awaitElement(const Selector& selector, const std::string& purpose,
                                                       Problem& problem, ios::Clock::Duration rest) {
  if (!await(kPatience, [&] { return find(selector).has_value(); })) {
    problem = "expected " + selector.inPlainQuotes() + " " + purpose;
    return std::nullopt;
  }
  settle(rest);
  auto settled = find(selector);
  if (!settled) problem = "expected " + selector.inPlainQuotes() + " to stay long enough " + purpose;
  return settled;
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
