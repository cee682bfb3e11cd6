#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Device/Input.h"
#include "UIKit/VisibleElements.h"

namespace simulator {

/// Writes down what somebody does on the phone as a flow that gives the same result when it is played in virtual time:
/// taps by the text that was tapped where there is one, else by place; whatever else fingers do, sample by sample; what
/// is told by `action`; and how long each is after the one before, to the millisecond. Times are the phone's. Main
/// thread.
class TapRecorder {
 public:
  using Time = std::chrono::nanoseconds;
  using Elements = std::function<std::vector<ios::VisibleElement>()>;

  /// Begins a flow. `remark` is a line that says on what phone it is recorded.
  void begin(Time now, const std::string& appId, const std::string& remark);
  bool isRecording() const { return recording_; }
  /// Ends it; the whole flow.
  std::string end(Time now);

  /// Changes of fingers, in the order in which the device got them. `elements` is asked when the first comes down,
  /// for what is on the screen then.
  void touches(Time now, const std::vector<ios::TouchSample>& samples, const Elements& elements);
  /// A step of the flow as it is written, without the leading "- ".
  void action(Time now, const std::string& step);
  /// As `action`, of something that the tap which has just ended brought about: takes the tap's place.
  void actionOfLastTap(Time now, const std::string& step);
  /// An action that was told since the last call has taken the phone until now, as it will when it is played.
  void actionTook(Time now);
  /// The flow so far.
  std::string text() const;

 private:
  struct Row {
    Time time;
    ios::TouchSample sample;
  };
  struct Taps {
    ios::CGPoint place;
    std::string text;  // of what was tapped; empty: only the place is known
    int count = 1, fingers = 1;
    Time hold{}, delay{};
    Time first{}, last{};
  };
  void gestureEnded();
  std::optional<Taps> asTap() const;
  void tapped(const Taps& tap);
  void writePause(Time start);
  void writeTaps();
  std::string written(const Taps& taps) const;
  void writeGesture();

  bool recording_ = false, acting_ = false;
  std::string steps_;
  Time lastEnd_{};

  std::vector<Row> gesture_;  // the one that is under way
  std::set<std::int64_t> down_;
  std::map<std::int64_t, int> numbers_;  // of its fingers, as the flow counts them
  std::string tappedText_;
  std::optional<Taps> taps_;  // may still become more
};

}  // namespace simulator
