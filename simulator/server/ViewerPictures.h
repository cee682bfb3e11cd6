#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>

#include "simulator/live/PixelRect.h"

namespace simulator {

/// Which pictures one viewer gets, and when: at most two are on their way to it; what changes meanwhile is merged
/// into one rectangle, so that a slow viewer misses pictures instead of falling behind. What moved is sent once more
/// without loss when it has stood still for a while. Rectangles are of the display's own pixels. It knows no time
/// but what it is told.
class ViewerPictures {
 public:
  using Instant = std::chrono::steady_clock::time_point;
  static constexpr auto kRest = std::chrono::milliseconds(150);
  static constexpr std::size_t kMostInFlight = 2;

  struct Task {
    PixelRect rect;
    bool exact = false;
  };

  /// Part of the display has changed.
  void changed(const PixelRect& rect, Instant now);
  /// What to encode now, if anything; `finished` or `sent` must follow before the next.
  std::optional<Task> next(Instant now);
  /// When to ask again although nothing has happened; empty: not at all.
  std::optional<Instant> due() const;
  /// The task's picture went out under this number.
  void sent(std::uint32_t sequence);
  /// The task gave no picture.
  void finished() { encoding_ = false; }
  /// The viewer has dealt with that picture; false if it never got it.
  bool shown(std::uint32_t sequence);

 private:
  bool isFree() const { return !encoding_ && inFlight_.size() < kMostInFlight; }

  PixelRect changed_;  // and not yet encoded
  PixelRect lossy_;    // encoded with loss, and unchanged since
  Instant lastChange_{};
  bool encoding_ = false;
  std::set<std::uint32_t> inFlight_;
};

}  // namespace simulator
