#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Base/Mutex.h"
#include "DeviceClock/EventQueue.h"

namespace ios {

/// The device's one clock, and the main thread's loop on it.
///
/// Everything delayed or periodic is an event here: run-loop timers, delayed performs,
/// `dispatch_after`, display refreshes, animations. The clock is either real (monotonic) or virtual,
/// chosen once, before its first use.
///
/// Virtual time stands still while anything can run. Only when the main queue is empty and no work is under
/// way on any queue or worker does a verb let it jump to the next event; events are released one at a time,
/// in order of deadline and then of registration, and each is followed by a wait for rest before the next.
/// Threads stay real threads.
///
/// The verbs (`runFor`, `runUntil`, `advanceFrame`, …) are called on the main thread. Everything
/// else is thread-safe.
class Clock {
 public:
  using Duration = std::chrono::nanoseconds;
  /// Time since the device was started.
  using Instant = std::chrono::time_point<Clock, Duration>;
  using WallTime = std::chrono::sys_time<Duration>;
  using Work = std::function<void()>;
  using EventId = EventQueue::Id;

  /// Whether an event must fire on the main thread or may fire on any thread (then it must be short and hand
  /// real work over).
  using Lane = EventQueue::Lane;

  static Clock& shared();

  /// Makes the clock of this process virtual, at `start` and with `wall` as the wall-clock time of that
  /// instant. Called at most once, before anything is scheduled; later calls are a programming error.
  void useVirtualTime(Instant start = Instant{}, WallTime wall = kVirtualEpoch);
  bool isVirtual() const { return virtual_; }

  Instant now() const;
  double secondsNow() const { return std::chrono::duration<double>(now().time_since_epoch()).count(); }
  /// Date and time of day. In virtual time they start at a fixed date, so that files repeat to the byte.
  WallTime wallTime() const;

  // Events.

  EventId schedule(Instant deadline, Lane lane, Work fire);
  /// False if it has fired, is firing or was cancelled.
  bool cancel(EventId event);

  // The main thread.

  /// True on the thread that loaded the program.
  bool isMainThread() const { return std::this_thread::get_id() == mainThread_; }
  /// Queues work for the main thread; it runs inside the next verb (or the current one), in order.
  void postToMain(Work work);

  struct Result {
    bool met = false;
    /// If the condition was not met: what has not come to rest, and the next events, by name.
    std::string pending;
    explicit operator bool() const { return met; }
  };
  void runFor(Duration duration);
  /// Runs until `condition`, evaluated on the main thread after every step, is true or `limit` has passed.
  [[nodiscard]] Result runUntil(const std::function<bool()>& condition, Duration limit);
  /// Runs what can run now, without moving time. (In real time: what is queued and due.)
  void runUntilRest();
  /// To the display's next refresh.
  void advanceFrame();
  /// Virtual time only: moves time and releases what is due, but runs no queued main-thread work and waits
  /// for no queue or worker. For tests that need a busy stage.
  void moveWithoutRest(Duration duration);
  /// When the next event is due; empty: nothing is.
  std::optional<Instant> nextEvent() const;
  /// What keeps the device from rest, and the next events, one per line.
  std::string pending() const;

  // The display's refreshes.

  static constexpr std::int64_t kRefreshesPerSecond = 60;
  /// When the n-th refresh begins; the number of the latest one at an instant; when the next one begins.
  static Instant refresh(std::int64_t n);
  static std::int64_t newestRefresh(Instant at);
  static Instant nextRefresh(Instant after) { return refresh(newestRefresh(after) + 1); }

  // For queues and platform workers.

  /// Count work that can run or is running; virtual time stands still while the count is not zero. Work
  /// that cannot run yet because a waiting thread holds its queue is not counted: it would keep time from
  /// ending that wait.
  void beginWork() { busy_.fetch_add(1, std::memory_order_acq_rel); }
  void endWork();

