#pragma once

#include <algorithm>
#include <chrono>

namespace simulator {

/// Lets so many things a second pass, on average; `burst` at once. It knows no time but what it is told.
class Rate {
 public:
  using Instant = std::chrono::steady_clock::time_point;
  Rate(double perSecond, double burst) : perSecond_(perSecond), burst_(burst), left_(burst) {}

  bool allows(Instant now) {
    if (last_ != Instant{}) {
      const double seconds = std::chrono::duration<double>(now - last_).count();
      left_ = std::min(burst_, left_ + seconds * perSecond_);
    }
    last_ = now;
    if (left_ < 1) return false;
    left_ -= 1;
    return true;
  }

 private:
  const double perSecond_, burst_;
  double left_;
  Instant last_{};
};

}  // namespace simulator
