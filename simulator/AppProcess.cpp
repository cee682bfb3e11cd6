#include "simulator/AppProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>  // which does not say so itself in glibc 2.36
}

#include <cerrno>
#include <cstring>
#include <vector>

#include "Device/Device.h"

extern char** environ;

namespace simulator {
namespace {

constexpr int kControlDescriptor = 3;
constexpr int kPatienceMilliseconds = 120'000;

std::vector<std::string> environmentFor(const ios::InstalledApplication& application,
                                        const std::string& sound) {
  std::vector<std::string> variables;
  for (char** entry = environ; *entry; ++entry) {
    const std::string_view variable = *entry;
    const bool ours = variable.starts_with("IOS_") && !variable.starts_with("IOS_FRAMEWORK_PATH=");
    if (!ours) variables.emplace_back(variable);
  }
  variables.push_back("IOS_DEVICE=" + ios::Device::current().root().string());
  variables.push_back("IOS_BUNDLE=" + application.bundle.string());
  variables.push_back("IOS_CONTROL=" + std::to_string(kControlDescriptor));
  variables.push_back("IOS_MICROPHONE=" + sound);
  const ios::Clock& clock = ios::Clock::shared();
  if (clock.isVirtual()) {
    variables.push_back("IOS_VIRTUAL_TIME=" + std::to_string(clock.now().time_since_epoch().count()) + " " +
                        std::to_string(clock.wallTime().time_since_epoch().count()));
  }
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

struct SpawnActions {
  SpawnActions() { posix_spawn_file_actions_init(&actions); }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions); }
  posix_spawn_file_actions_t actions;
};

}  // namespace

std::unique_ptr<AppProcess> AppProcess::start(const ios::InstalledApplication& application,
                                              const std::map<std::string, std::string>& arguments,
                                              const std::string& sound, Console& console,
                                              std::string& problem) {
  int control[2], output[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, control) != 0) {
    problem = std::string("no control channel: ") + std::strerror(errno);
    return nullptr;
  }
  if (::pipe2(output, O_CLOEXEC) != 0) {
    problem = std::string("no pipe: ") + std::strerror(errno);
    ::close(control[0]);
    ::close(control[1]);
    return nullptr;
  }

  const std::string executable = application.executable().string();
  std::vector<std::string> words = {executable};
  for (const auto& [key, value] : arguments) {
    words.push_back("-" + key);
    words.push_back(value);
  }
  std::vector<std::string> variables = environmentFor(application, sound);
  SpawnActions spawn;
  // In this order: the output's end may be the very descriptor that the control channel takes.
  posix_spawn_file_actions_adddup2(&spawn.actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&spawn.actions, control[1], kControlDescriptor);
  pid_t process = 0;
  const int error = ::posix_spawn(&process, executable.c_str(), &spawn.actions, nullptr,
                                  pointersTo(words).data(), pointersTo(variables).data());
  ::close(control[1]);
  ::close(output[1]);
  if (error != 0) {
    problem = "could not start " + executable + ": " + std::strerror(error);
    ::close(control[0]);
    ::close(output[0]);
    return nullptr;
  }
  std::unique_ptr<AppProcess> app(
      new AppProcess(application.bundleIdentifier, process, control[0], output[0], console));
  if (!app->ask({{"request", "state"}})) {
    problem = application.bundleIdentifier + " " + app->ending();
    return nullptr;
  }
  return app;
}

AppProcess::AppProcess(std::string bundleIdentifier, pid_t process, int control, int output, Console& console)
    : bundleIdentifier_(std::move(bundleIdentifier)),
      process_(process),
      channel_(control),
      output_(output),
      console_(console) {
  ::fcntl(output_, F_SETFL, O_NONBLOCK);
}

AppProcess::~AppProcess() {
  if (process_ != 0) {
    ::kill(process_, SIGKILL);
    reap();
  }
  ::close(output_);
}

std::optional<ios::NSDictionary> AppProcess::ask(const ios::NSDictionary& request) {
  if (process_ == 0) return std::nullopt;
  std::optional<ios::NSDictionary> answer;
  if (channel_.send(request) && waitForAnswer()) answer = channel_.receive();
  drainOutput();
  if (!answer) reap();
  return answer;
}

bool AppProcess::waitForAnswer() {
  pollfd watched[2] = {{channel_.descriptor(), POLLIN, 0}, {output_, POLLIN, 0}};
  for (;;) {
    const int ready = ::poll(watched, 2, kPatienceMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    impatient_ = ready == 0;
    if (ready <= 0) return false;
    tendOutput(watched[1]);
    if (watched[0].revents) return true;
  }
}

void AppProcess::tendOutput(pollfd& watched) {
  if (watched.revents & POLLIN) {
    drainOutput();  // else the pipe fills up, and the application waits for it
  } else if (watched.revents) {
    watched.fd = -1;  // at its end; it would be ready for ever
  }
}

void AppProcess::drainOutput() {
  char bytes[4096];
  for (;;) {
    const ssize_t count = ::read(output_, bytes, sizeof bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    console_.append({bytes, static_cast<std::size_t>(count)});
  }
}

void AppProcess::reap() {
  ::shutdown(channel_.descriptor(), SHUT_RDWR);  // an application that still listens hears that it is over
  const int handle = ::pidfd_open(process_, 0);
  pollfd watched[2] = {{handle, POLLIN, 0}, {output_, POLLIN, 0}};
  while (!watched[0].revents && !impatient_) {
    const int ready = ::poll(watched, 2, kPatienceMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    impatient_ = ready <= 0;
    tendOutput(watched[1]);
  }
  ::close(handle);
  if (impatient_) ::kill(process_, SIGKILL);
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = 0;
  drainOutput();
  if (impatient_) {
    ending_ = "did not answer for " + std::to_string(kPatienceMilliseconds / 1000) + " seconds";
  } else if (WIFSIGNALED(status)) {
    const int signal = WTERMSIG(status);
    ending_ = "ended by signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
  } else {
    ending_ = "ended with exit status " + std::to_string(WEXITSTATUS(status));
  }
}

std::string AppProcess::stop() {
  if (process_ == 0) return ending_;
  if (channel_.send({{"request", "terminate"}}) && waitForAnswer()) (void)channel_.receive();
  reap();
  return ending_ == "ended with exit status 0" ? "" : ending_;
}

}  // namespace simulator
