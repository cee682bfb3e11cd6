#pragma once

#include <poll.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Device/Applications.h"
#include "UIKit/Automation/ControlChannel.h"
#include "simulator/Console.h"

namespace simulator {

/// An application that runs as a process of its own and is steered over its control channel. The process ends
/// with this object at the latest. Main thread.
class AppProcess {
 public:
  /// Starts the application with `arguments` in the environment that a device's process expects, its
  /// microphone hearing `sound`. Empty when it could not be started, or ended before it answered; `problem`
  /// says why.
  static std::unique_ptr<AppProcess> start(const ios::InstalledApplication& application,
                                           const std::map<std::string, std::string>& arguments,
                                           const std::string& sound, Console& console, std::string& problem);
  ~AppProcess();
  AppProcess(const AppProcess&) = delete;

  const std::string& bundleIdentifier() const { return bundleIdentifier_; }

  /// Asks, and waits for the answer, while the console takes what the application prints. Empty when the
  /// application has ended instead (or had before), or did not answer within two minutes and was ended;
  /// `ending` then says how.
  std::optional<ios::NSDictionary> ask(const ios::NSDictionary& request);
  /// "ended by signal 11 (Segmentation fault)"
  const std::string& ending() const { return ending_; }
  /// Lets the application end in its own way. Empty, or what was wrong with its ending.
  std::string stop();

 private:
  AppProcess(std::string bundleIdentifier, pid_t process, int control, int output, Console& console);
  /// Waits until the control channel has something to read; false at its end or when patience does.
  bool waitForAnswer();
  void tendOutput(pollfd& watched);
  void drainOutput();
  /// Waits for the process to end, and ends it when that takes too long.
  void reap();

  std::string bundleIdentifier_;
  pid_t process_;
  ios::ControlChannel channel_;
  int output_;
  Console& console_;
  std::string ending_;
  bool impatient_ = false;
};

}  // namespace simulator
