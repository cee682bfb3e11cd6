#include "simulator/Phone.h"

#include "Foundation/NSURL.h"
#include "UIKit/UIApplication.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::Clock;
using ios::Device;
using ios::NSDictionary;
using ios::PropertyList;

std::int64_t integer(const NSDictionary& answer, const std::string& key, std::int64_t otherwise) {
  const auto found = answer.find(key);
  const std::int64_t* value = found == answer.end() ? nullptr : found->second.integer();
  return value ? *value : otherwise;
}

double real(const PropertyList& value, const std::string& key) {
  const PropertyList* member = value.member(key);
  const double* number = member ? member->real() : nullptr;
  return number ? *number : 0;
}

std::string description(const std::optional<ios::FileError>& error) {
  return error ? error->description() : "";
}

}  // namespace

Phone::Phone(const Options& options, Console& console, std::function<void()> timeMoved)
    : options_(options), console_(console), timeMoved_(std::move(timeMoved)) {
  if (!options.realTime) Clock::shared().useVirtualTime();
  Device::start({options.folder, {}, "springboard", options.settings});
  springBoard_ = std::make_unique<SpringBoard>();
}

Phone::~Phone() = default;

// --- Applications
// -----------------------------------------------------------------------------------------------

std::optional<fs::path> Phone::inCatalog(const std::string& identifier) const {
  for (const fs::path& folder : options_.catalog) {
    std::error_code error;
    if (fs::is_regular_file(folder / identifier / "Info.plist", error)) return folder / identifier;
  }
  return std::nullopt;
}

std::string Phone::install(const std::string& identifierOrFolder) {
  std::error_code error;
  std::optional<fs::path> bundle;
  if (identifierOrFolder.find('/') == std::string::npos) bundle = inCatalog(identifierOrFolder);
  if (!bundle && fs::is_regular_file(fs::path(identifierOrFolder) / "Info.plist", error))
    bundle = identifierOrFolder;
  if (!bundle)
    return "expected an application that is known here, or the folder of a bundle: " + identifierOrFolder;
  return description(Device::current().applications().install(*bundle));
}

std::string Phone::installAll() {
  for (const fs::path& folder : options_.catalog) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (!fs::is_regular_file(entry.path() / "Info.plist", error)) continue;
      if (const auto problem = Device::current().applications().install(entry.path()))
        return problem->description();
    }
  }
  return {};
}

std::string Phone::uninstall(const std::string& identifier) {
  if (running() == identifier) {
    if (std::string problem = stop(); !problem.empty()) return problem;
  }
  if (front_ == identifier) front_ = "home";
  return description(Device::current().applications().uninstall(identifier));
}

std::string Phone::launch(const std::string& identifier, const std::map<std::string, std::string>& arguments,
                          const std::string& sound) {
  const auto application = Device::current().applications().withIdentifier(identifier);
  if (!application) {
    std::string installed;
    for (const auto& each : Device::current().applications().all()) installed += " " + each.bundleIdentifier;
    return "expected " + identifier +
           " to be installed; installed:" + (installed.empty() ? " nothing" : installed);
  }
  if (std::string problem = stop(); !problem.empty()) return problem;
  if (identifier == kCompanionIdentifier) {  // draws nothing itself; it is shown by what it has filed
    front_ = identifier;
    return {};
  }
  console_.beginSearchHere();
  std::string problem;
  app_ = AppProcess::start(*application, arguments, sound, console_, problem);
  timeMoved_();
  if (!app_) return problem;
  front_ = appsFront_ = identifier;
  askApp({{"request", "state"}});
  return {};
}

void Phone::bringToFront() {
  if (!app_ || appIsInFront()) return;
  front_ = appsFront_ = app_->bundleIdentifier();
  askApp({{"request", "moveToForeground"}});
}

std::string Phone::stop() {
  if (!app_) return {};
  const std::string identifier = app_->bundleIdentifier();
  const std::string problem = app_->stop();
  app_.reset();
  if (front_ == identifier) front_ = "home";
  timeMoved_();
  return problem.empty() ? "" : identifier + " " + problem;
}

std::string Phone::clearState(const std::string& identifier) {
  std::error_code error;
  fs::remove_all(Device::current().root() / "Containers" / identifier, error);
  return error ? "could not clear the data of " + identifier + ": " + error.message() : "";
}

std::string Phone::openLink(const std::string& link) {
  const auto url = ios::NSURL::URLWithString(link);
  if (!url) return "expected a URL, not \"" + link + "\"";
  const std::string scheme = url->scheme();
  if (scheme == "http" || scheme == "https") {
    leaveApp(link);
    return {};
  }
  if (link == ios::UIApplicationOpenSettingsURLString) {
    leaveApp(kSettingsIdentifier);
    return {};
  }
  const auto application = Device::current().applications().forScheme(scheme);
  if (!application) return "expected an application that opens " + scheme + ": links";
  if (running() == application->bundleIdentifier) {
    bringToFront();
    askApp({{"request", "openURL"}, {"url", link}});
    return {};
  }
  leaveApp(application->bundleIdentifier);
  ios::LaunchResult result;
  bool over = false;
  Device::current().applications().launch(*application, link, [&](const ios::LaunchResult& ended) {
    result = ended;
    over = true;
  });
  const auto ended = Clock::shared().runUntil([&] { return over; }, std::chrono::seconds(60));
  timeMoved_();
  if (!ended) return application->bundleIdentifier + " did not finish opening " + link;
  if (!result.started) return result.problem;
  return result.status == 0
             ? ""
             : application->bundleIdentifier + " ended with status " + std::to_string(result.status);
}

