#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace ios {

/// The threads behind the global queues. Started one by one, when work comes and none is free; a process that
/// submits nothing has none. Pools live until the process ends.
class WorkerPool {
 public:
  static WorkerPool& high();
  static WorkerPool& standard();

  /// Runs `task` on a thread of the pool. Never blocks.
  void submit(std::function<void()> task);

  /// Told around a wait of one of the pool's threads, so that another may take its place meanwhile.
  static void currentThreadBlocks();
  static void currentThreadResumes();

 private:
  WorkerPool() = default;
  void run();
  void startThreadIfNeeded();

  // More than the two cores of a small machine keep busy; threads that wait inside a block do not count.
  static constexpr std::size_t kRunningThreads = 4;

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> tasks_;
  std::size_t threads_ = 0;
  std::size_t idle_ = 0;
  std::size_t blocked_ = 0;
};

}  // namespace ios
