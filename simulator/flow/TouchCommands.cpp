#include <array>
#include <charconv>
#include <tuple>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Place.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Words.h"

/// What a hand does with the phone.
namespace simulator {
namespace {

using std::chrono::milliseconds;

Place::Coordinate coordinate(const YamlValue& value, std::string text) {
  Place::Coordinate result;
  while (!text.empty() && text.front() == ' ') text.erase(0, 1);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  result.percent = !text.empty() && text.back() == '%';
  if (result.percent) text.pop_back();
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result.value);
  const double most = result.percent ? 100 : 10'000;
  if (error != std::errc() || end != text.data() + text.size() ||
      !(result.value >= 0 && result.value <= most)) {
    value.fail("expected a place such as \"50%,50%\" or \"160,284\", not \"" + value.text() + "\"");
  }
  return result;
}

Place place(const YamlValue& value) {
  const std::string text = value.text();
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos) coordinate(value, "");
  return {coordinate(value, text.substr(0, comma)), coordinate(value, text.substr(comma + 1))};
}

struct TapOn : Command {
  std::optional<TextPattern> text;
  std::optional<Place> point;
  int repeat = 1;
  int delay = 100, hold = 50;  // ms
  int fingers = 1;

  std::string description() const override {
    std::string words = "tap";
    if (repeat > 1) words += " " + simulator::times(repeat);
    if (fingers > 1) words += " with " + inWords(fingers) + " fingers";
    return words + (text ? " on " + quoted(text->text()) : " at " + point->description());
  }
  Problem perform(Stage& stage) const override {
    // What is tapped on may still be on its way, and then what the tap has set moving.
    constexpr auto kRest = std::chrono::seconds(3), kRestAfterTap = std::chrono::seconds(1);
    Phone& phone = stage.phone();
    ios::automation::Tap tap{
        .count = repeat, .fingers = fingers, .hold = milliseconds(hold), .delay = milliseconds(delay)};
    if (point) {
      tap.location = point->on(phone.screenSize());
    } else {
      if (!stage.await(Stage::kPatience, [&] { return stage.find(*text).has_value(); }))
        return "expected \"" + text->text() + "\" to tap on";
      stage.settle(kRest);
      const auto settled = stage.find(*text);
      if (!settled) return "expected \"" + text->text() + "\" to stay until it was tapped";
      tap.location = {settled->frame.midX(), settled->frame.midY()};
    }
    phone.tap(tap);
    stage.settle(kRestAfterTap);
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<TapOn>();
    if (!value.node().IsMap()) {
      result->text = pattern(value);
      return result;
    }
    for (const auto& [key, field] : value.members({"text", "point", "repeat", "delay", "hold", "fingers"})) {
      if (key == "text") result->text = pattern(field);
      if (key == "point") result->point = place(field);
      if (key == "repeat") result->repeat = field.integer(1, 1000);
      if (key == "hold") result->hold = field.integer(0, kLongestMilliseconds);
      if (key == "delay") result->delay = field.integer(0, kLongestMilliseconds);
      if (key == "fingers") result->fingers = field.integer(1, 5);
    }
    if (result->text.has_value() == result->point.has_value())
      value.fail("needs either \"text\" or \"point\"");
    return result;
  }
};

struct Swipe : Command {
  Place start, end;
  int duration = 400;  // ms

  std::string description() const override {
    return "swipe from " + start.description() + " to " + end.description();
  }
  Problem perform(Stage& stage) const override {
    const ios::CGSize screen = stage.phone().screenSize();
    stage.phone().swipe(start.on(screen), end.on(screen), milliseconds(duration));
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    static const std::map<std::string, std::pair<Place, Place>> kDirections = {
        {"up", {{{50, true}, {60, true}}, {{50, true}, {15, true}}}},
        {"down", {{{50, true}, {30, true}}, {{50, true}, {75, true}}}},
        {"left", {{{85, true}, {50, true}}, {{15, true}, {50, true}}}},
        {"right", {{{15, true}, {50, true}}, {{85, true}, {50, true}}}},
    };
    const auto fields = value.members({"start", "end", "direction", "duration"});
    auto result = std::make_unique<Swipe>();
    if (fields.contains("duration"))
      result->duration = fields.at("duration").integer(1, kLongestMilliseconds);
    const bool directed = fields.contains("direction");
    if (fields.contains("start") == directed || fields.contains("end") == directed)
      value.fail("needs either a direction or a start and an end");
    if (directed) {
      std::tie(result->start, result->end) =
          oneOf(fields.at("direction"), kDirections, "UP, DOWN, LEFT or RIGHT");
    } else {
      result->start = place(fields.at("start"));
      result->end = place(fields.at("end"));
    }
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

struct PressHome : Command {
  std::string description() const override { return "press the Home key"; }
  Problem perform(Stage& stage) const override {
    stage.phone().pressHome();
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    if (lowerCase(value.text()) != "home")
      value.fail("the phone has no key \"" + value.text() + "\"; known: Home");
    return std::make_unique<PressHome>();
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

struct SetOrientation : Command {
  std::string name;
  int orientation = 1;  // as the device numbers them

  std::string description() const override { return "turn the phone to " + name; }
  Problem perform(Stage& stage) const override {
    stage.phone().turn(orientation);
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    static const std::pair<std::string, int> kPortrait{"portrait", 1}, kUpsideDown{"upside down", 2},
        kLeft{"landscape left", 3}, kRight{"landscape right", 4};
    static const std::map<std::string, std::pair<std::string, int>> kOrientations = {
        {"portrait", kPortrait},     {"upsidedown", kUpsideDown}, {"upside_down", kUpsideDown},
        {"landscapeleft", kLeft},    {"landscape_left", kLeft},   {"landscaperight", kRight},
        {"landscape_right", kRight},
    };
    auto result = std::make_unique<SetOrientation>();
    std::tie(result->name, result->orientation) =
        oneOf(value, kOrientations, "portrait, landscapeLeft, landscapeRight or upsideDown");
    return result;
  }
};

}  // namespace

ios::CGPoint Place::on(ios::CGSize screen) const {
  return {x.percent ? screen.width * x.value / 100 : x.value,
          y.percent ? screen.height * y.value / 100 : y.value};
}

std::string Place::description() const {
  return plainNumber(x.value) + (x.percent ? "%," : ",") + plainNumber(y.value) + (y.percent ? "%" : "");
}

std::span<const CommandKind> touchCommands() {
  static constexpr std::array kAll = {
      CommandKind{"tapOn", &TapOn::read}, CommandKind{"swipe", &Swipe::read},
      CommandKind{"touch", &Touch::read}, CommandKind{"pressKey", &PressHome::read},
      CommandKind{"shake", &Shake::read}, CommandKind{"setOrientation", &SetOrientation::read},
  };
  return kAll;
}

}  // namespace simulator
