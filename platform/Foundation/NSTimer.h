#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ObjectiveC/NSObject.h"

namespace ios {

class NSRunLoop;

/// A timer on a run loop. It keeps its target alive until it is invalidated (one that does not repeat is,
/// once it has begun to fire). A repeating timer keeps to its grid: firings that were missed are skipped,
/// never made up for. Used on the thread of its run loop.
class NSTimer : public NSObject {
 public:
  NSTimer(double interval, const id& target, Selector selector, const id& userInfo, bool repeats);
  ~NSTimer() override;

  /// Makes a timer and adds it to the current thread's run loop in the default mode. `interval` in seconds; 0
  /// and less count as 0.1 ms. `selector` takes the timer or nothing; one that the target lacks stops the
  /// process, here.
  static std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(double interval, const id& target,
                                                                 Selector selector, const id& userInfo,
                                                                 bool repeats);
  void invalidate();
  bool isValid() const { return valid_; }
  const id& userInfo() const { return userInfo_; }

 private:
  friend class NSRunLoop;
  void schedule(const std::shared_ptr<NSRunLoop>& runLoop, const std::string& mode);
  void arm();
  void fire();

  double interval_;
  id target_;
  Action action_;
  id userInfo_;
  bool repeats_;
  bool valid_ = true;
  std::string mode_;
  std::weak_ptr<NSRunLoop> runLoop_;
  std::int64_t nextFire_ = 0;  // ns on the device's clock
  std::optional<std::uint64_t> event_;
};

}  // namespace ios
