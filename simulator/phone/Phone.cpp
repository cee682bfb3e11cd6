#include "simulator/phone/Phone.h"

#include <stdexcept>

#include "Foundation/NSURL.h"
#include "Photos/SystemSaving.h"
#include "UIKit/UIApplication.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::Clock;
using ios::Device;
using namespace ios::automation;

std::string description(const std::optional<ios::FileError>& error) {
  return error ? error->description() : "";
}

}  // namespace

Phone::Phone(const Options& options, Console& console, std::function<void()> timeMoved)
    : options_(options), console_(console), timeMoved_(std::move(timeMoved)) {
  if (!options.realTime) Clock::shared().useVirtualTime();
  Device::start({options.folder, {}, "springboard", options.settings});
  springBoard_ = std::make_unique<SpringBoard>();
  if (!options.sharesDisplay) return;
  std::size_t pixels = 0;
  for (const auto& profile : ios::ScreenProfile::all()) {
    pixels = std::max(pixels, static_cast<std::size_t>(profile.size.width * profile.scale) *
                                  static_cast<std::size_t>(profile.size.height * profile.scale));
  }
  std::string problem;
  display_ = ios::DisplayMemory::make(pixels, problem);
  if (!display_) throw std::runtime_error(problem);
  springBoard_->setDisplay(display_);
}

Phone::~Phone() = default;

template <class Request>
typename Request::Answer Phone::ask(const Request& request) {
  if (appIsInFront()) return askApp(request);
  springBoard_->show(front_, backTo());
  typename Request::Answer answer;
  // An application in the background lives on: it has the same time as the screen in front of it.
  if (std::is_same_v<Request, RunFor> && app_) {
    answer = askApp(request);
    springBoard_->ask(State());
  } else {
    answer = springBoard_->ask(request);
    const Clock::Duration ahead = Clock::shared().now().time_since_epoch() - appsUptime_;
    if (app_)
      askApp(RunFor{options_.realTime ? Clock::Duration::zero() : std::max(Clock::Duration::zero(), ahead)});
  }
  timeMoved_();
  if (const auto wish = springBoard_->takeWish()) fulfil(*wish);
  return answer;
}

template <class Request>
typename Request::Answer Phone::askApp(const Request& request) {
  if (!app_) return {};
  auto reply = app_->ask(request);
  if (!reply) {
    failure_ = app_->bundleIdentifier() + " " + app_->ending();
    if (appIsInFront()) front_ = "home";
    app_.reset();
    timeMoved_();
    return {};
  }
  heed(reply->status);
  return std::move(reply->answer);
}

void Phone::heed(const Status& status) {
  if (!status.problem.empty()) failure_ = app_->bundleIdentifier() + " refused: " + status.problem;
  appsUptime_ = status.uptime;
  const Clock::Duration ahead = appsUptime_ - Clock::shared().now().time_since_epoch();
  if (!options_.realTime && ahead > Clock::Duration::zero()) Clock::shared().runFor(ahead);
  if (status.front != appsFront_) front_ = appsFront_ = status.front;
  timeMoved_();
}

std::optional<fs::path> Phone::inCatalog(const std::string& identifier) const {
  if (!ios::isBundleIdentifier(identifier)) return std::nullopt;
  for (const fs::path& folder : options_.catalog) {
    std::error_code error;
    if (fs::is_regular_file(folder / identifier / "Info.plist", error)) return folder / identifier;
  }
  return std::nullopt;
}

std::string Phone::install(const std::string& identifierOrFolder) {
  std::error_code error;
  std::optional<fs::path> bundle;
  if (identifierOrFolder.find('/') == std::string::npos) {
    bundle = inCatalog(identifierOrFolder);
  } else if (fs::is_regular_file(fs::path(identifierOrFolder) / "Info.plist", error)) {
    bundle = identifierOrFolder;
  }
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
                          const std::string& sound, const std::string& codecFault) {
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
  starting_ = identifier;
  app_ = AppProcess::start(*application,
                           {.arguments = arguments,
                            .sound = sound,
                            .codecFault = codecFault,
                            .patience = options_.patience,
                            .display = display_,
                            .attendance = options_.attendance,
                            .interrupt = options_.interrupt},
                           console_, problem);
  starting_.clear();
  timeMoved_();
  if (!app_) return problem;
  front_ = appsFront_ = identifier;
  askApp(State());
  if (fileLimit_ >= 0) askApp(LimitFiles{fileLimit_});
  return {};
}

void Phone::bringToFront() {
  if (!app_ || appIsInFront()) return;
  front_ = appsFront_ = app_->bundleIdentifier();
  askApp(MoveToForeground());
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

void Phone::kill() {
  if (!app_) return;
  app_->kill();
  if (appIsInFront()) front_ = "home";
  app_.reset();
}

std::map<std::string, std::string> Phone::catalog() const {
  std::map<std::string, std::string> names;
  for (const fs::path& folder : options_.catalog) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      const auto info = ios::PropertyList::parse(entry.path() / "Info.plist");
      const std::string* identifier = info ? info->text("CFBundleIdentifier") : nullptr;
      if (identifier && info->dictionary())
        names.emplace(*identifier, displayName({*identifier, entry.path(), *info->dictionary()}));
    }
  }
  return names;
}

