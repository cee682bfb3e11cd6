#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "Foundation/NSRunLoop.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// Calls its target at the refreshes of the display, on the main thread. Refreshes come 60 times a second, on one
/// grid for the whole device. A main thread that is late gets one tick, with the newest refresh's time, and never a
/// burst of old ones. The target is kept alive until the link is off its run loop.
class CADisplayLink : public NSObject {
 public:
  CADisplayLink(const id& target, Selector selector);
  ~CADisplayLink() override;
  static std::shared_ptr<CADisplayLink> displayLinkWithTarget(const id& target, Selector selector);

  void addToRunLoop(const std::shared_ptr<NSRunLoop>& runLoop, const NSRunLoopMode& mode);
  /// Any thread; a tick that is under way ends as usual.
  void removeFromRunLoop(const std::shared_ptr<NSRunLoop>& runLoop, const NSRunLoopMode& mode);
  void invalidate();

  bool isPaused() const { return paused_; }
  void setPaused(bool paused);
  /// One tick every `interval` refreshes; at least 1.
  long frameInterval() const { return frameInterval_; }
  void setFrameInterval(long interval);
  /// Time of the refresh last delivered, in seconds on the display's clock; 0 before the first. Any thread.
  double timestamp() const { return timestamp_; }

 private:
  void arm();
  void disarm();
  void tick(std::int64_t refresh);

  id target_;
  Action action_;
  std::atomic<bool> attached_ = false, paused_ = false;
  std::atomic<long> frameInterval_ = 1;
  std::atomic<double> timestamp_ = 0;
  NSRunLoopMode mode_;
  std::mutex mutex_;
  std::optional<std::uint64_t> event_;
};

}  // namespace ios
