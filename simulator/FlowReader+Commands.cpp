#include <algorithm>
#include <cctype>
#include <charconv>

#include "simulator/FlowReader+Private.h"

namespace simulator {
namespace {

constexpr int kLongestMilliseconds = 3'600'000;

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

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

std::map<std::string, ios::Permission> permissions(const YamlValue& value) {
  static const std::vector<std::string> kServices = {"microphone", "photos"};
  static const std::map<std::string, ios::Permission> kAnswers = {{"allow", ios::Permission::authorized},
                                                                  {"deny", ios::Permission::denied},
                                                                  {"unset", ios::Permission::notDetermined}};
  std::map<std::string, ios::Permission> result;
  for (const auto& [service, answer] : value.members({"all", "microphone", "photos"})) {
    const auto found = kAnswers.find(answer.text());
    if (found == kAnswers.end()) answer.fail("expected allow, deny or unset, not \"" + answer.text() + "\"");
    if (service != "all") {
      result[service] = found->second;
    } else {
      for (const auto& each : kServices) result.emplace(each, found->second);
    }
  }
  return result;
}

}  // namespace

TextPattern pattern(const YamlValue& value) {
  const std::string text = value.text();
  if (text.empty()) value.fail("expected a text that is not empty");
  return TextPattern(text);
}

YamlValue single(const YamlValue& value, const std::string& key) {
  if (!value.node().IsMap()) return value;
  const auto fields = value.members({key});
  if (!fields.contains(key)) value.fail("needs \"" + key + "\"");
  return fields.at(key);
}

void FlowReader::expectNothing(const YamlValue& value) {
  if (!value.isNull()) value.fail("takes no values");
}

Action FlowReader::launchApp(const YamlValue& value) {
  LaunchApp result{.appId = appId_};
  if (value.isNull()) return result;
  if (value.node().IsScalar()) return LaunchApp{.appId = pattern(value).text()};
  for (const auto& [key, field] :
       value.members({"appId", "clearState", "permissions", "arguments", "sound", "stopApp"})) {
    if (key == "appId") result.appId = pattern(field).text();
    if (key == "clearState") result.clearState = field.boolean();
    if (key == "stopApp") result.stopApp = field.boolean();
    if (key == "permissions") result.permissions = permissions(field);
    if (key == "sound") result.sound = field.text();
    if (key != "arguments") continue;
    for (const auto& [name, argument] : field.members()) result.arguments[name] = argument.text();
  }
  return result;
}

Action FlowReader::stopApp(const YamlValue& value) {
  return StopApp{value.isNull() ? appId_ : pattern(single(value, "appId")).text()};
}

Action FlowReader::tapOn(const YamlValue& value) {
  TapOn result;
  if (!value.node().IsMap()) {
    result.text = pattern(value);
    return result;
  }
  for (const auto& [key, field] : value.members({"text", "point", "repeat", "delay", "fingers"})) {
    if (key == "text") result.text = pattern(field);
    if (key == "point") result.point = place(field);
    if (key == "repeat") result.repeat = field.integer(1, 1000);
    if (key == "delay") result.delay = field.integer(0, kLongestMilliseconds);
    if (key == "fingers") result.fingers = field.integer(1, 5);
  }
  if (result.text.has_value() == result.point.has_value()) value.fail("needs either \"text\" or \"point\"");
  return result;
}

Action FlowReader::swipe(const YamlValue& value) {
  static const std::map<std::string, std::pair<Place, Place>> kDirections = {
      {"up", {{{50, true}, {60, true}}, {{50, true}, {15, true}}}},
      {"down", {{{50, true}, {30, true}}, {{50, true}, {75, true}}}},
      {"left", {{{85, true}, {50, true}}, {{15, true}, {50, true}}}},
      {"right", {{{15, true}, {50, true}}, {{85, true}, {50, true}}}},
  };
  const auto fields = value.members({"start", "end", "direction", "duration"});
  Swipe result;
  if (fields.contains("duration")) result.duration = fields.at("duration").integer(1, kLongestMilliseconds);
  if (fields.contains("direction")) {
    if (fields.contains("start") || fields.contains("end"))
      value.fail("needs either a direction or a start and an end");
    const auto found = kDirections.find(lowerCase(fields.at("direction").text()));
    if (found == kDirections.end()) fields.at("direction").fail("expected UP, DOWN, LEFT or RIGHT");
    std::tie(result.start, result.end) = found->second;
    return result;
  }
  if (!fields.contains("start") || !fields.contains("end"))
    value.fail("needs either a direction or a start and an end");
  result.start = place(fields.at("start"));
  result.end = place(fields.at("end"));
  return result;
}

Action FlowReader::pressKey(const YamlValue& value) {
  const std::string key = value.text();
  if (lowerCase(key) != "home") value.fail("the phone has no key \"" + key + "\"; known: Home");
  return PressKey{"Home"};
}

Action FlowReader::shake(const YamlValue& value) {
  expectNothing(value);
  return Shake{};
}

Action FlowReader::extendedWaitUntil(const YamlValue& value) {
  const auto fields = value.members({"visible", "notVisible", "timeout"});
  if (fields.contains("visible") == fields.contains("notVisible"))
    value.fail("needs either \"visible\" or \"notVisible\"");
  const bool visible = fields.contains("visible");
  AssertVisible result{pattern(single(fields.at(visible ? "visible" : "notVisible"), "text")), visible,
                       10'000};
  if (fields.contains("timeout")) result.timeout = fields.at("timeout").integer(0, kLongestMilliseconds);
  return result;
}

Action FlowReader::takeScreenshot(const YamlValue& value) {
  TakeScreenshot result{pattern(single(value, "path")).text()};
  const std::filesystem::path name(result.name);
  // Pictures stay in the output folder, whoever wrote the flow.
  const bool climbs = std::find(name.begin(), name.end(), "..") != name.end();
  if (name.is_absolute() || climbs || !name.has_filename())
    value.fail("expected a plain name, not \"" + result.name + "\"");
  return result;
}

Action FlowReader::setPermissions(const YamlValue& value) {
  const auto members = value.members();
  const bool nested =
      std::any_of(members.begin(), members.end(), [](const auto& m) { return m.first == "permissions"; });
  if (!nested) return SetPermissions{appId_, permissions(value)};
  const auto fields = value.members({"appId", "permissions"});
  return SetPermissions{fields.contains("appId") ? pattern(fields.at("appId")).text() : appId_,
                        permissions(fields.at("permissions"))};
}

Action FlowReader::setOrientation(const YamlValue& value) {
  static const std::map<std::string, std::pair<std::string, int>> kOrientations = {
      {"portrait", {"portrait", 1}},
      {"upsidedown", {"upside down", 2}},
      {"landscapeleft", {"landscape left", 3}},
      {"landscaperight", {"landscape right", 4}},
  };
  std::string key = lowerCase(value.text());
  std::erase(key, '_');
  const auto found = kOrientations.find(key);
  if (found == kOrientations.end()) {
    value.fail("expected portrait, landscapeLeft, landscapeRight or upsideDown, not \"" + value.text() +
               "\"");
  }
  return SetOrientation{found->second.first, found->second.second};
}

Action FlowReader::installApp(const YamlValue& value) {
  const std::string application = pattern(value).text();
  if (application.find('/') == std::string::npos) return InstallApp{application};
  return InstallApp{(std::filesystem::path(value.file()).parent_path() / application).string()};
}

Action FlowReader::assertPasteboard(const YamlValue& value) {
  AssertPasteboard result;
  if (value.node().IsScalar()) {
    if (value.text() != "empty") value.fail("expected \"empty\" or a list of type texts");
    return result;
  }
  for (const YamlValue& type : value.list()) result.types.push_back(pattern(type).text());
  if (result.types.empty()) value.fail("expected \"empty\" or a list of type texts");
  std::sort(result.types.begin(), result.types.end());
  return result;
}

}  // namespace simulator
