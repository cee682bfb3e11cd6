#include "simulator/remote/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "simulator/remote/Refusal.h"

namespace simulator {
namespace {

constexpr int kReady = 3;

/// What goes into a new process, freed at the end.
class SpawnPlan {
 public:
  SpawnPlan() {
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawnattr_init(&attributes);
  }
  ~SpawnPlan() {
    ::posix_spawn_file_actions_destroy(&files);
    ::posix_spawnattr_destroy(&attributes);
  }
  SpawnPlan(const SpawnPlan&) = delete;
  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
};

void redirect(SpawnPlan& spawn, const Process::Plan& plan) {
  // By way of another number: a descriptor that is duplicated onto itself would be closed in the new process.
  if (plan.ready >= 0) {
    const int passing = plan.ready == kReady ? kReady + 1 : plan.ready;
    if (passing != plan.ready) ::posix_spawn_file_actions_adddup2(&spawn.files, plan.ready, passing);
    ::posix_spawn_file_actions_adddup2(&spawn.files, passing, kReady);
  }
  ::posix_spawn_file_actions_addopen(&spawn.files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_addopen(&spawn.files, STDOUT_FILENO, plan.output.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
  ::posix_spawn_file_actions_adddup2(&spawn.files, STDOUT_FILENO, STDERR_FILENO);
  ::posix_spawn_file_actions_addclosefrom_np(&spawn.files, plan.ready >= 0 ? kReady + 1 : kReady);
}

}  // namespace

Process Process::start(Plan plan) {
  SpawnPlan spawn;
  redirect(spawn, plan);
  sigset_t all, none;
  ::sigfillset(&all);
  ::sigemptyset(&none);
  ::posix_spawnattr_setsigdefault(&spawn.attributes, &all);
  ::posix_spawnattr_setsigmask(&spawn.attributes, &none);
  // A group of its own otherwise: signals from the terminal reach this process, which passes them on.
  ::posix_spawnattr_setpgroup(&spawn.attributes, 0);
  ::posix_spawnattr_setflags(
      &spawn.attributes, static_cast<short>((plan.ownSession ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP) |
                                            POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK));
  std::vector<char*> arguments;
  for (std::string& word : plan.words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t process = 0;
  const int error = ::posix_spawn(&process, plan.words.front().c_str(), &spawn.files, &spawn.attributes,
                                  arguments.data(), environ);
  if (error != 0)
    throw Refusal(Exit::system, "Could not start " + plan.words.front() + ": " + std::strerror(error));
  return Process(process, ios::FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))));
}

void Process::signal(int number) const {
  ::kill(process_, number);
}

int Process::wait() const {
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace simulator
