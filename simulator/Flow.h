#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "CoreGraphics/CGGeometry.h"
#include "Device/Settings.h"

namespace simulator {

/// A text to look for: the text itself, or else a regular expression that matches all of it, ignoring case.
class TextPattern {
 public:
  TextPattern() = default;
  explicit TextPattern(std::string text) : text_(std::move(text)) {}
  const std::string& text() const { return text_; }
  bool isExactly(const std::string& candidate) const { return candidate == text_; }
  bool matches(const std::string& candidate) const;

 private:
  std::string text_;
};

/// A place on the screen, each coordinate in points or in per cent of the screen.
struct Place {
  struct Coordinate {
    double value = 0;
    bool percent = false;
  };
  Coordinate x, y;
  ios::CGPoint on(ios::CGSize screen) const;
  std::string description() const;  // "50%,120"
};

struct Command;

// What the commands of a flow say, once read. Durations are milliseconds as written, seconds where the name
// says so.

struct LaunchApp {
  std::string appId;
  bool clearState = false;
  bool stopApp = true;
  std::map<std::string, ios::Permission> permissions = {};  // by service
  std::map<std::string, std::string> arguments = {};
  std::string sound = "silence";  // what the microphone hears, as IOS_MICROPHONE says it
};
struct StopApp {
  std::string appId;
};
struct TapOn {
  std::optional<TextPattern> text;
  std::optional<Place> point;
  int repeat = 1;
  int delay = 100;
  int fingers = 1;
};
struct Swipe {
  Place start, end;
  int duration = 400;
};
struct PressKey {
  std::string key;
};
struct Shake {};
struct AssertVisible {
  TextPattern text;
  bool visible = true;
  int timeout = 7000;
};
struct Wait {
  double seconds = 0;
};
struct TakeScreenshot {
  std::string name;
};
struct SetPermissions {
  std::string appId;
  std::map<std::string, ios::Permission> permissions;
};
struct SetOrientation {
  std::string name;
  int orientation = 1;  // as the device numbers them
};
struct OpenLink {
  std::string link;
};
struct InstallApp {
  std::string application;  // a bundle identifier, or the path of a bundle folder
};
struct UninstallApp {
  std::string appId;
};
struct AssertLog {
  TextPattern line;
  bool present = true;
};
struct AssertPasteboard {
  std::vector<std::string> types;  // in order of name; none: the pasteboard is empty
};
struct AssertMovies {
  int count = 0;  // in the photo library
};
struct Repeat {
  int times = 1;
  std::vector<Command> commands;
};
struct RunFlow {
  std::string file;
  std::vector<Command> commands;
};

using Action = std::variant<LaunchApp, StopApp, TapOn, Swipe, PressKey, Shake, AssertVisible, Wait,
                            TakeScreenshot, SetPermissions, SetOrientation, OpenLink, InstallApp,
                            UninstallApp, AssertLog, AssertPasteboard, AssertMovies, Repeat, RunFlow>;

struct Command {
  std::string name;  // as in the file
  std::string file;
  int line = 0;
  Action action;
};

/// A flow as read from its file.
struct Flow {
  std::string appId;
  std::string name;
  std::vector<Command> commands;
};

/// Reads a flow and the flows that it runs. Empty when a file cannot be read or is no flow; `problem` then
/// says where and why: "tour.yaml:12: tapOn: …".
std::optional<Flow> readFlow(const std::filesystem::path& file, std::string& problem);

/// The command in plain words: "tap three times at 50%,50%".
std::string describe(const Command& command);

}  // namespace simulator
