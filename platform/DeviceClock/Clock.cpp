#include "DeviceClock/Clock.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "Base/Programming.h"

namespace ios {
namespace {

const std::thread::id kLoadingThread = std::this_thread::get_id();

constexpr Clock::Duration kSecond = std::chrono::seconds(1);
/// Real time after which a wait for rest in virtual time reports what it is waiting for.
constexpr std::chrono::seconds kPatience{60};

}  // namespace

Clock& Clock::shared() {
  static auto& clock = *new Clock;  // never destroyed: workers may outlive static objects
  return clock;
}

// The loading thread may not be known yet when another image is initialised first; then the calling thread is
// the loading thread.
Clock::Clock()
    : mainThread_(kLoadingThread == std::thread::id() ? std::this_thread::get_id() : kLoadingThread),
      realStart_(std::chrono::steady_clock::now()) {}

void Clock::useVirtualTime(Instant start, WallTime wall) {
  MutexLock lock(mutex_);
  if (virtual_ || !events_.untouched())
    programmingError("virtual time must be chosen before the clock's first use");
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

Clock::Instant Clock::refresh(std::int64_t n) {
  // In two steps: the product would not fit after some years.
  return Instant(std::chrono::seconds(n / kRefreshesPerSecond) +
                 n % kRefreshesPerSecond * kSecond / kRefreshesPerSecond);
}

std::int64_t Clock::newestRefresh(Instant at) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(at);
  const std::int64_t first = seconds.time_since_epoch().count() * kRefreshesPerSecond;
  const std::int64_t n = first + (at - seconds) * kRefreshesPerSecond / kSecond;
  return refresh(n + 1) <= at ? n + 1 : n;
}

Clock::Instant Clock::after(Duration duration) const {
  const Instant start = now();
  return duration > Instant::max() - start ? Instant::max() : start + duration;
}

Clock::EventId Clock::schedule(Instant deadline, Lane lane, Work fire) {
  MutexLock lock(mutex_);
  const EventId id = events_.add(deadline, lane, std::move(fire));
  if (virtual_) return id;
  if (lane == Lane::main) {
    wakeMain();
  } else {
    if (!std::exchange(timerThreadRuns_, true)) std::thread([this] { timerThread(); }).detach();
    timerWake_.notify_one();
  }
  return id;
}

bool Clock::cancel(EventId event) {
  std::optional<Work> dropped;  // destroyed after the lock is released: its captures may call back
  MutexLock lock(mutex_);
  dropped = events_.remove(event);
  return dropped.has_value();
}

void Clock::postToMain(Work work) {
  MutexLock lock(mutex_);
  mainQueue_.push_back(std::move(work));
  wakeMain();
}

void Clock::endWork() {
  const bool rest = busy_.fetch_sub(1, std::memory_order_acq_rel) == 1;
  if (virtual_ && !rest) return;
  MutexLock lock(mutex_);
  wakeMain();
}

void Clock::wakeMain() {
  ++mainWakes_;
  mainWake_.notify_one();
}

void Clock::moveTo(Instant instant) {
  virtualNow_.store(std::max(virtualNow_.load(), instant.time_since_epoch().count()),
                    std::memory_order_release);
}

std::optional<Clock::Work> Clock::takeDueEvent(Instant limit, std::optional<Lane> lane) {
  auto due = events_.take(limit, lane);
  if (!due) return std::nullopt;
  if (virtual_) moveTo(due->deadline);
  return std::move(due->fire);
}

std::chrono::steady_clock::time_point Clock::realDeadline(Instant instant) const {
  return realStart_ + std::min(instant, after(std::chrono::hours(1))).time_since_epoch();
}

void Clock::runFor(Duration duration) {
  pump(nullptr, after(duration));
}

Clock::Result Clock::runUntil(const std::function<bool()>& condition, Duration limit) {
  if (pump(&condition, after(limit))) return {true, {}};
  return {false, pending()};
}

void Clock::runUntilRest() {
  pump(nullptr, now());
}

void Clock::advanceFrame() {
  pump(nullptr, nextRefresh(now()));
}

void Clock::moveWithoutRest(Duration duration) {
  if (!isMainThread()) programmingError("the clock's verbs belong to the main thread");
  if (!virtual_) programmingError("only virtual time can be moved");
  const Instant limit = after(duration);
  for (;;) {
    std::optional<Work> fire;
    {
      MutexLock lock(mutex_);
      fire = takeDueEvent(limit, std::nullopt);
      if (!fire) {
        moveTo(limit);
        return;
      }
    }
    (*fire)();
  }
}

bool Clock::pump(const Condition* condition, Instant limit) {
  if (!isMainThread()) programmingError("the clock's verbs belong to the main thread");
  return virtual_ ? pumpVirtualTime(condition, limit) : pumpRealTime(condition, limit);
}

bool Clock::runOneMainItem() {
  Work work;
  {
    MutexLock lock(mutex_);
    if (mainQueue_.empty()) return false;
    work = std::move(mainQueue_.front());
    mainQueue_.pop_front();
  }
  work();
  return true;
}

bool Clock::comeToRest() {
  const auto patience = std::chrono::steady_clock::now() + kPatience;
  bool told = false;
  MutexLock lock(mutex_);
  while (mainQueue_.empty() && busy_.load(std::memory_order_acquire) != 0) {
    if (told) {
      lock.wait(mainWake_);
    } else if (lock.waitUntil(mainWake_, patience) == std::cv_status::timeout) {
      // Otherwise work that never ends would hang the process without any message.
      told = true;
      lock.unlock();
      std::fprintf(stderr, "the device does not come to rest:\n%s", pending().c_str());
      lock.lock();
    }
  }
  return mainQueue_.empty();
}

bool Clock::pumpVirtualTime(const Condition* condition, Instant limit) {
  const auto met = [condition] { return condition && (*condition)(); };
  for (;;) {
    if (met()) return true;
    if (runOneMainItem()) continue;
    if (!comeToRest()) continue;
    // Workers may have met the condition on the way to rest; then time must not move any more.
    if (met()) return true;
    std::optional<Work> fire;
    {
      MutexLock lock(mutex_);
      if (!mainQueue_.empty() || busy_.load(std::memory_order_acquire) != 0)
        continue;  // queued or begun by the condition itself
      fire = takeDueEvent(limit, std::nullopt);
      if (!fire) moveTo(limit);
    }
    if (!fire) return met();
    (*fire)();
  }
}

bool Clock::pumpRealTime(const Condition* condition, Instant limit) {
  const auto met = [condition] { return condition && (*condition)(); };
  for (;;) {
    std::uint64_t seen;
    {
      MutexLock lock(mutex_);
      seen = mainWakes_;
    }
    if (met()) return true;
    if (runOneMainItem()) continue;
    std::optional<Work> fire;
    {
      MutexLock lock(mutex_);
      fire = takeDueEvent(std::min(now(), limit), Lane::main);
      if (!fire) {
        if (!mainQueue_.empty()) continue;
        if (now() >= limit) break;
        // A wake since the condition was evaluated may concern it.
        if (mainWakes_ == seen) {
          lock.waitUntil(mainWake_,
                         realDeadline(std::min(limit, events_.nextDeadline(Lane::main).value_or(limit))));
        }
        continue;
      }
    }
    (*fire)();
  }
  return met();
}

// Real time only: fires the events that may fire on any thread, so that a busy main thread
// does not delay them.
void Clock::timerThread() {
  MutexLock lock(mutex_);
  for (;;) {
    if (auto fire = takeDueEvent(now(), Lane::any)) {
      lock.unlock();
      (*fire)();
      fire.reset();
      lock.lock();
    } else if (auto next = events_.nextDeadline(Lane::any)) {
      lock.waitUntil(timerWake_, realDeadline(*next));
    } else {
      lock.wait(timerWake_);
    }
  }
}

std::optional<Clock::Instant> Clock::nextEvent() const {
  MutexLock lock(mutex_);
  const auto first = events_.nextDeadlines(1);
  return first.empty() ? std::nullopt : std::optional(first.front());
}

std::string Clock::pending() const {
  std::string text;
  std::vector<std::function<std::vector<std::string>()>> reporters;
  {
    MutexLock lock(mutex_);
    reporters = reporters_;
    if (!mainQueue_.empty()) text += "main queue: " + std::to_string(mainQueue_.size()) + " items\n";
    for (const auto& name : activities_) text += "under way: " + name + "\n";
    for (const Instant deadline : events_.nextDeadlines(5)) {
      const double seconds = std::chrono::duration<double>(deadline.time_since_epoch()).count();
      text += "event at " + std::to_string(seconds) + " s\n";
    }
  }
  for (const auto& reporter : reporters) {
    for (const auto& line : reporter()) text += line + "\n";
  }
  return text.empty() ? "nothing pending\n" : text;
}

void Clock::addReporter(std::function<std::vector<std::string>()> reporter) {
  MutexLock lock(mutex_);
  reporters_.push_back(std::move(reporter));
}

Clock::Activity::Activity(std::string name) {
  Clock& clock = shared();
  clock.beginWork();
  MutexLock lock(clock.mutex_);
  entry_ = clock.activities_.insert(std::move(name));
}

Clock::Activity::~Activity() {
  Clock& clock = shared();
  {
    MutexLock lock(clock.mutex_);
    clock.activities_.erase(entry_);
  }
  clock.endWork();
}

}  // namespace ios
