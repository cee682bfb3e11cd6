#pragma once

#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "UIKit/UIApplication.h"
#include "UIKit/UITapGestureRecognizer.h"
#include "support/TestPhone.h"

namespace ios {

/// Counts its calls, and can run a function at each.
class Listener : public Subclass<Listener, NSObject> {
 public:
  static MethodList methods() { return {{"heard", &Listener::heard}}; }
  explicit Listener(std::function<void()> then = nullptr) : then_(std::move(then)) {}
  int count = 0;

 private:
  void heard() {
    ++count;
    if (then_) then_();
  }
  std::function<void()> then_;
};

/// A view that writes down what happens to its touches: "began moved ended".
class TouchedView : public Subclass<TouchedView, UIView> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>&) override {
    note("began", touches);
  }
  void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>&) override {
    note("moved", touches);
  }
  void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>&) override {
    note("ended", touches);
  }
  void touchesCancelled(const UITouches& touches, const std::shared_ptr<UIEvent>&) override {
    note("cancelled", touches);
  }
  std::string log;

 private:
  void note(const std::string& what, const UITouches& touches) {
    if (!log.empty()) log += ' ';
    log += what;
    if (touches.size() > 1) log += "×" + std::to_string(touches.size());
  }
};

inline std::shared_ptr<UITapGestureRecognizer> addTap(const std::shared_ptr<UIView>& view, const id& target,
                                                      unsigned long taps = 1, unsigned long touches = 1) {
  auto tap = std::make_shared<UITapGestureRecognizer>(target, "heard");
  tap->setNumberOfTapsRequired(taps);
  tap->setNumberOfTouchesRequired(touches);
  view->addGestureRecognizer(tap);
  return tap;
}

/// One step of fingers on the glass: what they do at a time, in milliseconds since the gesture's start.
struct Step {
  int at;
  TouchSample::Phase phase;
  std::vector<std::pair<int, CGPoint>> fingers;
};
inline Step down(int at, std::vector<std::pair<int, CGPoint>> f) {
  return {at, TouchSample::Phase::began, std::move(f)};
}
inline Step move(int at, std::vector<std::pair<int, CGPoint>> f) {
  return {at, TouchSample::Phase::moved, std::move(f)};
}
inline Step up(int at, std::vector<std::pair<int, CGPoint>> f) {
  return {at, TouchSample::Phase::ended, std::move(f)};
}
inline Step lost(int at, std::vector<std::pair<int, CGPoint>> f) {
  return {at, TouchSample::Phase::cancelled, std::move(f)};
}

inline void play(const std::vector<Step>& steps) {
  Clock& clock = Clock::shared();
  const auto start = clock.now();
  for (const Step& step : steps) {
    clock.runFor(start + std::chrono::milliseconds(step.at) - clock.now());
    std::vector<TouchSample> samples;
    for (const auto& [finger, point] : step.fingers) samples.push_back({1000 + finger, step.phase, point});
    Device::current().input().touches(samples);
  }
}

/// "rrggbb" of the pixel at a point of an image.
inline std::string pixel(const UIImage& image, CGPoint point) {
  const CGImage& bitmap = *image.CGImageValue();
  const auto x = static_cast<std::size_t>(std::floor(point.x * image.scale()));
  const auto y = static_cast<std::size_t>(std::floor(point.y * image.scale()));
  if (x >= bitmap.width() || y >= bitmap.height()) return "outside";
  const std::uint8_t* bgra = bitmap.pixels() + y * bitmap.bytesPerRow() + x * 4;
  char text[8];
  std::snprintf(text, sizeof text, "%02x%02x%02x", bgra[2], bgra[1], bgra[0]);
  return text;
}
inline std::string onDisplay(CGPoint point) {
  return pixel(*UIApplication::sharedApplication()->displayImage(), point);
}

inline std::shared_ptr<UIView> addPlate(const std::shared_ptr<UIView>& superview, CGRect frame,
                                        unsigned color) {
  auto view = std::make_shared<UIView>(frame);
  view->setBackgroundColor(UIColor::colorWithHex(color));
  superview->addSubview(view);
  return view;
}

}  // namespace ios
