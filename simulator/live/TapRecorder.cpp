#include "simulator/live/TapRecorder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "simulator/live/Words.h"

namespace simulator {
namespace {

using Phase = ios::TouchSample::Phase;
using std::chrono::milliseconds;

/// A finger that goes farther than this has not tapped.
constexpr double kStill = 10;
/// How far side by side a flow puts the fingers of one tap, and how exactly a flow says a place.
constexpr double kFingerDistance = 40, kExact = 0.005;
constexpr auto kUsualHold = milliseconds(50), kUsualDelay = milliseconds(100);

bool isSamePlace(ios::CGPoint a, ios::CGPoint b, double tolerance) {
  return std::hypot(a.x - b.x, a.y - b.y) <= tolerance;
}

/// The text of what is in front at this place, if a tap on that text reaches the same thing.
std::string textAt(const std::vector<ios::VisibleElement>& elements, ios::CGPoint place) {
  const ios::VisibleElement* hit = nullptr;
  for (const auto& element : elements) {
    if (!element.text.empty() && ios::CGRectContainsPoint(element.frame, place) &&
        (element.control || !hit || !hit->control))
      hit = &element;
  }
  if (!hit || hit->text.find('\n') != std::string::npos) return {};
  if (hit->text.find("${") != std::string::npos) return {};  // which flows replace
  if (hit->control && !hit->focusable) return {};
  const auto isIn = [&](const ios::VisibleElement& element) {
    for (int at = element.parent; at >= 0; at = elements[static_cast<std::size_t>(at)].parent) {
      if (&elements[static_cast<std::size_t>(at)] == hit) return true;
    }
    return false;
  };
  const auto same = [&](const auto& element) { return element.text == hit->text && !isIn(element); };
  return std::count_if(elements.begin(), elements.end(), same) == 1 ? hit->text : "";
}

std::string placeText(ios::CGPoint place) {
  char text[64];
  std::snprintf(text, sizeof text, "%.10g,%.10g", std::round(place.x * 100) / 100,
                std::round(place.y * 100) / 100);
  return text;
}

std::string millisecondsText(TapRecorder::Time time) {
  return std::to_string(std::chrono::round<milliseconds>(time).count());
}

std::string secondsText(TapRecorder::Time time) {
  char text[32];
  std::snprintf(text, sizeof text, "%.10g",
                static_cast<double>(std::chrono::round<milliseconds>(time).count()) / 1000);
  return text;
}

const char* phaseName(Phase phase) {
  switch (phase) {
    case Phase::began:
      return "down";
    case Phase::moved:
      return "move";
    case Phase::ended:
      return "up";
    case Phase::cancelled:
      break;
  }
  return "cancel";
}

}  // namespace

void TapRecorder::begin(Time now, const std::string& appId, const std::string& remark) {
  *this = {};
  recording_ = true;
  lastEnd_ = now;
  steps_ = "# " + remark + "\nappId: " + appId + "\nrecordedAt: " + secondsText(now) + "\n---\n";
}

std::string TapRecorder::end(Time now) {
  writeTaps();
  writeGesture();
  writePause(now);
  recording_ = false;
  return std::move(steps_);
}

std::string TapRecorder::text() const {
  if (!taps_) return steps_;
  TapRecorder later = *this;
  later.writeTaps();
  return later.steps_;
}

void TapRecorder::touches(Time now, const std::vector<ios::TouchSample>& samples, const Elements& elements) {
  if (!recording_) return;
  acting_ = false;
  for (const auto& sample : samples) {
    const bool begins = sample.phase == Phase::began;
    if (begins == down_.contains(sample.finger)) continue;  // it came down before the recording did
    if (begins && down_.empty()) tappedText_ = textAt(elements(), sample.location);
    gesture_.push_back({now, sample});
    if (begins) down_.insert(sample.finger);
    if (sample.phase == Phase::ended || sample.phase == Phase::cancelled) down_.erase(sample.finger);
    if (down_.empty()) gestureEnded();
  }
}

void TapRecorder::gestureEnded() {
  if (const auto tap = asTap()) {
    tapped(*tap);
    gesture_.clear();
  } else {
    writeGesture();
  }
  numbers_.clear();
}

/// The gesture as a flow's tap, if a flow can say it so: fingers that come down side by side, stay, and leave together.
std::optional<TapRecorder::Taps> TapRecorder::asTap() const {
  if (!numbers_.empty()) return std::nullopt;  // part of it is written already
  std::vector<Row> down, up;
  for (const Row& row : gesture_) {
    if (row.sample.phase == Phase::cancelled) return std::nullopt;
    if (row.sample.phase == Phase::began) down.push_back(row);
    if (row.sample.phase == Phase::ended) up.push_back(row);
  }
  for (const Row& row : gesture_) {
    const auto from = std::find_if(down.begin(), down.end(),
                                   [&](const Row& each) { return each.sample.finger == row.sample.finger; });
    if (!isSamePlace(from->sample.location, row.sample.location, kStill)) return std::nullopt;
  }
  Taps tap;
  tap.fingers = static_cast<int>(down.size());
  tap.first = down.front().time;
  tap.last = up.front().time;
  tap.hold = tap.last - tap.first;
  const auto [left, right] = std::minmax_element(down.begin(), down.end(), [](const Row& a, const Row& b) {
    return a.sample.location.x < b.sample.location.x;
  });
  tap.place = {(left->sample.location.x + right->sample.location.x) / 2, down.front().sample.location.y};
  for (std::size_t i = 0; i < down.size(); ++i) {
    const double offset = (static_cast<double>(i) - (tap.fingers - 1) / 2.0) * kFingerDistance;
    if (down[i].time != tap.first || up[i].time != tap.last ||
        !isSamePlace(down[i].sample.location, {tap.place.x + offset, tap.place.y}, kExact))
      return std::nullopt;
  }
  if (tap.fingers == 1) tap.text = tappedText_;
  return tap;
}

void TapRecorder::tapped(const Taps& tap) {
  if (taps_ && taps_->fingers == tap.fingers && taps_->hold == tap.hold &&
      isSamePlace(taps_->place, tap.place, kExact)) {
    const Time delay = tap.first - taps_->last;
    if ((taps_->count == 1 && delay <= milliseconds(450)) || (taps_->count > 1 && delay == taps_->delay)) {
      ++taps_->count;
      taps_->delay = delay;
      taps_->last = tap.last;
      return;
    }
  }
  writeTaps();
  taps_ = tap;
}

void TapRecorder::action(Time now, const std::string& step) {
  if (!recording_) return;
  writeTaps();
  writeGesture();
  writePause(now);
  steps_ += "- " + step + "\n";
  lastEnd_ = now;
  acting_ = true;
}

void TapRecorder::actionTook(Time now) {
  if (std::exchange(acting_, false)) lastEnd_ = now;
}

void TapRecorder::actionOfLastTap(Time now, const std::string& step) {
  if (taps_ && taps_->count == 1 && taps_->last == now) taps_.reset();
  action(now, step);
}

void TapRecorder::writePause(Time start) {
  if (std::chrono::round<milliseconds>(start - lastEnd_) > milliseconds(0))
    steps_ += "- wait: " + secondsText(start - lastEnd_) + "\n";
}

void TapRecorder::writeTaps() {
  if (!taps_) return;
  const Taps taps = *std::exchange(taps_, std::nullopt);
  writePause(taps.first);
  steps_ += written(taps);
  lastEnd_ = taps.last;
}

std::string TapRecorder::written(const Taps& taps) const {
  // Several taps mean the place, whatever is there by then.
  const bool byText = taps.count == 1 && !taps.text.empty();
  std::string step = byText ? "text: " + inYaml(taps.text) : "point: " + inYaml(placeText(taps.place));
  if (taps.count > 1) step += ", repeat: " + std::to_string(taps.count);
  if (taps.count > 1 && taps.delay != kUsualDelay) step += ", delay: " + millisecondsText(taps.delay);
  if (taps.fingers > 1) step += ", fingers: " + std::to_string(taps.fingers);
  if (taps.hold != kUsualHold) step += ", hold: " + millisecondsText(taps.hold);
  return "- tapOn: {" + step + "}\n";
}

/// What there is of the gesture that is under way: each change in a line, with the milliseconds since the first.
void TapRecorder::writeGesture() {
  if (gesture_.empty()) return;
  writeTaps();
  const std::vector<Row> rows = std::exchange(gesture_, {});
  writePause(rows.front().time);
  steps_ += "- touch:\n";
  for (const Row& row : rows) {
    const int next = static_cast<int>(numbers_.size()) + 1;
    const int number = numbers_.emplace(row.sample.finger, next).first->second;
    steps_ += "    - [" + millisecondsText(row.time - rows.front().time) + ", " + std::to_string(number) +
              ", " + phaseName(row.sample.phase) + ", " + inYaml(placeText(row.sample.location)) + "]\n";
  }
  lastEnd_ = rows.back().time;
}

}  // namespace simulator
