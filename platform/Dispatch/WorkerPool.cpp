#include "Dispatch/WorkerPool.h"

#include <thread>

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
  std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
  startThreadIfNeeded();
  wake_.notify_one();
}

void WorkerPool::startThreadIfNeeded() {
  if (tasks_.size() <= idle_ || threads_ - blocked_ >= kRunningThreads) return;
  ++threads_;
  std::thread([this] { run(); }).detach();
}

void WorkerPool::run() {
  currentPool = this;
  Clock::markWorkerThread();
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idle_;
    wake_.wait(lock, [this] { return !tasks_.empty(); });
    --idle_;
    auto task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
  }
}

void WorkerPool::currentThreadBlocks() {
  if (!currentPool) return;
  std::lock_guard lock(currentPool->mutex_);
  ++currentPool->blocked_;
  currentPool->startThreadIfNeeded();
}

void WorkerPool::currentThreadResumes() {
  if (!currentPool) return;
  std::lock_guard lock(currentPool->mutex_);
  --currentPool->blocked_;
}

}  // namespace ios
