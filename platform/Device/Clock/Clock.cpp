#include "DeviceClock/Clock.h"

#include <algorithm>

#include "ObjectiveC/Programming.h"

namespace ios {
namespace {

thread_local bool isWorkerThread = false;
const std::thread::id kLoadingThread = std::this_thread::get_id();

}  // namespace

Clock& Clock::shared() {
  static auto& clock = *new Clock;  // never destroyed: workers may outlive static objects
  return clock;
}

Clock::Clock()
    : mainThread_(kLoadingThread == std::thread::id() ? std::this_thread::get_id() : kLoadingThread),
      realStart_(std::chrono::steady_clock::now()) {}

void Clock::useVirtualTime(Instant start, WallTime wall) {
  std::lock_guard lock(mutex_);
  if (virtual_ || lastEvent_ != 0) programmingError("virtual time must be chosen before the clock's first use");
  virtualStart_ = start;
  virtualWall_ = wall;
  virtualNow_ = start.time_since_epoch().count();
  virtual_ = true;
}

Clock::Instant Clock::now() const {
  if (virtual_) return Instant(Duration(virtualNow_.load(std::memory_order_acquire)));
  return Instant(std::chrono::steady_clock::now() - realStart_);
}

Clock::WallTime Clock::wallTime() const {
  if (virtual_) return virtualWall_ + (now() - virtualStart_);
  return std::chrono::system_clock::now();
}

Clock::Instant Clock::nextRefresh(Instant after) {
  std::int64_t n = after.time_since_epoch().count() * 60 / 1'000'000'000;
  while (refresh(n) <= after) ++n;
  return refresh(n);
}

Clock::EventId Clock::schedule(Instant deadline, Lane lane, Work fire) {
  std::lock_guard lock(mutex_);
  const EventId id = ++lastEvent_;
  events_.emplace(Key{deadline, id}, Event{id, lane, std::move(fire)});
  deadlines_.emplace(id, deadline);
  if (!virtual_) {
    if (lane == Lane::main) {
      mainWake_.notify_one();
    } else {
      if (!std::exchange(timerThreadRuns_, true)) std::thread([this] { timerThread(); }).detach();
      timerWake_.notify_one();
    }
  }
  return id;
}

bool Clock::cancel(EventId event) {
  Work dropped;  // destroyed after the lock is gone: its captures may call back
  std::lock_guard lock(mutex_);
  auto found = deadlines_.find(event);
  if (found == deadlines_.end()) return false;
  auto entry = events_.find(Key{found->second, event});
  dropped = std::move(entry->second.fire);
  events_.erase(entry);
  deadlines_.erase(found);
  return true;
}

void Clock::postToMain(Work work) {
  std::lock_guard lock(mutex_);
  mainQueue_.push_back(std::move(work));
  mainWake_.notify_one();
}

void Clock::endWork() {
  if (busy_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  std::lock_guard lock(mutex_);
  mainWake_.notify_one();
}

bool Clock::runOneMainItem() {
  Work work;
  {
    std::lock_guard lock(mutex_);
    if (mainQueue_.empty()) return false;
    work = std::move(mainQueue_.front());
    mainQueue_.pop_front();
  }
  work();
  return true;
}

bool Clock::takeDueEvent(Instant limit, std::optional<Lane> lane, Work& fire) {
  for (auto entry = events_.begin(); entry != events_.end() && entry->first.first <= limit; ++entry) {
    if (lane && entry->second.lane != *lane) continue;
    if (virtual_) {
      virtualNow_.store(std::max(virtualNow_.load(), entry->first.first.time_since_epoch().count()),
                        std::memory_order_release);
    }
    fire = std::move(entry->second.fire);
    deadlines_.erase(entry->second.id);
    events_.erase(entry);
    return true;
  }
  return false;
}

bool Clock::pump(const std::function<bool()>* condition, Instant limit) {
  if (!isMainThread()) programmingError("the clock's verbs belong to the main thread");
  for (;;) {
    if (condition && (*condition)()) return true;
    if (runOneMainItem()) continue;
    Work fire;
    {
      std::unique_lock lock(mutex_);
      if (virtual_) {
        mainWake_.wait(lock, [this] { return !mainQueue_.empty() || busy_.load(std::memory_order_acquire) == 0; });
        if (!mainQueue_.empty()) continue;
        if (!takeDueEvent(limit, std::nullopt, fire)) {
          virtualNow_.store(std::max(virtualNow_.load(), limit.time_since_epoch().count()), std::memory_order_release);
          lock.unlock();
          return condition && (*condition)();
        }
      } else if (!takeDueEvent(std::min(now(), limit), Lane::main, fire)) {
        if (!mainQueue_.empty()) continue;
        if (now() >= limit) {
          lock.unlock();
          return condition && (*condition)();
        }
        Instant wake = limit;
        for (const auto& [key, event] : events_) {
          if (event.lane == Lane::main) {
            wake = std::min(wake, key.first);
            break;
          }
        }
        mainWake_.wait_until(lock, realStart_ + wake.time_since_epoch());
        continue;
      }
    }
    fire();
  }
}

void Clock::runFor(Duration duration) { pump(nullptr, now() + duration); }

Clock::Result Clock::runUntil(const std::function<bool()>& condition, Duration limit) {
  if (pump(&condition, now() + limit)) return {true, {}};
  return {false, pending()};
}

void Clock::runUntilRest() { pump(nullptr, now()); }

void Clock::advanceFrame() { pump(nullptr, nextRefresh(now())); }

void Clock::moveWithoutRest(Duration duration) {
  if (!virtual_) programmingError("only virtual time can be moved");
  const Instant limit = now() + duration;
  for (;;) {
    Work fire;
    {
      std::unique_lock lock(mutex_);
      if (!takeDueEvent(limit, std::nullopt, fire)) {
        virtualNow_.store(limit.time_since_epoch().count(), std::memory_order_release);
        return;
      }
    }
    fire();
  }
}

std::string Clock::pending() const {
  std::string text;
  std::vector<std::function<std::vector<std::string>()>> reporters;
  {
    std::lock_guard lock(mutex_);
    reporters = reporters_;
    if (!mainQueue_.empty()) text += "main queue: " + std::to_string(mainQueue_.size()) + " items\n";
    for (const auto& name : activities_) text += "under way: " + name + "\n";
    int shown = 0;
    for (const auto& [key, event] : events_) {
      if (++shown > 5) break;
      const double seconds = std::chrono::duration<double>(key.first.time_since_epoch()).count();
      text += "event at " + std::to_string(seconds) + " s\n";
    }
  }
  for (const auto& reporter : reporters) {
    for (const auto& line : reporter()) text += line + "\n";
  }
  return text.empty() ? "nothing pending\n" : text;
}

// Real time only: events that any thread may fire, so that a busy main thread does not hold them up.
void Clock::timerThread() {
  std::unique_lock lock(mutex_);
  for (;;) {
    Work fire;
    if (takeDueEvent(now(), Lane::any, fire)) {
      lock.unlock();
      fire();
      fire = nullptr;
      lock.lock();
      continue;
    }
    auto next = std::find_if(events_.begin(), events_.end(),
                             [](const auto& entry) { return entry.second.lane == Lane::any; });
    if (next == events_.end()) {
      timerWake_.wait(lock);
    } else {
      timerWake_.wait_until(lock, realStart_ + next->first.first.time_since_epoch());
    }
  }
}

Clock::Activity::Activity(std::string name) {
  Clock& clock = shared();
  clock.beginWork();
  std::lock_guard lock(clock.mutex_);
  entry_ = clock.activities_.insert(std::move(name));
}

Clock::Activity::~Activity() {
  Clock& clock = shared();
  {
    std::lock_guard lock(clock.mutex_);
    clock.activities_.erase(entry_);
  }
  clock.endWork();
}

void Clock::markWorkerThread() { isWorkerThread = true; }

void Clock::addReporter(std::function<std::vector<std::string>()> reporter) {
  std::lock_guard lock(mutex_);
  reporters_.push_back(std::move(reporter));
}

bool Clock::park(const std::shared_ptr<Parking>& held, std::optional<Instant> deadline) {
  Parking& parking = *held;
  std::unique_lock lock(mutex_);
  if (parking.state == Parking::State::woken) return true;
  parking.state = Parking::State::parked;
  if (isMainThread() && virtual_) return parkMainVirtually(parking, deadline, lock);

  parking.counted = isWorkerThread;
  if (parking.counted && busy_.fetch_sub(1) == 1) mainWake_.notify_one();
  const auto woken = [&] { return parking.state != Parking::State::parked; };
  if (!deadline) {
    parking.wake.wait(lock, woken);
  } else if (virtual_) {
    const EventId id = ++lastEvent_;
    // Fires with the lock released; the waker restores the count, so that no instant is left in which time could move.
    events_.emplace(Key{*deadline, id}, Event{id, Lane::any, [this, held] {
                                                std::lock_guard inner(mutex_);
                                                Parking& parking = *held;
                                                if (parking.state != Parking::State::parked) return;
                                                parking.state = Parking::State::late;
                                                if (parking.counted) beginWork();
                                                parking.wake.notify_one();
                                              }});
    deadlines_.emplace(id, *deadline);
    mainWake_.notify_one();
    parking.wake.wait(lock, woken);
    if (auto left = deadlines_.find(id); left != deadlines_.end()) {
      events_.erase(Key{left->second, id});
      deadlines_.erase(left);
    }
  } else if (!parking.wake.wait_until(lock, realStart_ + deadline->time_since_epoch(), woken)) {
    parking.state = Parking::State::late;
    if (parking.counted) beginWork();
  }
  return parking.state == Parking::State::woken;
}

bool Clock::parkMainVirtually(Parking& parking, std::optional<Instant> deadline, std::unique_lock<std::mutex>& lock) {
  for (;;) {
    const auto woken = [&] { return parking.state == Parking::State::woken; };
    mainWake_.wait(lock, [&] { return woken() || busy_.load(std::memory_order_acquire) == 0; });
    if (woken()) return true;
    Work fire;
    // Main-thread events wait until this thread is free again.
    if (takeDueEvent(deadline.value_or(Instant::max()), Lane::any, fire)) {
      lock.unlock();
      fire();
      fire = nullptr;
      lock.lock();
      continue;
    }
    if (!deadline) {
      lock.unlock();
      programmingError("the main thread waits for something that nothing can bring about:\n" + pending());
    }
    virtualNow_.store(std::max(virtualNow_.load(), deadline->time_since_epoch().count()), std::memory_order_release);
    parking.state = Parking::State::late;
    return false;
  }
}

void Clock::unpark(Parking& parking) {
  std::lock_guard lock(mutex_);
  const bool wasParked = parking.state == Parking::State::parked;
  if (parking.state == Parking::State::late) return;
  parking.state = Parking::State::woken;
  if (!wasParked) return;
  if (parking.counted) beginWork();
  parking.wake.notify_one();
  mainWake_.notify_one();
}

}  // namespace ios
