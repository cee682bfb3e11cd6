#pragma once

#include <chrono>
#include <optional>

#include "DeviceClock/Clock.h"

namespace simulator {

/// Drives virtual time at the wall's pace, or slower, or not at all: says how far the phone should go on, and when
/// to ask again. It reads no clock.
class Pace {
 public:
  using Wall = std::chrono::steady_clock::time_point;
  using Instant = ios::Clock::Instant;
  using Duration = ios::Clock::Duration;
  /// A machine that is too slow lets the phone fall behind evenly, instead of moving it in ever longer steps.
  static constexpr Duration kLongestStep = std::chrono::milliseconds(50);

  Pace(Wall wall, Instant phone) : wall_(wall), phone_(phone) {}

  /// How far the phone, which is at `phone`, should go on now, to a whole millisecond: so what happens then can be
  /// written down exactly. A phone on which nothing is due goes on in one step however long that is.
  Duration due(Wall wall, Instant phone, std::optional<Instant> nextEvent);
  /// When the phone should have come to that event, or just beyond it; never, while it is paused.
  std::optional<Wall> wallTimeOf(Instant event) const;

  void pause(Wall wall, Instant phone);
  void resume(Wall wall, Instant phone);
  bool isPaused() const { return paused_; }
  void setSpeed(double factor, Wall wall, Instant phone);
  double speed() const { return speed_; }
  /// Whether the last step left the phone behind the wall.
  bool isBehind() const { return behind_; }

 private:
  void begin(Wall wall, Instant phone);

  // Where the phone was at some moment of the wall's; the rest follows from the speed.
  Wall wall_;
  Instant phone_;
  double speed_ = 1;
  bool paused_ = false, behind_ = false;
};

}  // namespace simulator