std::string Phone::restart(const std::function<void(ios::DeviceSettings&)>& change) {
  std::string problem = stop();
  front_ = "home";
  Device::current().changeSettings(change);
  Clock::shared().runUntilRest();
  return problem;
}

void Phone::limitFiles(std::int64_t bytes) {
  fileLimit_ = bytes;
  if (app_) askApp(LimitFiles{bytes});
}

Step::Answer Phone::step(Clock::Duration duration, const std::vector<ios::TouchSample>& touches, bool shown) {
  Step request{.duration = duration, .shown = shown};
  for (const auto& sample : touches)
    request.touches.push_back({sample.finger, static_cast<int>(sample.phase), sample.location});
  const Step look{.shown = shown};
  Step::Answer seen;
  const auto dueFirst = [](nanoseconds a, nanoseconds b) {
    return a < nanoseconds::zero() || (b >= nanoseconds::zero() && b < a) ? b : a;
  };
  if (appIsInFront()) {
    seen = askApp(request);
    if (appIsInFront()) {
      if (const auto own = Clock::shared().nextEvent())
        seen.nextEvent = dueFirst(seen.nextEvent, own->time_since_epoch());
      return seen;
    }
    request = look;
  }
  springBoard_->show(front_, backTo());
  seen = springBoard_->ask(request);
  if (app_) {
    Step aside{.shown = false};
    if (!options_.realTime)
      aside.duration = std::max(nanoseconds::zero(), Clock::shared().now().time_since_epoch() - appsUptime_);
    seen.nextEvent = dueFirst(seen.nextEvent, askApp(aside).nextEvent);
  }
  timeMoved_();
  if (const auto wish = springBoard_->takeWish()) fulfil(*wish);
  return seen;
}

std::string Phone::clearState(const std::string& identifier) {
  if (!ios::isBundleIdentifier(identifier)) return "\"" + identifier + "\" cannot be a bundle identifier";
  return description(ios::removeTree(Device::current().homeOf(identifier)));
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
    askApp(OpenURL{link});
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

void Phone::leaveApp(const std::string& front) {
  if (appIsInFront()) askApp(MoveToBackground{front});
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
  } else if (wish.kind == ScreenWish::Kind::permit || wish.kind == ScreenWish::Kind::refuse) {
    const bool permitted = wish.kind == ScreenWish::Kind::permit;
    setPermissions(wish.bundleIdentifier,
                   {{wish.service, permitted ? ios::Permission::authorized : ios::Permission::denied}});
  } else if (wish.kind == ScreenWish::Kind::back || wish.bundleIdentifier == running()) {
    bringToFront();
  } else if (wish.bundleIdentifier == kSettingsIdentifier) {
    front_ = kSettingsIdentifier;
  } else if (wish.bundleIdentifier == kCompanionIdentifier) {
    front_ = kCompanionIdentifier;
  } else {
    const LaunchOptions with =
        options_.launchOptions ? options_.launchOptions(wish.bundleIdentifier) : LaunchOptions{};
    problem = launch(wish.bundleIdentifier, with.arguments, with.sound);
  }
  if (!problem.empty()) failure_ = problem;
}

void Phone::tap(const ios::automation::Tap& tap) {
  ask(tap);
}

void Phone::swipe(ios::CGPoint from, ios::CGPoint to, Clock::Duration duration) {
  ask(Swipe{from, to, duration});
}

void Phone::shake() {
  ask(Shake());
}

void Phone::pressHome() {
  leaveApp("home");
}

void Phone::turn(int orientation) {
  changeSettings([&](ios::DeviceSettings& settings) { settings.orientation = orientation; });
}

void Phone::setPermissions(const std::string& identifier,
                           const std::map<std::string, ios::Permission>& permissions) {
  Device::current().changeSettings([&](ios::DeviceSettings& settings) {
    for (const auto& [service, answer] : permissions) settings.permissions[identifier][service] = answer;
  });
  if (app_) askApp(ReloadSettings());
}

void Phone::changeSettings(const std::function<void(ios::DeviceSettings&)>& change) {
  Device::current().changeSettings(change);
  Clock::shared().runUntilRest();
  if (app_) askApp(ReloadSettings());
}

std::string Phone::addMovie(const fs::path& movie) {
  const auto outcome = std::make_shared<std::optional<std::string>>();
  ios::saveMovieAsTheSystem(movie, [outcome, movie](const std::shared_ptr<ios::NSError>& error) {
    *outcome = error ? movie.string() + " was not added: " + error->localizedDescription() : "";
  });
  // The library is busy until then, so that no time passes.
  const auto saved =
      Clock::shared().runUntil([&] { return outcome->has_value(); }, std::chrono::seconds(120));
  timeMoved_();
  return saved ? **outcome : movie.string() + " was not added: " + saved.pending;
}

void Phone::runFor(Clock::Duration duration) {
  ask(RunFor{duration});
}

void Phone::settle(Clock::Duration limit) {
  ask(Settle{limit});
}

std::vector<ios::VisibleElement> Phone::elements() {
  return ask(Elements()).elements;
}

Tree::Answer Phone::tree() {
  return ask(Tree());
}

ios::Bytes Phone::picture() {
  return ask(Screenshot()).png;
}

}  // namespace simulator
