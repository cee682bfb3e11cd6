#include "simulator/live/FlowMovie.h"

#include <algorithm>
#include <utility>

#include "Device/Device.h"

namespace simulator {
namespace {

using ios::Clock;

constexpr Clock::Duration kFrame = std::chrono::nanoseconds(1'000'000'000 / 60);

Display::Shape shapeOf(const ios::automation::Step::Answer& seen) {
  return {seen.width, seen.height, ios::Device::current().settings().orientation};
}

std::chrono::nanoseconds now() {
  return Clock::shared().now().time_since_epoch();
}

}  // namespace

FlowMovie::~FlowMovie() {
  if (movie_) phone_.setPacer(std::move(pacer_));
}

/// Where it grows, until it is kept.
std::filesystem::path FlowMovie::file() {
  return ios::Device::current().root() / "recording.mp4";
}

Problem FlowMovie::begin(const std::string& name) {
  if (movie_) return "a movie is being recorded already: " + name_;
  pacer_ = phone_.pacer();
  const Answer seen = oneStep(Clock::Duration::zero(), {});
  if (seen.width <= 0) return "expected a picture to begin with, but the display shows nothing";
  std::string problem;
  movie_ = ScreenMovie::begin(file(), shapeOf(seen), now(), problem);
  if (!movie_) return problem;
  name_ = name;
  movie_->show(phone_.displayBytes(), shapeOf(seen), now());
  phone_.setPacer([this](Clock::Duration duration, const std::vector<ios::TouchSample>& touches) {
    return step(duration, touches);
  });
  return {};
}

Problem FlowMovie::end() {
  if (!movie_) return "no movie is being recorded";
  phone_.setPacer(std::exchange(pacer_, {}));
  Problem problem = movie_->end(now());
  movie_.reset();
  if (!problem.empty()) return problem;
  std::string reason;
  const auto bytes = ios::readFile(file());
  (void)ios::removeTree(file());  // what cannot be removed goes with the folder
  return bytes ? keepFile_(name_ + ".mp4", *bytes) : "the movie could not be read back";
}

FlowMovie::Answer FlowMovie::oneStep(Clock::Duration duration, const std::vector<ios::TouchSample>& touches) {
  return pacer_ ? pacer_(duration, touches) : phone_.step(duration, touches);
}

FlowMovie::Answer FlowMovie::step(Clock::Duration duration, const std::vector<ios::TouchSample>& touches) {
  Answer seen = oneStep(std::min(duration, kFrame), touches);
  int changed = 0;
  for (;;) {
    changed = std::max(changed, seen.changedWidth);
    if (seen.changedWidth > 0) movie_->show(phone_.displayBytes(), shapeOf(seen), now());
    duration -= std::min(duration, kFrame);
    if (duration == Clock::Duration::zero() || phone_.wasInterrupted()) break;
    seen = oneStep(std::min(duration, kFrame), {});
  }
  seen.changedWidth = changed;
  return seen;
}

}  // namespace simulator
