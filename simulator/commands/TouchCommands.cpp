#include <array>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"

/// Taps and shakes.
namespace simulator {
namespace {

using std::chrono::milliseconds;

struct TapOn : Command {
  std::optional<Selector> element;
  std::optional<Place> point;  // on the screen, or on the element
  int repeat = 1, fingers = 1;
  int delay = 100, hold = 50, settle = 1000;  // ms
  bool again = false;                         // if nothing changes
  bool waits = true;                          // for the element

  std::string description() const override {
    std::string words = hold >= kLong ? "press" : "tap";
    if (repeat > 1) words += " " + simulator::times(repeat);
    if (fingers > 1) words += " with " + inWords(fingers) + " fingers";
    if (hold >= kLong) words += " long";
    if (element) words += " on " + element->description();
    return words + (point ? " at " + point->description() : "");
  }
  Problem perform(Stage& stage) const override {
    Phone& phone = stage.phone();
    ios::automation::Tap tap{
        .count = repeat, .fingers = fingers, .hold = milliseconds(hold), .delay = milliseconds(delay)};
    if (Problem problem = locate(stage, tap.location); !problem.empty()) return problem;
    const ios::Bytes before = again ? phone.picture() : ios::Bytes();
    phone.tap(tap);
    stage.settle(milliseconds(settle));
    if (again && phone.picture() == before) {
      phone.tap(tap);
      stage.settle(milliseconds(settle));
    }
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) { return made(value); }
  static std::unique_ptr<const Command> readDouble(const YamlValue& value, FlowReader&) {
    auto result = made(value);
    if (result->repeat != 1) value.fail("taps twice already: \"repeat\" is for tapOn");
    result->repeat = 2;
    return result;
  }
  static std::unique_ptr<const Command> readLong(const YamlValue& value, FlowReader&) {
    auto result = made(value);
    result->hold = kLong;
    return result;
  }

 private:
  static constexpr int kLong = 1500;

  /// What is tapped on may still be on its way.
  Problem locate(Stage& stage, ios::CGPoint& place) const {
    if (!element) {
      place = point->on(stage.phone().screenSize());
      return {};
    }
    Problem problem;
    const auto found = waits ? stage.awaitElement(*element, "to tap on", problem) : stage.find(*element);
    if (!found) return problem.empty() ? "expected " + element->inPlainQuotes() + " to tap on" : problem;
    const ios::CGRect& frame = found->frame;
    place = {frame.midX(), frame.midY()};
    if (!point) return {};
    const ios::CGPoint offset = point->on(frame.size);
    place = {frame.minX() + offset.x, frame.minY() + offset.y};
    return {};
  }

  static std::unique_ptr<TapOn> made(const YamlValue& value) {
    static const auto& kOwn = *new std::vector<std::string>{"point",
                                                            "repeat",
                                                            "delay",
                                                            "hold",
                                                            "fingers",
                                                            "retryTapIfNoChange",
                                                            "waitUntilVisible",
                                                            "waitToSettleTimeoutMs"};
    auto result = std::make_unique<TapOn>();
    Selector named = selector(value, kOwn);
    if (!value.isMap() || saysSelector(value)) result->element = std::move(named);
    if (value.isMap()) {
      for (const auto& [key, field] : value.members()) {
        if (key == "point") result->point = place(field);
        if (key == "repeat") result->repeat = field.integer(1, 1000);
        if (key == "hold") result->hold = field.integer(0, kLongestMilliseconds);
        if (key == "delay") result->delay = field.integer(0, kLongestMilliseconds);
        if (key == "fingers") result->fingers = field.integer(1, 5);
        if (key == "retryTapIfNoChange") result->again = field.boolean();
        if (key == "waitUntilVisible") result->waits = field.boolean();
        if (key == "waitToSettleTimeoutMs") result->settle = field.integer(0, kLongestMilliseconds);
      }
    }
    if (!result->element && !result->point) value.fail("needs \"point\", or \"text\", \"id\" or the like");
    return result;
  }
};

/// What fingers did, change by change.
struct Touch : Command {
  struct Change {
    milliseconds time;  // since the first
    ios::TouchSample sample;
    Place place;
  };
  std::vector<Change> changes;

  std::string description() const override {
    return "touch from " + changes.front().place.description() + " to " + changes.back().place.description();
  }
  Problem perform(Stage& stage) const override {
    Phone& phone = stage.phone();
    const ios::CGSize screen = phone.screenSize();
    milliseconds now{0};
    for (auto next = changes.begin(); next != changes.end();) {
      if (next->time > now) phone.runFor(next->time - now);
      now = next->time;
      std::vector<ios::TouchSample> together;
      for (; next != changes.end() && next->time == now; ++next) {
        together.push_back(next->sample);
        together.back().location = next->place.on(screen);
      }
      phone.touch(together);
    }
    return {};
  }
  static Change change(const YamlValue& value) {
    using Phase = ios::TouchSample::Phase;
    static const std::map<std::string, Phase> kPhases = {
        {"down", Phase::began}, {"move", Phase::moved}, {"up", Phase::ended}, {"cancel", Phase::cancelled}};
    const auto parts = value.list();
    if (parts.size() != 4) value.fail("expected milliseconds, a finger, what it does and a place");
    return {milliseconds(parts[0].integer(0, kLongestMilliseconds)),
            {parts[1].integer(1, 10), oneOf(parts[2], kPhases, "down, move, up or cancel"), {}},
            place(parts[3])};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<Touch>();
    for (const YamlValue& each : value.list()) {
      result->changes.push_back(change(each));
      const std::size_t count = result->changes.size();
      if (count > 1 && result->changes[count - 1].time < result->changes[count - 2].time)
        each.fail("expected a time that is not before the last one");
    }
    if (result->changes.empty()) value.fail("expected what fingers do");
    return result;
  }
};

struct Shake : Command {
  std::string description() const override { return "shake the phone"; }
  Problem perform(Stage& stage) const override {
    stage.phone().shake();
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    return std::make_unique<Shake>();
  }
};

}  // namespace

std::span<const CommandKind> touchCommands() {
  static constexpr std::array kAll = {
      CommandKind{"tapOn", &TapOn::read},
      CommandKind{"doubleTapOn", &TapOn::readDouble},
      CommandKind{"longPressOn", &TapOn::readLong},
      CommandKind{"touch", &Touch::read, CommandKind::Origin::own},
      CommandKind{"shake", &Shake::read, CommandKind::Origin::own},
  };
  return kAll;
}

}  // namespace simulator
