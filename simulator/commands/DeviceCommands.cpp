#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"

/// What is set on the phone, or put on it.
namespace simulator {
namespace {

using ios::Clock;
using ios::Location;

std::string inWords(const Location& location) {
  return plainNumber(location.latitude) + "," + plainNumber(location.longitude);
}

void moveTo(Stage& stage, const Location& location) {
  stage.phone().changeSettings([&](ios::DeviceSettings& settings) { settings.location = location; });
}

struct SetLocation : Command {
  Location location;

  std::string description() const override { return "be at " + inWords(location); }
  Problem perform(Stage& stage) const override {
    moveTo(stage, location);
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    const auto fields = value.members({"latitude", "longitude"});
    if (fields.size() != 2) value.fail("needs \"latitude\" and \"longitude\"");
    auto result = std::make_unique<SetLocation>();
    result->location = {fields.at("latitude").number(-90, 90), fields.at("longitude").number(-180, 180)};
    return result;
  }
};

/// Metres along the surface of the earth.
double distance(const Location& a, const Location& b) {
  constexpr double kRadius = 6'371'000, kDegree = std::numbers::pi / 180;
  const double north = std::sin((b.latitude - a.latitude) * kDegree / 2);
  const double east = std::sin((b.longitude - a.longitude) * kDegree / 2);
  const double h =
      north * north + std::cos(a.latitude * kDegree) * std::cos(b.latitude * kDegree) * east * east;
  return 2 * kRadius * std::asin(std::min(1.0, std::sqrt(h)));
}

struct Travel : Command {
  std::vector<Location> points;
  double speed = 0;  // metres per second; 0: a second from point to point

  std::string description() const override {
    return "travel from " + inWords(points.front()) + " to " + inWords(points.back());
  }
  Problem perform(Stage& stage) const override {
    moveTo(stage, points.front());
    for (std::size_t i = 1; i < points.size() && !stage.phone().wasInterrupted(); ++i) {
      const double seconds = speed > 0 ? distance(points[i - 1], points[i]) / speed : 1;
      stage.phone().runFor(
          std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(seconds)));
      moveTo(stage, points[i]);
    }
    return {};
  }
  static Location point(const YamlValue& value) {
    const std::string text = value.text();
    if (value.isOpen()) return {};
    Location location;
    const char* const end = text.data() + text.size();
    const auto [comma, error] = std::from_chars(text.data(), end, location.latitude);
    const char* second = comma;
    while (second != end && (*second == ',' || *second == ' ')) ++second;
    const auto [rest, error2] = std::from_chars(second, end, location.longitude);
    if (error != std::errc() || error2 != std::errc() || rest != end || second == comma ||
        !(std::abs(location.latitude) <= 90) || !(std::abs(location.longitude) <= 180))
      value.fail("expected a latitude and a longitude such as \"48.2,16.4\", not \"" + text + "\"");
    return location;
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    constexpr double kSlowest = 0.1, kFastest = 10'000, kLongest = 86'400;
    const auto fields = value.members({"points", "speed"});
    if (!fields.contains("points")) value.fail("needs \"points\"");
    auto result = std::make_unique<Travel>();
    for (const YamlValue& each : fields.at("points").list()) result->points.push_back(point(each));
    if (result->points.empty()) fields.at("points").fail("expected at least one point");
    if (!fields.contains("speed")) return result;
    result->speed = fields.at("speed").number(kSlowest, kFastest);
    double length = 0;
    for (std::size_t i = 1; i < result->points.size(); ++i)
      length += distance(result->points[i - 1], result->points[i]);
    if (!value.hasOpen() && length / result->speed > kLongest)
      value.fail("this takes more than a day; expected a higher speed");
    return result;
  }
};

struct AirplaneMode : Command {
  std::optional<bool> on;  // none: the other one

  std::string description() const override {
    return on ? (*on ? "switch the airplane mode on" : "switch the airplane mode off")
              : "turn the airplane mode over";
  }
  Problem perform(Stage& stage) const override {
    stage.phone().changeSettings(
        [&](ios::DeviceSettings& settings) { settings.airplaneMode = on.value_or(!settings.airplaneMode); });
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    static const std::map<std::string, bool> kWords = {{"enabled", true}, {"disabled", false},
                                                       {"on", true},      {"off", false},
                                                       {"true", true},    {"false", false}};
    auto result = std::make_unique<AirplaneMode>();
    result->on = oneOf(single(value, "enabled"), kWords, "enabled or disabled");
    return result;
  }
  static std::unique_ptr<const Command> readToggle(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    return std::make_unique<AirplaneMode>();
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
    using Orientation = std::pair<std::string, int>;
    static const Orientation kPortrait{"portrait", 1}, kUpsideDown{"upside down", 2},
        kLeft{"landscape left", 3}, kRight{"landscape right", 4};
    static const std::map<std::string, Orientation> kOrientations = {
        {"portrait", kPortrait},     {"upsidedown", kUpsideDown}, {"upside_down", kUpsideDown},
        {"landscapeleft", kLeft},    {"landscape_left", kLeft},   {"landscaperight", kRight},
        {"landscape_right", kRight},
    };
    auto result = std::make_unique<SetOrientation>();
    std::tie(result->name, result->orientation) = oneOf(
        single(value, "orientation"), kOrientations, "portrait, landscapeLeft, landscapeRight or upsideDown");
    return result;
  }
};

struct AddMedia : Command {
  std::vector<std::filesystem::path> files;

  std::string description() const override {
    std::vector<std::string> names;
    for (const auto& file : files) names.push_back(file.filename().string());
    return "put " + enumerated(names) + " into the photo library";
  }
  Problem perform(Stage& stage) const override {
    for (const auto& file : files) {
      const std::string ending = lowerCase(file.extension().string());
      if (ending != ".mov" && ending != ".mp4" && ending != ".m4v")
        return "the photo library of this phone keeps movies only, and " + file.filename().string() +
               " is none";
      if (Problem problem = stage.phone().addMovie(file); !problem.empty()) return problem;
    }
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    const YamlValue files = single(value, "files");
    auto result = std::make_unique<AddMedia>();
    if (!files.node().IsSequence()) {
      result->files.push_back(file(files));
      return result;
    }
    for (const YamlValue& each : files.list()) result->files.push_back(file(each));
    if (result->files.empty()) files.fail("expected at least one file");
    return result;
  }
};

}  // namespace

std::span<const CommandKind> deviceCommands() {
  static constexpr std::array kAll = {
      CommandKind{"setLocation", &SetLocation::read},
      CommandKind{"travel", &Travel::read},
      CommandKind{"setAirplaneMode", &AirplaneMode::read},
      CommandKind{"toggleAirplaneMode", &AirplaneMode::readToggle},
      CommandKind{"setOrientation", &SetOrientation::read},
      CommandKind{"addMedia", &AddMedia::read},
  };
  return kAll;
}

}  // namespace simulator