  /// Named work outside of queues: a movie being finished, a process being launched.
  class Activity {
   public:
    explicit Activity(std::string name);
    ~Activity();
    Activity(const Activity&) = delete;

   private:
    std::multiset<std::string>::iterator entry_;
  };

  /// One wait of one thread. `park` returns true once `unpark` has been called, even if that was before
  /// `park`, and false at the deadline. A parked thread counts as idle. The main thread, parked in virtual
  /// time, moves time itself, and stops the process with a message if nothing could ever wake it.
  class Parking {
    friend class Clock;  // whose mutex guards the fields
    enum class State { free, parked, woken, late } state = State::free;
    bool counted = false;  // whether the thread's work counts while it does not wait
    std::condition_variable wake;
  };
  bool park(const std::shared_ptr<Parking>& parking, std::optional<Instant> deadline);
  void unpark(Parking& parking);

  /// Marks the calling thread as one whose running work is counted by `beginWork`; each queue
  /// worker calls it once.
  static void markWorkerThread();

  /// Adds a source of names to `pending`.
  void addReporter(std::function<std::vector<std::string>()> reporter);

  /// 2026-01-05 09:41:00 UTC, where virtual wall time starts.
  static constexpr WallTime kVirtualEpoch{std::chrono::seconds{1767606060}};

 private:
  Clock();
  using Condition = std::function<bool()>;

  Instant after(Duration duration) const;
  /// The loop behind the verbs: false when `limit` was reached without the condition (if any) being met.
  bool pump(const Condition* condition, Instant limit);
  bool pumpVirtualTime(const Condition* condition, Instant limit);
  bool pumpRealTime(const Condition* condition, Instant limit);
  bool runOneMainItem();
  /// In virtual time, waits until nothing can run; false when there is work for the main thread instead.
  bool comeToRest();
  bool parkMainVirtually(Parking& parking, std::optional<Instant> deadline);
  bool parkVirtually(const std::shared_ptr<Parking>& parking, std::optional<Instant> deadline);
  bool parkReally(Parking& parking, std::optional<Instant> deadline);
  /// Marks the thread as waiting, unless it was woken before.
  bool beginParking(Parking& parking) IOS_REQUIRES(mutex_);
  void giveUpParking(Parking& parking) IOS_REQUIRES(mutex_);
  void timerThread();

  /// In virtual time also moves time to the event's deadline.
  std::optional<Work> takeDueEvent(Instant limit, std::optional<Lane> lane) IOS_REQUIRES(mutex_);
  void moveTo(Instant instant) IOS_REQUIRES(mutex_);
  void wakeMain() IOS_REQUIRES(mutex_);
  /// The real time of `instant`, clamped to what the system's clock can express.
  std::chrono::steady_clock::time_point realDeadline(Instant instant) const;

  const std::thread::id mainThread_;
  std::atomic<bool> virtual_ = false;
  std::atomic<std::int64_t> virtualNow_ = 0;
  // Both are written before `virtual_`, and never again.
  Instant virtualStart_{};
  WallTime virtualWall_ = kVirtualEpoch;
  const std::chrono::steady_clock::time_point realStart_;

  std::atomic<std::int64_t> busy_ = 0;
  mutable Mutex mutex_;
  std::condition_variable mainWake_;
  std::condition_variable timerWake_;
  std::deque<Work> mainQueue_ IOS_GUARDED_BY(mutex_);
  EventQueue events_ IOS_GUARDED_BY(mutex_);
  std::multiset<std::string> activities_ IOS_GUARDED_BY(mutex_);
  std::vector<std::function<std::vector<std::string>()>> reporters_ IOS_GUARDED_BY(mutex_);
  /// How often the main thread was woken to look again.
  std::uint64_t mainWakes_ IOS_GUARDED_BY(mutex_) = 0;
  bool timerThreadRuns_ IOS_GUARDED_BY(mutex_) = false;
};

}  // namespace ios