// --- Steering
// ---------------------------------------------------------------------------------------------------

NSDictionary Phone::ask(NSDictionary request) {
  if (appIsInFront()) return askApp(request);
  springBoard_->show(front_, backTo());
  const PropertyList asked(request);
  const std::string* name = asked.text("request");
  // An application in the background lives on: it has the same time as the screen in front of it.
  const bool together = app_ && name && *name == "runFor";
  NSDictionary answer = together ? askApp(request) : springBoard_->ask(request);
  if (together) {
    springBoard_->ask({{"request", "state"}});
  } else if (app_) {
    const std::int64_t ahead = Clock::shared().now().time_since_epoch().count() - appsUptime_;
    askApp(
        {{"request", "runFor"}, {"nanoseconds", options_.realTime ? 0 : std::max<std::int64_t>(0, ahead)}});
  }
  timeMoved_();
  if (const auto wish = springBoard_->takeWish()) fulfil(*wish);
  return answer;
}

NSDictionary Phone::askApp(const NSDictionary& request) {
  if (!app_) return {};
  auto answer = app_->ask(request);
  if (!answer) {
    failure_ = app_->bundleIdentifier() + " " + app_->ending();
    if (appIsInFront()) front_ = "home";
    app_.reset();
    timeMoved_();
    return {};
  }
  appsUptime_ = integer(*answer, "uptime", appsUptime_);
  const std::int64_t ahead = appsUptime_ - Clock::shared().now().time_since_epoch().count();
  if (!options_.realTime && ahead > 0) Clock::shared().runFor(Clock::Duration(ahead));
  const auto front = answer->find("front");
  const std::string* name = front == answer->end() ? nullptr : front->second.text();
  if (name && *name != appsFront_) front_ = appsFront_ = *name;
  timeMoved_();
  return std::move(*answer);
}

void Phone::leaveApp(const std::string& front) {
  if (appIsInFront()) askApp({{"request", "moveToBackground"}, {"front", front}});
  front_ = front;
}

std::string Phone::backTo() const {
  if (!app_ || front_ == "home") return {};
  const auto application = Device::current().applications().withIdentifier(app_->bundleIdentifier());
  return application ? displayName(*application) : app_->bundleIdentifier();
}

void Phone::fulfil(const ScreenWish& wish) {
  std::string problem;
  if (wish.kind == ScreenWish::Kind::install) {
    problem = install(wish.bundleIdentifier);
  } else if (wish.kind == ScreenWish::Kind::back || wish.bundleIdentifier == running()) {
    bringToFront();
  } else if (wish.bundleIdentifier == kSettingsIdentifier) {
    front_ = kSettingsIdentifier;
  } else if (wish.bundleIdentifier == kCompanionIdentifier) {
    front_ = kCompanionIdentifier;
  } else {
    problem = launch(wish.bundleIdentifier, {});
  }
  if (!problem.empty()) failure_ = problem;
}

void Phone::tap(const ios::Input::Tap& tap) {
  ask({{"request", "tap"},
       {"x", tap.location.x},
       {"y", tap.location.y},
       {"count", tap.count},
       {"fingers", tap.fingers},
       {"hold", static_cast<std::int64_t>(tap.hold.count())},
       {"delay", static_cast<std::int64_t>(tap.delay.count())}});
}

void Phone::swipe(ios::CGPoint from, ios::CGPoint to, Clock::Duration duration) {
  ask({{"request", "swipe"},
       {"fromX", from.x},
       {"fromY", from.y},
       {"toX", to.x},
       {"toY", to.y},
       {"duration", static_cast<std::int64_t>(duration.count())}});
}

void Phone::shake() {
  ask({{"request", "shake"}});
}

void Phone::pressHome() {
  leaveApp("home");
}

void Phone::turn(int orientation) {
  Device::current().changeSettings(
      [&](ios::DeviceSettings& settings) { settings.orientation = orientation; });
  Clock::shared().runUntilRest();
  if (app_) askApp({{"request", "reloadSettings"}});
}

void Phone::setPermissions(const std::string& identifier,
                           const std::map<std::string, ios::Permission>& permissions) {
  Device::current().changeSettings([&](ios::DeviceSettings& settings) {
    for (const auto& [service, answer] : permissions) settings.permissions[identifier][service] = answer;
  });
  if (app_) askApp({{"request", "reloadSettings"}});
}

void Phone::runFor(Clock::Duration duration) {
  ask({{"request", "runFor"}, {"nanoseconds", static_cast<std::int64_t>(duration.count())}});
}

void Phone::settle(Clock::Duration limit) {
  ask({{"request", "settle"}, {"limit", static_cast<std::int64_t>(limit.count())}});
}

std::vector<ios::VisibleElement> Phone::elements() {
  const PropertyList answer(ask({{"request", "elements"}}));
  std::vector<ios::VisibleElement> result;
  const PropertyList* elements = answer.member("elements");
  if (!elements || !elements->array()) return result;
  for (const PropertyList& element : *elements->array()) {
    const std::string* text = element.text("text");
    const PropertyList* control = element.member("control");
    result.push_back({text ? *text : "",
                      ios::CGRectMake(real(element, "x"), real(element, "y"), real(element, "width"),
                                      real(element, "height")),
                      control && control->boolean() && *control->boolean()});
  }
  return result;
}

ios::Bytes Phone::picture() {
  const PropertyList answer(ask({{"request", "screenshot"}}));
  const PropertyList* png = answer.member("png");
  return png && png->data() ? *png->data() : ios::Bytes{};
}

}  // namespace simulator
