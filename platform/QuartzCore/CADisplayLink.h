#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "Base/Mutex.h"
#include "Foundation/NSRunLoop.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// Calls its target at the refreshes of the display, on the main thread. Refreshes come 60 times a second, on
/// one grid for the whole device. A main thread that is late gets one tick, with the newest refresh's time,
/// never a burst of old ones. The target is kept alive until the link is removed from its run loop.
class CADisplayLink : public NSObject {
 public:
  /// Must be held by a shared reference, as the run loop keeps one too. A selector that the target lacks
  /// stops the process.
  CADisplayLink(const id& target, Selector selector);
  static std::shared_ptr<CADisplayLink> displayLinkWithTarget(const id& target, Selector selector);

  /// May be called once, with one mode (the common modes count as one). Run loops other than the main one are
  /// never run and give no ticks.
  void addToRunLoop(const std::shared_ptr<NSRunLoop>& runLoop, const NSRunLoopMode& mode);
  /// Any thread; a tick that is running ends as usual.
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
  std::int64_t nextDue() const IOS_REQUIRES(mutex_);
  void arm(std::int64_t refresh) IOS_REQUIRES(mutex_);
  /// Takes back the pending tick and returns its event, to be cancelled without the lock: the event may hold
  /// the last reference to the link.
  std::optional<std::uint64_t> disarm() IOS_REQUIRES(mutex_);
  void tick(std::uint64_t arming) IOS_EXCLUDES(mutex_);
  void deliver(std::uint64_t arming) IOS_EXCLUDES(mutex_);

  const Action action_;
  std::atomic<bool> paused_ = false;
  std::atomic<long> frameInterval_ = 1;
  std::atomic<double> timestamp_ = 0;

  Mutex mutex_;
  id target_ IOS_GUARDED_BY(mutex_);
  NSRunLoopMode mode_ IOS_GUARDED_BY(mutex_);
  bool attached_ IOS_GUARDED_BY(mutex_) = false;
  bool armed_ IOS_GUARDED_BY(mutex_) = false;
  // Counts up, so that a pending tick can tell that it was taken back.
  std::uint64_t arming_ IOS_GUARDED_BY(mutex_) = 0;
  std::uint64_t event_ IOS_GUARDED_BY(mutex_) = 0;
  std::optional<std::int64_t> lastRefresh_ IOS_GUARDED_BY(mutex_);
};

}  // namespace ios
