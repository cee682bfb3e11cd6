#include "Device/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>  // which does not say so itself in glibc 2.36
}

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace ios {
namespace {

class SpawnSettings {
 public:
  explicit SpawnSettings(const ChildProcess::Plan& plan) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
    int highest = STDERR_FILENO;
    for (const auto& [here, there] : plan.descriptors) highest = std::max(highest, there);
    addDescriptors(plan, highest);
    posix_spawn_file_actions_addclosefrom_np(&actions_, highest + 1);

    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    if (plan.ownGroup) flags |= POSIX_SPAWN_SETPGROUP;
    posix_spawnattr_setflags(&attributes_, flags);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  const posix_spawn_file_actions_t* actions() const { return &actions_; }
  const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  void addDescriptors(const ChildProcess::Plan& plan, int highest) {
    const auto isPlanned = [&plan](int number) {
      return std::any_of(plan.descriptors.begin(), plan.descriptors.end(),
                         [number](const auto& each) { return each.second == number; });
    };
    if (!isPlanned(STDIN_FILENO))
      posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    for (const auto& [here, there] : plan.descriptors) {
      // Copied to above all the target numbers, so that none is overwritten before it has been copied.
      copies_.emplace_back(::fcntl(here, F_DUPFD_CLOEXEC, highest + 1));
      posix_spawn_file_actions_adddup2(&actions_, copies_.back().number(), there);
    }
    if (!isPlanned(STDOUT_FILENO)) posix_spawn_file_actions_adddup2(&actions_, STDERR_FILENO, STDOUT_FILENO);
  }

  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
  std::vector<FileDescriptor> copies_;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

std::string ChildProcess::Ending::description() const {
  if (!signalled) return "ended with exit status " + std::to_string(code);
  return "ended by signal " + std::to_string(code) + " (" + ::strsignal(code) + ")";
}

std::unique_ptr<ChildProcess> ChildProcess::start(const Plan& plan, std::string& problem) {
  std::vector<std::string> words = {plan.executable.string()};
  words.insert(words.end(), plan.arguments.begin(), plan.arguments.end());
  std::vector<std::string> variables = plan.environment;
  const SpawnSettings settings(plan);
  pid_t process = 0;
  const int code = ::posix_spawn(&process, plan.executable.c_str(), settings.actions(), settings.attributes(),
                                 pointersTo(words).data(), pointersTo(variables).data());
  if (code != 0) {
    problem = std::generic_category().message(code);
    return nullptr;
  }
  std::unique_ptr<ChildProcess> child(new ChildProcess(process, FileDescriptor(::pidfd_open(process, 0))));
  if (child->handle_) return child;
  problem = std::generic_category().message(errno);
  return nullptr;
}

ChildProcess::~ChildProcess() {
  kill();
  wait();
}

void ChildProcess::kill() {
  if (ending_) return;
  // A process with a group of its own takes along the processes that it has started.
  ::kill(::getpgid(process_) == process_ ? -process_ : process_, SIGKILL);
}

std::optional<ChildProcess::Ending> ChildProcess::waitFor(std::chrono::milliseconds limit) {
  pollfd waiting{handle_.number(), POLLIN, 0};
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!ending_) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    const int ready = ::poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(0, left.count())));
    if (ready == 0) return std::nullopt;
    if (ready > 0) wait();
  }
  return ending_;
}

ChildProcess::Ending ChildProcess::wait() {
  if (ending_) return *ending_;
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  ending_ = WIFSIGNALED(status) ? Ending{true, WTERMSIG(status)} : Ending{false, WEXITSTATUS(status)};
  return *ending_;
}

}  // namespace ios
