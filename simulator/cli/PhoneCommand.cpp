#include "simulator/cli/PhoneCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "Device/ChildProcess.h"
#include "Device/Device.h"
#include "simulator/live/LivePhone.h"
#include "simulator/server/Server.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr int kDone = 0, kFailed = 1, kBadInput = 2;

struct Choices {
  std::uint16_t port = 0;
  std::string listen = "127.0.0.1";
  std::string profile = "iPhone 6", language = "en-US", textSize = "L";
  bool realTime = false, open = false, noOpen = false;
  fs::path out, flows = "examples/flows";
  std::vector<fs::path> applications;
};

/// A folder for the device: a new one that goes with this object, or the one that was asked for, which stays.
class Workplace {
 public:
  /// Throws std::runtime_error when there is none to be had.
  explicit Workplace(const fs::path& wanted) : isOurs_(wanted.empty()) {
    std::error_code error;
    if (isOurs_) {
      std::string name = (fs::temp_directory_path() / "tellvane-phone-XXXXXX").string();
      if (!::mkdtemp(name.data())) throw std::runtime_error("could not make a folder for the phone");
      folder_ = name;
      return;
    }
    folder_ = fs::absolute(wanted).lexically_normal();
    if (fs::exists(folder_, error) && !(fs::is_directory(folder_, error) && fs::is_empty(folder_, error)))
      throw std::runtime_error(folder_.string() + " is there already; the phone wants a new folder");
    fs::create_directories(folder_, error);
    if (error) throw std::runtime_error("could not make " + folder_.string() + ": " + error.message());
  }
  ~Workplace() {
    std::error_code error;
    if (isOurs_) fs::remove_all(folder_, error);
  }
  Workplace(const Workplace&) = delete;
  const fs::path& folder() const { return folder_; }

 private:
  const bool isOurs_;
  fs::path folder_;
};

std::atomic<LivePhone*> switchedOn = nullptr;

void endOnSignal(int signal) {
  if (LivePhone* phone = switchedOn) phone->switchOff();
  std::signal(signal, SIG_DFL);  // the second time it means it
}

/// "xdg-open" as the PATH has it; empty without one, or without a screen to open a window on.
fs::path browserOpener() {
  if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) return {};
  const char* path = std::getenv("PATH");
  std::string folders = path ? path : "";
  for (std::size_t start = 0; start <= folders.size();) {
    const std::size_t end = std::min(folders.find(':', start), folders.size());
    const fs::path candidate = fs::path(folders.substr(start, end - start)) / "xdg-open";
    if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    start = end + 1;
  }
  return {};
}

/// Opens the address in a browser. Through a file that only its owner can read: everybody can read a command line.
std::unique_ptr<ios::ChildProcess> openBrowser(const fs::path& folder, const std::string& address) {
  const fs::path opener = browserOpener();
  if (opener.empty()) {
    std::puts("No browser can be opened from here.");
    return nullptr;
  }
  const fs::path page = folder / "open.html";
  std::FILE* file = std::fopen(page.c_str(), "wx");
  if (!file) return nullptr;
  ::fchmod(::fileno(file), 0600);
  std::fprintf(file, "<!doctype html><meta http-equiv=\"refresh\" content=\"0;url=%s\">\n", address.c_str());
  std::fclose(file);
  ios::ChildProcess::Plan plan{.executable = opener, .arguments = {page.string()}, .environment = {}};
  for (char** entry = environ; entry && *entry; ++entry) plan.environment.emplace_back(*entry);
  std::string problem;
  auto process = ios::ChildProcess::start(plan, problem);
  std::puts(process ? "Opening it in the browser." : ("No browser could be opened: " + problem).c_str());
  return process;
}

int run(const Choices& choices, const fs::path& executable) {
  const Workplace workplace(choices.out);
  const fs::path device = workplace.folder() / "device";
  CommandInbox inbox;
  Display display;
  Server server({.listen = choices.listen,
                 .port = choices.port,
                 .roots = {device / "Containers" / kCompanionIdentifier / "Documents" / "inbox",
                           device / "Media" / "DCIM"}},
                inbox, display);

  LivePhone::Options options;
  options.phone.folder = device;
  options.phone.settings.profile = choices.profile;
  options.phone.settings.languages = {choices.language};
  options.phone.settings.textSize = *ios::textSizeNamed(choices.textSize);
  options.phone.realTime = choices.realTime;
  options.phone.catalog = choices.applications;
  options.phone.catalog.push_back(executable.parent_path().parent_path() / "Applications");
  options.out = workplace.folder();
  options.flows = choices.flows;
  options.filePrefix = server.filePrefix();
  options.firstArguments = {{"com.example.notes", {{"debug", "true"}}}};
  LivePhone phone(std::move(options), inbox, display, server);
  if (const std::string problem = phone.begin(); !problem.empty()) throw std::runtime_error(problem);
  server.open();

  switchedOn = &phone;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, endOnSignal);
  std::printf("The phone is at %s   (Ctrl-C ends it)\n", server.address().c_str());
  if (!choices.listen.starts_with("127.") && choices.listen != "::1")
    std::puts(
        "Whoever reaches this machine and knows the address can use the phone, and nothing is encrypted.");
  std::unique_ptr<ios::ChildProcess> browser;
  if (!choices.noOpen) browser = openBrowser(workplace.folder(), server.address());
  std::fflush(stdout);
  phone.run();
  switchedOn = nullptr;
  return kDone;
}

/// Empty, or what cannot be: a name that nobody knows, a tag that is none.
std::string problemWith(const Choices& choices) {
  if (!ios::ScreenProfile::named(choices.profile)) {
    std::string names;
    for (const auto& profile : ios::ScreenProfile::all()) names += (names.empty() ? "" : ", ") + profile.name;
    return "no profile is called \"" + choices.profile + "\"; known: " + names;
  }
  if (!ios::isLanguageTag(choices.language)) return "\"" + choices.language + "\" is not a language tag";
  if (!ios::textSizeNamed(choices.textSize)) return "no text size is called \"" + choices.textSize + "\"";
  return {};
}

}  // namespace

int runPhoneCommand(int argc, char** argv, const fs::path& executable) {
  Choices choices;
  CLI::App app("The simulated phone in a browser.", "phone");
  app.add_option("--port", choices.port, "the port; any that is free without it");
  app.add_option("--listen", choices.listen,
                 "the address to listen at, in numbers; this machine alone without it");
  app.add_option("--profile", choices.profile, "the phone: \"iPhone 6\"");
  app.add_option("--language", choices.language, "the user's language: \"de-AT\"");
  app.add_option("--text-size", choices.textSize, "how large the user wants texts: \"AccessibilityM\"");
  app.add_flag("--real-time", choices.realTime, "the machine's own clock, microphone and loudspeaker");
  app.add_option("--out", choices.out,
                 "a new folder for the device, which stays; without it nothing is left");
  app.add_option("--applications", choices.applications, "a folder of bundles to install from")->expected(1);
  app.add_option("--flows", choices.flows, "a folder of flows to play; examples/flows without it");
  app.add_flag("--open", choices.open, "open a browser (if there is one; so it is without this)");
  app.add_flag("--no-open", choices.noOpen, "open no browser")->excludes("--open");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kBadInput;
  }
  if (const std::string problem = problemWith(choices); !problem.empty()) {
    std::fprintf(stderr, "%s\n", problem.c_str());
    return kBadInput;
  }
  try {
    return run(choices, executable);
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return kFailed;
  }
}

}  // namespace simulator
