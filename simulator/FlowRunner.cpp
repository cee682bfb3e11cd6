#include "simulator/FlowRunner.h"

#include <algorithm>

#include "Device/Files.h"
#include "UIKit/UIPasteboard.h"

namespace simulator {
namespace {

using ios::Clock;
using std::chrono::milliseconds;

constexpr int kPatience = 7000;  // ms of the phone's time in which a text may appear or go
// How long something that moves is waited for: what a tap aims at, then what the tap set moving, and a
// picture.
constexpr Clock::Duration kRest = std::chrono::seconds(3), kRestAfterTap = std::chrono::seconds(1),
                          kRestForPicture = std::chrono::seconds(1);
constexpr Clock::Duration kFrame = std::chrono::nanoseconds(1'000'000'000 / 60);

constexpr const char* kOnTheScreen = "on the screen: ";

std::string listed(const std::vector<std::string>& texts) {
  std::string result;
  for (const std::string& text : texts) result += (result.empty() ? "\"" : ", \"") + text + "\"";
  return result.empty() ? "nothing" : result;
}

}  // namespace

bool FlowRunner::play(const std::vector<Command>& commands, std::string& problem) {
  for (const Command& command : commands) {
    if (const auto* repeat = std::get_if<Repeat>(&command.action)) {
      if (!playGroup(command, repeat->commands, repeat->times, problem)) return false;
      continue;
    }
    if (const auto* run = std::get_if<RunFlow>(&command.action)) {
      if (!playGroup(command, run->commands, 1, problem)) return false;
      continue;
    }
    Problem found = perform(command.action);
    // An application that ended is the reason behind whatever else was missed.
    if (const auto failure = phone_.takeFailure())
      found = "expected the application to run on, but " + *failure;
    else if (!found.empty() && found.find(kOnTheScreen) == Problem::npos)
      found += "; " + onTheScreen();
    if (found.empty() && !console_.isKept()) found = "the console could not be written down";
    transcript_.step(found.empty(), describe(command));
    if (found.empty()) continue;
    problem = command.file + ":" + std::to_string(command.line) + ": " + command.name + ": " + found;
    return false;
  }
  return true;
}

bool FlowRunner::playGroup(const Command& command, const std::vector<Command>& commands, int times,
                           std::string& problem) {
  transcript_.beginGroup(describe(command));
  bool done = true;
  for (int round = 0; round < times && done; ++round) done = play(commands, problem);
  transcript_.endGroup();
  return done;
}

FlowRunner::Problem FlowRunner::perform(const Action& action) {
  return std::visit(
      [this](const auto& command) -> Problem {
        using Kind = std::decay_t<decltype(command)>;
        if constexpr (!std::is_same_v<Kind, Repeat> && !std::is_same_v<Kind, RunFlow>)
          return perform(command);
        return {};
      },
      action);
}

FlowRunner::Problem FlowRunner::perform(const LaunchApp& command) {
  if (!command.stopApp && phone_.running() == command.appId && !command.clearState) {
    phone_.setPermissions(command.appId, command.permissions);
    phone_.bringToFront();
    return {};
  }
  if (Problem problem = phone_.stop(); !problem.empty()) return problem;
  if (command.clearState) {
    if (Problem problem = phone_.clearState(command.appId); !problem.empty()) return problem;
  }
  phone_.setPermissions(command.appId, command.permissions);
  return phone_.launch(command.appId, command.arguments, command.sound);
}

FlowRunner::Problem FlowRunner::perform(const StopApp& command) {
  return phone_.running() == command.appId ? phone_.stop() : "";
}

FlowRunner::Problem FlowRunner::perform(const TapOn& command) {
  ios::Input::Tap tap;
  tap.count = command.repeat;
  tap.fingers = command.fingers;
  tap.delay = milliseconds(command.delay);
  if (command.point) {
    tap.location = command.point->on(phone_.screenSize());
  } else {
    bool met = false;
    await(*command.text, true, kPatience, met);
    if (!met) return "expected \"" + command.text->text() + "\" to tap on; " + onTheScreen();
    phone_.settle(kRest);  // it may still be on its way
    const auto settled = choose(phone_.elements(), *command.text);
    if (!settled)
      return "expected \"" + command.text->text() + "\" to stay until it was tapped; " + onTheScreen();
    tap.location = {settled->frame.midX(), settled->frame.midY()};
  }
  phone_.tap(tap);
  phone_.settle(kRestAfterTap);
  return {};
}

FlowRunner::Problem FlowRunner::perform(const Swipe& command) {
  const ios::CGSize screen = phone_.screenSize();
  phone_.swipe(command.start.on(screen), command.end.on(screen), milliseconds(command.duration));
  return {};
}

FlowRunner::Problem FlowRunner::perform(const PressKey&) {
  phone_.pressHome();
  return {};
}

FlowRunner::Problem FlowRunner::perform(const Shake&) {
  phone_.shake();
  return {};
}

FlowRunner::Problem FlowRunner::perform(const AssertVisible& command) {
  bool met = false;
  await(command.text, command.visible, command.timeout, met);
  if (met) return {};
  return std::string(command.visible ? "expected \"" : "expected no \"") + command.text.text() + "\"; " +
         onTheScreen();
}

FlowRunner::Problem FlowRunner::perform(const Wait& command) {
  // In slices, so that what the console says meanwhile is told with its time.
  const auto total =
      std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(command.seconds));
  const Clock::Duration slice = std::max<Clock::Duration>(milliseconds(50), total / 200);
  const Clock& clock = Clock::shared();
  for (const Clock::Instant end = clock.now() + total; clock.now() < end;)
    phone_.runFor(std::min(end - clock.now(), slice));
  return {};
}

FlowRunner::Problem FlowRunner::perform(const TakeScreenshot& command) {
  phone_.settle(kRestForPicture);
  const ios::Bytes png = phone_.picture();
  if (png.empty()) return "expected a picture, but the display shows nothing";
  const auto error = ios::writeFileAtomically(out_ / (command.name + ".png"), png);
  return error ? error->description() : "";
}

FlowRunner::Problem FlowRunner::perform(const SetPermissions& command) {
  phone_.setPermissions(command.appId, command.permissions);
  return {};
}

FlowRunner::Problem FlowRunner::perform(const SetOrientation& command) {
  phone_.turn(command.orientation);
  return {};
}

FlowRunner::Problem FlowRunner::perform(const OpenLink& command) {
  return phone_.openLink(command.link);
}

FlowRunner::Problem FlowRunner::perform(const InstallApp& command) {
  return phone_.install(command.application);
}

FlowRunner::Problem FlowRunner::perform(const UninstallApp& command) {
  return phone_.uninstall(command.appId);
}

FlowRunner::Problem FlowRunner::perform(const AssertLog& command) {
  if (!command.present) {
    if (!console_.contains(command.line)) return {};
    return "expected no line \"" + command.line.text() +
           "\" on the console; its last lines: " + listed(console_.lastLines(5));
  }
  const Clock::Instant end = Clock::shared().now() + milliseconds(kPatience);
  while (!console_.take(command.line)) {
    if (Clock::shared().now() >= end) {
      return "expected the line \"" + command.line.text() +
             "\" on the console; its last lines: " + listed(console_.lastLines(5));
    }
    phone_.runFor(kFrame);
  }
  return {};
}

FlowRunner::Problem FlowRunner::perform(const AssertPasteboard& command) {
  const auto items = ios::UIPasteboard::generalPasteboard()->items();
  std::vector<std::string> types;
  if (!items.empty()) {
    for (const auto& [type, data] : items.front()) types.push_back(type);
  }
  const std::size_t expected = command.types.empty() ? 0 : 1;
  if (items.size() == expected && types == command.types) return {};
  return "expected " + (command.types.empty() ? "nothing" : "one item of " + listed(command.types)) +
         " on the pasteboard; there: " + std::to_string(items.size()) + " items, the first of " +
         listed(types);
}

FlowRunner::Problem FlowRunner::perform(const AssertMovies& command) {
  std::vector<std::string> movies;
  std::error_code error;
  const auto folder = ios::Device::current().root() / "Media" / "DCIM" / "100TLVNE";
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.path().extension() == ".MOV") movies.push_back(entry.path().filename().string());
  }
  std::sort(movies.begin(), movies.end());
  if (movies.size() == static_cast<std::size_t>(command.count)) return {};
  return "expected " + std::to_string(command.count) + " in the photo library; there: " + listed(movies);
}

std::optional<ios::VisibleElement> FlowRunner::choose(const std::vector<ios::VisibleElement>& elements,
                                                      const TextPattern& text) {
  const ios::VisibleElement* best = nullptr;
  int bestWorth = 0;
  for (const auto& element : elements) {
    const bool exactly = text.isExactly(element.text);
    if (!exactly && !text.matches(element.text)) continue;
    const int worth = (exactly ? 2 : 0) + (element.control ? 1 : 0);
    if (best && worth < bestWorth) continue;
    best = &element;
    bestWorth = worth;
  }
  return best ? std::optional(*best) : std::nullopt;
}

std::optional<ios::VisibleElement> FlowRunner::await(const TextPattern& text, bool visible, int timeout,
                                                     bool& met) {
  const Clock::Instant end = Clock::shared().now() + milliseconds(timeout);
  for (;;) {
    const auto element = choose(phone_.elements(), text);
    met = element.has_value() == visible;
    if (met || Clock::shared().now() >= end) return element;
    phone_.runFor(kFrame);
  }
}

std::string FlowRunner::onTheScreen() {
  std::vector<std::string> texts;
  for (const auto& element : phone_.elements()) texts.push_back(element.text);
  return kOnTheScreen + listed(texts);
}

}  // namespace simulator
