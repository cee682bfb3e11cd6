#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace ios {

class Clock;

/// The clock's events, in order of deadline and then of registration. It does not read time and wakes no
/// thread; its owner guards it with a lock.
class EventQueue {
 public:
  using Instant = std::chrono::time_point<Clock, std::chrono::nanoseconds>;
  using Work = std::function<void()>;
  using Id = std::uint64_t;
  /// Whether an event must fire on the main thread or may fire on any thread.
  enum class Lane { main, any };

  struct Due {
    Instant deadline;
    Work fire;
  };

  Id add(Instant deadline, Lane lane, Work fire);
  /// Removes an event and returns its work, to be destroyed by the caller after releasing the lock; empty if
  /// there is no such event.
  std::optional<Work> remove(Id id);
  /// Takes the first event due by `limit`, from `lane` or, without one, from both.
  std::optional<Due> take(Instant limit, std::optional<Lane> lane = std::nullopt);

  std::optional<Instant> nextDeadline(Lane lane) const;
  /// The first `count` deadlines.
  std::vector<Instant> nextDeadlines(std::size_t count) const;
  /// Whether nothing was ever added.
  bool untouched() const { return lastId_ == 0; }

 private:
  struct Event {
    Lane lane;
    Work fire;
  };

  std::map<std::pair<Instant, Id>, Event> events_;
  std::map<Id, Instant> deadlines_;
  Id lastId_ = 0;
};

}  // namespace ios
