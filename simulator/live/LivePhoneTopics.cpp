#include <algorithm>

#include "simulator/live/Json.h"
#include "simulator/live/LivePhone.h"
#include "simulator/live/Survey.h"
#include "simulator/live/Words.h"

namespace simulator {
namespace {

using ios::Device;
using ios::NSArray;
using ios::NSDictionary;
using std::chrono::milliseconds;

constexpr auto kBetweenLooks = milliseconds(250), kBetweenSurveys = milliseconds(100);
/// A phone on which nothing is due for so long rests.
constexpr auto kResting = milliseconds(200);

NSDictionary argumentsOf(const std::map<std::string, std::map<std::string, std::string>>& all,
                         const std::string& identifier) {
  NSDictionary arguments;
  const auto known = all.find(identifier);
  if (known != all.end()) arguments.insert(known->second.begin(), known->second.end());
  return arguments;
}

}  // namespace

void LivePhone::tell(const std::string& topic, NSDictionary value, bool onDemand) {
  value["type"] = topic;
  std::string text = jsonText(value);
  std::string& told = told_[topic];
  if (told == text) return;
  told = text;
  if (onDemand) {
    audience_.topicOnDemand(topic, std::move(text));
  } else {
    audience_.topic(topic, std::move(text));
  }
}

void LivePhone::tellHello() {
  NSArray profiles, textSizes, languages;
  for (const auto& profile : ios::ScreenProfile::all()) {
    profiles.push_back(NSDictionary{{"name", profile.name},
                                    {"width", profile.size.width},
                                    {"height", profile.size.height},
                                    {"scale", profile.scale},
                                    {"pad", profile.isPad()}});
  }
  for (int i = 0; i < ios::kTextSizes; ++i)
    textSizes.push_back(std::string(ios::textSizeName(static_cast<ios::TextSize>(i))));
  for (const char* language :
       {"en-US", "ar", "de", "es", "fr", "he", "it", "ja", "ko", "pt-BR", "ru", "zh-Hans"})
    languages.push_back(language);
  tell("hello", {{"version", 1},
                 {"product", "Tellvane"},
                 {"realTime", options_.phone.realTime},
                 {"files", options_.filePrefix},
                 {"profiles", std::move(profiles)},
                 {"textSizes", std::move(textSizes)},
                 {"languages", std::move(languages)},
                 {"speeds", NSArray{1, 0.5, 0.25}},
                 {"services", NSArray{"microphone", "photos", "screen"}},
                 {"companion", kCompanionIdentifier}});
}

void LivePhone::tellPhone() {
  const ios::DeviceSettings& settings = Device::current().settings();
  const ios::ScreenProfile& profile = Device::current().profile();
  const ios::CGSize size = phone_.screenSize();
  NSDictionary value{{"profile", profile.name},
                     {"width", size.width},
                     {"height", size.height},
                     {"scale", profile.scale},
                     {"pad", profile.isPad()},
                     {"orientation", orientationName(settings.orientation)},
                     {"language", settings.languages.front()},
                     {"textSize", std::string(ios::textSizeName(settings.textSize))},
                     {"front", phone_.front()},
                     {"disk", NSDictionary{{"state", disk_}, {"pending", false}}},
                     {"microphone", NSDictionary{{"source", microphone_},
                                                 {"pending", !phone_.running().empty() &&
                                                                 microphone_ != microphoneInUse_}}}};
  if (const std::string running = phone_.running(); !running.empty()) {
    const auto application = Device::current().applications().withIdentifier(running);
    value["running"] = NSDictionary{{"identifier", running},
                                    {"name", application ? displayName(*application) : running},
                                    {"inFront", phone_.front() == running},
                                    {"responding", responding_},
                                    {"arguments", argumentsOf(arguments_, running)}};
  }
  tell("phone", std::move(value));
}

void LivePhone::tellTime() {
  const auto now = phoneNow();
  const bool resting = !options_.phone.realTime && !pace_.isPaused() && *nextDue() - now > kResting;
  tell("time", {{"now", std::chrono::duration<double>(now.time_since_epoch()).count()},
                {"wall", wallText(std::chrono::floor<std::chrono::seconds>(ios::Clock::shared().wallTime()))},
                {"paused", pace_.isPaused()},
                {"speed", pace_.speed()},
                {"resting", resting},
                {"behind", pace_.isBehind()}});
}

void LivePhone::tellApplications() {
  NSArray installed, catalog;
  const auto& permissions = Device::current().settings().permissions;
  for (const auto& application : Device::current().applications().all()) {
    const std::string& identifier = application.bundleIdentifier;
    NSDictionary answers{{"microphone", "ask"}, {"photos", "ask"}, {"screen", "ask"}};
    if (const auto known = permissions.find(identifier); known != permissions.end()) {
      for (const auto& [service, answer] : known->second) answers[service] = permissionName(answer);
    }
    installed.push_back(NSDictionary{{"identifier", identifier},
                                     {"name", displayName(application)},
                                     {"running", phone_.running() == identifier},
                                     {"arguments", argumentsOf(arguments_, identifier)},
                                     {"companion", identifier == kCompanionIdentifier},
                                     {"permissions", std::move(answers)}});
  }
  for (const auto& [identifier, name] : phone_.catalog())
    catalog.push_back(NSDictionary{{"identifier", identifier}, {"name", name}});
  tell("applications", {{"installed", std::move(installed)}, {"catalog", std::move(catalog)}});
}

void LivePhone::consoleLine(const std::string& from, const std::string& text) {
  const double time = std::chrono::duration<double>(phoneNow().time_since_epoch()).count();
  consoleLines_.push_back(
      jsonText(NSDictionary{{"n", ++consoleCount_}, {"time", time}, {"from", from}, {"text", text}}));
}

void LivePhone::tellConsole() {
  if (!consoleLines_.empty()) audience_.consoleLines(std::exchange(consoleLines_, {}));
}

void LivePhone::remark(const std::string& level, const std::string& text) {
  audience_.remark(jsonText(NSDictionary{{"type", "notice"}, {"level", level}, {"text", text}}));
}

bool LivePhone::isWatched(const std::string& topic) const {
  return std::any_of(watched_.begin(), watched_.end(),
                     [&](const auto& viewer) { return viewer.second.contains(topic); });
}

void LivePhone::tellElements() {
  const Wall wall = wallNow();
  if (!surveyDue_ || wall < lastSurvey_ + kBetweenSurveys) return;
  surveyDue_ = false;
  lastSurvey_ = wall;
  tellTime();  // so that who hears of the screen knows whether it rests
  if (isWatched("elements")) tell("elements", elementsValue(phone_.elements()), true);
  if (isWatched("tree")) tell("tree", treeValue(phone_.tree()), true);
}

void LivePhone::tellChanges() {
  tellConsole();
  tellElements();
  if (!lookDue_) return;
  const Wall wall = wallNow();
  if (wall < lastLook_ + kBetweenLooks) return;
  lastLook_ = wall;
  lookDue_ = false;
  responding_ = true;
  // Applications write down what they were answered.
  Device::current().reloadSettings();
  tellPhone();
  tellApplications();
  if (auto photos = photos_.look()) tell("photos", std::move(*photos));
  if (auto reports = reports_.look()) tell("inbox", std::move(*reports));
  tellTime();
}

}  // namespace simulator
