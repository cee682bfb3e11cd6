#include <algorithm>
#include <cmath>

#include "simulator/live/Json.h"
#include "simulator/live/LivePhone.h"
#include "simulator/live/Survey.h"
#include "simulator/live/Words.h"

namespace simulator {
namespace {

using ios::Clock;
using ios::Permission;
using std::chrono::milliseconds;

ios::NSDictionary problem(const std::string& text) {
  return text.empty() ? ios::NSDictionary{} : ios::NSDictionary{{"problem", text}};
}

/// An argument's value as the command line of an application has it.
std::optional<std::string> argumentText(const ios::PropertyList& value) {
  if (const std::string* text = value.text()) return *text;
  if (const bool* flag = value.boolean()) return *flag ? "true" : "false";
  if (value.integer() || value.real()) return jsonText(value);
  return std::nullopt;
}

constexpr double kSpeeds[] = {1, 0.5, 0.25};
constexpr auto kFrame = std::chrono::nanoseconds(1'000'000'000 / 60);

}  // namespace

struct LivePhone::CommandRow {
  std::vector<const char*> required, optional;
  Answer (LivePhone::*perform)(const Members&);
  bool duringFlow = false;   // while one is playing
  bool inFlows = true;       // what it does can be written down as a step of a flow, or need not be
  bool forPrograms = false;  // not for pages
  bool onlyLooks = false;    // nothing comes of it that would have to be shown
};

const std::map<std::string, LivePhone::CommandRow>& LivePhone::commandTable() {
  static const auto& table = *new std::map<std::string, CommandRow>{
      {"shake", {{}, {}, &LivePhone::shake}},
      {"home", {{}, {}, &LivePhone::home}},
      {"back", {{}, {}, &LivePhone::back}},
      {"rotate", {{"orientation"}, {}, &LivePhone::rotate}},
      {"restart", {{}, {"profile", "language", "textSize"}, &LivePhone::restart, false, false}},
      {"launch", {{"identifier"}, {"arguments", "keep"}, &LivePhone::launch}},
      {"stop", {{"identifier"}, {}, &LivePhone::stop}},
      {"end", {{"identifier"}, {}, &LivePhone::end, true, false}},
      {"install", {{"application"}, {}, &LivePhone::install}},
      {"uninstall", {{"identifier"}, {}, &LivePhone::uninstall}},
      {"reset", {{"identifier"}, {}, &LivePhone::reset, false, false}},
      {"openLink", {{"link"}, {}, &LivePhone::openLink}},
      {"permission", {{"identifier", "service", "value"}, {}, &LivePhone::permission}},
      {"microphone", {{"source"}, {}, &LivePhone::microphone}},
      {"disk", {{"state"}, {}, &LivePhone::disk, false, false}},
      {"pause", {{}, {}, &LivePhone::pause, true}},
      {"resume", {{}, {}, &LivePhone::resume, true}},
      {"advance", {{"milliseconds"}, {}, &LivePhone::advance}},
      {"speed", {{"factor"}, {}, &LivePhone::speed, true}},
      {"screenshot", {{}, {}, &LivePhone::screenshot, true}},
      {"recordFlow", {{"on"}, {}, &LivePhone::recordFlow}},
      {"checkpoint", {{"text"}, {}, &LivePhone::checkpoint}},
      {"flows", {{}, {}, &LivePhone::flows, true}},
      {"playFlow", {{}, {"name", "text", "file", "out", "variables"}, &LivePhone::playFlow}},
      {"stopFlow", {{}, {}, &LivePhone::stopFlow, true}},
      {"tree", {{}, {}, &LivePhone::tree, true}},
      {"switchOff", {{}, {}, &LivePhone::off, true}},
      // For programs alone.
      {"tap",
       {{},
        {"text", "x", "y", "count", "fingers", "hold", "delay", "patience"},
        &LivePhone::tap,
        false,
        true,
        true}},
      {"swipe", {{"x1", "y1", "x2", "y2"}, {"duration"}, &LivePhone::swipe, false, true, true}},
      {"elements", {{}, {}, &LivePhone::elements, true, true, true, true}},
      {"picture", {{}, {"type"}, &LivePhone::picture, true, true, true, true}},
      {"recordMovie", {{"on"}, {"file"}, &LivePhone::recordMovie, true, true, true}},
      {"copyText", {{"text"}, {}, &LivePhone::copyText, true, false, true}},
      {"pasteText", {{}, {}, &LivePhone::pasteText, true, true, true, true}},
      {"addMovie", {{"file"}, {}, &LivePhone::addMovie, false, false, true}},
      {"contentSize", {{}, {"size"}, &LivePhone::contentSize, false, true, true}},
      {"statusBar", {{"time"}, {}, &LivePhone::statusBar, false, false, true}},
  };
  return table;
}

void LivePhone::obey(LiveCommand command) {
  const Members members(command.members);
  const std::string name = *members.text("command");
  const auto row = commandTable().find(name);
  if (row == commandTable().end() || (row->second.forPrograms && !command.fromProgram))
    return command.answer(problem("no command is called \"" + name + "\""));
  const auto& [required, optional, perform, duringFlow, inFlows, forPrograms, onlyLooks] = row->second;
  if (playback_ && !duringFlow) return command.answer(problem("a flow is playing"));
  for (const char* key : required) {
    if (!members.member(key)) return command.answer(problem(name + " needs \"" + key + "\""));
  }
  for (const auto& [key, value] : command.members) {
    const auto is = [&key = key](const char* known) { return key == known; };
    if (key != "command" && std::none_of(required.begin(), required.end(), is) &&
        std::none_of(optional.begin(), optional.end(), is)) {
      return command.answer(problem(name + " does not know \"" + key + "\""));
    }
  }
  if (recorder_.isRecording() && !inFlows)
    return command.answer(problem("a flow cannot say this; end the recording first"));
  // It happens now, after what fingers did before it.
  if (!playback_) catchUp();
  asker_ = command.viewer;
  askedByProgram_ = command.fromProgram;
  Answer answer = (this->*perform)(members);
  if (recorder_.isRecording()) recorder_.actionTook(phoneNow().time_since_epoch());
  if (onlyLooks) return command.answer(std::move(answer));
  // What came of it is seen before the answer.
  if (!playback_) step(Clock::Duration::zero());
  lookDue_ = true;
  lastLook_ = {};
  command.answer(std::move(answer));
}

LivePhone::Answer LivePhone::shake(const Members&) {
  record("shake");
  phone_.shake();
  return {};
}

LivePhone::Answer LivePhone::home(const Members&) {
  record("pressKey: Home");
  phone_.pressHome();
  return {};
}

LivePhone::Answer LivePhone::back(const Members&) {
  if (phone_.running().empty()) return problem("no application is running");
  record("launchApp: {appId: " + phone_.running() + ", stopApp: false}");
  phone_.bringToFront();
  return {};
}

LivePhone::Answer LivePhone::rotate(const Members& members) {
  const std::string* name = members.text("orientation");
  const auto orientation = name ? orientationNamed(*name) : std::nullopt;
  if (!orientation) return problem("expected portrait, landscapeLeft, landscapeRight or upsideDown");
  touches_ = fingers_.allLifted();
  record("setOrientation: " + *name);
  phone_.turn(*orientation);
  return {};
}

LivePhone::Answer LivePhone::restart(const Members& members) {
  ios::DeviceSettings wanted = ios::Device::current().settings();
  if (const auto* profile = members.member("profile")) {
    if (!profile->text() || !ios::ScreenProfile::named(*profile->text()))
      return problem("no profile of that name");
    wanted.profile = ios::ScreenProfile::named(*profile->text())->name;
  }
  if (const auto* language = members.member("language")) {
    if (!language->text() || !ios::isLanguageTag(*language->text())) return problem("not a language tag");
    wanted.languages = {*language->text()};
  }
  if (const auto* size = members.member("textSize")) {
    const auto named = size->text() ? ios::textSizeNamed(*size->text()) : std::nullopt;
    if (!named) return problem("no text size of that name");
    wanted.textSize = *named;
  }
  fingers_.allLifted();
  touches_.clear();
  consoleLine("phone", "The phone restarts: " + wanted.profile + ", " + wanted.languages.front() +
                           ", text size " + std::string(ios::textSizeName(wanted.textSize)));
  const std::string ending = phone_.restart([&](ios::DeviceSettings& settings) {
    settings.profile = wanted.profile;
    settings.languages = wanted.languages;
    settings.textSize = wanted.textSize;
    settings.orientation = 1;
  });
  remark("info", "The phone has restarted.");
  return problem(ending);
}

LivePhone::Answer LivePhone::launch(const Members& members) {
  const std::string* identifier = members.text("identifier");
  if (!identifier) return problem("expected an identifier");
  const auto* keep = members.member("keep");
  if (keep && keep->boolean() && *keep->boolean() && phone_.running() == *identifier) {
    record("launchApp: {appId: " + *identifier + ", stopApp: false}");
    phone_.bringToFront();
    return {};
  }
  if (const auto* given = members.member("arguments")) {
    if (!given->dictionary()) return problem("expected arguments by name");
    std::map<std::string, std::string> arguments;
    for (const auto& [name, value] : *given->dictionary()) {
      const auto text = argumentText(value);
      if (!text) return problem("the argument \"" + name + "\" is neither a text nor a number");
      arguments[name] = *text;
    }
    arguments_[*identifier] = std::move(arguments);
  }
  microphoneInUse_ = microphone_;
  record(launchStep(*identifier));
  return problem(phone_.launch(*identifier, arguments_[*identifier], microphone_));
}

LivePhone::Answer LivePhone::stop(const Members& members) {
  const std::string* identifier = members.text("identifier");
  if (!identifier || phone_.running() != *identifier) return problem("it is not running");
  record("stopApp: " + *identifier);
  return problem(phone_.stop());
}

LivePhone::Answer LivePhone::end(const Members& members) {
  const std::string* identifier = members.text("identifier");
  if (!identifier || phone_.running() != *identifier) return problem("it is not running");
  phone_.kill();
  return {};
}

LivePhone::Answer LivePhone::install(const Members& members) {
  const std::string* application = members.text("application");
  if (!application) return problem("expected an application");
  record("installApp: " + inYaml(*application));
  return problem(phone_.install(*application));
}

LivePhone::Answer LivePhone::uninstall(const Members& members) {
  const std::string* identifier = members.text("identifier");
  if (!identifier || !ios::isBundleIdentifier(*identifier)) return problem("expected an identifier");
  record("uninstallApp: " + *identifier);
  return problem(phone_.uninstall(*identifier));
}

LivePhone::Answer LivePhone::reset(const Members& members) {
  const std::string* identifier = members.text("identifier");
  if (!identifier) return problem("expected an identifier");
  if (phone_.running() == *identifier) {
    if (std::string ending = phone_.stop(); !ending.empty()) return problem(ending);
  }
  return problem(phone_.clearState(*identifier));
}

LivePhone::Answer LivePhone::openLink(const Members& members) {
  const std::string* link = members.text("link");
  if (!link) return problem("expected a link");
  record("openLink: " + inYaml(*link));
  return problem(phone_.openLink(*link));
}

LivePhone::Answer LivePhone::permission(const Members& members) {
  static const std::map<std::string, Permission> values = {{"granted", Permission::authorized},
                                                           {"refused", Permission::denied},
                                                           {"ask", Permission::notDetermined}};
  const std::string* identifier = members.text("identifier");
  const std::string* service = members.text("service");
  const std::string* value = members.text("value");
  if (!identifier || !ios::isBundleIdentifier(*identifier)) return problem("expected an identifier");
  if (!service || (*service != "microphone" && *service != "photos" && *service != "screen"))
    return problem("expected the service microphone, photos or screen");
  if (!value || !values.contains(*value)) return problem("expected granted, refused or ask");
  record("setPermissions: {appId: " + *identifier + ", permissions: {" + *service + ": " +
         permissionWord(values.at(*value)) + "}}");
  phone_.setPermissions(*identifier, {{*service, values.at(*value)}});
  return {};
}

LivePhone::Answer LivePhone::microphone(const Members& members) {
  const std::string* source = members.text("source");
  if (!source || !isSoundSource(*source, options_.phone.realTime))
    return problem("expected silence, absent, tone:HERTZ, file:PATH" +
                   std::string(options_.phone.realTime ? " or machine" : ""));
  microphone_ = *source;
  return {};
}

LivePhone::Answer LivePhone::disk(const Members& members) {
  // On a disk that is low there is room for settings and pictures, but not for a movie.
  static const std::map<std::string, std::int64_t> states = {{"normal", -1}, {"low", 256 << 10}, {"full", 0}};
  const std::string* state = members.text("state");
  if (!state || !states.contains(*state)) return problem("expected normal, low or full");
  disk_ = *state;
  phone_.limitFiles(states.at(*state));
  return {};
}

LivePhone::Answer LivePhone::pause(const Members&) {
  if (options_.phone.realTime) return problem("real time cannot be paused");
  pace_.pause(wallNow(), phoneNow());
  return {};
}

LivePhone::Answer LivePhone::resume(const Members&) {
  if (options_.phone.realTime) return problem("real time always goes on");
  pace_.resume(wallNow(), phoneNow());
  return {};
}

LivePhone::Answer LivePhone::advance(const Members& members) {
  const auto amount = numberIn(members.member("milliseconds"));
  if (options_.phone.realTime || !pace_.isPaused()) return problem("only a paused phone is moved on");
  if (!amount || !(*amount >= 1 && *amount <= 10'000)) return problem("expected 1 to 10000 milliseconds");
  const auto end = phoneNow() + milliseconds(std::llround(*amount));
  // A frame at a time, so that whoever watches sees what moves.
  while (phoneNow() < end && !ended_) step(std::min<Clock::Duration>(kFrame, end - phoneNow()));
  return {};
}

LivePhone::Answer LivePhone::speed(const Members& members) {
  const auto factor = numberIn(members.member("factor"));
  if (options_.phone.realTime) return problem("real time has one speed");
  if (!factor || std::find(std::begin(kSpeeds), std::end(kSpeeds), *factor) == std::end(kSpeeds))
    return problem("expected 1, 0.5 or 0.25");
  pace_.setSpeed(*factor, wallNow(), phoneNow());
  return {};
}

LivePhone::Answer LivePhone::screenshot(const Members&) {
  const ios::Bytes png = phone_.picture();
  if (png.empty()) return problem("the display shows nothing");
  const std::string name =
      "screen-" + std::to_string(phoneNow().time_since_epoch() / milliseconds(1)) + ".png";
  return {{"url", audience_.keepFile(name, {png.begin(), png.end()})}, {"name", name}};
}

LivePhone::Answer LivePhone::tree(const Members&) {
  return treeValue(phone_.tree());
}

LivePhone::Answer LivePhone::off(const Members&) {
  ended_ = true;
  return {};
}

}  // namespace simulator
