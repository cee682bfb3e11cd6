#include "Dispatch/WorkerPool.h"

#include <atomic>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "DeviceClock/Clock.h"
#include "DeviceClock/Ordering.h"

namespace ios {
namespace {

thread_local WorkerPool* currentPool = nullptr;

/// Which of `count` tasks is next.
std::size_t nextOf(std::size_t count) {
  static std::atomic<std::uint64_t> taken = 0;
  return orderingSeed() == 0 ? 0 : shuffled(++taken, orderingSeed()) % count;
}

}  // namespace

WorkerPool& WorkerPool::high() {
  static auto& pool = *new WorkerPool;
  return pool;
}

WorkerPool& WorkerPool::standard() {
  static auto& pool = *new WorkerPool;
  return pool;
}

void WorkerPool::submit(std::function<void()> task) {
  {
    MutexLock lock(mutex_);
    startThreadFor(tasks_.size() + 1);
    tasks_.push_back(std::move(task));
    // Once nothing can fail any more, and before anybody can take the task.
    Clock::shared().beginWork();
  }
  wake_.notify_one();
}

void WorkerPool::startThreadFor(std::size_t tasks) {
  // With a seed one at a time, so that the order is the seed's and not the machine's.
  if (tasks <= idle_ || threads_ - blocked_ >= (orderingSeed() == 0 ? kRunningThreads : 1)) return;
  try {
    std::thread([this] { run(); }).detach();
    ++threads_;
  } catch (const std::system_error&) {
    // The system has no thread left. The task waits for one of ours, or for the next attempt.
  } catch (const std::bad_alloc&) {
    if (threads_ == 0) throw;
  }
}

void WorkerPool::run() {
  currentPool = this;
  Clock::markWorkerThread();
  MutexLock lock(mutex_);
  for (;;) {
    ++idle_;
    while (tasks_.empty()) lock.wait(wake_);
    --idle_;
    const auto next = tasks_.begin() + static_cast<std::ptrdiff_t>(nextOf(tasks_.size()));
    auto task = std::move(*next);
    tasks_.erase(next);
    lock.unlock();
    task();
    task = nullptr;  // what it holds is destroyed before the device may come to rest
    Clock::shared().endWork();
    lock.lock();
  }
}

WorkerPool::BlockedThread::BlockedThread() {
  if (!currentPool) return;
  MutexLock lock(currentPool->mutex_);
  ++currentPool->blocked_;
  currentPool->startThreadFor(currentPool->tasks_.size());
}

WorkerPool::BlockedThread::~BlockedThread() {
  if (!currentPool) return;
  MutexLock lock(currentPool->mutex_);
  --currentPool->blocked_;
}

}  // namespace ios
