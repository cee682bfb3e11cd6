#include "Dispatch/WorkerPool.h"

#include <system_error>
#include <thread>
#include <utility>

#include "DeviceClock/Clock.h"

namespace ios {
namespace {
thread_local WorkerPool* currentPool = nullptr;
}

WorkerPool& WorkerPool::high() {
  static auto& pool = *new WorkerPool;
  return pool;
}

WorkerPool& WorkerPool::standard() {
  static auto& pool = *new WorkerPool;
  return pool;
}

void WorkerPool::submit(std::function<void()> task) {
  Clock::shared().beginWork();
  {
    MutexLock lock(mutex_);
    tasks_.push_back(std::move(task));
    startThreadIfNeeded();
  }
  wake_.notify_one();
}

void WorkerPool::startThreadIfNeeded() {
  if (tasks_.size() <= idle_ || threads_ - blocked_ >= kRunningThreads) return;
  try {
    std::thread([this] { run(); }).detach();
    ++threads_;
  } catch (const std::system_error&) {
    // The system has no thread left. The task waits for one of ours, or for the next attempt.
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
    auto task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    task = nullptr;  // what it holds goes before the device may come to rest
    Clock::shared().endWork();
    lock.lock();
  }
}

WorkerPool::BlockedThread::BlockedThread() {
  if (!currentPool) return;
  MutexLock lock(currentPool->mutex_);
  ++currentPool->blocked_;
  currentPool->startThreadIfNeeded();
}

WorkerPool::BlockedThread::~BlockedThread() {
  if (!currentPool) return;
  MutexLock lock(currentPool->mutex_);
  --currentPool->blocked_;
}

}  // namespace ios
