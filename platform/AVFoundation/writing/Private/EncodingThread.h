#pragma once

#include <condition_variable>
#include <functional>
#include <thread>

#include "Base/Mutex.h"

namespace ios {

/// Runs one piece of work at a time in parallel with its caller: a picture is encoded while the next one is drawn. The
/// clock does not wait for it, so the caller collects the result at a moment that depends on device time alone: then
/// the same flow still gives the same bytes. Used by one thread at a time.
class EncodingThread {
 public:
  EncodingThread() = default;
  EncodingThread(const EncodingThread&) = delete;
  EncodingThread& operator=(const EncodingThread&) = delete;
  /// Waits for the work.
  ~EncodingThread();

  /// Begins `work`; the work before it must have been waited for. The first work starts the thread; if the system has
  /// none left, the work runs on the caller's.
  void begin(std::function<void()> work);
  /// Returns once the work is done, at once if there is none. What it wrote can be read then.
  void wait();

 private:
  void run();

  Mutex mutex_;
  std::condition_variable changed_;
  std::function<void()> work_ IOS_GUARDED_BY(mutex_);
  bool busy_ IOS_GUARDED_BY(mutex_) = false;
  bool ends_ IOS_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace ios
