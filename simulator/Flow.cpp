#include "simulator/Flow.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <regex>

namespace simulator {
namespace {

std::string plainNumber(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

std::string inWords(int count) {
  static constexpr std::array kWords = {"no",    "one",   "two",  "three", "four",   "five",  "six",
                                        "seven", "eight", "nine", "ten",   "eleven", "twelve"};
  return count >= 0 && count < static_cast<int>(kWords.size()) ? kWords[count] : std::to_string(count);
}

std::string times(int count) {
  if (count == 1) return "once";
  return count == 2 ? "twice" : inWords(count) + " times";
}

std::string quoted(const std::string& text) {
  return "“" + text + "”";
}

std::string listed(const std::vector<std::string>& parts) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += i + 1 == parts.size() ? " and " : ", ";
    text += parts[i];
  }
  return text;
}

std::string permissionsInWords(const std::map<std::string, ios::Permission>& permissions) {
  std::vector<std::string> parts;
  for (const auto& [service, answer] : permissions) {
    parts.push_back(service + (answer == ios::Permission::authorized ? " allowed"
                               : answer == ios::Permission::denied   ? " denied"
                                                                     : " not asked yet"));
  }
  return listed(parts);
}

struct InWords {
  std::string operator()(const LaunchApp& c) const {
    std::string text = (c.stopApp ? "start " : "bring to the front ") + c.appId;
    std::vector<std::string> parts;
    for (const auto& [key, value] : c.arguments) parts.push_back(key + " " + value);
    if (!parts.empty()) text += " with " + listed(parts);
    if (!c.permissions.empty()) text += ", " + permissionsInWords(c.permissions);
    if (c.clearState) text += ", its data cleared";
    return text;
  }
  std::string operator()(const StopApp& c) const { return "stop " + c.appId; }
  std::string operator()(const TapOn& c) const {
    std::string text = "tap";
    if (c.repeat > 1) text += " " + times(c.repeat);
    if (c.fingers > 1) text += " with " + inWords(c.fingers) + " fingers";
    return text + (c.text ? " on " + quoted(c.text->text()) : " at " + c.point->description());
  }
  std::string operator()(const Swipe& c) const {
    return "swipe from " + c.start.description() + " to " + c.end.description();
  }
  std::string operator()(const PressKey& c) const { return "press the " + c.key + " key"; }
  std::string operator()(const Shake&) const { return "shake the phone"; }
  std::string operator()(const AssertVisible& c) const {
    return quoted(c.text.text()) + (c.visible ? " is on the screen" : " is not on the screen");
  }
  std::string operator()(const Wait& c) const {
    return "wait for " + plainNumber(c.seconds) + (c.seconds == 1 ? " second" : " seconds");
  }
  std::string operator()(const TakeScreenshot& c) const { return "take the picture " + c.name + ".png"; }
  std::string operator()(const SetPermissions& c) const {
    return "set permissions of " + c.appId + ": " + permissionsInWords(c.permissions);
  }
  std::string operator()(const SetOrientation& c) const { return "turn the phone to " + c.name; }
  std::string operator()(const OpenLink& c) const { return "open " + c.link; }
  std::string operator()(const InstallApp& c) const { return "install " + c.application; }
  std::string operator()(const UninstallApp& c) const { return "uninstall " + c.appId; }
  std::string operator()(const AssertLog& c) const {
    return "the console " + std::string(c.present ? "says " : "does not say ") + quoted(c.line.text());
  }
  std::string operator()(const AssertPasteboard& c) const {
    return c.types.empty() ? "the pasteboard is empty"
                           : "the pasteboard holds one item of " + listed(c.types);
  }
  std::string operator()(const AssertMovies& c) const {
    return "the photo library has " + std::to_string(c.count) + (c.count == 1 ? " movie" : " movies");
  }
  std::string operator()(const Repeat& c) const { return "repeat " + times(c.times); }
  std::string operator()(const RunFlow& c) const { return "play " + c.file; }
};

}  // namespace

bool TextPattern::matches(const std::string& candidate) const {
  if (isExactly(candidate)) return true;
  // The library's matcher recurses once a character; a text of this length is nobody's label or log line.
  constexpr std::size_t kLongest = 4096;
  if (candidate.size() > kLongest) return false;
  try {
    std::string oneLine = candidate;  // in which "." stands for every character
    std::replace(oneLine.begin(), oneLine.end(), '\n', ' ');
    return std::regex_match(oneLine, std::regex(text_, std::regex::ECMAScript | std::regex::icase));
  } catch (const std::regex_error&) {
    return false;  // a text such as "Save (" stands for itself only
  }
}

ios::CGPoint Place::on(ios::CGSize screen) const {
  return {x.percent ? screen.width * x.value / 100 : x.value,
          y.percent ? screen.height * y.value / 100 : y.value};
}

std::string Place::description() const {
  return plainNumber(x.value) + (x.percent ? "%," : ",") + plainNumber(y.value) + (y.percent ? "%" : "");
}

std::string describe(const Command& command) {
  return std::visit(InWords{}, command.action);
}

}  // namespace simulator
