#include "Dispatch/Semaphore.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <optional>

#include "Base/Mutex.h"
#include "Base/Programming.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/WorkerPool.h"

namespace ios {

class DispatchSemaphore {
 public:
  explicit DispatchSemaphore(long count) : count_(count) {}

  bool wait(dispatch_time_t timeout) {
    std::shared_ptr<Clock::Parking> parking;
    {
      MutexLock lock(mutex_);
      if (count_ > 0) {
        --count_;
        return true;
      }
      if (timeout == DISPATCH_TIME_NOW) return false;
      parking = std::make_shared<Clock::Parking>();
      waiters_.push_back(parking);
    }
    if (park(parking, timeout)) return true;
    // A signal may have chosen this waiter after its time was up; then the count was handed over and is ours.
    MutexLock lock(mutex_);
    auto still = std::find(waiters_.begin(), waiters_.end(), parking);
    if (still == waiters_.end()) return true;
    waiters_.erase(still);
    return false;
  }

  bool signal() {
    std::shared_ptr<Clock::Parking> first;
    {
      MutexLock lock(mutex_);
      if (waiters_.empty()) {
        ++count_;
        return false;
      }
      first = waiters_.front();
      waiters_.pop_front();
    }
    Clock::shared().unpark(*first);
    return true;
  }

 private:
  static bool park(const std::shared_ptr<Clock::Parking>& parking, dispatch_time_t timeout) {
    std::optional<Clock::Instant> deadline;
    if (timeout < static_cast<dispatch_time_t>(std::numeric_limits<std::int64_t>::max())) {
      deadline = Clock::Instant(Clock::Duration(static_cast<std::int64_t>(timeout)));
    }
    WorkerPool::BlockedThread blocked;
    return Clock::shared().park(parking, deadline);
  }

  Mutex mutex_;
  long count_ IOS_GUARDED_BY(mutex_);
  std::deque<std::shared_ptr<Clock::Parking>> waiters_ IOS_GUARDED_BY(mutex_);
};

dispatch_semaphore_t dispatch_semaphore_create(long count) {
  if (count < 0) programmingError("a semaphore starts with 0 or more");
  return std::make_shared<DispatchSemaphore>(count);
}

long dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore, dispatch_time_t timeout) {
  return semaphore->wait(timeout) ? 0 : 1;
}

long dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore) {
  return semaphore->signal() ? 1 : 0;
}

}  // namespace ios
