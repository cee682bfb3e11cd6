#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"

/// Swipes and scrolling.
namespace simulator {
namespace {

using ios::CGPoint;
using ios::CGSize;
using ios::Clock;
using std::chrono::milliseconds;

enum class Direction { up, down, left, right };  // in which the finger goes

const std::string kDirectionWords = "UP, DOWN, LEFT or RIGHT";
const std::map<std::string, Direction>& directions() {
  static const auto& all = *new std::map<std::string, Direction>{{"up", Direction::up},
                                                                 {"down", Direction::down},
                                                                 {"left", Direction::left},
                                                                 {"right", Direction::right}};
  return all;
}

CGPoint inDirection(Direction direction, CGPoint from, CGSize by) {
  switch (direction) {
    case Direction::up:
      return {from.x, from.y - by.height};
    case Direction::down:
      return {from.x, from.y + by.height};
    case Direction::left:
      return {from.x - by.width, from.y};
    case Direction::right:
      return {from.x + by.width, from.y};
  }
  return from;
}

std::pair<Place, Place> acrossTheScreen(Direction direction) {
  switch (direction) {
    case Direction::up:
      return {{{50, true}, {60, true}}, {{50, true}, {15, true}}};
    case Direction::down:
      return {{{50, true}, {30, true}}, {{50, true}, {75, true}}};
    case Direction::left:
      return {{{85, true}, {50, true}}, {{15, true}, {50, true}}};
    case Direction::right:
      break;
  }
  return {{{15, true}, {50, true}}, {{85, true}, {50, true}}};
}

std::string wordOf(Direction direction) {
  const auto found = std::find_if(directions().begin(), directions().end(),
                                  [&](const auto& each) { return each.second == direction; });
  return found->first;
}

struct Swipe : Command {
  std::optional<Selector> from;
  Direction direction = Direction::up;
  Place start, end;
  int duration = 400;  // ms

  std::string description() const override {
    if (from) return "swipe " + wordOf(direction) + " from " + from->description();
    return "swipe from " + start.description() + " to " + end.description();
  }
  Problem perform(Stage& stage) const override {
    const CGSize screen = stage.phone().screenSize();
    CGPoint first = start.on(screen), last = end.on(screen);
    if (from) {
      constexpr double kPart = 0.4, kEdge = 5;
      Problem problem;
      const auto found = stage.awaitElement(*from, "to swipe from", problem);
      if (!found) return problem;
      first = {found->frame.midX(), found->frame.midY()};
      last = inDirection(direction, first, {screen.width * kPart, screen.height * kPart});
      last = {std::clamp(last.x, kEdge, screen.width - kEdge),
              std::clamp(last.y, kEdge, screen.height - kEdge)};
    }
    stage.phone().swipe(first, last, milliseconds(duration));
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    const auto fields = value.members({"start", "end", "direction", "from", "duration"});
    auto result = std::make_unique<Swipe>();
    if (fields.contains("duration"))
      result->duration = fields.at("duration").integer(1, kLongestMilliseconds);
    const bool directed = fields.contains("direction");
    if (fields.contains("start") == directed || fields.contains("end") == directed)
      value.fail("needs either a direction or a start and an end");
    if (!directed) {
      if (fields.contains("from")) value.fail("\"from\" needs a direction");
      result->start = place(fields.at("start"));
      result->end = place(fields.at("end"));
      return result;
    }
    result->direction = oneOf(fields.at("direction"), directions(), kDirectionWords);
    std::tie(result->start, result->end) = acrossTheScreen(result->direction);
    if (fields.contains("from")) result->from = selector(fields.at("from"));
    return result;
  }
};

struct Scroll : Command {
  std::string description() const override { return "scroll down"; }
  Problem perform(Stage& stage) const override {
    const CGSize screen = stage.phone().screenSize();
    const auto [start, end] = acrossTheScreen(Direction::up);
    stage.phone().swipe(start.on(screen), end.on(screen), milliseconds(400));
    stage.settle(std::chrono::seconds(3));
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    return std::make_unique<Scroll>();
  }
};

struct ScrollUntilVisible : Command {
  Selector element;
  Direction finger = Direction::up;
  int timeout = 20'000;  // ms
  int speed = 40;        // 0 to 100
  double percentage = 100;
  bool center = false;

