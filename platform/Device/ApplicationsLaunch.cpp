#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "Device/Applications.h"
#include "Device/Device.h"
#include "Dispatch/Queue.h"
#include "Dispatch/WorkerPool.h"

namespace ios {
namespace {

constexpr std::string_view kMicrophone = "IOS_MICROPHONE=";
/// The platform's variables that apply to every process on the device.
constexpr std::array<std::string_view, 3> kHandedOn = {kMicrophone, "IOS_FRAMEWORK_PATH=", "IOS_SEED="};

/// "LD_LIBRARY_PATH=…" with the folder of this platform behind what is in it already: applications run on the platform
/// of the phone that they are on, wherever it has been installed. Empty when it is not in a file of its own.
std::string libraryPath() {
  Dl_info image{};
  if (::dladdr(reinterpret_cast<const void*>(&isBundleIdentifier), &image) == 0 || !image.dli_fname)
    return {};
  std::error_code error;
  const auto folder = std::filesystem::canonical(image.dli_fname, error).parent_path();
  const char* before = std::getenv("LD_LIBRARY_PATH");
  std::string path = before ? before : "";
  if (error || (":" + path + ":").find(":" + folder.string() + ":") != std::string::npos) return {};
  return "LD_LIBRARY_PATH=" + path + (path.empty() ? "" : ":") + folder.string();
}

std::vector<std::string> environmentFor(const Device& device, const InstalledApplication& application,
                                        const LaunchWords& words) {
  std::vector<std::string> variables;
  for (char** entry = environ; entry && *entry; ++entry) {
    const std::string_view variable = *entry;
    const bool isHandedOn = std::any_of(kHandedOn.begin(), kHandedOn.end(),
                                        [&](std::string_view name) { return variable.starts_with(name); });
    if (!variable.starts_with("IOS_") || isHandedOn) variables.emplace_back(variable);
  }
  if (words.microphone) {
    std::erase_if(variables, [](const std::string& variable) { return variable.starts_with(kMicrophone); });
    variables.push_back(std::string(kMicrophone) + *words.microphone);
  }
  if (std::string path = libraryPath(); !path.empty()) {
    std::erase_if(variables,
                  [](const std::string& variable) { return variable.starts_with("LD_LIBRARY_PATH="); });
    variables.push_back(std::move(path));
  }
  variables.push_back("IOS_DEVICE=" + device.root().string());
  variables.push_back("IOS_BUNDLE=" + application.bundle.string());
  if (words.url) variables.push_back("IOS_OPEN_URL=" + *words.url);
  if (!words.codecFault.empty()) variables.push_back("IOS_CODEC_FAULT=" + words.codecFault);
  if (words.control) variables.push_back("IOS_CONTROL=" + std::to_string(*words.control));
  const Clock& clock = Clock::shared();
  if (clock.isVirtual()) {
    variables.push_back("IOS_VIRTUAL_TIME=" + std::to_string(clock.now().time_since_epoch().count()) + " " +
                        std::to_string(clock.wallTime().time_since_epoch().count()));
  }
  return variables;
}

LaunchResult run(const std::string& identifier, const ChildProcess::Plan& plan,
                 std::chrono::milliseconds timeLimit) {
  std::string problem;
  const auto process = ChildProcess::start(plan, problem);
  if (!process) return {false, 0, "could not launch " + identifier + ": " + problem};
  auto ending = process->waitFor(timeLimit);
  const bool inTime = ending.has_value();
  if (!inTime) {
    process->kill();
    ending = process->wait();
  }
  LaunchResult result{true, ending->signalled ? 128 + ending->code : ending->code, {}};
  if (!inTime) {
    result.problem = identifier + " had not ended in time and was killed";
  } else if (ending->signalled) {
    result.problem = identifier + " was ended by signal " + std::to_string(ending->code);
  }
  return result;
}

}  // namespace

std::optional<ChildProcess::Plan> Applications::plan(const InstalledApplication& application,
                                                     const LaunchWords& words, std::string& problem) const {
  const auto executable = application.executable(problem);
  if (executable.empty()) return std::nullopt;
  return ChildProcess::Plan{.executable = executable,
                            .arguments = words.arguments,
                            .environment = environmentFor(device_, application, words)};
}

void Applications::launch(const InstalledApplication& application, const std::string& url,
                          std::function<void(const LaunchResult&)> finished) {
  const std::string identifier = application.bundleIdentifier;
  std::string problem;
  auto plan = this->plan(application, {.url = url}, problem);
  if (!plan) {
    dispatch_async(dispatch_get_main_queue(), [=] {
      if (finished) finished({false, 0, "could not launch " + identifier + ": " + problem});
    });
    return;
  }
  auto activity = std::make_shared<Clock::Activity>("the application " + identifier);
  dispatch_async(
      dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0),
      [plan = std::move(*plan), limit = timeLimit_, identifier, finished = std::move(finished), activity] {
        const LaunchResult result = [&] {
          const WorkerPool::BlockedThread waiting;
          return run(identifier, plan, limit);
        }();
        dispatch_async(dispatch_get_main_queue(), [result, finished] {
          if (finished) finished(result);
        });
      });
}

}  // namespace ios
