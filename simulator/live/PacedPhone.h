#pragma once

#include <functional>
#include <vector>

#include "simulator/phone/Phone.h"

namespace simulator {

/// A phone on which a flow can be watched: while it has a pace, whatever takes time on it is made of steps that
/// somebody else takes, when it is time for them. Main thread.
class PacedPhone : public Phone {
 public:
  using Phone::Phone;
  /// Takes a step: fingers, then so much time. Gives the answer to the last request that it made.
  using Pacer = std::function<ios::automation::Step::Answer(ios::Clock::Duration duration,
                                                            const std::vector<ios::TouchSample>& touches)>;
  /// Empty: requests take their time at once, as without an audience.
  void setPacer(Pacer pacer) { pacer_ = std::move(pacer); }
  const Pacer& pacer() const { return pacer_; }

  void tap(const ios::automation::Tap& tap) override;
  void swipe(ios::CGPoint from, ios::CGPoint to, ios::Clock::Duration duration) override;
  void touch(const std::vector<ios::TouchSample>& samples) override;
  void runFor(ios::Clock::Duration duration) override;
  void settle(ios::Clock::Duration limit) override;

 private:
  Pacer pacer_;
  std::int64_t nextFinger_ = 1;
};

}  // namespace simulator
