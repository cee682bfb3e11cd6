#include "AVFoundation/Private/EncodingThread.h"

#include <new>
#include <system_error>
#include <utility>

namespace ios {

EncodingThread::~EncodingThread() {
  if (!thread_.joinable()) return;
  {
    MutexLock lock(mutex_);
    ends_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void EncodingThread::begin(std::function<void()> work) {
  if (!thread_.joinable()) {
    try {
      thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
      return work();
    } catch (const std::bad_alloc&) {
      return work();
    }
  }
  {
    MutexLock lock(mutex_);
    work_ = std::move(work);
    busy_ = true;
  }
  changed_.notify_all();
}

void EncodingThread::wait() {
  MutexLock lock(mutex_);
  while (busy_) lock.wait(changed_);
}

void EncodingThread::run() {
  MutexLock lock(mutex_);
  for (;;) {
    while (!busy_ && !ends_) lock.wait(changed_);
    if (!busy_) return;
    const auto work = std::exchange(work_, nullptr);
    lock.unlock();
    work();
    lock.lock();
    busy_ = false;
    changed_.notify_all();
  }
}

}  // namespace ios
