#include "simulator/phone/AppProcess.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Device/Device.h"

namespace simulator {
namespace {

constexpr int kControlDescriptor = 3, kDisplayDescriptor = 4;
constexpr std::chrono::milliseconds kBetweenCalls{250};

/// Both ends of a new pipe or socket pair; errno says why there are none.
struct Ends {
  ios::FileDescriptor ours, theirs;
  static Ends ofPipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return {};
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return {ios::FileDescriptor(ends[0]), ios::FileDescriptor(ends[1])};
  }
  static Ends ofSocket() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return {};
    return {ios::FileDescriptor(ends[0]), ios::FileDescriptor(ends[1])};
  }
};

}  // namespace

std::unique_ptr<AppProcess> AppProcess::start(const ios::InstalledApplication& application, Options options,
                                              Console& console, std::string& problem) {
  const auto refuse = [&](const std::string& why) {
    problem = "could not start " + application.bundleIdentifier + ": " + why;
    return nullptr;
  };
  ios::LaunchWords words{
      .microphone = options.sound, .control = kControlDescriptor, .codecFault = options.codecFault};
  for (const auto& [key, value] : options.arguments) {
    words.arguments.push_back("-" + key);
    words.arguments.push_back(value);
  }
  std::string why;
  auto plan = ios::Device::current().applications().plan(application, words, why);
  if (!plan) return refuse(why);
  Ends control = Ends::ofSocket(), output = Ends::ofPipe(), errors = Ends::ofPipe();
  if (!control.ours || !output.ours || !errors.ours) return refuse(std::strerror(errno));
  plan->descriptors = {{output.theirs.number(), STDOUT_FILENO},
                       {errors.theirs.number(), STDERR_FILENO},
                       {control.theirs.number(), kControlDescriptor}};
  if (options.display) plan->descriptors.emplace_back(options.display->descriptor(), kDisplayDescriptor);
  plan->ownGroup = true;
  auto process = ios::ChildProcess::start(*plan, why);
  if (!process) return refuse(why);

  std::unique_ptr<AppProcess> app(new AppProcess(application.bundleIdentifier, std::move(options), console));
  app->process_ = std::move(process);
  app->channel_ = std::make_unique<ios::ControlChannel>(std::move(control.ours));
  app->output_ = std::move(output.ours);
  app->errors_ = std::move(errors.ours);
  for (Ends* ends : {&control, &output, &errors}) ends->theirs.close();  // else they never are at their end
  const bool shares = app->options_.display != nullptr;
  if (app->ask(ios::automation::State()) &&
      (!shares || app->ask(ios::automation::ShareDisplay{kDisplayDescriptor}))) {
    return app;
  }
  problem = application.bundleIdentifier + " " + app->ending();
  return nullptr;
}

AppProcess::~AppProcess() = default;

std::optional<ios::NSDictionary> AppProcess::exchange(const ios::NSDictionary& request) {
  if (!process_) return std::nullopt;
  std::optional<ios::NSDictionary> answer;
  const Deadline deadline = std::chrono::steady_clock::now() + options_.patience;
  if (channel_->send(request))
    answer = channel_->receive([&] { return waitFor(channel_->descriptor(), deadline); });
  drain(output_, Console::Stream::output);
  drain(errors_, Console::Stream::errors);
  return answer;
}

bool AppProcess::waitFor(int descriptor, Deadline deadline) {
  const auto& [wake, attend] = options_.attendance;
  const auto begin = std::chrono::steady_clock::now();
  for (;;) {
    const int interrupt = options_.interrupt ? options_.interrupt->descriptor() : -1;
    std::array<pollfd, 5> watched{{{descriptor, POLLIN, 0},
                                   {interrupt, POLLIN, 0},
                                   {output_.number(), POLLIN, 0},
                                   {errors_.number(), POLLIN, 0},
                                   {attend ? wake : -1, POLLIN, 0}}};
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    const auto longest = attend ? kBetweenCalls : std::chrono::milliseconds(std::chrono::hours(1));
    const auto wait = std::clamp<std::int64_t>(left.count(), 0, longest.count());
    if (::poll(watched.data(), watched.size(), static_cast<int>(wait)) < 0 && errno != EINTR) return false;
    if (watched[0].revents) return true;
    // Else its pipe fills up, and the application waits for it.
    if (watched[2].revents) drain(output_, Console::Stream::output);
    if (watched[3].revents) drain(errors_, Console::Stream::errors);
    // However much it prints meanwhile.
    const auto waited =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    if (attend && !attend(waited)) impatience_ = Impatience::interrupted;
    if (watched[1].revents) impatience_ = Impatience::interrupted;
    if (left.count() <= 0) impatience_ = Impatience::timeUp;
    if (impatience_ != Impatience::none) return false;
  }
}

void AppProcess::drain(ios::FileDescriptor& pipe, Console::Stream stream) {
  // No more than a full pipe at a time: an application that prints without end must not keep us from everything else.
  constexpr std::size_t kMost = 1 << 20;
  std::array<char, 1 << 16> bytes;
  for (std::size_t taken = 0; pipe && taken < kMost;) {
    const ssize_t count = ::read(pipe.number(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return;
    if (count <= 0) {
      pipe.close();  // at its end, where it would always be ready
      return;
    }
    console_.append(stream, {bytes.data(), static_cast<std::size_t>(count)});
    taken += static_cast<std::size_t>(count);
  }
}

void AppProcess::finish() {
  if (!process_) return;
  ::shutdown(channel_->descriptor(), SHUT_RDWR);  // an application that still listens hears that it is over
  if (impatience_ == Impatience::none)
    waitFor(process_->handle(), std::chrono::steady_clock::now() + options_.patience);
  if (impatience_ != Impatience::none) process_->kill();
  const auto ending = process_->wait();
  process_.reset();
  drain(output_, Console::Stream::output);
  drain(errors_, Console::Stream::errors);
  endedWell_ = impatience_ == Impatience::none && ending.isClean();
  if (impatience_ == Impatience::timeUp) {
    const auto seconds = std::chrono::duration<double>(options_.patience).count();
    char text[64];
    std::snprintf(text, sizeof text, "did not answer for %g seconds", seconds);
    ending_ = text;
  } else if (impatience_ == Impatience::interrupted) {
    ending_ = "was interrupted";
  } else {
    ending_ = ending.description();
  }
}

void AppProcess::kill() {
  impatience_ = Impatience::interrupted;
  finish();
}

std::string AppProcess::stop() {
  if (process_) {
    if (ask(ios::automation::Terminate())) finish();
  }
  return endedWell_ ? "" : ending_;
}

}  // namespace simulator
