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

/// The clock's events, in order of deadline and then of registration. It knows no time of its own and wakes
/// nobody; its owner guards it.
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
  /// Takes an event out: its work, to be destroyed by the caller when its lock is gone, or empty if there is
  /// none.
  std::optional<Work> remove(Id id);
  /// Takes the first event due by `limit`, of one lane or of both.
  std::optional<Due> take(Instant limit, std::optional<Lane> lane = std::nullopt);

  std::optional<Instant> nextDeadline(Lane lane) const;
  /// The first `count` deadlines.
  std::vector<Instant> nextDeadlines(std::size_t count) const;
  /// False once anything was ever added.
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
