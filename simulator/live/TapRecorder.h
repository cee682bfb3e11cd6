#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Device/Input.h"
#include "UIKit/VisibleElements.h"

namespace simulator {

/// Writes down what somebody does on the phone as a flow, so that it can be played again: taps by the text that was
/// tapped where there is one, else by place; swipes; pauses; and whatever else is told by `action`. Times are the
/// phone's. Main thread.
class TapRecorder {
 public:
  using Time = std::chrono::nanoseconds;
  using Elements = std::function<std::vector<ios::VisibleElement>()>;

  /// Begins a flow for an application that was started with these arguments; it begins with starting it so.
  void begin(Time now, const std::string& appId, const std::map<std::string, std::string>& arguments);
  bool isRecording() const { return recording_; }
  /// Ends it; the whole flow.
  std::string end(Time now);

  /// Changes of fingers, in the order in which the device got them. `elements` is asked when the first comes down,
  /// for what is on the screen then.
  void touches(Time now, const std::vector<ios::TouchSample>& samples, ios::CGSize screen,
               const Elements& elements);
  /// A step of the flow as it is written, without the leading "- ".
  void action(Time now, const std::string& step);
  /// The flow so far.
  std::string text() const;

 private:
  struct Finger {
    ios::CGPoint from, to;
  };
  struct Taps {
    ios::CGPoint place;
    std::string text;  // of what was tapped; empty: only the place is known
    int count = 1, fingers = 1;
    Time first{}, last{};
  };
  void gestureEnded(Time now);
  void tapped(Time now);
  void writePause(Time start);
  void writeTaps();
  std::string written(const Taps& taps) const;
  std::string placeText(ios::CGPoint place) const;

  bool recording_ = false;
  std::string steps_;
  Time lastEnd_{};
  ios::CGSize screen_;

  std::map<std::int64_t, Finger> down_;  // those of the gesture that is under way
  std::vector<Finger> lifted_;
  Time gestureStart_{};
  std::string gestureText_;
  std::optional<Taps> taps_;  // may still become more
};

}  // namespace simulator
