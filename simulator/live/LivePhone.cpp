#include "simulator/live/LivePhone.h"

#include <algorithm>

namespace simulator {
namespace {

using ios::Clock;
using std::chrono::milliseconds;
using Phase = ios::TouchSample::Phase;

constexpr auto kRefresh = std::chrono::microseconds(16'667);
/// Fingers that only move are taken twice in a refresh of the display at most; what comes down or up at once.
constexpr auto kBetweenMoves = kRefresh / 2;
/// In real time the applications' loops run within requests only: a touch waits for one of these at most.
constexpr auto kRealSlice = milliseconds(8);
constexpr auto kBetweenLooks = milliseconds(250), kBetweenSurveys = milliseconds(100);
constexpr auto kUnresponsive = milliseconds(2000);

}  // namespace

LivePhone::LivePhone(Options options, CommandInbox& inbox, Display& display, Audience& audience)
    : options_(std::move(options)),
      inbox_(inbox),
      display_(display),
      audience_(audience),
      console_(options_.out,
               [this](Console::Stream stream, const std::string& line) {
                 consoleLine(stream == Console::Stream::errors ? "err" : "out", line);
               }),
      phone_(
          [this] {
            Phone::Options phone = options_.phone;
            phone.attendance = {inbox_.descriptor(), [this](milliseconds waited) { return attend(waited); }};
            phone.sharesDisplay = true;
            // A person decides how long is too long.
            phone.patience = std::chrono::hours(24);
            phone.launchOptions = [this](const std::string& identifier) {
              microphoneInUse_ = microphone_;
              launchedByTap_ = identifier;
              return Phone::LaunchOptions{arguments_[identifier], microphone_};
            };
            return phone;
          }(),
          console_, [] {}),
      pace_(wallNow(), phoneNow()),
      arguments_(options_.firstArguments),
      pasteboard_([this](const std::string& name, std::string bytes) {
        return audience_.keepFile(name, std::move(bytes));
      }),
      photos_(options_.filePrefix),
      reports_(options_.filePrefix) {}

std::string LivePhone::begin() {
  if (std::string problem = options_.isNew ? phone_.installAll() : ""; !problem.empty()) return problem;
  tellHello();
  stepOnce(Clock::Duration::zero());
  tellFlow();
  tellChanges();
  return {};
}

void LivePhone::switchOff() noexcept {
  ended_ = true;
  inbox_.wake();
}

void LivePhone::run() {
  while (!ended_) {
    takeItems();
    if (playback_) playWantedFlow();
    if (ended_) break;
    const Wall wall = wallNow();
    const bool touched = !touches_.empty() && (!onlyMoves_ || wall >= lastStep_ + kBetweenMoves);
    const Clock::Duration due =
        options_.phone.realTime ? Clock::Duration(kRealSlice) : pace_.due(wall, phoneNow(), nextDue());
    const bool eventDue = due > Clock::Duration::zero() && nextDue() && *nextDue() <= phoneNow() + due;
    if (touched || eventDue || options_.phone.realTime) step(due);
    tellChanges();
    inbox_.waitUntil(nextWake());
  }
  phone_.stop();
  tellConsole();
}

void LivePhone::takeItems() {
  LiveItem item;
  for (;;) {
    if (!deferred_.empty()) {
      item = std::move(deferred_.front());
      deferred_.pop_front();
    } else if (!inbox_.take(item)) {
      return;
    }
    if (auto* touches = std::get_if<LiveTouches>(&item)) {
      takeTouches(std::move(*touches));
    } else if (auto* watch = std::get_if<LiveWatch>(&item)) {
      watched_[watch->viewer] = std::move(watch->topics);
      told_.erase("elements");
      told_.erase("tree");
      surveyDue_ = true;
    } else if (auto* departure = std::get_if<LiveDeparture>(&item)) {
      takeDeparture(departure->viewer);
    } else {
      obey(std::move(std::get<LiveCommand>(item)));
    }
  }
}

void LivePhone::takeTouches(LiveTouches touches) {
  touchNumbers_[touches.viewer] = touches.number;
  if (playback_) return settleTouches(false);
  for (const auto& sample : touches.samples) onlyMoves_ = onlyMoves_ && sample.phase == Phase::moved;
  const auto placed = fingers_.placed(touches.viewer, std::move(touches.samples));
  touches_.insert(touches_.end(), placed.begin(), placed.end());
  if (touches_.empty()) settleTouches(false);
}

void LivePhone::takeDeparture(ViewerId viewer) {
  watched_.erase(viewer);
  touchNumbers_.erase(viewer);
  abandon(viewer);
  const auto lifted = fingers_.lifted(viewer);
  if (lifted.empty()) return;
  touches_.insert(touches_.end(), lifted.begin(), lifted.end());
  onlyMoves_ = false;
}

/// The phone goes on to where the wall is, and then takes what fingers did: whatever comes next happens now, however
/// long the phone has rested.
void LivePhone::catchUp() {
  step(pace_.due(wallNow(), phoneNow(), nextDue()));
}

/// Lets so much time pass, and then takes what fingers did.
void LivePhone::step(Clock::Duration duration) {
  if (!touches_.empty() && duration > Clock::Duration::zero() && !options_.phone.realTime) {
    auto touches = std::exchange(touches_, {});
    phone_.step(std::exchange(duration, Clock::Duration::zero()), {}, /*shown=*/false);
    touches_ = std::move(touches);
  }
  const std::string front = phone_.front();
  stepOnce(duration);
  // What was tapped may have put something else in front; it is seen at once.
  if (phone_.front() != front) stepOnce(Clock::Duration::zero());
}

ios::automation::Step::Answer LivePhone::stepOnce(Clock::Duration duration) {
  const auto touches = std::exchange(touches_, {});
  onlyMoves_ = true;
  if (recorder_.isRecording() && !playback_ && !touches.empty()) {
    recorder_.touches(phoneNow().time_since_epoch(), touches, [this] { return phone_.elements(); });
    tellFlow();
  }
  launchedByTap_.clear();
  const auto tapped = phoneNow().time_since_epoch();
  const auto seen = phone_.step(duration, touches);
  // A flow's icons know no arguments: it says what the tap has brought about.
  if (recorder_.isRecording() && !launchedByTap_.empty()) {
    recorder_.actionOfLastTap(tapped, launchStep(launchedByTap_));
    recorder_.actionTook(phoneNow().time_since_epoch());
    tellFlow();
  }
  lastStep_ = wallNow();
  lookDue_ = true;
  surveyDue_ = surveyDue_ || isWatched("elements") || isWatched("tree");
  nextEvent_.reset();
  if (seen.nextEvent >= Clock::Duration::zero()) nextEvent_ = Clock::Instant(seen.nextEvent);
  show(seen);
  // With every step, so that its time is right.
  if (auto value = pasteboard_.look(phoneNow().time_since_epoch(), phone_.running()))
    tell("pasteboard", std::move(*value));
  // Of an application that ends under a flow, the flow tells.
  if (const auto failure = playback_ ? std::nullopt : phone_.takeFailure()) {
    consoleLine("phone", *failure);
    remark("problem", *failure);
  }
  return seen;
}

void LivePhone::show(const ios::automation::Step::Answer& seen) {
  const Display::Shape shape{seen.width, seen.height, ios::Device::current().settings().orientation};
  PixelRect changed{seen.x, seen.y, seen.changedWidth, seen.changedHeight};
  if (shape.width > 0 && shape != display_.shape()) changed = {0, 0, shape.width, shape.height};
  if (shape.width > 0) display_.show(phone_.displayBytes(), shape, changed);
  if (movie_ && !changed.isEmpty()) movie_->show(phone_.displayBytes(), shape, phoneNow().time_since_epoch());
  settleTouches(!changed.isEmpty());
  if (!changed.isEmpty()) audience_.displayChanged(changed, phoneNow().time_since_epoch());
}

void LivePhone::settleTouches(bool visible) {
  for (const auto& [viewer, number] : touchNumbers_) audience_.touchesApplied(viewer, number, visible);
  touchNumbers_.clear();
}

std::optional<Clock::Instant> LivePhone::nextDue() const {
  // The status bar's clock is read when the display is drawn; nothing is due when its minute changes.
  const auto wall = Clock::shared().wallTime();
  const auto minute =
      phoneNow() + (std::chrono::ceil<std::chrono::minutes>(wall + Clock::Duration(1)) - wall);
  return nextEvent_ ? std::min(*nextEvent_, minute) : minute;
}

LivePhone::Wall LivePhone::nextWake() const {
  Wall wake = wallNow() + std::chrono::hours(1);
  if (options_.phone.realTime || !deferred_.empty()) return wallNow();
  // Events between two refreshes wait for the second.
  if (const auto due = pace_.wallTimeOf(*nextDue())) wake = std::max(*due, lastStep_ + kRefresh / 2);
  if (!touches_.empty()) wake = std::min(wake, lastStep_ + kBetweenMoves);
  if (surveyDue_) wake = std::min(wake, lastSurvey_ + kBetweenSurveys);
  if (lookDue_) wake = std::min(wake, lastLook_ + kBetweenLooks);
  return wake;
}

/// While the application is waited for: false ends it.
bool LivePhone::attend(milliseconds waited) {
  tellConsole();
  inbox_.acknowledge();
  LiveItem item;
  while (inbox_.take(item)) {
    const auto* command = std::get_if<LiveCommand>(&item);
    const std::string* name = command ? ios::PropertyList(command->members).text("command") : nullptr;
    if (name && *name == "end" && !responding_) {
      endWanted_ = true;
      command->answer({});
    } else if (name && *name == "switchOff") {
      ended_ = true;
      command->answer({});
    } else {
      const auto* departure = std::get_if<LiveDeparture>(&item);
      if (departure && departure->viewer == gestureViewer_) gestureStops_ = true;
      deferred_.push_back(std::move(item));
    }
  }
  if (waited >= kUnresponsive && std::exchange(responding_, false)) tellPhone();
  return !ended_ && !std::exchange(endWanted_, false);
}

}  // namespace simulator
