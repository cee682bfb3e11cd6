#include "DeviceClock/EventQueue.h"

#include <algorithm>

#include "DeviceClock/Ordering.h"

namespace ios {

EventQueue::Id EventQueue::add(Instant deadline, Lane lane, Work fire) {
  // Events of one deadline are in the order of their identifiers.
  const Id id = orderingSeed() == 0 ? ++lastId_ : shuffled(++lastId_, orderingSeed());
  const auto entry = deadlines_.emplace(id, deadline).first;
  try {
    events_.emplace(std::pair(deadline, id), Event{lane, std::move(fire)});
  } catch (...) {
    deadlines_.erase(entry);
    throw;
  }
  return id;
}

std::optional<EventQueue::Work> EventQueue::remove(Id id) {
  const auto found = deadlines_.find(id);
  if (found == deadlines_.end()) return std::nullopt;
  auto event = events_.extract(std::pair(found->second, id));
  deadlines_.erase(found);
  return std::move(event.mapped().fire);
}

std::optional<EventQueue::Due> EventQueue::take(Instant limit, std::optional<Lane> lane) {
  for (auto entry = events_.begin(); entry != events_.end() && entry->first.first <= limit; ++entry) {
    if (lane && entry->second.lane != *lane) continue;
    Due due{entry->first.first, std::move(entry->second.fire)};
    deadlines_.erase(entry->first.second);
    events_.erase(entry);
    return due;
  }
  return std::nullopt;
}

std::optional<EventQueue::Instant> EventQueue::nextDeadline(Lane lane) const {
  const auto next = std::find_if(events_.begin(), events_.end(),
                                 [&](const auto& entry) { return entry.second.lane == lane; });
  if (next == events_.end()) return std::nullopt;
  return next->first.first;
}

std::vector<EventQueue::Instant> EventQueue::nextDeadlines(std::size_t count) const {
  std::vector<Instant> deadlines;
  for (const auto& [key, event] : events_) {
    if (deadlines.size() == count) break;
    deadlines.push_back(key.first);
  }
  return deadlines;
}

}  // namespace ios
