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

/// A finger that goes farther than this has swiped.
constexpr double kStill = 10;
/// Taps so near to each other, in place and in time, are one tap several times.
constexpr double kSamePlace = 24;
constexpr auto kSameTap = milliseconds(450);
/// Nobody means a shorter pause.
constexpr auto kPause = milliseconds(300);

double distance(ios::CGPoint a, ios::CGPoint b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

/// The text of what is in front at this place, if no other element has the same.
std::string textAt(const std::vector<ios::VisibleElement>& elements, ios::CGPoint place) {
  const ios::VisibleElement* hit = nullptr;
  for (const auto& element : elements) {
    if (!element.text.empty() && ios::CGRectContainsPoint(element.frame, place) &&
        (element.control || !hit || !hit->control))
      hit = &element;
  }
  if (!hit || hit->text.find('\n') != std::string::npos) return {};
  const auto same = [&](const auto& element) { return element.text == hit->text; };
  return std::count_if(elements.begin(), elements.end(), same) == 1 ? hit->text : "";
}

}  // namespace

void TapRecorder::begin(Time now, const std::string& appId,
                        const std::map<std::string, std::string>& arguments) {
  *this = {};
  recording_ = true;
  lastEnd_ = now;
  steps_ = "appId: " + appId + "\n---\n- launchApp";
  if (arguments.empty()) {
    steps_ += "\n";
    return;
  }
  steps_ += ":\n    arguments:\n";
  for (const auto& [name, value] : arguments) steps_ += "      " + inYaml(name) + ": " + inYaml(value) + "\n";
}

std::string TapRecorder::end(Time now) {
  writeTaps();
  writePause(now);
  recording_ = false;
  return std::move(steps_);
}

std::string TapRecorder::text() const {
  return taps_ ? steps_ + written(*taps_) : steps_;
}

void TapRecorder::touches(Time now, const std::vector<ios::TouchSample>& samples, ios::CGSize screen,
                          const Elements& elements) {
  if (!recording_) return;
  screen_ = screen;
  for (const auto& sample : samples) {
    if (sample.phase == Phase::began) {
      if (down_.empty() && lifted_.empty()) {
        gestureStart_ = now;
        gestureText_ = textAt(elements(), sample.location);
      }
      down_[sample.finger] = {sample.location, sample.location};
      continue;
    }
    const auto finger = down_.find(sample.finger);
    if (finger == down_.end()) continue;
    finger->second.to = sample.location;
    if (sample.phase == Phase::moved) continue;
    lifted_.push_back(finger->second);
    down_.erase(finger);
    if (down_.empty()) gestureEnded(now);
  }
}

void TapRecorder::gestureEnded(Time now) {
  const bool moved = std::any_of(lifted_.begin(), lifted_.end(), [](const Finger& finger) {
    return distance(finger.from, finger.to) > kStill;
  });
  if (moved) {
    writeTaps();
    writePause(gestureStart_);
    const auto duration = std::max<long long>(1, (now - gestureStart_) / milliseconds(1));
    steps_ += "- swipe:\n    start: " + inYaml(placeText(lifted_.front().from)) +
              "\n    end: " + inYaml(placeText(lifted_.front().to)) +
              "\n    duration: " + std::to_string(duration) + "\n";
    lastEnd_ = now;
  } else {
    tapped(now);
  }
  lifted_.clear();
}

void TapRecorder::tapped(Time now) {
  ios::CGPoint middle{};
  for (const Finger& finger : lifted_) {
    middle.x += finger.from.x / static_cast<double>(lifted_.size());
    middle.y += finger.from.y / static_cast<double>(lifted_.size());
  }
  const int fingers = static_cast<int>(lifted_.size());
  if (taps_ && taps_->fingers == fingers && distance(taps_->place, middle) <= kSamePlace &&
      gestureStart_ - taps_->last <= kSameTap) {
    ++taps_->count;
    taps_->last = now;
    return;
  }
  writeTaps();
  taps_ = Taps{middle, gestureText_, 1, fingers, gestureStart_, now};
}

void TapRecorder::action(Time now, const std::string& step) {
  if (!recording_) return;
  writeTaps();
  writePause(now);
  steps_ += "- " + step + "\n";
  lastEnd_ = now;
}

void TapRecorder::writePause(Time start) {
  if (start - lastEnd_ < kPause) return;
  char text[32];
  std::snprintf(text, sizeof text, "- wait: %.1f\n", std::chrono::duration<double>(start - lastEnd_).count());
  steps_ += text;
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
  if (taps.count == 1 && taps.fingers == 1 && !taps.text.empty())
    return "- tapOn: " + inYaml(taps.text) + "\n";
  std::string step = "- tapOn: {point: " + inYaml(placeText(taps.place));
  if (taps.count > 1) step += ", repeat: " + std::to_string(taps.count);
  if (taps.fingers > 1) step += ", fingers: " + std::to_string(taps.fingers);
  return step + "}\n";
}

std::string TapRecorder::placeText(ios::CGPoint place) const {
  char text[64];
  std::snprintf(text, sizeof text, "%.1f%%,%.1f%%", 100 * place.x / screen_.width,
                100 * place.y / screen_.height);
  return text;
}

}  // namespace simulator
