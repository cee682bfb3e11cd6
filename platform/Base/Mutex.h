#pragma once

#include <condition_variable>
#include <mutex>

#include "Base/ThreadAnnotations.h"

namespace ios {

/// A `std::mutex` that fields can be declared to be guarded by (`IOS_GUARDED_BY`). Held through `MutexLock`.
class IOS_CAPABILITY("mutex") Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

 private:
  friend class MutexLock;
  std::mutex mutex_;
};

/// Holds a mutex while it lives. Waits take no predicate: the analysis does not see into closures, so the
/// caller writes the loop.
class IOS_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) IOS_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  ~MutexLock() IOS_RELEASE() = default;
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  void unlock() IOS_RELEASE() { lock_.unlock(); }
  void lock() IOS_ACQUIRE() { lock_.lock(); }

  void wait(std::condition_variable& condition) { condition.wait(lock_); }
  template <class TimePoint>
  std::cv_status waitUntil(std::condition_variable& condition, const TimePoint& deadline) {
    return condition.wait_until(lock_, deadline);
  }

 private:
  std::unique_lock<std::mutex> lock_;
};

}  // namespace ios
