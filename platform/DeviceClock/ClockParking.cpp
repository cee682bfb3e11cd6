// How threads wait on the clock.
#include "Base/Programming.h"
#include "DeviceClock/Clock.h"

namespace ios {
namespace {

thread_local bool isWorkerThread = false;

}  // namespace

void Clock::markWorkerThread() {
  isWorkerThread = true;
}

bool Clock::park(const std::shared_ptr<Parking>& parking, std::optional<Instant> deadline) {
  if (!virtual_) return parkReally(*parking, deadline);
  return isMainThread() ? parkMainVirtually(*parking, deadline) : parkVirtually(parking, deadline);
}

void Clock::unpark(Parking& parking) {
  MutexLock lock(mutex_);
  if (parking.state == Parking::State::late) return;
  const bool wasParked = parking.state == Parking::State::parked;
  parking.state = Parking::State::woken;
  if (!wasParked) return;
  // The waker restores the count, which leaves no instant in which time could move.
  if (parking.counted) beginWork();
  parking.wake.notify_one();
  wakeMain();
}

bool Clock::beginParking(Parking& parking) {
  if (parking.state == Parking::State::woken) return false;
  parking.state = Parking::State::parked;
  parking.counted = isWorkerThread;
  if (parking.counted) {
    busy_.fetch_sub(1, std::memory_order_acq_rel);
    wakeMain();
  }
  return true;
}

void Clock::giveUpParking(Parking& parking) {
  if (parking.state != Parking::State::parked) return;
  parking.state = Parking::State::late;
  if (parking.counted) beginWork();
  parking.wake.notify_one();
}

bool Clock::parkReally(Parking& parking, std::optional<Instant> deadline) {
  MutexLock lock(mutex_);
  if (!beginParking(parking)) return true;
  while (parking.state == Parking::State::parked) {
    if (!deadline) {
      lock.wait(parking.wake);
    } else if (now() < *deadline) {
      lock.waitUntil(parking.wake, realDeadline(*deadline));
    } else {
      giveUpParking(parking);
    }
  }
  return parking.state == Parking::State::woken;
}

bool Clock::parkVirtually(const std::shared_ptr<Parking>& parking, std::optional<Instant> deadline) {
  std::optional<Work> unused;  // destroyed after the lock is released
  MutexLock lock(mutex_);
  if (!beginParking(*parking)) return true;
  std::optional<EventId> timeUp;
  if (deadline) {
    timeUp = events_.add(*deadline, Lane::any, [this, parking] {
      MutexLock inner(mutex_);
      giveUpParking(*parking);
    });
  }
  while (parking->state == Parking::State::parked) lock.wait(parking->wake);
  if (timeUp) unused = events_.remove(*timeUp);
  return parking->state == Parking::State::woken;
}

bool Clock::parkMainVirtually(Parking& parking, std::optional<Instant> deadline) {
  for (;;) {
    std::optional<Work> fire;
    {
      MutexLock lock(mutex_);
      while (parking.state != Parking::State::woken && busy_.load(std::memory_order_acquire) != 0)
        lock.wait(mainWake_);
      if (parking.state == Parking::State::woken) return true;
      parking.state = Parking::State::parked;
      // Main-thread events wait until this thread is free again.
      fire = takeDueEvent(deadline.value_or(Instant::max()), Lane::any);
      if (!fire && deadline) {
        moveTo(*deadline);
        parking.state = Parking::State::late;
        return false;
      }
    }
    if (!fire) {
      programmingError("the main thread waits for something that nothing can bring about:\n" + pending());
    }
    (*fire)();
  }
}

}  // namespace ios
