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
#include "simulator/cli/CommandLine.h"
#include "simulator/control/ControlServer.h"
#include "simulator/live/Audiences.h"
#include "simulator/live/LivePhone.h"
#include "simulator/remote/DeviceSet.h"
#include "simulator/remote/Refusal.h"
#include "simulator/server/Server.h"
#include "simulator/verbs/Options.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

/// A folder for the device: a new one that is deleted with this object, or the one that was asked for, which stays.
class Workplace {
 public:
  /// Throws std::runtime_error when no folder can be made.
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
  std::signal(signal, SIG_DFL);  // the second one ends the process at once
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

/// Which phone this is: one of the user's devices, or a new one that goes with its folder.
struct Identity {
  DeviceRecord record;
  ios::FileDescriptor taken;
};

Identity identify(const PhoneChoices& choices, const Workplace* workplace) {
  Identity identity;
  if (!choices.device.empty()) {
    identity.record = DeviceSet::ofUser().find(choices.device);
    identity.taken = DeviceSet::take(identity.record);
    return identity;
  }
  identity.record = {.udid = drawUdid(),
                     .name = "browser",
                     .profile = choices.settings.profile,
                     .language = choices.settings.language,
                     .textSize = choices.settings.textSize,
                     .folder = workplace->folder()};
  return identity;
}

LivePhone::Options phoneOptions(const PhoneChoices& choices, const DeviceRecord& record,
                                const fs::path& executable) {
  LivePhone::Options options;
  std::error_code error;
  options.phone.folder = record.device();
  options.isNew = !fs::exists(record.device() / "Settings.plist", error);
  if (options.isNew) {
    options.phone.settings.emplace();
    options.phone.settings->profile = record.profile;
    options.phone.settings->languages = {record.language};
    options.phone.settings->textSize = *ios::textSizeNamed(record.textSize);
  }
  options.phone.realTime = choices.run.realTime;
  options.phone.catalog = choices.run.applications;
  options.phone.catalog.push_back(executable.parent_path().parent_path() / "Applications");
  options.out = record.folder;
  options.flows = choices.run.flows.empty() ? exampleFlows(executable) : choices.run.flows;
  options.firstArguments = {{"com.example.notes", {{"debug", "true"}}}};
  return options;
}

void introduce(const PhoneChoices& choices, const std::string& address) {
  std::printf("The phone is at %s   (%s ends it)\n", address.c_str(),
              choices.device.empty() ? "Ctrl-C" : ("tellvane-sim shutdown " + choices.device).c_str());
  if (!choices.run.listen.starts_with("127.") && choices.run.listen != "::1")
    std::puts(
        "Whoever reaches this machine and knows the address can use the phone, and nothing is encrypted.");
  if (choices.run.listen == "0.0.0.0" || choices.run.listen == "::")
    std::puts("From elsewhere it is reached at this machine's own address, in figures.");
}

/// To whoever has started this process and waits.
void tell(int descriptor, const std::string& text) {
  if (descriptor < 0) return;
  ios::FileDescriptor ready(descriptor);
  (void)ios::writeAll(descriptor, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void run(const PhoneChoices& choices, const fs::path& executable) {
  const auto workplace = choices.device.empty() ? std::make_unique<Workplace>(choices.out) : nullptr;
  const Identity identity = identify(choices, workplace.get());
  const DeviceRecord& record = identity.record;
  CommandInbox inbox;
  Display display;
  Server server({.listen = choices.run.listen,
                 .port = choices.run.port,
                 .roots = {record.device() / "Containers" / kCompanionIdentifier / "Documents" / "inbox",
                           record.device() / "Media" / "DCIM"}},
                inbox, display);
  ControlServer control({record.udid,
                         {{"type", "greeting"},
                          {"udid", record.udid},
                          {"name", record.name},
                          {"profile", record.profile},
                          {"folder", record.device().string()},
                          {"page", server.address()},
                          {"process", static_cast<std::int64_t>(::getpid())}}},
                        inbox);
  Audiences audience(server, control);
  auto options = phoneOptions(choices, record, executable);
  options.filePrefix = server.filePrefix();
  LivePhone phone(std::move(options), inbox, display, audience);
  if (const std::string problem = phone.begin(); !problem.empty()) throw std::runtime_error(problem);
  server.open();
  control.open();

  switchedOn = &phone;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, endOnSignal);
  introduce(choices, server.address());
  std::unique_ptr<ios::ChildProcess> browser;
  if (!choices.noOpen) browser = openBrowser(record.folder, server.address());
  std::fflush(stdout);
  tell(choices.ready, "ready\n");
  phone.run();
  switchedOn = nullptr;
}

}  // namespace

int runPhoneCommand(int argc, char** argv, const fs::path& executable) {
  PhoneChoices choices;
  CLI::App app("The simulated phone in a browser.", "phone");
  declare(app, choices);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return static_cast<int>(app.exit(error) == 0 ? Exit::done : Exit::usage);
  }
  std::string problem;
  Exit status = Exit::done;
  try {
    run(choices, executable);
  } catch (const Refusal& refusal) {
    problem = refusal.what();
    status = refusal.status();
  } catch (const std::runtime_error& error) {
    problem = error.what();
    status = Exit::system;
  }
  if (problem.empty()) return static_cast<int>(status);
  std::fprintf(stderr, "%s\n", problem.c_str());
  tell(choices.ready, problem + "\n");
  return static_cast<int>(status);
}

}  // namespace simulator