  std::string description() const override {
    return "scroll until " + element.description() + " is on the screen";
  }
  Problem perform(Stage& stage) const override {
    const Clock& clock = Clock::shared();
    const Clock::Instant end = clock.now() + milliseconds(timeout);
    for (;;) {
      stage.settle(std::chrono::seconds(3));
      const auto found = stage.find(element);
      if (found && found->shown * 100 >= percentage - 0.01) {
        if (center) moveToTheMiddle(stage, *found);
        return {};
      }
      if (clock.now() >= end || stage.phone().wasInterrupted())
        return "expected " + element.inPlainQuotes() + " to come into view by scrolling";
      const auto [start, last] = acrossTheScreen(finger);
      const CGSize screen = stage.phone().screenSize();
      stage.phone().swipe(start.on(screen), last.on(screen), swipeTime());
    }
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    // What is further down comes into view when the finger goes up.
    static const std::map<std::string, Direction> kFingers = {{"down", Direction::up},
                                                              {"up", Direction::down},
                                                              {"right", Direction::left},
                                                              {"left", Direction::right}};
    const auto fields =
        value.members({"element", "direction", "timeout", "speed", "visibilityPercentage", "centerElement"});
    if (!fields.contains("element")) value.fail("needs \"element\"");
    auto result = std::make_unique<ScrollUntilVisible>();
    for (const auto& [key, field] : fields) {
      if (key == "element") result->element = selector(field);
      if (key == "direction") result->finger = oneOf(field, kFingers, kDirectionWords);
      if (key == "timeout") result->timeout = field.integer(0, kLongestMilliseconds);
      if (key == "speed") result->speed = field.integer(0, 100);
      if (key == "visibilityPercentage") result->percentage = field.number(0, 100);
      if (key == "centerElement") result->center = field.boolean();
    }
    return result;
  }

 private:
  milliseconds swipeTime() const { return milliseconds(100 + (100 - speed) * 10); }

  /// As far as what it is in can be scrolled.
  void moveToTheMiddle(Stage& stage, ios::VisibleElement found) const {
    constexpr int kMostSwipes = 4;
    constexpr double kNear = 12;
    // A finger that goes slowly leaves no momentum behind.
    constexpr auto kSlowly = milliseconds(1500);
    const CGSize screen = stage.phone().screenSize();
    const bool upright = finger == Direction::up || finger == Direction::down;
    for (int i = 0; i < kMostSwipes; ++i) {
      const CGPoint middle{screen.width / 2, screen.height / 2};
      CGPoint by{middle.x - found.frame.midX(), middle.y - found.frame.midY()};
      if (upright) by.x = 0;
      if (!upright) by.y = 0;
      if (std::abs(by.x) + std::abs(by.y) <= kNear) return;
      by = {std::clamp(by.x, -screen.width / 3, screen.width / 3),
            std::clamp(by.y, -screen.height / 3, screen.height / 3)};
      stage.phone().swipe({middle.x - by.x / 2, middle.y - by.y / 2},
                          {middle.x + by.x / 2, middle.y + by.y / 2}, kSlowly);
      stage.settle(std::chrono::seconds(3));
      const auto moved = stage.find(element);
      if (!moved || (moved->frame.midX() == found.frame.midX() && moved->frame.midY() == found.frame.midY()))
        return;
      found = *moved;
    }
  }
};

}  // namespace

std::span<const CommandKind> scrollCommands() {
  static constexpr std::array kAll = {
      CommandKind{"swipe", &Swipe::read},
      CommandKind{"scroll", &Scroll::read},
      CommandKind{"scrollUntilVisible", &ScrollUntilVisible::read},
  };
  return kAll;
}

}  // namespace simulator
