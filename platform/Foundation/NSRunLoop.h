#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ObjectiveC/NSObject.h"

namespace ios {

class NSTimer;
using NSRunLoopMode = std::string;
/// The mode of an application at rest; delayed performs and scheduled timers run in it.
inline const NSRunLoopMode NSDefaultRunLoopMode = "kCFRunLoopDefaultMode";
/// The mode while a finger drags a scrolling view; timers of the default mode wait until it ends.
inline const NSRunLoopMode UITrackingRunLoopMode = "UITrackingRunLoopMode";
/// Stands for both.
inline const NSRunLoopMode NSRunLoopCommonModes = "kCFRunLoopCommonModes";

/// The loop of a thread. The main thread's is run by the application; every other thread has one too,
/// which nobody runs, so that timers scheduled there never fire, as on the platform; such a loop does not
/// keep them either.
class NSRunLoop : public NSObject {
 public:
  static const std::shared_ptr<NSRunLoop>& mainRunLoop();
  static std::shared_ptr<NSRunLoop> currentRunLoop();

  /// The main run loop keeps the timer until it is invalidated. On the loop's own thread.
  void addTimer(const std::shared_ptr<NSTimer>& timer, const NSRunLoopMode& mode);

  /// The mode the loop runs in now. The application pushes the tracking mode while a drag lasts.
  const NSRunLoopMode& currentMode() const { return modes_.back(); }
  void pushMode(const NSRunLoopMode& mode);
  /// Work that waited for the mode that is now resumed runs soon, not inside this call.
  void popMode();
  bool accepts(const NSRunLoopMode& mode) const;
  /// Runs `due` now if `mode` is being run, or as soon as it is. Main run loop, main thread.
  void performWhenMode(const NSRunLoopMode& mode, std::function<void()> due);

 private:
  void releaseWaiting();

  std::vector<NSRunLoopMode> modes_{NSDefaultRunLoopMode};
  struct Waiting {
    NSRunLoopMode mode;
    std::function<void()> due;
  };
  std::vector<Waiting> waiting_;
};

/// Calls `selector` on `target` once, `delay` seconds from now, in the default mode of the current thread's
/// run loop, with `argument` if the selector takes one. The target is kept alive until then. Never called
/// inside this call, even for a delay of 0. A selector that the target lacks stops the process, here. Off the
/// main thread it is never called, as nobody runs the loop.
void performSelectorAfterDelay(const id& target, Selector selector, const id& argument, double delay);
/// Cancels every delayed perform of `target` that was requested on the main thread. Main thread; elsewhere there is
/// nothing to cancel.
void cancelPreviousPerformRequestsWithTarget(const NSObject& target);

}  // namespace ios
