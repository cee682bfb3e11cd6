#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>  // which does not say so itself in glibc 2.36
}

#include <array>
#include <cerrno>
#include <cstring>

#include "Device/Applications.h"
#include "Device/Device.h"
#include "Dispatch/Queue.h"
#include "Dispatch/WorkerPool.h"

namespace ios {
namespace {

namespace fs = std::filesystem;

/// What the new process is to be, gathered on the main thread.
struct LaunchPlan {
  std::string identifier;
  fs::path executable, bundle;
  std::vector<std::string> environment;
  std::chrono::milliseconds timeLimit;
};

std::vector<std::string> environmentFor(const Device& device, const fs::path& bundle,
                                        const std::string& url) {
  constexpr std::array<std::string_view, 5> kOwn = {
      "IOS_DEVICE=", "IOS_BUNDLE=", "IOS_OPEN_URL=", "IOS_VIRTUAL_TIME=", "IOS_CONTROL="};
  std::vector<std::string> variables;
  for (char** entry = environ; entry && *entry; ++entry) {
    const std::string_view variable = *entry;
    bool own = false;
    for (const auto name : kOwn) own = own || variable.starts_with(name);
    if (!own) variables.emplace_back(variable);
  }
  variables.push_back("IOS_DEVICE=" + device.root().string());
  variables.push_back("IOS_BUNDLE=" + bundle.string());
  variables.push_back("IOS_OPEN_URL=" + url);
  const Clock& clock = Clock::shared();
  if (clock.isVirtual()) {
    variables.push_back("IOS_VIRTUAL_TIME=" + std::to_string(clock.now().time_since_epoch().count()) + " " +
                        std::to_string(clock.wallTime().time_since_epoch().count()));
  }
  return variables;
}

class SpawnSettings {
 public:
  SpawnSettings() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    // The host's standard output is the phone's console, which the new process has no part in.
    posix_spawn_file_actions_adddup2(&actions_, STDERR_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes_);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  const posix_spawn_file_actions_t* actions() const { return &actions_; }
  const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

/// Waits until the process has ended; false when it was killed for taking longer than `limit`.
bool awaitEnd(pid_t process, std::chrono::milliseconds limit, int& status) {
  bool inTime = true;
  if (const int handle = ::pidfd_open(process, 0); handle >= 0) {
    pollfd waiting{handle, POLLIN, 0};
    int ready = 0;
    while ((ready = ::poll(&waiting, 1, static_cast<int>(limit.count()))) < 0 && errno == EINTR) {
    }
    inTime = ready != 0;
    ::close(handle);
  }
  if (!inTime) ::kill(process, SIGKILL);
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return inTime;
}

LaunchResult run(LaunchPlan& plan) {
  const auto refuse = [&plan](const std::string& why) {
    return LaunchResult{false, 0, "could not launch " + plan.identifier + ": " + why};
  };
  if (plan.executable.empty()) return refuse("its Info.plist names no executable inside the bundle");
  std::error_code error;
  if (!fs::is_regular_file(plan.executable, error)) return refuse("there is no " + plan.executable.string());
  if (::access(plan.executable.c_str(), X_OK) != 0)
    return refuse(plan.executable.string() + " is not executable");

  std::string name = plan.executable.string();
  const std::array<char*, 2> arguments = {name.data(), nullptr};
  std::vector<char*> environment;
  for (auto& variable : plan.environment) environment.push_back(variable.data());
  environment.push_back(nullptr);
  const SpawnSettings settings;
  pid_t process = 0;
  const int code = ::posix_spawn(&process, name.c_str(), settings.actions(), settings.attributes(),
                                 arguments.data(), environment.data());
  if (code != 0) return refuse(std::generic_category().message(code));

  int status = 0;
  LaunchResult result{true, 0, {}};
  if (!awaitEnd(process, plan.timeLimit, status))
    result.problem = plan.identifier + " had not ended in time and was killed";
  result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  if (WIFSIGNALED(status) && result.problem.empty()) {
    result.problem = plan.identifier + " was ended by signal " + std::to_string(WTERMSIG(status));
  }
  return result;
}

}  // namespace

void Applications::launch(const InstalledApplication& application, const std::string& url,
                          std::function<void(const LaunchResult&)> finished) {
  LaunchPlan plan{application.bundleIdentifier, application.executable(), application.bundle,
                  environmentFor(device_, application.bundle, url), timeLimit_};
  auto activity = std::make_shared<Clock::Activity>("the application " + application.bundleIdentifier);
  dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0),
                 [plan = std::move(plan), finished = std::move(finished), activity]() mutable {
                   const LaunchResult result = [&plan] {
                     const WorkerPool::BlockedThread waiting;
                     return run(plan);
                   }();
                   dispatch_async(dispatch_get_main_queue(), [result, finished] {
                     if (finished) finished(result);
                   });
                 });
}

}  // namespace ios
