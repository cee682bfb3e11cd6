#pragma once

#include <poll.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Base/FileDescriptor.h"
#include "Device/Applications.h"
#include "UIKit/AutomationCoding.h"
#include "UIKit/ControlChannel.h"
#include "UIKit/DisplayMemory.h"
#include "simulator/phone/Console.h"
#include "simulator/phone/Interrupt.h"

namespace simulator {

/// An application that runs as a process of its own and is steered over its control channel. The process ends
/// with this object at the latest. Main thread.
class AppProcess {
 public:
  /// Attends to other things while an application is waited for.
  struct Attendance {
    int wake = -1;  // a descriptor: called when it can be read from, and four times a second anyway
    /// `waited` so long. False: the application is to be ended.
    std::function<bool(std::chrono::milliseconds waited)> call = {};
  };
  struct Options {
    std::map<std::string, std::string> arguments = {};
    std::string sound = "silence";  // what its microphone hears, as IOS_MICROPHONE says it
    std::string codecFault = {};    // when encoding fails, as IOS_CODEC_FAULT says it; empty for never
    /// How long it may take to answer, or to end, on the wall clock.
    std::chrono::milliseconds patience = std::chrono::minutes(2);
    /// Where it puts the display's picture; without one, nowhere.
    std::shared_ptr<ios::DisplayMemory> display = {};
    Attendance attendance = {};
    /// Ends whatever is waited for, and the application.
    std::shared_ptr<const Interrupt> interrupt = {};
  };
  /// Empty when it could not be started, or ended before it answered; `problem` says why.
  static std::unique_ptr<AppProcess> start(const ios::InstalledApplication& application, Options options,
                                           Console& console, std::string& problem);
  ~AppProcess();
  AppProcess(const AppProcess&) = delete;

  const std::string& bundleIdentifier() const { return bundleIdentifier_; }

  /// Asks, and waits for the answer, while the console takes what the application prints. Empty when there is
  /// no answer: the application has ended (or had before), its time was up, it answered nonsense, or there
  /// was an interrupt. Its process has ended then, and `ending` says how that came.
  template <class Request>
  std::optional<ios::automation::Reply<Request>> ask(const Request& request) {
    auto reply = ios::automation::ask(request, [this](const auto& message) { return exchange(message); });
    if (!reply) finish();
    return reply;
  }
  /// "ended by signal 11 (Segmentation fault)"
  const std::string& ending() const { return ending_; }
  /// Ends it at once.
  void kill();
  /// Lets the application end in its own way. Empty, or what was wrong with its ending.
  std::string stop();

 private:
  using Deadline = std::chrono::steady_clock::time_point;
  enum class Impatience { none, timeUp, interrupted };

  AppProcess(std::string bundleIdentifier, Options options, Console& console)
      : bundleIdentifier_(std::move(bundleIdentifier)), options_(std::move(options)), console_(console) {}
  std::optional<ios::NSDictionary> exchange(const ios::NSDictionary& request);
  /// Waits until `descriptor` has something to read, or is at its end. False when patience ends before.
  bool waitFor(int descriptor, Deadline deadline);
  /// Takes what the application has printed so far.
  void drain(ios::FileDescriptor& pipe, Console::Stream stream);
  /// Waits for the process to end, and ends it when that takes too long.
  void finish();

  std::string bundleIdentifier_;
  Options options_;
  Console& console_;
  std::unique_ptr<ios::ChildProcess> process_;  // none once it has ended
  std::unique_ptr<ios::ControlChannel> channel_;
  ios::FileDescriptor output_, errors_;
  std::string ending_;
  bool endedWell_ = false;
  Impatience impatience_ = Impatience::none;
};

}  // namespace simulator
