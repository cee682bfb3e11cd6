#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>

#include "Base/Mutex.h"

namespace ios {

/// The threads behind the global queues. Started one by one, when work comes and none is free; a process that
/// submits nothing has none. Pools live until the process ends.
class WorkerPool {
 public:
  static WorkerPool& high();
  static WorkerPool& standard();

  /// Runs `task` on a thread of the pool and destroys it there. It counts as the clock's work from now until
  /// then. Never blocks. Where memory runs out it throws, and the task is not run.
  void submit(std::function<void()> task);

  /// Marks a wait of the calling thread: if it is one of a pool's, another may take
  /// its place meanwhile.
  class BlockedThread {
   public:
    BlockedThread();
    ~BlockedThread();
    BlockedThread(const BlockedThread&) = delete;
    BlockedThread& operator=(const BlockedThread&) = delete;
  };

 private:
  WorkerPool() = default;
  void run();
  /// For `tasks` that wait.
  void startThreadFor(std::size_t tasks) IOS_REQUIRES(mutex_);

  // More than the two cores of a small machine keep busy; threads that wait inside a block do not count.
  static constexpr std::size_t kRunningThreads = 4;

  Mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> tasks_ IOS_GUARDED_BY(mutex_);
  std::size_t threads_ IOS_GUARDED_BY(mutex_) = 0;
  std::size_t idle_ IOS_GUARDED_BY(mutex_) = 0;
  std::size_t blocked_ IOS_GUARDED_BY(mutex_) = 0;
};

}  // namespace ios
